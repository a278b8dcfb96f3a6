// LyString: the one string type of the system. Wide characters of 32 bits, one UTF-32 code unit each, always with a
// terminator; one pointer wide; reference counted, with copy on write.
//
// Positions and counts are characters, 32 bits, signed; -1 means nothing found. Indices are clamped into the string.
// An empty string is a valid block, never a null pointer: length and text need no test.
// Threads: a string object belongs to one thread at a time. Copies that share a block may go to different threads.
//
// Writers work by GetBuffer, change, ReleaseBuffer. Between the two the string is locked: it is never shared, and a
// copy of it is a real copy. An operation that changes the text of a locked string ends with a release, too; assigning
// to it does not.
//
// Errors: a length that 32 bits cannot hold, or for which there is no memory, leaves the string as it is. Text that is
// handed in may be part of the string that is changed.

#pragma once

#include "LyDllString.h"
#include "LyPtr.h"
#include "LyStringManager.h"
#include <concepts>
#include <utility>

class LyBuffer;
enum LYSTRING_ENCODING : int; // LyStringFormat.h

enum ERecursiveSpanModes : int
{
    RECURSIVE_SPAN_NONE = 0,  // the first closing marker ends the span
    RECURSIVE_SPAN_NESTED = 1 // each further opening marker needs a closing one of its own
};

class LyString
{
public:
    // ---- Making and assigning (LyString.cpp)
    LyString() : m_pText(LyStringGlobals::GetManager()->GetEmptyLyStringData()) {}
    LyString(const LyString& str) : m_pText(ShareOrCopy(str, LyStringGlobals::GetManager())) {}
    LyString(LyString&& str) noexcept;
    LyString(const wchar_t* p); // null is empty
    LyString(const LyXString& str);
    ~LyString() { ReleaseBlock(Block()); }
    LyString& operator=(const LyString& str);
    LyString& operator=(LyString&& str) noexcept;
    LyString& operator=(const wchar_t* p); // null empties
    LyString& operator=(const LyXString& str) { return *this = str.Get(); }
    void Assign(const wchar_t* p, int nLength); // an exact copy; a negative length measures, null empties
    void Empty();

    int GetLength() const { return Block()->nLength; }
    bool IsEmpty() const { return GetLength() == 0; }
    operator const wchar_t*() const { return m_pText; }
    wchar_t operator[](int nIndex) const { return m_pText[nIndex]; } // up to the length, where the terminator stands
    template <std::integral INDEX>
    wchar_t operator[](INDEX nIndex) const
    {
        return m_pText[nIndex];
    }
    bool operator==(const LyString& str) const;
    bool operator==(const wchar_t* p) const; // null equals the empty string
    bool operator==(const LyXString& str) const { return *this == str.Get(); }
    // "!=", and a string on the right of either, follow from these. Deliberate: with an operator!= of its own, a newer
    // compiler would no longer turn L"x" == str around, and would compare the two pointers instead.

    // The writable characters, at least nMinChars of them (-1: as many as there are). Without bExactSize a growing
    // string gets room by powers of two up to 0x100000 and by steps of 0x100000 above. ReleaseBuffer is owed.
    // Null, and nothing owed, if there is no memory for it.
    wchar_t* GetBuffer(int nMinChars, bool bExactSize, bool bKeepContents);
    void ReleaseBuffer(int nLength); // -1 measures to the first zero; a length is clamped into the buffer

    // ---- Joining (LyString.cpp)
    LyString& operator+=(const LyString& str);
    LyString& operator+=(const wchar_t* p);
    LyString& operator+=(const LyXString& str) { return *this += str.Get(); }
    LyString& operator+=(wchar_t c)
    {
        LyStringBuffer* pBlock = Block();
        if (!HasRoomFor(1))
        {
            Append(&c, 1, -1);
            return *this;
        }
        m_pText[pBlock->nLength++] = c;
        m_pText[pBlock->nLength] = 0;
        return *this;
    }
    void Append(const LyString& str);
    // nLength of -1 measures; nGrowBlock below 1: grow as GetBuffer does.
    void Append(const wchar_t* p, int nLength, int nGrowBlock);
    void Append4(const wchar_t* p1, int nLength1, const wchar_t* p2, int nLength2, const wchar_t* p3, int nLength3,
                 const wchar_t* p4, int nLength4, int nGrowBlock);
    void AppendLeft(wchar_t c, int nCount); // puts nCount times c in front

    // ---- Parts, always as a new string; the whole is shared (LyStringSearch.cpp)
    LyString Left(int nCount) const;
    LyString Mid(int nStart) const;
    LyString Mid(int nStart, int nCount) const;

