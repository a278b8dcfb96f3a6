#include "WaitMessage.h"
#include "LyForeignCall.h"
#include "LyPlatform.h"
#include "OneLineText.h"
#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <new>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace
{
constexpr std::chrono::milliseconds DRAW_PAUSE(100);
constexpr int ESCAPE_SEQUENCE_MS = 50; // the bytes of one key come within this time
constexpr char KEY_ESCAPE = '\x1b';
constexpr int MAX_PERCENT = 100;

// Signals are the host's: its own threads take them. This one must not be stopped for touching the terminal either.
void BlockSignals()
{
    sigset_t all;
    sigfillset(&all);
    (void)pthread_sigmask(SIG_BLOCK, &all, nullptr);
}

bool IsFinalByte(char c) { return c >= 0x40 && c <= 0x7E; }

// ECMA-48, 5.4: what a function key sends begins with the escape character, too. Returns the position behind it; for
// the escape key alone, the position behind that.
size_t SkipEscapeSequence(const std::string& strKeys, size_t nEscape)
{
    size_t n = nEscape + 1;
    if (n >= strKeys.size() || strKeys[n] == KEY_ESCAPE)
        return n;
    if (strKeys[n] != '[' && strKeys[n] != 'O')
        return n + 1; // a letter with the meta key
    for (++n; n < strKeys.size() && !IsFinalByte(strKeys[n]); ++n)
        ;
    return n + 1;
}

bool HoldsCancelKey(const std::string& strKeys)
{
    for (size_t n = 0; n < strKeys.size(); ++n)
    {
        if (strKeys[n] == 'q' || strKeys[n] == 'Q')
            return true;
        if (strKeys[n] != KEY_ESCAPE)
            continue;
        const size_t nBehind = SkipEscapeSequence(strKeys, n);
        if (nBehind == n + 1)
            return true;
        n = nBehind - 1;
    }
    return false;
}

// Appends as much of the text as fits into nColumns; returns the columns that it takes.
int AppendFitting(std::string& strLine, const std::wstring& strText, int nColumns)
{
    int nUsed = 0;
    for (wchar_t c : strText)
    {
        if (IsControlCharacter(c))
            c = L' ';
        const int nMore = GetColumns(c);
        if (nUsed + nMore > nColumns)
            break;
        AppendOneLine(strLine, &c, 1);
        nUsed += nMore;
    }
    return nUsed;
}
} // namespace

WaitMessage* WaitMessage::Create(const wchar_t* pText, int nDelayMS, bool bCancelButton,
                                 ILyWaitMessageCallback* pCallback, std::shared_ptr<TerminalTurns> pTurns,
                                 std::wstring strCancelHint)
{
    WaitMessage* pMessage = new (std::nothrow) WaitMessage(pCallback, std::move(pTurns), bCancelButton);
    if (pMessage == nullptr)
        return nullptr;
    pMessage->m_strCancelHint = std::move(strCancelHint);
    pMessage->SetProgress(pText, nullptr, -1);
    if (!Terminal::IsShown() || pMessage->Start(std::max(nDelayMS, 0)))
        return pMessage;
    delete pMessage;
    return nullptr;
}

WaitMessage::WaitMessage(ILyWaitMessageCallback* pCallback, std::shared_ptr<TerminalTurns> pTurns, bool bCancelButton)
    : m_pCallback(pCallback), m_pTurns(std::move(pTurns)), m_bCancelButton(bCancelButton)
{
}

WaitMessage::~WaitMessage()
{
    for (int nFile : m_aryWakePipe)
        if (nFile >= 0)
            close(nFile);
}

