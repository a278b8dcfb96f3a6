// TagFile: a file with a tag that this program reads and writes: WAV, or one that begins with an ID3v2 tag (MP3).
//
// Saving:  a copy is made beside the file, changed and put on the disk, and takes the file's place in the end; a link
//          stays a link, and the permissions stay. At each moment there is a whole file, old or new, under its name or,
//          killed in the very swap through a backup, the old one as "song (1).wav" for "song.wav".
//          What is no tag is copied as it is. In a WAV file the tag comes behind the other chunks.
// Errors:  HostError, which names the file.
// Threads: one at a time.

#pragma once

#include "DescriptorReader.h"
#include "MP3Tag.h"
#include "WAVInfo.h"
#include <functional>
#include <memory>
#include <string>

// How the copy takes the file's place.
enum TAG_SWAP : int
{
    TAG_SWAP_THROUGH_BACKUP, // LyFileSystem::SafeReplaceFile, which a volume that cannot replace a file can do, too
    TAG_SWAP_AT_ONCE         // one step of the system: a kill leaves no other name behind than that of the copy
};

class TagFile
{
public:
    explicit TagFile(const std::string& strPath); // opens for reading
    TagFile(const TagFile&) = delete;
    TagFile& operator=(const TagFile&) = delete;

    bool GetIsWav() const { return m_bWav; }
    const std::string& GetPath() const { return m_strPath; }
    // A copy of the tag, to read and to try changes on: it is not what is saved.
    CID3v2Tag& GetTag() { return m_Tag; }
    const CWAVInfoListChunk& GetInfoList() const { return m_Info.m_List; } // empty if there is none
    int GetTagBytes() const { return m_nTagBytes; }                        // as they lie in the file

    // What saving would lose of the tag, since it cannot be read; empty if nothing. As the tag is after its changes.
    std::string DescribeLosses();

    // Writes the file anew, with a tag that edit has changed in the same way as GetTag(). A tag without frames goes.
    void Save(const std::function<void(CID3v2Tag&)>& edit, TAG_SWAP eSwap = TAG_SWAP_THROUGH_BACKUP);

private:
    using COPY = std::unique_ptr<DescriptorReader>;

    void OpenWav();
    void OpenID3v2();
    [[noreturn]] void Refuse(const std::string& strHead) const;
    [[noreturn]] void Fail(const std::string& strWhat) const;
    void SaveWav(DescriptorReader& copy, const std::function<void(CID3v2Tag&)>& edit);
    void SaveID3v2(DescriptorReader& copy, const std::function<void(CID3v2Tag&)>& edit);
    void CheckWavCopy(DescriptorReader& copy, int nFrames);
    void Swap(const std::string& strCopy, TAG_SWAP eSwap) const;

    std::string m_strPath;   // as the user has it
    std::string m_strTarget; // behind all links
    std::unique_ptr<DescriptorReader> m_pFile;
    bool m_bWav = false;
    CWAVInfo m_Info; // of a WAV file; nothing in it changes
    CID3v2Tag m_Tag;
    int m_nTagBytes = 0;
};
