#include "Listen.h"
#include "CDUnits.h"
#include "Commands.h"
#include "Disc.h"
#include "HostError.h"
#include "Keys.h"
#include "Loudspeakers.h"
#include "Plugin.h"
#include "StatusLine.h"
#include "Text.h"
#include <algorithm>

namespace
{
constexpr int BLOCK_BYTES = LY_CD_SECOND_BYTES / 10; // a tenth of a second, between two looks at the keys
constexpr int PAUSE_WAIT_MS = 200;
constexpr long long SKIP_BYTES = 10LL * LY_CD_SECOND_BYTES;

class Listener
{
public:
    explicit Listener(const LISTEN_OPTIONS& options);

    double Run(); // the seconds that are missing at the end

private:
    enum END
    {
        END_HEARD,
        END_NEXT,
        END_PREVIOUS,
        END_QUIT
    };

    const LISTEN_OPTIONS& m_Options;
    std::vector<int> m_aryTracks; // audio only
    Plugin m_Plugin;
    std::unique_ptr<ILyAudioInput> m_pSource;
    Loudspeakers m_Speakers;
    Keys m_Keys;
    int m_nTrack;
    long long m_nPosition = 0; // bytes of the track handed to the card
    long long m_nLength = 0;
    bool m_bPaused = false;
    StatusLine m_Line;
    double m_fMissingSeconds = 0;

