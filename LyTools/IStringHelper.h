// The tools library's text service: searching and ordering of text as the user's language sees it.
//
// Ownership: the service belongs to the tools library; nobody destroys it through this interface.
// Threads:   any. The service does its own locking.

#pragma once

// How Compare orders two texts; the values are added up.
enum LY_STRING_COMPARE_FLAGS : int
{
    LY_STRING_COMPARE_IGNORE_CASE = 0x001,
    LY_STRING_COMPARE_STABLE = 0x200 // differences of rank, not of taste: the same order on every machine
};

// The order of the operations is their order in the virtual table: other libraries call them there.
class IStringHelper
{
public:
    // Where pPattern begins in pText at or behind nStart, whatever the case of either; -1 if nowhere.
    virtual int FindNoCase(const wchar_t* pText, const wchar_t* pPattern, int nStart) = 0;
    // Below 0, 0 or above 0 as the first text stands before, beside or behind the second.
    virtual int Compare(const wchar_t* pFirst, const wchar_t* pSecond, int nFlags) = 0;

protected:
    ~IStringHelper() = default;
};
