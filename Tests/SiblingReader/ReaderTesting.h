// Readers as tests use them: made by the library's export, asked in narrow text, and closed from another thread.

#pragma once

#include "LyReader.h"
#include "UTF8.h"
#include <chrono>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

using ReaderPtr = std::unique_ptr<ILyReader>;

inline ReaderPtr MakeReader(std::string_view strName)
{
    // Loopback goes straight, whatever proxy the machine has.
    setenv("no_proxy", "*", 1);
    return ReaderPtr(CreateGenericReaderDLL(WidenUTF8(strName).c_str()));
}

inline std::string GetInfo(ILyReader& reader, const wchar_t* pName)
{
    wchar_t* pText = reader.GetInfo(pName);
    std::string str = pText != nullptr ? NarrowUTF8(pText) : "(null)";
    LyCom::SysFreeString(pText);
    return str;
}

// Up to nBytes from the current position.
inline std::string ReadText(ILyReader& reader, int nBytes)
{
    std::string str(static_cast<size_t>(nBytes), '\0');
    str.resize(static_cast<size_t>(reader.Read(str.data(), nBytes)));
    return str;
}

inline std::string ReadAll(ILyReader& reader)
{
    constexpr int CHUNK_BYTES = 65536;
    std::string strAll;
    for (std::string str = ReadText(reader, CHUNK_BYTES); !str.empty(); str = ReadText(reader, CHUNK_BYTES))
        strAll += str;
    return strAll;
}

// Bytes in which every place looks different.
inline std::string MakeBytes(size_t nBytes)
{
    std::string str(nBytes, '\0');
    unsigned int n = 12345;
    for (char& c : str)
    {
        n = n * 1664525 + 1013904223;
        c = static_cast<char>(n >> 24);
    }
    return str;
}

// Closes the reader in a moment, and measures how long after that the call under test was still going on.
class CloseSoon
{
public:
    explicit CloseSoon(ILyReader& reader, int nDelayMS = 100)
        : m_Thread(
              [this, &reader, nDelayMS]
              {
                  std::this_thread::sleep_for(std::chrono::milliseconds(nDelayMS));
                  m_tClosed = std::chrono::steady_clock::now();
                  reader.Close();
              })
    {
    }
    ~CloseSoon()
    {
        if (m_Thread.joinable())
            m_Thread.join();
    }
    CloseSoon(const CloseSoon&) = delete;
    CloseSoon& operator=(const CloseSoon&) = delete;

    // To be asked right behind the call. Negative if the call did not wait for the Close.
    long long GetMilliseconds()
    {
        const auto tEnded = std::chrono::steady_clock::now();
        m_Thread.join();
        return std::chrono::duration_cast<std::chrono::milliseconds>(tEnded - m_tClosed).count();
    }

private:
    std::chrono::steady_clock::time_point m_tClosed;
    std::thread m_Thread;
};

// A Close ends a call within 100 ms; a loaded machine gets more room.
#define EXPECT_ENDED_BY_CLOSE(closer)                                                                                  \
    do                                                                                                                 \
    {                                                                                                                  \
        const long long nMS = (closer).GetMilliseconds();                                                              \
        EXPECT_GE(nMS, -1);                                                                                            \
        EXPECT_LT(nMS, 1000);                                                                                          \
        RecordProperty("MillisecondsAfterClose", std::to_string(nMS));                                                 \
    } while (false)
