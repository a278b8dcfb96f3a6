#include "WavEncoding.h"
#include "AudioFormat.h"
#include "HostError.h"
#include "LySharedToolsHelper.h"
#include "PartialFile.h"
#include "Progress.h"
#include "Services.h"
#include "Text.h"
#include "WavEncodingTags.h"
#include "WavLayout.h"
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <thread>

namespace
{
using FEED = CEncoderPluginFileBasedEncodingEmulator;

constexpr int PERCENT = 100;
constexpr int TAG_DTS = 8; // what a DTS stream in a PCM file is reported as
constexpr std::chrono::milliseconds PUMP_TIME(5);

void Note(const std::string& strText) { std::fprintf(stderr, "rondel: note: %s\n", strText.c_str()); }

std::string WithoutStop(std::string strText)
{
    while (strText.ends_with('.'))
        strText.pop_back();
    return strText;
}

// Why there is no reading it. The root size is not looked at for that.
std::string GetReason(const WAV_LAYOUT& layout)
{
    for (const WAV_PROBLEM& problem : layout.aryProblems)
        if (problem.eKind != WAV_PROBLEM_ROOT_SIZE)
            return problem.strText;
    return "its chunks make no sense";
}

// What the feed tells, on the thread that pumps its messages.
class Listener : public ILyEncoderCallback
{
public:
    explicit Listener(const std::string& strTask) : m_Progress(strTask, PERCENT) {}
    void OnFinished(ILyEncoder*) override { m_bFinished = true; }
    void OnError(ILyEncoder*, int, const wchar_t* pText) override { m_strError = Narrow(pText); }
    void OnProgress(ILyEncoder*, int nPercent) override { m_Progress.Set(nPercent); }

    bool m_bFinished = false;
    std::string m_strError;

private:
    Progress m_Progress;
};

// One encoding. The plug-in's feed is stopped ahead of everything else, as the plug-in asks for.
class Encoding
{
public:
    explicit Encoding(const WAV_ENCODING& wish) : m_Wish(wish), m_Encoder(wish.choice), m_Listener(wish.strSource)
    {
        m_pFeed = new FEED;
        m_Encoder.GetPlugin().m_pEmulator.Set(m_pFeed, true, false);
        m_pFeed->m_pPlugin = &m_Encoder.GetPlugin();
        m_pFeed->m_pCallback = &m_Listener;
    }
    ~Encoding() { m_Encoder.GetPlugin().Stop(); }
    Encoding(const Encoding&) = delete;
    Encoding& operator=(const Encoding&) = delete;

    void OpenSource();
    void ChooseTarget();
    bool Run(const StopSignals& signals); // false if it was stopped
    const std::string& GetTarget() const { return m_strTarget; }

private:
    std::string Fail(const std::string& strWhat) const;
    void CheckSource() const;
    void CheckFormat();
    void DropPartOfBlock();
    void SetUpEncoder();