    // ---- Searching and comparing (LyStringSearch.cpp). A null pattern is nowhere; an empty one is found where the
    // search begins. Case is folded by LyStringGlobals::ToLower.
    int Find(const wchar_t* p, int nStart = 0) const;
    int Find(wchar_t c, int nStart = 0) const;
    int FindNoCase(const wchar_t* p, int nStart = 0, bool bReturnEnd = false) const; // LyStringFindNoCase.cpp
    int ReverseFind(wchar_t c) const;
    int ReverseFind(const wchar_t* p, bool bCaseSensitive = true) const;
    int GetSubAppearanceCount(const wchar_t* p, bool bCaseSensitive) const;
    // Compares the beginning with the whole of p: 0 on a match, otherwise below or above 0. A null or empty p gives
    // nValueIfEmpty.
    int CompareLeft(const wchar_t* p, bool bCaseSensitive, int nValueIfEmpty) const;
    bool BeginsWith(const wchar_t* p, bool bIgnoreCase) const; // true for a null or empty p
    // An empty string begins and ends with character 0.
    bool BeginsWith(wchar_t c, bool bIgnoreCase) const;
    bool EndsWith(wchar_t c, bool bIgnoreCase) const;

    // Where the text between two markers lies (LyStringSpan.cpp). False, and -1 in both, if a marker is missing. A null
    // marker counts as an empty one.
    bool GetSpanOffsets(int& nStart, int& nEnd, const wchar_t* pBegin, const wchar_t* pEnd, bool bCaseSensitive,
                        int nSearchFrom, bool bIncludeMarkers, ERecursiveSpanModes eRecursion,
                        bool bEndOfStringClosesSpan) const;
    LyString GetSpan(const wchar_t* pBegin, const wchar_t* pEnd, bool bCaseSensitive, int nSearchFrom,
                     bool bIncludeMarkers, ERecursiveSpanModes eRecursion, bool bEndOfStringClosesSpan) const;

    // ---- Changing in place (LyStringEdit.cpp)
    int Remove(wchar_t c); // returns how many went
    void RemoveLeft(int nCount);
    void RemoveRight(int nCount);
    void RemoveLeftAndRight(int nLeft, int nRight);
    bool RemoveLeft(const wchar_t* p, bool bCaseSensitive); // true if the prefix was there
    bool RemoveBefore(wchar_t c, bool bRemoveCharacterToo);
    bool RemoveAfter(wchar_t c, bool bRemoveCharacterToo, int nStart = 0);
    bool RemoveAfterIndex(int nIndex, bool bRemoveCharacterToo);
    bool RemoveAfterReverse(wchar_t c, bool bRemoveCharacterToo);
    int Insert(int nIndex, wchar_t c); // returns the new length
    LyString& Trim();
    LyString& TrimLeft(wchar_t c);
    LyString& Lower();

    // A new array of nLength + 1 elements: the input without its zero elements, and a terminator. For char,
    // unsigned short and wchar_t. The caller deletes the array.
    template <class T>
    static T* RemovePrematureNulls(const T* p, int nLength);

    // ---- Formatting (LyStringFormat.cpp)
    // One argument of Format. Texts are borrowed for the length of the call.
    class CFormatArgument
    {
    public:
        enum TYPE : int
        {
            NOTHING = 0,
            WIDE_TEXT = 1,
            STRING = 2,
            INTEGER = 3,
            DECIMAL = 4
        };

        CFormatArgument() : m_nValue(0) {}
        CFormatArgument(const wchar_t* p) : m_nType(WIDE_TEXT), m_pText(p) {}
        CFormatArgument(wchar_t* p) : m_nType(WIDE_TEXT), m_pText(p) {}
        CFormatArgument(const LyString& str) : m_nType(STRING), m_pString(&str) {}
        CFormatArgument(const LyString* pString) : m_nType(STRING), m_pString(pString) {} // null is no text
        CFormatArgument(const LyXString& str) : m_nType(WIDE_TEXT), m_pText(str.Get()) {}
        CFormatArgument(bool b) : m_nType(INTEGER), m_nValue(b) {}
        CFormatArgument(char c) : m_nType(INTEGER), m_nValue(c) {}
        CFormatArgument(signed char n) : m_nType(INTEGER), m_nValue(n) {}
        CFormatArgument(unsigned char n) : m_nType(INTEGER), m_nValue(n) {}
        CFormatArgument(wchar_t c) : m_nType(INTEGER), m_nValue(c) {}
        CFormatArgument(short n) : m_nType(INTEGER), m_nValue(n) {}
        CFormatArgument(unsigned short n) : m_nType(INTEGER), m_nValue(n) {}
        CFormatArgument(int n) : m_nType(INTEGER), m_nValue(n) {}
        CFormatArgument(unsigned int n) : m_nType(INTEGER), m_nValue(n) {}
        CFormatArgument(long n) : m_nType(INTEGER), m_nValue(n) {}
        CFormatArgument(unsigned long n) : m_nType(INTEGER), m_nValue(static_cast<long long>(n)) {}
        CFormatArgument(long long n) : m_nType(INTEGER), m_nValue(n) {}
        CFormatArgument(unsigned long long n) : m_nType(INTEGER), m_nValue(static_cast<long long>(n)) {}
        CFormatArgument(const void* p) : m_nType(INTEGER), m_nValue(reinterpret_cast<long long>(p)) {}
        CFormatArgument(double f) : m_nType(DECIMAL), m_fValue(f) {}

