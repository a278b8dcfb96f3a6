#include "EncoderHelper.h"
#include "EncoderError.h"
#include "LyForeignCall.h"
#include "OptionsHelper.h"

namespace
{
constexpr const char* ENTRY = "CreateEncoder";
constexpr const wchar_t* SETTINGS_STORE = L"Plugins\\Encoders\\";
using CREATE_ENCODER = ILyEncoder* (*)(int nParameter, ILyEncoderCallback* pCallback);
} // namespace

CEncoderPlugin::CEncoderPlugin() = default;

// Deliberate: the library is gone before the emulator is destroyed. Who has a feed running calls Stop first.
CEncoderPlugin::~CEncoderPlugin() { Close(); }

bool CEncoderPlugin::Open(ILyEncoderCallback* pCallback, bool bForce)
{
    if (!bForce && m_pEncoder != nullptr)
        return false;
    Close();
    m_pCallback = pCallback;
    (void)m_Library.Load(m_strLibrary, true, 0); // without a library there is no entry either
    auto pCreate = reinterpret_cast<CREATE_ENCODER>(m_Library.GetProcAddress(ENTRY));
    if (pCreate == nullptr)
        return false;
    ILyEncoder* pEncoder = nullptr;
    if (!LyForeignCall([&] { pEncoder = pCreate(m_nParameter, pCallback); }) || pEncoder == nullptr)
        return false;
    m_pEncoder.Set(pEncoder, true, false);
    m_pEncoder->SetInfo(LY_ENCODER_INFO_SETTINGS, m_strSettings.IsEmpty() ? GetStoredSettings() : m_strSettings);
    return true;
}

LyString CEncoderPlugin::GetStoredSettings() const
{
    LyString strStore(SETTINGS_STORE);
    strStore += m_strName;
    LyString strKey(LY_ENCODER_INFO_SETTINGS);
    if (!m_strProfile.IsEmpty())
    {
        strKey += L" (";
        strKey += m_strProfile;
        strKey += L")";
    }
    return COptionsHelper(strStore, false).Get(strKey, LyString());
}

void CEncoderPlugin::Close()
{
    m_pEncoder.Release(); // its code is the library's
    m_Library.Unload();
}

void CEncoderPlugin::Stop()
{
    // Deliberate: with a feed the encoder's own Stop is not called. The feed's end has told it what it needs to know.
    if (m_pEmulator != nullptr)
        m_pEmulator.Release();
    else if (m_pEncoder != nullptr)
        m_pEncoder->Stop();
}

int CEncoderPlugin::EncodeBuffer(unsigned char* pData, int nBytes)
{
    if (m_pEncoder == nullptr || pData == nullptr)
        return ENCODER_NO_BUFFER_INPUT;
    return m_pEncoder->EncodeBuffer(pData, nBytes) ? ENCODER_OK : ENCODER_REFUSED;
}

bool CEncoderPlugin::FinishBufferInput() { return m_pEncoder != nullptr && m_pEncoder->FinishBufferInput(); }

LyString CEncoderPlugin::GetInfo(const LyString& strKey)
{
    LyString strAnswer;
    if (m_pEncoder == nullptr)
        (void)Open(nullptr, false); // the pointer says whether there is one
    if (m_pEncoder != nullptr)
        strAnswer.FromBSTR(m_pEncoder->GetInfo(strKey), true);
    return strAnswer;
}
