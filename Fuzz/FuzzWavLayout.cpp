// The listing of a WAV file's chunks, from hostile bytes: what it lists lies in the file, and what it calls whole is.

#include "../Tests/Fakes/MemoryReader.h"
#include "FuzzCheck.h"
#include "HostError.h"
#include "WavLayout.h"
#include <cstddef>
#include <cstdint>

static void CheckLayout(const WAV_LAYOUT& layout, long long nBytes)
{
    Check(layout.nFileBytes == nBytes);
    long long nEnd = 12;
    for (const WAV_LAYOUT_CHUNK& chunk : layout.aryChunks)
    {
        Check(chunk.strId.size() == 4 && chunk.nOffset == nEnd);
        const long long nBehind = chunk.nOffset + 8 + chunk.nBytes;
        Check(chunk.bWhole == (nBehind <= nBytes));
        Check(chunk.bWhole || &chunk == &layout.aryChunks.back());
        nEnd = nBehind + chunk.nBytes % 2;
    }
    for (const WAV_PROBLEM& problem : layout.aryProblems)
        Check(!problem.strText.empty() && GetWavProblemName(problem.eKind) != nullptr);
    Check(!DescribeWavFormat(layout.format).empty());
    if (layout.aryProblems.empty())
        Check(layout.format.bKnown && layout.nRootBytes == nBytes - 8 && nEnd == nBytes);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    MemoryReader reader(std::string(reinterpret_cast<const char*>(pData), nBytes));
    try
    {
        CheckLayout(ReadWavLayout(reader, "file"), static_cast<long long>(nBytes));
    }
    catch (const HostError&)
    {
        // No WAV file.
    }
    return 0;
}
