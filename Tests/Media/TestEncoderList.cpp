#include "Encoder/FakeEncoder.h"
#include "EncoderHelper.h"
#include "TempFolder.h"
#include <gtest/gtest.h>

namespace
{
LyString Wide(const std::string& str)
{
    return LyString().FromUTF8(reinterpret_cast<const unsigned char*>(str.c_str()));
}
} // namespace

TEST(EncoderList, NamesThePluginsOfAFolderInOrder)
{
    TempFolder folder;
    for (const char* pName : {"enc_opus.so", "enc_flac.so", "enc_mp3 (new).so", "enc_\xC3\xA4.so"})
        (void)folder.Write(pName, "");
    LyOwnedPtrArray<CEncoderPlugin> ary;
    CEncoderPlugin::ListEncoders(Wide(folder.GetPath()), ary);
    ASSERT_EQ(4, ary.GetSize());
    const wchar_t* const aryNames[] = {L"flac", L"mp3 (new)", L"opus", L"\xE4"};
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(LyString(aryNames[i]), ary[i]->m_strName);
    EXPECT_EQ(Wide(folder.GetPath("enc_flac.so")), ary[0]->m_strLibrary);
    EXPECT_EQ(nullptr, ary[0]->m_Library.m_hLibrary) << "nothing is loaded";
}

TEST(EncoderList, PassesOverWhatIsNoPlugin)
{
    TempFolder folder;
    for (const char* pName : {"enc_.so", "enc_flac.so.1", "flac.so", "xenc_flac.so", "enc_flac", "ENC_FLAC.SO",
                              "enc_folder.so/file", "enc_\xFF.so"})
        (void)folder.Write(pName, "");
    LyOwnedPtrArray<CEncoderPlugin> ary;
    CEncoderPlugin::ListEncoders(Wide(folder.GetPath()), ary);
    EXPECT_EQ(0, ary.GetSize());
}

TEST(EncoderList, AddsToWhatIsThere)
{
    LyOwnedPtrArray<CEncoderPlugin> ary;
    CEncoderPlugin::ListEncoders(FakeEncoder::GetFolder(), ary);
    CEncoderPlugin::ListEncoders(FakeEncoder::GetFolder(), ary);
    ASSERT_EQ(4, ary.GetSize());
    EXPECT_EQ(LyString(L"no_entry"), ary[2]->m_strName);
    EXPECT_EQ(LyString(L"scripted"), ary[3]->m_strName);
}

TEST(EncoderList, WhatIsListedOpens)
{
    FakeEncoder fake;
    LyOwnedPtrArray<CEncoderPlugin> ary;
    CEncoderPlugin::ListEncoders(FakeEncoder::GetFolder(), ary);
    ASSERT_EQ(2, ary.GetSize());
    ary[1]->m_strSettings = L"-8";
    EXPECT_TRUE(ary[1]->Open(nullptr, false));
    EXPECT_EQ("Attach, Create, SetInfo", fake.GetEvents());
}

TEST(EncoderList, AFolderThatIsNoneHasNoPlugins)
{
    TempFolder folder;
    LyOwnedPtrArray<CEncoderPlugin> ary;
    CEncoderPlugin::ListEncoders(Wide(folder.GetPath("missing")), ary);
    CEncoderPlugin::ListEncoders(Wide(folder.Write("file", "")), ary);
    EXPECT_EQ(0, ary.GetSize());
}

TEST(EncoderList, TheEmptyFolderIsThatOfTheProgram)
{
    const LyString strLibrary = LyString().FromUTF8(reinterpret_cast<const unsigned char*>(
        (std::filesystem::read_symlink("/proc/self/exe").parent_path() / "enc_beside_the_test.so").c_str()));
    const LyStringUTF8 library(strLibrary);
    std::ofstream(library.Get()) << "";
    LyOwnedPtrArray<CEncoderPlugin> ary;
    CEncoderPlugin::ListEncoders(LyString(), ary);
    std::filesystem::remove(library.Get());
    bool bFound = false;
    for (int i = 0; i < ary.GetSize(); ++i)
        bFound |= ary[i]->m_strLibrary == strLibrary;
    EXPECT_TRUE(bFound);
}
