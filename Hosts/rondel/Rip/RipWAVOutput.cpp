// WAV files of a rip: written on the rip's thread. A second thread is handed a copy of all that was written, while it
// is still in the processor's caches, and sums it up; at the end it puts the file on the disk. So the sum is there as
// soon as the file is. The header is right from the start, since the length is known.

#include "AudioFormat.h"
#include "CDUnits.h"
#include "RipFiles.h"
#include "RipOutput.h"
#include "RipWorker.h"
#include "SecureHash.h"
#include "WAVCreator.h"
#include <atomic>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <unistd.h>
#include <vector>

namespace
{
// What may wait for the second thread, and what the end of a file counts as: two may wait, so that the table of files
// in the making has room for the next one. While a slow disk takes the one file there is room for more than a second of
// reading at 48 times.
constexpr size_t QUEUE_BYTES = 24 * 1024 * 1024;
constexpr size_t COMMIT_BYTES = 10 * 1024 * 1024;
static_assert(2 * COMMIT_BYTES < QUEUE_BYTES && 3 * COMMIT_BYTES > QUEUE_BYTES);

constexpr size_t BLOCK_BYTES = 256 * 1024; // written until the second thread is handed a copy, at least

using BLOCK = std::vector<char>;

// Blocks that were used once and go on, so that a rip takes no memory for each.
class SpareBlocks
{
public:
    std::shared_ptr<BLOCK> Take()
    {
        const std::lock_guard lock(m_Mutex);
        std::shared_ptr<BLOCK> pBlock;
        if (!m_aryBlocks.empty())
        {
            pBlock = std::move(m_aryBlocks.back());
            m_aryBlocks.pop_back();
            return pBlock;
        }
        pBlock = std::make_shared<BLOCK>();
        pBlock->reserve(BLOCK_BYTES + LY_CD_MAX_READ_BYTES);
        return pBlock;
    }
    void Give(const std::shared_ptr<BLOCK>& pBlock)
    {
        const std::lock_guard lock(m_Mutex);
        pBlock->clear();
        m_aryBlocks.push_back(pBlock);
    }

private:
    std::mutex m_Mutex;
    std::vector<std::shared_ptr<BLOCK>> m_aryBlocks;
};

// An open descriptor as the WAV writer sees it. The first failure stays known, which the writer itself does not tell.
class DescriptorWriter final : public ILyReader
{
public:
    DescriptorWriter(int nDescriptor, std::shared_ptr<BLOCK> pWritten)
        : m_nDescriptor(nDescriptor), m_pWritten(std::move(pWritten))
    {
    }
    ~DescriptorWriter() override
    {
        if (m_nDescriptor >= 0)
            close(m_nDescriptor);
    }

    int GetError() const { return m_nError; } // of writing: errno, or 0
    bool Synchronise() { return Check(fsync(m_nDescriptor) == 0 || errno == EINVAL); }
    size_t GetWrittenBytes() const { return m_pWritten->size(); } // since the last exchange
    // What was written since then, for another block.
    std::shared_ptr<BLOCK> Exchange(std::shared_ptr<BLOCK> pBlock)
    {
        m_pWritten.swap(pBlock);
        return pBlock;
    }

    bool Create() override { return false; }
    bool Open() override { return false; }
    void Close() override {} // the end of the file is on another thread
    int Read(void*, int) override { return 0; }
    int Write(const void* p, int nBytes) override
    {
        int nDone = 0;
        while (nDone < nBytes)
        {
            const ssize_t nPart =
                write(m_nDescriptor, static_cast<const char*>(p) + nDone, static_cast<size_t>(nBytes - nDone));
            if (nPart < 0 && errno == EINTR)
                continue;
            if (!Check(nPart > 0))
                break;
            nDone += static_cast<int>(nPart);
        }
        m_pWritten->insert(m_pWritten->end(), static_cast<const char*>(p), static_cast<const char*>(p) + nDone);
        return nDone;
    }
    long long GetLength() override { return lseek(m_nDescriptor, 0, SEEK_END); }
    long long GetPosition() override { return lseek(m_nDescriptor, 0, SEEK_CUR); }
    long long Seek(long long nOffset, int nOrigin) override
    {
        const off_t nPosition = lseek(m_nDescriptor, nOffset, nOrigin == 0 ? SEEK_SET : SEEK_CUR);
        (void)Check(nPosition >= 0);
        return nPosition;
    }
    bool GetIsStream() override { return true; } // no byte changes once it is written
    bool GetCanClose() override { return false; }
    bool GetIsOpen() override { return true; }
    wchar_t* GetInfo(const wchar_t*) override { return nullptr; }
    void SetTimeout(int) override {}
    void SetPostData(void*, int) override {}
    void SetDownloadParameters(LyString) override {}
    void SetProperty(const wchar_t*, const wchar_t*) override {}
    bool GetCanCancel() override { return false; }
    void SetEndOfFile() override {}

private:
    bool Check(bool bGood)
    {
        if (!bGood && m_nError == 0)
            m_nError = errno != 0 ? errno : EIO;
        return bGood;
    }

