#include "WaveTags.h"
#include "DescriptorReader.h"
#include "HostError.h"
#include "TagEdit.h"
#include "TagFileCopy.h"
#include <cerrno>
#include <cstring>
#include <fcntl.h>

namespace
{
[[noreturn]] void Fail(const std::string& strPath, const std::string& strWhat)
{
    throw HostError("the tags of " + strPath + " could not be written (" + strWhat + "); see to its disk and folder.");
}
} // namespace

void TagWaveFile(const std::string& strPath, const std::vector<std::pair<std::string, std::string>>& aryFields,
                 const std::string& strPicture)
{
    TAG_EDIT edit;
    for (const auto& field : aryFields)
        if (!field.second.empty())
            edit.changes.push_back(field);
    if (!strPicture.empty())
        edit.pPicture = LoadTagPicture(strPicture);
    if (edit.changes.empty() && edit.pPicture == nullptr)
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
    if (info.m_ID3v2Tag.m_bDirty)
        TagFileCopy::SaveTag(info, file);
    if (file.GetError() != 0 || !file.Synchronise())
        Fail(strPath, std::strerror(file.GetError()));
}
