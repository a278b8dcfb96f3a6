#include "WaveTags.h"
#include "DescriptorReader.h"
#include "HostError.h"
#include "TagEdit.h"
#include "TagFileCopy.h"
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace
{
[[noreturn]] void Fail(const std::string& strPath, const std::string& strWhat)
{
    throw HostError("the tags of " + strPath + " could not be written (" + strWhat + "); see to its disk and folder.");
}

// What a tag behind everything else changes of a file.
struct WAVE_START
{
    off_t nBytes = -1;
    char aryRoot[CIFFChunk::HEADER_BYTES] = {};
};

WAVE_START GetStart(int nDescriptor)
{
    WAVE_START start;
    if (pread(nDescriptor, start.aryRoot, sizeof start.aryRoot, 0) == sizeof start.aryRoot)
        start.nBytes = lseek(nDescriptor, 0, SEEK_END);
    return start;
}

// A disk that is full still takes what was there before.
void TakeBack(int nDescriptor, const WAVE_START& start)
{
    if (start.nBytes >= 0 && ftruncate(nDescriptor, start.nBytes) == 0)
        (void)!pwrite(nDescriptor, start.aryRoot, sizeof start.aryRoot, 0); // nobody is left to be told
}
} // namespace

void TagWaveFile(const std::string& strPath, const std::vector<std::pair<std::string, std::string>>& aryFields,
                 const std::string& strPicture)
{
    const TAG_EDIT edit = MakeTagEdit(aryFields, strPicture);
    if (edit.IsEmpty())
        return;
    const int nDescriptor = open(strPath.c_str(), O_RDWR | O_CLOEXEC);
    if (nDescriptor < 0)
        Fail(strPath, std::strerror(errno));
    DescriptorReader file(nDescriptor);
    CWAVInfo info;
    if (info.Open(&file, false, true) != 0)
        Fail(strPath, "it is no WAV file");
    if (!info.GetTagWritingEnabled())
        return;
    try
    {
        ApplyTagEdit(info.m_ID3v2Tag, edit);
    }
    catch (const HostError&)
    {
        info.m_ID3v2Tag.m_bDirty = false; // a part of the fields is not saved
        throw;
    }
    constexpr int MIN_TAG_POSITION = 20; // behind two headers; less: there is none
    const bool bNew = info.m_ID3v2Tag.m_nFilePosition < MIN_TAG_POSITION;
    const WAVE_START start = bNew ? GetStart(nDescriptor) : WAVE_START();
    if (info.m_ID3v2Tag.m_bDirty && !TagFileCopy::SaveTag(info, file) && file.GetError() == 0)
        Fail(strPath, "there is not enough memory");
    if (file.GetError() == 0 && file.Synchronise())
        return;
    if (bNew)
        TakeBack(nDescriptor, start);
    Fail(strPath, std::strerror(file.GetError()));
}
