// The members of a report and their names in JSON, once for both ways: a writer and a reader walk the same list, so
// that nothing is written that is not read.
//
// Shape:   Fields(archive, record) calls one operation of the archive for each member. A writer's Ref<T> is a const T&,
//          a reader's a T&. Rows have no names: Cells lists what stands in one (ReportPacking.h).

#pragma once

#include "RipReport.h"
#include <array>

constexpr const char* REPORT_FORMAT_KEY = "format";
constexpr const char* REPORT_FORMAT = "rondel rip log";
constexpr const char* REPORT_VERSION_KEY = "version";
constexpr int REPORT_VERSION = 1; // another one is another shape

// What a reader takes. Beyond it no disc is, and sums of sectors could overflow.
constexpr int REPORT_MAX_SECTOR = 2 * CD_ADDRESS_END; // either way from sector 0
constexpr size_t REPORT_MAX_PIECES = 1000;

constexpr std::array REPORT_MODES = {"burst", "secure"};
constexpr std::array REPORT_OUTCOMES = {"whole", "doubtful", "stopped", "failed"};
constexpr std::array REPORT_PIECE_STATES = {"open", "read", "taken"};
constexpr std::array REPORT_STATUSES = {"reread", "matched", "limit",      "short",  "nothing",
                                        "unread", "cached",  "unfinished", "differs"};
static_assert(REPORT_STATUSES.size() == SECURE_RIP_STATUSES);

template <class ARCHIVE>
void Fields(ARCHIVE& a, typename ARCHIVE::template Ref<RIP_DRIVE> drive)
{
    a.Text("path", drive.strPath);
    a.Text("vendor", drive.strVendor);
    a.Text("model", drive.strModel);
    a.Text("revision", drive.strRevision);
    a.Flag("image", drive.bImage);
    a.Text("profile", drive.strProfile);
    a.Number("cache_sectors", drive.nCacheSectors);
    a.Flag("cache_measured", drive.bCacheMeasured);
    a.Flag("accurate_stream", drive.bAccurateStream);
    a.Number("read_offset", drive.nReadOffset);
    a.Number("max_speed", drive.nMaxSpeed);
}

template <class ARCHIVE>
void Fields(ARCHIVE& a, typename ARCHIVE::template Ref<CD_LAYOUT_TRACK> track)
{
    a.Number("number", track.m_nNumber);
    a.Sector("start", track.m_nStart);
    a.Sector("end", track.m_nEnd);
    a.Flag("data", track.m_bData);
}

template <class ARCHIVE>
void Fields(ARCHIVE& a, typename ARCHIVE::template Ref<RIP_DISC> disc)
{
    a.Text("title", disc.strTitle);
    a.Text("performer", disc.strPerformer);
    a.Text("upc", disc.strUPC);
    a.List("tracks", disc.layout.m_aryTracks, LY_CD_MAX_TRACKS);
    a.Sector("lead_out", disc.layout.m_nLeadOut);
    a.Text("accuraterip_id", disc.strAccurateRipID);
    a.Text("cddb_id", disc.strCDDBID);
    a.Text("musicbrainz_id", disc.strMusicBrainzID);
    a.Text("ctdb_id", disc.strCTDBID);
}

template <class ARCHIVE>
void Fields(ARCHIVE& a, typename ARCHIVE::template Ref<RIP_FILE> file)
{
    a.Text("name", file.strName);
    a.Text("encoder", file.strEncoder);
    a.Text("library", file.strLibrary);
    a.Text("settings", file.strSettings);
    a.Number("bytes", file.nBytes);
    a.Text("sha256", file.strSHA256);
    a.Text("crc32", file.strCRC32);
    a.Text("error", file.strError);
}

template <class ARCHIVE>
void Fields(ARCHIVE& a, typename ARCHIVE::template Ref<RIP_LOUDNESS> loudness)
{
    a.Real("integrated_lufs", loudness.fIntegrated);
    a.Real("momentary_max_lufs", loudness.fMomentaryMax);
    a.Real("short_term_max_lufs", loudness.fShortTermMax);
    a.Real("range_lu", loudness.fRange);
    a.Real("sample_peak_dbfs", loudness.fSamplePeak);
    a.Real("true_peak_dbtp", loudness.fTruePeak);
    a.OptionalReal("replay_gain_db", loudness.fReplayGain);
}

