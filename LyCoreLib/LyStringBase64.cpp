// Bytes as text: base64 (RFC 4648, section 4) and hexadecimal digits.

#include "LyBuffer.h"
#include "LyStringBase64Details.h"
#include "LyStringFormat.h"
#include <array>
#include <cstddef>
#include <cstring>

namespace
{
constexpr wchar_t s_Alphabet[] = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr int GROUP_BYTES = 3;
constexpr int GROUP_CHARS = 4;
using LyStringBase64Details::LINE_BYTES; // a line feed follows, if anything does
using LyStringBase64Details::LINE_CHARS;
constexpr int DIGIT_BITS = 6;
constexpr unsigned int DIGIT_MASK = 63;
constexpr int PAIR_BITS = 2 * DIGIT_BITS;
constexpr unsigned int PAIR_MASK = 4095;

// Two characters at once: half of a group.
struct PAIR
{
    wchar_t aryChars[2];
};
constexpr std::array<PAIR, PAIR_MASK + 1> MakePairs()
{
    std::array<PAIR, PAIR_MASK + 1> pairs = {};
    for (unsigned int n = 0; n <= PAIR_MASK; ++n)
        pairs[n] = {{s_Alphabet[n >> DIGIT_BITS], s_Alphabet[n & DIGIT_MASK]}};
    return pairs;
}
constexpr std::array<PAIR, PAIR_MASK + 1> s_Pairs = MakePairs();

// Deliberate: a character that does not belong to the alphabet counts as zero and is not skipped; only line ends are.
constexpr unsigned char NO_DIGIT = 0x80; // in a group with one, each character is looked at for itself
constexpr std::array<unsigned char, 256> MakeValues()
{
    std::array<unsigned char, 256> values = {};
    values.fill(NO_DIGIT);
    for (unsigned char i = 0; i < 64; ++i)
        values[static_cast<size_t>(s_Alphabet[i])] = i;
    return values;
}
constexpr std::array<unsigned char, 256> s_Values = MakeValues();

unsigned int GetValue(wchar_t c) { return c >= 0 && c < 256 ? s_Values[static_cast<size_t>(c)] & DIGIT_MASK : 0; }

wchar_t* EncodeGroups(wchar_t* pOut, const unsigned char* p, int nGroups)
{
    for (; nGroups > 0; --nGroups, p += GROUP_BYTES, pOut += GROUP_CHARS)
    {
        const unsigned int nGroup = static_cast<unsigned int>(p[0]) << 16 | static_cast<unsigned int>(p[1]) << 8 | p[2];
        std::memcpy(pOut, &s_Pairs[nGroup >> PAIR_BITS], sizeof(PAIR));
        std::memcpy(pOut + 2, &s_Pairs[nGroup & PAIR_MASK], sizeof(PAIR));
    }
    return pOut;
}

// The one or two bytes at the end, filled up to a group.
void EncodeRest(wchar_t* pOut, const unsigned char* p, int nBytes)
{
    const unsigned char aryGroup[GROUP_BYTES] = {p[0], nBytes > 1 ? p[1] : static_cast<unsigned char>(0), 0};
    (void)EncodeGroups(pOut, aryGroup, 1);
    pOut[3] = L'=';
    if (nBytes < 2)
        pOut[2] = L'=';
}

// Collects characters to groups and writes the groups' bytes.
class GroupDecoder
{
public:
    explicit GroupDecoder(unsigned char* pOut) : m_pOut(pOut) {}

