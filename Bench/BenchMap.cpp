// Insert and lookup of text keys: the string maps against std::unordered_map.

#include "LyMap.h"
#include <benchmark/benchmark.h>
#include <string>
#include <unordered_map>
#include <vector>

namespace
{
std::vector<std::wstring> MakeKeys(int64_t nKeys)
{
    std::vector<std::wstring> aryKeys;
    for (int64_t i = 0; i < nKeys; ++i)
        aryKeys.push_back(L"Field name " + std::to_wstring(i * 7919));
    return aryKeys;
}

template <bool bCaseSensitive>
void LyStringMapInsert(benchmark::State& state)
{
    const std::vector<std::wstring> aryKeys = MakeKeys(state.range(0));
    for (auto _ : state)
    {
        LyStringMap<LyString, bCaseSensitive, int, int, true> map;
        for (const std::wstring& str : aryKeys)
            map.SetAt(str.c_str(), 1);
        benchmark::DoNotOptimize(map.GetCount());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <bool bCaseSensitive>
void LyStringMapLookup(benchmark::State& state)
{
    const std::vector<std::wstring> aryKeys = MakeKeys(state.range(0));
    LyStringMap<LyString, bCaseSensitive, int, int, true> map;
    for (const std::wstring& str : aryKeys)
        map.SetAt(str.c_str(), 1);
    for (auto _ : state)
    {
        for (const std::wstring& str : aryKeys)
            benchmark::DoNotOptimize(map.FindValue(str.c_str()));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void UnorderedMapInsert(benchmark::State& state)
{
    const std::vector<std::wstring> aryKeys = MakeKeys(state.range(0));
    for (auto _ : state)
    {
        std::unordered_map<std::wstring, int> map;
        for (const std::wstring& str : aryKeys)
            map[str.c_str()] = 1; // from characters, as the callers of the string map have them
        benchmark::DoNotOptimize(map.size());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void UnorderedMapLookup(benchmark::State& state)
{
    const std::vector<std::wstring> aryKeys = MakeKeys(state.range(0));
    std::unordered_map<std::wstring, int> map;
    for (const std::wstring& str : aryKeys)
        map[str] = 1;
    for (auto _ : state)
    {
        for (const std::wstring& str : aryKeys)
            benchmark::DoNotOptimize(map.find(str.c_str()));
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
} // namespace

BENCHMARK(LyStringMapInsert<false>)->Name("LyStringMap/insert/anyCase")->Arg(100)->Arg(10000);
BENCHMARK(LyStringMapInsert<true>)->Name("LyStringMap/insert/withCase")->Arg(100)->Arg(10000);
BENCHMARK(UnorderedMapInsert)->Name("unordered_map/insert")->Arg(100)->Arg(10000);
BENCHMARK(LyStringMapLookup<false>)->Name("LyStringMap/lookup/anyCase")->Arg(100)->Arg(10000);
BENCHMARK(LyStringMapLookup<true>)->Name("LyStringMap/lookup/withCase")->Arg(100)->Arg(10000);
BENCHMARK(UnorderedMapLookup)->Name("unordered_map/lookup")->Arg(100)->Arg(10000);

BENCHMARK_MAIN();
