// Another program that is fed through its standard input. It runs in a process group of its own, so that the keys of a
// terminal do not reach it; its standard error is read, and its last line kept. A program that has gone never ends this
// one by SIGPIPE.
//
// Errors:  false; GetError is a code of EncoderError.h, GetDetail a sentence.
// Threads: one at a time.

#pragma once

#include "EncoderError.h"
#include <string>
#include <sys/types.h>
#include <vector>

class PipeProgram
{
public:
    PipeProgram() = default;
    ~PipeProgram() { Kill(); }
    PipeProgram(const PipeProgram&) = delete;
    PipeProgram& operator=(const PipeProgram&) = delete;

    // The first argument is the program, sought along PATH. Its standard output goes to the handle, or with -1 nowhere.
    bool Start(const std::vector<std::string>& aryArguments, int nOutput, int nTimeoutSeconds);
    bool Write(const unsigned char* pData, size_t nBytes);
    bool Finish(); // ends the input and waits; true if the program ended with status 0
    void Kill();   // asks it to go, and then makes it; harmless where there is none

    int GetError() const { return m_nError; }
    const std::string& GetDetail() const { return m_strDetail; }

private:
    bool Fail(int nError, const std::string& strDetail);
    bool Spawn(const std::vector<std::string>& aryArguments, int nOutput, int nInputEnd, int nErrorEnd);
    bool WriteSome(const unsigned char*& pData, size_t& nBytes);
    bool WaitForRoom();
    bool WaitForEnd(int nTimeoutMs);
    void ReadMessages();
    std::string GetLastMessage() const;
    bool TellEnd();

    pid_t m_nProcess = -1;
    int m_nInput = -1;     // its standard input
    int m_nMessages = -1;  // its standard error
    int m_nStatus = 0;     // of waitpid
    int m_nTimeoutMs = -1; // poll's: -1 is none
    std::string m_strProgram;
    std::string m_strMessages; // the last of them
    int m_nError = ENCODER_OK;
    std::string m_strDetail;
};
