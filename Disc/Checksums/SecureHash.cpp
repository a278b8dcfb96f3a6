#include "SecureHash.h"
#include <algorithm>
#include <openssl/evp.h>

struct SecureHash::CONTEXT
{
    EVP_MD_CTX* pDigest = EVP_MD_CTX_new();
    bool bGood = false;

    CONTEXT() = default;
    ~CONTEXT() { EVP_MD_CTX_free(pDigest); }
    CONTEXT(const CONTEXT&) = delete;
    CONTEXT& operator=(const CONTEXT&) = delete;
};

SecureHash::SecureHash(const char* pName) : m_pContext(std::make_unique<CONTEXT>())
{
    const EVP_MD* pKind = EVP_get_digestbyname(pName);
    m_pContext->bGood = m_pContext->pDigest != nullptr && pKind != nullptr &&
                        EVP_DigestInit_ex(m_pContext->pDigest, pKind, nullptr) == 1;
}

SecureHash::~SecureHash() = default;

void SecureHash::Add(const void* pData, size_t nBytes)
{
    if (m_pContext->bGood)
        m_pContext->bGood = EVP_DigestUpdate(m_pContext->pDigest, pData, nBytes) == 1;
}

void SecureHash::Finish(uint8_t* pDigest, size_t nBytes)
{
    unsigned int nMade = 0;
    if (!m_pContext->bGood || EVP_DigestFinal_ex(m_pContext->pDigest, pDigest, &nMade) != 1 || nMade != nBytes)
        std::fill_n(pDigest, nBytes, uint8_t{0});
}

SHA1Hash::DIGEST SHA1Hash::Finish()
{
    DIGEST digest;
    SecureHash::Finish(digest.data(), digest.size());
    return digest;
}

SHA1Hash::DIGEST SHA1Hash::Make(const void* pData, size_t nBytes)
{
    SHA1Hash hash;
    hash.Add(pData, nBytes);
    return hash.Finish();
}

SHA256Hash::DIGEST SHA256Hash::Finish()
{
    DIGEST digest;
    SecureHash::Finish(digest.data(), digest.size());
    return digest;
}

SHA256Hash::DIGEST SHA256Hash::Make(const void* pData, size_t nBytes)
{
    SHA256Hash hash;
    hash.Add(pData, nBytes);
    return hash.Finish();
}

std::string MakeHexText(const uint8_t* pData, size_t nBytes)
{
    static constexpr char DIGITS[] = "0123456789abcdef";
    std::string strText;
    strText.reserve(2 * nBytes);
    for (size_t i = 0; i < nBytes; ++i)
    {
        strText += DIGITS[pData[i] >> 4];
        strText += DIGITS[pData[i] & 15];
    }
    return strText;
}
