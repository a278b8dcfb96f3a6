// What a user types for a rip: lists of tracks, ranges of sectors, encoders.

#include "RipEncoders.h"
#include "RipPlan.h"
#include <algorithm>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    const std::string strText(reinterpret_cast<const char*>(pData), nBytes);
    std::vector<int> aryTracks;
    const bool bTracks = ParseTrackList(strText, aryTracks).empty();
    if (bTracks != !aryTracks.empty() || !std::is_sorted(aryTracks.begin(), aryTracks.end()))
        __builtin_trap();
    for (const int nTrack : aryTracks)
        if (nTrack < 1 || nTrack > 99)
            __builtin_trap();
    int nFirst = 0;
    int nLast = 0;
    if (ParseSectorRange(strText, nFirst, nLast).empty() && (nFirst < 0 || nLast < nFirst))
        __builtin_trap();
    ENCODER_CHOICE choice;
    if (ParseEncoderChoice(strText, choice).empty() &&
        (choice.strName.empty() || choice.strSuffix.find('/') != std::string::npos ||
         choice.bWAV != (choice.strName == "wav")))
        __builtin_trap();
    return 0;
}
