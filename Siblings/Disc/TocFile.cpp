#include "TocFile.h"

#include "TocLexer.h"

namespace
{
constexpr long long MAX_AMOUNT = 1000000000000; // samples or bytes: far beyond any disc, far below an overflow

struct TOC_MODE
{
    std::string_view m_strWord;
    DISC_TRACK_MODE m_nMode;
};

constexpr TOC_MODE s_aryModes[] = {{"AUDIO", DISC_AUDIO},
                                   {"MODE1", DISC_MODE1_2048},
                                   {"MODE1_RAW", DISC_MODE1_2352},
                                   {"MODE2", DISC_MODE2_2336},
                                   {"MODE2_RAW", DISC_MODE2_2352},
                                   {"MODE2_FORM1", DISC_MODE2_2048},
                                   {"MODE2_FORM2", DISC_MODE2_2324},
                                   {"MODE2_FORM_MIX", DISC_MODE2_2336}};

const TOC_MODE* FindMode(std::string_view strWord)
{
    for (const TOC_MODE& mode : s_aryModes)
        if (strWord == mode.m_strWord)
            return &mode;
    return nullptr;
}

// Reads a file statement by statement. Each operation for a statement is called behind its first word and answers
// false on a fault, which ends the reading.
class TocParser
{
public:
    TocParser(std::string_view strText, TOC_SHEET& sheet, SHEET_ERROR& error)
        : m_Lexer(strText), m_Sheet(sheet), m_Error(error)
    {
    }

    bool Parse()
    {
        m_Sheet = TOC_SHEET();
        while (m_Lexer.Peek().m_nType != TOC_END)
        {
            m_nLine = m_Lexer.Peek().m_nLine;
            TOC_TOKEN token = m_Lexer.Take();
            if (token.m_nType != TOC_WORD)
                return Fail(QuoteWord(token.m_strText) + " stands where a statement should start; correct the file");
            if (!(m_Sheet.m_aryTracks.empty() ? ParseHeader(token.m_strText) : ParseStatement(token.m_strText)))
                return false;
        }
        if (!m_Sheet.m_aryTracks.empty())
            return CheckTrack();
        m_nLine = 0;
        return Fail("this is not a TOC file, for it has no TRACK statement; open the .toc file of the image");
    }

private:
    TocLexer m_Lexer;
    TOC_SHEET& m_Sheet;
    SHEET_ERROR& m_Error;
    int m_nLine = 1; // of the statement being read

    TOC_TRACK& GetTrack() { return m_Sheet.m_aryTracks.back(); }

    bool Fail(std::string strText)
    {
        m_Error = {m_nLine, std::move(strText)};
        return false;
    }
    bool Warn(std::string strText)
    {
        if (m_Sheet.m_aryWarnings.size() < SHEET_MAX_WARNINGS)
            m_Sheet.m_aryWarnings.push_back({m_nLine, std::move(strText)});
        return true;
    }

    bool TakeWordIf(std::string_view strWord);
    bool IsAmountNext() const;
    bool TakeString(const char* pStatement, std::string& strText);
    bool TakeAmount(const char* pStatement, TOC_AMOUNT& amount);
    bool TakeTime(const char* pStatement, int& nSectors);

