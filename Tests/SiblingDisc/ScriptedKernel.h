// A kernel with a drive in it for the tests of hardware drives: an ordinary file stands in for the device node, and
// every SG_IO call is recorded and answered from a script. Without a script the drive answers as a healthy one.

#pragma once

#include "MMC.h"
#include "SGTransport.h"
#include "TempFolder.h"
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <scsi/sg.h>
#include <unistd.h>
#include <vector>

using Bytes = std::vector<unsigned char>;

constexpr unsigned char STATUS_CHECK_CONDITION = 2;

// What one call answers.
struct SG_ANSWER
{
    int m_nErrno = 0;
    unsigned char m_nStatus = 0;
    unsigned short m_nHost = 0;
    unsigned short m_nDriver = 0;
    Bytes m_Sense;
    Bytes m_Data;     // what comes; the rest of the buffer stays as it is
    int m_nResid = 0; // as the host adapter counts it

    static SG_ANSWER Errno(int nErrno) { return {nErrno, 0, 0, 0, {}, {}, 0}; }
    static SG_ANSWER Host(unsigned short nHost) { return {0, 0, nHost, 0, {}, {}, 0}; }
    static SG_ANSWER Check(unsigned char nKey, unsigned char nASC, unsigned char nASCQ)
    {
        return {
            0, STATUS_CHECK_CONDITION, 0, 8, {0x70, 0, nKey, 0, 0, 0, 0, 10, 0, 0, 0, 0, nASC, nASCQ, 0, 0, 0, 0}, {},
            0};
    }
};

// What one call was.
struct SG_CALL
{
    sg_io_hdr m_Header; // as it came
    Bytes m_CDB;
    Bytes m_Data; // the buffer as it came
};

class ScriptedKernel
{
public:
    static constexpr const char* NODE_NAME = "sr0";

    ScriptedKernel() { (void)m_Folder.Write(NODE_NAME, ""); }

    std::string GetNode() const { return m_Folder.GetPath(NODE_NAME); }

    DEVICE_CALLS GetCalls()
    {
        DEVICE_CALLS calls;
        calls.m_Open = [this](const char* pPath, int nFlags)
        {
            m_aryOpenFlags.push_back(nFlags);
            const int nErrno = (nFlags & O_ACCMODE) == O_RDWR ? m_nWriteErrno : m_nReadErrno;
            if (nErrno != 0)
                return -nErrno;
            const int nDescriptor = open(pPath, nFlags);
            return nDescriptor < 0 ? -errno : nDescriptor;
        };
        calls.m_SendSG = [this](int, sg_io_hdr& header) { return Answer(header); };
        calls.m_IsDevice = [this](int) { return m_bDevice; };
        return calls;
    }

    // The answers of the next calls, whatever they ask; those of an opcode, one after the other.
    void Next(const SG_ANSWER& answer) { m_aryNext.push_back(answer); }
    void NextOf(unsigned char nOpcode, const SG_ANSWER& answer) { m_mapNext[nOpcode].push_back(answer); }

    int CountOf(unsigned char nOpcode) const
    {
        return static_cast<int>(std::count_if(m_aryCalls.begin(), m_aryCalls.end(),
                                              [=](const SG_CALL& call) { return call.m_CDB[0] == nOpcode; }));
    }

    // The four pages, each behind a header without block descriptors.
    static Bytes MakePage(unsigned char nPage)
    {
        static const std::map<unsigned char, unsigned char> LENGTHS = {{0x01, 10}, {0x0D, 6}, {0x2A, 30}, {0x0E, 14}};
        const auto pLength = LENGTHS.find(nPage);
        if (pLength == LENGTHS.end())
            return {};
        Bytes answer(MODE_HEADER_BYTES + 2 + static_cast<size_t>(pLength->second));
        unsigned char* pPage = answer.data() + MODE_HEADER_BYTES;
        pPage[0] = nPage;
        pPage[1] = pLength->second;
        for (int i = 2; i < pLength->second + 2; ++i)
            pPage[i] = static_cast<unsigned char>(nPage + i);
        MMCPut16(answer.data(), static_cast<unsigned int>(answer.size() - 2));
        return answer;
    }

