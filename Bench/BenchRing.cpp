// The ring between drive and player, and what a second of audio costs from disc image to PCM.

#include "CDUnits.h"
#include "MemReader.h"
#include <benchmark/benchmark.h>
#include <cstring>
#include <vector>

namespace
{
constexpr int REQUEST_BYTES = 2304;

// Copies out of a full ring in the player's steps; the counterpart is a plain copy of the same bytes in one go.
void RingRead(benchmark::State& state)
{
    CMemReader reader;
    std::vector<char> aryBuffer(REQUEST_BYTES);
    constexpr int REQUESTS = CMemReader::RING_BYTES / REQUEST_BYTES - 1;
    for (auto _ : state)
    {
        reader.m_nReadPos = 0;
        reader.m_nWritePos = CMemReader::RING_BYTES - LY_CD_SECTOR_BYTES;
        for (int i = 0; i < REQUESTS; ++i)
            benchmark::DoNotOptimize(reader.read(REQUEST_BYTES, aryBuffer.data()));
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * REQUESTS * REQUEST_BYTES);
}
BENCHMARK(RingRead);

void PlainCopy(benchmark::State& state)
{
    const CMemReader reader;
    std::vector<char> aryBuffer(REQUEST_BYTES);
    constexpr int REQUESTS = CMemReader::RING_BYTES / REQUEST_BYTES - 1;
    for (auto _ : state)
    {
        for (int i = 0; i < REQUESTS; ++i)
        {
            std::memcpy(aryBuffer.data(), reader.m_pRing + static_cast<ptrdiff_t>(i) * REQUEST_BYTES, REQUEST_BYTES);
            benchmark::DoNotOptimize(aryBuffer.data());
            benchmark::ClobberMemory();
        }
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * REQUESTS * REQUEST_BYTES);
}
BENCHMARK(PlainCopy);
} // namespace
