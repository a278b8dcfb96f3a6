// Text of an encoding that is told, or found out, from a buffer of bytes.

#include "LyBuffer.h"
#include "LyStringFormat.h"
#include <memory>

namespace
{
constexpr int TERMINATOR_BYTES = 4; // a zero of the widest unit, wherever the data end
constexpr int UTF8_MARK_BYTES = 3;  // EF BB BF
constexpr int ZEROS_OF_UTF32 = 3;   // in a row: a character of one byte in units of four

bool HasUTF16Mark(const unsigned char* p) { return (p[0] == 0xFF && p[1] == 0xFE) || (p[0] == 0xFE && p[1] == 0xFF); }

bool HasUTF8Mark(const unsigned char* p) { return p[0] == 0xEF && p[1] == 0xBB && p[2] == 0xBF; }

// Judges data that carry no mark. nBytes does not count the terminator that stands behind them.
LYSTRING_ENCODING Judge(const unsigned char* p, int nBytes)
{
    while (nBytes > 0 && p[nBytes - 1] == 0)
        --nBytes;
    int nZerosInRow = 0;
    bool bZero = false;
    bool bMultiByte = false;
    bool bBad = false;
    for (int i = 0; i < nBytes;)
    {
        int nSequence = LyCharacterHelper::GetUTF8CharacterBytes(p + i, 0);
        if (p[i] == 0)
        {
            bZero = true;
            if (++nZerosInRow == ZEROS_OF_UTF32)
                return LYSTRING_ENCODING_UTF32;
        }
        else
        {
            nZerosInRow = 0;
        }
        bBad |= nSequence == 0;
        bMultiByte |= nSequence > 1;
        i += nSequence > 1 ? nSequence : 1;
    }
    if (bZero)
        return LYSTRING_ENCODING_UTF16;
    return bMultiByte && !bBad ? LYSTRING_ENCODING_UTF8 : LYSTRING_ENCODING_ANSI;
}

LYSTRING_ENCODING FindOut(const unsigned char* p, int nBytes)
{
    if (HasUTF16Mark(p))
        return LYSTRING_ENCODING_UTF16;
    return HasUTF8Mark(p) ? LYSTRING_ENCODING_UTF8_BOM : Judge(p, nBytes);
}

// The units as they lie in the buffer, or a copy without the zeros. A last unit that is not complete borrows from the
// terminator, and is not always followed by a whole one: the count is the limit.
template <class UNIT>
class Units
{
public:
    Units(const unsigned char* p, int nBytes, bool bRemoveNulls) : m_pUnits(reinterpret_cast<const UNIT*>(p))
    {
        constexpr int nUnitBytes = sizeof(UNIT);
        m_nCount = nBytes / nUnitBytes + (nBytes % nUnitBytes != 0);
        if (!bRemoveNulls)
            return;
        m_Cleaned.reset(LyString::RemovePrematureNulls<UNIT>(m_pUnits, m_nCount));
        m_pUnits = m_Cleaned.get(); // null without memory, which all converters take for no text
    }
    const UNIT* Get() const { return m_pUnits; }
    int GetCount() const { return m_nCount; }

private:
    std::unique_ptr<UNIT[]> m_Cleaned;
    const UNIT* m_pUnits;
    int m_nCount;
};

void Convert(LyString& strOut, const unsigned char* p, int nBytes, LYSTRING_ENCODING eEncoding, bool bRemoveNulls)
{
    if (eEncoding == LYSTRING_ENCODING_UTF8_BOM && HasUTF8Mark(p))
    {
        p += UTF8_MARK_BYTES;
        nBytes -= UTF8_MARK_BYTES;
    }
    switch (eEncoding)
    {
    case LYSTRING_ENCODING_UTF8:
    case LYSTRING_ENCODING_UTF8_BOM:
    {
        Units<char> units(p, nBytes, bRemoveNulls);
        strOut.FromUTF8(reinterpret_cast<const unsigned char*>(units.Get()));
        break;
    }
    case LYSTRING_ENCODING_UTF16:
    {
        Units<unsigned short> units(p, nBytes, bRemoveNulls);
        strOut.FromUTF16(units.Get(), units.GetCount(), true, false);
        break;
    }
    case LYSTRING_ENCODING_UTF32:
    {
        Units<wchar_t> units(p, nBytes, bRemoveNulls);
        strOut.FromUTF32(units.Get(), units.GetCount(), true, false);
        break;
    }
    case LYSTRING_ENCODING_ANSI:
    {
        Units<char> units(p, nBytes, bRemoveNulls);
        strOut.FromANSI(units.Get(), units.GetCount(), true);
        break;
    }
    default:
        strOut.Empty(); // a number that names no encoding
    }
}
} // namespace

LyString& LyString::FromBuffer(LyBuffer& buffer, LYSTRING_ENCODING eEncoding, bool bRemoveNulls)
{
    int nBytes = buffer.GetSize();
    if (buffer.GetAppendBlock(TERMINATOR_BYTES, true, 0, true, false) == nullptr)
    {
        Empty();
        return *this;
    }
    const unsigned char* p = buffer.GetData();
    if (eEncoding == LYSTRING_ENCODING_FIND_OUT)
        eEncoding = FindOut(p, nBytes);
    Convert(*this, p, nBytes, eEncoding, bRemoveNulls);
    (void)buffer.RemoveRight(TERMINATOR_BYTES); // it has them
    return *this;
}
