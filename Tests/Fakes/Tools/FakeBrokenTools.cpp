// Tools libraries that fail: FAKE_BROKEN_... says where. Built several times, each into a folder of its own.

#include "ILyTools.h"

namespace
{
void Throw() { throw 42; } // foreign code throws what it likes
} // namespace

#if defined(FAKE_BROKEN_ATTACH_THROWS)
LY_EXPORT bool Attach(HINSTANCE__*)
{
    Throw();
    return true;
}
#endif

#if defined(FAKE_BROKEN_DETACH_THROWS)
LY_EXPORT void Detach() { Throw(); }
#else
LY_EXPORT void Detach() {}
#endif

#if defined(FAKE_BROKEN_ENTRY_IS_NULL)
LY_EXPORT ILyTools* GetLyToolsDLL(int) { return nullptr; }
#elif defined(FAKE_BROKEN_ENTRY_THROWS)
LY_EXPORT ILyTools* GetLyToolsDLL(int)
{
    Throw();
    return nullptr;
}
#endif

LY_EXPORT void FakeBrokenThrow() { Throw(); } // the one export that all of them have