bool WaitMessage::Start(int nDelayMS)
{
    if (pipe2(m_aryWakePipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return false;
    const bool bStarted = LyForeignCall(
        [&]
        {
            m_pTurns->Add(this);
            std::lock_guard lock(m_Mutex);
            m_Thread = std::thread([this, nDelayMS] { Run(nDelayMS); });
        });
    if (!bStarted)
        m_pTurns->Remove(this);
    return bStarted;
}

void WaitMessage::SetProgress(const wchar_t* pText, const wchar_t* pSecondText, int nPercent)
{
    std::lock_guard lock(m_Mutex);
    (void)LyForeignCall( // without memory the old text stays
        [&]
        {
            if (pText != nullptr)
                m_strText = pText;
            m_strSecondText = pSecondText != nullptr ? pSecondText : L"";
        });
    m_nPercent = std::min(nPercent, MAX_PERCENT);
    // The thread hears of the first change since it drew, and then draws the last one.
    if (m_bVisible && !m_bDirty)
        Wake();
    m_bDirty = true;
}

void WaitMessage::Close()
{
    m_pTurns->Remove(this);
    if (m_Thread.get_id() != std::this_thread::get_id())
    {
        Silence();
        delete this;
        return;
    }
    // From within the callback: the thread ends the object when the callback has returned.
    LyPlatform::HoldLibraryUntilThreadEnds();
    m_bDeleteAtEnd = true;
    m_bEnd = true;
    m_Thread.detach();
}

// A full pipe wakes as well.
void WaitMessage::Wake()
{
    if (write(m_aryWakePipe[1], "", 1) < 0)
        return;
}

void WaitMessage::Silence()
{
    m_bEnd = true;
    if (!m_Thread.joinable())
        return;
    Wake();
    m_Thread.join();
}

void WaitMessage::Run(int nDelayMS)
{
    BlockSignals();
    {
        std::lock_guard lock(m_Mutex); // m_Thread is this one from here on
    }
    const auto shown = CLOCK::now() + std::chrono::milliseconds(nDelayMS);
    for (auto now = CLOCK::now(); !m_bEnd && now < shown; now = CLOCK::now())
        SleepUntilWoken(static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(shown - now).count()));
    (void)LyForeignCall([this] { ShowUntilEnd(); }); // without memory the line goes
    (void)LyForeignCall([this] { Leave(); });
    if (m_bDeleteAtEnd)
        delete this;
}

void WaitMessage::ShowUntilEnd()
{
    while (!m_bEnd)
    {
        if (m_bInside && m_pTurns->GetMustLeave())
            Leave();
        if (!m_bInside && !m_bCancelled)
            Enter();
        const int nSleepMS = GetSleepMS();
        if (nSleepMS == 0)
            Draw();
        else
            SleepUntilWoken(nSleepMS);
        if (ReadCancelKey())
            Cancel();
    }
}

void WaitMessage::Enter()
{
    m_bInside = m_pTurns->TryEnter(this);
    if (!m_bInside)
        return;
    std::lock_guard lock(m_Mutex);
    m_bVisible = true;
    m_bDirty = true;
    m_LastDrawn = CLOCK::time_point();
}

// Takes the line away, gives the keys back, and makes room for others.
void WaitMessage::Leave()
{
    if (!m_bInside)
        return;
    {
        std::lock_guard lock(m_Mutex);
        m_bVisible = false;
    }
    m_Keys.Close();
    m_bInside = false;
    const int nColumns = std::exchange(m_nDrawnColumns, 0);
    (void)LyForeignCall(
        [&]
        {
            if (nColumns > 0)
                Terminal::Write("\r" + std::string(static_cast<size_t>(nColumns), ' ') + "\r");
        });
    m_pTurns->Leave(this);
}

// How long there is nothing to draw: 0 for now, -1 until word comes.
int WaitMessage::GetSleepMS()
{
    if (!m_bInside)
        return -1;
    std::lock_guard lock(m_Mutex);
    if (!m_bDirty)
        return -1;
    const auto pause = m_LastDrawn + DRAW_PAUSE - CLOCK::now();
    return std::max(0, static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(pause).count()));
}

void WaitMessage::SleepUntilWoken(int nMS)
{
    pollfd aryFiles[] = {{m_aryWakePipe[0], POLLIN, 0}, {m_Keys.GetFile(), POLLIN, 0}}; // -1 is passed over
    (void)poll(aryFiles, std::size(aryFiles), nMS);                                     // the caller looks again
    char aryBytes[64];
    while (read(m_aryWakePipe[0], aryBytes, sizeof aryBytes) > 0)
        ;
}

bool WaitMessage::ReadCancelKey()
{
    pollfd file = {m_Keys.GetFile(), POLLIN, 0};
    if (!m_Keys.IsOpen() || poll(&file, 1, 0) <= 0)
        return false;
    std::string strKeys = m_Keys.ReadKeys();
    if (!strKeys.empty() && strKeys.back() == KEY_ESCAPE && poll(&file, 1, ESCAPE_SEQUENCE_MS) > 0)
        strKeys += m_Keys.ReadKeys();
    if (strKeys.empty())
        m_Keys.Close(); // the terminal has gone, or is another's: Draw tries again
    return HoldsCancelKey(strKeys);
}

void WaitMessage::Cancel()
{
    m_bCancelled.store(true, std::memory_order_release);
    Leave(); // the callback may want to ask something
    if (m_pCallback != nullptr)
        (void)LyForeignCall([this] { (void)m_pCallback->LyWaitMessage_Cancel(); });
}

void WaitMessage::Draw()
{
    if (m_bCancelButton && !m_Keys.IsOpen())
        (void)m_Keys.Open(Terminal::MODE_KEYS); // without it there are no keys
    int nColumns = 0;
    std::string strLine = "\r" + BuildLine(nColumns);
    strLine.append(static_cast<size_t>(std::max(m_nDrawnColumns - nColumns, 0)), ' ');
    m_nDrawnColumns = nColumns;
    m_LastDrawn = CLOCK::now();
    Terminal::Write(strLine);
}

// The percentage and the hint are kept whole, the texts are cut.
std::string WaitMessage::BuildLine(int& nColumns)
{
    std::unique_lock lock(m_Mutex);
    m_bDirty = false;
    std::wstring strText = m_strText;
    if (!m_strSecondText.empty())
        strText += (strText.empty() ? L"" : L"  ") + m_strSecondText;
    std::wstring strEnd = m_nPercent >= 0 ? L"  " + std::to_wstring(m_nPercent) + L"%" : L"";
    lock.unlock();
    if (m_Keys.IsOpen())
        strEnd += L"  (" + m_strCancelHint + L")";

    // The last column stays free: a terminal may begin a new line behind it.
    const int nRoom = Terminal::GetWidth() - 1;
    std::string strRest;
    const int nEndColumns = AppendFitting(strRest, strEnd, nRoom);
    std::string strLine;
    nColumns = AppendFitting(strLine, strText, nRoom - nEndColumns) + nEndColumns;
    return strLine + strRest;
}
