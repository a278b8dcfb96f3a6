// A list of strings: taken from a text with delimiters, joined to one, searched, rid of duplicates.
//
// Errors:  -1 where nothing is found, an empty string where there is nothing to join. A null text is an empty one.
// Threads: a list belongs to one thread at a time; its strings may be shared with those of other threads.

#pragma once

#include "LyCoreArray.h"
#include "LyString.h"

class LyStringArray : public LyArray<LyString, const LyString&, false>
{
public:
    // Fills the list with the parts of pList between the delimiters. A delimiter that ends the text begins no further
    // part. An empty text is one empty part, or none with bSkipEmptyTrailing. With bTrim white space around each
    // delimiter goes; that at the two ends of the text stays. pList may be the text of an element of this list.
    void InitFromList(const wchar_t* pList, const wchar_t* pDelimiter, bool bTrim = false,
                      bool bSkipEmptyTrailing = false);

    // The strings joined, with the delimiter between them, in order or from last to first. At most nMaxItems (-1: all)
    // of them, counted from the first; *pbTruncated tells whether some were left out. A single string is shared.
    LyString GetList(const wchar_t* pDelimiter, bool bReverse = false, int nMaxItems = -1,
                     bool* pbTruncated = nullptr) const;
    LyString GetList(wchar_t cDelimiter, bool bReverse = false) const;

    // The first string that matches: that equals str, or contains it (not bWholeString), or begins with it
    // (bCompareLeft, whatever bWholeString says).
    bool ContainsString(const LyString& str, bool bCaseSensitive) const;
    int FindString(const LyString& str, bool bCaseSensitive, bool bWholeString = true) const;
    int FindStringHelper(const LyString& str, bool bCaseSensitive, bool bWholeString, bool bCompareLeft = false) const;

    int RemoveString(const LyString& str, bool bCaseSensitive); // all that are equal; returns how many went

    // Leaves only the first of equal strings, in order. Case never counts.
    void RemoveDuplicates();

private:
    LyString Join(const wchar_t* pDelimiter, int nDelimiter, int nItems, bool bReverse) const;
    int FindWhole(const LyString& str, bool bCaseSensitive) const;
    void RemoveDuplicatesByPairs();
    void RemoveDuplicatesByHash();
};

using LyCommandLine = LyStringArray; // the words of a command line

// Cuts a text into tokens at a delimiter. Text and delimiter are borrowed and must stay until the scan is over.
// An empty delimiter is found nowhere.
class LyStringDelimiterScanner
{
public:
    enum STATE : int
    {
        FIRST_TOKEN = 0,
        RUNNING = 1,
        LAST_TOKEN = 2 // no further delimiter
    };

    LyStringDelimiterScanner(const wchar_t* pText, const wchar_t* pDelimiter, bool bTrim);

    // Writes the tokens over the elements of array, from its first (bFromStart) or behind its last; elements behind
    // the last token are cut off.
    void FillStringArray(LyStringArray& array, bool bFromStart, bool bSkipEmptyTrailing);

private:
    int FindDelimiter() const;
    bool NextToken(int& nLength);
    void SkipSpace();

    const LyStringGlobals* m_pManager; // whose tables tell what white space is
    const wchar_t* m_pText;            // moves along: where the rest of the text begins
    const wchar_t* m_pDelimiter;
    int m_nDelimiterLength;
    bool m_bTrim;
    const wchar_t* m_pTokenStart;
    int m_nNextDelimiter; // counted from m_pText; -1 if there is none
    int m_nState = FIRST_TOKEN;
};
