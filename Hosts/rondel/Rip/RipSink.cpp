#include "RipSink.h"
#include "CDUnits.h"
#include <algorithm>

namespace
{
constexpr int SPEED_POINTS = 400; // of a piece, at most

// Whether the sums of the disc have one of just this piece.
bool IsTrackOf(const CD_LAYOUT& layout, const RIP_PIECE& piece)
{
    const int nTrack = piece.nTrack > 0 && layout.IsValid() ? layout.FindTrack(piece.nTrack) : -1;
    if (nTrack < 0)
        return false;
    const CD_LAYOUT_TRACK& track = layout.m_aryTracks[static_cast<size_t>(nTrack)];
    return !track.m_bData && track.m_nStart == piece.nStart && track.GetSectors() == piece.nSectors;
}
} // namespace

double RipClock::TakeBlockSeconds(Clock::time_point now)
{
    const Clock::duration reading = now - m_LastBlock - m_Written;
    m_LastBlock = now;
    m_Written = {};
    return std::chrono::duration<double>(reading).count();
}

RipSink::RipSink(RIP_STREAM& stream) : m_Stream(stream), m_Meter(stream.bAnalyze), m_aryReading(stream.aryParts.size())
{
}

void RipSink::WriteBuffer(long nFrames, unsigned int* pData)
{
    m_Clock.OnWriteBegins();
    if (pData != nullptr && !m_bClosed)
        Take(reinterpret_cast<const unsigned char*>(pData), nFrames);
    m_nError = m_Stream.pCollector->GetIsFatal() ? WAVESAVE_FILE_REFUSED : WAVESAVE_WRITTEN;
    m_Clock.OnWriteEnds();
}

void RipSink::Take(const unsigned char* pData, long long nFrames)
{
    while (nFrames > 0 && !m_Stream.pCollector->GetIsFatal())
    {
        if (m_bOpen && m_nFramesLeft == 0)
            EndPart();
        if (!m_bOpen && m_nPart == m_Stream.aryParts.size())
            return; // more than was asked for
        if (!m_bOpen)
            OpenPart();
        const long long nPart = std::min(nFrames, m_nFramesLeft);
        const size_t nBytes = static_cast<size_t>(nPart) * LY_CD_FRAME_BYTES;
        m_Stream.pSums->Add(pData, nBytes);
        if (!m_bSummed)
            m_nRegister = AddToCRC32Register(m_nRegister, pData, nBytes);
        m_Meter.Add(reinterpret_cast<const short*>(pData), nPart);
        for (const std::unique_ptr<RipOutput>& pOutput : m_Stream.aryOutputs)
            pOutput->Write(pData, nBytes);
        m_nFramesLeft -= nPart;
        nFrames -= nPart;
        pData += nBytes;
    }
}

void RipSink::OpenPart()
{
    const RIP_STREAM::PART& part = m_Stream.aryParts[m_nPart];
    m_bOpen = true;
    m_nFramesLeft = static_cast<long long>(part.piece.nSectors) * LY_CD_SECTOR_FRAMES;
    m_bSummed = IsTrackOf(m_Stream.pSums->GetLayout(), part.piece);
    m_nRegister = CRC32_START;
    m_Stream.pSums->StartAt(part.piece.nStart);
    m_Meter.Begin(part.piece.nSectors);
    if (!part.bFirst)
        return;
    m_nGroupCRC32 = 0;
    const RIP_GROUP& group = (*m_Stream.pGroups)[part.nGroup];
    for (size_t i = 0; i < m_Stream.aryOutputs.size(); ++i)
        m_Stream.aryOutputs[i]->Begin(group.aryOrders[i]);
}

