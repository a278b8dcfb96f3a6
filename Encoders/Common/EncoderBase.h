// What all encoders have in common: the life of an encoding, the infos, the output file, errors and callbacks. A kind
// of encoder is a class over this one that says how an encoding begins, goes on and ends.
//
// Life:    idle -> running (first EncodeBuffer) -> done (FinishBufferInput), failed, or stopped. A new "Output File"
//          makes it idle again. While it runs, SetInfo changes nothing.
// Units:   bytes of PCM as EncoderPCM.h has it; a frame may be divided between two pieces.
// Errors:  false; "Last Error" and "Last Error Code" tell, and the callback hears of it once: OnError, then OnFinished.
//          Nothing is left of a file that failed.
// Threads: one at a time, any.

#pragma once

#include "EncoderHelper.h"
#include "EncoderOutput.h"
#include "EncoderPCM.h"
#include "EncoderPicture.h"
#include "EncoderSettings.h"
#include "EncoderTags.h"
#include <string>

// What an encoder says about itself.
struct ENCODER_DESCRIPTION
{
    const char* pName;
    const char* pExtension; // of file names, without the dot
    const char* pRestKey;   // the setting that takes the rest of the text; empty for none
    std::string strLibrary; // with its version
};

class EncoderBase : public ILyEncoder
{
public:
    EncoderBase(ILyEncoderCallback* pCallback, ENCODER_DESCRIPTION description);
    ~EncoderBase() override = default; // what is unfinished goes with m_Output

    void Stop() final;
    bool EncodeBuffer(unsigned char* pData, int nBytes) final;
    bool FinishBufferInput() final;
    wchar_t* GetInfo(const wchar_t* pKey) final;
    void SetInfo(const wchar_t* pKey, const wchar_t* pValue) final;

protected:
    // ---- What a kind of encoder does. False after Fail; Abandon follows.
    virtual bool ApplySettings(EncoderSettings& settings) = 0; // false: the settings tell the error
    virtual bool Begin() = 0;
    virtual bool Encode(const unsigned char* pData, size_t nFrames) = 0;
    virtual bool End() = 0;     // writes what is left, and checks the file; Commit follows
    virtual void Abandon() = 0; // frees what Begin has made; called at the end of every encoding

    bool Fail(int nError, const std::string& strDetail); // always false; the first one of an encoding counts
    bool FailByOutput() { return Fail(m_Output.GetError(), m_Output.GetDetail()); }
    bool HasPicture() const { return m_Picture.pMime != nullptr; }

    ENCODER_FORMAT m_Format;
    EncoderTags m_Tags;
    ENCODER_PICTURE m_Picture;       // loaded ahead of Begin
    std::string m_strPicture;        // its file; empty for none
    std::string m_strOutput;         // the file to be made
    long long m_nExpectedFrames = 0; // 0: not known
    long long m_nFrames = 0;         // taken so far
    EncoderOutput m_Output;

private:
    enum STATE
    {
        STATE_IDLE,
        STATE_RUNNING,
        STATE_DONE,
        STATE_FAILED,
        STATE_STOPPED
    };

    bool Start();
    bool CheckSetUp();
    bool Take(const unsigned char* pData, size_t nBytes);
    bool TakeFrames(const unsigned char* pData, size_t nFrames);
    bool Finish();
    bool Close(bool bDone);
    void ReportProgress();
    std::string GetText(const std::string& strKey, bool& bKnown) const;
    void SetText(const std::string& strKey, const std::string& strValue);
    void SetSettings(const std::string& strText);

    ILyEncoderCallback* m_pCallback; // not owned; may be null
    ENCODER_DESCRIPTION m_Description;
    STATE m_eState = STATE_IDLE;
    std::string m_strSettings;
    std::string m_strSettingsError;
    int m_nError = ENCODER_OK;
    std::string m_strDetail;
    int m_nPercent = -1;                                             // last reported
    unsigned char m_aryPiece[4 * ENCODER_FORMAT::MAX_CHANNELS] = {}; // the beginning of a divided frame
    size_t m_nPieceBytes = 0;
};