    bool ParseHeader(const std::string& strWord);
    bool ParseStatement(const std::string& strWord);
    bool ParseFlag(const std::string& strWord, bool& bKnown);
    bool ParsePlace(const std::string& strWord, bool& bKnown);
    bool ParseTrack();
    bool CheckTrack();
    bool ParseCatalog();
    bool ParseISRC();
    bool ParseFirstTrack();
    bool ParseText(DISC_TEXT& text);
    bool ParseLanguage(DISC_TEXT& text);
    bool ParseSilence(const char* pStatement);
    bool ParseFile(TOC_PIECE_TYPE type, const char* pStatement);
    bool ParsePregap();
    bool ParseStart();
    bool ParseIndex();
    bool SkipBlock();
};

bool TocParser::TakeWordIf(std::string_view strWord)
{
    if (m_Lexer.Peek().m_nType != TOC_WORD || m_Lexer.Peek().m_strText != strWord)
        return false;
    (void)m_Lexer.Take();
    return true;
}

bool TocParser::IsAmountNext() const
{
    const TOC_TOKEN& token = m_Lexer.Peek();
    return token.m_nType == TOC_WORD && token.m_strText[0] >= '0' && token.m_strText[0] <= '9';
}

bool TocParser::TakeString(const char* pStatement, std::string& strText)
{
    TOC_TOKEN token = m_Lexer.Take();
    strText = token.m_strText;
    if (token.m_nType == TOC_BROKEN)
        return Fail(QuoteWord(strText) + " lacks its second quotation mark; add it");
    return token.m_nType == TOC_STRING || Fail(std::string(pStatement) + " is not followed by a text; write one in "
                                                                         "quotation marks");
}

bool TocParser::TakeAmount(const char* pStatement, TOC_AMOUNT& amount)
{
    TOC_TOKEN token = m_Lexer.Take();
    amount.m_bSectors = token.m_strText.find(':') != std::string::npos;
    amount.m_nValue = amount.m_bSectors ? ParseMSF(token.m_strText) : ParseDecimal(token.m_strText, MAX_AMOUNT);
    if (token.m_nType == TOC_WORD && amount.m_nValue >= 0)
        return true;
    return Fail(std::string(pStatement) + ": " + QuoteWord(token.m_strText) +
                " is no length; write a number, or minutes to 99, seconds to 59 and frames to 74 as mm:ss:ff");
}

bool TocParser::TakeTime(const char* pStatement, int& nSectors)
{
    TOC_AMOUNT amount;
    if (!TakeAmount(pStatement, amount))
        return false;
    nSectors = static_cast<int>(amount.m_nValue);
    return amount.m_bSectors || Fail(std::string(pStatement) + " takes a time; write it as mm:ss:ff");
}

bool TocParser::ParseHeader(const std::string& strWord)
{
    if (strWord == "TRACK")
        return ParseTrack();
    if (strWord == "CATALOG")
        return ParseCatalog();
    if (strWord == "CD_TEXT")
        return ParseText(m_Sheet.m_Text);
    if (strWord == "FIRST_TRACK_NO")
        return ParseFirstTrack();
    if (strWord == "CD_DA" || strWord == "CD_ROM")
        m_Sheet.m_nType = DISC_SESSION_CDDA_OR_CDROM; // of several the last counts
    else if (strWord == "CD_ROM_XA")
        m_Sheet.m_nType = DISC_SESSION_CDROM_XA;
    else if (strWord == "CD_I")
        m_Sheet.m_nType = DISC_SESSION_CDI;
    else
        return Fail("the statement " + QuoteWord(strWord) +
                    " is unknown ahead of the first TRACK; correct or remove it");
    return true;
}

bool TocParser::ParseStatement(const std::string& strWord)
{
    if (strWord == "TRACK")
        return CheckTrack() && ParseTrack();
    bool bKnown = true;
    if (!ParseFlag(strWord, bKnown))
        return false;
    if (bKnown)
        return true;
    bKnown = true;
    if (!ParsePlace(strWord, bKnown))
        return false;
    if (bKnown)
        return true;
    if (strWord == "SILENCE" || strWord == "ZERO")
        return ParseSilence(strWord.c_str());
    if (strWord == "FILE" || strWord == "AUDIOFILE")
        return ParseFile(TOC_PIECE_AUDIO, strWord.c_str());
    if (strWord == "DATAFILE")
        return ParseFile(TOC_PIECE_DATA, "DATAFILE");
    if (strWord == "FIFO")
        return Fail("FIFO names a pipe, which cannot be read as a disc; write its content to a file and name that");
    return Fail("the statement " + QuoteWord(strWord) + " is unknown; correct or remove it");
}

// Statements that say what the track is.
bool TocParser::ParseFlag(const std::string& strWord, bool& bKnown)
{
    bool bOff = strWord == "NO";
    std::string strFlag = strWord;
    if (bOff)
        strFlag = m_Lexer.Take().m_strText;
    unsigned char nBit = 0;
    if (strFlag == "COPY")
        nBit = TRACK_CONTROL_COPY_PERMITTED;
    else if (strFlag == "PRE_EMPHASIS")
        nBit = TRACK_CONTROL_PRE_EMPHASIS;
    else if (bOff)
        return Fail("NO is followed by " + QuoteWord(strFlag) + "; only COPY and PRE_EMPHASIS can be denied");
    else if (strFlag == "TWO_CHANNEL_AUDIO" || strFlag == "FOUR_CHANNEL_AUDIO")
    {
        bOff = strFlag == "TWO_CHANNEL_AUDIO";
        nBit = TRACK_CONTROL_FOUR_CHANNELS;
    }
    else if (strFlag == "ISRC")
        return ParseISRC();
    else if (strFlag == "CD_TEXT")
        return ParseText(GetTrack().m_Text);
    else
        bKnown = false;
    // Channels and pre-emphasis are matters of sound: on a data track their bits mean something else.
    if (GetTrack().m_nMode != DISC_AUDIO && nBit != TRACK_CONTROL_COPY_PERMITTED)
        nBit = 0;
    unsigned char& nControl = GetTrack().m_nControl;
    nControl = static_cast<unsigned char>(bOff ? nControl & ~nBit : nControl | nBit);
    return true;
}

// Statements that mark places in the track.
bool TocParser::ParsePlace(const std::string& strWord, bool& bKnown)
{
    if (strWord == "PREGAP")
        return ParsePregap();
    if (strWord == "START")
        return ParseStart();
    if (strWord == "INDEX")
        return ParseIndex();
    int nIgnored = 0;
    if (strWord == "END") // where a post-gap starts; nothing on a disc tells it
        return !IsAmountNext() || TakeTime("END", nIgnored);
    bKnown = false;
    return true;
}

bool TocParser::ParseTrack()
{
    TOC_TRACK track;
    track.m_nLine = m_nLine;
    TOC_TOKEN token = m_Lexer.Take();
    const TOC_MODE* pMode = FindMode(token.m_strText);
    if (pMode == nullptr)
        return Fail("the track mode " + QuoteWord(token.m_strText) +
                    " is unknown; write AUDIO, MODE1, MODE1_RAW, MODE2, MODE2_RAW or MODE2_FORM_MIX");
    if (TakeWordIf("RW") || TakeWordIf("RW_RAW"))
        return Fail(
            "the track holds sub-channel data, in sectors of 2448 bytes, which are not supported; make the image "
            "again without sub-channel data");
    if (m_Sheet.m_nFirstTrack + static_cast<int>(m_Sheet.m_aryTracks.size()) > LY_CD_MAX_TRACKS)
        return Fail("there are tracks beyond number 99; split the file into several discs");
    track.m_nMode = pMode->m_nMode;
    track.m_nControl = pMode->m_nMode == DISC_AUDIO ? 0 : TRACK_CONTROL_DATA;
    m_Sheet.m_aryTracks.push_back(std::move(track));
    return true;
}

bool TocParser::CheckTrack()
{
    if (!GetTrack().m_aryPieces.empty())
        return true;
    m_nLine = GetTrack().m_nLine;
    return Fail("the track has no content; add a FILE, DATAFILE, SILENCE or ZERO statement");
}

bool TocParser::ParseCatalog()
{
    std::string strCode;
    bool bValid = false;
    if (!TakeString("CATALOG", strCode))
        return false;
    m_Sheet.m_strMCN = NormaliseMCN(strCode, bValid);
    return bValid || Warn("the catalogue number " + QuoteWord(strCode) + " has not 13 digits and was left out");
}

bool TocParser::ParseISRC()
{
    std::string strCode;
    bool bValid = false;
    if (!TakeString("ISRC", strCode))
        return false;
    GetTrack().m_strISRC = NormaliseISRC(strCode, bValid);
    return bValid || Warn("the ISRC " + QuoteWord(strCode) + " is malformed and was left out");
}

bool TocParser::ParseFirstTrack()
{
    TOC_TOKEN token = m_Lexer.Take();
    m_Sheet.m_nFirstTrack = static_cast<int>(ParseDecimal(token.m_strText, LY_CD_MAX_TRACKS));
    return m_Sheet.m_nFirstTrack >= 1 ||
           Fail("the track number " + QuoteWord(token.m_strText) + " is not one of 1 to 99; correct it");
}

// CD_TEXT { LANGUAGE_MAP { 0 : EN } LANGUAGE 0 { TITLE "..." ... } }
bool TocParser::ParseText(DISC_TEXT& text)
{
    if (m_Lexer.Take().m_nType != TOC_OPEN)
        return Fail("CD_TEXT is not followed by an opening brace; add it");
    for (;;)
    {
        TOC_TOKEN token = m_Lexer.Take();
        if (token.m_nType == TOC_CLOSE)
            return true;
        bool bGood = token.m_nType == TOC_WORD;
        if (bGood && token.m_strText == "LANGUAGE")
        {
            (void)m_Lexer.Take(); // the number: the first language that has a text gives it
            bGood = ParseLanguage(text);
        }
        else if (bGood)
            bGood = m_Lexer.Take().m_nType == TOC_OPEN && SkipBlock();
        if (!bGood)
            return Fail("the CD_TEXT block is malformed or not closed; correct or remove it");
    }
}

bool TocParser::ParseLanguage(DISC_TEXT& text)
{
    struct TEXT_ITEM
    {
        std::string_view m_strWord;
        std::string DISC_TEXT::*m_pText;
    };
    static constexpr TEXT_ITEM s_aryItems[] = {
        {"TITLE", &DISC_TEXT::m_strTitle},           {"PERFORMER", &DISC_TEXT::m_strPerformer},
        {"SONGWRITER", &DISC_TEXT::m_strSongwriter}, {"COMPOSER", &DISC_TEXT::m_strComposer},
        {"ARRANGER", &DISC_TEXT::m_strArranger},     {"MESSAGE", &DISC_TEXT::m_strMessage},
        {"DISC_ID", &DISC_TEXT::m_strDiscId}};
    if (m_Lexer.Take().m_nType != TOC_OPEN)
        return false;
    std::string strItem;
    for (;;)
    {
        TOC_TOKEN token = m_Lexer.Take();
        if (token.m_nType == TOC_CLOSE)
            return true;
        if (token.m_nType == TOC_WORD)
            strItem = token.m_strText;
        else if (token.m_nType == TOC_STRING)
        {
            for (const TEXT_ITEM& item : s_aryItems)
                if (strItem == item.m_strWord && (text.*item.m_pText).empty())
                    text.*item.m_pText = token.m_strText;
        }
        else if (token.m_nType != TOC_OPEN || !SkipBlock())
            return false;
    }
}

// Binary CD-Text and the map of languages: numbers up to the closing brace.
bool TocParser::SkipBlock()
{
    TOC_TOKEN token;
    do
        token = m_Lexer.Take();
    while (token.m_nType == TOC_WORD || token.m_nType == TOC_STRING);
    return token.m_nType == TOC_CLOSE;
}

bool TocParser::ParseSilence(const char* pStatement)
{
    while (m_Lexer.Peek().m_nType == TOC_WORD && !IsAmountNext() &&
           (FindMode(m_Lexer.Peek().m_strText) != nullptr || m_Lexer.Peek().m_strText.starts_with("RW")))
        (void)m_Lexer.Take(); // ZERO may repeat the track's mode
    TOC_PIECE piece;
    piece.m_nLine = m_nLine;
    if (!TakeAmount(pStatement, piece.m_Length))
        return false;
    GetTrack().m_aryPieces.push_back(std::move(piece));
    return true;
}

bool TocParser::ParseFile(TOC_PIECE_TYPE type, const char* pStatement)
{
    TOC_PIECE piece;
    piece.m_nType = type;
    piece.m_nLine = m_nLine;
    if ((type == TOC_PIECE_DATA) != (GetTrack().m_nMode != DISC_AUDIO))
        return Fail(std::string(pStatement) + " does not fit the mode of its track; write FILE in an audio track and "
                                              "DATAFILE in a data track");
    if (!TakeString(pStatement, piece.m_strName))
        return false;
    if (piece.m_strName == "-")
        return Fail("the standard input cannot be read as a disc; write its content to a file and name that");
    piece.m_bSwap = TakeWordIf("SWAP");
    if (m_Lexer.Peek().m_nType == TOC_WORD && m_Lexer.Peek().m_strText.starts_with('#'))
    {
        std::string strOffset = m_Lexer.Take().m_strText.substr(1);
        if (strOffset.empty())
            strOffset = m_Lexer.Take().m_strText;
        piece.m_nByteOffset = ParseDecimal(strOffset, MAX_AMOUNT);
        if (piece.m_nByteOffset < 0)
            return Fail("#" + strOffset + " is no offset; write a number of bytes behind the mark");
    }
    if (type == TOC_PIECE_AUDIO && !TakeAmount(pStatement, piece.m_Start))
        return false;
    if (IsAmountNext() && !TakeAmount(pStatement, piece.m_Length))
        return false;
    GetTrack().m_aryPieces.push_back(std::move(piece));
    return true;
}

bool TocParser::ParsePregap()
{
    TOC_PIECE piece;
    int nSectors = 0;
    piece.m_nLine = m_nLine;
    if (!TakeTime("PREGAP", nSectors))
        return false;
    if (!GetTrack().m_aryPieces.empty())
        return Fail("PREGAP stands behind content of its track; put it ahead of that, or use SILENCE and START");
    piece.m_Length = {nSectors, true};
    GetTrack().m_aryPieces.push_back(std::move(piece));
    GetTrack().m_nStartPiece = 1;
    return true;
}

bool TocParser::ParseStart()
{
    GetTrack().m_nStartPiece = static_cast<int>(GetTrack().m_aryPieces.size());
    GetTrack().m_nStartSector = -1;
    return !IsAmountNext() || TakeTime("START", GetTrack().m_nStartSector);
}

bool TocParser::ParseIndex()
{
    int nSectors = 0;
    std::vector<int>& aryIndexes = GetTrack().m_aryIndexes;
    if (!TakeTime("INDEX", nSectors))
        return false;
    if (nSectors <= (aryIndexes.empty() ? 0 : aryIndexes.back()))
        return Fail("the index at " + FormatSheetTime(nSectors) +
                    " lies before the one ahead of it; correct the times");
    if (aryIndexes.size() >= 98) // INDEX 99 is the last
        return Fail("the track has more than 99 indexes; remove some");
    aryIndexes.push_back(nSectors);
    return true;
}
} // namespace

bool ParseTocFile(const std::string& strText, TOC_SHEET& sheet, SHEET_ERROR& error)
{
    return TocParser(strText, sheet, error).Parse();
}
