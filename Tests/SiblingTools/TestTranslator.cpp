#include "Translator.h"

#include "CatalogueBytes.h"
#include "LyString.h"
#include "TempFolder.h"
#include <cstdlib>
#include <gtest/gtest.h>
#include <thread>

namespace
{
using Names = std::vector<std::string>;

LyString Translate(Translator& translator, const wchar_t* pText)
{
    LyString strText(pText);
    const LyDllString text(strText);
    translator.Translate(text);
    return strText;
}

std::string MakeCatalogue(const std::string& strOriginal, const std::string& strTranslation)
{
    return CatalogueBytes::Make({CatalogueBytes::GetTexts()[0], {strOriginal, strTranslation}});
}

void WriteCatalogue(const TempFolder& folder, const std::string& strLanguage, const std::string& strBytes)
{
    folder.Write(strLanguage + "/LC_MESSAGES/rondel.mo", strBytes);
}

// The variables as they are in the row, and nothing else.
struct LANGUAGE_CASE
{
    const char* pLanguage;
    const char* pAll;
    const char* pMessages;
    const char* pLang;
    const char* pResult;
};

const LANGUAGE_CASE s_aryLanguageCases[] = {
    {nullptr, nullptr, nullptr, nullptr, ""},
    {nullptr, nullptr, nullptr, "de_DE.UTF-8", "de_DE.UTF-8"},
    {nullptr, nullptr, "fr_FR", "de_DE.UTF-8", "fr_FR"},
    {nullptr, "it_IT", "fr_FR", "de_DE.UTF-8", "it_IT"},
    {nullptr, "", "", "de", "de"},
    {"sv:de", "it_IT", nullptr, nullptr, "sv:de"},
    {"", "it_IT", nullptr, nullptr, "it_IT"},
    {"de", "C", nullptr, "de_DE.UTF-8", ""},
    {"de", nullptr, nullptr, "POSIX", ""},
    {nullptr, "C", nullptr, "de_DE.UTF-8", ""},
    {"de", nullptr, nullptr, nullptr, "de"},
    {"de", "C.UTF-8", nullptr, nullptr, "de"},
};

void SetVariable(const char* pName, const char* pValue)
{
    if (pValue != nullptr)
        setenv(pName, pValue, 1);
    else
        unsetenv(pName);
}

void SetEnvironment(const LANGUAGE_CASE& each)
{
    SetVariable("LANGUAGE", each.pLanguage);
    SetVariable("LC_ALL", each.pAll);
    SetVariable("LC_MESSAGES", each.pMessages);
    SetVariable("LANG", each.pLang);
}
} // namespace

TEST(TranslatorLanguages, EnvironmentIsReadInTheOrderOfGettext)
{
    for (const LANGUAGE_CASE& each : s_aryLanguageCases)
    {
        SetEnvironment(each);
        EXPECT_EQ(Translator::GetEnvironmentLanguages(), each.pResult) << &each - s_aryLanguageCases;
    }
    SetEnvironment({});
}

TEST(TranslatorLanguages, LocaleIsTriedFromTheMostSpecialNameOn)
{
    EXPECT_EQ(Translator::GetCatalogueNames("de_AT.UTF-8@x"), (Names{"de_AT@x", "de_AT", "de@x", "de"}));
    EXPECT_EQ(Translator::GetCatalogueNames("de_AT.UTF-8"), (Names{"de_AT", "de"}));
    EXPECT_EQ(Translator::GetCatalogueNames("de"), (Names{"de"}));
    EXPECT_EQ(Translator::GetCatalogueNames("sv:de_DE:de"), (Names{"sv", "de_DE", "de"}));
    EXPECT_EQ(Translator::GetCatalogueNames(""), Names());
    EXPECT_EQ(Translator::GetCatalogueNames("::de:"), (Names{"de"}));
}

TEST(TranslatorLanguages, EnglishEndsTheList)
{
    EXPECT_EQ(Translator::GetCatalogueNames("en_GB:de"), Names());
    EXPECT_EQ(Translator::GetCatalogueNames("sv:en:de"), (Names{"sv"}));
    EXPECT_EQ(Translator::GetCatalogueNames("C.UTF-8"), Names());
    EXPECT_EQ(Translator::GetCatalogueNames("POSIX:de"), Names());
    EXPECT_EQ(Translator::GetCatalogueNames("eno"), (Names{"eno"})); // another language
}

TEST(TranslatorLanguages, NameCannotLeadElsewhere)
{
    for (const char* p : {"../de", "/etc", "..", "de/..", "d e", ".", "de\n"})
        EXPECT_EQ(Translator::GetCatalogueNames(p), Names()) << p;
}