    // As many groups as stand at p and consist of nothing but the alphabet. Where the last one ends.
    const wchar_t* TakeWholeGroups(const wchar_t* p, const wchar_t* pEnd)
    {
        while (m_nChars == 0 && pEnd - p >= GROUP_CHARS)
        {
            const auto n0 = static_cast<unsigned int>(p[0]), n1 = static_cast<unsigned int>(p[1]);
            const auto n2 = static_cast<unsigned int>(p[2]), n3 = static_cast<unsigned int>(p[3]);
            if ((n0 | n1 | n2 | n3) >= s_Values.size())
                break;
            const unsigned int nHigh = static_cast<unsigned int>(s_Values[n0] << DIGIT_BITS | s_Values[n1]);
            const unsigned int nLow = static_cast<unsigned int>(s_Values[n2] << DIGIT_BITS | s_Values[n3]);
            if (((s_Values[n0] | s_Values[n1] | s_Values[n2] | s_Values[n3]) & NO_DIGIT) != 0)
                break;
            WriteGroup(nHigh << PAIR_BITS | nLow);
            p += GROUP_CHARS;
        }
        return p;
    }
    void Take(unsigned int nValue)
    {
        m_nGroup = m_nGroup << DIGIT_BITS | nValue;
        if (++m_nChars < GROUP_CHARS)
            return;
        WriteGroup(m_nGroup);
        m_nGroup = 0;
        m_nChars = 0;
    }
    int GetOpenChars() const { return m_nChars; }
    const unsigned char* GetEnd() const { return m_pOut; }

private:
    void WriteGroup(unsigned int nGroup)
    {
        m_pOut[0] = static_cast<unsigned char>(nGroup >> 16);
        m_pOut[1] = static_cast<unsigned char>(nGroup >> 8);
        m_pOut[2] = static_cast<unsigned char>(nGroup);
        m_pOut += GROUP_BYTES;
    }

    unsigned char* m_pOut;
    unsigned int m_nGroup = 0;
    int m_nChars = 0;
};

// The bytes at the start of the block that belong to the text.
int Decode(const wchar_t* p, int nChars, unsigned char* pOut)
{
    GroupDecoder decoder(pOut);
    int nSurplus = 0; // bytes of padding
    for (const wchar_t* pEnd = p + nChars; (p = decoder.TakeWholeGroups(p, pEnd)) < pEnd; ++p)
    {
        if (*p == L'\r' || *p == L'\n')
            continue;
        nSurplus += *p == L'=';
        decoder.Take(GetValue(*p));
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

void LyStringBase64Details::EncodeLine(wchar_t* pOut, const unsigned char* p)
{
    (void)EncodeGroups(pOut, p, LINE_BYTES / GROUP_BYTES); // the end is known
}

LyString& LyString::FromBinary(const void* p, int nBytes)
{
    long long nChars = (static_cast<long long>(nBytes) + GROUP_BYTES - 1) / GROUP_BYTES * GROUP_CHARS;
    nChars += (nChars - 1) / LINE_CHARS;
    wchar_t* pOut = nullptr;
    if (p && nBytes > 0 && nChars <= LyStringBuffer::MAX_CHARACTERS)
        pOut = GetBuffer(static_cast<int>(nChars), true, false);
    if (pOut == nullptr)
    {
        Empty();
        return *this;
    }
    const LyStringBase64Details::ENCODE_LINE pVectorEncodeLine = LyStringBase64Details::GetVectorEncodeLine();
    const auto pEncodeLine = pVectorEncodeLine != nullptr ? pVectorEncodeLine : LyStringBase64Details::EncodeLine;
    const auto* pBytes = static_cast<const unsigned char*>(p);
    int nLeft = nBytes;
    for (; nLeft > LINE_BYTES; nLeft -= LINE_BYTES, pBytes += LINE_BYTES)
    {
        pEncodeLine(pOut, pBytes);
        pOut += LINE_CHARS;
        *pOut++ = L'\n';
    }
    const int nGroups = nLeft / GROUP_BYTES;
    pOut = EncodeGroups(pOut, pBytes, nGroups);
    if (nLeft % GROUP_BYTES != 0)
        EncodeRest(pOut, pBytes + static_cast<ptrdiff_t>(nGroups) * GROUP_BYTES, nLeft % GROUP_BYTES);
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
