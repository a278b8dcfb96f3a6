// Opens the files that a sheet names, from the file system: finds each one, looks what it is, and picks its reader.

#pragma once

#include "SectorSource.h"
#include <string>

class FileSourceOpener : public ISectorSourceOpener
{
public:
    // bOnlyFile: the sheet names no other, so that a file of the sheet's own name may stand in for one that is missing.
    FileSourceOpener(std::string strSheetPath, bool bOnlyFile);

    std::unique_ptr<SectorSource> OpenSource(const std::string& strName, SECTOR_SOURCE_KIND kind, std::string& strError,
                                             std::string& strWarning) override;
    bool LoadCompanion(const std::string& strName, std::string& strContent) override;

private:
    std::string m_strSheetPath;
    bool m_bOnlyFile;
};