void RipSink::EndPart()
{
    const RIP_STREAM::PART& part = m_Stream.aryParts[m_nPart];
    RIP_PIECE piece = part.piece;
    m_Meter.Finish(piece);
    piece.series.arySpeed = std::move(m_aryReading[m_nPart].arySpeed);
    piece.fSeconds = m_aryReading[m_nPart].fSeconds;
    piece.aryEntries = GetEntries();
    if (m_bSummed)
        (void)m_Stream.pSums->GetTrack(piece.nTrack, piece.sums);
    else
    {
        piece.sums.m_bComplete = piece.nTrack == 0; // there is no other sum of such a piece
        piece.sums.m_nCRC32 = ~m_nRegister;
    }
    m_nGroupCRC32 =
        CombineCRC32(m_nGroupCRC32, piece.sums.m_nCRC32, static_cast<uint64_t>(piece.nSectors) * LY_CD_SECTOR_BYTES);
    // Ahead of the files, so that a piece is complete in the report when its last file is.
    m_Stream.pCollector->OnPieceRead(part.nPiece, std::move(piece), m_Stream.pLog->GetReReads());
    if (part.bLast)
        for (const std::unique_ptr<RipOutput>& pOutput : m_Stream.aryOutputs)
            pOutput->End(m_nGroupCRC32);
    m_bOpen = false;
    ++m_nPart;
}

// What the log says of the part at work. Its last block is in the log before it is written.
std::vector<SECURE_RIP_ENTRY> RipSink::GetEntries() const
{
    const RIP_PIECE& piece = m_Stream.aryParts[m_nPart].piece;
    std::vector<SECURE_RIP_ENTRY> aryEntries = m_Stream.pLog->GetEntries();
    std::erase_if(
        aryEntries, [&](const SECURE_RIP_ENTRY& entry)
        { return entry.nSector + entry.nSectors <= piece.nStart || entry.nSector >= piece.nStart + piece.nSectors; });
    return aryEntries;
}

// Whether the end of the rip may be why sectors of the part at work are bad: a rip that is broken off fills its last
// block with silence, which may just complete the part.
bool RipSink::IsDoubtedAtTheEnd() const
{
    if (!m_Stream.isBrokenOff || !m_Stream.isBrokenOff())
        return false;
    const std::vector<SECURE_RIP_ENTRY> aryEntries = GetEntries();
    return std::any_of(aryEntries.begin(), aryEntries.end(),
                       [](const SECURE_RIP_ENTRY& entry) { return entry.IsBad(); });
}

void RipSink::Close()
{
    if (m_bClosed)
        return;
    m_bClosed = true;
    if (m_bOpen && m_nFramesLeft == 0 && !IsDoubtedAtTheEnd())
        EndPart();
    // Also the files of an image of which some pieces are whole.
    for (const std::unique_ptr<RipOutput>& pOutput : m_Stream.aryOutputs)
        pOutput->Abandon();
}

void RipSink::OnRipProgress(const RIP_PROGRESS& progress)
{
    const double fSeconds = m_Clock.TakeBlockSeconds();
    int nSectors = progress.nDone;
    for (size_t i = 0; i <= m_nReadingPart && i < m_aryReading.size(); ++i)
        nSectors -= m_aryReading[i].nSectorsDone;
    if (nSectors < 1 || m_nReadingPart == m_aryReading.size()) // ahead of the first block
        return;
    READING& reading = m_aryReading[m_nReadingPart];
    const int nAll = m_Stream.aryParts[m_nReadingPart].piece.nSectors;
    reading.fSeconds += fSeconds;
    reading.fPointSeconds += fSeconds;
    reading.nSectorsDone += nSectors;
    const int nPointSectors = reading.nSectorsDone - reading.nPointFrom;
    const bool bEnd = reading.nSectorsDone >= nAll;
    if (bEnd || nPointSectors >= nAll / SPEED_POINTS)
    {
        const double fAudio = static_cast<double>(nPointSectors) / LY_CD_SECTORS_PER_SECOND;
        const double fSpeed = reading.fPointSeconds > 0 ? fAudio / reading.fPointSeconds : 0;
        const double fElapsed = std::chrono::duration<double>(RipClock::Clock::now() - m_Start).count();
        reading.arySpeed.push_back(
            {progress.nSector, static_cast<float>(fSpeed), static_cast<float>(m_Stream.fSecondsBefore + fElapsed)});
        reading.nPointFrom = reading.nSectorsDone;
        reading.fPointSeconds = 0;
    }
    if (bEnd)
        ++m_nReadingPart;
}
