// LyString against std::wstring, in one run: copying, making and dropping, appending, searching.

#include "LyString.h"
#include <benchmark/benchmark.h>
#include <string>

namespace
{
constexpr wchar_t SHORT_TEXT[] = L"Track 05";
constexpr int FIND_CHARS = 4096;

std::wstring MakeText(int64_t nChars)
{
    std::wstring str;
    for (int64_t i = 0; i < nChars; ++i)
        str += static_cast<wchar_t>(L'a' + i % 23);
    return str;
}

// ---- A copy that is only read

void CopyLyString(benchmark::State& state)
{
    LyString str(MakeText(state.range(0)).c_str());
    for (auto _ : state)
    {
        LyString strCopy(str);
        benchmark::DoNotOptimize(static_cast<const wchar_t*>(strCopy));
    }
}
BENCHMARK(CopyLyString)->Arg(8)->Arg(64)->Arg(1024);

void CopyStdWString(benchmark::State& state)
{
    std::wstring str(MakeText(state.range(0)));
    for (auto _ : state)
    {
        std::wstring strCopy(str);
        benchmark::DoNotOptimize(strCopy.data());
    }
}
BENCHMARK(CopyStdWString)->Arg(8)->Arg(64)->Arg(1024);

// ---- Made of text and dropped again

void MakeLyString(benchmark::State& state)
{
    std::wstring strText(MakeText(state.range(0)));
    for (auto _ : state)
    {
        LyString str(strText.c_str());
        benchmark::DoNotOptimize(static_cast<const wchar_t*>(str));
    }
}
BENCHMARK(MakeLyString)->Arg(8)->Arg(64)->Arg(1024);

void MakeStdWString(benchmark::State& state)
{
    std::wstring strText(MakeText(state.range(0)));
    for (auto _ : state)
    {
        std::wstring str(strText.c_str());
        benchmark::DoNotOptimize(str.data());
    }
}
BENCHMARK(MakeStdWString)->Arg(8)->Arg(64)->Arg(1024);

// ---- A text that grows piece by piece

template <class STRING>
void Append(benchmark::State& state)
{
    for (auto _ : state)
    {
        STRING str;
        for (int64_t i = 0; i < state.range(0); ++i)
        {
            str += SHORT_TEXT;
            str += L',';
        }
        benchmark::DoNotOptimize(&str);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0) * 2);
}
BENCHMARK(Append<LyString>)->Arg(4)->Arg(1000);
BENCHMARK(Append<std::wstring>)->Arg(4)->Arg(1000);

void SumLyString(benchmark::State& state)
{
    LyString strName(L"Artist");
    for (auto _ : state)
    {
        LyString str = strName + L" - " + strName + L'.';
        benchmark::DoNotOptimize(static_cast<const wchar_t*>(str));
    }
}
BENCHMARK(SumLyString);

void SumStdWString(benchmark::State& state)
{
    std::wstring strName(L"Artist");
    for (auto _ : state)
    {
        std::wstring str = strName + L" - " + strName + L'.';
        benchmark::DoNotOptimize(str.data());
    }
}
BENCHMARK(SumStdWString);

// ---- A text at the end of a long one

void FindTextLyString(benchmark::State& state)
{
    LyString str((MakeText(FIND_CHARS) + L"xyz!").c_str());
    for (auto _ : state)
        benchmark::DoNotOptimize(str.Find(L"yz!", 0));
}
BENCHMARK(FindTextLyString);

void FindTextStdWString(benchmark::State& state)
{
    std::wstring str(MakeText(FIND_CHARS) + L"xyz!");
    for (auto _ : state)
        benchmark::DoNotOptimize(str.find(L"yz!", 0));
}
BENCHMARK(FindTextStdWString);

void FindCharacterLyString(benchmark::State& state)
{
    LyString str((MakeText(FIND_CHARS) + L"!").c_str());
    for (auto _ : state)
        benchmark::DoNotOptimize(str.Find(L'!', 0));
}
BENCHMARK(FindCharacterLyString);

void FindCharacterStdWString(benchmark::State& state)
{
    std::wstring str(MakeText(FIND_CHARS) + L"!");
    for (auto _ : state)
        benchmark::DoNotOptimize(str.find(L'!', 0));
}
BENCHMARK(FindCharacterStdWString);

void FindWithoutCaseLyString(benchmark::State& state)
{
    LyString str((MakeText(FIND_CHARS) + L"!").c_str());
    for (auto _ : state)
        benchmark::DoNotOptimize(str.ReverseFind(L"ABCDEX", false));
}
BENCHMARK(FindWithoutCaseLyString);
} // namespace

BENCHMARK_MAIN();
