// The two hashes of FIPS 180-4 that a rip needs: SHA-1 for the disc identifier of MusicBrainz, SHA-256 for files and
// the seal of a log. Not meant for secrets. OpenSSL's libcrypto does the work, with the processor's own instructions.
//
// Shape:   bytes in pieces of any size; the digest's bytes in the order of the standard.
// Errors:  a library that cannot hash (it is set up to refuse) makes digests of zeros, which no content has.
// Threads: an object belongs to one thread.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

class SecureHash
{
public:
    void Add(const void* pData, size_t nBytes);

protected:
    explicit SecureHash(const char* pName);
    ~SecureHash();
    SecureHash(const SecureHash&) = delete;
    SecureHash& operator=(const SecureHash&) = delete;

    void Finish(uint8_t* pDigest, size_t nBytes);

private:
    struct CONTEXT; // of the library
    std::unique_ptr<CONTEXT> m_pContext;
};

class SHA1Hash final : public SecureHash
{
public:
    using DIGEST = std::array<uint8_t, 20>;

    SHA1Hash() : SecureHash("SHA1") {}
    DIGEST Finish(); // once, at the end
    static DIGEST Make(const void* pData, size_t nBytes);
};

class SHA256Hash final : public SecureHash
{
public:
    using DIGEST = std::array<uint8_t, 32>;

    SHA256Hash() : SecureHash("SHA256") {}
    DIGEST Finish(); // once, at the end
    static DIGEST Make(const void* pData, size_t nBytes);
};

// Two lower-case digits for each byte.
std::string MakeHexText(const uint8_t* pData, size_t nBytes);
