// Encoder plug-ins: the interface of an encoder, what it tells its user, and CEncoderPlugin, the host of one plug-in.
//
// A plug-in is a library that exports the C function "CreateEncoder"; the host program keeps its plug-ins beside itself
// under the names "enc_<name>.so". PCM goes in piece by piece; what becomes of it is the encoder's business.
// Units:   bytes of interleaved PCM.
// Errors:  false, or the codes of EncoderError.h; the encoder's own words stand behind GetInfo("Last Error"). Nothing
//          is displayed here.
// Threads: no lock. EncodeBuffer runs on the caller's thread, which need not be the one that made the encoder.

#pragma once

#include "LyArray.h"
#include "LyPtr.h"
#include "LySharedToolsHelper.h"
#include "LyString.h"

// Keys of ILyEncoder::GetInfo and SetInfo that the host itself uses.
constexpr const wchar_t* LY_ENCODER_INFO_LAST_ERROR = L"Last Error";
constexpr const wchar_t* LY_ENCODER_INFO_SETTINGS = L"Settings";

// An encoder. The order of the operations is their order in the virtual table: plug-ins are other libraries. The user
// destroys the encoder, so the destructor stands first and takes two places.
class ILyEncoder
{
public:
    virtual ~ILyEncoder() = default;
    virtual void Stop() = 0; // ends an encoding in progress
    virtual bool EncodeBuffer(unsigned char* pData, int nBytes) = 0;
    virtual bool FinishBufferInput() = 0; // no further data follows
    // The answer to a key as a system string, which the caller releases; null is the empty answer.
    virtual wchar_t* GetInfo(const wchar_t* pKey) = 0;
    virtual void SetInfo(const wchar_t* pKey, const wchar_t* pValue) = 0;
};

// What an encoder tells the party that opened it. The order of the operations is their order in the virtual table.
class ILyEncoderCallback
{
public:
    virtual void OnFinished(ILyEncoder* pEncoder) = 0; // the encoding has ended, however it went
    // A failure, ahead of OnFinished. This system always passes -1 as the code.
    virtual void OnError(ILyEncoder* pEncoder, int nCode, const wchar_t* pText) = 0;
    virtual void OnProgress(ILyEncoder* pEncoder, int nPercent) = 0;

protected:
    ~ILyEncoderCallback() = default;
};

// The feed of a whole file to an encoder: a LyThread, and its first base. The host knows no more of it.
class CEncoderPluginFileBasedEncodingEmulator;

// Deletes the feed as the thread that it is, so that the class need not be known where a host is destroyed.
template <>
void LyPtr<CEncoderPluginFileBasedEncodingEmulator, CEncoderPluginFileBasedEncodingEmulator>::Release();

class CEncoderPlugin
{
public:
    CEncoderPlugin(); // without a library; the members below are set before Open
    virtual ~CEncoderPlugin();
    CEncoderPlugin(const CEncoderPlugin&) = delete;
    CEncoderPlugin& operator=(const CEncoderPlugin&) = delete;

    // Adds a host to the array for each plug-in in the folder, in the order of their names, with m_strName and
    // m_strLibrary set; nothing is loaded. The empty folder is that of the running program. Without such a folder
    // nothing is added.
    static void ListEncoders(LyString strFolder, LyOwnedPtrArray<CEncoderPlugin>& aryEncoders);

    // Loads the library, makes the encoder and hands it its settings. True if an encoder now exists. Without bForce an
    // encoder that exists is left alone, and the answer is false.
    bool Open(ILyEncoderCallback* pCallback, bool bForce);
    void Close(); // deletes the encoder, then unloads the library
    // Destroys the emulator, which waits for its thread; where there is none, the encoder's own Stop.
    void Stop();

    int EncodeBuffer(unsigned char* pData, int nBytes); // ENCODER_OK, ENCODER_NO_BUFFER_INPUT or ENCODER_REFUSED
    bool FinishBufferInput();                           // false without an encoder
    LyString GetInfo(const LyString& strKey);           // opens the encoder if need be; empty without one

    LyString m_strName;        // the last part of the settings key, too
    LyString m_strDescription; // for lists of encoders
    LyString m_strLibrary;     // path of the plug-in
    int m_nParameter = 0;      // first argument of "CreateEncoder"
    LyString m_strProfile;     // of the settings; may be empty
    LyString m_strSettings;    // empty: taken from the options store
    LyLoadLibrary m_Library;
    LyPtr<ILyEncoder, ILyEncoder> m_pEncoder;
    LyPtr<CEncoderPluginFileBasedEncodingEmulator, CEncoderPluginFileBasedEncodingEmulator> m_pEmulator;
    ILyEncoderCallback* m_pCallback = nullptr; // not owned

private:
    LyString GetStoredSettings() const;
};
