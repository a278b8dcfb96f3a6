// The German catalogue as it is built: whole, and in step with the sources.

#include "Catalogue.h"

#include "ILyTools.h"
#include "ITranslator.h"
#include "LyString.h"
#include "OptionsHelper.h"
#include "SCSIError.h"
#include "TempFolder.h"
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <regex>

namespace
{
// The built library, loaded as a player does.
class LyLibrary
{
public:
    LyLibrary()
    {
        m_hLibrary = dlopen(RONDEL_BIN_DIR "/libLyTools.dylib", RTLD_LAZY);
        if (m_hLibrary == nullptr)
            return;
        const auto pGet = reinterpret_cast<ILyTools* (*)(int)>(dlsym(m_hLibrary, "GetLyToolsDLL"));
        m_pRoot = pGet(LY_TOOLS_INTERFACE_VERSION);
        m_pRoot->Attach(0, nullptr);
    }
    ~LyLibrary()
    {
        if (m_hLibrary == nullptr)
            return;
        m_pRoot->Detach(0, nullptr);
        dlclose(m_hLibrary);
    }
    LyLibrary(const LyLibrary&) = delete;
    LyLibrary& operator=(const LyLibrary&) = delete;

    ILyTools* GetRoot() const { return m_pRoot; }
    LyString Translate(const wchar_t* pText) const
    {
        LyString strText(pText);
        m_pRoot->GetTranslator(true)->Translate(LyDllString(strText));
        return strText;
    }

private:
    void* m_hLibrary = nullptr;
    ILyTools* m_pRoot = nullptr;
};

class GermanCatalogue : public testing::Test
{
protected:
    void SetUp() override
    {
        std::string strReason;
        ASSERT_EQ(m_Catalogue.Open(RONDEL_BIN_DIR "/locale/de/LC_MESSAGES/rondel.mo", strReason), Catalogue::LOADED)
            << strReason;
    }

    Catalogue m_Catalogue;
};

std::string ReadFile(const std::filesystem::path& path)
{
    std::ifstream stream(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

std::string Unescape(const std::string& str)
{
    std::string strPlain;
    for (size_t i = 0; i < str.size(); ++i)
    {
        if (str[i] != '\\' || i + 1 == str.size())
            strPlain += str[i];
        else if (const char c = str[++i]; c == 'n' || c == 'r' || c == 't')
            strPlain += c == 'n' ? '\n' : c == 'r' ? '\r' : '\t';
        else
            strPlain += c;
    }
    return strPlain;
}

// The texts that the source hands to TranslateString, as literals or as the two of a choice.
std::vector<std::string> GetTranslatedTexts(const std::string& strSource)
{
    static const std::regex s_Call(
        R"re(TranslateString\(([^"();]*\?\s*)?L"((?:[^"\\]|\\.)*)"(\s*:\s*L"((?:[^"\\]|\\.)*)")?)re");
    std::vector<std::string> aryTexts;
    for (std::sregex_iterator it(strSource.begin(), strSource.end(), s_Call), end; it != end; ++it)
    {
        aryTexts.push_back(Unescape((*it)[2]));
        if ((*it)[4].matched)
            aryTexts.push_back(Unescape((*it)[4]));
    }
    return aryTexts;
}

// The placeholders of a text, in their order.
std::string GetPlaceholders(std::string_view str)
{
    std::string strSigns;
    for (size_t n = str.find('%'); n != std::string_view::npos && n + 1 < str.size(); n = str.find('%', n + 2))
        strSigns += str[n + 1];
    return strSigns;
}
} // namespace

TEST_F(GermanCatalogue, HoldsEverySenseText)
{
    for (const SCSI_ERROR_ROW& row : g_SCSIErrorList)
        EXPECT_FALSE(m_Catalogue.Find(row.pText).empty()) << row.pText;
}

