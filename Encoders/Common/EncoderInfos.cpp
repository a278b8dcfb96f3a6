// SetInfo and GetInfo: what is set and asked by name. EncoderBase.h declares them.

#include "EncoderBase.h"
#include "UTF8.h"

namespace
{
constexpr std::string_view TAG_PREFIX = "tag ";
constexpr long long MAX_FRAMES = 0xFFFFFFFFFLL; // 36 bits, as FLAC counts them

constexpr long long NO_NUMBER = -1;

struct NUMBER_INFO
{
    const char* pKey;
    long long nMin;
    long long nMax;
};
constexpr NUMBER_INFO s_infoSampleRate = {"sample rate", 1, ENCODER_FORMAT::MAX_SAMPLE_RATE};
constexpr NUMBER_INFO s_infoChannels = {"channels", 1, ENCODER_FORMAT::MAX_CHANNELS};
constexpr NUMBER_INFO s_infoBits = {"bits", 1, 32};
constexpr NUMBER_INFO s_infoExpected = {"expected frames", 0, MAX_FRAMES};

// A name of a file may hold any bytes; a tag is text.
std::string MakeValid(const std::string& strValue)
{
    std::wstring strWide = WidenUTF8(strValue);
    for (wchar_t& c : strWide)
        if (UTF8Details::IsSurrogate(static_cast<char32_t>(c)))
            c = static_cast<wchar_t>(UTF8Details::REPLACEMENT);
    return NarrowUTF8(strWide);
}
} // namespace

wchar_t* EncoderBase::GetInfo(const wchar_t* pKey)
{
    try
    {
        bool bKnown = true;
        const std::string strText = GetText(EncoderLower(NarrowUTF8(pKey != nullptr ? pKey : L"")), bKnown);
        return bKnown ? LyCom::SysAllocString(WidenUTF8(strText).c_str()) : nullptr;
    }
    catch (...)
    {
        return nullptr;
    }
}

// The key in lower case.
std::string EncoderBase::GetText(const std::string& strKey, bool& bKnown) const
{
    bKnown = true;
    if (strKey == "last error")
    {
        const std::string strText = m_nError > ENCODER_OK
                                        ? NarrowUTF8(static_cast<const wchar_t*>(GetEncoderErrorText(m_nError)))
                                        : std::string();
        return strText + (strText.empty() || m_strDetail.empty() ? "" : " ") + m_strDetail;
    }
    if (strKey.starts_with(TAG_PREFIX))
    {
        const std::string* pValue = m_Tags.Find(std::string_view(strKey).substr(TAG_PREFIX.size()));
        return pValue != nullptr ? *pValue : std::string();
    }
    const std::pair<const char*, std::string> aryInfos[] = {
        {"last error code", std::to_string(m_nError)},
        {"settings", m_strSettings},
        {"output file", m_strOutput},
        {"picture", m_strPicture},
        {"sample rate", std::to_string(m_Format.nSampleRate)},
        {"channels", std::to_string(m_Format.nChannels)},
        {"bits", std::to_string(m_Format.nBits)},
        {"expected frames", std::to_string(m_nExpectedFrames)},
        {"frames", std::to_string(m_nFrames)},
        {"name", m_Description.pName},
        {"extension", m_Description.pExtension},
        {"library", m_Description.strLibrary},
    };
    for (const auto& [pName, strValue] : aryInfos)
        if (strKey == pName)
            return strValue;
    bKnown = false;
    return {};
}

void EncoderBase::SetInfo(const wchar_t* pKey, const wchar_t* pValue)
{
    if (m_eState == STATE_RUNNING || pKey == nullptr)
        return;
    try
    {
        SetText(NarrowUTF8(pKey), NarrowUTF8(pValue != nullptr ? pValue : L""));
    }
    catch (...)
    {
        (void)Fail(ENCODER_NO_MEMORY, {});
    }
}

void EncoderBase::SetText(const std::string& strKey, const std::string& strValue)
{
    const std::string strLower = EncoderLower(strKey);
    long long nNumber = 0;
    auto isNumber = [&](const NUMBER_INFO& info)
    {
        if (strLower != info.pKey)
            return false;
        if (!EncoderParseNumber(EncoderTrim(strValue), info.nMin, info.nMax, nNumber))
            nNumber = NO_NUMBER; // which the beginning of the encoding refuses
        return true;
    };
    if (strLower == "settings")
        SetSettings(strValue);
    else if (strLower == "output file")
    {
        m_strOutput = strValue;
        m_eState = STATE_IDLE;
    }
    else if (strLower == "picture")
        m_strPicture = strValue;
    else if (strLower.starts_with(TAG_PREFIX))
        m_Tags.Set(std::string_view(strKey).substr(TAG_PREFIX.size()), MakeValid(strValue));
    else if (isNumber(s_infoSampleRate))
        m_Format.nSampleRate = static_cast<int>(nNumber);
    else if (isNumber(s_infoChannels))
        m_Format.nChannels = static_cast<int>(nNumber);
    else if (isNumber(s_infoBits))
        m_Format.nBits = static_cast<int>(nNumber);
    else if (isNumber(s_infoExpected))
        m_nExpectedFrames = nNumber;
}

// What is wrong with them is told at once, and again when the encoding is to begin.
void EncoderBase::SetSettings(const std::string& strText)
{
    m_strSettings = strText;
    EncoderSettings settings;
    const bool bGood = settings.Parse(strText, m_Description.pRestKey) && ApplySettings(settings);
    m_strSettingsError = bGood ? "" : settings.GetError();
    m_nError = bGood ? ENCODER_OK : ENCODER_REFUSED;
    m_strDetail = m_strSettingsError;
}
