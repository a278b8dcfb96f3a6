#include "RipGain.h"
#include "HostError.h"
#include "RipFiles.h"
#include "TextLines.h"
#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <flacfile.h>
#include <opusfile.h>
#include <tpropertymap.h>
#include <unistd.h>

namespace
{
using FIELDS = std::vector<std::pair<std::string, std::string>>;

[[noreturn]] void Fail(const std::string& strPath, const std::string& strWhat)
{
    throw HostError("the replay gain of " + strPath + " could not be written (" + strWhat +
                    "); see to its disk, and add it with another program.");
}

// RFC 7845, 5.2.1: a gain of 16 bits in 1/256 dB.
std::string MakeOpusGain(double fGain)
{
    constexpr double STEPS = 256;
    constexpr double REFERENCE_DISTANCE = 5; // dB from -18 to -23 LUFS
    return std::to_string(std::lround(std::clamp((fGain - REFERENCE_DISTANCE) * STEPS, -32768.0, 32767.0)));
}

template <class FILE_TYPE>
bool SaveFields(const std::string& strPath, const FIELDS& fields)
{
    FILE_TYPE file(strPath.c_str(), false);
    if (!file.isValid())
        return false;
    TagLib::PropertyMap map = file.properties();
    for (const auto& [strName, strValue] : fields)
        map.replace(strName, TagLib::StringList(TagLib::String(strValue, TagLib::String::UTF8)));
    (void)file.setProperties(map);
    return file.save();
}

bool CopyAll(int nFrom, int nTo)
{
    char aryPart[64 * 1024];
    for (;;)
    {
        const ssize_t nRead = read(nFrom, aryPart, sizeof aryPart);
        if (nRead == 0)
            return fsync(nTo) == 0 || errno == EINVAL;
        if (nRead < 0 && errno != EINTR)
            return false;
        for (ssize_t nDone = 0; nDone < nRead;)
        {
            const ssize_t nPart = write(nTo, aryPart + nDone, static_cast<size_t>(nRead - nDone));
            if (nPart < 0 && errno != EINTR)
                return false;
            nDone += std::max<ssize_t>(nPart, 0);
        }
    }
}

bool Synchronise(const std::string& strPath)
{
    const int nDescriptor = open(strPath.c_str(), O_RDONLY | O_CLOEXEC);
    const bool bGood = nDescriptor >= 0 && (fsync(nDescriptor) == 0 || errno == EINVAL);
    const int nError = errno;
    if (nDescriptor >= 0)
        (void)close(nDescriptor);
    errno = nError;
    return bGood;
}
} // namespace

FIELDS MakeGainFields(const RIP_GAINS& gains)
{
    FIELDS fields;
    const auto add = [&fields](const std::string& strOf, const std::optional<RIP_GAIN>& gain)
    {
        if (!gain)
            return;
        fields.emplace_back("REPLAYGAIN_" + strOf + "_GAIN", FormatText("%.2f dB", gain->fGain));
        fields.emplace_back("REPLAYGAIN_" + strOf + "_PEAK", FormatText("%.6f", gain->fPeak));
    };
    add("TRACK", gains.track);
    add("ALBUM", gains.album);
    return fields;
}

FIELDS MakeOpusGainFields(const RIP_GAINS& gains)
{
    FIELDS fields;
    if (gains.track)
        fields.emplace_back("R128_TRACK_GAIN", MakeOpusGain(gains.track->fGain));
    if (gains.album)
        fields.emplace_back("R128_ALBUM_GAIN", MakeOpusGain(gains.album->fGain));
    return fields;
}

void AddVorbisGain(const std::string& strPath, const std::string& strEncoder, const RIP_GAINS& gains)
{
    const int nFrom = open(strPath.c_str(), O_RDONLY | O_CLOEXEC);
    if (nFrom < 0)
        Fail(strPath, std::strerror(errno));
    const std::unique_ptr<PartialFile> pCopy = CreatePartialFile(strPath);
    const int nTo = pCopy->GetIsOpen() ? pCopy->TakeDescriptor() : -1;
    const bool bCopied = nTo >= 0 && CopyAll(nFrom, nTo);
    const int nError = errno;
    (void)close(nFrom);
    if (nTo >= 0)
        (void)close(nTo);
    if (!bCopied)
        Fail(strPath, std::strerror(nError));
    const std::string strCopy = pCopy->GetWorkingPath();
    const bool bSaved = strEncoder == "opus" ? SaveFields<TagLib::Ogg::Opus::File>(strCopy, MakeOpusGainFields(gains))
                                             : SaveFields<TagLib::FLAC::File>(strCopy, MakeGainFields(gains));
    if (!bSaved)
        Fail(strPath, "its tags cannot be changed");
    if (!Synchronise(strCopy) || !pCopy->Finish())
        Fail(strPath, std::strerror(errno));
}
