#include "RipPlan.h"
#include "CDUnits.h"
#include "HostError.h"
#include <algorithm>
#include <set>
#include <string_view>

namespace
{
constexpr size_t MAX_DIGITS = 9; // what an int always holds

// A number at the start of the text, which then begins behind it. -1 if there is none.
int TakeNumber(std::string_view& strText)
{
    size_t nDigits = 0;
    int nNumber = 0;
    while (nDigits < strText.size() && nDigits < MAX_DIGITS && strText[nDigits] >= '0' && strText[nDigits] <= '9')
        nNumber = nNumber * 10 + (strText[nDigits++] - '0');
    strText.remove_prefix(nDigits);
    return nDigits > 0 ? nNumber : -1;
}

// "a-b" at the start of the text, or "a" alone.
bool TakeSpan(std::string_view& strText, int& nFirst, int& nLast)
{
    nFirst = nLast = TakeNumber(strText);
    if (nFirst < 0 || !strText.starts_with('-'))
        return nFirst >= 0;
    strText.remove_prefix(1);
    nLast = TakeNumber(strText);
    return nLast >= nFirst;
}

std::string GetNumbersOf(const std::vector<TTrackList>& aryTracks)
{
    return std::to_string(aryTracks.front().nTrackNumber) + " to " + std::to_string(aryTracks.back().nTrackNumber);
}

RIP_PIECE MakePiece(const TTrackList& track)
{
    RIP_PIECE piece;
    piece.nTrack = track.nTrackNumber;
    piece.nStart = track.nStartSector;
    piece.nSectors = track.nSectors;
    piece.bPreEmphasis = track.bPreEmphasis != 0;
    return piece;
}

// Track 0 stands for it, as in the engine.
RIP_PIECE MakeHiddenPiece(const std::vector<TTrackList>& aryTracks)
{
    const TTrackList& first = aryTracks.front();
    if (first.nTrackNumber != 1 || first.bDataTrack != 0 || first.nStartSector < 1)
        throw HostError("there is no audio hidden ahead of track 1 on this disc; leave out --hidden.");
    RIP_PIECE piece = MakePiece(first);
    piece.nTrack = 0;
    piece.nStart = 0;
    piece.nSectors = first.nStartSector;
    piece.strTitle = "Hidden audio";
    return piece;
}

RIP_PIECE MakeRangePiece(const std::string& strRange)
{
    RIP_PIECE piece;
    int nLast = 0;
    std::string strFault = ParseSectorRange(strRange, piece.nStart, nLast);
    if (!strFault.empty())
        throw HostError(strFault + ".");
    piece.nSectors = nLast - piece.nStart + 1;
    piece.strTitle = "Sectors " + std::to_string(piece.nStart) + " to " + std::to_string(nLast);
    return piece;
}

std::set<int> GetWantedTracks(const std::vector<TTrackList>& aryTracks, const std::string& strTracks)
{
    std::vector<int> aryWanted;
    std::string strFault = ParseTrackList(strTracks, aryWanted);
    if (!strFault.empty())
        throw HostError(strFault + ".");
    for (const int nWanted : aryWanted)
    {
        const bool bThere = std::any_of(aryTracks.begin(), aryTracks.end(),
                                        [&](const TTrackList& track) { return track.nTrackNumber == nWanted; });
        if (!bThere)
            throw HostError("there is no track " + std::to_string(nWanted) + ": the disc has tracks " +
                            GetNumbersOf(aryTracks) + "; choose from them with --tracks.");
    }
    return {aryWanted.begin(), aryWanted.end()};
}
} // namespace

std::string ParseTrackList(const std::string& strList, std::vector<int>& aryTracks)
{
    std::string strFault = "--tracks takes numbers from 1 to 99 as in 1-3,7, not '" + strList + "'";
    std::set<int> setTracks;
    std::string_view strRest = strList;
    for (;;)
    {
        int nFirst = 0;
        int nLast = 0;
        if (!TakeSpan(strRest, nFirst, nLast) || nFirst < 1 || nLast > LY_CD_MAX_TRACKS)
            return strFault;
        for (int nTrack = nFirst; nTrack <= nLast; ++nTrack)
            setTracks.insert(nTrack);
        if (strRest.empty())
            break;
        if (!strRest.starts_with(','))
            return strFault;
        strRest.remove_prefix(1);
    }
    aryTracks.assign(setTracks.begin(), setTracks.end());
    return {};
}

std::string ParseSectorRange(const std::string& strRange, int& nFirst, int& nLast)
{
    std::string_view strRest = strRange;
    if (TakeSpan(strRest, nFirst, nLast) && strRest.empty() && strRange.find('-') != std::string::npos)
        return {};
    return "--range takes the first and the last sector as in 0-749, not '" + strRange + "'";
}

RIP_PLAN MakeRipPlan(const std::vector<TTrackList>& aryTracks, const RIP_CHOICE& choice)
{
    if (aryTracks.empty())
        throw HostError("the disc has no tracks; look at it with 'rondel info'.");
    RIP_PLAN plan;
    if (!choice.strRange.empty())
    {
        plan.aryPieces.push_back(MakeRangePiece(choice.strRange));
        return plan;
    }
    if (choice.bHidden)
        plan.aryPieces.push_back(MakeHiddenPiece(aryTracks));
    std::set<int> setWanted;
    if (!choice.strTracks.empty())
        setWanted = GetWantedTracks(aryTracks, choice.strTracks);
    bool bAny = false;
    for (const TTrackList& track : aryTracks)
    {
        if (!choice.strTracks.empty() && !setWanted.contains(track.nTrackNumber))
            continue;
        if (track.bDataTrack != 0)
            plan.aryNotes.push_back("Track " + std::to_string(track.nTrackNumber) +
                                    " is a data track and was left out.");
        else if (track.nSectors < 1)
            plan.aryNotes.push_back("Track " + std::to_string(track.nTrackNumber) + " is empty and was left out.");
        else
        {
            plan.aryPieces.push_back(MakePiece(track));
            bAny = true;
        }
    }
    if (!bAny)
        throw HostError("none of the tracks asked for has audio; look at the disc with 'rondel info'.");
    return plan;
}