TEST_F(GermanCatalogue, HoldsEveryTextThatTheSourcesTranslate)
{
    int nTexts = 0;
    for (const char* pFolder : {"Disc", "LyCoreLib", "Plugins", "Siblings", "Hosts", "SharedFiles", "LyTools"})
    {
        for (const auto& entry :
             std::filesystem::recursive_directory_iterator(std::string(RONDEL_SOURCE_DIR) + "/" + pFolder))
        {
            if (entry.path().extension() != ".cpp" && entry.path().extension() != ".h")
                continue;
            for (const std::string& strText : GetTranslatedTexts(ReadFile(entry.path())))
            {
                ++nTexts;
                EXPECT_FALSE(m_Catalogue.Find(strText).empty()) << entry.path() << ": " << strText;
            }
        }
    }
    EXPECT_GE(nTexts, 8);
}

TEST_F(GermanCatalogue, HoldsTheTextsOfLoadingAndOfTags)
{
    for (const char* p : {"Internet resource", "Local resource", "Downloading", "Reading", "of", "Working...",
                          "WAVE INFO LIST:\r\n", "<invalid frame>", "Cover", " (", "<unknown data type>",
                          "<too large to display>", "Information", "CD ripping"})
        EXPECT_FALSE(m_Catalogue.Find(p).empty()) << p;
    EXPECT_EQ(m_Catalogue.Find("Medium not present."), "Kein Medium vorhanden.");
    EXPECT_EQ(m_Catalogue.Find("Determining CD drive cache size..."), "Gr\xC3\xB6\xC3\x9F"
                                                                      "e des Laufwerkscaches wird ermittelt ...");
}

TEST_F(GermanCatalogue, HoldsTheTextsOfMessageBoxes)
{
    for (const char* p : {"OK", "Cancel", "Yes", "No", "Esc cancels"})
        EXPECT_FALSE(m_Catalogue.Find(p).empty()) << p;
}

TEST_F(GermanCatalogue, PlaceholdersAgree)
{
    ASSERT_GT(m_Catalogue.GetCount(), SCSI_ERROR_ROWS);
    for (int nIndex = 1; nIndex < m_Catalogue.GetCount(); ++nIndex)
    {
        const auto [strOriginal, strTranslation] = m_Catalogue.GetAt(nIndex);
        EXPECT_EQ(GetPlaceholders(strOriginal), GetPlaceholders(strTranslation)) << strOriginal;
    }
    EXPECT_EQ(GetPlaceholders(m_Catalogue.Find("Diagnostic failure on component %d")), "d");
}

TEST(GermanCatalogueCheck, FindsLiteralsAndChoices)
{
    EXPECT_EQ(GetTranslatedTexts(
                  R"(a(TranslateString(L"One")) + TranslateString(bURL ? L"T\r\n" : L"\"3\""); TranslateString(str);)"),
              (std::vector<std::string>{"One", "T\r\n", "\"3\""}));
}

// The built library finds the catalogue beside itself, and asks the option first.
TEST(GermanLibrary, TranslatesIntoTheLanguageOfTheUser)
{
    const TempFolder folder;
    setenv("XDG_CONFIG_HOME", folder.GetPath().c_str(), 1);
    unsetenv("LC_ALL");
    unsetenv("LANGUAGE");
    setenv("LC_MESSAGES", "de_AT.UTF-8", 1);
    LyLibrary library;
    ASSERT_NE(library.GetRoot(), nullptr);
    EXPECT_EQ(library.Translate(L"Medium not present."), L"Kein Medium vorhanden.");
    EXPECT_EQ(library.Translate(L"of"), L"von");
    EXPECT_EQ(library.Translate(L"Unheard of"), L"Unheard of");
}

TEST(GermanLibrary, OptionComesBeforeTheEnvironment)
{
    const TempFolder folder;
    setenv("XDG_CONFIG_HOME", folder.GetPath().c_str(), 1);
    setenv("LC_ALL", "C", 1);
    {
        LyLibrary library;
        ASSERT_NE(library.GetRoot(), nullptr);
        EXPECT_EQ(library.Translate(L"of"), L"of");
        const std::unique_ptr<IOptionsHelper> options(library.GetRoot()->CreateOptionsHelper(L"Properties", true));
        ASSERT_NE(options, nullptr);
        EXPECT_TRUE(options->Set(L"Language", L"de", 0, L"", 0));
        EXPECT_EQ(library.Translate(L"of"), L"of"); // the languages are found once
    }
    LyLibrary library;
    EXPECT_EQ(library.Translate(L"of"), L"von");
}
