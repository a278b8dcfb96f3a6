// LyDllApp: the application object of a library. Its start prepares strings, locale and product; its end lets go of the
// sibling libraries, so that they are gone before the host unloads this one.

#pragma once

#include "LyApp.h"

class LyDllApp : public LyApp
{
public:
    bool InitInstance() override;
    bool ExitInstance() override;

    // Slots of this class, behind those of LyApp.
    virtual bool LoadProductInfo();
    virtual bool InitializePlatform();
    virtual void UninitializePlatform();

protected:
    // The start of a library that serves others: it needs no product, and leaves the locale of the process to its host.
    // Such a library calls it in its InitInstance instead of this class's.
    bool InitService() { return LyApp::InitInstance(); }
};