template <class ARCHIVE>
void Fields(ARCHIVE& a, typename ARCHIVE::template Ref<RIP_ANALYSIS> analysis)
{
    a.Record("loudness", analysis.loudness);
    a.OptionalNumber("dr", analysis.nDR);
    a.Reals("dr_channels_db", analysis.aryChannelDR);
    a.OptionalReal("bpm", analysis.fBPM);
    a.OptionalReal("bpm_octave", analysis.fOctaveBPM);
    a.Real("bpm_confidence", analysis.fBPMConfidence);
}

template <class ARCHIVE>
void Fields(ARCHIVE& a, typename ARCHIVE::template Ref<SECURE_RIP_ENTRY> entry)
{
    a.Number("track", entry.nTrack);
    a.Sector("sector", entry.nSector);
    a.Length("sectors", entry.nSectors);
    a.Choice("status", entry.nStatus, REPORT_STATUSES);
    a.Derived("bad", entry.IsBad());
    a.Number("retries", entry.nRetries);
    a.Number("mismatched_sectors", entry.nMismatchedSectors);
    a.Number("elapsed_ms", entry.nElapsedMs);
}

template <class ARCHIVE>
void Fields(ARCHIVE& a, typename ARCHIVE::template Ref<TRACK_CHECKSUMS> sums)
{
    a.Flag("complete", sums.m_bComplete);
    a.Sum("crc32", sums.m_nCRC32);
    a.Sum("crc32_without_null", sums.m_nCRC32WithoutNull);
    a.Sum("accuraterip_1", sums.m_nAccurateRip1);
    a.Sum("accuraterip_2", sums.m_nAccurateRip2);
    a.Sum("frame_450", sums.m_nFrame450);
    a.Sum("ctdb", sums.m_nCTDB);
}

template <class ARCHIVE>
void Cells(ARCHIVE& a, typename ARCHIVE::template Ref<RIP_WAVE_POINT> point)
{
    a.Cell(point.nLow);
    a.Cell(point.nHigh);
}

template <class ARCHIVE>
void Cells(ARCHIVE& a, typename ARCHIVE::template Ref<RIP_SPEED_POINT> point)
{
    a.Cell(point.nSector);
    a.Cell(point.fSpeed);
    a.Cell(point.fSecond);
}

template <class ARCHIVE>
void Cells(ARCHIVE& a, typename ARCHIVE::template Ref<float> f)
{
    a.Cell(f);
}

template <class ARCHIVE>
void Fields(ARCHIVE& a, typename ARCHIVE::template Ref<RIP_SERIES> series)
{
    a.Number("wave_sectors", series.nWaveSectors);
    a.Rows("wave", series.aryWave);
    a.Rows("momentary_lufs", series.aryMomentary);
    a.Rows("short_term_lufs", series.aryShortTerm);
    a.Rows("speed", series.arySpeed);
}

template <class ARCHIVE>
void Fields(ARCHIVE& a, typename ARCHIVE::template Ref<RIP_PIECE> piece)
{
    a.Number("track", piece.nTrack);
    a.Text("title", piece.strTitle);
    a.Text("performer", piece.strPerformer);
    a.Text("isrc", piece.strISRC);
    a.Sector("start", piece.nStart);
    a.Length("sectors", piece.nSectors);
    a.Flag("pre_emphasis", piece.bPreEmphasis);
    a.Choice("state", piece.eState, REPORT_PIECE_STATES);
    a.Real("seconds", piece.fSeconds);
    a.Derived("bad_sectors", piece.CountBadSectors());
    a.List("entries", piece.aryEntries);
    a.Record("sums", piece.sums);
    a.OptionalRecord("analysis", piece.analysis);
    a.Series("series", piece.series);
    a.List("files", piece.aryFiles);
}

