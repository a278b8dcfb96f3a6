// Bytes as text: base64 (RFC 4648, section 4) and hexadecimal digits.

#include "LyBuffer.h"
#include "LyStringFormat.h"
#include <array>

namespace
{
constexpr wchar_t s_Alphabet[] = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr int GROUP_BYTES = 3;
constexpr int GROUP_CHARS = 4;
constexpr int LINE_CHARS = 64; // a line feed follows, if anything does
constexpr unsigned int DIGIT_MASK = 63;

// Deliberate: a character that does not belong to the alphabet counts as zero and is not skipped; only line ends are.
constexpr std::array<unsigned char, 256> MakeValues()
{
    std::array<unsigned char, 256> values = {};
    for (unsigned char i = 0; i < 64; ++i)
        values[static_cast<size_t>(s_Alphabet[i])] = i;
    return values;
}
constexpr std::array<unsigned char, 256> s_Values = MakeValues();

unsigned int GetValue(wchar_t c) { return c >= 0 && c < 256 ? s_Values[static_cast<size_t>(c)] : 0; }

// One group of up to three bytes as four characters.
wchar_t* EncodeGroup(wchar_t* pOut, const unsigned char* p, int nBytes)
{
    unsigned int nGroup = static_cast<unsigned int>(p[0]) << 16;
    if (nBytes > 1)
        nGroup |= static_cast<unsigned int>(p[1]) << 8;
    if (nBytes > 2)
        nGroup |= p[2];
    *pOut++ = s_Alphabet[nGroup >> 18];
    *pOut++ = s_Alphabet[nGroup >> 12 & DIGIT_MASK];
    *pOut++ = nBytes > 1 ? s_Alphabet[nGroup >> 6 & DIGIT_MASK] : L'=';
    *pOut++ = nBytes > 2 ? s_Alphabet[nGroup & DIGIT_MASK] : L'=';
    return pOut;
}

// Collects characters to groups and writes the groups' bytes.
class GroupDecoder
{
public:
    explicit GroupDecoder(unsigned char* pOut) : m_pOut(pOut) {}

    void Take(unsigned int nValue)
    {
        m_nGroup = m_nGroup << 6 | nValue;
        if (++m_nChars < GROUP_CHARS)
            return;
        *m_pOut++ = static_cast<unsigned char>(m_nGroup >> 16);
        *m_pOut++ = static_cast<unsigned char>(m_nGroup >> 8);
        *m_pOut++ = static_cast<unsigned char>(m_nGroup);
        m_nGroup = 0;
        m_nChars = 0;
    }
    int GetOpenChars() const { return m_nChars; }
    const unsigned char* GetEnd() const { return m_pOut; }

private:
    unsigned char* m_pOut;
    unsigned int m_nGroup = 0;
    int m_nChars = 0;
};

// The bytes at the start of the block that belong to the text.
int Decode(const wchar_t* p, int nChars, unsigned char* pOut)
{
    GroupDecoder decoder(pOut);
    int nSurplus = 0; // bytes of padding
    for (int i = 0; i < nChars; ++i)
    {
        if (p[i] == L'\r' || p[i] == L'\n')
            continue;
        nSurplus += p[i] == L'=';
        decoder.Take(GetValue(p[i]));
    }
    while (decoder.GetOpenChars() > 0) // the padding was left out
    {
        ++nSurplus;
        decoder.Take(0);
    }
    int nBytes = static_cast<int>(decoder.GetEnd() - pOut) - nSurplus;
    return nBytes > 0 ? nBytes : 0;
}
} // namespace

LyString& LyString::FromBinary(const void* p, int nBytes)
{
    long long nChars = (static_cast<long long>(nBytes) + GROUP_BYTES - 1) / GROUP_BYTES * GROUP_CHARS;
    nChars += (nChars - 1) / LINE_CHARS;
    wchar_t* pText = nullptr;
    if (p && nBytes > 0 && nChars <= LyStringBuffer::MAX_CHARACTERS)
        pText = GetBuffer(static_cast<int>(nChars), true, false);
    if (pText == nullptr)
    {
        Empty();
        return *this;
    }
    constexpr int nLineBytes = LINE_CHARS / GROUP_CHARS * GROUP_BYTES;
    const auto* pBytes = static_cast<const unsigned char*>(p);
    wchar_t* pOut = pText;
    int nLeft = nBytes;
    for (int nInLine = nLineBytes; nLeft > 0; nInLine -= GROUP_BYTES)
    {
        if (nInLine == 0)
        {
            *pOut++ = L'\n';
            nInLine = nLineBytes;
        }
        pOut = EncodeGroup(pOut, pBytes, nLeft);
        pBytes += nLeft < GROUP_BYTES ? nLeft : GROUP_BYTES;
        nLeft -= GROUP_BYTES;
    }
    ReleaseBuffer(static_cast<int>(nChars));
    return *this;
}

// True if any byte came.
bool LyString::ToBinary(LyBuffer& buffer) const
{
    buffer.Empty(false);
    int nChars = GetLength();
    int nMaxBytes = (nChars / GROUP_CHARS + 1) * GROUP_BYTES;
    unsigned char* pOut = nChars > 0 ? buffer.GetAppendBlock(nMaxBytes, false, 0, true, false) : nullptr;
    if (pOut == nullptr)
        return false;
    (void)buffer.RemoveRight(nMaxBytes - Decode(m_pText, nChars, pOut)); // nothing to remove is an answer, too
    return buffer.GetSize() > 0;
}

// True if any byte came.
bool LyString::HexDigitsToBinary(LyBuffer& buffer) const
{
    buffer.Empty(false);
    int nChars = GetLength();
    int nMaxBytes = nChars / 2 + nChars % 2;
    unsigned char* pOut = nChars > 0 ? buffer.GetAppendBlock(nMaxBytes, false, 0, true, false) : nullptr;
    if (pOut == nullptr)
        return false;
    int nBytes = 0;
    for (int i = -(nChars % 2); i < nChars; i += 2) // an odd count has a zero in front
    {
        int nHigh = i < 0 ? 0 : LyCharacterHelper::GetHexDigit(m_pText[i]);
        int nLow = LyCharacterHelper::GetHexDigit(m_pText[i + 1]);
        if (nHigh < 0 || nLow < 0)
            break;
        pOut[nBytes++] = static_cast<unsigned char>(nHigh << 4 | nLow);
    }
    (void)buffer.RemoveRight(nMaxBytes - nBytes); // nothing to remove is an answer, too
    return nBytes > 0;
}
