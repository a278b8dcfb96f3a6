// Values: FIPS 180-2, annexes A and B, and the empty message.

#include "SecureHash.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>

namespace
{
template <class HASH>
std::string Hash(const std::string& str, size_t nPiece)
{
    HASH hash;
    for (size_t i = 0; i < str.size(); i += nPiece)
        hash.Add(str.data() + i, std::min(nPiece, str.size() - i));
    const auto digest = hash.Finish();
    return MakeHexText(digest.data(), digest.size());
}

const struct
{
    std::string m_strText;
    const char* m_pSHA1;
    const char* m_pSHA256;
} s_aryRows[] = {
    {"", "da39a3ee5e6b4b0d3255bfef95601890afd80709",
     "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
    {"abc", "a9993e364706816aba3e25717850c26c9cd0d89d",
     "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
    {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq", "84983e441c3bd26ebaae4aa1f95129e5e54670f1",
     "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
    {std::string(1000000, 'a'), "34aa973cd4c4daa4f61eeb2bdbad27316534016f",
     "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
};
} // namespace

TEST(SecureHash, HasTheValuesOfTheStandardWhateverThePieces)
{
    for (const auto& row : s_aryRows)
    {
        for (size_t nPiece : std::initializer_list<size_t>{1, 55, 64, 1000, 1000000})
        {
            EXPECT_EQ(row.m_pSHA1, Hash<SHA1Hash>(row.m_strText, nPiece)) << nPiece;
            EXPECT_EQ(row.m_pSHA256, Hash<SHA256Hash>(row.m_strText, nPiece)) << nPiece;
        }
    }
}

TEST(SecureHash, PadsEveryLengthOfTheLastBlock)
{
    for (size_t nBytes = 50; nBytes < 130; ++nBytes)
    {
        const std::string str(nBytes, 'x');
        const auto digest = SHA256Hash::Make(str.data(), str.size());
        EXPECT_EQ(MakeHexText(digest.data(), digest.size()), Hash<SHA256Hash>(str, 3));
        EXPECT_NE(Hash<SHA256Hash>(str, 3), Hash<SHA256Hash>(str + '\x80', 3));
    }
}
