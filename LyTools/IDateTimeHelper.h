// The tools library's reader of dates as people write them.
//
// Ownership: the service belongs to the tools library; nobody destroys it through this interface.
// Threads:   any. The service does its own locking.

#pragma once

// The order of the operations is their order in the virtual table: other libraries call them there.
class IDateTimeHelper
{
public:
    // The date that the text names, in the days of LyDateTime; 0.0 if it names none. The flag is the caller's own
    // second argument of LyDateTime::Parse.
    virtual double Parse(const wchar_t* pText, bool bFlag) = 0;

protected:
    ~IDateTimeHelper() = default;
};
