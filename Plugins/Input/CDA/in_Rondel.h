// The door of the plug-in: what the player finds by name. Attach and Detach are those of every library
// (LyEntryPoint.h).

#pragma once

#include "LyAudioInputBase.h"
#include "LyDllApp.h"
#include "LyEntryPoint.h"

class CInRondelApp : public LyDllApp
{
public:
    ~CInRondelApp() override;
};

extern CInRondelApp theApp;

// A new audio input for one track. The caller owns it and ends it by destroying it. It works with and without an
// earlier Attach, and touches no drive: that waits for Open. pOwner is kept and not used by the CD source.
LY_EXPORT ILyAudioInput* GetInputSource(ILyAudioInputOwner* pOwner);
