// What the environment variable RONDEL_LOG asks for: which areas are logged, and where to.
//
//   RONDEL_LOG=AREAS:TARGET     4096:stderr   4096,1:/tmp/rondel.log   all:rondel.log
//
// AREAS is "all", or numbers with commas between them. An area is selected by exactly its number; areas are no bits.
// TARGET is "stderr", or the name of a file, which may hold further colons.

#pragma once

#include <string>
#include <vector>

class LogSetting
{
public:
    static constexpr const char* VARIABLE = "RONDEL_LOG";
    static constexpr const char* TARGET_STDERR = "stderr";

    // Null and the empty text ask for nothing. False, and nothing asked for, if the text has another form.
    bool Parse(const char* pText);
    bool IsOn(int nArea) const;
    bool IsAnyOn() const { return m_bAll || !m_aryAreas.empty(); }

    bool m_bAll = false;
    std::vector<int> m_aryAreas;
    std::string m_strFile; // absolute; empty for the standard error stream

private:
    bool ParseAreas(const std::string& strAreas);
};
