// SaveMetadataChanges over thousands of generated files, judged by a model that knows nothing of how files are moved:
// it takes the old file apart and says, by cutting and joining, what the new one is.

#include "MemoryReader.h"
#include "Thinning.h"
#include "WaveFiles.h"
#include "WAVInfo.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <optional>
#include <random>

using namespace WaveFiles;

namespace
{
constexpr int FILES_OF_AN_ORDER = Thinning::Some(8, 1);
constexpr int FILES_OF_A_KIND = Thinning::Some(60, 10);

// What is done to a file.
struct EDIT
{
    bool bRemoveTag = false;
    std::wstring strTitle;                  // set, unless empty
    std::optional<std::wstring> strPayload; // set
    bool bTouchUITS = false;                // marked as changed as it is
};

std::string Bytes(const LyBuffer& buffer)
{
    return std::string(reinterpret_cast<const char*>(buffer.GetData()), static_cast<size_t>(buffer.GetSize()));
}

std::string Padded(std::string str)
{
    if (str.size() % 2 != 0)
        str += '\0';
    return str;
}

// ---- The model

class SaveModel
{
public:
    SaveModel(const std::string& strFile, const EDIT& edit)
        : m_strFile(strFile), m_Edit(edit), m_aryChunks(List(strFile))
    {
        for (size_t i = 0; i < m_aryChunks.size(); ++i)
        {
            const std::string& strID = m_aryChunks[i].strID;
            if (strID == "id3 " || strID == "ID3 " || strID == "tag ")
                m_nTag = i;
            if (strID == "UITS")
                m_nUITS = i;
        }
        m_bHadUITS = m_nUITS.has_value();
        m_bRemoval = edit.bRemoveTag && m_nTag;
        m_bTagChange = m_bRemoval || !edit.strTitle.empty();
        m_bUITSChange = edit.strPayload || (edit.bTouchUITS && m_nUITS);
        MakeUITS();
        MakeTag();
    }

    std::string GetResult() const
    {
        if (!m_bTagChange && !m_bUITSChange)
            return m_strFile;
        std::string strFile = WithRoot(m_strFile, static_cast<unsigned int>(m_strFile.size() - 8));
        if (!m_bTagChange)
            return WithNewUITS(strFile);
        const bool bUITSMoves = m_bUITSChange && (!m_nTag || (m_nUITS && *m_nUITS < *m_nTag));
        if (m_nTag && !m_bRemoval && !bUITSMoves && FitsTagChunk())
        {
            strFile = WithTagInPlace(strFile);
            return m_bUITSChange ? WithNewUITS(strFile) : strFile;
        }
        return Rewritten(strFile);
    }

    // Whether the bytes behind this chunk stay in place.
    bool GetTagFits() const { return m_nTag && !m_bRemoval && FitsTagChunk(); }

private:
    static std::string WithRoot(std::string strFile, unsigned int nLength)
    {
        return strFile.replace(4, 4, Number(nLength));
    }
    const CHUNK& TagChunk() const { return m_aryChunks[*m_nTag]; }
    const CHUNK& UITSChunk() const { return m_aryChunks[*m_nUITS]; }

    // The UITS chunk as it would be written.
    void MakeUITS()
    {
        if (m_Edit.strPayload)
        {
            std::string strText; // the texts of this test are ASCII
            for (wchar_t c : *m_Edit.strPayload)
                strText += static_cast<char>(c);
            strText = Padded(strText);
            m_strUITS = "UITS" + Number(static_cast<unsigned int>(strText.size())) + strText;
        }
        else if (m_nUITS)
            m_strUITS = m_strFile.substr(UITSChunk().nOffset, 8 + UITSChunk().nSize);
    }

