#include "CueSheet.h"

#include "CueLine.h"
#include "TextDecode.h"

namespace
{
struct CUE_MODE
{
    std::string_view m_strWord;
    DISC_TRACK_MODE m_nMode;
    DISC_SESSION_TYPE m_nSessionType;
};

constexpr CUE_MODE s_aryModes[] = {
    {"AUDIO", DISC_AUDIO, DISC_SESSION_CDDA_OR_CDROM},
    {"MODE1/2048", DISC_MODE1_2048, DISC_SESSION_CDDA_OR_CDROM},
    {"MODE1/2352", DISC_MODE1_2352, DISC_SESSION_CDDA_OR_CDROM},
    {"MODE2/2048", DISC_MODE2_2048, DISC_SESSION_CDROM_XA},
    {"MODE2/2324", DISC_MODE2_2324, DISC_SESSION_CDROM_XA},
    {"MODE2/2336", DISC_MODE2_2336, DISC_SESSION_CDROM_XA},
    {"MODE2/2352", DISC_MODE2_2352, DISC_SESSION_CDROM_XA},
    {"CDI/2336", DISC_MODE2_2336, DISC_SESSION_CDI},
    {"CDI/2352", DISC_MODE2_2352, DISC_SESSION_CDI},
};

// Reads a sheet line by line. Each operation for a command takes the line behind the command's word and answers false
// on a fault that ends the reading.
class CueParser
{
public:
    CueParser(CUE_SHEET& sheet, SHEET_ERROR& error) : m_Sheet(sheet), m_Error(error) {}

    bool Parse(std::string_view strText)
    {
        m_Sheet = CUE_SHEET();
        m_Sheet.m_arySessions.emplace_back();
        while (!strText.empty())
        {
            m_nLine++;
            std::string_view strArguments = TakeLine(strText);
            std::string_view strCommand = TakeWord(strArguments);
            if (!strCommand.empty() && !Dispatch(strCommand, strArguments))
                return false;
        }
        return Finish();
    }

private:
    CUE_SHEET& m_Sheet;
    SHEET_ERROR& m_Error;
    int m_nLine = 0;
    long long m_nSession = 1;   // the number that the last REM SESSION gave
    bool m_bNewSession = false; // REM SESSION was seen, and no track of it yet

    bool Dispatch(std::string_view strCommand, std::string_view strArguments);

    bool Fail(std::string strText) { return FailAt(m_nLine, std::move(strText)); }
    bool FailAt(int nLine, std::string strText)
    {
        m_Error = {nLine, std::move(strText)};
        return false;
    }
    bool Warn(std::string strText)
    {
        if (m_Sheet.m_aryWarnings.size() < SHEET_MAX_WARNINGS)
            m_Sheet.m_aryWarnings.push_back({m_nLine, std::move(strText)});
        return true;
    }

    CUE_TRACK* GetTrack() { return m_Sheet.m_aryTracks.empty() ? nullptr : &m_Sheet.m_aryTracks.back(); }
    DISC_TEXT& GetText()
    {
        CUE_TRACK* pTrack = GetTrack();
        return pTrack != nullptr ? pTrack->m_Text : m_Sheet.m_Text;
    }

