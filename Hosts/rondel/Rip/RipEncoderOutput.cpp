// The output of a rip that runs an encoder plug-in, on a thread of its own.

#include "EncoderError.h"
#include "RipEncoders.h"
#include "RipFiles.h"
#include "RipWorker.h"
#include <atomic>
#include <charconv>

namespace
{
class RipEncoderOutput final : public RipOutput
{
public:
    RipEncoderOutput(std::unique_ptr<RipEncoder> pEncoder, IRipFileListener& listener)
        : m_Listener(listener), m_pEncoder(std::move(pEncoder))
    {
    }
    ~RipEncoderOutput() override
    {
        Abandon();
        (void)m_Worker.Wait(RipWorker::FOREVER);
    }

    void Begin(const RIP_ORDER& order) override;
    void Write(const unsigned char* pData, size_t nBytes) override;
    void End(uint32_t nAudioCRC32) override;
    void Abandon() override;
    bool Wait(int nMs) override { return m_Worker.Wait(nMs); }

private:
    // A file's own word that it is not wanted any more: what waits for the encoder is dropped at once.
    using ABANDONED = std::shared_ptr<std::atomic<bool>>;

    void BeginFile(const RIP_ORDER& order);
    void EncodePiece(std::vector<unsigned char>& aryData);
    void EndFile();
    void StopFile();
    void Fail();

    IRipFileListener& m_Listener;
    ABANDONED m_pAbandoned; // of the file that is being written; null without one. The rip's thread.

    // The worker's.
    std::unique_ptr<RipEncoder> m_pEncoder;
    RIP_ORDER m_Order;
    bool m_bFailed = false;

    RipWorker m_Worker;
};

void RipEncoderOutput::Begin(const RIP_ORDER& order)
{
    m_pAbandoned = std::make_shared<std::atomic<bool>>(false);
    m_Worker.Add([this, order] { BeginFile(order); });
}

void RipEncoderOutput::Write(const unsigned char* pData, size_t nBytes)
{
    if (m_pAbandoned == nullptr || nBytes == 0)
        return;
    // The engine reads the next block into the same memory, and another encoder may be done with it earlier or later.
    auto pCopy = std::make_shared<std::vector<unsigned char>>(pData, pData + nBytes);
    m_Worker.Add(
        [this, pCopy, pAbandoned = m_pAbandoned]
        {
            if (!*pAbandoned)
                EncodePiece(*pCopy);
        },
        nBytes);
}

void RipEncoderOutput::End(uint32_t)
{
    if (m_pAbandoned == nullptr)
        return;
    m_pAbandoned.reset();
    m_Worker.Add([this] { EndFile(); });
}

void RipEncoderOutput::Abandon()
{
    if (m_pAbandoned == nullptr)
        return;
    *m_pAbandoned = true;
    m_pAbandoned.reset();
    m_Worker.Add([this] { StopFile(); });
}

void RipEncoderOutput::BeginFile(const RIP_ORDER& order)
{
    m_Order = order;
    m_bFailed = false;
    m_pEncoder->SetText("Output File", order.strPath); // begins anew; the others hold from then on
    m_pEncoder->SetText("Expected Frames", std::to_string(order.nFrames));
    for (const auto& [strName, strValue] : order.aryTags)
        m_pEncoder->SetText("Tag " + strName, strValue);
    m_pEncoder->SetText("Picture", order.strPicture);
}

void RipEncoderOutput::EncodePiece(std::vector<unsigned char>& aryData)
{
    if (!m_bFailed &&
        m_pEncoder->GetPlugin().EncodeBuffer(aryData.data(), static_cast<int>(aryData.size())) != ENCODER_OK)
        Fail();
}

void RipEncoderOutput::EndFile()
{
    if (m_bFailed)
        return;
    if (!m_pEncoder->GetPlugin().FinishBufferInput())
        return Fail();
    // The encoder has checked and synchronised the file.
    if (!FillInFile(m_Order.strPath, m_Order.file))
        m_Order.file.strError = m_Order.file.strName + " cannot be read again";
    m_Listener.OnRipFile(m_Order.nGroup, m_Order.file, false);
}

void RipEncoderOutput::StopFile() { m_pEncoder->GetPlugin().Stop(); }

void RipEncoderOutput::Fail()
{
    m_bFailed = true;
    std::string strReason = m_pEncoder->GetText("Last Error");
    while (strReason.ends_with('.'))
        strReason.pop_back();
    m_Order.file.strError =
        m_Order.file.strName + " could not be encoded" + (strReason.empty() ? "" : " (" + strReason + ")");
    const std::string strCode = m_pEncoder->GetText("Last Error Code");
    int nCode = ENCODER_OK;
    (void)std::from_chars(strCode.data(), strCode.data() + strCode.size(), nCode);
    StopFile();
    m_Listener.OnRipFile(m_Order.nGroup, m_Order.file, nCode == ENCODER_DISK_FULL);
}
} // namespace

std::unique_ptr<RipOutput> MakeEncoderOutput(std::unique_ptr<RipEncoder> pEncoder, IRipFileListener& listener)
{
    return std::make_unique<RipEncoderOutput>(std::move(pEncoder), listener);
}