TEST(Translator, RewritesTheTextInPlace)
{
    const TempFolder folder;
    WriteCatalogue(folder, "de",
                   MakeCatalogue("Size", "Gr\xC3\xB6\xC3\x9F"
                                         "e \xF0\x9F\x8E\xB5"));
    Translator translator(folder.GetPath(), "de_AT.UTF-8");
    EXPECT_EQ(Translate(translator, L"Size"), L"Größe \U0001F3B5");
    EXPECT_EQ(Translate(translator, L"Unknown"), L"Unknown");
    EXPECT_EQ(Translate(translator, L"size"), L"size");
}

TEST(Translator, EmptyTextIsNotTheHeader)
{
    const TempFolder folder;
    WriteCatalogue(folder, "de", MakeCatalogue("a", "b"));
    Translator translator(folder.GetPath(), "de");
    EXPECT_EQ(Translate(translator, L""), L"");
}

TEST(Translator, TextThatOneLanguageLacksComesFromTheNext)
{
    const TempFolder folder;
    WriteCatalogue(folder, "de_AT", MakeCatalogue("January", "J\xC3\xA4nner"));
    WriteCatalogue(folder, "de",
                   CatalogueBytes::Make({CatalogueBytes::GetTexts()[0], {"January", "Januar"}, {"May", "Mai"}}));
    WriteCatalogue(folder, "sv", MakeCatalogue("June", "juni"));
    Translator translator(folder.GetPath(), "de_AT:sv");
    EXPECT_EQ(Translate(translator, L"January"), L"Jänner");
    EXPECT_EQ(Translate(translator, L"May"), L"Mai");
    EXPECT_EQ(Translate(translator, L"June"), L"juni");
}

TEST(Translator, EmptyTranslationIsNone)
{
    const TempFolder folder;
    WriteCatalogue(folder, "de", MakeCatalogue("a", ""));
    Translator translator(folder.GetPath(), "de");
    EXPECT_EQ(Translate(translator, L"a"), L"a");
}

TEST(Translator, WithoutACatalogueTextsStayAndNothingIsSaid)
{
    const TempFolder folder;
    Translator translator(folder.GetPath(), "de");
    testing::internal::CaptureStderr();
    EXPECT_EQ(Translate(translator, L"Reading"), L"Reading");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(Translator, BrokenCatalogueIsToldOfOnceAndPassedOver)
{
    const TempFolder folder;
    WriteCatalogue(folder, "de_AT", "nothing of the kind, and long enough");
    WriteCatalogue(folder, "de", MakeCatalogue("a", "b"));
    Translator translator(folder.GetPath(), "de_AT");
    testing::internal::CaptureStderr();
    EXPECT_EQ(Translate(translator, L"a"), L"b");
    EXPECT_EQ(Translate(translator, L"a"), L"b");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "The translations in \"" +
                                                          folder.GetPath("de_AT/LC_MESSAGES/rondel.mo") +
                                                          "\" are not used: it is no message catalogue.\n");
}

TEST(Translator, DefaultFolderLiesBesideTheCode)
{
    const std::string strProgram = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    EXPECT_EQ(std::filesystem::weakly_canonical(Translator::GetDefaultFolder()), strProgram + "/locale");
}

// The test itself stands in for the library: the catalogues lie beside it.
TEST(Translator, LanguageComesFromTheEnvironmentByDefault)
{
    const std::string strFolder = Translator::GetDefaultFolder() + "/xx/LC_MESSAGES";
    std::filesystem::create_directories(strFolder);
    std::ofstream(strFolder + "/rondel.mo", std::ios::binary) << MakeCatalogue("a", "b");
    SetEnvironment({nullptr, nullptr, nullptr, "xx_YY.UTF-8", nullptr});
    Translator translator;
    EXPECT_EQ(Translate(translator, L"a"), L"b");
    SetEnvironment({nullptr, "C", nullptr, "xx_YY.UTF-8", nullptr});
    Translator plain;
    EXPECT_EQ(Translate(plain, L"a"), L"a");
    SetEnvironment({});
    std::filesystem::remove_all(Translator::GetDefaultFolder() + "/xx");
}

TEST(Translator, SeveralThreadsMayAskFirst)
{
    const TempFolder folder;
    WriteCatalogue(folder, "de", MakeCatalogue("a", "b"));
    Translator translator(folder.GetPath(), "de");
    std::vector<std::thread> aryThreads;
    for (int i = 0; i < 4; ++i)
        aryThreads.emplace_back([&translator] { EXPECT_EQ(Translate(translator, L"a"), L"b"); });
    for (std::thread& thread : aryThreads)
        thread.join();
}
