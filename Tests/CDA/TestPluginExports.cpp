// What the loadable libraries export, as the dynamic symbol table tells it: nothing but what players ask for by name.

#include <cstdio>
#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <string>

namespace
{
using Names = std::set<std::string>;

// Every name that "nm" finds defined in the dynamic symbol table, whatever its kind.
Names GetExports(const std::string& strFile)
{
    Names names;
    const std::string strCommand = "nm -D --defined-only --no-demangle '" + strFile + "'";
    FILE* pPipe = popen(strCommand.c_str(), "r");
    std::string strOutput;
    char szPart[512];
    while (pPipe != nullptr && fgets(szPart, sizeof szPart, pPipe) != nullptr)
        strOutput += szPart;
    EXPECT_TRUE(pPipe != nullptr && pclose(pPipe) == 0) << "this test needs nm of the package binutils";
    std::istringstream stream(strOutput);
    for (std::string strLine; std::getline(stream, strLine);)
        names.insert(strLine.substr(strLine.rfind(' ') + 1));
    return names;
}
} // namespace

TEST(PluginExports, ThePluginExportsItsThreeFunctionsAndNothingElse)
{
    EXPECT_EQ((Names{"Attach", "Detach", "GetInputSource"}), GetExports(RONDEL_BIN_DIR "/in_Rondel.so"));
}

TEST(PluginExports, TheDiscServiceExportsItsEntriesAndNothingElse)
{
    EXPECT_EQ((Names{"Attach", "Detach", "EnumerateDiscDrives", "GetDiscErrorText", "GetDiscEvidence",
                     "GetDiscManagerDLL", "GetDiscWarnings", "LyDiscInitialize", "LyDiscUninitialize"}),
              GetExports(RONDEL_BIN_DIR "/libLyDisc.dylib"));
}

TEST(PluginExports, TheToolsLibraryExportsItsEntriesAndNothingElse)
{
    EXPECT_EQ((Names{"Attach", "Detach", "EnumerateLyOptions", "GetLyToolsDLL"}),
              GetExports(RONDEL_BIN_DIR "/libLyTools.dylib"));
}

TEST(PluginExports, TheReaderLibraryExportsItsEntriesAndNothingElse)
{
    EXPECT_EQ((Names{"Attach", "CreateGenericReaderDLL", "Detach", "LyReaderInitialize", "LyReaderUninitialize"}),
              GetExports(RONDEL_BIN_DIR "/libLyReader.dylib"));
}