    void OpenTrack(int nTrack, double fFrom);
    END PlayTrack(long long nEnd);
    bool TakeKey(KEY key, END& end);
    void TogglePause();
    void Seek(long long nPosition);
    void Show();
    int GetNeighbour(int nStep) const;
};

Listener::Listener(const LISTEN_OPTIONS& options)
    : m_Options(options), m_Speakers(options.strDevice), m_nTrack(options.nTrack)
{
    const Disc disc(options.strDrive);
    (void)disc.GetAudioTrack(options.nTrack);
    for (const TTrackList& track : disc.GetTracks())
        if (disc.GetIsPlayable(track))
            m_aryTracks.push_back(track.nTrackNumber);
}

void Listener::OpenTrack(int nTrack, double fFrom)
{
    m_pSource = m_Plugin.CreateSource();
    m_nTrack = nTrack;
    if (m_pSource->Open(Widen("cda://" + m_Options.strDrive + "," + std::to_string(nTrack))) != 0)
        throw HostError("the plug-in could not open track " + std::to_string(nTrack) +
                        "; look at the disc with 'rondel info'.");
    m_nLength = GetNumber(*m_pSource, LY_AUDIO_INPUT_INFO_TOTAL_SAMPLES) * LY_CD_FRAME_BYTES;
    m_nPosition = 0;
    if (fFrom > 0)
        Seek(static_cast<long long>(fFrom) * LY_CD_SECOND_BYTES);
}

// The plug-in seeks by whole seconds.
void Listener::Seek(long long nPosition)
{
    const long long nLastSecond = std::max<long long>(0, m_nLength - 1) / LY_CD_SECOND_BYTES;
    const long long nSecond = std::clamp<long long>(nPosition / LY_CD_SECOND_BYTES, 0, nLastSecond);
    if (m_pSource->SetInformation(LY_AUDIO_INPUT_INFO_POSITION, Widen(std::to_string(nSecond * 1000))) != 0)
        throw HostError("the plug-in refused to seek.");
    m_nPosition = nSecond * LY_CD_SECOND_BYTES;
}

// What the card has not yet played is given up, and fetched again behind the pause: cards differ in whether they can
// stand still.
void Listener::TogglePause()
{
    m_bPaused = !m_bPaused;
    if (!m_bPaused)
        return;
    const long long nHeard = m_nPosition - m_Speakers.GetBytesAhead();
    m_Speakers.Drop();
    Seek(nHeard);
}

bool Listener::TakeKey(KEY key, END& end)
{
    switch (key)
    {
    case KEY_PAUSE:
        TogglePause();
        return true;
    case KEY_FORWARD:
    case KEY_BACKWARD:
    {
        const long long nHeard = m_nPosition - m_Speakers.GetBytesAhead();
        m_Speakers.Drop();
        Seek(nHeard + (key == KEY_FORWARD ? SKIP_BYTES : -SKIP_BYTES));
        return true;
    }
    case KEY_NEXT:
    case KEY_PREVIOUS:
        end = key == KEY_NEXT ? END_NEXT : END_PREVIOUS;
        return false;
    case KEY_QUIT:
        end = END_QUIT;
        return false;
    default:
        return true;
    }
}

Listener::END Listener::PlayTrack(long long nEnd)
{
    std::vector<unsigned char> aryBlock(BLOCK_BYTES);
    END end = END_HEARD;
    for (;;)
    {
        const KEY key = m_Keys.Read(m_bPaused ? PAUSE_WAIT_MS : 0);
        if (!TakeKey(key, end))
            return end;
        Show();
        if (m_bPaused || key != KEY_NONE) // all keys that were pressed go ahead of fetching more, which may take time
            continue;
        const int nWanted = static_cast<int>(std::min<long long>(BLOCK_BYTES, nEnd - m_nPosition));
        const int nGot = nWanted > 0 ? m_pSource->GetSamples(aryBlock.data(), nWanted) : 0;
        if (nGot < 1)
        {
            // The end of a track is short of less than one request.
            if (nEnd - m_nPosition >= PLUGIN_REQUEST_BYTES)
                m_fMissingSeconds = static_cast<double>(nEnd - m_nPosition) / LY_CD_SECOND_BYTES;
            return END_HEARD;
        }
        m_Speakers.Write(aryBlock.data(), nGot);
        m_nPosition += nGot;
    }
}

void Listener::Show()
{
    if (!m_Line.GetIsTerminal())
        return;
    const double fHeard = static_cast<double>(std::max(0LL, m_nPosition - m_Speakers.GetBytesAhead()));
    m_Line.Show("Track " + std::to_string(m_nTrack) + "  " + FormatSeconds(fHeard / LY_CD_SECOND_BYTES) + " of " +
                FormatSeconds(static_cast<double>(m_nLength) / LY_CD_SECOND_BYTES) + (m_bPaused ? "  paused" : "") +
                "  (space pauses, arrows seek, n and p change the track, q quits)");
}

// The audio track so many places on. Behind the last one there is none (0), ahead of the first one it is the first.
int Listener::GetNeighbour(int nStep) const
{
    const auto pHere = std::find(m_aryTracks.begin(), m_aryTracks.end(), m_nTrack);
    const auto nPlace = std::max<std::ptrdiff_t>(0, pHere - m_aryTracks.begin() + nStep);
    return nPlace < static_cast<std::ptrdiff_t>(m_aryTracks.size()) ? m_aryTracks[static_cast<size_t>(nPlace)] : 0;
}

double Listener::Run()
{
    const long long nTo = static_cast<long long>(m_Options.fToSeconds * LY_CD_SAMPLE_RATE) * LY_CD_FRAME_BYTES;
    OpenTrack(m_nTrack, m_Options.fFromSeconds);
    END end = PlayTrack(m_Options.fToSeconds > 0 ? std::min(nTo, m_nLength) : m_nLength);
    while (end == END_NEXT || end == END_PREVIOUS)
    {
        const int nTrack = GetNeighbour(end == END_NEXT ? 1 : -1);
        m_Speakers.Drop();
        if (nTrack == 0)
            break;
        m_bPaused = false;
        OpenTrack(nTrack, 0);
        end = PlayTrack(m_nLength);
    }
    if (end == END_HEARD)
        m_Speakers.Finish();
    m_Line.TakeAway();
    return m_fMissingSeconds;
}
} // namespace

int Listen(const LISTEN_OPTIONS& options)
{
    Listener listener(options);
    ReportPlaying(options.strDrive, listener.Run()); // while the drive is still held: it knows of its disc
    return EXIT_DONE;
}
