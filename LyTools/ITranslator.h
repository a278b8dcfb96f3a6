// The tools library's translator into the language of the user interface.
//
// Ownership: the translator belongs to the tools library; nobody destroys it through this interface.
// Errors:    a text that is not in the catalogue stays as it is.
// Threads:   any. The service does its own locking.

#pragma once

#include "LyDllString.h"

// The order of the operations is their order in the virtual table: other libraries call them there.
class ITranslator
{
public:
    virtual void Reserved1() {}
    virtual void Reserved2() {}
    virtual void Translate(const ILyDllString& strText) = 0; // rewrites the text in place

protected:
    ~ITranslator() = default;
};
