// RipEncoders: what the user names behind --encoder, and the outputs of a rip that run encoder plug-ins.
//
//     wav                    the program's own
//     NAME[:SETTINGS]        the plug-in enc_NAME.so beside the program; its settings as Docs/ENCODERS.md has them
//     cmd[.SUFFIX]=COMMAND   any program, by the pipe plug-in; the suffix of its files is "out" where none is given.
//                            Settings of the pipe may stand first: cmd.mp3=input=raw; command=lame -r - %o
//
// Errors:  HostError; the parser answers an empty text, or what is wrong, as command lines want it.
// Threads: an output's encoder lives on the thread of that output, but for its making.

#pragma once

#include "EncoderHelper.h"
#include "RipOutput.h"
#include <memory>
#include <string>

struct ENCODER_CHOICE
{
    std::string strName;     // "wav", "flac", ..., "cmd"
    std::string strSettings; // empty: as the options have it
    std::string strSuffix;   // of files, without the dot; empty: the plug-in's
    bool bWAV = false;
};

std::string ParseEncoderChoice(const std::string& strText, ENCODER_CHOICE& choice);

// A plug-in that is loaded, has its settings and finds nothing wrong with them.
class RipEncoder
{
public:
    explicit RipEncoder(const ENCODER_CHOICE& choice);

    CEncoderPlugin& GetPlugin() { return *m_pPlugin; }
    const std::string& GetName() const { return m_strName; }
    std::string GetText(const char* pKey); // an info, empty if there is none
    void SetText(const std::string& strKey, const std::string& strValue);

private:
    std::unique_ptr<CEncoderPlugin> m_pPlugin;
    std::string m_strName; // for the user
};

std::unique_ptr<RipOutput> MakeEncoderOutput(std::unique_ptr<RipEncoder> pEncoder, IRipFileListener& listener);