        int m_nType = NOTHING;
        union
        {
            const wchar_t* m_pText;
            const LyString* m_pString;
            long long m_nValue;
            double m_fValue;
        };
    };

    LyString& Format(const wchar_t* pFormat); // copies the text; nothing in it is read as a directive
    LyString& Format(const wchar_t* pFormat, CFormatArgument a, CFormatArgument b = {}, CFormatArgument c = {},
                     CFormatArgument d = {}, CFormatArgument e = {}, CFormatArgument f = {});
    LyString& FormatV(const wchar_t* pFormat, CFormatArgument** ppArguments, int nArguments);

    // ---- Writing numbers (LyStringNumbers.cpp). Flags: LYSTRING_NUMBER_FLAGS in LyStringFormat.h
    // The forms with a buffer write from nPosition on, without a terminator, and move nPosition behind what they wrote.
    // They need room for 8 characters, else they do nothing; a number for which the room does not suffice is cut and
    // ends in "?". Bases: 2 to 16 without sign, 2 to 36 with one. The string forms have room for 31 characters.
    static void FromUIntStatic(wchar_t* pBuffer, int nBufferChars, int& nPosition, unsigned long long nValue,
                               int nMinDigits, int nBase, int nFlags);
    static void FromIntStatic(wchar_t* pBuffer, int nBufferChars, int& nPosition, long long nValue, int nMinDigits,
                              int nBase, int nFlags);
    static void FromIntStatic(LyString& strOut, long long nValue, int nMinDigits, int nBase, int nFlags);
    // nDecimals is the most digits behind the point, 16 at most; -1: as many as the value needs. With bFixedDecimals
    // there are exactly so many. LyStringFormat.h tells the limits.
    static void FromDecimalStatic(LyString& strOut, double fValue, int nDecimals, bool bFixedDecimals,
                                  int nMinIntegerDigits, int nFlags);
    LyString& FromInt(int nValue, int nMinDigits = 0, int nBase = 10, int nFlags = 0);
    LyString& FromDecimal(double fValue, int nDecimals = -1, bool bFixedDecimals = false, int nMinIntegerDigits = 0,
                          int nFlags = 0);
    LyString& FromPointer(const void* p);
    LyString& FromBSTR(const wchar_t* p, bool bFree);
    LyString& FromStringInMemoryFast(const wchar_t* p, int nLength); // exact copy, no scan; below 1 is empty

    // ---- Reading numbers (LyStringNumbers.cpp, LyStringToDouble.cpp): stop at the first character that does not fit,
    // never fail. What is too large sticks at the largest value.
    int GetInt() const;
    unsigned int GetHex() const; // a leading "0x" is skipped
    void* GetPointer() const;
    // Looks at nMaxChars characters at most; *pnConsumed, which may be null, is the position reached. Blanks and "+"
    // are skipped wherever they stand, "-" and U+2012 make it negative. The first comma or point begins the fraction if
    // it is the decimal point of the locale, or with bAnySeparator, else it is skipped; the second one ends the number.
    // An exponent may have one itself, sixteen deep.
    static double GetDouble(const wchar_t* p, int* pnConsumed, bool bAnySeparator, int nMaxChars, bool bAllowExponent);
    static wchar_t GetDecimalPointCharacter(); // of the C library's locale at the first call

    // ---- Serialised fields: "(" count ":" characters ")" (LyStringFields.cpp)
    void SaveString(const wchar_t* p);
    void SaveInt(int nValue);
    // Reads the field at nPosition and moves nPosition behind it. What is no field gives pDefault and false, and
    // nPosition stands where the reading failed. strOut must be another string.
    bool LoadStringFast(int& nPosition, LyString& strOut, const wchar_t* pDefault) const;
    int LoadIntFast(int& nPosition, int nDefault) const;

