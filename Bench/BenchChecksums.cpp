// What the sums of a rip cost: all of them in one pass over a disc, and zlib's crc32 alone over the same bytes in the
// same run. Bytes a second stand in bytes_per_second; a CD plays 176,400 of them. And the search at all offsets.

#include "AccurateRipVerify.h"
#include "DiscChecksums.h"
#include <algorithm>
#include <benchmark/benchmark.h>
#include <random>
#include <vector>
#include <zlib.h>

namespace
{
constexpr int SECTORS = 12000; // under three minutes, in three tracks
constexpr size_t BLOCK_BYTES = LY_CD_MAX_READ_BYTES;

CD_LAYOUT Layout()
{
    CD_LAYOUT layout;
    for (int nStart : {0, 4000, 8000})
        layout.Add(nStart);
    layout.Finish(SECTORS);
    return layout;
}

// Loud noise: a sector in fifty has a null sample, as loud music has. Quiet: nearly every sector has many.
std::vector<uint8_t> MakeAudio(int nMask)
{
    std::mt19937 random(1);
    std::vector<uint8_t> ary(static_cast<size_t>(SECTORS) * LY_CD_SECTOR_BYTES);
    for (size_t i = 0; i < ary.size(); i += 2)
    {
        const int nSample = static_cast<int>(random()) & nMask;
        ary[i] = static_cast<uint8_t>(nSample);
        ary[i + 1] = static_cast<uint8_t>(nSample >> 8);
    }
    return ary;
}

const std::vector<uint8_t>& Loud()
{
    static const std::vector<uint8_t> s_ary = MakeAudio(0xFFFF);
    return s_ary;
}

const std::vector<uint8_t>& Quiet()
{
    static const std::vector<uint8_t> s_ary = MakeAudio(0x1F);
    return s_ary;
}

void AddAll(DiscChecksums& checksums, const std::vector<uint8_t>& ary)
{
    (void)checksums.SetLayout(Layout());
    for (size_t i = 0; i < ary.size(); i += BLOCK_BYTES)
        checksums.Add(ary.data() + i, std::min(BLOCK_BYTES, ary.size() - i));
}

void CountBytes(benchmark::State& state)
{
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * SECTORS * LY_CD_SECTOR_BYTES);
}

void AllSums(benchmark::State& state, const std::vector<uint8_t>& ary)
{
    DiscChecksums checksums;
    for (auto _ : state)
        AddAll(checksums, ary);
    TRACK_CHECKSUMS sums;
    if (!checksums.GetTrack(1, sums) || sums.m_nCRC32 != crc32(0, ary.data(), 4000 * LY_CD_SECTOR_BYTES))
        state.SkipWithError("the sums differ");
    CountBytes(state);
}

void AllSumsLoud(benchmark::State& state) { AllSums(state, Loud()); }
void AllSumsQuiet(benchmark::State& state) { AllSums(state, Quiet()); }

void OwnCRC32(benchmark::State& state)
{
    for (auto _ : state)
    {
        uint32_t nCRC = CRC32_START;
        for (size_t i = 0; i < Loud().size(); i += BLOCK_BYTES)
            nCRC = AddToCRC32Register(nCRC, Loud().data() + i, std::min(BLOCK_BYTES, Loud().size() - i));
        benchmark::DoNotOptimize(nCRC);
    }
    CountBytes(state);
}

void ZlibCRC32(benchmark::State& state)
{
    for (auto _ : state)
    {
        uLong nCRC = 0;
        for (size_t i = 0; i < Loud().size(); i += BLOCK_BYTES)
            nCRC = crc32(nCRC, Loud().data() + i, static_cast<uInt>(std::min(BLOCK_BYTES, Loud().size() - i)));
        benchmark::DoNotOptimize(nCRC);
    }
    CountBytes(state);
}

// Three tracks, 11,759 offsets, fifty pressings that agree nowhere.
void SearchAtAllOffsets(benchmark::State& state)
{
    DiscChecksums checksums;
    AddAll(checksums, Loud());
    std::vector<ACCURATERIP_BLOCK> aryBlocks(50);
    uint32_t nSum = 1;
    for (ACCURATERIP_BLOCK& block : aryBlocks)
    {
        block.m_ID = GetAccurateRipID(checksums.GetLayout());
        for (int nTrack = 0; nTrack < 3; ++nTrack)
        {
            block.m_aryEntries.push_back({9, nSum, nSum + 1});
            nSum += 2;
        }
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(VerifyAccurateRip(checksums, aryBlocks));
}
} // namespace

BENCHMARK(AllSumsLoud)->Unit(benchmark::kMillisecond);
BENCHMARK(AllSumsQuiet)->Unit(benchmark::kMillisecond);
BENCHMARK(OwnCRC32)->Unit(benchmark::kMillisecond);
BENCHMARK(ZlibCRC32)->Unit(benchmark::kMillisecond);
BENCHMARK(SearchAtAllOffsets)->Unit(benchmark::kMillisecond);
