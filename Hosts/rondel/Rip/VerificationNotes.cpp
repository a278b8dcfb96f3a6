#include "VerificationNotes.h"
#include <algorithm>
#include <cstdlib>
#include <map>

namespace
{
std::string Capitalize(std::string str)
{
    if (!str.empty() && str[0] >= 'a' && str[0] <= 'z')
        str[0] = static_cast<char>(str[0] - 'a' + 'A');
    return str;
}

std::string CountSubmissions(int n) { return std::to_string(n) + (n == 1 ? " submission" : " submissions"); }

// The verb for that many tracks.
const char* Choose(size_t nTracks, const char* pOne, const char* pMany) { return nTracks == 1 ? pOne : pMany; }

template <class WANTED>
std::vector<int> Pick(const std::vector<COMPARED_TRACK>& aryTracks, WANTED wanted)
{
    std::vector<int> aryPicked;
    for (const COMPARED_TRACK& track : aryTracks)
        if (wanted(track))
            aryPicked.push_back(track.nTrack);
    return aryPicked;
}

// How many agree as they were read.
std::string MakeSummary(const std::vector<COMPARED_TRACK>& aryTracks)
{
    const std::vector<int> aryGood = Pick(aryTracks, [](const COMPARED_TRACK& t) { return t.nConfidence > 0; });
    if (aryGood.empty())
        return "No track agrees as it was read.";
    int nLeast = 0;
    for (const COMPARED_TRACK& track : aryTracks)
        if (track.nConfidence > 0 && (nLeast == 0 || track.nConfidence < nLeast))
            nLeast = track.nConfidence;
    const std::string strTracks = aryGood.size() == aryTracks.size() && aryGood.size() > 1
                                      ? "All " + std::to_string(aryGood.size()) + " tracks"
                                      : Capitalize(ListTracks(aryGood));
    return strTracks + Choose(aryGood.size(), " agrees", " agree") + " with the database, with " +
           CountSubmissions(nLeast) + Choose(aryGood.size(), ".", " or more.");
}

// The tracks that agree at another offset only, those of one offset together; the nearest offset first.
void AddOtherOffsets(const std::vector<COMPARED_TRACK>& aryTracks, std::vector<std::string>& aryNotes)
{
    const auto isNearer = [](int n1, int n2)
    { return std::abs(n1) != std::abs(n2) ? std::abs(n1) < std::abs(n2) : n1 < n2; };
    std::map<int, std::vector<int>, decltype(isNearer)> mapOffsets(isNearer);
    for (const COMPARED_TRACK& track : aryTracks)
        if (track.nConfidence == 0 && track.nOtherConfidence > 0)
            mapOffsets[track.nOtherOffset].push_back(track.nTrack);
    for (const auto& [nOffset, aryAgreeing] : mapOffsets)
        aryNotes.push_back("At an offset of " + FormatOffset(nOffset) + ", " + ListTracks(aryAgreeing) +
                           Choose(aryAgreeing.size(), " agrees", " agree") +
                           ": the disc is of another pressing, or the drive has a read offset that is not corrected.");
}

void AddHints(const std::vector<COMPARED_TRACK>& aryTracks, std::vector<std::string>& aryNotes)
{
    for (const COMPARED_TRACK& track : aryTracks)
        if (track.nConfidence == 0 && track.nOtherConfidence == 0 && track.nFrame450Offset != 0)
            aryNotes.push_back("Of track " + std::to_string(track.nTrack) +
                               " sector 450 alone agrees at an offset of " + FormatOffset(track.nFrame450Offset) +
                               ": it may be of another pressing, or damaged elsewhere.");
}

// What is to be said of the tracks that are meant; nothing if there are none.
void AddOfTracks(const std::vector<int>& aryPicked, const char* pOne, const char* pMany,
                 std::vector<std::string>& aryNotes)
{
    if (!aryPicked.empty())
        aryNotes.push_back(Capitalize(ListTracks(aryPicked)) + Choose(aryPicked.size(), pOne, pMany));
}
} // namespace

