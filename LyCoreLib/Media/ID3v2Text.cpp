// Texts of a frame: zero-terminated, in one of four encodings.

#include "ID3v2Text.h"
#include "ID3v2Packing.h"
#include "LyPtr.h"
#include "LyUTF8Details.h"
#include "MP3Tag.h"
#include <climits>
#include <cstring>
#include <iterator>
#include <memory>
#include <new>

namespace
{
constexpr int GROW_BYTES = LyBuffer::BYTE_WRITER_GROW_BYTES;
constexpr int UTF16_BYTES = 2;
constexpr unsigned char UTF16_MARK[UTF16_BYTES] = {0xFF, 0xFE}; // little-endian
constexpr wchar_t VALUE_DELIMITER[] = L"; ";
constexpr int DELIMITER_CHARS = 2;

// A copy of bytes with a zero unit behind them, aligned for units of that type. Short text needs no allocation.
template <class UNIT>
class TerminatedCopy
{
public:
    TerminatedCopy(const unsigned char* p, size_t nUnits)
    {
        if (nUnits >= std::size(m_Short))
        {
            m_Long.reset(new (std::nothrow) UNIT[nUnits + 1]);
            m_pUnits = m_Long.get();
        }
        if (m_pUnits == nullptr)
            return; // no memory, no text
        memcpy(m_pUnits, p, nUnits * sizeof(UNIT));
        m_pUnits[nUnits] = 0;
    }
    const UNIT* Get() const { return m_pUnits; }

private:
    UNIT m_Short[128];
    std::unique_ptr<UNIT[]> m_Long;
    UNIT* m_pUnits = m_Short;
};

// A value as it lies in the frame, its terminator not counted.
struct PIECE
{
    const unsigned char* pBytes;
    int nBytes;
    bool bTerminated;
};

// Deliberate: in UTF-16 the mark of byte order is looked for in the big-endian encoding as well, and a surrogate pair
// reads as two characters, which are written back as such.
void ConvertUTF16(LyString& strOut, const PIECE& piece, bool bBigEndian)
{
    const int nUnits = piece.nBytes / UTF16_BYTES;
    const TerminatedCopy<unsigned short> units(piece.pBytes, static_cast<size_t>(nUnits));
    strOut.FromUTF16(units.Get(), nUnits, true, bBigEndian);
}

void ConvertUTF8(LyString& strOut, const PIECE& piece)
{
    if (piece.bTerminated)
        strOut.FromUTF8(piece.pBytes);
    else
        strOut.FromUTF8(TerminatedCopy<unsigned char>(piece.pBytes, static_cast<size_t>(piece.nBytes)).Get());
}

void Convert(LyString& strOut, const PIECE& piece, int nEncoding)
{
    switch (nEncoding)
    {
    case ID3V2_FRAME_TEXT_ENCODING_ANSI:
        strOut.FromANSI(reinterpret_cast<const char*>(piece.pBytes), piece.nBytes);
        break;
    case ID3V2_FRAME_TEXT_ENCODING_UTF16:
    case ID3V2_FRAME_TEXT_ENCODING_UTF16BE:
        ConvertUTF16(strOut, piece, nEncoding == ID3V2_FRAME_TEXT_ENCODING_UTF16BE);
        break;
    case ID3V2_FRAME_TEXT_ENCODING_UTF8:
        ConvertUTF8(strOut, piece);
        break;
    default:
        strOut.Empty(); // a number that names no encoding
    }
}

// The characters of the values from nPos on, each with its delimiter. Bytes that are no UTF-8 may be more.
long long MeasureValues(std::span<const unsigned char> bytes, int nPos, int nEncoding, int nUnitBytes)
{
    long long nChars = 0;
    bool bInValue = false;
    for (; nPos <= static_cast<int>(bytes.size()) - nUnitBytes; nPos += nUnitBytes)
    {
        const unsigned char* p = bytes.data() + nPos;
        const bool bZero = p[0] == 0 && p[nUnitBytes - 1] == 0;
        const bool bGoesOn = nEncoding == ID3V2_FRAME_TEXT_ENCODING_UTF8 && LyUTF8Details::IsContinuation(p[0]);
        nChars += !bZero && !bInValue ? DELIMITER_CHARS : 0;
        nChars += !bZero && !bGoesOn ? 1 : 0;
        bInValue = !bZero;
    }
    return nChars;
}

// Room for nMore characters, so that a frame of many values does not lie in memory twice and more.
void Reserve(LyString& str, long long nMore)
{
    const int nChars = str.GetLength();
    if (nChars + nMore <= LyStringBuffer::MAX_CHARACTERS &&
        str.GetBuffer(nChars + static_cast<int>(nMore), true, true) != nullptr)
        str.ReleaseBuffer(nChars);
}

int FindTerminator(std::span<const unsigned char> bytes, int nPos, int nUnitBytes)
{
    const unsigned char* pStart = bytes.data() + nPos;
    const int nBytes = static_cast<int>(bytes.size());
    if (nUnitBytes == 1)
    {
        const void* p = memchr(pStart, 0, static_cast<size_t>(nBytes - nPos));
        return p != nullptr ? nPos + static_cast<int>(static_cast<const unsigned char*>(p) - pStart) : -1;
    }
    for (const unsigned char* p = pStart; nPos <= nBytes - UTF16_BYTES; nPos += UTF16_BYTES, p += UTF16_BYTES)
    {
        if (p[0] == 0 && p[1] == 0)
            return nPos;
    }
    return -1;
}

// The value at nPos, which must be inside the buffer; nPos moves behind its terminator.
PIECE TakePiece(std::span<const unsigned char> bytes, int& nPos, int nUnitBytes)
{
    const int nStart = nPos;
    const int nEnd = FindTerminator(bytes, nStart, nUnitBytes);
    nPos = nEnd >= 0 ? nEnd + nUnitBytes : static_cast<int>(bytes.size());
    return {bytes.data() + nStart, (nEnd >= 0 ? nEnd : nPos) - nStart, nEnd >= 0};
}

// Deliberate: there is no surrogate pair. A character above U+FFFF is cut to 16 bits.
void AppendUTF16(LyBuffer& buffer, const LyString& strText)
{
    const int nChars = strText.GetLength();
    ID3v2Packing::Append(buffer, UTF16_MARK, UTF16_BYTES);
    unsigned char* p =
        nChars < INT_MAX / UTF16_BYTES ? buffer.GetAppendBlock((nChars + 1) * UTF16_BYTES, false, GROW_BYTES) : nullptr;
    for (int i = 0; p != nullptr && i <= nChars; ++i)
    {
        *p++ = static_cast<unsigned char>(strText[i]);
        *p++ = static_cast<unsigned char>(strText[i] >> 8);
    }
}
} // namespace

