// Texts of a frame: zero-terminated, in one of four encodings.

#include "LyPtr.h"
#include "MP3Tag.h"
#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

namespace
{
constexpr int GROW_BYTES = LyBuffer::BYTE_WRITER_GROW_BYTES;
constexpr int UTF16_BYTES = 2;
constexpr unsigned char UTF16_MARK[UTF16_BYTES] = {0xFF, 0xFE}; // little-endian
constexpr wchar_t VALUE_DELIMITER[] = L"; ";

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

int FindTerminator(const LyBuffer& buffer, int nPos, int nUnitBytes)
{
    if (nUnitBytes == UTF16_BYTES)
    {
        constexpr unsigned char aryZeros[UTF16_BYTES] = {};
        return buffer.Search(aryZeros, UTF16_BYTES, nPos, UTF16_BYTES);
    }
    const unsigned char* pStart = buffer.GetData() + nPos;
    const void* p = memchr(pStart, 0, static_cast<size_t>(buffer.GetSize() - nPos));
    return p != nullptr ? nPos + static_cast<int>(static_cast<const unsigned char*>(p) - pStart) : -1;
}

// The value at nPos, which must be inside the buffer; nPos moves behind its terminator.
PIECE TakePiece(const LyBuffer& buffer, int& nPos, int nUnitBytes)
{
    const int nStart = nPos;
    const int nEnd = FindTerminator(buffer, nStart, nUnitBytes);
    nPos = nEnd >= 0 ? nEnd + nUnitBytes : buffer.GetSize();
    return {buffer.GetData() + nStart, (nEnd >= 0 ? nEnd : nPos) - nStart, nEnd >= 0};
}

void AppendBytes(LyBuffer& buffer, const void* p, int nBytes)
{
    unsigned char* pEnd = buffer.GetAppendBlock(nBytes, false, GROW_BYTES);
    if (pEnd != nullptr)
        memcpy(pEnd, p, static_cast<size_t>(nBytes));
}

// Deliberate: there is no surrogate pair. A character above U+FFFF is cut to 16 bits.
void AppendUTF16(LyBuffer& buffer, const LyString& strText)
{
    const int nChars = strText.GetLength();
    AppendBytes(buffer, UTF16_MARK, UTF16_BYTES);
    unsigned char* p =
        nChars < 0x3FFFFFFF ? buffer.GetAppendBlock((nChars + 1) * UTF16_BYTES, false, GROW_BYTES) : nullptr;
    for (int i = 0; p != nullptr && i <= nChars; ++i)
    {
        *p++ = static_cast<unsigned char>(strText[i]);
        *p++ = static_cast<unsigned char>(strText[i] >> 8);
    }
}
} // namespace

LyString CID3v2Tag::DecodeString(int nEncoding, const LyBuffer& buffer, int& nPos, bool bOnlyOne)
{
    const bool bUTF16 = nEncoding == ID3V2_FRAME_TEXT_ENCODING_UTF16 || nEncoding == ID3V2_FRAME_TEXT_ENCODING_UTF16BE;
    LyString strResult;
    LyString strPiece;
    while (nPos >= 0 && nPos < buffer.GetSize())
    {
        const PIECE piece = TakePiece(buffer, nPos, bUTF16 ? UTF16_BYTES : 1);
        Convert(strResult.IsEmpty() ? strResult : strPiece, piece, nEncoding);
        if (!strPiece.IsEmpty())
        {
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
        AppendBytes(buffer, text.Get(), static_cast<int>(strlen(text.Get())) + 1);
}
