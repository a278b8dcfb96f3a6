// CTHCDAInputSource: one track of an audio CD as a stream of 16-bit stereo PCM at 44,100 Hz.
//
// Paths:   "cda://" drive "," track, the drive being whatever the disc service accepts ("E:", a device, a disc image),
//          or the name of a track file ("/media/cdrom/Track05.cda").
// Errors:  Open answers 0 or 1 (not the frame's -1); everything else follows the frame.
// Threads: the player's thread alone; the ring reader's thread stays behind AddDataToBuffer.

#pragma once

#include "LyAudioInputBase.h"

class CMemReader;

class CTHCDAInputSource : public LyAudioInputBase
{
public:
    explicit CTHCDAInputSource(ILyAudioInputOwner* pOwner);
    ~CTHCDAInputSource() override;

    int Open(const wchar_t* pPath) override;
    int GetInformation(LY_AUDIO_INPUT_INFO_FIELDS eField, const ILyDllString& result) override;
    // Field 3 seeks to a whole second: the text is milliseconds, and what is below a second is thrown away.
    int SetInformation(LY_AUDIO_INPUT_INFO_FIELDS eField, const wchar_t* pValue) override;
    int AddDataToBuffer() override;

    // Takes a path apart. The URL form writes drive and track if it finds a comma, even where it then fails; the file
    // form writes the drive alone. True if the path is good.
    static bool GetTrackAndDrive(LyString strPath, LyString& strDrive, int& nTrack);

    CMemReader* m_pMemReader = nullptr; // owned; null until Open

private:
    void SetFormat(int nTrackBytes);
};
