#include "Verification.h"
#include "CTDBVerify.h"
#include "HostError.h"
#include "VerificationNotes.h"
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace
{
constexpr const char* KIND_ACCURATERIP = "AccurateRip";
constexpr const char* KIND_CTDB = "CTDB";

// One of the two.
struct ANSWER
{
    bool bCTDB = false;
    std::vector<ACCURATERIP_BLOCK> aryBlocks;
    std::vector<CTDB_ENTRY> aryEntries;
};

std::string ReadAnswerFile(const std::string& strFile)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(strFile, error))
        throw HostError("the answer " + strFile +
                        " is not there or is no plain file; name the file of a saved answer.");
    std::ifstream stream(strFile, std::ios::binary);
    std::string strBytes(ANSWER_MAX_BYTES + 1, '\0');
    if (stream)
        stream.read(strBytes.data(), static_cast<std::streamsize>(strBytes.size()));
    if (!stream && !stream.eof())
        throw HostError("the answer " + strFile + " cannot be read; check its permissions.");
    if (stream.gcount() > ANSWER_MAX_BYTES)
        throw HostError(strFile + " is too large for an answer of a database; name the file of a saved answer.");
    strBytes.resize(static_cast<size_t>(stream.gcount()));
    return strBytes;
}

std::string GetReason(ACCURATERIP_ANSWER_ERROR eError, size_t nBadBlock)
{
    const std::string strPlace = " at byte " + std::to_string(nBadBlock);
    switch (eError)
    {
    case ACCURATERIP_ANSWER_EMPTY:
        return "it is empty";
    case ACCURATERIP_ANSWER_BAD_COUNT:
        return "no disc has the number of tracks" + strPlace;
    case ACCURATERIP_ANSWER_CUT_OFF:
        return "the block" + strPlace + " is cut off";
    case ACCURATERIP_ANSWER_TOO_MANY:
        return "it has more than " + std::to_string(ACCURATERIP_MAX_BLOCKS) + " pressings";
    case ACCURATERIP_ANSWER_OK:
        break;
    }
    return {};
}

ANSWER LoadAnswer(const std::string& strFile)
{
    ANSWER answer;
    const std::string strBytes = ReadAnswerFile(strFile);
    std::string strReason;
    answer.bCTDB = LooksLikeXML(strBytes);
    if (answer.bCTDB)
        (void)ParseCTDBAnswer(strBytes, answer.aryEntries, strReason);
    else
    {
        size_t nBadBlock = 0;
        const auto eError = ParseAccurateRipAnswer(strBytes.data(), strBytes.size(), answer.aryBlocks, nBadBlock);
        strReason = GetReason(eError, nBadBlock);
    }
    if (!strReason.empty())
        throw HostError(strFile + " is no answer of " + (answer.bCTDB ? KIND_CTDB : KIND_ACCURATERIP) + ": " +
                        strReason + "; save the answer anew.");
    return answer;
}

// The sums of a track that an earlier rip brought; null for others.
const TRACK_CHECKSUMS* FindTakenSums(const RIP_REPORT& report, int nTrack)
{
    for (const RIP_PIECE& piece : report.aryPieces)
        if (piece.nTrack == nTrack && piece.eState == RIP_PIECE_TAKEN && piece.sums.m_bComplete)
            return &piece.sums;
    return nullptr;
}

bool HasBadSectors(const RIP_REPORT& report, int nTrack)
{
    return std::any_of(report.aryPieces.begin(), report.aryPieces.end(),
                       [nTrack](const RIP_PIECE& piece)
                       { return piece.nTrack == nTrack && piece.CountBadSectors() > 0; });
}

COMPARED_TRACK MakeCompared(const DiscChecksums& sums, const RIP_REPORT& report, int nTrack)
{
    COMPARED_TRACK track;
    track.nTrack = nTrack;
    TRACK_CHECKSUMS ignored;
    track.bTaken = !sums.GetTrack(nTrack, ignored) && FindTakenSums(report, nTrack) != nullptr;
    track.bDoubtful = HasBadSectors(report, nTrack);
    return track;
}

