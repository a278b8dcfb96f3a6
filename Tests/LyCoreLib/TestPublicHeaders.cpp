// What a program can do that includes one header alone. The parts that are about it come first, each behind its
// include.

#include "LyBuffer.h"

namespace
{
bool RoundTripText(LyBuffer& buffer)
{
    return buffer.FromStringHexDigits(L"6869") && buffer.ToStringBase64() == L"aGk=";
}
bool LoadByText(LyBuffer& buffer) { return buffer.FromFile(L"/nothing/there", -1, false); }
} // namespace

#include "ZLibHelper.h"

namespace
{
// A service that can do no more than open files.
class FilesOnly final : public IZLib
{
public:
    IZLibFile* OpenFile(const wchar_t*) override { return nullptr; }
};
class BareCompressor final : public IZLibBufferCompressor
{
};
class BareDecompressor final : public IZLibBufferDecompressor
{
};
} // namespace

#include "OptionsHelper.h"

namespace
{
IOptionsHelper* OpenStore() { return CreateOptionsHelperName(L"Properties", true); }
bool IsModalByDefault() { return LyMessageBoxDescriptor().m_bModal; }
} // namespace

#include "LyStringFormat.h"

namespace
{
LyString HandOn(CFormatArgument argument)
{
    CFormatArgument* aryArguments[] = {&argument};
    LyString str;
    str.FormatV(L"<%d>", aryArguments, 1);
    return str;
}
} // namespace

#include <gtest/gtest.h>

TEST(PublicHeaders, ABufferAloneTakesFileNamesAndStrings)
{
    LyBuffer buffer;
    EXPECT_TRUE(RoundTripText(buffer));
    EXPECT_FALSE(LoadByText(buffer));
    EXPECT_EQ(0, buffer.GetSize());
}

TEST(PublicHeaders, AZLibServiceNeedsNoWorkOnBuffers)
{
    FilesOnly service;
    EXPECT_EQ(nullptr, service.CreateBufferCompressor(-1, 1));
    EXPECT_EQ(nullptr, service.CreateBufferDecompressor());
    EXPECT_EQ(nullptr, service.OpenFile(L"a.gz"));
    BareCompressor compressor;
    BareDecompressor decompressor;
    unsigned char aryBytes[4] = {};
    EXPECT_EQ(-1, compressor.Compress(aryBytes, 4, aryBytes, 4));
    EXPECT_EQ(-1, decompressor.Decompress(aryBytes, 4, aryBytes, 4));
}

TEST(PublicHeaders, TheOptionsComeWithTheirFactoryAndTheBoxes)
{
    EXPECT_EQ(nullptr, OpenStore()); // no tools library stands beside this program
    EXPECT_FALSE(IsModalByDefault());
}

TEST(PublicHeaders, AFormatArgumentHasAShortName) { EXPECT_TRUE(HandOn(5) == L"<5>"); }
