// OffsetDrive: a drive whose audio is put right by its read offset. Around another drive of the service: everything
// goes to that one, but audio is read that many sample frames later (or earlier), out of the sectors that cover it.
//
//   offset k > 0:  | sector n            | sector n + 1        |     raw, as the drive delivers it
//                      k | what is handed on as sector n |
//
// So k is the correction that lists of drives give, the frames to skip: frame i of what is handed on is frame i + k of
// what the drive delivers.
//
// Which:   READ CD with the expected type CD-DA and nothing but the sectors' 2352 bytes. Whatever else is asked for
//          (any type, C2 pointers, sub-channel) goes through as it is.
// Ends:    what lies ahead of sector 0 or behind the lead-out's start is silence, or what the drive reads there if it
//          can over-read; where it cannot it is silence too. The same holds for neighbours that are no audio.
// Reads:   a command of the other drive asks for LY_CD_MAX_READ_SECTORS at most. Nothing is kept from one command for
//          the next: what is read twice to be compared comes from the drive twice.
// Errors:  those of the other drive. On a failed command the whole data buffer is zeroed.
// Cost:    a drive without a correction pays for one look at a flag a command.
// Threads: any. One lock, held over an audio read.

#pragma once

#include "ReadOffsetOption.h"
#include "ServiceDrive.h"
#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

struct READ_OFFSET
{
    static constexpr int MAX_FRAMES = READ_OFFSET_MAX_FRAMES;

    int m_nFrames = 0;
    bool m_bOverRead = false;      // the drive is asked for what lies outside the disc
    std::string m_strWarning = {}; // a sentence on what was set and makes no sense; empty if nothing
};

class OffsetDrive final : public ServiceDrive
{
public:
    // What to correct is asked when the first holder comes, since the drive may be another model by then. Offsets
    // beyond MAX_FRAMES count as none.
    using FIND_OFFSET = std::function<READ_OFFSET(const DRIVE_DESCRIPTION& description)>;

    OffsetDrive(std::unique_ptr<ServiceDrive> pDrive, FIND_OFFSET findOffset);
    OffsetDrive(std::unique_ptr<ServiceDrive> pDrive, const READ_OFFSET& offset);

    bool Load(std::string& strError) override { return m_pDrive->Load(strError); }
    bool Acquire(std::string& strError) override;
    void Release() override;
    bool Send(const DRIVE_COMMAND& command, SENSE_DATA& sense) override;
    std::string GetReadErrorText() override { return m_pDrive->GetReadErrorText(); }
    std::string GetWarnings() override;
    DRIVE_DESCRIPTION GetDescription() override { return m_pDrive->GetDescription(); }

    void AddUser(int nMode) override { m_pDrive->AddUser(nMode); }
    void RemoveUser(int nMode) override { m_pDrive->RemoveUser(nMode); }
    unsigned char GetStateA() override { return m_pDrive->GetStateA(); }
    wchar_t* GetVendor() override { return m_pDrive->GetVendor(); }
    wchar_t* GetModel() override { return m_pDrive->GetModel(); }
    unsigned char GetStateB() override { return m_pDrive->GetStateB(); }
    wchar_t* GetPackedCapabilities() override { return m_pDrive->GetPackedCapabilities(); }

    READ_OFFSET GetOffset(); // as the present holders have it
    const ServiceDrive& GetInner() const { return *m_pDrive; }

private:
    // What a command asks for, and the sectors that cover it.
    struct WINDOW
    {
        int m_nFirst;   // asked for
        int m_nCount;   //
        int m_nRaw;     // the first that is needed
        int m_nRaws;    //
        int m_nSkip;    // bytes of it ahead of what is handed on
        bool m_bInside; // all that is asked for lies on the disc
    };

    bool IsShifted(const DRIVE_COMMAND& command) const;
    bool ReadShifted(const DRIVE_COMMAND& command, SENSE_DATA& sense);
    bool FindLeadOut(int nTimeoutMs, SENSE_DATA& sense);
    bool ReadRaw(const DRIVE_COMMAND& command, const WINDOW& window, SENSE_DATA& sense);
    bool ReadPiece(const DRIVE_COMMAND& command, const WINDOW& window, int nRaw, int nCount, SENSE_DATA& sense);
    bool ReadSectors(const DRIVE_COMMAND& command, int nRaw, int nCount, unsigned char* pData, SENSE_DATA& sense);
    void ForgetDisc(const DRIVE_COMMAND& command, bool bGood, const SENSE_DATA& sense);

    const std::unique_ptr<ServiceDrive> m_pDrive; // never null
    const FIND_OFFSET m_FindOffset;
    std::atomic<bool> m_bCorrects{false}; // changes only when the first holder comes

    std::mutex m_Mutex; // over all below
    READ_OFFSET m_Offset;
    int m_nHolders = 0;
    int m_nLeadOut = UNKNOWN;            // of the disc in the drive
    std::vector<unsigned char> m_aryRaw; // of the command at work

    static constexpr int UNKNOWN = -1;
};
