// enc_pipe: any program that takes PCM from its standard input. It gets the name of the file to make as %o; without one
// in the command, what it writes to its standard output is the file. EncoderCommand.h has the rules of a command.
//
// Settings: input=wav|raw (wav: a header of 44 bytes comes first)    timeout=0..86400 seconds in which the program must
//           take something or end (300; 0: it may take for ever)    command=all the rest of the text
// Errors:   ENCODER_MISSING_FILE if there is no such program; ENCODER_PIPE if it stops taking audio, ends with a status
//           that is not 0 or by a signal, or takes too long. The last line of its standard error is told.
// Threads:  as EncoderBase.

#pragma once

#include "EncoderBase.h"
#include "PipeProgram.h"
#include <vector>

class PipeEncoder final : public EncoderBase
{
public:
    explicit PipeEncoder(ILyEncoderCallback* pCallback);
    ~PipeEncoder() override;

protected:
    bool ApplySettings(EncoderSettings& settings) override;
    bool Begin() override;
    bool Encode(const unsigned char* pData, size_t nFrames) override;
    bool End() override;
    void Abandon() override;

private:
    struct SETTINGS
    {
        bool bWavHeader = true;
        int nTimeoutSeconds = 300;
        std::vector<std::string> aryArguments; // with placeholders
    };

    bool Expand(std::vector<std::string>& aryArguments, bool& bNamesFile);
    bool GetPlaceholder(char cKind, std::string_view strName, std::string& strText) const;
    bool WriteHeader();
    bool FailByProgram();

    SETTINGS m_Settings;
    PipeProgram m_Program;
};