LyString CID3v2Tag::DecodeString(int nEncoding, const LyBuffer& buffer, int& nPos, bool bOnlyOne)
{
    return ID3v2Text::Decode(nEncoding, {buffer.GetData(), static_cast<size_t>(buffer.GetSize())}, nPos, bOnlyOne);
}

LyString ID3v2Text::Decode(int nEncoding, std::span<const unsigned char> bytes, int& nPos, bool bOnlyOne)
{
    const bool bUTF16 = nEncoding == ID3V2_FRAME_TEXT_ENCODING_UTF16 || nEncoding == ID3V2_FRAME_TEXT_ENCODING_UTF16BE;
    const int nUnitBytes = bUTF16 ? UTF16_BYTES : 1;
    LyString strResult;
    LyString strPiece;
    bool bReserved = false;
    while (nPos >= 0 && nPos < static_cast<int>(bytes.size()))
    {
        const PIECE piece = TakePiece(bytes, nPos, nUnitBytes);
        Convert(strResult.IsEmpty() ? strResult : strPiece, piece, nEncoding);
        if (!strPiece.IsEmpty())
        {
            if (!bReserved)
                Reserve(strResult,
                        DELIMITER_CHARS + strPiece.GetLength() + MeasureValues(bytes, nPos, nEncoding, nUnitBytes));
            bReserved = true;
            strResult += VALUE_DELIMITER;
            strResult += strPiece;
            strPiece.Empty();
        }
        if (bOnlyOne)
            break;
    }
    return strResult;
}

void CID3v2Tag::EncodeString(int nEncoding, const LyString& strText, LyBuffer& buffer)
{
    if (nEncoding == ID3V2_FRAME_TEXT_ENCODING_UTF16)
        AppendUTF16(buffer, strText);
    if (nEncoding != ID3V2_FRAME_TEXT_ENCODING_ANSI)
        return;
    LyPtr<char, char> text;
    strText.GetANSI(text, 0);
    if (text != nullptr)
        ID3v2Packing::Append(buffer, text.Get(), static_cast<int>(strlen(text.Get())) + 1);
}
