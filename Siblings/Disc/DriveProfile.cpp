// The keys of a drive profile, and what each line of it becomes.

#include "DriveProfile.h"
#include "CueLine.h"
#include "ProfileValue.h"
#include "ReadOffsetOption.h"
#include "TextDecode.h"
#include <algorithm>
#include <set>

namespace
{
using READER = bool (*)(DRIVE_PROFILE& profile, std::string_view strValue);

struct PROFILE_KEY
{
    const char* m_pName;
    READER m_pRead;
    const char* m_pWanted; // the words that follow "; write "
    bool m_bFault = false; // may stand more than once
};

// Text of an INQUIRY field: printable ASCII (SPC-3, 4.4.1).
bool ReadName(std::string& strName, std::string_view strValue, int nMaxBytes)
{
    for (const char c : strValue)
        if (c < 0x20 || c > 0x7E)
            return false;
    strName = strValue;
    return strValue.size() <= static_cast<size_t>(nMaxBytes);
}

bool ReadModePage(DRIVE_PROFILE& profile, std::string_view strValue)
{
    constexpr size_t MAX_PAGE_BYTES = 2 + 255;
    constexpr int LAST_PAGE = 0x3E;
    std::vector<unsigned char> page;
    if (!ParseProfileBytes(strValue, MAX_PAGE_BYTES, page) || page.size() < 2 || page[1] != page.size() - 2)
        return false;
    const int nCode = page[0];
    return nCode >= 1 && nCode <= LAST_PAGE && profile.m_mapModePages.emplace(nCode, page).second;
}

bool ReadCache(DRIVE_PROFILE& profile, std::string_view strValue)
{
    if (EqualNoCase(strValue, "yes") || EqualNoCase(strValue, "no"))
    {
        profile.m_nCacheKiB = EqualNoCase(strValue, "yes") ? PROFILE_CACHE_AS_BUFFER : 0;
        return true;
    }
    return ParseProfileInt(strValue, 0, PROFILE_MAX_KIB, profile.m_nCacheKiB);
}

bool ReadSeed(DRIVE_PROFILE& profile, std::string_view strValue)
{
    long long nSeed = 0;
    if (!ParseProfileNumber(strValue, 0, 999999999999999999, nSeed))
        return false;
    profile.m_nSeed = static_cast<unsigned long long>(nSeed);
    return true;
}

// As the option that corrects it is written.
bool ReadReadOffset(DRIVE_PROFILE& profile, std::string_view strValue)
{
    const std::optional<int> nFrames = ParseReadOffset(WidenUTF8(strValue));
    profile.m_nReadOffset = nFrames.value_or(0);
    return nFrames.has_value();
}

bool ReadUnreadable(DRIVE_PROFILE& profile, std::string_view strValue)
{
    constexpr int MAX_EVERY = 1000000;
    const auto aryParts = SplitProfileList(strValue, 3);
    UNREADABLE_FAULT fault;
    if (aryParts.size() > 2 || !ParseProfileRange(aryParts[0], fault.m_Range))
        return false;
    if (aryParts.size() == 2)
    {
        std::string_view strRest = aryParts[1];
        if (!EqualNoCase(TakeWord(strRest), "every"))
        {
            if (!ParseProfileProbability(aryParts[1], fault.m_nPPM))
                return false;
        }
        else if (!ParseProfileInt(TrimBlanks(strRest), 1, MAX_EVERY, fault.m_nEvery))
            return false;
    }
    profile.m_aryUnreadable.push_back(fault);
    return true;
}

bool ReadDiffers(DRIVE_PROFILE& profile, std::string_view strValue)
{
    LBA_RANGE range;
    if (!ParseProfileRange(strValue, range))
        return false;
    profile.m_aryDiffers.push_back(range);
    return true;
}

bool ReadJitter(DRIVE_PROFILE& profile, std::string_view strValue)
{
    const auto aryParts = SplitProfileList(strValue, 3);
    JITTER_FAULT fault;
    if (aryParts.size() != 2 || !ParseProfileRange(aryParts[0], fault.m_Range) ||
        !ParseProfileInt(aryParts[1], 1, PROFILE_MAX_JITTER, fault.m_nMaxFrames))
        return false;
    profile.m_aryJitter.push_back(fault);
    return true;
}

bool ReadSilentErrors(DRIVE_PROFILE& profile, std::string_view strValue)
{
    const auto aryParts = SplitProfileList(strValue, 4);
    SILENT_FAULT fault;
    if (aryParts.size() < 2 || aryParts.size() > 3 || !ParseProfileRange(aryParts[0], fault.m_Range) ||
        !ParseProfileInt(aryParts[1], 1, LY_CD_SECTOR_BYTES, fault.m_nBytes) ||
        (aryParts.size() == 3 && !ParseProfileProbability(aryParts[2], fault.m_nPPM)))
        return false;
    profile.m_arySilent.push_back(fault);
    return true;
}

bool ReadHang(DRIVE_PROFILE& profile, std::string_view strValue)
{
    constexpr int MS_PER_SECOND = 1000;
    const auto aryParts = SplitProfileList(strValue, 3);
    HANG_FAULT fault;
    long long nMs = 0;
    if (aryParts.size() != 2 || !ParseProfileTrigger(aryParts[0], fault.m_When) ||
        !ParseProfileDecimal(aryParts[1], MS_PER_SECOND, PROFILE_MAX_HANG_MS, nMs))
        return false;
    fault.m_nMs = static_cast<int>(nMs);
    profile.m_aryHangs.push_back(fault);
    return true;
}

bool ReadUnitAttention(DRIVE_PROFILE& profile, std::string_view strValue)
{
    constexpr int MAX_TIMES = 100;
    const auto aryParts = SplitProfileList(strValue, 4);
    ATTENTION_FAULT fault;
    if (aryParts.size() > 3 || !ParseProfileTrigger(aryParts[0], fault.m_When) ||
        (aryParts.size() > 1 && !ParseProfileSense(aryParts[1], fault.m_Sense)) ||
        (aryParts.size() > 2 && !ParseProfileInt(aryParts[2], 1, MAX_TIMES, fault.m_nTimes)) ||
        fault.m_Sense.m_nKey != SENSE_UNIT_ATTENTION)
        return false;
    profile.m_aryAttentions.push_back(fault);
    return true;
}

bool ReadRemove(DRIVE_PROFILE& profile, std::string_view strValue)
{
    COMMAND_TRIGGER when;
    if (!ParseProfileTrigger(strValue, when))
        return false;
    profile.m_aryRemovals.push_back(when);
    return true;
}

bool ReadChangeDisc(DRIVE_PROFILE& profile, std::string_view strValue)
{
    const auto aryParts = SplitProfileList(strValue, 2); // the path may hold commas
    CHANGE_FAULT fault;
    if (aryParts.size() != 2 || aryParts[1].empty() || !ParseProfileTrigger(aryParts[0], fault.m_When))
        return false;
    fault.m_strImage = aryParts[1];
    profile.m_aryChanges.push_back(fault);
    return true;
}

bool ReadFailRate(DRIVE_PROFILE& profile, std::string_view strValue)
{
    const auto aryParts = SplitProfileList(strValue, 3);
    FAIL_FAULT fault;
    std::string_view strRate = aryParts[0];
    fault.m_bReads = EqualNoCase(TakeWord(strRate), "read");
    if (aryParts.size() != 2 || !ParseProfileSense(aryParts[1], fault.m_Sense) ||
        !ParseProfileProbability(fault.m_bReads ? TrimBlanks(strRate) : aryParts[0], fault.m_nPPM))
        return false;
    profile.m_aryFails.push_back(fault);
    return true;
}

template <int DRIVE_PROFILE::*pMember, int nMin, int nMax>
bool ReadInt(DRIVE_PROFILE& profile, std::string_view strValue)
{
    return ParseProfileInt(strValue, nMin, nMax, profile.*pMember);
}

template <std::string DRIVE_PROFILE::*pMember, int nMaxBytes>
bool ReadText(DRIVE_PROFILE& profile, std::string_view strValue)
{
    return ReadName(profile.*pMember, strValue, nMaxBytes);
}

bool ReadImage(DRIVE_PROFILE& profile, std::string_view strValue)
{
    profile.m_strImage = strValue;
    return !strValue.empty();
}

using P = DRIVE_PROFILE; // so that a row stays a row
const PROFILE_KEY s_aryKeys[] = {
    {"Image", ReadImage, "the name of an image, as in \"Image = disc.cue\""},
    {"Vendor", ReadText<&P::m_strVendor, INQUIRY_VENDOR_BYTES>, "at most 8 characters of ASCII"},
    {"Model", ReadText<&P::m_strModel, INQUIRY_PRODUCT_BYTES>, "at most 16 characters of ASCII"},
    {"Revision", ReadText<&P::m_strRevision, INQUIRY_REVISION_BYTES>, "at most 4 characters of ASCII"},
    {"ModePage", ReadModePage, "one page in hexadecimal, its code and its true length first, each page once", true},
    {"Buffer", ReadInt<&P::m_nBufferKiB, 0, PROFILE_MAX_KIB>, "a number of KiB up to 65535"},
    {"Cache", ReadCache, "\"yes\", \"no\" or a number of KiB up to 65535"},
    {"CacheSegment", ReadInt<&P::m_nSegmentKiB, 3, PROFILE_MAX_KIB>, "a number of KiB from 3 to 65535"},
    {"ReadAhead", ReadInt<&P::m_nReadAhead, 0, PROFILE_MAX_READ_AHEAD>, "a number of sectors up to 10000"},
    {"Latency", ReadInt<&P::m_nLatencyMs, 0, PROFILE_MAX_MS>, "a number of milliseconds up to 60000"},
    {"SpinUp", ReadInt<&P::m_nSpinUpMs, 0, PROFILE_MAX_MS>, "a number of milliseconds up to 60000"},
    {"SpinDownAfter", ReadInt<&P::m_nSpinDownAfterMs, 0, PROFILE_MAX_IDLE_MS>,
     "a number of milliseconds up to 3600000"},
    {"Seek", ReadInt<&P::m_nSeekMs, 0, PROFILE_MAX_MS>, "a number of milliseconds up to 60000"},
    {"Speed", ReadInt<&P::m_nSpeed, 1, PROFILE_MAX_SPEED>, "a multiple from 1 to 372, as in \"Speed = 48\""},
    {"ReadOffset", ReadReadOffset, "a number of sample frames from -44100 to 44100"},
    {"Seed", ReadSeed, "a number of at most 18 digits"},
    {"Unreadable", ReadUnreadable, "sectors, as in \"100-110\", \"100-110, every 3\" or \"100-110, 50%\"", true},
    {"Differs", ReadDiffers, "sectors, as in \"100-110\"", true},
    {"Jitter", ReadJitter, "sectors and at most 588 samples, as in \"100-110, 12\"", true},
    {"SilentErrors", ReadSilentErrors, "sectors, bytes and perhaps a probability, as in \"100-110, 4, 50%\"", true},
    {"Hang", ReadHang, "a command and at most 600 seconds, as in \"12, 2.5\" or \"read 12, 2.5\"", true},
    {"UnitAttention", ReadUnitAttention,
     "a command, perhaps a sense with key 6 and how often, as in \"12, 6/29/00, 3\"", true},
    {"Remove", ReadRemove, "a command, as in \"12\" or \"read 12\"", true},
    {"ChangeDisc", ReadChangeDisc, "a command and an image, as in \"read 12, other.cue\"", true},
    {"FailRate", ReadFailRate, "a probability and a sense, as in \"1%, 4/44/00\" or \"read 0.05, 3/11/05\"", true},
};

const PROFILE_KEY* FindKey(std::string_view strName)
{
    for (const PROFILE_KEY& key : s_aryKeys)
        if (EqualNoCase(strName, key.m_pName))
            return &key;
    return nullptr;
}

// One line that is neither empty nor a comment. The sentence on what is wrong; empty if nothing is.
std::string ReadLine(std::string_view strLine, DRIVE_PROFILE& profile, std::set<const PROFILE_KEY*>& keys)
{
    const size_t nEquals = strLine.find('=');
    if (nEquals == std::string_view::npos)
        return QuoteWord(strLine) + " is no setting; write \"Key = Value\", or \"#\" ahead of a comment";
    const std::string_view strName = TrimBlanks(strLine.substr(0, nEquals));
    const std::string_view strValue = TrimBlanks(strLine.substr(nEquals + 1));
    const PROFILE_KEY* pKey = FindKey(strName);
    if (pKey == nullptr)
        return "the key " + QuoteWord(strName) + " is unknown; correct its spelling or take the line out";
    if (!keys.insert(pKey).second && !pKey->m_bFault)
        return std::string("\"") + pKey->m_pName + "\" stands twice; keep one of the lines";
    if (!pKey->m_pRead(profile, strValue))
        return QuoteWord(strValue) + " does not do for \"" + pKey->m_pName + "\"; write " + pKey->m_pWanted;
    return {};
}

// One buffer size, whether a line of its own tells it or the bytes 12 and 13 of page 2Ah.
void SettleBuffer(DRIVE_PROFILE& profile)
{
    constexpr size_t BUFFER_OFFSET = 12;
    const auto pPage = profile.m_mapModePages.find(MODE_PAGE_CAPABILITIES);
    const bool bPage = pPage != profile.m_mapModePages.end() && pPage->second.size() >= BUFFER_OFFSET + 2;
    if (profile.m_nBufferKiB < 0)
        profile.m_nBufferKiB = bPage ? static_cast<int>(MMCGet16(&pPage->second[BUFFER_OFFSET])) : 0;
    else if (bPage)
        MMCPut16(&pPage->second[BUFFER_OFFSET], static_cast<unsigned int>(profile.m_nBufferKiB));
}

// What the lines say together.
bool CheckProfile(DRIVE_PROFILE& profile, SHEET_ERROR& error)
{
    SettleBuffer(profile);
    if (profile.m_nCacheKiB < 0)
        profile.m_nCacheKiB = profile.m_nBufferKiB;
    error.m_nLine = 0;
    if (profile.m_nCacheKiB > profile.m_nBufferKiB)
        error.m_strText = "\"Cache\" is larger than \"Buffer\", of which it is a part; make \"Buffer\" as large";
    else if (profile.m_nSegmentKiB > profile.m_nCacheKiB)
        error.m_strText = "\"CacheSegment\" is larger than the cache; make it smaller or take the line out";
    return error.m_strText.empty();
}

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

// A comment begins a line, or stands behind it between blanks; "disc #1.cue" is a name.
std::string_view CutComment(std::string_view strLine)
{
    for (size_t n = 0; n < strLine.size(); ++n)
    {
        const bool bAlone = n + 1 == strLine.size() || IsBlank(strLine[n + 1]);
        if (strLine[n] == '#' && (TrimBlanks(strLine.substr(0, n)).empty() || (bAlone && IsBlank(strLine[n - 1]))))
            return strLine.substr(0, n);
    }
    return strLine;
}
} // namespace

bool ParseDriveProfile(const std::string& strText, DRIVE_PROFILE& profile, SHEET_ERROR& error)
{
    profile = {};
    error = {};
    std::set<const PROFILE_KEY*> keys;
    std::string_view strRest = strText;
    for (int nFaults = 0; !strRest.empty();)
    {
        ++error.m_nLine;
        const std::string_view strLine = TrimBlanks(CutComment(TakeLine(strRest)));
        if (strLine.empty())
            continue;
        error.m_strText = ReadLine(strLine, profile, keys);
        if (error.m_strText.empty() && ++nFaults > PROFILE_MAX_FAULTS)
            error.m_strText = "the profile has more than 1000 settings; join ranges of sectors that touch";
        if (!error.m_strText.empty())
            return false;
    }
    return CheckProfile(profile, error);
}
