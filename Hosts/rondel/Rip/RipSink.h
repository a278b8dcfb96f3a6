// RipSink: the output of a rip that makes many files. It takes the one continuous stream of the copy engine, divides it
// where pieces end, and passes each part on: to the sums of the disc, to the meter, and to all outputs. It also takes
// down how fast reading went.
//
// Shape:   blocks of any number of frames, the sectors of the pieces one behind the other. Where the stream is is known
//          by counting: what the drive refused comes as silence, so that frames always add up.
// Ends:    a piece is ended by what comes behind it, or by the end of the rip: only then is it certain that the rip was
//          not broken off within its last block. What was begun and is not whole is abandoned.
// Errors:  m_nError is set once nothing good can come any more, which ends the rip. Nobody is asked anything here: the
//          message box of CWaveSave is not used.
// Owner:   the controller, as of every output. All that lives longer stands in RIP_STREAM.
// Threads: the rip's worker.

#pragma once

#include "CRC32.h"
#include "DiscChecksums.h"
#include "RipCollector.h"
#include "RipCopy.h"
#include "RipMeter.h"
#include "wavesave.h"
#include <chrono>
#include <functional>
#include <memory>
#include <vector>

// What a sink works on and for. The pieces that are to be read, in their order.
struct RIP_STREAM
{
    struct PART
    {
        size_t nPiece = 0; // of the report
        size_t nGroup = 0;
        bool bFirst = false; // of its group
        bool bLast = false;  //
        RIP_PIECE piece;     // as planned
    };

    std::vector<PART> aryParts;
    const std::vector<RIP_GROUP>* pGroups = nullptr;
    std::vector<std::unique_ptr<RipOutput>> aryOutputs;
    RipCollector* pCollector = nullptr;
    DiscChecksums* pSums = nullptr;
    const SecureRipLog* pLog = nullptr;
    std::function<bool()> isBrokenOff; // asked at the end: whether the rip ended before its list did; may be empty
    bool bAnalyze = true;
    double fSecondsBefore = 0; // that earlier rips of the same took
};

// How long the rip's thread is at reading, from block to block: what it writes in between does not count.
class RipClock
{
public:
    using Clock = std::chrono::steady_clock;

    explicit RipClock(Clock::time_point now = Clock::now()) : m_LastBlock(now) {}

    void OnWriteBegins(Clock::time_point now = Clock::now()) { m_WriteBegan = now; }
    void OnWriteEnds(Clock::time_point now = Clock::now()) { m_Written += now - m_WriteBegan; }
    double TakeBlockSeconds(Clock::time_point now = Clock::now()); // since it was asked last

private:
    Clock::time_point m_LastBlock;
    Clock::time_point m_WriteBegan;
    Clock::duration m_Written{};
};

class RipSink final : public CWaveSave, public IRipProgress
{
public:
    explicit RipSink(RIP_STREAM& stream);
    ~RipSink() override { Close(); }

    void WriteBuffer(long nFrames, unsigned int* pData) override;
    void Stop() override { Close(); }
    void OnRipProgress(const RIP_PROGRESS& progress) override; // behind each block, ahead of its writing

private:
    void Take(const unsigned char* pData, long long nFrames);
    void OpenPart();
    void EndPart();
    void Close();
    bool IsDoubtedAtTheEnd() const;
    std::vector<SECURE_RIP_ENTRY> GetEntries() const;

    RIP_STREAM& m_Stream;
    RipMeter m_Meter;
    RipClock m_Clock;
    size_t m_nPart = 0;                 // at work, or the next one
    bool m_bOpen = false;               // it has begun
    long long m_nFramesLeft = 0;        // of it
    bool m_bSummed = false;             // the disc's sums have the part's CRC-32
    uint32_t m_nRegister = CRC32_START; // of the part, where they have not
    uint32_t m_nGroupCRC32 = 0;         // of the parts of the group that are ended
    bool m_bClosed = false;

    // Of the blocks read so far, which are ahead of what was written.
    struct READING
    {
        double fSeconds = 0;
        std::vector<RIP_SPEED_POINT> arySpeed;
        int nSectorsDone = 0; // of the part
        int nPointFrom = 0;   // where the point at work began
        double fPointSeconds = 0;
    };
    std::vector<READING> m_aryReading; // one for each part
    size_t m_nReadingPart = 0;
    const RipClock::Clock::time_point m_Start = RipClock::Clock::now();
};
