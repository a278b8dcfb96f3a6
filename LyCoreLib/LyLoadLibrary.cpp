#include "LyForeignCall.h"
#include "LySharedToolsHelper.h"
#include "ProcessInfo.h"
#include <dlfcn.h>

LyLoadLibrary::LyLoadLibrary(const wchar_t* pPath)
{
    if (pPath != nullptr)
        (void)Load(pPath, true, 0); // who wants to know asks GetIsLoaded
}

bool LyLoadLibrary::Load(const wchar_t* pPath, bool bCallAttach, unsigned int)
{
    Unload();
    if (pPath == nullptr || *pPath == 0)
        return false;
    m_hLibrary = dlopen(LyStringUTF8(LyString(pPath)), RTLD_LAZY);
    if (m_hLibrary == nullptr)
    {
        OutputDebugString(LyString().FromANSI(dlerror()));
        return false;
    }
    if (bCallAttach && !CallAttach())
        Close(); // without "Detach": it never got as far as being attached
    return m_hLibrary != nullptr;
}

void LyLoadLibrary::Unload()
{
    if (m_hLibrary == nullptr)
        return;
    // Deliberate: "Detach" is called even where "Attach" was not asked for. Each library guards its own count.
    if (auto pDetach = reinterpret_cast<void (*)()>(GetProcAddress("Detach")))
        (void)LyForeignCall(pDetach); // it goes, whether it throws or not
    Close();
}

void* LyLoadLibrary::GetProcAddress(const wchar_t* pName) const
{
    return pName != nullptr ? GetProcAddress(LyStringUTF8(LyString(pName)).Get()) : nullptr;
}

void* LyLoadLibrary::GetProcAddress(const char* pName) const
{
    return m_hLibrary != nullptr && pName != nullptr ? dlsym(m_hLibrary, pName) : nullptr;
}

// False if the library threw. What "Attach" answers is not asked: the library is there either way.
bool LyLoadLibrary::CallAttach()
{
    auto pAttach = reinterpret_cast<bool (*)(HINSTANCE__*)>(GetProcAddress("Attach"));
    if (pAttach == nullptr)
        return true;
    return LyForeignCall([&] { (void)pAttach(CProcessInfo::GetDynamicLibraryInstanceHandle()); });
}

void LyLoadLibrary::Close()
{
    void* hLibrary = m_hLibrary;
    m_hLibrary = nullptr;
    (void)LyForeignCall([&] { (void)dlclose(hLibrary); }); // runs the static destructors of the library
}
