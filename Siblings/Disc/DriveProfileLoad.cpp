// A drive profile from its file.

#include "DriveProfile.h"
#include "TextDecode.h"
#include <filesystem>
#include <fstream>

namespace
{
// The file's text, if it is one of a sensible size.
bool LoadProfileText(const std::string& strPath, std::string& strText, SHEET_ERROR& error)
{
    std::error_code fault;
    const auto status = std::filesystem::status(strPath, fault);
    if (!std::filesystem::exists(status))
        error.m_strText = "the drive profile does not exist; check its path";
    else if (!std::filesystem::is_regular_file(status))
        error.m_strText = "this is not a plain file; name the text file of a drive profile";
    if (!error.m_strText.empty())
        return false;
    std::ifstream file(strPath, std::ios::binary);
    std::string strBytes(PROFILE_MAX_BYTES + 1, '\0');
    if (file)
        file.read(strBytes.data(), static_cast<std::streamsize>(strBytes.size()));
    if (!file && !file.eof())
        error.m_strText = "the drive profile cannot be read; check its permissions";
    else if (file.gcount() > PROFILE_MAX_BYTES)
        error.m_strText = "the file is too large for a drive profile; name the text file of the profile";
    if (!error.m_strText.empty())
        return false;
    strBytes.resize(static_cast<size_t>(file.gcount()));
    strText = DecodeText(strBytes);
    return true;
}

// A name in the profile is told from the profile's folder on.
void MakeAbsolute(std::string& strImage, const std::string& strProfilePath)
{
    if (!strImage.empty())
        strImage = (std::filesystem::path(strProfilePath).parent_path() / strImage).lexically_normal().string();
}

bool IsPlainFile(const std::string& strPath)
{
    std::error_code fault;
    return std::filesystem::is_regular_file(strPath, fault);
}
} // namespace

bool LoadDriveProfile(const std::string& strPath, DRIVE_PROFILE& profile, std::string& strError)
{
    SHEET_ERROR error;
    std::string strText;
    if (!LoadProfileText(strPath, strText, error) || !ParseDriveProfile(strText, profile, error))
    {
        strError = FormatSheetError(strPath, error);
        return false;
    }
    MakeAbsolute(profile.m_strImage, strPath);
    for (CHANGE_FAULT& change : profile.m_aryChanges)
    {
        MakeAbsolute(change.m_strImage, strPath);
        if (!IsPlainFile(change.m_strImage))
        {
            error.m_strText =
                "the image " + QuoteWord(change.m_strImage) + " of \"ChangeDisc\" is not there; correct its name";
            error.m_nLine = 0;
            strError = FormatSheetError(strPath, error);
            return false;
        }
    }
    return true;
}
