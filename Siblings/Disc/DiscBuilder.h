// Lays a disc out from its start to its end: what the readers of CUE sheets and TOC files have in common.
//
// Use:     BeginTrack; silence and source pieces up to INDEX 01; MarkStart; more pieces, MarkIndex between them; the
//          next BeginTrack or, at the end, Finish. BeginSession stands between the tracks of two sessions.
// Units:   positions and lengths on the disc are bytes of 2352 a sector; "stored" bytes are bytes of a source.
// Errors:  the adding operations never fail by themselves; a disc that grows too long is told by Finish.

#pragma once

#include "DiscImage.h"
#include "SheetText.h"
#include <string>

class DiscBuilder
{
public:
    explicit DiscBuilder(ISectorSourceOpener& opener) : m_Opener(opener) {}

    // Opens a source, once for each name and kind. Null, with the fault at nLine, when it cannot be had.
    SectorSource* OpenSource(const std::string& strName, SECTOR_SOURCE_KIND kind, int nLine, SHEET_ERROR& error);

    // The first sector behind what is laid out; a sector that is laid out in part counts as laid out.
    int GetLBA() const { return static_cast<int>((m_nPosition + LY_CD_SECTOR_BYTES - 1) / LY_CD_SECTOR_BYTES); }

    // Ends the session and leaves the hole of its lead-out and the next one's lead-in behind it.
    void BeginSession(int nLeadOutSectors, int nLeadInSectors);

    // Ends the track before, padding it to a whole sector. The pregap starts here. The record brings number, mode,
    // control and texts; addresses and session are filled in here. type is what the track makes of its session, nLine
    // where the sheet has it.
    void BeginTrack(DISC_TRACK track, DISC_SESSION_TYPE type, int nLine);
    // INDEX 01, and INDEX 02 and higher: addresses in what is laid out or will be.
    void MarkStart(int nLBA) { m_Content.m_aryTracks.back().m_nStartLBA = nLBA; }
    void MarkIndex(int nLBA) { m_Content.m_aryTracks.back().m_aryIndexLBAs.push_back(nLBA); }

    // Sectors, or bytes of audio, that nobody stores.
    void AddSilence(long long nBytes);
    void AddSilentSectors(int nSectors) { AddSilence(static_cast<long long>(nSectors) * LY_CD_SECTOR_BYTES); }

    // nStored bytes of the source, which takes part of a sector of data for a whole one, filled up with zeros.
    void AddSource(SectorSource* pSource, long long nOffset, long long nStored);
    void PadToSector();

    const DISC_TRACK& GetTrack() const { return m_Content.m_aryTracks.back(); }
    DISC_CONTENT& GetContent() { return m_Content; }
    void Warn(int nLine, std::string strText);

    // Ends the last session, computes what follows from the layout, and hands the content over. Null when the disc
    // cannot be: it is too long, or a track is empty. The sheet's path goes into the warnings.
    std::unique_ptr<DiscImage> Finish(const std::string& strSheetPath, SHEET_ERROR& error);

private:
    struct OPEN_SOURCE
    {
        std::string m_strName;
        SECTOR_SOURCE_KIND m_nKind;
        SectorSource* m_pSource;
    };

    ISectorSourceOpener& m_Opener;
    DISC_CONTENT m_Content;
    std::vector<OPEN_SOURCE> m_aryOpen;
    std::vector<SHEET_ERROR> m_aryWarnings;
    std::vector<int> m_aryLines; // of each track
    long long m_nPosition = 0;
    int m_nTooLongLine = 0; // of the track with which the disc grew too long; 0: it has not

    void AddExtent(DISC_EXTENT extent);
    void SetTooLong();
};

// The packs of a CD-Text file (.cdt): packs of 18 bytes, with or without the four-byte header that a drive puts ahead
// of them, or a zero byte at the end. Empty when the content is no such thing.
std::vector<unsigned char> ParseCDTextFile(const std::string& strContent);
