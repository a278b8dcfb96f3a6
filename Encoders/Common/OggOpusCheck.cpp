#include "OggOpusCheck.h"
#include <array>
#include <string_view>
#include <vector>

namespace
{
constexpr size_t HEADER_BYTES = 27;
constexpr size_t CHECK_SUM = 22;
constexpr unsigned FLAG_FIRST = 2;
constexpr unsigned FLAG_LAST = 4;
constexpr size_t MAX_PAGE_BYTES = HEADER_BYTES + 255 + 255 * 255;
constexpr size_t OPUS_HEAD_BYTES = 19; // RFC 7845, 5.1: "OpusHead", version 1, channels 1, pre-skip 2, ...
constexpr size_t OPUS_PRE_SKIP = 10;

constexpr std::array<uint32_t, 256> MakeTable()
{
    std::array<uint32_t, 256> aryTable{};
    for (uint32_t i = 0; i < 256; ++i)
    {
        uint32_t n = i << 24;
        for (int nBit = 0; nBit < 8; ++nBit)
            n = (n << 1) ^ ((n & 0x80000000u) != 0 ? 0x04C11DB7u : 0u);
        aryTable[i] = n;
    }
    return aryTable;
}
constexpr std::array<uint32_t, 256> s_aryTable = MakeTable();

uint64_t GetNumber(const unsigned char* p, size_t nBytes)
{
    uint64_t n = 0;
    for (size_t i = nBytes; i > 0; --i)
        n = (n << 8) | p[i - 1];
    return n;
}

struct OGG_PAGE
{
    unsigned nFlags = 0;
    uint64_t nTime = 0;
    uint64_t nStream = 0;
    uint64_t nNumber = 0;
    size_t nBytes = 0;
    size_t nBody = 0; // where it begins
};

bool HasCheckSum(std::vector<unsigned char>& aryPage, size_t nBytes)
{
    const uint64_t nSum = GetNumber(aryPage.data() + CHECK_SUM, 4);
    for (size_t i = 0; i < 4; ++i)
        aryPage[CHECK_SUM + i] = 0; // as it was when the sum was made
    uint32_t n = 0;
    for (size_t i = 0; i < nBytes; ++i)
        n = (n << 8) ^ s_aryTable[(n >> 24) ^ aryPage[i]];
    return n == nSum;
}

// The buffer has room for any page.
bool ReadPage(EncoderBytes& file, uint64_t nOffset, std::vector<unsigned char>& aryPage, OGG_PAGE& page)
{
    const size_t nRead = file.ReadAt(nOffset, aryPage.data(), MAX_PAGE_BYTES);
    if (nRead < HEADER_BYTES ||
        std::string_view(reinterpret_cast<char*>(aryPage.data()), 5) != std::string_view("OggS\0", 5))
        return false;
    page.nBody = HEADER_BYTES + aryPage[HEADER_BYTES - 1];
    page.nBytes = page.nBody;
    for (size_t i = HEADER_BYTES; i < page.nBody; ++i)
        page.nBytes += aryPage[i];
    if (nRead < page.nBytes || nRead < page.nBody)
        return false;
    page.nFlags = aryPage[5];
    page.nTime = GetNumber(aryPage.data() + 6, 8);
    page.nStream = GetNumber(aryPage.data() + 14, 4);
    page.nNumber = GetNumber(aryPage.data() + 18, 4);
    return HasCheckSum(aryPage, page.nBytes);
}
} // namespace

std::string CheckOggOpus(EncoderBytes& file, uint64_t nSamples)
{
    std::vector<unsigned char> aryPage(MAX_PAGE_BYTES);
    OGG_PAGE page;
    if (!ReadPage(file, 0, aryPage, page) || (page.nFlags & FLAG_FIRST) == 0 || page.nNumber != 0 ||
        page.nBytes < page.nBody + OPUS_HEAD_BYTES ||
        std::string_view(reinterpret_cast<char*>(aryPage.data()) + page.nBody, 8) != "OpusHead")
        return "The file does not begin as an Opus file.";
    const uint64_t nPreSkip = GetNumber(aryPage.data() + page.nBody + OPUS_PRE_SKIP, 2);
    const uint64_t nStream = page.nStream;
    const uint64_t nLength = file.GetLength();
    uint64_t nNumber = 0;
    for (uint64_t nOffset = page.nBytes; nOffset < nLength; nOffset += page.nBytes)
        if ((page.nFlags & FLAG_LAST) != 0 || !ReadPage(file, nOffset, aryPage, page) || page.nStream != nStream ||
            page.nNumber != ++nNumber)
            return "The file has a broken page.";
    if ((page.nFlags & FLAG_LAST) == 0 || page.nTime < nPreSkip)
        return "The file has not all of its pages.";
    return page.nTime - nPreSkip == nSamples ? "" : "The file has another length.";
}
