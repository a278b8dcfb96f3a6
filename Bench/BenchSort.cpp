// Sorting pointers by what they point to: LyQSort on one thread and on two against std::sort.

#include "LyArray.h"
#include <algorithm>
#include <benchmark/benchmark.h>
#include <random>
#include <vector>

namespace
{
struct RECORD
{
    unsigned int nKey;
    char data[60];
};

class CompareRecords : public ILyQSortCompare<RECORD*>
{
public:
    int LyQSort_Compare(RECORD** ppFirst, RECORD** ppSecond) override
    {
        return (*ppFirst)->nKey < (*ppSecond)->nKey ? -1 : (*ppFirst)->nKey > (*ppSecond)->nKey;
    }
};

std::vector<RECORD> MakeRecords(int64_t nRecords)
{
    std::mt19937 random(1);
    std::vector<RECORD> aryRecords(static_cast<size_t>(nRecords));
    for (RECORD& record : aryRecords)
        record.nKey = static_cast<unsigned int>(random());
    return aryRecords;
}

std::vector<RECORD*> PointersTo(std::vector<RECORD>& aryRecords)
{
    std::vector<RECORD*> aryPointers;
    aryPointers.reserve(aryRecords.size());
    for (RECORD& record : aryRecords)
        aryPointers.push_back(&record);
    return aryPointers;
}

void QSort(benchmark::State& state, bool bMultiThreaded)
{
    std::vector<RECORD> aryRecords = MakeRecords(state.range(0));
    const std::vector<RECORD*> aryUnsorted = PointersTo(aryRecords);
    CompareRecords compare;
    LyQSort<RECORD*> sort;
    for (auto _ : state)
    {
        std::vector<RECORD*> ary(aryUnsorted);
        sort.Sort(&compare, ary.data(), ary.size(), bMultiThreaded);
        benchmark::DoNotOptimize(ary.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void OneThread(benchmark::State& state) { QSort(state, false); }
void TwoThreads(benchmark::State& state) { QSort(state, true); }

void StandardSort(benchmark::State& state)
{
    std::vector<RECORD> aryRecords = MakeRecords(state.range(0));
    const std::vector<RECORD*> aryUnsorted = PointersTo(aryRecords);
    for (auto _ : state)
    {
        std::vector<RECORD*> ary(aryUnsorted);
        std::sort(ary.begin(), ary.end(), [](const RECORD* a, const RECORD* b) { return a->nKey < b->nKey; });
        benchmark::DoNotOptimize(ary.data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
} // namespace

BENCHMARK(OneThread)->Name("LyQSort/oneThread")->Arg(1000)->Arg(1000000)->UseRealTime();
BENCHMARK(TwoThreads)->Name("LyQSort/twoThreads")->Arg(1000)->Arg(1000000)->UseRealTime();
BENCHMARK(StandardSort)->Name("std::sort")->Arg(1000)->Arg(1000000)->UseRealTime();

BENCHMARK_MAIN();
