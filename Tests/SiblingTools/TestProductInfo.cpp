#include "ProductInfo.h"
#include "UserFolders.h"
#include <gtest/gtest.h>

namespace
{
std::wstring GetDirectory(ProductInfo& product)
{
    LyXString text = product.GetAppdataDirectory();
    std::wstring str(text.Get() != nullptr ? text.Get() : L"(null)");
    LyCom::SysFreeString(text.m_pText);
    return str;
}
} // namespace

TEST(ProductInfo, HoldsNoProductBeforeLoad)
{
    ProductInfo product;
    EXPECT_FALSE(product.GetHasProduct());
}

TEST(ProductInfo, KnowsThisProductByItsNameAndByNone)
{
    for (const wchar_t* pName : {L"", L"Rondel", L"rondel", L"RONDEL", static_cast<const wchar_t*>(nullptr)})
    {
        ProductInfo product;
        EXPECT_TRUE(product.Load(pName, true, false, nullptr, 0));
        EXPECT_TRUE(product.GetHasProduct());
    }
}

TEST(ProductInfo, AnUnknownProductChangesNothing)
{
    ProductInfo product;
    for (const wchar_t* pName : {L"Ronde", L"Rondel2", L" Rondel", L"Other", L"RondeL\u0130"})
        EXPECT_FALSE(product.Load(pName, true, true, L"text", 1));
    EXPECT_FALSE(product.GetHasProduct());
    EXPECT_TRUE(product.Load(L"", false, false, nullptr, 0));
    EXPECT_FALSE(product.Load(L"Other", false, false, nullptr, 0));
    EXPECT_TRUE(product.GetHasProduct()) << "the one before stays";
}

TEST(ProductInfo, DescribesItself)
{
    EXPECT_STREQ(L"Rondel", ProductInfo::NAME);
    EXPECT_NE(nullptr, wcschr(ProductInfo::VERSION, L'.'));
}

TEST(ProductInfo, TheFolderIsTheUsersForData)
{
    ProductInfo product;
    const Environment home("HOME", "/h");
    {
        const Environment data("XDG_DATA_HOME", "/d/\xC3\xA4\xF0\x9F\x8E\xB5\xFF");
        EXPECT_EQ((std::wstring(L"/d/\u00e4\U0001F3B5") + L'\xDCFF' + L"/rondel/"), GetDirectory(product));
    }
    const Environment data("XDG_DATA_HOME", nullptr);
    EXPECT_EQ(L"/h/.local/share/rondel/", GetDirectory(product));
    const Environment none("HOME", nullptr);
    EXPECT_EQ(L"", GetDirectory(product));
}
