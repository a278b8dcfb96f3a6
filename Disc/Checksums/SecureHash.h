// The two hashes of FIPS 180-4 that a rip needs: SHA-1 for the disc identifier of MusicBrainz, SHA-256 for the seal of
// a log. Not meant for secrets.
//
// Shape:   bytes in pieces of any size; the digest's bytes in the order of the standard.
// Threads: an object belongs to one thread.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

// What both share: blocks of 64 bytes, and the padding with the length in bits.
class SecureHashBlocks
{
public:
    static constexpr size_t BLOCK_BYTES = 64;

    void Add(const void* pData, size_t nBytes);

protected:
    SecureHashBlocks() = default;
    ~SecureHashBlocks() = default;
    void Pad(); // the last block, or the last two

private:
    virtual void AddBlock(const uint8_t* pBlock) = 0;

    std::array<uint8_t, BLOCK_BYTES> m_aryPending{};
    size_t m_nPending = 0;
    uint64_t m_nBytes = 0;
};

class SHA1Hash final : public SecureHashBlocks
{
public:
    using DIGEST = std::array<uint8_t, 20>;
    DIGEST Finish(); // once, at the end
    static DIGEST Make(const void* pData, size_t nBytes);

private:
    void AddBlock(const uint8_t* pBlock) override;

    std::array<uint32_t, 5> m_aryState{0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
};

class SHA256Hash final : public SecureHashBlocks
{
public:
    using DIGEST = std::array<uint8_t, 32>;
    SHA256Hash();
    DIGEST Finish(); // once, at the end
    static DIGEST Make(const void* pData, size_t nBytes);

private:
    void AddBlock(const uint8_t* pBlock) override;

    std::array<uint32_t, 8> m_aryState;
};

// Two lower-case digits for each byte.
std::string MakeHexText(const uint8_t* pData, size_t nBytes);
