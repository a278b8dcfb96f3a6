// RipCollector: brings together what several threads find out about a rip, in its report: the measured pieces from the
// rip's thread, the files from the outputs. A piece is whole when both are there; then the rip's state is written, so
// that a rip that is broken off from now on can go on behind it.
//
// Errors:  what goes wrong with files is kept; the rip asks whether it still makes sense to go on.
// Threads: any; one lock, which is not held while the state is written. While a rip runs, the report belongs to this
//          object.

#pragma once

#include "RipOutput.h"
#include "RipReport.h"
#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

// Pieces whose audio goes into the same files: one track each, or all of them for an image.
struct RIP_GROUP
{
    std::vector<size_t> aryPieces;    // indices, in a row
    std::vector<RIP_ORDER> aryOrders; // one for each output; of no use for a piece that is whole already
};

class RipCollector final : public IRipFileListener
{
public:
    // Of a piece that has been read, or that became whole with its files. Called under the lock.
    using PIECE_LISTENER = std::function<void(const RIP_PIECE& piece)>;
    using STATE_WRITER = std::function<bool(const RIP_REPORT& report)>; // false: it cannot be written

    RipCollector(RIP_REPORT& report, const std::vector<RIP_GROUP>& aryGroups, bool bImage);

    void SetListener(PIECE_LISTENER listener) { m_Listener = std::move(listener); }
    void SetStateWriter(STATE_WRITER writer) { m_Writer = std::move(writer); }

    // With all that is known of it but its files; and the reads that this rip has repeated so far.
    void OnPieceRead(size_t nPiece, RIP_PIECE piece, int nReReads);
    void OnRipFile(size_t nGroup, const RIP_FILE& file, bool bDiskFull) override;

    // For what else changes while the rip runs.
    void Change(const std::function<void(RIP_REPORT& report)>& change);

    // Nothing good can come any more: the disk is full, or all files of a group have failed.
    bool GetIsFatal() const { return m_bFatal; }
    std::string GetFirstError() const; // a clause without its full stop, or empty

private:
    struct GROUP_STATE
    {
        std::vector<RIP_FILE> aryFiles;
        size_t nPiecesOpen = 0;
        size_t nFilesOpen = 0;
        size_t nFilesGood = 0;
    };

    bool CloseGroup(size_t nGroup);
    void SaveState();
    void NoteError(const std::string& strError);

    RIP_REPORT& m_Report;
    const std::vector<RIP_GROUP>& m_aryGroups;
    const bool m_bImage;
    const int m_nReReadsBefore;    // of earlier rips
    const double m_fSecondsBefore; //
    const std::chrono::steady_clock::time_point m_Start = std::chrono::steady_clock::now();
    PIECE_LISTENER m_Listener;
    STATE_WRITER m_Writer;
    std::atomic<bool> m_bFatal{false};
    std::mutex m_Writing;       // one state at a time, each newer than the one before it; taken ahead of m_Mutex
    mutable std::mutex m_Mutex; // over the report and all below
    std::vector<GROUP_STATE> m_aryStates;
    std::string m_strFirstError;
};
