// The scripted encoder plug-in: see FakeEncoder.h.

#include "FakeEncoder.h"
#include "GlobalMacros.h"

namespace
{
FakeEncoder* s_pFake = nullptr;

void Record(const char* pEvent)
{
    if (s_pFake != nullptr)
        s_pFake->OnEvent(pEvent);
}
} // namespace

LY_EXPORT void SetFakeEncoder(FakeEncoder* pFake) { s_pFake = pFake; }

LY_EXPORT bool Attach(HINSTANCE__*)
{
    Record("Attach");
    return true;
}

LY_EXPORT void Detach() { Record("Detach"); }

#ifdef FAKE_ENCODER_SCRIPTED
namespace
{
class ScriptedEncoder final : public ILyEncoder
{
public:
    ~ScriptedEncoder() override { Record("Destroy"); }
    void Stop() override { Record("Stop"); }
    bool EncodeBuffer(unsigned char* pData, int nBytes) override
    {
        return s_pFake != nullptr && s_pFake->OnData(pData, nBytes);
    }
    bool FinishBufferInput() override
    {
        Record("Finish");
        return s_pFake != nullptr && s_pFake->m_bFinishes;
    }
    wchar_t* GetInfo(const wchar_t* pKey) override
    {
        const wchar_t* pText = s_pFake != nullptr ? s_pFake->OnGetInfo(pKey) : nullptr;
        return pText != nullptr ? LyCom::SysAllocString(pText) : nullptr;
    }
    void SetInfo(const wchar_t* pKey, const wchar_t* pValue) override
    {
        Record("SetInfo");
        if (s_pFake != nullptr)
            s_pFake->OnSetInfo(pKey, pValue);
    }
};
} // namespace

LY_EXPORT ILyEncoder* CreateEncoder(int nParameter, ILyEncoderCallback* pCallback)
{
    Record("Create");
    if (s_pFake == nullptr)
        return nullptr;
    s_pFake->OnCreate(nParameter, pCallback);
    if (s_pFake->m_bThrowsAtCreation)
        throw nParameter;
    return s_pFake->m_bMakesEncoder ? new ScriptedEncoder : nullptr;
}
#endif
