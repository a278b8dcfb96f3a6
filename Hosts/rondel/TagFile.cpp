#include "TagFile.h"
#include "HostError.h"
#include "LyFileSystem.h"
#include "LyStringFormat.h"
#include "PartialFile.h"
#include "TagFileCopy.h"
#include "Text.h"
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
using namespace std::string_view_literals;

constexpr int FROM_START = 0;
constexpr int HEAD_BYTES = 12;
constexpr mode_t PERMISSIONS = 07777;

struct OTHER_FORM
{
    size_t nOffset;
    std::string_view strBytes;
    const char* pSentence; // behind the file's name
};
constexpr OTHER_FORM s_aryOtherForms[] = {
    {0, "fLaC"sv, "is a FLAC file, whose tags are Vorbis comments; use metaflac for them."},
    {0, "OggS"sv, "is an Ogg file, whose tags are Vorbis comments; use opustags or vorbiscomment for them."},
    {0, "RF64"sv, "is an RF64 file, whose sizes go beyond those of WAV; tags cannot be kept in it, so use FLAC."},
    {0, "BW64"sv, "is a BW64 file, whose sizes go beyond those of WAV; tags cannot be kept in it, so use FLAC."},
    {0, "FORM"sv, "is an AIFF file, whose tags are not handled here; convert it to WAV or FLAC."},
    {4, "ftyp"sv, "is an MP4 file, whose tags are not handled here; use a tagger for MP4."},
    {0, "wvpk"sv, "is a WavPack file, whose tags are APE tags; use wvtag for them."},
};

