// Formatting, numbers and UTF-8 against the C and C++ library, in one run.

#include "LyStringFormat.h"
#include <benchmark/benchmark.h>
#include <charconv>
#include <codecvt>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <locale>
#include <memory>
#include <string>

namespace
{
constexpr int TRACK = 5;
constexpr int SECONDS = 185;
constexpr wchar_t TITLE[] = L"A title of usual length";
constexpr int NUMBER_STEP = 7919; // numbers of all lengths, one after the other

// ---- A line of text from a format

void FormatLine(benchmark::State& state)
{
    LyString strTitle(TITLE);
    for (auto _ : state)
    {
        LyString str;
        str.Format(L"Track %2d: %s (%d:%2d)", TRACK, strTitle, SECONDS / 60, SECONDS % 60);
        benchmark::DoNotOptimize(static_cast<const wchar_t*>(str));
    }
}
BENCHMARK(FormatLine);

void FormatLineSwprintf(benchmark::State& state)
{
    for (auto _ : state)
    {
        wchar_t buffer[128];
        int nLength = std::swprintf(buffer, std::size(buffer), L"Track %02d: %ls (%d:%02d)", TRACK, TITLE, SECONDS / 60,
                                    SECONDS % 60);
        std::wstring str(buffer, static_cast<size_t>(nLength));
        benchmark::DoNotOptimize(str.data());
    }
}
BENCHMARK(FormatLineSwprintf);

void FormatDecimal(benchmark::State& state)
{
    for (auto _ : state)
    {
        LyString str;
        str.Format(L"%.2f dB", -14.23);
        benchmark::DoNotOptimize(static_cast<const wchar_t*>(str));
    }
}
BENCHMARK(FormatDecimal);

void FormatDecimalSwprintf(benchmark::State& state)
{
    for (auto _ : state)
    {
        wchar_t buffer[128];
        int nLength = std::swprintf(buffer, std::size(buffer), L"%.2f dB", -14.23);
        std::wstring str(buffer, static_cast<size_t>(nLength));
        benchmark::DoNotOptimize(str.data());
    }
}
BENCHMARK(FormatDecimalSwprintf);

// ---- Integers to text

void WriteIntToBuffer(benchmark::State& state)
{
    unsigned int nValue = 0;
    for (auto _ : state)
    {
        wchar_t buffer[32];
        int nLength = 0;
        LyString::FromIntStatic(buffer, static_cast<int>(std::size(buffer)), nLength, static_cast<int>(nValue), 0, 10,
                                0);
        benchmark::DoNotOptimize(buffer);
        nValue += NUMBER_STEP;
    }
}
BENCHMARK(WriteIntToBuffer);

void WriteIntToBufferToChars(benchmark::State& state)
{
    unsigned int nValue = 0;
    for (auto _ : state)
    {
        char buffer[32];
        benchmark::DoNotOptimize(std::to_chars(std::begin(buffer), std::end(buffer), static_cast<int>(nValue)));
        benchmark::DoNotOptimize(buffer);
        nValue += NUMBER_STEP;
    }
}
BENCHMARK(WriteIntToBufferToChars);

void WriteIntToString(benchmark::State& state)
{
    unsigned int nValue = 0;
    for (auto _ : state)
    {
        LyString str;
        str.FromInt(static_cast<int>(nValue));
        benchmark::DoNotOptimize(static_cast<const wchar_t*>(str));
        nValue += NUMBER_STEP;
    }
}
BENCHMARK(WriteIntToString);

void WriteIntToStringStd(benchmark::State& state)
{
    unsigned int nValue = 0;
    for (auto _ : state)
    {
        std::wstring str = std::to_wstring(static_cast<int>(nValue));
        benchmark::DoNotOptimize(str.data());
        nValue += NUMBER_STEP;
    }
}
BENCHMARK(WriteIntToStringStd);

// ---- Text to numbers

void ReadInt(benchmark::State& state)
{
    LyString str(L"-1234567");
    for (auto _ : state)
        benchmark::DoNotOptimize(str.GetInt());
}
BENCHMARK(ReadInt);

void ReadIntWcstol(benchmark::State& state)
{
    std::wstring str(L"-1234567");
    for (auto _ : state)
        benchmark::DoNotOptimize(std::wcstol(str.c_str(), nullptr, 10));
}
BENCHMARK(ReadIntWcstol);

void ReadDouble(benchmark::State& state)
{
    LyString str(L"-1234.5678");
    for (auto _ : state)
        benchmark::DoNotOptimize(LyString::GetDouble(str, nullptr, false, str.GetLength(), true));
}
BENCHMARK(ReadDouble);

void ReadDoubleWcstod(benchmark::State& state)
{
    std::wstring str(L"-1234.5678");
    for (auto _ : state)
        benchmark::DoNotOptimize(std::wcstod(str.c_str(), nullptr));
}
BENCHMARK(ReadDoubleWcstod);

// ---- UTF-8. One character in eight takes two bytes.

std::wstring MakeText(int64_t nChars)
{
    std::wstring str;
    for (int64_t i = 0; i < nChars; ++i)
        str += static_cast<wchar_t>(i % 8 == 7 ? 0xE4 : L'a' + i % 23);
    return str;
}

void WriteUTF8(benchmark::State& state)
{
    LyString str(MakeText(state.range(0)).c_str());
    for (auto _ : state)
    {
        std::unique_ptr<char[]> text(LyCharacterHelper::GetUTF8FromUTFN(str, str.GetLength()));
        benchmark::DoNotOptimize(text.get());
    }
}
BENCHMARK(WriteUTF8)->Arg(24)->Arg(4096);

// The converter of the C++ library, made once, on its own as fast as it gets.
using Codec = std::codecvt<wchar_t, char, std::mbstate_t>;

std::locale GetUTF8Locale()
{
    try
    {
        return std::locale("C.UTF-8");
    }
    catch (const std::runtime_error&)
    {
        return std::locale::classic(); // it gives up at the first foreign character: better than nothing to compare
    }
}

void WriteUTF8Std(benchmark::State& state)
{
    std::wstring str(MakeText(state.range(0)));
    std::locale locale = GetUTF8Locale();
    const auto& codec = std::use_facet<Codec>(locale);
    for (auto _ : state)
    {
        std::string text(str.size() * 4, 0);
        std::mbstate_t shift = {};
        const wchar_t* pRead;
        char* pWritten;
        codec.out(shift, str.data(), str.data() + str.size(), pRead, text.data(), text.data() + text.size(), pWritten);
        text.resize(static_cast<size_t>(pWritten - text.data()));
        benchmark::DoNotOptimize(text.data());
    }
}
BENCHMARK(WriteUTF8Std)->Arg(24)->Arg(4096);

void ReadUTF8(benchmark::State& state)
{
    LyString strText(MakeText(state.range(0)).c_str());
    LyStringUTF8 text(strText);
    for (auto _ : state)
    {
        LyString str;
        str.FromUTF8(reinterpret_cast<const unsigned char*>(text.Get()));
        benchmark::DoNotOptimize(static_cast<const wchar_t*>(str));
    }
}
BENCHMARK(ReadUTF8)->Arg(24)->Arg(4096);

void ReadUTF8Std(benchmark::State& state)
{
    LyString strText(MakeText(state.range(0)).c_str());
    LyStringUTF8 text(strText);
    std::locale locale = GetUTF8Locale();
    const auto& codec = std::use_facet<Codec>(locale);
    for (auto _ : state)
    {
        size_t nBytes = std::strlen(text);
        std::wstring str(nBytes, 0);
        std::mbstate_t shift = {};
        const char* pRead;
        wchar_t* pWritten;
        codec.in(shift, text, text + nBytes, pRead, str.data(), str.data() + str.size(), pWritten);
        str.resize(static_cast<size_t>(pWritten - str.data()));
        benchmark::DoNotOptimize(str.data());
    }
}
BENCHMARK(ReadUTF8Std)->Arg(24)->Arg(4096);
} // namespace
