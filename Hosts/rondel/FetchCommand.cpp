// rondel fetch: a file or URL, or a part of one, through the file loader.

#include "Commands.h"
#include "FetchOutput.h"
#include "FileLoader.h"
#include "HostError.h"
#include "LySharedToolsHelper.h"
#include "Progress.h"
#include "Services.h"
#include "Text.h"
#include <climits>
#include <ctime>
#include <filesystem>
#include <memory>
#include <optional>
#include <sys/stat.h>

namespace
{
struct FETCH_OPTIONS
{
    std::string strSource;
    std::string strOutput;
    bool bHeaders = false;
    int nTimeoutSeconds = 20;
    long long nFirstByte = 0;
    long long nLimit = 0; // 0: none
    bool bIfNewer = false;
};

// Shows what the loader tells.
class ProgressListener final : public IFileLoaderProgress
{
public:
    explicit ProgressListener(const std::string& strTask) : m_Progress(strTask, STEPS) {}
    bool GetCancelled() override { return false; } // signals end the program
    void SetProgress(float fProgress) override { m_Progress.Set(static_cast<long long>(fProgress * STEPS)); }

private:
    static constexpr int STEPS = 10000;

    Progress m_Progress;
};

// The last part of the address, as browsers do.
std::string GetDefaultName(const std::string& strSource, bool bMayBeThere)
{
    const std::string strPath = strSource.substr(0, strSource.find_first_of("?#"));
    std::string strName = strPath.substr(strPath.rfind('/') + 1);
    if (strName.empty())
        throw HostError("it is not clear under which name to keep " + strSource +
                        ", which ends as a directory does; name a file with -o FILE.");
    std::error_code error;
    if (!bMayBeThere && std::filesystem::exists(strName, error))
        throw HostError(strName + " is already there; name the file to write with -o FILE.");
    return strName;
}

// Of the copy that is there; none if there is no copy. It goes the way of the server's date, whole seconds as a text,
// so that equal times are equal numbers.
LyDateTime GetDateOfCopy(const std::string& strPath)
{
    LyDateTime date;
    struct stat status;
    tm time = {};
    char szTime[32];
    if (stat(strPath.c_str(), &status) == 0 && gmtime_r(&status.st_mtime, &time) != nullptr &&
        std::strftime(szTime, sizeof szTime, "%Y-%m-%dT%H:%M:%SZ", &time) > 0)
        (void)date.Parse(Widen(szTime));
    return date;
}

class Fetcher
{
public:
    explicit Fetcher(const FETCH_OPTIONS& options)
        : m_Options(options), m_strPath(options.strOutput.empty() ? GetDefaultName(options.strSource, options.bIfNewer)
                                                                  : options.strOutput),
          m_Output(m_strPath), m_Listener(options.strSource)
    {
        m_Output.m_OnBegin = [this] { Begin(); };
        m_Output.m_OnEnd = [this] { End(); };
        m_Loader.m_nTimeoutMS = options.nTimeoutSeconds * 1000;
        m_Loader.m_nStartOffset = options.nFirstByte;
        m_Loader.m_pProgress = &m_Listener;
        m_Loader.SetMaximumLength(options.nLimit);
        if (GetIsWhole() && !options.bIfNewer && !m_Output.GetWorkingPath().empty() && GetLyTools(true) != nullptr)
            m_Loader.AddDownloadParametersRequestHeaders(LyStringArray(), true);
    }

    void Run()
    {
        const LyDateTime date = m_Options.bIfNewer ? GetDateOfCopy(m_strPath) : LyDateTime();
        bool bCreate = true;
        const bool bLoaded =
            m_Loader.LoadInternal(Widen(m_Options.strSource), nullptr, &m_Output,
                                  Widen(date.GetValue() != 0 ? m_strPath : m_Output.GetWorkingPath()), bCreate, date);
        m_pUnpacking.reset();
        if (m_Options.bHeaders && !m_Output.GetHasBegun())
            ShowHeaders();
        m_Output.ThrowError();
        if (!m_Loader.m_strError.IsEmpty())
            throw HostError(Narrow(m_Loader.m_strError));
        if (!bLoaded && date.GetValue() != 0 && !m_Output.GetHasBegun() && Narrow(m_Loader.m_strStatusCode) == "304")
            return;
        // Of a source without a length, and without a byte, the loader cannot tell that it was whole.
        if (!bLoaded && !(m_bEnded && m_strEncoding.empty() && m_nLength < 0 && m_Output.GetWritten() == 0 &&
                          m_Options.nFirstByte == 0))
            Fail();
        m_Output.Finish();
    }

private:
    bool GetIsWhole() const { return m_Options.nFirstByte == 0 && m_Options.nLimit == 0; }
    void ShowHeaders() const { std::fputs(Narrow(m_Loader.m_strAllHeaders).c_str(), stderr); }

