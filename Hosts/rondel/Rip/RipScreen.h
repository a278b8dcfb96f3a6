// RipScreen: what the user sees of a rip that is running: on a terminal, a line that is kept up to date on standard
// error; and on standard output a line for each piece that is finished.
//
// Units:   speed in times that of playing.
// Threads: any; one lock.

#pragma once

#include "RipCopy.h"
#include "RipReport.h"
#include "StatusLine.h"
#include <chrono>
#include <mutex>
#include <string>
#include <vector>

class RipScreen
{
public:
    RipScreen(std::vector<RIP_PIECE> aryPieces, bool bSecure); // that are to be read

    void ShowProgress(const RIP_PROGRESS& progress);
    void ShowPiece(const RIP_PIECE& piece); // finished
    void ShowLine(const std::string& strLine);

private:
    using Clock = std::chrono::steady_clock;

    std::string MakeProgressText(const RIP_PROGRESS& progress, Clock::time_point now);

    const std::vector<RIP_PIECE> m_aryPieces;
    const bool m_bSecure;
    std::mutex m_Mutex; // over all below, and both streams
    StatusLine m_Line;
    Clock::time_point m_Start = Clock::now();
    Clock::time_point m_LastUpdate = m_Start;
    int m_nLastDone = 0;
    double m_fSpeed = 0; // of late
};

// "Track 5"; the title of what is no track: "Hidden audio", "Sectors 0 to 749".
std::string GetPieceName(const RIP_PIECE& piece);
