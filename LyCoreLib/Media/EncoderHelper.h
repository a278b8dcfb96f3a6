// Encoder plug-ins: the interface of an encoder, what it tells its user, CEncoderPlugin, the host of one plug-in, and
// the emulator that feeds a whole WAV file to one.
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
#include "LyThread.h"
#include "WAVInfo.h"

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

class CEncoderPluginFileBasedEncodingEmulator;

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

// The feed of a whole WAV file to the encoder of a plug-in: to its client, an encoder that encodes a file by itself.
//
//     plugin.Open(nullptr, true);   // an encoder with a callback of its own would tell everything twice
//     plugin.m_pEmulator.Set(pEmulator = new CEncoderPluginFileBasedEncodingEmulator, true, false);
//     pEmulator->m_pPlugin = &plugin;
//     pEmulator->m_pCallback = &callback;
//     if (pEmulator->OpenFile(strFile) && pEmulator->Start())
//         while (!callback.m_bFinished)
//             pEmulator->PumpMainThreadMessages();
//     plugin.Stop();
//
// Life:    its members are set and the file is opened ahead of Start; it runs until OnFinished was called. Destroying
//          it cancels the feed, waits for it up to STOP_TIMEOUT_MS, and delivers what it had to tell.
// Errors:  a file that cannot be read or is too short, and an encoder that refuses, all end in OnError, with the
//          encoder's words for it, if it has any.
// Threads: the worker calls m_WAVInfo and the encoder's EncodeBuffer, nothing else. FinishBufferInput, GetInfo and the
//          callback run on the thread that pumps the messages. Without the tools library there are no messages.
class CEncoderPluginFileBasedEncodingEmulator : public LyThread
{
public:
    static constexpr int MESSAGE_FEED_ENDED = 1; // 1 if all blocks were sent, 0 if not
    static constexpr int MESSAGE_PROGRESS = 2;   // per cent, 0 to 100
    static constexpr int MIN_CHUNK_BLOCKS = 1024;
    static constexpr int EXTRA_BUFFER_BYTES = 16384;
    static constexpr int STOP_TIMEOUT_MS = 10000;

    CEncoderPluginFileBasedEncodingEmulator();
    ~CEncoderPluginFileBasedEncodingEmulator() override;

    // Makes a reader of that name, which m_pFileReader owns from then on, and opens m_WAVInfo with it. False if either
    // does not open.
    bool OpenFile(const LyString& strFile);

    bool Thread() override;
    bool ProcessMainThreadMessage(int nMessage, long long nParameter) override; // true

    CEncoderPlugin* m_pPlugin = nullptr;       // not owned; its encoder gets the data
    ILyEncoderCallback* m_pCallback = nullptr; // not owned; may be null
    LyPtr<ILyReader, ILyReader> m_pFileReader; // of the source file, for the object's life
    CWAVInfo m_WAVInfo;                        // the open source file

private:
    long long Feed(long long nTotal);
    void OnFeedEnded(bool bAllSent);
};