    bool ParseFile(std::string_view strArguments);
    bool ParseTrack(std::string_view strArguments);
    bool ParseTrackMode(std::string_view strWord, CUE_TRACK& track);
    bool ParseIndex(std::string_view strArguments);
    bool ParseFlags(std::string_view strArguments);
    bool ParseCatalog(std::string_view strArguments);
    bool ParseISRC(std::string_view strArguments);
    bool ParseRemark(std::string_view strArguments);
    bool ParsePregap(std::string_view str) { return ParseGap(str, "PREGAP", &CUE_TRACK::m_nPregap); }
    bool ParsePostgap(std::string_view str) { return ParseGap(str, "POSTGAP", &CUE_TRACK::m_nPostgap); }
    bool ParseGap(std::string_view strArguments, const char* pCommand, int CUE_TRACK::*pGap);
    bool ParseCDTextFile(std::string_view strArguments);
    bool ParseTime(std::string_view strWord, int& nSectors);
    template <std::string DISC_TEXT::*MEMBER>
    bool ParseText(std::string_view strArguments)
    {
        GetText().*MEMBER = UnquoteArgument(strArguments);
        return true;
    }
    bool Finish();
    bool CheckTrack(const CUE_TRACK& track);
};

bool CueParser::Dispatch(std::string_view strCommand, std::string_view strArguments)
{
    struct CUE_COMMAND
    {
        std::string_view m_strWord;
        bool (CueParser::*m_pParse)(std::string_view);
    };
    static constexpr CUE_COMMAND s_aryCommands[] = {
        {"FILE", &CueParser::ParseFile},
        {"TRACK", &CueParser::ParseTrack},
        {"INDEX", &CueParser::ParseIndex},
        {"PREGAP", &CueParser::ParsePregap},
        {"POSTGAP", &CueParser::ParsePostgap},
        {"FLAGS", &CueParser::ParseFlags},
        {"CATALOG", &CueParser::ParseCatalog},
        {"UPC_EAN", &CueParser::ParseCatalog},
        {"ISRC", &CueParser::ParseISRC},
        {"REM", &CueParser::ParseRemark},
        {"CDTEXTFILE", &CueParser::ParseCDTextFile},
        {"TITLE", &CueParser::ParseText<&DISC_TEXT::m_strTitle>},
        {"PERFORMER", &CueParser::ParseText<&DISC_TEXT::m_strPerformer>},
        {"SONGWRITER", &CueParser::ParseText<&DISC_TEXT::m_strSongwriter>},
        {"COMPOSER", &CueParser::ParseText<&DISC_TEXT::m_strComposer>},
        {"ARRANGER", &CueParser::ParseText<&DISC_TEXT::m_strArranger>},
        {"MESSAGE", &CueParser::ParseText<&DISC_TEXT::m_strMessage>},
        {"DISC_ID", &CueParser::ParseText<&DISC_TEXT::m_strDiscId>},
    };
    for (const CUE_COMMAND& command : s_aryCommands)
        if (EqualNoCase(strCommand, command.m_strWord))
            return (this->*command.m_pParse)(strArguments);
    return Warn("the command " + QuoteWord(strCommand) + " is unknown and was left out");
}

bool CueParser::ParseFile(std::string_view strArguments)
{
    CUE_FILE file;
    file.m_nLine = m_nLine;
    if (!ParseFileArguments(strArguments, file.m_strName, file.m_nKind))
        return Fail("FILE names no file; write FILE \"name\" and a type such as BINARY or WAVE");
    // Some programs repeat the line ahead of every track, while the times go on counting.
    bool bRepeated = !m_Sheet.m_aryFiles.empty() && m_Sheet.m_aryFiles.back().m_strName == file.m_strName;
    if (!bRepeated)
        m_Sheet.m_aryFiles.push_back(std::move(file));
    return true;
}

bool CueParser::ParseTrackMode(std::string_view strWord, CUE_TRACK& track)
{
    for (const CUE_MODE& mode : s_aryModes)
    {
        if (!EqualNoCase(strWord, mode.m_strWord))
            continue;
        track.m_nMode = mode.m_nMode;
        track.m_nSessionType = mode.m_nSessionType;
        track.m_nControl = mode.m_nMode == DISC_AUDIO ? 0 : TRACK_CONTROL_DATA;
        return true;
    }
    if (EqualNoCase(strWord, "CDG") || strWord.ends_with("/2448"))
        return Fail("tracks of type " + QuoteWord(strWord) +
                    " have sectors of 2448 bytes with graphics, which are not supported; make the image again without "
                    "sub-channel data, as AUDIO");
    return Fail("the track type " + QuoteWord(strWord) +
                " is unknown; write AUDIO, MODE1/2352, MODE1/2048, MODE2/2352 "
                "or MODE2/2336");
}

bool CueParser::ParseTrack(std::string_view strArguments)
{
    CUE_TRACK track;
    std::string_view strNumber = TakeWord(strArguments);
    track.m_nNumber = static_cast<int>(ParseDecimal(strNumber, LY_CD_MAX_TRACKS));
    track.m_nLine = m_nLine;
    if (track.m_nNumber < 1)
        return Fail("the track number " + QuoteWord(strNumber) + " is not one of 1 to 99; correct it");
    if (m_Sheet.m_aryFiles.empty())
        return Fail("no FILE line stands before the first TRACK; add one that names the image file");
    const CUE_TRACK* pBefore = GetTrack();
    if (pBefore != nullptr && track.m_nNumber != pBefore->m_nNumber + 1)
        return Fail("track " + std::to_string(track.m_nNumber) + " follows track " +
                    std::to_string(pBefore->m_nNumber) + ", but numbers rise by one; correct the numbers");
    if (!ParseTrackMode(TakeWord(strArguments), track))
        return false;
    if (pBefore != nullptr && !CheckTrack(*pBefore))
        return false;
    m_bNewSession = false;
    track.m_nSession = static_cast<int>(m_Sheet.m_arySessions.size()) - 1;
    m_Sheet.m_aryTracks.push_back(std::move(track));
    return true;
}

bool CueParser::ParseTime(std::string_view strWord, int& nSectors)
{
    nSectors = ParseMSF(strWord);
    return nSectors >= 0 ||
           Fail(QuoteWord(strWord) + " is no time; write minutes to 99, seconds to 59 and frames to 74 "
                                     "as mm:ss:ff");
}

bool CueParser::ParseIndex(std::string_view strArguments)
{
    CUE_TRACK* pTrack = GetTrack();
    if (pTrack == nullptr)
        return Fail("INDEX stands before the first TRACK; put the TRACK line ahead of it");
    CUE_INDEX index;
    std::string_view strNumber = TakeWord(strArguments);
    index.m_nNumber = static_cast<int>(ParseDecimal(strNumber, 99));
    index.m_nFile = static_cast<int>(m_Sheet.m_aryFiles.size()) - 1;
    index.m_nLine = m_nLine;
    if (index.m_nNumber < 0)
        return Fail("the index number " + QuoteWord(strNumber) + " is not one of 0 to 99; correct it");
    if (!ParseTime(TakeWord(strArguments), index.m_nSector))
        return false;
    bool bFirst = pTrack->m_aryIndexes.empty();
    if (bFirst ? index.m_nNumber > 1 : index.m_nNumber != pTrack->m_aryIndexes.back().m_nNumber + 1)
        return Fail("INDEX " + std::string(strNumber) + " is out of order; indexes start at 00 or 01 and rise by one");
    pTrack->m_aryIndexes.push_back(index);
    return true;
}

bool CueParser::ParseGap(std::string_view strArguments, const char* pCommand, int CUE_TRACK::*pGap)
{
    CUE_TRACK* pTrack = GetTrack();
    if (pTrack == nullptr)
        return Fail(std::string(pCommand) + " stands before the first TRACK; put the TRACK line ahead of it");
    return ParseTime(TakeWord(strArguments), pTrack->*pGap);
}

bool CueParser::ParseFlags(std::string_view strArguments)
{
    CUE_TRACK* pTrack = GetTrack();
    if (pTrack == nullptr)
        return Warn("FLAGS stands before the first TRACK and was left out");
    while (!strArguments.empty())
    {
        std::string_view strFlag = TakeWord(strArguments);
        unsigned char nBit = 0;
        if (EqualNoCase(strFlag, "DCP"))
            nBit = TRACK_CONTROL_COPY_PERMITTED;
        else if (EqualNoCase(strFlag, "4CH"))
            nBit = TRACK_CONTROL_FOUR_CHANNELS;
        else if (EqualNoCase(strFlag, "PRE"))
            nBit = TRACK_CONTROL_PRE_EMPHASIS;
        else if (!EqualNoCase(strFlag, "SCMS") && !EqualNoCase(strFlag, "DATA")) // no CONTROL bit; told by the mode
            (void)Warn("the flag " + QuoteWord(strFlag) + " is unknown and was left out");
        // Channels and pre-emphasis are matters of sound: on a data track their bits mean something else.
        if (pTrack->m_nMode == DISC_AUDIO || nBit == TRACK_CONTROL_COPY_PERMITTED)
            pTrack->m_nControl |= nBit;
    }
    return true;
}

bool CueParser::ParseCatalog(std::string_view strArguments)
{
    bool bValid = false;
    std::string strMCN = NormaliseMCN(UnquoteArgument(strArguments), bValid);
    if (!bValid)
        return Warn("the catalogue number " + QuoteWord(strArguments) + " has not 13 digits and was left out");
    if (!strMCN.empty())
        m_Sheet.m_strMCN = strMCN;
    return true;
}

bool CueParser::ParseISRC(std::string_view strArguments)
{
    bool bValid = false;
    std::string strISRC = NormaliseISRC(UnquoteArgument(strArguments), bValid);
    CUE_TRACK* pTrack = GetTrack();
    if (!bValid || pTrack == nullptr)
        return Warn("the ISRC " + QuoteWord(strArguments) + (bValid ? " belongs to no track" : " is malformed") +
                    " and was left out");
    pTrack->m_strISRC = strISRC;
    return true;
}

bool CueParser::ParseCDTextFile(std::string_view strArguments)
{
    m_Sheet.m_strCDTextFile = UnquoteArgument(strArguments);
    m_Sheet.m_nCDTextFileLine = m_nLine;
    return true;
}

// Remarks are free text but for these four, and a malformed one of these is free text too.
bool CueParser::ParseRemark(std::string_view strArguments)
{
    std::string_view strWord = TakeWord(strArguments);
    std::string_view strValue = TakeWord(strArguments);
    if (EqualNoCase(strWord, "SESSION"))
    {
        long long nSession = ParseDecimal(strValue, LY_CD_MAX_TRACKS);
        if (nSession <= m_nSession)
            return true;
        m_nSession = nSession;
        if (GetTrack() == nullptr || m_bNewSession)
            return true; // it names a session that is open and still empty
        m_bNewSession = true;
        m_Sheet.m_arySessions.emplace_back();
        return true;
    }
    int nSectors = ParseMSF(strValue);
    if (nSectors < 0)
        return true;
    if (EqualNoCase(strWord, "LEAD-OUT"))
        m_Sheet.m_arySessions.back().m_nLeadOut = nSectors;
    else if (EqualNoCase(strWord, "LEAD-IN") && m_bNewSession)
        m_Sheet.m_arySessions.back().m_nLeadIn = nSectors;
    else if (EqualNoCase(strWord, "PREGAP") && m_bNewSession)
        m_Sheet.m_arySessions.back().m_nPregap = nSectors;
    return true;
}

bool CueParser::CheckTrack(const CUE_TRACK& track)
{
    if (!track.m_aryIndexes.empty() && track.m_aryIndexes.back().m_nNumber >= 1)
        return true;
    return FailAt(track.m_nLine, "track " + std::to_string(track.m_nNumber) +
                                     " has no INDEX 01; add the line that tells where it starts");
}

bool CueParser::Finish()
{
    if (m_Sheet.m_aryTracks.empty())
        return FailAt(0, "this is not a CUE sheet, for it has no TRACK line; open the .cue file of the image");
    if (m_bNewSession)
        m_Sheet.m_arySessions.pop_back(); // opened at the end, with nothing in it
    return CheckTrack(m_Sheet.m_aryTracks.back());
}
} // namespace

bool ParseCueSheet(const std::string& strText, CUE_SHEET& sheet, SHEET_ERROR& error)
{
    return CueParser(sheet, error).Parse(strText);
}
