#include "Plugin.h"
#include "HostError.h"
#include "LyFileSystem.h"
#include "LyStringFormat.h"
#include "Text.h"
#include <cstdlib>
#include <dlfcn.h>

namespace
{
constexpr const char* PLUGIN_FILE = "in_Rondel.so";

std::string GetPluginPath() { return Narrow(LyFileSystem::GetDirectoryInstance()) + PLUGIN_FILE; }

template <class FUNCTION>
void Look(void* pLibrary, const char* pName, FUNCTION& pFunction)
{
    pFunction = reinterpret_cast<FUNCTION>(dlsym(pLibrary, pName));
    if (pFunction == nullptr)
        throw HostError(std::string(PLUGIN_FILE) + " has no export \"" + pName + "\"; build the plug-in anew.");
}
} // namespace

Plugin::Plugin()
{
    const std::string strPath = GetPluginPath();
    m_pLibrary = dlopen(strPath.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (m_pLibrary == nullptr)
        throw HostError("the plug-in does not load (" + std::string(dlerror()) + "); it belongs beside the program.");
    Look(m_pLibrary, "Attach", m_pAttach);
    Look(m_pLibrary, "Detach", m_pDetach);
    Look(m_pLibrary, "GetInputSource", m_pGetInputSource);
    if (!m_pAttach(nullptr))
        throw HostError("the plug-in " + strPath + " refused to start.");
}

Plugin::~Plugin()
{
    m_pDetach();
    dlclose(m_pLibrary);
}

std::unique_ptr<ILyAudioInput> Plugin::CreateSource() const
{
    return std::unique_ptr<ILyAudioInput>(m_pGetInputSource(nullptr));
}

long long GetNumber(ILyAudioInput& source, LY_AUDIO_INPUT_INFO_FIELDS eField)
{
    LyString strText;
    if (source.GetInformation(eField, LyDllString(strText)) != 0)
        return -1;
    return std::strtoll(Narrow(strText).c_str(), nullptr, 10);
}