    // The source is open.
    void Begin()
    {
        if (m_Options.bHeaders)
            ShowHeaders();
        m_nLength = m_Loader.m_pReader->GetLength();
        wchar_t* pEncoding = m_Loader.m_pReader->GetInfo(L"ContentEncoding");
        m_strEncoding = Narrow(pEncoding);
        LyCom::SysFreeString(pEncoding);
        if (m_strEncoding.empty())
            return;
        const std::string strPacked = m_Options.strSource + " comes packed (" + m_strEncoding + ")";
        if (!GetIsWhole())
            throw HostError(strPacked + ", so that its bytes cannot be counted; fetch the whole of it.");
        if (m_Options.bIfNewer)
            throw HostError(strPacked + ", so that its length tells nothing; fetch it without --if-newer.");
        if (m_Output.GetWorkingPath().empty())
            throw HostError(strPacked + ", which takes a file to unpack it in; name one with -o FILE.");
    }

    // All bytes are there. What is packed is unpacked next, beside itself.
    void End()
    {
        m_bEnded = true;
        if (!m_strEncoding.empty())
            m_pUnpacking.emplace(m_Output.GetWorkingPath() + ".tmp");
    }

    [[noreturn]] void Fail() const
    {
        const std::string strStatus = Narrow(m_Loader.m_strStatusCode);
        std::string strWhat = " ended early";
        if (!m_Output.GetHasBegun())
            strWhat = " could not be opened";
        else if (!m_strEncoding.empty() && m_bEnded)
            strWhat = " came packed and could not be unpacked";
        else if (m_Options.nFirstByte > 0 && m_Output.GetWritten() == 0)
            strWhat = " ended before byte " + std::to_string(m_Options.nFirstByte);
        throw HostError(m_Options.strSource + strWhat +
                        (strStatus.empty() ? "" : " (the server answered " + strStatus + ")") +
                        "; check the name and try again.");
    }

    const FETCH_OPTIONS& m_Options;
    std::string m_strPath;
    FetchOutput m_Output;
    std::optional<PassingName> m_pUnpacking; // while the loader unpacks
    ProgressListener m_Listener;
    CFileLoader m_Loader;
    long long m_nLength = -1;
    std::string m_strEncoding;
    bool m_bEnded = false;
};

int Fetch(const FETCH_OPTIONS& options)
{
    RequireReader();
    if (options.bIfNewer)
        RequireTools(); // which reads dates
    if (options.bIfNewer && options.strOutput == "-")
        throw HostError("--if-newer compares with a file that is there; name it with -o FILE.");
    if (std::unique_ptr<ILyReader>(CreateGenericReader(Widen(options.strSource))) == nullptr)
        throw HostError("\"" + options.strSource +
                        "\" is neither a file nor an address that can be read; name a file or a file, "
                        "http or https URL.");
    Fetcher(options).Run();
    return EXIT_DONE;
}
} // namespace

void AddFetchCommand(CLI::App& app, int& nExitCode)
{
    auto p = std::make_shared<FETCH_OPTIONS>();
    CLI::App* pCommand = app.add_subcommand("fetch", "Copies a file or URL as the player reads it.");
    pCommand->add_option("SOURCE", p->strSource, "a file, or a file, http or https URL")->required();
    pCommand->add_option("-o,--output", p->strOutput, "where to put it, or - for standard output");
    pCommand->add_option("--from", p->nFirstByte, "leave out so many bytes at the start")
        ->check(CLI::Range(0LL, LLONG_MAX))
        ->type_name("BYTES");
    pCommand->add_option("--limit", p->nLimit, "stop after so many bytes")
        ->check(CLI::Range(1LL, LLONG_MAX))
        ->type_name("BYTES");
    pCommand->add_flag("--if-newer", p->bIfNewer,
                       "of a URL: leave the file alone if it is as long and not older than the server's");
    pCommand->add_flag("--headers", p->bHeaders, "show the headers of the answer on stderr");
    pCommand->add_option("--timeout", p->nTimeoutSeconds, "seconds without progress after which it is given up")
        ->check(CLI::Range(1, 3600))
        ->capture_default_str();
    pCommand->callback([p, &nExitCode] { nExitCode = Fetch(*p); });
}
