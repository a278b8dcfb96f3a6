#include "RipTags.h"
#include "CDUnits.h"
#include "CRC32.h"
#include "HostError.h"
#include "RipFiles.h"
#include "RipGain.h"
#include "TagEdit.h"
#include "TagFile.h"
#include "WaveTags.h"
#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>

namespace
{
std::optional<RIP_GAIN> MakeGain(const RIP_LOUDNESS& loudness)
{
    constexpr double DECIBELS_PER_DECADE = 20; // of amplitude
    if (!loudness.fReplayGain)
        return std::nullopt;
    return RIP_GAIN{*loudness.fReplayGain, std::pow(10.0, loudness.fSamplePeak / DECIBELS_PER_DECADE)};
}

class TagFinisher
{
public:
    TagFinisher(RIP_REPORT& report, const RIP_NAMES& names, const std::function<void()>& changed)
        : m_Report(report), m_Names(names), m_Changed(changed)
    {
    }

    std::vector<std::string> FinishAll()
    {
        for (const RIP_GROUP& group : m_Names.aryGroups)
            if (IsWhole(group))
                for (const RIP_ORDER& order : group.aryOrders)
                    Finish(group, order);
        return std::move(m_aryFailures);
    }

private:
    bool IsWhole(const RIP_GROUP& group) const
    {
        return std::all_of(group.aryPieces.begin(), group.aryPieces.end(),
                           [this](size_t n) { return m_Report.aryPieces[n].IsWhole(); });
    }
    bool IsOfThisRip(const RIP_GROUP& group) const
    {
        return std::all_of(group.aryPieces.begin(), group.aryPieces.end(),
                           [this](size_t n) { return m_Report.aryPieces[n].eState == RIP_PIECE_READ; });
    }

    // Where the report has it; null for a file that was not made.
    RIP_FILE* FindFile(const RIP_GROUP& group, const std::string& strName)
    {
        std::vector<RIP_FILE>& aryFiles =
            m_Names.aryCues.empty() ? m_Report.aryPieces[group.aryPieces.front()].aryFiles : m_Report.aryFiles;
        const auto it =
            std::find_if(aryFiles.begin(), aryFiles.end(),
                         [&strName](const RIP_FILE& file) { return file.strName == strName && file.strError.empty(); });
        return it != aryFiles.end() ? &*it : nullptr;
    }

    RIP_GAINS GetGains(const RIP_GROUP& group) const
    {
        RIP_GAINS gains;
        const RIP_PIECE& piece = m_Report.aryPieces[group.aryPieces.front()];
        if (m_Names.aryCues.empty() && piece.analysis)
            gains.track = MakeGain(piece.analysis->loudness);
        if (m_Report.album)
            gains.album = MakeGain(*m_Report.album);
        return gains;
    }

    uint32_t GetAudioCRC32(const RIP_GROUP& group) const
    {
        uint32_t nCRC32 = 0;
        for (const size_t nPiece : group.aryPieces)
        {
            const RIP_PIECE& piece = m_Report.aryPieces[nPiece];
            nCRC32 =
                CombineCRC32(nCRC32, piece.sums.m_nCRC32, static_cast<uint64_t>(piece.nSectors) * LY_CD_SECTOR_BYTES);
        }
        return nCRC32;
    }

    void Finish(const RIP_GROUP& group, const RIP_ORDER& order)
    {
        RIP_FILE* pFile = FindFile(group, order.file.strName);
        if (pFile == nullptr || !Change(group, order, pFile->strEncoder))
            return;
        const bool bSummed = pFile->strEncoder == "wav"
                                 ? SumUpWaveFile(order.strPath, GetAudioCRC32(group), order.nFrames, *pFile)
                                 : FillInFile(order.strPath, *pFile);
        if (!bSummed)
            throw HostError(order.strPath + " cannot be read again (" + std::strerror(errno) +
                            "); begin anew with --overwrite.");
        m_Changed();
    }

    // False if the file is as it was.
    bool Change(const RIP_GROUP& group, const RIP_ORDER& order, const std::string& strEncoder)
    {
        const RIP_GAINS gains = GetGains(group);
        try
        {
            if (strEncoder == "wav")
                TagWAV(group, order, gains);
            else if (gains.IsEmpty())
                return false;
            else if (strEncoder == "flac" || strEncoder == "opus")
                AddVorbisGain(order.strPath, strEncoder, gains);
            else if (strEncoder == "mp3")
                SaveCopy(order.strPath, MakeGainFields(gains), "");
            else
                return false;
            return true;
        }
        catch (const HostError& error)
        {
            m_aryFailures.emplace_back(error.what());
            return false;
        }
    }

    void TagWAV(const RIP_GROUP& group, const RIP_ORDER& order, const RIP_GAINS& gains) const
    {
        TAG_FIELDS fields = order.aryTags;
        const TAG_FIELDS gainFields = MakeGainFields(gains);
        fields.insert(fields.end(), gainFields.begin(), gainFields.end());
        // A file that an earlier rip of the same has left may have a tag, which cannot be changed in place.
        if (IsOfThisRip(group) || TagFile(order.strPath).GetTagBytes() == 0)
            TagWaveFile(order.strPath, fields, order.strPicture);
        else
            SaveCopy(order.strPath, fields, order.strPicture);
    }

    static void SaveCopy(const std::string& strPath, const TAG_FIELDS& fields, const std::string& strPicture)
    {
        const TAG_EDIT edit = MakeTagEdit(fields, strPicture);
        if (!edit.IsEmpty())
            TagFile(strPath).Save([&edit](CID3v2Tag& tag) { ApplyTagEdit(tag, edit); }, TAG_SWAP_AT_ONCE);
    }

    RIP_REPORT& m_Report;
    const RIP_NAMES& m_Names;
    const std::function<void()>& m_Changed;
    std::vector<std::string> m_aryFailures;
};
} // namespace

std::vector<std::string> FinishTags(RIP_REPORT& report, const RIP_NAMES& names, const std::function<void()>& changed)
{
    return TagFinisher(report, names, changed).FinishAll();
}