    static Bytes MakeInquiry(unsigned char nType = 5)
    {
        Bytes answer = {nType, 0x80, 5, 0x32, 31, 0, 0, 0};
        for (const char c : std::string("ACME    CD-READER 3000  1.07"))
            answer.push_back(static_cast<unsigned char>(c));
        return answer;
    }

    TempFolder m_Folder;
    int m_nWriteErrno = 0; // of opening for reading and writing
    int m_nReadErrno = 0;
    bool m_bDevice = true;
    Bytes m_Inquiry = MakeInquiry();
    std::vector<int> m_aryOpenFlags;
    std::vector<SG_CALL> m_aryCalls;
    int m_nAtOnce = 0; // calls at the same time, and the most there were
    int m_nMostAtOnce = 0;

private:
    int Answer(sg_io_hdr& header)
    {
        SG_ANSWER answer;
        {
            const std::lock_guard lock(m_Mutex);
            m_nMostAtOnce = std::max(m_nMostAtOnce, ++m_nAtOnce);
            answer = Choose(header);
        }
        if (answer.m_nErrno == 0)
            Put(answer, header);
        const std::lock_guard lock(m_Mutex);
        --m_nAtOnce;
        return answer.m_nErrno;
    }
    SG_ANSWER Choose(const sg_io_hdr& header)
    {
        const auto* pData = static_cast<const unsigned char*>(header.dxferp);
        m_aryCalls.push_back({header, Bytes(header.cmdp, header.cmdp + header.cmd_len),
                              pData != nullptr ? Bytes(pData, pData + header.dxfer_len) : Bytes()});
        if (!m_aryNext.empty())
            return Take(m_aryNext);
        std::deque<SG_ANSWER>& aryOfOpcode = m_mapNext[header.cmdp[0]];
        return aryOfOpcode.empty() ? AnswerHealthy(header) : Take(aryOfOpcode);
    }
    static SG_ANSWER Take(std::deque<SG_ANSWER>& aryAnswers)
    {
        const SG_ANSWER answer = aryAnswers.front();
        aryAnswers.pop_front();
        return answer;
    }
    SG_ANSWER AnswerHealthy(const sg_io_hdr& header) const
    {
        SG_ANSWER answer;
        if (header.cmdp[0] == CDB_INQUIRY)
            answer.m_Data = m_Inquiry;
        else if (header.cmdp[0] == CDB_MODE_SENSE_10)
            answer.m_Data = MakePage(header.cmdp[2]);
        else
            answer.m_Data.assign(header.dxfer_len, 0x11);
        if (answer.m_Data.empty() && header.cmdp[0] == CDB_MODE_SENSE_10)
            return SG_ANSWER::Check(SENSE_ILLEGAL_REQUEST, ASC_INVALID_FIELD_IN_CDB, 0);
        answer.m_Data.resize(std::min<size_t>(answer.m_Data.size(), header.dxfer_len));
        answer.m_nResid = static_cast<int>(header.dxfer_len - answer.m_Data.size());
        return answer;
    }
    static void Put(const SG_ANSWER& answer, sg_io_hdr& header)
    {
        header.status = answer.m_nStatus;
        header.host_status = answer.m_nHost;
        header.driver_status = answer.m_nDriver;
        header.resid = answer.m_nResid;
        header.sb_len_wr = static_cast<unsigned char>(std::min<size_t>(answer.m_Sense.size(), header.mx_sb_len));
        if (header.sb_len_wr > 0)
            std::memcpy(header.sbp, answer.m_Sense.data(), header.sb_len_wr);
        const size_t nBytes = std::min<size_t>(answer.m_Data.size(), header.dxfer_len);
        if (nBytes > 0)
            std::memcpy(header.dxferp, answer.m_Data.data(), nBytes);
    }

    std::mutex m_Mutex;
    std::deque<SG_ANSWER> m_aryNext;
    std::map<unsigned char, std::deque<SG_ANSWER>> m_mapNext;
};