    // ---- Encodings (LyStringEncodings.cpp)
    LyString& FromANSI(const char* p, int nLength = -1, bool bStopAtNull = true);
    void GetANSI(LyPtr<char, char>& text, unsigned int nCodePage) const;
    LyString& FromUTF8(const unsigned char* p);
    LyString& FromUTF8(const LyString& str); // each character is taken as one byte
    LyString& FromUTFN(const wchar_t* p, int nLength = -1, bool bCheckBOM = false, bool bSwapBytes = false);
    LyString& FromUTF32(const wchar_t* p, int nLength = -1, bool bCheckBOM = false, bool bSwapBytes = false);
    LyString& FromUTF16(const unsigned short* p, int nLength = -1, bool bCheckBOM = false, bool bSwapBytes = false);
    LyString& FromBuffer(LyBuffer& buffer, LYSTRING_ENCODING eEncoding, bool bRemoveNulls);
    LyString& FromBinary(const void* p, int nBytes); // base64, a line feed after each 64 characters
    bool ToBinary(LyBuffer& buffer) const;           // base64; true if any byte came
    bool HexDigitsToBinary(LyBuffer& buffer) const;  // true if any byte came

    // ---- Rewriting (LyStringReplace.cpp, LyStringRewrite.cpp)
    // Many patterns in one pass: the earliest match wins, at the same place the lower index. Each match becomes
    // pPrefix, its replacement (with bKeepMatch: the match itself), pSuffix; all of these may be null. Returns the
    // matches.
    int Replace(const wchar_t** ppFrom, const wchar_t** ppTo, int nPairs, bool bCaseSensitive, int nMaxHits,
                bool bKeepMatch, const wchar_t* pPrefix, const wchar_t* pSuffix);
    int Replace(const wchar_t* pFrom, const wchar_t* pTo);
    int Replace(wchar_t cFrom, wchar_t cTo);
    int ReplaceNoCase(const wchar_t* pFrom, const wchar_t* pTo, int nMaxHits = 0x7fffffff);
    LyString& Htmlify(int nFlags); // LYSTRING_HTMLIFY_FLAGS in LyStringFormat.h
    LyString& Dehexify(wchar_t cEscape, bool bKeepEscapedEscape, bool bPlusIsSpace);
    LyString& IncrementString(bool bRestartAboveOne);
    LyString& FixDirectoryPath(wchar_t cSlash = L'/'); // these three forward to LyFilename
    LyString& AddDirectory(const LyString& strDirectory);
    LyString& IncrementFilename(bool bRestartAboveOne);

private:
    struct PART;
    enum ADOPT
    {
        ADOPT_TEXT
    };

    LyString(wchar_t* pText, ADOPT) : m_pText(pText) {}
    LyStringBuffer* Block() const { return LyStringBuffer::FromCharacters(m_pText); }
    static wchar_t* ShareOrCopy(const LyString& str, ILyStringManager* pManager);
    static void ReleaseBlock(LyStringBuffer* pBlock)
    {
        if (pBlock->GetReferences() != LyStringBuffer::EMPTY_REFERENCES)
            DropReference(pBlock);
    }
    static void DropReference(LyStringBuffer* pBlock);
    // True for an owned block in which the text may grow where it is.
    bool HasRoomFor(int nMore) const
    {
        const LyStringBuffer* pBlock = Block();
        return nMore < pBlock->nAllocated - pBlock->nLength && pBlock->GetReferences() == 1;
    }
    void AppendParts(PART* pParts, int nParts, int nGrowBlock);
    void KeepRange(int nStart, int nCount);

    wchar_t* m_pText;
};
static_assert(sizeof(LyString) == sizeof(void*));

using CFormatArgument = LyString::CFormatArgument; // for those who only hand arguments on

LyString operator+(const LyString& a, const LyString& b);
LyString operator+(const LyString& a, const wchar_t* b);
LyString operator+(const wchar_t* a, const LyString& b);
LyString LyJoin(const LyString& a, wchar_t b);
LyString LyJoin(wchar_t a, const LyString& b);
// For characters alone: a string and an integer stay what they are in C++, a pointer into the text.
template <std::same_as<wchar_t> CHARACTER>
LyString operator+(const LyString& a, CHARACTER b)
{
    return LyJoin(a, b);
}
template <std::same_as<wchar_t> CHARACTER>
LyString operator+(CHARACTER a, const LyString& b)
{
    return LyJoin(a, b);
}
inline LyString operator+(LyString a, const LyXString& b) { return std::move(a += b); }
inline LyString operator+(const LyXString& a, const LyString& b) { return a.Get() + b; }
inline LyString operator+(const LyXString& a, const wchar_t* b) { return LyString(a) += b; }
inline LyString operator+(const wchar_t* a, const LyXString& b) { return LyString(a) += b; }
// A sum that goes on: the string made so far grows.
inline LyString operator+(LyString&& a, const LyString& b) { return std::move(a += b); }
inline LyString operator+(LyString&& a, const wchar_t* b) { return std::move(a += b); }
template <std::same_as<wchar_t> CHARACTER>
LyString operator+(LyString&& a, CHARACTER b)
{
    return std::move(a += b);
}

// Debug output and the mark of what a platform does not have: empty on this system, kept for its callers.
void OutputDebugString(const wchar_t* p);
void NotImplemented(const LyString& strName);
