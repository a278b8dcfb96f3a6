// rondel fetch: a file or URL through the reader library.

#include "Commands.h"
#include "HostError.h"
#include "ILyReader.h"
#include "LySharedToolsHelper.h"
#include "PartialFile.h"
#include "Progress.h"
#include "Services.h"
#include "Text.h"
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <unistd.h>
#include <vector>

namespace
{
constexpr int BLOCK_BYTES = 65536;

struct FETCH_OPTIONS
{
    std::string strSource;
    std::string strOutput;
    bool bHeaders = false;
    int nTimeoutSeconds = 20;
};

std::string GetInfo(ILyReader& reader, const wchar_t* pName)
{
    wchar_t* pText = reader.GetInfo(pName);
    std::string strText = Narrow(pText);
    LyCom::SysFreeString(pText);
    return strText;
}

[[noreturn]] void Fail(ILyReader& reader, const std::string& strSource, const char* pWhat)
{
    const std::string strReason = GetInfo(reader, L"Error");
    const std::string strStatus = GetInfo(reader, L"StatusCode");
    if (!strReason.empty())
        throw HostError(strReason);
    throw HostError(strSource + pWhat + (strStatus.empty() ? "" : " (the server answered " + strStatus + ")") +
                    "; check the name and try again.");
}

// Where the bytes go. A file has its name only when it is whole.
class Target
{
public:
    explicit Target(const std::string& strPath) : m_strPath(strPath)
    {
        std::signal(SIGPIPE, SIG_IGN); // a reader that has gone is an error to report, not a signal to die of
        if (strPath == "-" && isatty(STDOUT_FILENO) != 0)
            throw HostError("standard output is a terminal; pipe it into a program, or name a file with -o FILE.");
        m_pFile = strPath == "-" ? stdout : Open(FindOutputPlace(strPath));
        if (m_pFile == nullptr)
            throw HostError(strPath + " cannot be written (" + std::strerror(errno) +
                            "); choose another place with -o.");
    }
    ~Target()
    {
        if (m_pFile != nullptr && m_pFile != stdout)
            (void)std::fclose(m_pFile);
    }
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

    void Write(const unsigned char* p, int nBytes)
    {
        if (std::fwrite(p, 1, static_cast<size_t>(nBytes), m_pFile) != static_cast<size_t>(nBytes))
            Fail();
    }
    void Finish()
    {
        FILE* pFile = m_pFile;
        if (std::fflush(pFile) != 0)
            Fail();
        if (pFile == stdout)
            return;
        m_pFile = nullptr;
        if (std::fclose(pFile) != 0 || (m_pPartial != nullptr && !m_pPartial->Finish()))
            Fail();
    }

private:
    FILE* Open(const OUTPUT_PLACE& place)
    {
        if (!place.bFile)
            return std::fopen(place.strPath.c_str(), "wb");
        m_pPartial = std::make_unique<PartialFile>(place.strPath);
        return m_pPartial->GetIsOpen() ? fdopen(m_pPartial->TakeDescriptor(), "wb") : nullptr;
    }
    [[noreturn]] void Fail() const
    {
        if (errno == EPIPE)
            throw HostError("the program that takes the data has ended early; start it again, or use -o FILE.");
        throw HostError((m_strPath == "-" ? "standard output" : m_strPath) + " could not be written to its end (" +
                        std::strerror(errno) + "); choose another place with -o.");
    }

    std::string m_strPath;
    std::unique_ptr<PartialFile> m_pPartial; // null: no file
    FILE* m_pFile = nullptr;
};

// The last part of the address, as browsers do.
std::string GetDefaultName(const std::string& strSource)
{
    const std::string strPath = strSource.substr(0, strSource.find_first_of("?#"));
    std::string strName = strPath.substr(strPath.rfind('/') + 1);
    if (std::filesystem::exists(strName))
        throw HostError(strName + " is already there; name the file to write with -o FILE.");
    if (strName.empty())
        throw HostError("it is not clear under which name to keep " + strSource + "; name a file with -o FILE.");
    return strName;
}

int Fetch(const FETCH_OPTIONS& options)
{
    RequireReader();
    const std::unique_ptr<ILyReader> pReader(CreateGenericReader(Widen(options.strSource)));
    if (pReader == nullptr)
        throw HostError("\"" + options.strSource +
                        "\" is neither a file nor an address that can be read; name a file or a file, "
                        "http or https URL.");
    pReader->SetTimeout(options.nTimeoutSeconds * 1000);
    pReader->SetProperty(L"READ_ONLY", L"1");
    const bool bOpen = pReader->Open();
    if (options.bHeaders)
        std::fputs(GetInfo(*pReader, L"AllHeaders").c_str(), stderr);
    if (!bOpen)
        Fail(*pReader, options.strSource, " could not be opened");
    Target target(options.strOutput.empty() ? GetDefaultName(options.strSource) : options.strOutput);
    const long long nLength = pReader->GetLength();
    Progress progress(options.strSource, nLength);
    std::vector<unsigned char> aryBlock(BLOCK_BYTES);
    long long nDone = 0;
    for (int nGot = 1; nGot > 0; nDone += nGot)
    {
        nGot = pReader->Read(aryBlock.data(), BLOCK_BYTES);
        if (nGot < 1)
            break;
        target.Write(aryBlock.data(), nGot);
        progress.Set(nDone + nGot);
    }
    if ((nLength >= 0 && nDone < nLength) || !GetInfo(*pReader, L"Error").empty())
        Fail(*pReader, options.strSource, " ended early");
    target.Finish();
    return EXIT_DONE;
}
} // namespace

void AddFetchCommand(CLI::App& app, int& nExitCode)
{
    auto p = std::make_shared<FETCH_OPTIONS>();
    CLI::App* pCommand = app.add_subcommand("fetch", "Copies a file or URL as the player reads it.");
    pCommand->add_option("SOURCE", p->strSource, "a file, or a file, http or https URL")->required();
    pCommand->add_option("-o,--output", p->strOutput, "where to put it, or - for standard output");
    pCommand->add_flag("--headers", p->bHeaders, "show the headers of the answer on stderr");
    pCommand->add_option("--timeout", p->nTimeoutSeconds, "seconds without progress after which it is given up")
        ->check(CLI::Range(1, 3600))
        ->capture_default_str();
    pCommand->callback([p, &nExitCode] { nExitCode = Fetch(*p); });
}
