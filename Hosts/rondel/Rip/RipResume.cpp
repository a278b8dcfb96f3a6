#include "RipResume.h"
#include "AudioFile.h"
#include "CDUnits.h"
#include "HostError.h"
#include "ReportJson.h"
#include "RipFiles.h"
#include <algorithm>
#include <cerrno>
#include <cstring>

namespace
{
constexpr int FEED_FRAMES = 64 * LY_CD_SECTOR_FRAMES; // read of a file at a time

bool IsSameFile(const RIP_FILE& file, const RIP_FILE& other)
{
    return file.strName == other.strName && file.strEncoder == other.strEncoder &&
           file.strSettings == other.strSettings;
}

bool IsSamePiece(const RIP_PIECE& piece, const RIP_PIECE& other)
{
    return piece.nTrack == other.nTrack && piece.nStart == other.nStart && piece.nSectors == other.nSectors;
}

// Whether what is whole has the files that are planned now.
bool HasSameFiles(const RIP_PIECE& piece, const RIP_GROUP& group)
{
    return std::equal(piece.aryFiles.begin(), piece.aryFiles.end(), group.aryOrders.begin(), group.aryOrders.end(),
                      [](const RIP_FILE& file, const RIP_ORDER& order) { return IsSameFile(file, order.file); });
}

bool IsSameWish(const RIP_REPORT& state, const RIP_REPORT& planned, const RIP_NAMES& names)
{
    if (state.bSecure != planned.bSecure ||
        !std::equal(state.aryPieces.begin(), state.aryPieces.end(), planned.aryPieces.begin(), planned.aryPieces.end(),
                    IsSamePiece))
        return false;
    if (!names.aryCues.empty()) // an image is whole or not there
        return std::none_of(state.aryPieces.begin(), state.aryPieces.end(),
                            [](const RIP_PIECE& piece) { return !piece.aryFiles.empty(); });
    for (size_t n = 0; n < state.aryPieces.size(); ++n)
        if (state.aryPieces[n].IsWhole() && !HasSameFiles(state.aryPieces[n], names.aryGroups[n]))
            return false;
    return true;
}

// The name of the first file that is not as the state has it; empty if all are.
std::string FindChangedFile(const RIP_PIECE& piece, const RIP_NAMES& names)
{
    for (const RIP_FILE& file : piece.aryFiles)
    {
        RIP_FILE found;
        found.strEncoder = file.strEncoder;
        if (!file.strError.empty() || !FillInFile(names.GetPath(file.strName), found) || found.nBytes != file.nBytes ||
            found.strSHA256 != file.strSHA256 || found.strCRC32 != file.strCRC32)
            return file.strName;
    }
    return {};
}

const RIP_FILE* FindLosslessFile(const RIP_PIECE& piece)
{
    for (const RIP_FILE& file : piece.aryFiles)
        if (file.strEncoder == "wav" || file.strEncoder == "flac")
            return &file;
    return nullptr;
}

// Lets the sums hear the piece out of its file. False if that is not what the drive delivered.
bool FeedSums(const RIP_PIECE& piece, const RIP_FILE& file, const RIP_NAMES& names, DiscChecksums& sums)
{
    AudioFile audio(names.GetPath(file.strName));
    if (audio.GetFrames() != static_cast<long long>(piece.nSectors) * LY_CD_SECTOR_FRAMES)
        return false;
    std::vector<short> aryFrames(static_cast<size_t>(FEED_FRAMES) * 2);
    sums.StartAt(piece.nStart);
    uint32_t nRegister = CRC32_START;
    int nFrames = 0;
    while ((nFrames = audio.Read(aryFrames.data(), FEED_FRAMES)) > 0)
    {
        const size_t nBytes = static_cast<size_t>(nFrames) * LY_CD_FRAME_BYTES;
        sums.Add(aryFrames.data(), nBytes);
        nRegister = AddToCRC32Register(nRegister, aryFrames.data(), nBytes);
    }
    return ~nRegister == piece.sums.m_nCRC32;
}

// Why the piece is to be read again, as a clause; empty if it may be taken.
std::string CheckPiece(const RIP_PIECE& piece, const RIP_NAMES& names, DiscChecksums& sums)
{
    const std::string strChanged = FindChangedFile(piece, names);
    if (!strChanged.empty())
        return strChanged + " is not there any more as it was written";
    const RIP_FILE* pFile = FindLosslessFile(piece);
    try
    {
        if (pFile != nullptr && !FeedSums(piece, *pFile, names, sums))
            return pFile->strName + " does not hold what was read";
    }
    catch (const HostError&)
    {
        return pFile->strName + " cannot be decoded";
    }
    return {};
}
} // namespace

RIP_REPORT ReadRipState(const std::string& strPath, const RIP_REPORT& planned, const RIP_NAMES& names)
{
    std::string strText;
    if (!ReadTextFile(strPath, strText))
        throw HostError(strPath + ", the state of the rip that was broken off, cannot be read (" +
                        std::strerror(errno) + "); begin anew with --overwrite.");
    RIP_REPORT state;
    try
    {
        state = ReadReport(strText);
    }
    catch (const HostError&)
    {
        throw HostError(strPath +
                        ", the state of the rip that was broken off, is damaged; begin anew with --overwrite.");
    }
    if (state.disc.strCTDBID != planned.disc.strCTDBID)
        throw HostError("the rip that was broken off in " + names.strFolder +
                        " is of another disc; put that one in, or choose another folder with --to.");
    if (!IsSameWish(state, planned, names))
        throw HostError("the rip that was broken off in " + names.strFolder +
                        " was asked for otherwise; go on with the same command, " + state.strCommand +
                        " --resume, or begin anew with --overwrite.");
    return state;
}

void TakeWholePieces(const RIP_REPORT& state, RIP_REPORT& report, const RIP_NAMES& names, DiscChecksums& sums)
{
    report.strStarted = state.strStarted;
    report.fSeconds = state.fSeconds;
    report.nReReads = state.nReReads;
    report.drive.nCacheSectors = state.drive.nCacheSectors; // until the drive is read again, if it is
    report.drive.bCacheMeasured = state.drive.bCacheMeasured;
    report.drive.bAccurateStream = state.drive.bAccurateStream;
    for (const std::string& strNote : state.aryNotes)
        if (std::find(report.aryNotes.begin(), report.aryNotes.end(), strNote) == report.aryNotes.end())
            report.aryNotes.push_back(strNote);
    for (size_t n = 0; n < state.aryPieces.size(); ++n)
    {
        const RIP_PIECE& piece = state.aryPieces[n];
        if (!piece.IsWhole() || !names.aryCues.empty())
            continue;
        const std::string strReason = CheckPiece(piece, names, sums);
        if (!strReason.empty())
        {
            report.aryNotes.push_back("Read again: " + strReason + ".");
            continue;
        }
        report.aryPieces[n] = piece;
        report.aryPieces[n].eState = RIP_PIECE_TAKEN;
    }
}
