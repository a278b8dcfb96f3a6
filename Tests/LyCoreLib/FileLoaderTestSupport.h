// What the tests of the file loader share: a loader over a scripted reader.

#pragma once

#include "FileLoader.h"
#include "TestReader/TestReader.h"
#include <gtest/gtest.h>
#include <string>

inline constexpr wchar_t FILE_NAME[] = L"/music/a.bin";
inline constexpr wchar_t URL[] = L"http://host/a.bin";

inline std::string Text(const LyBuffer& buffer)
{
    return buffer.GetSize() > 0
               ? std::string(reinterpret_cast<const char*>(buffer.GetData()), static_cast<size_t>(buffer.GetSize()))
               : std::string();
}

inline std::string Bytes(int nBytes)
{
    std::string str(static_cast<size_t>(nBytes), 0);
    for (size_t n = 0; n < str.size(); ++n)
        str[n] = static_cast<char>(n * 7 + n / 251);
    return str;
}

class FileLoader : public testing::Test
{
protected:
    FileLoader() { m_Buffer.FromBuffer("before", 6); }

    bool Load(const wchar_t* pName) { return m_Loader.LoadBuffer(LyFilename(pName), m_Buffer); }

    TestReaderLibrary m_Library;
    READER_SCRIPT& m_Script = m_Library.m_Script;
    READER_RECORD& m_Record = m_Library.m_Record;
    CFileLoader m_Loader;
    LyBuffer m_Buffer;
};