    const WAV_ENCODING& m_Wish;
    RipEncoder m_Encoder;
    Listener m_Listener;
    FEED* m_pFeed = nullptr; // the plug-in's
    WAV_LAYOUT m_Layout;
    std::string m_strTarget;
    std::unique_ptr<WavEncodingTags> m_pTags;
};

std::string Encoding::Fail(const std::string& strWhat) const { return m_Wish.strSource + " " + strWhat; }

// Ahead of opening it: whoever opens a named pipe waits for somebody who writes into it, deaf to every wish to stop.
void Encoding::CheckSource() const
{
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(m_Wish.strSource, error);
    if (std::filesystem::is_directory(status))
        throw HostError(Fail("is a folder; name the files in it."));
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        throw HostError(Fail("is no file; save the audio as a WAV file first."));
}

void Encoding::OpenSource()
{
    CheckSource();
    const bool bOpen = m_pFeed->OpenFile(Widen(m_Wish.strSource));
    ILyReader* pReader = m_pFeed->m_pFileReader;
    if (pReader == nullptr || !pReader->GetIsOpen())
        throw HostError(Fail("cannot be opened; check its name and whether it may be read."));
    if (pReader->GetIsStream())
        throw HostError(Fail("is a stream, in which there is no going back; save it as a file first."));
    m_Layout = ReadWavLayout(*pReader, m_Wish.strSource);
    if (!bOpen)
        throw HostError(Fail("cannot be read as a WAV file: ") + GetReason(m_Layout) +
                        "; 'rondel inspect' tells more.");
    CheckFormat();
    DropPartOfBlock();
}

void Encoding::CheckFormat()
{
    const WAV_LAYOUT_FORMAT& format = m_Layout.format;
    const std::string strWayOut = "; convert it first, for example with 'sox IN.wav -e signed -b 16 OUT.wav'.";
    if (format.GetKind() != WAVE_TAG_PCM)
        throw HostError(Fail("holds " + DescribeWavFormat(format) + ", and encoders take PCM" + strWayOut));
    if (format.nBits != 16 && format.nBits != 24 && format.nBits != 32)
        throw HostError(Fail("has samples of " + std::to_string(format.nBits) +
                             " bits, and encoders take 16, 24 or 32" + strWayOut));
    if (format.nBlockAlign == 0 || format.nBlockAlign != format.nChannels * (format.nBits / 8))
        throw HostError(Fail("says that a block has " + std::to_string(format.nBlockAlign) +
                             " bytes, which does not fit its channels and bits" + strWayOut));
    if (m_pFeed->m_WAVInfo.GetFormatID() == TAG_DTS)
        Note(Fail("holds a DTS stream; only an encoder without loss keeps it."));
}

// Encoders refuse a piece of a block at the end, and nobody could hear it.
void Encoding::DropPartOfBlock()
{
    CWAVInfo& info = m_pFeed->m_WAVInfo;
    const long long nRest = info.GetDataBytes() % info.GetBlockAlign();
    if (nRest == 0)
        return;
    info.m_nDataBytes -= nRest;
    Note(Fail("ends within a block; its last " + std::to_string(nRest) +
              (nRest == 1 ? " byte is left out." : " bytes are left out.")));
}

void Encoding::ChooseTarget()
{
    const std::filesystem::path source(m_Wish.strSource);
    if (!m_Wish.strTarget.empty())
    {
        const OUTPUT_PLACE place = FindOutputPlace(m_Wish.strTarget);
        if (!place.bFile || m_Wish.strTarget == "-")
            throw HostError(m_Wish.strTarget + " is no file, and encoders write files; name one with -o.");
        m_strTarget = place.strPath;
    }
    else
    {
        const std::string strSuffix =
            m_Wish.choice.strSuffix.empty() ? m_Encoder.GetText("Extension") : m_Wish.choice.strSuffix;
        if (strSuffix.empty())
            throw HostError("it is not clear how files of the encoder '" + m_Encoder.GetName() +
                            "' are called; name the file with -o.");
        const std::filesystem::path folder =
            m_Wish.strFolder.empty() ? source.parent_path() : std::filesystem::path(m_Wish.strFolder);
        m_strTarget = (folder / source.stem()).string() + "." + strSuffix;
    }
    std::error_code error;
    if (std::filesystem::equivalent(source, m_strTarget, error))
        throw HostError(m_strTarget + " is the file to encode itself; name another one with -o.");
    if (m_Wish.strTarget.empty() && !m_Wish.bOverwrite &&
        std::filesystem::symlink_status(m_strTarget, error).type() != std::filesystem::file_type::not_found)
        throw HostError(m_strTarget +
                        " is already there; use --overwrite to replace it, or name another file with -o.");
}

void Encoding::SetUpEncoder()
{
    m_Encoder.SetText("Sample Rate", std::to_string(m_Layout.format.nRate));
    m_Encoder.SetText("Channels", std::to_string(m_Layout.format.nChannels));
    m_Encoder.SetText("Bits", std::to_string(m_Layout.format.nBits));
    // With it, what a stopped feed has sent is no file.
    m_Encoder.SetText("Expected Frames", std::to_string(m_pFeed->m_WAVInfo.GetTotalBlocks()));
    if (m_Wish.bTags)
        m_pTags = std::make_unique<WavEncodingTags>(m_pFeed->m_WAVInfo, m_Encoder);
    m_Encoder.SetText("Output File", m_strTarget);
}

bool Encoding::Run(const StopSignals& signals)
{
    if (m_pFeed->m_WAVInfo.GetTotalBlocks() < 1)
        throw HostError(Fail("holds no audio, so that there is nothing to encode; name another file."));
    SetUpEncoder();
    if (!m_pFeed->Start())
        throw HostError("the encoding cannot begin, since the system starts no thread; end other programs first.");
    while (!m_Listener.m_bFinished)
    {
        if (signals.GetStopWanted())
            (void)m_pFeed->Cancel();
        m_pFeed->PumpMainThreadMessages();
        if (!m_Listener.m_bFinished)
            std::this_thread::sleep_for(PUMP_TIME);
    }
    if (m_Listener.m_strError.empty())
        return true; // also if the signal came too late
    if (signals.GetStopWanted())
        return false;
    throw HostError(Fail("could not be encoded: " + WithoutStop(m_Listener.m_strError) + "; nothing was left behind."));
}
} // namespace

std::string EncodeWav(const WAV_ENCODING& encoding, const StopSignals& signals)
{
    RequireTools(); // the feed's messages are its
    RequireReader();
    Encoding run(encoding);
    run.OpenSource();
    run.ChooseTarget();
    return run.Run(signals) ? run.GetTarget() : std::string();
}
