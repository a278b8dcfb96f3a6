// The file that an encoder writes. It grows under a temporary name beside its target (".rondel-<number>.part.<suffix>")
// and takes the target's name only when all of it is there, so that nothing incomplete ever bears that name. An earlier
// file of the name stays until then. What a killed program leaves behind begins with a dot and may be deleted.
//
// Units:   bytes.
// Errors:  false; then GetError is a code of EncoderError.h and GetDetail a sentence about it.
// Threads: one at a time.

#pragma once

#include "EncoderError.h"
#include <cstdint>
#include <string>

// What can be read at any place. The checks of finished files read through it.
class EncoderBytes
{
public:
    virtual ~EncoderBytes() = default;
    virtual uint64_t GetLength() = 0;
    virtual size_t ReadAt(uint64_t nOffset, void* pData, size_t nBytes) = 0; // as many as there are
};

class EncoderOutput final : public EncoderBytes
{
public:
    EncoderOutput() = default;
    ~EncoderOutput() override { Discard(); }
    EncoderOutput(const EncoderOutput&) = delete;
    EncoderOutput& operator=(const EncoderOutput&) = delete;

    bool Open(const std::string& strTarget);
    // Only proves that the file could be written, and leaves the making of it to another program.
    bool OpenForOther(const std::string& strTarget);
    bool Write(const void* pData, size_t nBytes);                     // at the position, which moves
    bool WriteAt(uint64_t nOffset, const void* pData, size_t nBytes); // the position stays
    void Seek(uint64_t nPosition) { m_nPosition = nPosition; }
    uint64_t GetPosition() const { return m_nPosition; }
    uint64_t GetLength() override;
    size_t ReadAt(uint64_t nOffset, void* pData, size_t nBytes) override;

    bool Commit();  // puts the file under its name; after a failure nothing is left
    void Discard(); // removes it; harmless where there is none

    int GetHandle() const { return m_nFile; }
    const std::string& GetTemporaryPath() const { return m_strTemporary; } // empty if nothing is open
    int GetError() const { return m_nError; }
    const std::string& GetDetail() const { return m_strDetail; }

private:
    bool FailBySystem(int nError, const std::string& strPath); // by errno
    bool CheckWritten();

    int m_nFile = -1;
    uint64_t m_nPosition = 0;
    std::string m_strTarget;
    std::string m_strTemporary;
    int m_nError = ENCODER_OK;
    std::string m_strDetail;
};
