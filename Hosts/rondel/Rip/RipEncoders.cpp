#include "RipEncoders.h"
#include "HostError.h"
#include "Text.h"
#include <algorithm>

namespace
{
constexpr const char* COMMAND_NAME = "cmd";
constexpr const char* COMMAND_PLUGIN = "pipe";
constexpr const char* COMMAND_SUFFIX = "out";
constexpr size_t MAX_SUFFIX = 16; // with ".part99" behind it, it stays within NAME_SUFFIX_BYTES

bool IsPlainWord(const std::string& str)
{
    return !str.empty() && std::all_of(str.begin(), str.end(),
                                       [](char c) {
                                           return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                                                  (c >= '0' && c <= '9') || c == '-' || c == '_';
                                       });
}

// "cmd=..." or "cmd.mp3=...". Whoever writes settings of the pipe ahead of the command names the command, too.
std::string ParseCommand(const std::string& strText, size_t nEquals, ENCODER_CHOICE& choice)
{
    const std::string strHead = strText.substr(0, nEquals);
    const std::string strCommand = strText.substr(nEquals + 1);
    choice.strName = COMMAND_NAME;
    choice.strSuffix = COMMAND_SUFFIX;
    if (strHead.size() > std::string(COMMAND_NAME).size())
        choice.strSuffix = strHead.substr(std::string(COMMAND_NAME).size() + 1);
    if (!IsPlainWord(choice.strSuffix) || choice.strSuffix.size() > MAX_SUFFIX)
        return "--encoder cmd.SUFFIX=COMMAND takes up to " + std::to_string(MAX_SUFFIX) +
               " letters and digits as the suffix, not '" + choice.strSuffix + "'";
    if (strCommand.find_first_not_of(" \t") == std::string::npos)
        return "--encoder cmd=COMMAND needs a command";
    const bool bSettings = strCommand.starts_with("input=") || strCommand.starts_with("timeout=");
    choice.strSettings = bSettings || strCommand.starts_with("command=") ? strCommand : "command=" + strCommand;
    return {};
}

// The names of all plug-ins beside the program, for who has named another one.
std::string ListNames(const LyOwnedPtrArray<CEncoderPlugin>& aryPlugins)
{
    std::string strNames = "wav";
    for (int i = 0; i < aryPlugins.GetSize(); ++i)
    {
        const std::string strName = Narrow(aryPlugins[i]->m_strName);
        strNames += strName == COMMAND_PLUGIN ? ", cmd=COMMAND" : ", " + strName;
    }
    return strNames;
}
} // namespace

std::string ParseEncoderChoice(const std::string& strText, ENCODER_CHOICE& choice)
{
    choice = {};
    const size_t nEquals = strText.find('=');
    if (nEquals != std::string::npos && (strText.starts_with("cmd=") || strText.starts_with("cmd.")))
        return ParseCommand(strText, nEquals, choice);
    const size_t nColon = strText.find(':');
    choice.strName = strText.substr(0, nColon);
    if (nColon != std::string::npos)
        choice.strSettings = strText.substr(nColon + 1);
    if (!IsPlainWord(choice.strName) || choice.strName == COMMAND_NAME)
        return "--encoder takes wav, the name of a plug-in with or without settings, as in flac:level=8, or "
               "cmd=COMMAND, not '" +
               strText + "'";
    choice.bWAV = choice.strName == "wav";
    if (choice.bWAV && !choice.strSettings.empty())
        return "--encoder wav has no settings, so that '" + choice.strSettings + "' means nothing";
    if (choice.bWAV)
        choice.strSuffix = "wav";
    return {};
}

RipEncoder::RipEncoder(const ENCODER_CHOICE& choice) : m_strName(choice.strName)
{
    LyOwnedPtrArray<CEncoderPlugin> aryPlugins;
    CEncoderPlugin::ListEncoders(LyString(), aryPlugins);
    const std::string strPlugin = choice.strName == COMMAND_NAME ? COMMAND_PLUGIN : choice.strName;
    for (int i = 0; i < aryPlugins.GetSize() && m_pPlugin == nullptr; ++i)
    {
        if (Narrow(aryPlugins[i]->m_strName) != strPlugin)
            continue;
        m_pPlugin = std::make_unique<CEncoderPlugin>();
        m_pPlugin->m_strName = aryPlugins[i]->m_strName;
        m_pPlugin->m_strLibrary = aryPlugins[i]->m_strLibrary;
        m_pPlugin->m_strSettings = Widen(choice.strSettings);
    }
    if (m_pPlugin == nullptr)
        throw HostError("there is no encoder '" + choice.strName + "' (enc_" + strPlugin +
                        ".so beside the program); choose from these: " + ListNames(aryPlugins) + ".");
    if (!m_pPlugin->Open(nullptr, true))
        throw HostError("the encoder '" + choice.strName +
                        "' does not load; install it anew, or choose from these: " + ListNames(aryPlugins) + ".");
    std::string strFault = GetText("Last Error");
    if (strFault.empty())
        return;
    while (strFault.ends_with('.'))
        strFault.pop_back();
    throw HostError("the encoder '" + choice.strName + "' cannot work so: " + strFault +
                    "; its settings are listed in Docs/ENCODERS.md.");
}

std::string RipEncoder::GetText(const char* pKey) { return Narrow(m_pPlugin->GetInfo(Widen(pKey))); }

void RipEncoder::SetText(const std::string& strKey, const std::string& strValue)
{
    if (m_pPlugin->m_pEncoder != nullptr)
        m_pPlugin->m_pEncoder->SetInfo(Widen(strKey), Widen(strValue));
}