std::string Lower(std::string str)
{
    std::transform(str.begin(), str.end(), str.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return str;
}

// ISO 11172-3, 2.4.1.3: the header of a frame. Version, layer, bit rate and sample rate are none that is reserved.
bool IsMpegAudio(std::string_view strHead, const std::string& strPath)
{
    if (strHead.size() < 4 || !Lower(strPath).ends_with(".mp3"))
        return false;
    const auto At = [&](size_t n) { return static_cast<unsigned char>(strHead[n]); };
    return At(0) == 0xFF && (At(1) & 0xE0) == 0xE0 && (At(1) & 0x18) != 0x08 && (At(1) & 0x06) != 0 &&
           (At(2) & 0xF0) != 0xF0 && (At(2) & 0x0C) != 0x0C;
}

// Ctrl-C would end the programs that swap the files, and leave the old one under the name of the backup.
class SignalsHeld
{
public:
    SignalsHeld()
    {
        sigset_t signals;
        sigemptyset(&signals);
        for (const int nSignal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
            sigaddset(&signals, nSignal);
        pthread_sigmask(SIG_BLOCK, &signals, &m_Before);
    }
    ~SignalsHeld() { pthread_sigmask(SIG_SETMASK, &m_Before, nullptr); }
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;

private:
    sigset_t m_Before = {};
};

// Not every name can be said in the text of the foundation, which knows UTF-8 up to three bytes.
bool CanSay(const std::string& strPath)
{
    const LyString strWide = Widen(strPath);
    std::string strBack(static_cast<size_t>(std::max(LyCharacterHelper::GetUTF8Bytes(strWide, true, -1), 1)), '\0');
    (void)LyCharacterHelper::DecodeUTFNToUTF8(strWide, reinterpret_cast<unsigned char*>(strBack.data()), true, -1);
    return strBack.c_str() == strPath;
}
} // namespace

TagFile::TagFile(const std::string& strPath) : m_strPath(strPath)
{
    struct stat status = {};
    if (stat(strPath.c_str(), &status) != 0)
        throw HostError(strPath + " cannot be opened (" + std::strerror(errno) + "); check its name.");
    if (S_ISDIR(status.st_mode))
        throw HostError(strPath + " is a folder; name the files in it.");
    if (!S_ISREG(status.st_mode))
        throw HostError(strPath + " is no file, and only files have tags; name a WAV or MP3 file.");
    const int nDescriptor = open(strPath.c_str(), O_RDONLY | O_CLOEXEC);
    if (nDescriptor < 0)
        throw HostError(strPath + " cannot be opened (" + std::strerror(errno) + "); check whether it may be read.");
    m_pFile = std::make_unique<DescriptorReader>(nDescriptor);
    char aryHead[HEAD_BYTES] = {};
    const int nBytes = m_pFile->Read(aryHead, HEAD_BYTES);
    const std::string strHead(aryHead, static_cast<size_t>(nBytes));
    m_bWav = strHead.starts_with("RIFF") && strHead.ends_with("WAVE");
    if (m_bWav)
        OpenWav();
    else if (strHead.starts_with("ID3"))
        OpenID3v2();
    else if (!IsMpegAudio(strHead, strPath)) // which gets its first tag
        Refuse(strHead);
}

void TagFile::Refuse(const std::string& strHead) const
{
    for (const OTHER_FORM& form : s_aryOtherForms)
        if (strHead.size() > form.nOffset && strHead.substr(form.nOffset).starts_with(form.strBytes))
            throw HostError(m_strPath + " " + form.pSentence);
    throw HostError(m_strPath + " is no WAV file and does not begin with an ID3v2 tag; name a WAV or MP3 file.");
}

void TagFile::Fail(const std::string& strWhat) const
{
    throw HostError(m_strPath + " " + strWhat + "; the file is as it was.");
}

void TagFile::OpenWav()
{
    if (m_Info.Open(m_pFile.get(), false, true) != 0)
        throw HostError(m_strPath + " cannot be read as a WAV file; 'rondel inspect' tells what is wrong with it.");
    if (!m_Info.m_ID3v2Tag.m_bLoaded)
        return;
    m_nTagBytes = m_Info.m_ID3v2Tag.m_RawTag.GetSize();
    (void)m_Tag.Load(m_Info.m_ID3v2Tag.m_RawTag, m_Info.m_ID3v2Tag.m_nFilePosition); // it has been loaded once
}

void TagFile::OpenID3v2()
{
    LyBuffer head;
    (void)m_pFile->Seek(0, FROM_START);
    (void)head.FromReader(m_pFile.get(), CID3v2Tag::HEADER_BYTES); // a short one holds no tag
    CID3v2Tag probe;
    (void)probe.Load(head, 0);
    const long long nFooter = probe.m_Header.m_nFlags & ID3V2_TAG_FLAG_FOOTER ? CID3v2Tag::HEADER_BYTES : 0;
    const long long nBytes =
        std::min<long long>(CID3v2Tag::HEADER_BYTES + probe.m_Header.GetSize() + nFooter, m_pFile->GetLength());
    LyBuffer raw;
    (void)m_pFile->Seek(0, FROM_START);
    (void)raw.FromReader(m_pFile.get(), static_cast<int>(nBytes));
    if (!m_Tag.Load(raw, 0))
        throw HostError(m_strPath + " begins with an ID3v2 tag that cannot be read: its version is unknown, or the "
                                    "file ends within it; mend it with the program that made it.");
    m_nTagBytes = raw.GetSize();
    char aryNext[HEAD_BYTES] = {};
    const int nNext = m_pFile->Read(aryNext, HEAD_BYTES);
    if (std::string_view(aryNext, static_cast<size_t>(nNext)).starts_with("fLaC"))
        Refuse("fLaC");
}

std::string TagFile::DescribeLosses()
{
    if (!m_Tag.m_bLoaded)
        return m_Info.m_nID3ChunkIndex == CIFFInfo::NO_CHUNK ? "" : "has a tag that cannot be read and would be lost";
    LyBuffer raw(m_Tag.m_RawTag);
    CID3v2Tag probe;
    int nPos = 0;
    (void)probe.LoadHeader(raw, nPos); // it could be loaded before
    if (probe.m_Header.m_nFlags & ID3V2_TAG_FLAG_EXTENDED_HEADER)
        nPos += CID3v2Tag::ReadSyncSafeInt(raw, nPos);
    if (probe.m_Header.m_nFlags & ID3V2_TAG_FLAG_FOOTER)
        (void)raw.RemoveRight(CID3v2Tag::HEADER_BYTES);
    (void)probe.LoadFrames(raw, nPos);
    nPos = std::clamp(nPos, 0, raw.GetSize());
    const unsigned char* pEnd = raw.GetData() + raw.GetSize();
    if (std::any_of(static_cast<const unsigned char*>(raw.GetData()) + nPos, pEnd, [](auto c) { return c != 0; }))
        return "has a damaged tag, of which nothing can be read from byte " + std::to_string(nPos) +
               " on, and that would be lost";
    const bool bPicture22 = m_Tag.GetMajorVersion() == 2 &&
                            std::any_of(m_Tag.m_aryFrames.begin(), m_Tag.m_aryFrames.end(),
                                        [](const CID3v2Frame* pFrame)
                                        {
                                            return pFrame->GetType() == ID3V2_FRAME_TYPE_PICTURE &&
                                                   pFrame->m_Properties.GetPropertyInt(CID3v2Property::PICTURE_TYPE) !=
                                                       ID3V2_PICTURE_FRONT_COVER;
                                        });
    return bPicture22 ? "has a picture in a tag of version 2.2 that would be damaged (--picture gives it a new one)"
                      : "";
}

void TagFile::Save(const std::function<void(CID3v2Tag&)>& edit, TAG_SWAP eSwap)
{
    std::error_code error;
    m_strTarget = std::filesystem::absolute(FindOutputPlace(m_strPath).strPath, error).string();
    RequireWritable(m_strTarget, m_strPath);
    PartialFile partial(m_strTarget);
    if (!partial.GetIsOpen())
        Fail(std::string("cannot be copied beside itself (") + std::strerror(errno) + "), so see to its folder");
    DescriptorReader copy(partial.TakeDescriptor());
    struct stat status = {};
    (void)fstat(m_pFile->GetDescriptor(), &status); // it is open
    if (fchown(copy.GetDescriptor(), status.st_uid, status.st_gid) != 0 && status.st_uid != geteuid())
        Fail("belongs to somebody else, and a copy would not; ask the owner");
    if (fchmod(copy.GetDescriptor(), status.st_mode & PERMISSIONS) != 0)
        Fail("has permissions that a copy cannot get");
    if (m_bWav)
        SaveWav(copy, edit);
    else
        SaveID3v2(copy, edit);
    if (copy.GetError() != 0 || m_pFile->GetError() != 0 || !copy.Synchronise())
        Fail(std::string("could not be written anew (") +
             std::strerror(copy.GetError() != 0 ? copy.GetError() : m_pFile->GetError()) + ")");
    Swap(partial.GetPartialPath(), eSwap);
}

void TagFile::SaveID3v2(DescriptorReader& copy, const std::function<void(CID3v2Tag&)>& edit)
{
    CID3v2Tag tag;
    if (m_Tag.m_bLoaded)
        (void)tag.Load(m_Tag.m_RawTag, 0); // it has been loaded once
    edit(tag);
    LyBuffer buffer;
    if (!tag.SaveToBuffer(buffer) || buffer.GetSize() > TagFileCopy::MAX_TAG_BYTES)
        Fail("would get a tag of more than 256 MiB, which no tag can have; use a smaller picture");
    if (tag.m_aryFrames.GetSize() > 0)
        (void)copy.Write(buffer.GetData(), buffer.GetSize()); // the copy knows of a failure
    TagFileCopy::CopyBytes(*m_pFile, m_nTagBytes, m_pFile->GetLength() - m_nTagBytes, copy);
}

void TagFile::SaveWav(DescriptorReader& copy, const std::function<void(CID3v2Tag&)>& edit)
{
    TagFileCopy::CopyChunks(m_Info, *m_pFile, copy);
    int nFrames = 0;
    {
        CWAVInfo info;
        if (copy.GetError() != 0 || info.Open(&copy, false, true) != 0)
            Fail("could not be copied");
        if (!info.GetTagWritingEnabled())
            Fail("gets no tags, because an option says so: \"DoNotWriteTagsToFiles\" in \"Plugins\\Input\\WAV\" "
                 "('rondel options set' changes it)");
        edit(info.m_ID3v2Tag);
        if (!TagFileCopy::SaveTag(info, copy) && copy.GetError() == 0)
            Fail("gets no new tag, because there is not enough memory for it");
        nFrames = info.m_ID3v2Tag.m_aryFrames.GetSize();
    }
    TagFileCopy::CopyTrailer(m_Info, *m_pFile, copy);
    CheckWavCopy(copy, nFrames);
}

// Whoever saves checks neither what it has written nor what that means to a reader.
void TagFile::CheckWavCopy(DescriptorReader& copy, int nFrames)
{
    CWAVInfo info;
    const bool bSame = info.Open(&copy, false, true) == 0 && info.GetDataBytes() == m_Info.GetDataBytes() &&
                       info.GetFormatID() == m_Info.GetFormatID() && info.m_ID3v2Tag.m_aryFrames.GetSize() == nFrames &&
                       info.m_List.GetCount() == m_Info.m_List.GetCount();
    if (!bSame && copy.GetError() == 0)
        Fail("would not be the same with the new tag; 'rondel inspect' tells what is unusual about it");
    if (copy.GetLength() > TagFileCopy::MAX_WAV_BYTES)
        Fail("would be longer than the 4 GiB of a WAV file; use FLAC for it");
}

void TagFile::Swap(const std::string& strCopy, TAG_SWAP eSwap) const
{
    const SignalsHeld held;
    if (eSwap == TAG_SWAP_AT_ONCE || !CanSay(m_strTarget))
    {
        if (std::rename(strCopy.c_str(), m_strTarget.c_str()) != 0)
            Fail(std::string("could not be replaced (") + std::strerror(errno) + ")");
        return;
    }
    if (!LyFileSystem::SafeReplaceFile(Widen(m_strTarget), Widen(strCopy), 1))
        throw HostError(m_strPath + " could not be replaced; it is as it was, or stands beside its name with a number "
                                    "in brackets, so see to its folder.");
}