template <class ARCHIVE>
void Fields(ARCHIVE& a, typename ARCHIVE::template Ref<ACCURATERIP_TRACK_VERDICT> verdict)
{
    a.Number("track", verdict.m_nTrack);
    a.Flag("known", verdict.m_bKnown);
    a.Number("confidence_1", verdict.m_nConfidence1);
    a.Number("confidence_2", verdict.m_nConfidence2);
    a.Number("other_offset", verdict.m_nOtherOffset);
    a.Number("other_confidence", verdict.m_nOtherConfidence);
    a.Number("submissions", verdict.m_nSubmissions);
    a.Derived("accurate", verdict.IsAccurate());
}

template <class ARCHIVE>
void Fields(ARCHIVE& a, typename ARCHIVE::template Ref<ACCURATERIP_MATCH> match)
{
    a.Number("track", match.m_nTrack);
    a.Number("block", match.m_nBlock);
    a.Number("confidence", match.m_nConfidence);
    a.Number("kind", match.m_nKind);
    a.Number("offset", match.m_nOffset);
}

template <class ARCHIVE>
void Fields(ARCHIVE& a, typename ARCHIVE::template Ref<ACCURATERIP_VERDICT> verdict)
{
    a.Number("blocks", verdict.m_nBlocks);
    a.Number("foreign_blocks", verdict.m_nForeignBlocks);
    a.List("tracks", verdict.m_aryTracks);
    a.List("matches", verdict.m_aryMatches);
}

template <class ARCHIVE>
void Fields(ARCHIVE& a, typename ARCHIVE::template Ref<CTDB_PART_VERDICT> verdict)
{
    a.Number("track", verdict.m_nTrack);
    a.Flag("known", verdict.m_bKnown);
    a.Number("confidence", verdict.m_nConfidence);
    a.Number("other_offset", verdict.m_nOtherOffset);
    a.Number("other_confidence", verdict.m_nOtherConfidence);
    a.Number("submissions", verdict.m_nSubmissions);
    a.Derived("accurate", verdict.IsAccurate());
}

template <class ARCHIVE>
void Fields(ARCHIVE& a, typename ARCHIVE::template Ref<CTDB_VERDICT> verdict)
{
    a.Number("entries", verdict.m_nEntries);
    a.Number("foreign_entries", verdict.m_nForeignEntries);
    a.Number("parity", verdict.m_nParity);
    a.Record("disc", verdict.m_Disc);
    a.List("tracks", verdict.m_aryTracks);
}

template <class ARCHIVE>
void Fields(ARCHIVE& a, typename ARCHIVE::template Ref<RIP_VERIFICATION> verification)
{
    a.Text("file", verification.strFile);
    a.Text("kind", verification.strKind);
    a.OptionalRecord("accuraterip", verification.accurateRip);
    a.OptionalRecord("ctdb", verification.ctdb);
    a.Texts("notes", verification.aryNotes);
}

template <class ARCHIVE>
void Fields(ARCHIVE& a, typename ARCHIVE::template Ref<RIP_REPORT> report)
{
    a.Text("program", report.strProgram);
    a.Text("started", report.strStarted);
    a.Text("ended", report.strEnded);
    a.Text("command", report.strCommand);
    a.Choice("mode", report.bSecure, REPORT_MODES);
    a.Choice("outcome", report.eOutcome, REPORT_OUTCOMES);
    a.Text("error", report.strError);
    a.Derived("bad_sectors", report.CountBadSectors());
    a.Number("re_reads", report.nReReads);
    a.Real("seconds", report.fSeconds);
    a.Record("drive", report.drive);
    a.Record("disc", report.disc);
    a.List("pieces", report.aryPieces, REPORT_MAX_PIECES);
    a.OptionalRecord("album", report.album);
    a.OptionalNumber("album_dr", report.nAlbumDR);
    a.OptionalRecord("selection", report.selection);
    a.OptionalNumber("selection_dr", report.nSelectionDR);
    a.Sum("disc_ctdb", report.nDiscCTDB);
    a.List("files", report.aryFiles);
    a.List("verifications", report.aryVerifications);
    a.Texts("notes", report.aryNotes);
    a.StateTexts("parts_before", report.aryPartsBefore);
}
