// A sibling library that writes down what happens to it. Built once per library; FAKE_SIBLING_NAME is its name in the
// events, and FAKE_SIBLING_... says which entries it has.

#include "FakeEvents.h"
#include "GlobalMacros.h"
#include "LySharedToolsHelper.h"
#include <string>

namespace
{
IFakeEvents* s_pEvents = nullptr;

void Record(const char* pEvent, long long nContext = 0)
{
    std::string strEvent = FAKE_SIBLING_NAME " ";
    strEvent += pEvent;
    if (nContext != 0)
        strEvent.append(" ").append(std::to_string(nContext));
    if (s_pEvents != nullptr)
        s_pEvents->Record(strEvent.c_str());
}

[[maybe_unused]] void ThrowIfBroken()
{
#if defined(FAKE_SIBLING_THROWS)
    throw 42;
#endif
}
} // namespace

LY_EXPORT bool Attach(HINSTANCE__* hInstance)
{
    s_pEvents = reinterpret_cast<IFakeEvents*>(hInstance);
    Record("Attach");
    return true;
}

LY_EXPORT void Detach() { Record("Detach"); }

#if defined(FAKE_SIBLING_ROOT)
namespace
{
class FakeRoot final : public ILySiblingRoot
{
public:
    void Attach(long long nContext) override
    {
        Record("root attach", nContext);
        ThrowIfBroken();
    }
};
FakeRoot s_Root;
} // namespace
LY_EXPORT ILySiblingRoot* FAKE_SIBLING_ROOT() { return &s_Root; }
#endif

#if defined(FAKE_SIBLING_READER)
LY_EXPORT void LyReaderInitialize(long long nContext)
{
    Record("LyReaderInitialize", nContext);
    ThrowIfBroken();
}

// The empty path makes it throw; any other is answered with a pointer to nothing in particular.
LY_EXPORT ILyReader* CreateGenericReaderDLL(const wchar_t* pPath)
{
    if (*pPath == 0)
        throw 42;
    return reinterpret_cast<ILyReader*>(&s_pEvents);
}
#endif

#if defined(FAKE_SIBLING_DISC)
LY_EXPORT void LyDiscInitialize(long long nContext) { Record("LyDiscInitialize", nContext); }
LY_EXPORT void LyDiscUninitialize(long long nContext) { Record("LyDiscUninitialize", nContext); }
LY_EXPORT IDiscManager* GetDiscManagerDLL(bool bCreate)
{
    ThrowIfBroken();
    return bCreate ? reinterpret_cast<IDiscManager*>(&s_pEvents) : nullptr;
}
#endif
