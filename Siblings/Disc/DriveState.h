// DriveState: what a drive's answer to TEST UNIT READY says to somebody who looks at a list of drives.
// Sources: MMC-3, annex F (sense codes of CD drives). Threads: any; functions without state.

#pragma once

#include "LyDisc.h"
#include "ServiceDrive.h"
#include <string>

// A drive as a list shows it; the texts are UTF-8.
struct DRIVE_LISTING
{
    std::string m_strPath;
    std::string m_strLetter; // "E:", or empty
    DRIVE_DESCRIPTION m_Description;
    DISC_DRIVE_STATE m_eState = DISC_DRIVE_UNUSABLE;
    std::string m_strReason; // one sentence; empty where the state says it all
};

// Fills in state and reason. bGood: the command ended well, and the sense data does not count.
void JudgeReadiness(DRIVE_LISTING& listing, bool bGood, const DRIVE_SENSE& sense);
