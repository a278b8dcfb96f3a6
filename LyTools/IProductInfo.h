// The tools library's description of the product that the process belongs to.
//
// Ownership: the service belongs to the tools library; nobody destroys it through this interface.
//            The system string of GetAppdataDirectory is the caller's, released with LyCom::SysFreeString.
// Threads:   any. The service does its own locking.

#pragma once

#include "LyPtr.h"

// The order of the operations is their order in the virtual table: other libraries call them there.
class IProductInfo
{
public:
    virtual bool GetHasProduct() = 0; // a description was loaded
    // Loads the description of the product of that name; the empty name is this product. The other arguments are
    // those of the function LoadProductInfo, and mean what the service makes of them.
    virtual bool Load(const wchar_t* pName, bool bFirst, bool bSecond, const wchar_t* pText, int nNumber) = 0;
    virtual LyXString GetAppdataDirectory() = 0; // the product's folder for application data; may be null or empty

protected:
    ~IProductInfo() = default;
};