    // What a tag becomes is not judged here: another object says it, loaded from the same bytes.
    void MakeTag()
    {
        CID3v2Tag tag;
        if (m_nTag)
        {
            const std::string strBody = GetBody(m_strFile, TagChunk());
            LyBuffer buffer;
            buffer.FromBuffer(strBody.data(), static_cast<int>(strBody.size()));
            if (!tag.Load(buffer, 20))
            {
                buffer.RemoveRight(1);
                tag.Load(buffer, 20);
            }
        }
        if (!m_Edit.strTitle.empty())
            tag.Set(L"Name", m_Edit.strTitle.c_str());
        LyBuffer saved;
        tag.SaveToBuffer(saved, 0x40000);
        m_strTag = Bytes(saved);
    }

    bool FitsTagChunk() const
    {
        const size_t nOld = TagChunk().nSize;
        return m_strTag.size() == nOld || m_strTag.size() == nOld + nOld % 2;
    }

    std::string WithTagInPlace(std::string strFile) const
    {
        const size_t nBody = TagChunk().nOffset + 8;
        const std::string strNew = Padded(m_strTag);
        if (strFile.size() < nBody + strNew.size())
            strFile.resize(nBody + strNew.size());
        strFile.replace(nBody, strNew.size(), strNew);
        return strFile.replace(nBody - 4, 4, Number(static_cast<unsigned int>(m_strTag.size())));
    }

    // Headers and bodies without pad bytes, of all chunks behind one.
    std::string ChunksBehind(const std::string& strFile, size_t nFirst, bool bKeepTag, bool bKeepUITS) const
    {
        std::string str;
        for (size_t i = nFirst + 1; i < m_aryChunks.size(); ++i)
        {
            const bool bLeftOut = (m_nTag == i && !bKeepTag) || (m_nUITS == i && !bKeepUITS);
            if (!bLeftOut)
                str += strFile.substr(m_aryChunks[i].nOffset, 8 + m_aryChunks[i].nSize);
        }
        return str;
    }

    unsigned int GetRootWithUITS() const
    {
        const size_t nOld = m_bHadUITS ? UITSChunk().GetFull() : 0;
        return static_cast<unsigned int>(Padded(m_strUITS).size() - nOld);
    }

    std::string WithNewUITS(const std::string& strFile) const
    {
        const unsigned int nRoot = GetNumber(strFile, 4) + GetRootWithUITS();
        if (m_bHadUITS)
            return WithRoot(strFile.substr(0, UITSChunk().nOffset) + ChunksBehind(strFile, *m_nUITS, true, false) +
                                m_strUITS,
                            nRoot);
        // At the end that the file had before anything was written.
        return WithRoot(strFile.substr(0, m_strFile.size()) + m_strUITS, nRoot);
    }

    std::string Rewritten(const std::string& strFile) const
    {
        const bool bUITSChange = m_bUITSChange || (!m_nTag && m_bHadUITS);
        unsigned int nRoot = GetNumber(strFile, 4);
        std::string strNew = strFile;
        std::optional<size_t> nFirst = m_nTag;
        if (!nFirst || (m_nUITS && *m_nUITS < *nFirst))
            nFirst = m_nUITS;
        if (nFirst)
            strNew =
                strFile.substr(0, m_aryChunks[*nFirst].nOffset) + ChunksBehind(strFile, *nFirst, false, !bUITSChange);
        if (m_nTag)
            nRoot -= static_cast<unsigned int>(TagChunk().GetFull());
        if (!m_bRemoval)
        {
            const std::string strChunk = Padded("id3 " + Number(static_cast<unsigned int>(m_strTag.size())) + m_strTag);
            strNew += strChunk;
            nRoot += static_cast<unsigned int>(strChunk.size());
        }
        if (bUITSChange)
        {
            strNew += m_strUITS;
            nRoot += GetRootWithUITS();
        }
        return WithRoot(strNew, nRoot);
    }