    int m_nDescriptor;
    std::shared_ptr<BLOCK> m_pWritten;
    int m_nError = 0;
};

// A WAV in the making.
struct WAV_FILE
{
    WAV_FILE(const RIP_ORDER& wanted, SpareBlocks& spares) : order(wanted)
    {
        pPartial = CreatePartialFile(order.strPath);
        if (!pPartial->GetIsOpen())
            return;
        pWriter = std::make_unique<DescriptorWriter>(pPartial->TakeDescriptor(), spares.Take());
        CAudioFormat format;
        format.SetFormat(16, LY_CD_SAMPLE_RATE, 2, false, _GUID(), true);
        bOpen = creator.Open(pWriter.get(), false, format, false, order.nFrames * LY_CD_FRAME_BYTES);
    }

    RIP_ORDER order;
    std::unique_ptr<PartialFile> pPartial;
    std::unique_ptr<DescriptorWriter> pWriter; // goes behind the creator, which uses it
    CWAVCreator creator;
    bool bOpen = false;
    std::atomic<bool> bAbandoned{false};

    // The second thread's.
    SHA256Hash hash;
    long long nHashed = 0;
};

class RipWAVOutput final : public RipOutput
{
public:
    explicit RipWAVOutput(IRipFileListener& listener) : m_Listener(listener) {}
    ~RipWAVOutput() override { Abandon(); }

    void Begin(const RIP_ORDER& order) override;
    void Write(const unsigned char* pData, size_t nBytes) override;
    void End() override;
    void Abandon() override;
    bool Wait(int nMs) override { return m_Worker.Wait(nMs); }

private:
    void PassOn();
    void Fail(WAV_FILE& file, int nError);
    void Commit(WAV_FILE& file);

    IRipFileListener& m_Listener;
    std::shared_ptr<WAV_FILE> m_pFile;
    SpareBlocks m_Spares;
    RipWorker m_Worker{QUEUE_BYTES}; // the last member: it uses the others
};

void RipWAVOutput::Begin(const RIP_ORDER& order)
{
    m_pFile = std::make_shared<WAV_FILE>(order, m_Spares);
    if (m_pFile->bOpen)
        return;
    const int nWriterError = m_pFile->pWriter != nullptr ? m_pFile->pWriter->GetError() : 0;
    Fail(*m_pFile, nWriterError != 0 ? nWriterError : errno);
    m_pFile.reset();
}

void RipWAVOutput::Write(const unsigned char* pData, size_t nBytes)
{
    if (m_pFile == nullptr)
        return;
    // The bytes are not swapped, so that the writer leaves them as they are.
    if (m_pFile->creator.WritePCMData(const_cast<unsigned char*>(pData), static_cast<long long>(nBytes)) != 0)
    {
        Fail(*m_pFile, m_pFile->pWriter->GetError());
        return Abandon();
    }
    if (m_pFile->pWriter->GetWrittenBytes() >= BLOCK_BYTES)
        PassOn();
}

// Where the second thread is far behind, this waits for it.
void RipWAVOutput::PassOn()
{
    const std::shared_ptr<BLOCK> pBlock = m_pFile->pWriter->Exchange(m_Spares.Take());
    m_Worker.Add(
        [this, pFile = m_pFile, pBlock]
        {
            if (!pFile->bAbandoned)
                pFile->hash.Add(pBlock->data(), pBlock->size());
            pFile->nHashed += static_cast<long long>(pBlock->size());
            m_Spares.Give(pBlock);
        },
        pBlock->size());
}

void RipWAVOutput::End()
{
    if (m_pFile == nullptr)
        return;
    // The header has promised the length. Nobody ends a file ahead of it.
    const bool bWhole = m_pFile->creator.m_nDataBytes == m_pFile->order.nFrames * LY_CD_FRAME_BYTES;
    (void)m_pFile->creator.FinalizeWAV();
    if (!bWhole)
    {
        Fail(*m_pFile, EIO);
        return Abandon();
    }
    PassOn();
    m_Worker.Add([this, pFile = std::move(m_pFile)] { Commit(*pFile); }, COMMIT_BYTES);
}

// The file goes with the last task that knows it, at once.
void RipWAVOutput::Abandon()
{
    if (m_pFile != nullptr)
        m_pFile->bAbandoned = true;
    m_pFile.reset();
}

// Any failure to write is one of the place: no other file would fare better.
void RipWAVOutput::Fail(WAV_FILE& file, int nError)
{
    file.order.file.strError = file.order.file.strName + " cannot be written (" + std::strerror(nError) + ")";
    m_Listener.OnRipFile(file.order.nGroup, file.order.file, true);
}

void RipWAVOutput::Commit(WAV_FILE& file)
{
    const bool bGood = file.pWriter->GetError() == 0 && file.pWriter->Synchronise();
    if (!bGood)
        return Fail(file, file.pWriter->GetError());
    errno = 0;
    if (!file.pPartial->Finish())
        return Fail(file, errno);
    const SHA256Hash::DIGEST digest = file.hash.Finish();
    file.order.file.nBytes = file.nHashed;
    file.order.file.strSHA256 = MakeHexText(digest.data(), digest.size());
    m_Listener.OnRipFile(file.order.nGroup, file.order.file, false);
}
} // namespace

std::unique_ptr<RipOutput> MakeWAVOutput(IRipFileListener& listener)
{
    return std::make_unique<RipWAVOutput>(listener);
}
