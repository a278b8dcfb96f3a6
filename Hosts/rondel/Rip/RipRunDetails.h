// The course of one rip, step by step, as the sources of RipRun share it:
//
//   RipRun.cpp          the order of the steps, and the reading
//   RipRunRefusals.cpp  what can be refused before the disc is read
//   RipRunReport.cpp    the end: what is told of a rip that is whole, or how to go on with one that is not
//
// Errors:  each step throws HostError; the order of the steps is that of the declarations.
// Threads: the caller's.

#pragma once

#include "CDRipper.h"
#include "DiscChecksums.h"
#include "MadeFolders.h"
#include "RipCollector.h"
#include "RipRun.h"
#include "RipScreen.h"
#include "RipSink.h"
#include "StopSignals.h"
#include <memory>
#include <optional>

class IRipOwner;
class RipJob;
class RipSectorList;

class RipRun
{
public:
    explicit RipRun(const RIP_WISHES& wishes) : m_Wishes(wishes) {}
    int Run();

private:
    // ---- What can be refused
    void MakeEncoders();
    void OpenDrive();
    void Plan();
    void CheckNames();
    void CheckPlaces();
    void Resume();

    // ---- The rip
    void MeasureCache();
    void SaveFirstState();
    void Rip();
    void FillStream(RIP_STREAM& stream, RipCollector& collector);
    void FillSections(const RIP_STREAM& stream, RipSectorList& list);
    bool StartJob(RipJob& job, RIP_STREAM& stream, IRipOwner& owner); // false, with m_strNotStarted
    void RunJob(RipJob& job, RIP_STREAM& stream, RipScreen& screen);
    void Judge(const RipJob& job, const RipCollector& collector);

    // ---- The end
    [[noreturn]] void ThrowUnfinished();
    void Complete();
    void GiveTags();
    void WriteCues();
    void CompareWithAnswers();
    void WriteReport();
    void WriteOne(const std::string& strPath, const std::string& strText);
    void ShowEnd();

    CSCSICD& GetCD() { return *m_Ripper.m_pReader->m_pCD; }

    const RIP_WISHES& m_Wishes;
    MadeFolders m_Folders; // first, and so last to go: whatever writes into one has ended by then
    std::string m_strPath; // of the drive, for the disc service
    std::vector<std::unique_ptr<RipEncoder>> m_aryEncoders; // null for WAV
    std::vector<RIP_ENCODER_FACTS> m_aryFacts;              // of all of them
    CCDRipper m_Ripper;
    RIP_REPORT m_Report;
    RIP_NAMES m_Names;
    DiscChecksums m_Sums;
    std::optional<StopSignals> m_Signals; // from the first file on
    std::string m_strNotStarted;          // why the job was not
    bool m_bStopped = false;
};

// "2026-11-21T13:45:00+01:00"
std::string MakeLocalTime();
