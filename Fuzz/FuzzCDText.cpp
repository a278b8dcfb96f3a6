// The CD-Text decoder, on the raw answer of a drive: four bytes of header and packs.

#include "FuzzCheck.h"
#include "SCSICDTextDetails.h"
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

static void CheckStrings(const LyStringArray& strings)
{
    Check(strings.GetSize() <= 255 + 6); // the highest track number, and the strings that fit into its pack
    for (int i = 0; i < strings.GetSize(); i++)
    {
        Check(strings[i].GetLength() <= CDTextDecoder::MAX_STRING_BYTES);
        for (int n = 0; n < strings[i].GetLength(); n++)
            Check(strings[i][n] > 0 && strings[i][n] < 256);
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    std::vector<unsigned char> answer(CDTextDecoder::MAX_ANSWER_BYTES);
    std::copy_n(pData, std::min(nBytes, answer.size()), answer.begin());
    int nPacks = CDTextDecoder::GetPackCount(answer.data());
    Check(nPacks >= -1 && nPacks <= CDTextDecoder::MAX_PACKS);
    answer.resize(static_cast<size_t>(CDTextDecoder::HEADER_BYTES + std::max(nPacks, 0) * CDTextDecoder::PACK_BYTES));
    answer.shrink_to_fit();

    LyString strTitle;
    LyString strPerformer;
    LyStringArray titles;
    LyStringArray performers;
    CDTextDecoder decoder({strTitle, strPerformer, titles, performers});
    decoder.Decode(answer.data() + CDTextDecoder::HEADER_BYTES, nPacks);
    CheckStrings(titles);
    CheckStrings(performers);
    return 0;
}
