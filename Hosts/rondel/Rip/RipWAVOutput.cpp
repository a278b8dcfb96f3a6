// WAV files of a rip. The rip's thread copies its blocks; a second thread writes them, and at the end puts the file on
// the disk, so that reading never waits for a disk that can keep up. The header is right from the start, since the
// length is known. The file's sum is made of the audio's, which the rip has anyway: another look at every byte would be
// the dearest part of a rip from an image.

#include "AudioFormat.h"
#include "CDUnits.h"
#include "DescriptorReader.h"
#include "RipFiles.h"
#include "RipOutput.h"
#include "RipWorker.h"
#include "WAVCreator.h"
#include <atomic>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <utility>
#include <vector>

namespace
{
// What may wait for the second thread, and what the end of a file counts as: two may wait, so that the table of files
// in the making has room for the next one. While a slow disk takes the one file there is room for more than a second of
// reading at 48 times.
constexpr size_t QUEUE_BYTES = 24 * 1024 * 1024;
constexpr size_t COMMIT_BYTES = 10 * 1024 * 1024;
static_assert(2 * COMMIT_BYTES < QUEUE_BYTES && 3 * COMMIT_BYTES > QUEUE_BYTES);

constexpr size_t BLOCK_BYTES = 256 * 1024; // copied until the second thread is handed them, at least

using BLOCK = std::vector<unsigned char>;

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

// The header is right from the start: no byte changes once it is written.
class WaveDescriptor final : public DescriptorReader
{
public:
    using DescriptorReader::DescriptorReader;
    bool GetIsStream() override { return true; }
};

// A WAV in the making.
struct WAV_FILE
{
    explicit WAV_FILE(const RIP_ORDER& wanted) : order(wanted)
    {
        pPartial = CreatePartialFile(order.strPath);
        if (!pPartial->GetIsOpen())
            return;
        pWriter = std::make_unique<WaveDescriptor>(pPartial->TakeDescriptor());
        CAudioFormat format;
        format.SetFormat(16, LY_CD_SAMPLE_RATE, 2, false, _GUID(), true);
        bOpen = creator.Open(pWriter.get(), false, format, false, order.nFrames * LY_CD_FRAME_BYTES);
    }

    RIP_ORDER order;
    std::unique_ptr<PartialFile> pPartial;
    std::unique_ptr<WaveDescriptor> pWriter; // goes behind the creator, which uses it
    CWAVCreator creator;
    bool bOpen = false;
    // Of no use any more: abandoned, or it could not be written. What waits for the second thread is dropped.
    std::atomic<bool> bDropped{false};
};

class RipWAVOutput final : public RipOutput
{
public:
    explicit RipWAVOutput(IRipFileListener& listener) : m_Listener(listener) {}
    ~RipWAVOutput() override { Abandon(); }

    void Begin(const RIP_ORDER& order) override;
    void Write(const unsigned char* pData, size_t nBytes) override;
    void End(uint32_t nAudioCRC32) override;
    void Abandon() override;
    bool Wait(int nMs) override { return m_Worker.Wait(nMs); }

private:
    void PassOn();
    void WriteBlock(WAV_FILE& file, BLOCK& block);
    void Commit(WAV_FILE& file, uint32_t nAudioCRC32);
    void Fail(WAV_FILE& file, int nError);

    IRipFileListener& m_Listener;
    std::shared_ptr<WAV_FILE> m_pFile;
    std::shared_ptr<BLOCK> m_pBlock; // of its next audio
    SpareBlocks m_Spares;
    RipWorker m_Worker{QUEUE_BYTES}; // the last member: it uses the others
};

void RipWAVOutput::Begin(const RIP_ORDER& order)
{
    m_pFile = std::make_shared<WAV_FILE>(order);
    if (m_pFile->bOpen)
        return;
    const int nWriterError = m_pFile->pWriter != nullptr ? m_pFile->pWriter->GetError() : 0;
    Fail(*m_pFile, nWriterError != 0 ? nWriterError : errno);
    m_pFile.reset();
}

void RipWAVOutput::Write(const unsigned char* pData, size_t nBytes)
{
    if (m_pFile == nullptr || m_pFile->bDropped)
        return;
    if (m_pBlock == nullptr)
        m_pBlock = m_Spares.Take();
    m_pBlock->insert(m_pBlock->end(), pData, pData + nBytes);
    if (m_pBlock->size() >= BLOCK_BYTES)
        PassOn();
}

// Where the second thread is far behind, this waits for it.
void RipWAVOutput::PassOn()
{
    const std::shared_ptr<BLOCK> pBlock = std::exchange(m_pBlock, nullptr);
    if (pBlock == nullptr)
        return;
    m_Worker.Add(
        [this, pFile = m_pFile, pBlock]
        {
            WriteBlock(*pFile, *pBlock);
            m_Spares.Give(pBlock);
        },
        pBlock->size());
}

void RipWAVOutput::WriteBlock(WAV_FILE& file, BLOCK& block)
{
    if (!file.bDropped && file.creator.WritePCMData(block.data(), static_cast<long long>(block.size())) != 0)
        Fail(file, file.pWriter->GetError());
}

void RipWAVOutput::End(uint32_t nAudioCRC32)
{
    if (m_pFile == nullptr)
        return;
    PassOn();
    m_Worker.Add([this, pFile = std::move(m_pFile), nAudioCRC32] { Commit(*pFile, nAudioCRC32); }, COMMIT_BYTES);
}

// The file goes with the last task that knows it, at once.
void RipWAVOutput::Abandon()
{
    if (m_pFile != nullptr)
        m_pFile->bDropped = true;
    m_pFile.reset();
    m_pBlock.reset();
}

void RipWAVOutput::Commit(WAV_FILE& file, uint32_t nAudioCRC32)
{
    if (file.bDropped)
        return;
    // The header has promised the length. Nobody ends a file ahead of it.
    const bool bWhole = file.creator.m_nDataBytes == file.order.nFrames * LY_CD_FRAME_BYTES;
    (void)file.creator.FinalizeWAV();
    if (!bWhole || file.pWriter->GetError() != 0 || !file.pWriter->Synchronise())
        return Fail(file, bWhole ? file.pWriter->GetError() : EIO);
    errno = 0;
    if (!file.pPartial->Finish() ||
        !SumUpWaveFile(file.order.strPath, nAudioCRC32, file.order.nFrames, file.order.file))
        return Fail(file, errno);
    m_Listener.OnRipFile(file.order.nGroup, file.order.file, false);
}

// Any failure to write is one of the place: no other file would fare better.
void RipWAVOutput::Fail(WAV_FILE& file, int nError)
{
    file.bDropped = true;
    file.order.file.strError = file.order.file.strName + " cannot be written (" + std::strerror(nError) + ")";
    m_Listener.OnRipFile(file.order.nGroup, file.order.file, true);
}
} // namespace

std::unique_ptr<RipOutput> MakeWAVOutput(IRipFileListener& listener)
{
    return std::make_unique<RipWAVOutput>(listener);
}
