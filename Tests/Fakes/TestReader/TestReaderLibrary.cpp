// A reader library whose readers the test program makes itself: see TestReader.h.

#include "GlobalMacros.h"
#include "ILyReader.h"

namespace
{
ILyReader* (*s_pFactory)(const wchar_t*) = nullptr;
} // namespace

LY_EXPORT void SetReaderFactory(ILyReader* (*pFactory)(const wchar_t*)) { s_pFactory = pFactory; }

LY_EXPORT ILyReader* CreateGenericReaderDLL(const wchar_t* pPath)
{
    return s_pFactory != nullptr ? s_pFactory(pPath) : nullptr;
}