std::string ListTracks(const std::vector<int>& aryTracks)
{
    std::vector<std::string> aryRuns;
    for (size_t i = 0; i < aryTracks.size();)
    {
        size_t nEnd = i + 1;
        while (nEnd < aryTracks.size() && aryTracks[nEnd] == aryTracks[nEnd - 1] + 1)
            ++nEnd;
        const bool bRun = nEnd - i > 2;
        aryRuns.push_back(std::to_string(aryTracks[i]) + (bRun ? " to " + std::to_string(aryTracks[nEnd - 1]) : ""));
        i = bRun ? nEnd : i + 1;
    }
    std::string strList = Choose(aryTracks.size(), "track ", "tracks ");
    for (size_t i = 0; i < aryRuns.size(); ++i)
        strList += (i == 0 ? "" : i + 1 == aryRuns.size() ? " and " : ", ") + aryRuns[i];
    return strList;
}

std::string FormatOffset(int nOffset)
{
    return (nOffset > 0 ? "+" : "") + std::to_string(nOffset) + (std::abs(nOffset) == 1 ? " frame" : " frames");
}

std::vector<std::string> MakeTrackNotes(const std::vector<COMPARED_TRACK>& aryTracks)
{
    std::vector<std::string> aryNotes = {MakeSummary(aryTracks)};
    AddOtherOffsets(aryTracks, aryNotes);
    AddHints(aryTracks, aryNotes);
    const auto isDifferent = [](const COMPARED_TRACK& t)
    { return t.bKnown && !t.bZero && t.bClaimed && t.nConfidence == 0 && t.nOtherConfidence == 0; };
    AddOfTracks(Pick(aryTracks, isDifferent), " agrees at no offset.", " agree at no offset.", aryNotes);
    AddOfTracks(Pick(aryTracks, [](const COMPARED_TRACK& t) { return t.bKnown && !t.bZero && !t.bClaimed; }),
                " has no sum in the answer.", " have no sums in the answer.", aryNotes);
    AddOfTracks(Pick(aryTracks, [](const COMPARED_TRACK& t) { return t.bZero; }),
                " is silent where the sum is made, which never counts as a match.",
                " are silent where the sums are made, which never counts as a match.", aryNotes);
    AddOfTracks(Pick(aryTracks, [](const COMPARED_TRACK& t) { return !t.bKnown; }),
                " was not read whole, and was not compared.", " were not read whole, and were not compared.", aryNotes);
    AddOfTracks(Pick(aryTracks, [](const COMPARED_TRACK& t) { return t.bTaken && t.nConfidence == 0; }),
                " comes from the rip that was broken off, and was compared at no other offset.",
                " come from the rip that was broken off, and were compared at no other offset.", aryNotes);
    AddOfTracks(Pick(aryTracks, [](const COMPARED_TRACK& t) { return t.bDoubtful && t.nConfidence > 0; }),
                " agrees although sectors of it are to be doubted.",
                " agree although sectors of them are to be doubted.", aryNotes);
    return aryNotes;
}

std::vector<std::string> MakeDiscNotes(const CTDB_VERDICT& verdict)
{
    std::vector<std::string> aryNotes;
    const CTDB_PART_VERDICT& disc = verdict.m_Disc;
    const std::string strOf = " of " + CountSubmissions(disc.m_nSubmissions) + ".";
    if (disc.m_nConfidence > 0)
        aryNotes.push_back("The disc as a whole agrees with " + std::to_string(disc.m_nConfidence) + strOf);
    else if (disc.m_nOtherConfidence > 0)
        aryNotes.push_back("At an offset of " + FormatOffset(disc.m_nOtherOffset) +
                           " the disc as a whole agrees with " + std::to_string(disc.m_nOtherConfidence) + strOf);
    else if (disc.m_bKnown)
        aryNotes.push_back("The disc as a whole agrees at no offset.");
    if (disc.m_bKnown && !disc.IsAccurate() && disc.m_nOtherConfidence == 0 && verdict.m_nParity > 0)
        aryNotes.push_back("The database has data to repair this disc with, which other programs can use.");
    return aryNotes;
}
