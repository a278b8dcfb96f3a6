// Tags and frames, put together byte by byte.

#pragma once

#include "MP3Tag.h"
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

namespace ID3v2Bytes
{
// A literal with all its zero bytes.
template <size_t nChars>
std::string Bytes(const char (&text)[nChars])
{
    return std::string(text, nChars - 1);
}

inline LyBuffer Buffer(const std::string& str)
{
    LyBuffer buffer;
    buffer.FromBuffer(str.data(), static_cast<int>(str.size()));
    return buffer;
}

inline std::string Content(const LyBuffer& buffer)
{
    return buffer.GetSize() == 0
               ? std::string()
               : std::string(reinterpret_cast<const char*>(buffer.GetData()), static_cast<size_t>(buffer.GetSize()));
}

inline std::string BigEndian(size_t nValue, int nBytes, int nBits)
{
    std::string str;
    for (int i = nBytes - 1; i >= 0; --i)
        str += static_cast<char>(nValue >> (i * nBits) & ((1U << nBits) - 1));
    return str;
}
inline std::string Plain(size_t nValue) { return BigEndian(nValue, 4, 8); }
inline std::string SyncSafe(size_t nValue) { return BigEndian(nValue, 4, 7); }

// A frame with the size that the version asks for.
inline std::string Frame22(const std::string& strID, const std::string& strBody)
{
    return strID + BigEndian(strBody.size(), 3, 8) + strBody;
}
inline std::string Frame23(const std::string& strID, const std::string& strBody, char cFlags = 0)
{
    return strID + Plain(strBody.size()) + '\0' + cFlags + strBody;
}
inline std::string Frame24(const std::string& strID, const std::string& strBody, char cFlags = 0)
{
    return strID + SyncSafe(strBody.size()) + '\0' + cFlags + strBody;
}
inline std::string Text23(const std::string& strID, const std::string& strText)
{
    return Frame23(strID, '\0' + strText);
}

// A tag of that version around its frames and padding.
inline std::string Tag(int nVersion, const std::string& strFrames, int nFlags = 0)
{
    return std::string("ID3") + static_cast<char>(nVersion) + '\0' + static_cast<char>(nFlags) +
           SyncSafe(strFrames.size()) + strFrames;
}

// Unsynchronisation as ID3v2.4.0-structure, 6.1, has it.
inline std::string Unsynchronized(const std::string& str)
{
    std::string strOut;
    for (size_t i = 0; i < str.size(); ++i)
    {
        strOut += str[i];
        const bool bNeeded = i + 1 == str.size() || str[i + 1] == 0 || (str[i + 1] & 0xE0) == 0xE0;
        if (str[i] == '\xFF' && bNeeded)
            strOut += '\0';
    }
    return strOut;
}

// Wide text as UTF-8, for messages and expectations.
inline std::string Narrow(const wchar_t* p)
{
    std::string str;
    for (; *p != 0; ++p)
    {
        if (*p < 0x80)
        {
            str += static_cast<char>(*p);
            continue;
        }
        if (*p >= 0x800)
            str += static_cast<char>(0xE0 | *p >> 12);
        str += static_cast<char>(*p < 0x800 ? 0xC0 | *p >> 6 : 0x80 | (*p >> 6 & 0x3F));
        str += static_cast<char>(0x80 | (*p & 0x3F));
    }
    return str;
}

inline std::string Property(const CID3v2Frame& frame, const wchar_t* pName)
{
    return frame.m_Properties.GetHasProperty(pName) ? Narrow(frame.m_Properties.GetProperty(pName)) : "(none)";
}
inline std::string Value(const CID3v2Frame& frame) { return Property(frame, L"Value"); }

inline std::string ID(const CID3v2Frame& frame) { return std::string(frame.m_Header.m_ID, 4); }

// The ids of all frames in order, with a blank between them.
inline std::string IDs(const CID3v2Tag& tag)
{
    std::string str;
    for (const CID3v2Frame* pFrame : tag.m_aryFrames)
        str += (str.empty() ? "" : " ") + ID(*pFrame);
    return str;
}

inline const CID3v2Frame* Find(const CID3v2Tag& tag, const std::string& strID)
{
    for (const CID3v2Frame* pFrame : tag.m_aryFrames)
    {
        if (ID(*pFrame) == strID)
            return pFrame;
    }
    return nullptr;
}

inline bool Load(CID3v2Tag& tag, const std::string& strTag) { return tag.Load(Buffer(strTag), 0); }

inline std::string Save(CID3v2Tag& tag, int nMaxPadding = CID3v2Tag::MAX_PADDING_BYTES)
{
    LyBuffer buffer;
    return tag.SaveToBuffer(buffer, nMaxPadding) ? Content(buffer) : "(failed)";
}
} // namespace ID3v2Bytes