    std::string m_strFile;
    EDIT m_Edit;
    std::vector<CHUNK> m_aryChunks;
    std::optional<size_t> m_nTag;
    std::optional<size_t> m_nUITS;
    bool m_bHadUITS = false;
    bool m_bRemoval = false;
    bool m_bTagChange = false;
    bool m_bUITSChange = false;
    std::string m_strTag;
    std::string m_strUITS;
};

// ---- The files

class FileMaker
{
public:
    explicit FileMaker(unsigned int nSeed) : m_Random(nSeed) {}
    unsigned int Random() { return static_cast<unsigned int>(m_Random()); }
    int Pick(int nBelow) { return static_cast<int>(Random() % static_cast<unsigned int>(nBelow)); }
    bool Flip(int nOneOf = 2) { return Pick(nOneOf) == 0; }

    std::string MakeTagBody()
    {
        switch (Pick(8))
        {
        case 0:
            return "this is no tag at all";
        case 1:
            return Audio(4095); // a new tag of 4096 bytes fits, and the header must say so
        case 2:
            return Audio(4096);
        default:
            break;
        }
        std::string strFrames;
        if (Flip())
            strFrames += TextFrame("TIT2", std::string(static_cast<size_t>(Pick(40)), 't'));
        if (Flip())
            strFrames += Frame("XYZW", Audio(static_cast<size_t>(Pick(50)) + 1));
        if (Flip())
            strFrames += TextFrame("TALB", "Album");
        const int nVersion = Flip() ? 3 : 4;
        const std::string strTag = Tag(strFrames, static_cast<size_t>(Pick(120)), nVersion);
        return Flip(8) ? strTag + "x" : strTag; // a byte too many
    }

    // One chunk by its letter; odd and even sizes.
    std::string MakeChunk(char cKind)
    {
        static const char* const s_aryTagIDs[] = {"id3 ", "ID3 ", "tag "};
        const size_t nOdd = static_cast<size_t>(Pick(2));
        switch (cKind)
        {
        case 'f':
            return Format(1, 2, 44100, 16, Flip(4) ? std::string(2, 0) : "");
        case 'd':
            return Chunk("data", Audio(40 + nOdd, Random()));
        case 'L':
            return Chunk("LIST",
                         Flip(4) ? std::string("adtl") + Audio(nOdd) : "INFO" + InfoItem("IART", "Me") + Audio(nOdd));
        case 'U':
            return Chunk("UITS", Audio(static_cast<size_t>(Pick(30)) + nOdd, Random()));
        case 'T':
            return Chunk(s_aryTagIDs[Pick(3)], MakeTagBody());
        default:
            return Chunk("junk", Audio(static_cast<size_t>(Pick(30)) + nOdd, Random()));
        }
    }

    std::string MakeFile(const std::string& strKinds)
    {
        std::string strChunks;
        for (char cKind : strKinds)
            strChunks += MakeChunk(cKind);
        std::string strFile = Riff(strChunks);
        const std::vector<CHUNK> aryChunks = List(strFile);
        if (Flip(8) && aryChunks.back().nSize % 2 != 0)
            strFile.pop_back(); // the last pad byte is missing
        else if (Flip(16))
            strFile += std::string("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", static_cast<size_t>(1 + Pick(9)));
        if (Flip(4))
            strFile.replace(4, 4, Number(static_cast<unsigned int>(Pick(100000))));
        return strFile;
    }