// Puts in what is known of tracks that an earlier rip brought.
void CompareTaken(const DiscChecksums& sums, const RIP_REPORT& report, const std::vector<ACCURATERIP_BLOCK>& aryBlocks,
                  ACCURATERIP_VERDICT& verdict)
{
    const ACCURATERIP_ID id = GetAccurateRipID(sums.GetLayout());
    for (size_t nTrack = 0; nTrack < verdict.m_aryTracks.size(); ++nTrack)
    {
        ACCURATERIP_TRACK_VERDICT& track = verdict.m_aryTracks[nTrack];
        const TRACK_CHECKSUMS* pSums = track.m_bKnown ? nullptr : FindTakenSums(report, track.m_nTrack);
        if (pSums == nullptr)
            continue;
        track.m_bKnown = true;
        for (const ACCURATERIP_BLOCK& block : aryBlocks)
        {
            if (block.m_ID != id || block.m_aryEntries.size() != verdict.m_aryTracks.size())
                continue;
            const ACCURATERIP_ENTRY& entry = block.m_aryEntries[nTrack];
            if (entry.m_nSum != 0 && entry.m_nSum == pSums->m_nAccurateRip1)
                track.m_nConfidence1 += entry.m_nConfidence;
            else if (entry.m_nSum != 0 && entry.m_nSum == pSums->m_nAccurateRip2)
                track.m_nConfidence2 += entry.m_nConfidence;
        }
    }
}

// The offset at which sector 450 agrees with most submissions, where nothing agrees better.
int FindFrame450Offset(const ACCURATERIP_VERDICT& verdict, int nTrack)
{
    int nOffset = 0;
    int nConfidence = 0;
    for (const ACCURATERIP_MATCH& match : verdict.m_aryMatches)
    {
        if (match.m_nTrack != nTrack || match.m_nKind != ACCURATERIP_MATCH_FRAME_450 || match.m_nOffset == 0 ||
            match.m_nConfidence <= nConfidence)
            continue;
        nOffset = match.m_nOffset;
        nConfidence = match.m_nConfidence;
    }
    return nOffset;
}

COMPARED_TRACK MakeCompared(const DiscChecksums& sums, const RIP_REPORT& report, const ACCURATERIP_VERDICT& verdict,
                            const ACCURATERIP_TRACK_VERDICT& of)
{
    COMPARED_TRACK track = MakeCompared(sums, report, of.m_nTrack);
    TRACK_CHECKSUMS own;
    const TRACK_CHECKSUMS* pSums = sums.GetTrack(of.m_nTrack, own) ? &own : FindTakenSums(report, of.m_nTrack);
    track.bKnown = of.m_bKnown;
    track.bZero = pSums != nullptr && pSums->m_nAccurateRip1 == 0 && pSums->m_nAccurateRip2 == 0;
    track.bClaimed = of.m_nSubmissions > 0;
    track.nConfidence = of.m_nConfidence1 + of.m_nConfidence2;
    track.nOtherOffset = of.m_nOtherOffset;
    track.nOtherConfidence = of.m_nOtherConfidence;
    track.nFrame450Offset = FindFrame450Offset(verdict, of.m_nTrack);
    return track;
}

// How much of the answer is of this disc. False if nothing is.
bool AddForeignNote(int nOurs, int nForeign, const char* pWhat, std::vector<std::string>& aryNotes)
{
    if (nOurs == 0 && nForeign == 0)
        aryNotes.push_back("The database does not know this disc.");
    else if (nOurs == 0)
        aryNotes.push_back("The answer is of another disc, and nothing was compared.");
    else if (nForeign > 0)
        aryNotes.push_back(std::to_string(nForeign) + " of the " + std::to_string(nOurs + nForeign) + " " + pWhat +
                           " in the answer " + (nForeign == 1 ? "is" : "are") +
                           " of another disc and counted for nothing.");
    return nOurs > 0;
}

