#include "RipCollector.h"
#include <algorithm>

RipCollector::RipCollector(RIP_REPORT& report, const std::vector<RIP_GROUP>& aryGroups, bool bImage)
    : m_Report(report), m_aryGroups(aryGroups), m_bImage(bImage), m_nReReadsBefore(report.nReReads),
      m_fSecondsBefore(report.fSeconds)
{
    for (const RIP_GROUP& group : aryGroups)
        m_aryStates.push_back({{}, group.aryPieces.size(), group.aryOrders.size(), 0});
}

void RipCollector::OnPieceRead(size_t nPiece, RIP_PIECE piece, int nReReads)
{
    bool bClosed = false;
    {
        const std::lock_guard lock(m_Mutex);
        m_Report.nReReads = m_nReReadsBefore + nReReads;
        m_Report.fSeconds =
            m_fSecondsBefore + std::chrono::duration<double>(std::chrono::steady_clock::now() - m_Start).count();
        m_Report.aryPieces[nPiece] = std::move(piece);
        if (m_bImage && m_Listener)
            m_Listener(m_Report.aryPieces[nPiece]);
        for (size_t nGroup = 0; nGroup < m_aryGroups.size(); ++nGroup)
        {
            const std::vector<size_t>& aryPieces = m_aryGroups[nGroup].aryPieces;
            if (std::find(aryPieces.begin(), aryPieces.end(), nPiece) == aryPieces.end())
                continue;
            --m_aryStates[nGroup].nPiecesOpen;
            bClosed |= CloseGroup(nGroup);
        }
    }
    if (bClosed)
        SaveState();
}

void RipCollector::OnRipFile(size_t nGroup, const RIP_FILE& file, bool bDiskFull)
{
    bool bClosed = false;
    {
        const std::lock_guard lock(m_Mutex);
        GROUP_STATE& state = m_aryStates[nGroup];
        state.aryFiles.push_back(file);
        --state.nFilesOpen;
        if (file.strError.empty())
            ++state.nFilesGood;
        else
            NoteError(file.strError);
        if (bDiskFull || (state.nFilesOpen == 0 && state.nFilesGood == 0))
            m_bFatal = true;
        bClosed = CloseGroup(nGroup);
    }
    if (bClosed)
        SaveState();
}

void RipCollector::Change(const std::function<void(RIP_REPORT& report)>& change)
{
    const std::lock_guard lock(m_Mutex);
    change(m_Report);
}

// Once all is known of a group; false before that.
bool RipCollector::CloseGroup(size_t nGroup)
{
    GROUP_STATE& state = m_aryStates[nGroup];
    if (state.nPiecesOpen > 0 || state.nFilesOpen > 0)
        return false;
    const RIP_GROUP& group = m_aryGroups[nGroup];
    // The order in which the user named the encoders.
    std::vector<RIP_FILE> aryFiles;
    for (const RIP_ORDER& order : group.aryOrders)
        for (const RIP_FILE& file : state.aryFiles)
            if (file.strName == order.file.strName)
                aryFiles.push_back(file);
    const bool bWhole = state.nFilesGood == group.aryOrders.size();
    for (const size_t nPiece : group.aryPieces)
    {
        RIP_PIECE& piece = m_Report.aryPieces[nPiece];
        if (bWhole)
            piece.eState = RIP_PIECE_READ;
        if (!m_bImage)
            piece.aryFiles = aryFiles;
        if (!m_bImage && m_Listener)
            m_Listener(piece);
    }
    if (m_bImage)
        m_Report.aryFiles = aryFiles;
    return true;
}

void RipCollector::SaveState()
{
    if (!m_Writer)
        return;
    const std::lock_guard writing(m_Writing);
    RIP_REPORT report;
    {
        const std::lock_guard lock(m_Mutex);
        report = m_Report;
    }
    if (m_Writer(report))
        return;
    const std::lock_guard lock(m_Mutex);
    NoteError("the state of the rip cannot be written");
}

void RipCollector::NoteError(const std::string& strError)
{
    if (m_strFirstError.empty())
        m_strFirstError = strError;
}

std::string RipCollector::GetFirstError() const
{
    const std::lock_guard lock(m_Mutex);
    return m_strFirstError;
}
