// Any bytes as an answer of the AccurateRip database: read, written again, and compared with the sums of a small disc.

#include "AccurateRipVerify.h"
#include "FuzzCheck.h"
#include <algorithm>
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

// The blocks as they are, and as if they were of the disc.
static void CheckVerdict(const DiscChecksums& checksums, std::vector<ACCURATERIP_BLOCK> aryBlocks)
{
    for (int nTime = 0; nTime < 2; ++nTime)
    {
        const ACCURATERIP_VERDICT verdict = VerifyAccurateRip(checksums, aryBlocks);
        Check(verdict.m_nBlocks + verdict.m_nForeignBlocks == static_cast<int>(aryBlocks.size()));
        Check(verdict.m_aryTracks.size() == 2);
        for (const ACCURATERIP_MATCH& match : verdict.m_aryMatches)
            Check(match.m_nBlock >= 0 && match.m_nBlock < static_cast<int>(aryBlocks.size()));
        for (ACCURATERIP_BLOCK& block : aryBlocks)
            block.m_ID = GetAccurateRipID(checksums.GetLayout());
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    static const DiscChecksums s_checksums = MakeChecksums();
    std::vector<ACCURATERIP_BLOCK> aryBlocks;
    size_t nBadBlock = 0;
    const ACCURATERIP_ANSWER_ERROR nError = ParseAccurateRipAnswer(pData, nBytes, aryBlocks, nBadBlock);
    Check(nBadBlock <= nBytes && aryBlocks.empty() == (nError != ACCURATERIP_ANSWER_OK));
    if (nError != ACCURATERIP_ANSWER_OK)
        return 0;
    const std::vector<uint8_t> aryAgain = MakeAccurateRipAnswer(aryBlocks);
    Check(nBadBlock == nBytes && std::equal(aryAgain.begin(), aryAgain.end(), pData, pData + nBytes));
    CheckVerdict(s_checksums, aryBlocks);
    return 0;
}
