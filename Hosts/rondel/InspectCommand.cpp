// rondel inspect: what WAV files are made of, and what is wrong with them.

#include "Commands.h"
#include "DTSHelper.h"
#include "EachFile.h"
#include "HostError.h"
#include "LySharedToolsHelper.h"
#include "Output.h"
#include "PartialFile.h"
#include "Services.h"
#include "Text.h"
#include "WAVInfo.h"
#include "WavLayout.h"
#include <algorithm>
#include <climits>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

namespace
{
using json = nlohmann::ordered_json;

constexpr int FROM_START = 0;
constexpr const char* DTS_NAMES[] = {"none", "14-bit little-endian", "14-bit big-endian", "16-bit little-endian",
                                     "16-bit big-endian"};

struct INSPECT_OPTIONS
{
    std::vector<std::string> aryFiles;
    bool bJson = false;
    bool bRepair = false;
};

// The file as it is listed, and as the reader of audio has it.
struct INSPECTED
{
    WAV_LAYOUT layout;
    CWAVInfo info;
    bool bOpen = false;
    DTSHelper dts;
    bool bDTS = false;
    bool bRepaired = false;
};

std::unique_ptr<ILyReader> OpenFile(const std::string& strFile, bool bWrite)
{
    RequireReader();
    std::unique_ptr<ILyReader> pReader(CreateGenericReader(Widen(strFile)));
    if (pReader == nullptr)
        throw HostError("'" + strFile + "' is no name of a file; name a WAV file.");
    if (!bWrite)
        pReader->SetProperty(L"READ_ONLY", L"1");
    if (!pReader->Open())
    {
        wchar_t* pText = pReader->GetInfo(L"Error");
        const std::string strReason = Narrow(pText);
        LyCom::SysFreeString(pText);
        throw HostError(strReason.empty() ? strFile + " cannot be opened; check its name." : strReason);
    }
    if (pReader->GetIsStream())
        throw HostError(strFile + " is a stream, in which there is no going back; save it as a file first.");
    return pReader;
}

// Mends the size in the first eight bytes; nothing else is touched.
bool Repair(const std::string& strFile)
{
    const std::unique_ptr<ILyReader> pReader = OpenFile(strFile, true);
    const WAV_LAYOUT layout = ReadWavLayout(*pReader, strFile);
    if (!layout.HasProblem(WAV_PROBLEM_ROOT_SIZE))
        return false;
    RequireWritable(strFile, strFile);
    if (layout.nFileBytes - CIFFChunk::HEADER_BYTES > UINT_MAX)
        throw HostError("the root size of " + strFile +
                        " cannot be mended, for the file is longer than the 4 GiB that it can tell; split it.");
    CWAVInfo info;
    (void)info.Open(pReader.get(), false, true); // also what does not open has a root to mend
    (void)info.FixBadRootChunkSize();
    if (ReadWavLayout(*pReader, strFile).HasProblem(WAV_PROBLEM_ROOT_SIZE))
        throw HostError("the root size of " + strFile + " could not be mended; see that the file may be written.");
    return true;
}

// Which packing a stream has, that the reader of audio has found.
void TestForDTS(ILyReader& reader, INSPECTED& file)
{
    constexpr int TAG_DTS = 8;
    if (!file.bOpen || file.info.GetFormatID() != TAG_DTS || file.layout.format.nTag == TAG_DTS)
        return;
    LyBuffer buffer;
    (void)reader.Seek(file.info.GetHeaderBytes(), FROM_START);
    const long long nBytes = std::min<long long>(file.info.GetDataBytes(), DTSHelper::MAX_TEST_BYTES);
    file.bDTS = buffer.FromReader(&reader, static_cast<int>(nBytes)) && file.dts.Analyze(buffer);
}

std::string GetTagForm(INSPECTED& file)
{
    if (file.info.m_ID3v2Tag.m_bLoaded)
        return "ID3v2." + std::to_string(file.info.m_ID3v2Tag.GetMajorVersion());
    return file.info.m_List.GetCount() > 0 ? "INFO" : "none";
}

std::vector<std::string> GetTagLines(INSPECTED& file)
{
    const std::string strText = Narrow(file.info.GetTagFormatString());
    std::vector<std::string> aryLines;
    for (size_t n = 0; n < strText.size();)
    {
        const size_t nEnd = std::min(strText.find("\r\n", n), strText.size());
        const size_t nFirst = strText.find_first_not_of(' ', n);
        if (nFirst < nEnd && n > 0) // the first line is a heading
            aryLines.push_back(strText.substr(nFirst, nEnd - nFirst));
        n = nEnd + 2;
    }
    return aryLines;
}

json DescribeFormat(const WAV_LAYOUT_FORMAT& format)
{
    if (!format.bKnown)
        return nullptr;
    return {{"name", DescribeWavFormat(format)},
            {"tag", format.nTag},
            {"channels", format.nChannels},
            {"sample_rate", format.nRate},
            {"bits", format.nBits},
            {"block_align", format.nBlockAlign},
            {"bytes_per_second", format.nBytesPerSecond}};
}

json DescribeAudio(INSPECTED& file)
{
    if (!file.bOpen)
        return nullptr;
    const bool bRate = file.info.GetAverageBytesPerSecond() > 0;
    return {{"offset", file.info.GetHeaderBytes()},
            {"bytes", file.info.GetDataBytes()},
            {"blocks", file.info.GetTotalBlocks()},
            {"milliseconds", bRate ? json(file.info.GetLengthMS()) : json(nullptr)},
            {"bytes_behind", file.info.m_nTrailerBytes}};
}

json Describe(INSPECTED& file, const std::string& strFile)
{
    json chunks = json::array();
    for (const WAV_LAYOUT_CHUNK& chunk : file.layout.aryChunks)
        chunks.push_back(
            {{"id", chunk.strId}, {"offset", chunk.nOffset}, {"bytes", chunk.nBytes}, {"whole", chunk.bWhole}});
    json problems = json::array();
    for (const WAV_PROBLEM& problem : file.layout.aryProblems)
        problems.push_back({{"kind", GetWavProblemName(problem.eKind)}, {"text", problem.strText}});
    json dts = nullptr;
    if (file.bDTS)
        dts = {{"packing", DTS_NAMES[file.dts.m_nStreamType]},
               {"offset", file.dts.m_nFirstFrameOffset},
               {"frame_bytes", file.dts.m_FirstFrameHeader.m_nFrameBytes}};
    std::error_code error;
    return {{"file", std::filesystem::absolute(strFile, error).string()},
            {"bytes", file.layout.nFileBytes},
            {"root_bytes", file.layout.nRootBytes},
            {"repaired", file.bRepaired},
            {"opens", file.bOpen},
            {"chunks", chunks},
            {"format", DescribeFormat(file.layout.format)},
            {"audio", DescribeAudio(file)},
            {"dts", dts},
            {"tag", {{"form", GetTagForm(file)}, {"lines", GetTagLines(file)}}},
            {"problems", problems}};
}

// Texts of a file go to a terminal: what would steer it does not.
std::string Plain(std::string str)
{
    std::replace_if(
        str.begin(), str.end(), [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; }, '?');
    return str;
}

std::string PlainId(std::string strId)
{
    std::replace_if(
        strId.begin(), strId.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return strId;
}

void PrintFacts(INSPECTED& file)
{
    const WAV_LAYOUT_FORMAT& format = file.layout.format;
    std::printf("File:    %lld bytes, root size %u%s\n", file.layout.nFileBytes, file.layout.nRootBytes,
                file.bRepaired ? ", which has been mended" : "");
    if (format.bKnown)
        std::printf("Format:  %s, %u channel%s, %u Hz, %u bits\n", DescribeWavFormat(format).c_str(), format.nChannels,
                    format.nChannels == 1 ? "" : "s", format.nRate, format.nBits);
    if (!file.bOpen)
        std::puts("Audio:   cannot be read");
    else
        std::printf("Audio:   %s, %lld blocks in %lld bytes at %lld, %lld bytes behind them\n",
                    file.info.GetAverageBytesPerSecond() > 0
                        ? FormatSeconds(static_cast<double>(file.info.GetLengthMS()) / 1000).c_str()
                        : "of unknown length",
                    file.info.GetTotalBlocks(), file.info.GetDataBytes(), file.info.GetHeaderBytes(),
                    file.info.m_nTrailerBytes);
    if (file.bDTS)
        std::printf("DTS:     %s, from byte %d of the audio on, frames of %d bytes\n",
                    DTS_NAMES[file.dts.m_nStreamType], file.dts.m_nFirstFrameOffset,
                    file.dts.m_FirstFrameHeader.m_nFrameBytes);
    std::printf("Tag:     %s\n", GetTagForm(file).c_str());
    for (const std::string& strLine : GetTagLines(file))
        std::printf("  %s\n", Plain(strLine).c_str());
}

void Print(INSPECTED& file, const std::string& strFile)
{
    std::printf("%s\n", Plain(strFile).c_str());
    PrintFacts(file);
    std::puts("\nChunk       Offset       Bytes");
    for (const WAV_LAYOUT_CHUNK& chunk : file.layout.aryChunks)
        std::printf("%-5s %12lld %11u%s\n", PlainId(chunk.strId).c_str(), chunk.nOffset, chunk.nBytes,
                    chunk.bWhole ? "" : "  (not all there)");
    if (file.layout.aryProblems.empty())
        return;
    std::puts("\nProblems");
    for (const WAV_PROBLEM& problem : file.layout.aryProblems)
        std::printf("  - %s\n", problem.strText.c_str());
}

// Whether all is well with the file.
bool InspectFile(const std::string& strFile, bool bRepair, const std::function<void(INSPECTED&)>& show)
{
    INSPECTED file;
    file.bRepaired = bRepair && Repair(strFile);
    const std::unique_ptr<ILyReader> pReader = OpenFile(strFile, false);
    file.layout = ReadWavLayout(*pReader, strFile);
    file.bOpen = file.info.Open(pReader.get(), false, true) == 0;
    TestForDTS(*pReader, file);
    show(file);
    (void)file.info.Close(); // ahead of its reader
    return file.layout.aryProblems.empty() && file.bOpen;
}

int Inspect(const INSPECT_OPTIONS& options)
{
    json list = json::array();
    const char* pBetween = "";
    const int nExitCode = ForEachFile(options.aryFiles,
                                      [&](const std::string& strFile)
                                      {
                                          return InspectFile(strFile, options.bRepair,
                                                             [&](INSPECTED& file)
                                                             {
                                                                 if (options.bJson)
                                                                     return list.push_back(Describe(file, strFile));
                                                                 std::fputs(std::exchange(pBetween, "\n"), stdout);
                                                                 Print(file, strFile);
                                                             });
                                      });
    if (options.bJson)
        PrintJson(list);
    CheckOutput();
    return nExitCode;
}
} // namespace

void AddInspectCommand(CLI::App& app, int& nExitCode)
{
    auto p = std::make_shared<INSPECT_OPTIONS>();
    CLI::App* pCommand = app.add_subcommand("inspect", "Shows what WAV files are made of and what is wrong with them.");
    pCommand->add_option("FILES", p->aryFiles, "WAV files")->required();
    pCommand->add_flag("--json", p->bJson, "print JSON for programs, a list with an entry for each file");
    pCommand->add_flag("--repair", p->bRepair, "mend the size at the beginning of a file, if it is wrong");
    pCommand->footer("Exit codes: 0 all is well, 1 a problem was found, or a file cannot be read.");
    pCommand->callback([p, &nExitCode] { nExitCode = Inspect(*p); });
}
