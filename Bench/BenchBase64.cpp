// Base64 of LyString against a plain loop and against OpenSSL's, both with the line ends that ours makes.

#include "LyBuffer.h"
#include "LyStringFormat.h"
#include <benchmark/benchmark.h>
#include <memory>
#include <openssl/evp.h>
#include <string>
#include <vector>

namespace
{
std::vector<unsigned char> MakeBytes(size_t nBytes)
{
    std::vector<unsigned char> aryBytes(nBytes);
    unsigned int nState = 1;
    for (size_t n = 0; n < nBytes; ++n)
    {
        nState = nState * 1664525 + 1013904223;
        aryBytes[n] = static_cast<unsigned char>((n / 64 & 127) + (nState >> 29));
    }
    return aryBytes;
}

void SetBytes(benchmark::State& state, long long nBytes) { state.SetBytesProcessed(state.iterations() * nBytes); }

constexpr int LINE_CHARS = 64;

void EncodeOurs(benchmark::State& state)
{
    const std::vector<unsigned char> aryBytes = MakeBytes(static_cast<size_t>(state.range(0)));
    LyString str;
    for (auto _ : state)
    {
        str.FromBinary(aryBytes.data(), static_cast<int>(aryBytes.size()));
        benchmark::DoNotOptimize(static_cast<const wchar_t*>(str));
    }
    SetBytes(state, state.range(0));
}

void DecodeOurs(benchmark::State& state)
{
    const std::vector<unsigned char> aryBytes = MakeBytes(static_cast<size_t>(state.range(0)));
    LyString str;
    str.FromBinary(aryBytes.data(), static_cast<int>(aryBytes.size()));
    LyBuffer buffer;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(str.ToBinary(buffer));
        benchmark::ClobberMemory();
    }
    SetBytes(state, state.range(0));
}

constexpr char s_Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// What one would write at first: a character at a time, of the system's width, with the same lines.
void EncodePlain(benchmark::State& state)
{
    const std::vector<unsigned char> aryBytes = MakeBytes(static_cast<size_t>(state.range(0)));
    std::wstring str;
    for (auto _ : state)
    {
        str.clear();
        size_t nInLine = 0;
        for (size_t n = 0; n < aryBytes.size(); n += 3)
        {
            if (nInLine == LINE_CHARS)
            {
                str += L'\n';
                nInLine = 0;
            }
            const size_t nLeft = aryBytes.size() - n;
            const unsigned int nGroup = static_cast<unsigned int>(aryBytes[n]) << 16 |
                                        (nLeft > 1 ? static_cast<unsigned int>(aryBytes[n + 1]) << 8 : 0) |
                                        (nLeft > 2 ? aryBytes[n + 2] : 0);
            str += static_cast<wchar_t>(s_Alphabet[nGroup >> 18]);
            str += static_cast<wchar_t>(s_Alphabet[nGroup >> 12 & 63]);
            str += nLeft > 1 ? static_cast<wchar_t>(s_Alphabet[nGroup >> 6 & 63]) : L'=';
            str += nLeft > 2 ? static_cast<wchar_t>(s_Alphabet[nGroup & 63]) : L'=';
            nInLine += 4;
        }
        benchmark::DoNotOptimize(str.data());
    }
    SetBytes(state, state.range(0));
}

void DecodePlain(benchmark::State& state)
{
    const std::vector<unsigned char> aryBytes = MakeBytes(static_cast<size_t>(state.range(0)));
    LyString text;
    text.FromBinary(aryBytes.data(), static_cast<int>(aryBytes.size()));
    const std::wstring str = static_cast<const wchar_t*>(text);
    unsigned char aryValues[256] = {};
    for (unsigned char n = 0; n < 64; ++n)
        aryValues[static_cast<unsigned char>(s_Alphabet[n])] = n;
    std::vector<unsigned char> aryOut;
    for (auto _ : state)
    {
        aryOut.clear();
        unsigned int nGroup = 0;
        int nBits = 0;
        for (const wchar_t c : str)
        {
            if (c == L'\n' || c == L'\r' || c == L'=' || c > 255)
                continue;
            nGroup = nGroup << 6 | aryValues[c];
            nBits += 6;
            if (nBits >= 8)
            {
                nBits -= 8;
                aryOut.push_back(static_cast<unsigned char>(nGroup >> nBits));
            }
        }
        benchmark::DoNotOptimize(aryOut.data());
    }
    SetBytes(state, state.range(0));
}

// Bytes to narrow characters in lines of 64, which is what it makes.
void EncodeOpenSSL(benchmark::State& state)
{
    const std::vector<unsigned char> aryBytes = MakeBytes(static_cast<size_t>(state.range(0)));
    std::vector<unsigned char> aryText(aryBytes.size() * 2 + 100);
    const std::unique_ptr<EVP_ENCODE_CTX, decltype(&EVP_ENCODE_CTX_free)> pContext(EVP_ENCODE_CTX_new(),
                                                                                   &EVP_ENCODE_CTX_free);
    for (auto _ : state)
    {
        int nOut = 0;
        int nLast = 0;
        EVP_EncodeInit(pContext.get());
        (void)EVP_EncodeUpdate(pContext.get(), aryText.data(), &nOut, aryBytes.data(),
                               static_cast<int>(aryBytes.size()));
        EVP_EncodeFinal(pContext.get(), aryText.data() + nOut, &nLast);
        benchmark::DoNotOptimize(aryText.data());
        benchmark::ClobberMemory();
    }
    SetBytes(state, state.range(0));
}

void DecodeOpenSSL(benchmark::State& state)
{
    const std::vector<unsigned char> aryBytes = MakeBytes(static_cast<size_t>(state.range(0)));
    LyString text;
    text.FromBinary(aryBytes.data(), static_cast<int>(aryBytes.size()));
    const std::string str = LyStringUTF8(text).Get();
    std::vector<unsigned char> aryOut(str.size());
    const std::unique_ptr<EVP_ENCODE_CTX, decltype(&EVP_ENCODE_CTX_free)> pContext(EVP_ENCODE_CTX_new(),
                                                                                   &EVP_ENCODE_CTX_free);
    for (auto _ : state)
    {
        int nOut = 0;
        EVP_DecodeInit(pContext.get());
        if (EVP_DecodeUpdate(pContext.get(), aryOut.data(), &nOut, reinterpret_cast<const unsigned char*>(str.data()),
                             static_cast<int>(str.size())) < 0)
            state.SkipWithError("no base64");
        benchmark::DoNotOptimize(aryOut.data());
        benchmark::ClobberMemory();
    }
    SetBytes(state, state.range(0));
}
} // namespace

BENCHMARK(EncodeOurs)->Arg(64)->Arg(200'000);
BENCHMARK(EncodePlain)->Arg(64)->Arg(200'000);
BENCHMARK(EncodeOpenSSL)->Arg(64)->Arg(200'000);
BENCHMARK(DecodeOurs)->Arg(64)->Arg(200'000);
BENCHMARK(DecodePlain)->Arg(64)->Arg(200'000);
BENCHMARK(DecodeOpenSSL)->Arg(64)->Arg(200'000);
