// Any text as an answer of the CTDB: read, and compared with the sums of a small disc.

#include "CTDBVerify.h"
#include "FuzzCheck.h"
#include <cstddef>
#include <cstdint>

static DiscChecksums MakeChecksums()
{
    CD_LAYOUT layout;
    layout.Add(0);
    layout.Add(12);
    layout.Finish(30);
    DiscChecksums checksums;
    Check(checksums.SetLayout(layout, 100));
    std::vector<uint8_t> aryAudio(30 * LY_CD_SECTOR_BYTES);
    for (size_t i = 0; i < aryAudio.size(); ++i)
        aryAudio[i] = static_cast<uint8_t>(i * i >> 5);
    checksums.Add(aryAudio.data(), aryAudio.size());
    return checksums;
}

static void CheckPart(const CTDB_PART_VERDICT& part)
{
    Check(part.m_nConfidence >= 0 && part.m_nConfidence <= part.m_nSubmissions);
    Check(part.m_nOtherConfidence >= 0 && part.m_nOtherConfidence <= part.m_nSubmissions);
    Check((part.m_nOtherOffset == 0) == (part.m_nOtherConfidence == 0));
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    static const DiscChecksums s_checksums = MakeChecksums();
    const std::string strText(reinterpret_cast<const char*>(pData), nBytes);
    std::vector<CTDB_ENTRY> aryEntries;
    std::string strReason;
    const bool bGood = ParseCTDBAnswer(strText, aryEntries, strReason);
    Check(bGood == strReason.empty() && (bGood || aryEntries.empty()) && aryEntries.size() <= CTDB_MAX_ENTRIES);
    for (const CTDB_ENTRY& entry : aryEntries)
        Check(entry.m_nConfidence >= 0 && entry.m_aryTracks.size() <= CTDB_MAX_TRACKS);
    const CTDB_VERDICT verdict = VerifyCTDB(s_checksums, aryEntries);
    Check(verdict.m_nEntries + verdict.m_nForeignEntries == static_cast<int>(aryEntries.size()));
    Check(verdict.m_aryTracks.size() == 2);
    CheckPart(verdict.m_Disc);
    for (const CTDB_PART_VERDICT& track : verdict.m_aryTracks)
        CheckPart(track);
    return 0;
}