    EDIT MakeEdit()
    {
        EDIT edit;
        edit.bRemoveTag = Flip(4);
        if (Flip())
            edit.strTitle = std::wstring(static_cast<size_t>(1 + Pick(Flip(3) ? 5000 : 60)), L'n');
        if (Flip(3))
            edit.strPayload = std::wstring(static_cast<size_t>(Pick(30)), L'u');
        edit.bTouchUITS = Flip(5);
        return edit;
    }

private:
    std::mt19937 m_Random;
};

// ---- The comparison

struct TALLY
{
    int nFiles = 0;
    int nUnchanged = 0;
    int nInPlace = 0;
    int nRewritten = 0;
};

std::string GetAudio(const std::string& strFile)
{
    std::string strAudio;
    for (const CHUNK& chunk : List(strFile))
    {
        if (chunk.strID == "data")
            strAudio = GetBody(strFile, chunk);
    }
    return strAudio;
}

void Judge(const std::string& strKinds, FileMaker& maker, TALLY& tally)
{
    const std::string strFile = maker.MakeFile(strKinds);
    const EDIT edit = maker.MakeEdit();
    const SaveModel model(strFile, edit);
    MemoryReader reader(strFile);
    CWAVInfo info;
    info.m_nTagWritingEnabled = 1;
    ASSERT_EQ(0, info.Open(&reader, true, true)) << strKinds;
    EXPECT_EQ(!edit.strTitle.empty(), !edit.strTitle.empty() && info.Set(L"Name", edit.strTitle.c_str()));
    EXPECT_EQ(edit.strPayload.has_value(), edit.strPayload && info.Set(L"UITS Payload", edit.strPayload->c_str()));
    if (edit.bTouchUITS && info.m_pUITSChunk != nullptr)
        info.m_pUITSChunk->m_bDirty = true;
    EXPECT_TRUE(info.SaveMetadataChanges(edit.bRemoveTag));
    const std::string strExpected = model.GetResult();
    ASSERT_TRUE(strExpected == reader.m_strContent)
        << strKinds << ": " << Names(strFile) << " became " << Names(reader.m_strContent) << ", expected "
        << Names(strExpected) << "; remove " << edit.bRemoveTag << ", title " << edit.strTitle.size() << ", payload "
        << edit.strPayload.has_value() << ", touch " << edit.bTouchUITS;
    EXPECT_NE(std::string::npos, reader.m_strContent.find(GetAudio(strFile))) << strKinds;
    ++tally.nFiles;
    if (reader.m_strContent == strFile)
        ++tally.nUnchanged;
    else if (model.GetTagFits())
        ++tally.nInPlace;
    else
        ++tally.nRewritten;
    info.m_pReader.Release(); // saved once is enough
}
} // namespace

TEST(WAVInfoSaveModel, EveryOrderOfTheChunks)
{
    FileMaker maker(20240601);
    TALLY tally;
    std::string strKinds = "LTUdfx"; // ascending, for next_permutation
    do
    {
        for (int i = 0; i < FILES_OF_AN_ORDER; ++i)
            ASSERT_NO_FATAL_FAILURE(Judge(strKinds, maker, tally));
    } while (std::next_permutation(strKinds.begin(), strKinds.end()));
    EXPECT_EQ(720 * FILES_OF_AN_ORDER, tally.nFiles);
    // Every way of saving was taken many times.
    EXPECT_GT(tally.nUnchanged, 25 * FILES_OF_AN_ORDER);
    EXPECT_GT(tally.nInPlace, 25 * FILES_OF_AN_ORDER);
    EXPECT_GT(tally.nRewritten, 25 * FILES_OF_AN_ORDER);
}

TEST(WAVInfoSaveModel, ChunksThatAreMissingOrThereTwice)
{
    FileMaker maker(77);
    TALLY tally;
    const char* const aryKinds[] = {"fd",   "df",    "fdT",   "fTd",    "Tfd",    "fdU",    "fUd",    "Ufd",   "fdTU",
                                    "fdUT", "TUfd",  "UTfd",  "fTdTx",  "TfTdT",  "fdTTU",  "fdUTUT", "UfUdT", "fdUxU",
                                    "fxdx", "fdTxT", "fTUdx", "fUxTdL", "ffddTU", "fdLTLU", "TfdU",   "UfdT",  "fdxxx"};
    for (const char* pKinds : aryKinds)
    {
        for (int i = 0; i < FILES_OF_A_KIND; ++i)
            ASSERT_NO_FATAL_FAILURE(Judge(pKinds, maker, tally)) << pKinds;
    }
    EXPECT_EQ(27 * FILES_OF_A_KIND, tally.nFiles);
}
