// The text of an encoder's settings, a command line, a picture, and the files that the checks of encoders read.
//
// Input: the text, or the bytes.

#include "EncoderCommand.h"
#include "EncoderPicture.h"
#include "EncoderSettings.h"
#include "EncoderTags.h"
#include "FuzzCheck.h"
#include "Mp3Check.h"
#include "OggOpusCheck.h"
#include <algorithm>
#include <cstdint>
#include <cstring>

namespace
{
class Memory : public EncoderBytes
{
public:
    explicit Memory(std::string_view strData) : m_strData(strData) {}
    uint64_t GetLength() override { return m_strData.size(); }
    size_t ReadAt(uint64_t nOffset, void* pData, size_t nBytes) override
    {
        const size_t nRead = nOffset >= m_strData.size() ? 0 : std::min<size_t>(nBytes, m_strData.size() - nOffset);
        if (nRead > 0)
            memcpy(pData, m_strData.data() + nOffset, nRead);
        return nRead;
    }

private:
    std::string_view m_strData;
};

void CheckSettings(std::string_view strText, std::string_view strRestKey)
{
    EncoderSettings settings;
    if (!settings.Parse(strText, strRestKey))
    {
        Check(!settings.GetError().empty());
        return;
    }
    EncoderSettings again;
    Check(again.Parse(settings.ToText(), strRestKey) || settings.ToText().size() > EncoderSettings::MAX_BYTES);
    Check(again.GetAll() == settings.GetAll() || !again.GetError().empty());
    for (const ENCODER_SETTING& setting : settings.GetAll())
    {
        Check(settings.Find(setting.strKey) != nullptr && !setting.strKey.empty());
        int nValue = 5;
        Check(!settings.Get(setting.strKey, 0, 9, nValue) || (nValue >= 0 && nValue <= 9));
        bool bValue = false;
        (void)settings.Get(setting.strKey, bValue);
    }
}

void CheckCommand(std::string_view strText)
{
    std::vector<std::string> aryArguments;
    std::string strError;
    if (!EncoderSplitCommand(strText, aryArguments, strError))
    {
        Check(!strError.empty());
        return;
    }
    Check(!aryArguments.empty() && !aryArguments[0].empty());
    size_t nCharacters = 0;
    for (const std::string& strArgument : aryArguments)
    {
        nCharacters += strArgument.size();
        std::string strExpanded;
        (void)EncoderExpandArgument(
            strArgument,
            [](char cKind, std::string_view strName, std::string& strPut)
            {
                strPut = strName;
                return cKind != 'x';
            },
            strExpanded, strError);
        Check(strExpanded.size() <= strArgument.size());
    }
    Check(nCharacters <= strText.size());
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    const std::string_view strInput(reinterpret_cast<const char*>(pData), nBytes);
    CheckSettings(strInput, {});
    CheckSettings(strInput, "command");
    CheckCommand(strInput);
    Check(!EncoderVorbisName(strInput).empty() || strInput.empty());
    ENCODER_PICTURE picture;
    picture.strData = strInput;
    Check(picture.Identify() == (picture.pMime != nullptr));
    Memory file(strInput);
    (void)CheckMp3(file, 0, 1000);
    (void)CheckOggOpus(file, 1000);
    return 0;
}
