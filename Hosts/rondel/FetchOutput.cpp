#include "FetchOutput.h"
#include "HostError.h"
#include <cerrno>
#include <csignal>
#include <cstring>
#include <unistd.h>
#include <utility>

FetchOutput::FetchOutput(const std::string& strPath) : m_strPath(strPath)
{
    std::signal(SIGPIPE, SIG_IGN); // a reader that has gone is an error to report, not a signal to die of
    m_Place.bFile = false;
    if (strPath == "-")
    {
        if (isatty(STDOUT_FILENO) != 0)
            throw HostError("standard output is a terminal; pipe it into a program, or name a file with -o FILE.");
        return;
    }
    m_Place = FindOutputPlace(strPath);
    if (!m_Place.bFile)
        return;
    m_pPartial = std::make_unique<PartialFile>(m_Place.strPath);
    if (!m_pPartial->GetIsOpen())
        FailToOpen();
}

FetchOutput::~FetchOutput()
{
    if (m_pFile != nullptr && m_pFile != stdout)
        (void)std::fclose(m_pFile);
}

std::string FetchOutput::GetWorkingPath() const
{
    return m_pPartial != nullptr ? m_pPartial->GetWorkingPath() : std::string();
}

void FetchOutput::ThrowError() const
{
    if (m_pError != nullptr)
        std::rethrow_exception(m_pError);
}

template <class WORK>
bool FetchOutput::Try(WORK work)
{
    try
    {
        work();
        return true;
    }
    catch (...)
    {
        m_pError = std::current_exception();
        return false;
    }
}

bool FetchOutput::Create()
{
    m_bBegun = true;
    return Try(
        [this]
        {
            m_OnBegin();
            OpenPlace();
        });
}

// A pipe waits here for who reads it.
void FetchOutput::OpenPlace()
{
    if (m_strPath == "-")
        m_pFile = stdout;
    else if (m_pPartial != nullptr)
        m_pFile = fdopen(m_pPartial->TakeDescriptor(), "wb");
    else
        m_pFile = std::fopen(m_Place.strPath.c_str(), "wb");
    if (m_pFile == nullptr)
        FailToOpen();
}

int FetchOutput::Write(const void* p, int nBytes)
{
    if (std::fwrite(p, 1, static_cast<size_t>(nBytes), m_pFile) != static_cast<size_t>(nBytes))
    {
        (void)Try([this] { FailToWrite(); });
        return 0;
    }
    m_nWritten += nBytes;
    return nBytes;
}

void FetchOutput::Close()
{
    if (m_pFile == nullptr || m_pError != nullptr)
        return;
    (void)Try(
        [this]
        {
            CloseFile();
            m_OnEnd();
        });
}

void FetchOutput::CloseFile()
{
    FILE* pFile = std::exchange(m_pFile, nullptr);
    if (pFile == stdout ? std::fflush(pFile) != 0 : std::fclose(pFile) != 0)
        FailToWrite();
}

void FetchOutput::Finish()
{
    if (m_pPartial != nullptr && !m_pPartial->Finish())
        FailToWrite();
}

void FetchOutput::FailToOpen() const
{
    throw HostError(m_strPath + " cannot be written (" + std::strerror(errno) + "); choose another place with -o.");
}

void FetchOutput::FailToWrite() const
{
    if (errno == EPIPE)
        throw HostError("the program that takes the data has ended early; start it again, or use -o FILE.");
    throw HostError((m_strPath == "-" ? "standard output" : m_strPath) + " could not be written to its end (" +
                    std::strerror(errno) + "); choose another place with -o.");
}
