// The plug-in as a player sees it: a library beside the program, three exports, and an object with a virtual table.

#pragma once

#include "LyAudioInputBase.h"
#include <memory>
#include <string>

// What the plug-in hands out at a time: an incomplete request at the end of a track is not played.
constexpr int PLUGIN_REQUEST_BYTES = 2304;

class Plugin
{
public:
    Plugin();  // loads and attaches; throws HostError
    ~Plugin(); // detaches and unloads; every source must be gone
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    std::unique_ptr<ILyAudioInput> CreateSource() const;

private:
    void* m_pLibrary = nullptr;
    bool (*m_pAttach)(HINSTANCE__*) = nullptr;
    void (*m_pDetach)() = nullptr;
    ILyAudioInput* (*m_pGetInputSource)(ILyAudioInputOwner*) = nullptr;
};

// A number that the source answers as decimal text; -1 if it does not.
long long GetNumber(ILyAudioInput& source, LY_AUDIO_INPUT_INFO_FIELDS eField);