void Append(std::vector<std::string>& aryNotes, const std::vector<std::string>& aryMore)
{
    aryNotes.insert(aryNotes.end(), aryMore.begin(), aryMore.end());
}

void VerifyWithAccurateRip(const ANSWER& answer, const DiscChecksums& sums, const RIP_REPORT& report,
                           RIP_VERIFICATION& verification)
{
    ACCURATERIP_VERDICT verdict = VerifyAccurateRip(sums, answer.aryBlocks);
    CompareTaken(sums, report, answer.aryBlocks, verdict);
    if (AddForeignNote(verdict.m_nBlocks, verdict.m_nForeignBlocks, "pressings", verification.aryNotes))
    {
        std::vector<COMPARED_TRACK> aryTracks;
        for (const ACCURATERIP_TRACK_VERDICT& track : verdict.m_aryTracks)
            aryTracks.push_back(MakeCompared(sums, report, verdict, track));
        Append(verification.aryNotes, MakeTrackNotes(aryTracks));
    }
    verification.accurateRip = std::move(verdict);
}

void VerifyWithCTDB(const ANSWER& answer, const DiscChecksums& sums, const RIP_REPORT& report,
                    RIP_VERIFICATION& verification)
{
    std::vector<CTDB_KNOWN_SUM> aryKnown = {{0, report.nDiscCTDB}};
    for (const RIP_PIECE& piece : report.aryPieces)
        if (const TRACK_CHECKSUMS* pSums = piece.nTrack > 0 ? FindTakenSums(report, piece.nTrack) : nullptr)
            aryKnown.push_back({piece.nTrack, pSums->m_nCTDB});
    CTDB_VERDICT verdict = VerifyCTDB(sums, answer.aryEntries, aryKnown);
    if (AddForeignNote(verdict.m_nEntries, verdict.m_nForeignEntries, "entries", verification.aryNotes))
    {
        std::vector<COMPARED_TRACK> aryTracks;
        for (const CTDB_PART_VERDICT& of : verdict.m_aryTracks)
        {
            COMPARED_TRACK track = MakeCompared(sums, report, of.m_nTrack);
            track.bKnown = of.m_bKnown;
            track.bClaimed = of.m_nSubmissions > 0;
            track.nConfidence = of.m_nConfidence;
            track.nOtherOffset = of.m_nOtherOffset;
            track.nOtherConfidence = of.m_nOtherConfidence;
            aryTracks.push_back(track);
        }
        Append(verification.aryNotes, MakeDiscNotes(verdict));
        const bool bTracks = std::any_of(aryTracks.begin(), aryTracks.end(), [](const auto& t) { return t.bClaimed; });
        if (bTracks)
            Append(verification.aryNotes, MakeTrackNotes(aryTracks));
        else
            verification.aryNotes.push_back("The answer has no sums of tracks.");
    }
    verification.ctdb = std::move(verdict);
}
} // namespace

void CheckAnswerFile(const std::string& strFile) { (void)LoadAnswer(strFile); }

RIP_VERIFICATION VerifyWithFile(const std::string& strFile, const DiscChecksums& sums, const RIP_REPORT& report)
{
    const ANSWER answer = LoadAnswer(strFile);
    RIP_VERIFICATION verification;
    verification.strFile = strFile;
    verification.strKind = answer.bCTDB ? KIND_CTDB : KIND_ACCURATERIP;
    // A rip that took all its tracks from an earlier one has fed no sums.
    DiscChecksums none;
    const bool bFed = sums.GetLayout().IsValid();
    if (!bFed)
        (void)none.SetLayout(report.disc.layout);
    (answer.bCTDB ? VerifyWithCTDB : VerifyWithAccurateRip)(answer, bFed ? sums : none, report, verification);
    return verification;
}
