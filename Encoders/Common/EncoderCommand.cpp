#include "EncoderCommand.h"

namespace
{
constexpr std::string_view BLANKS = " \t\r\n";

bool Fail(std::string& strError, const char* pError)
{
    strError = pError;
    return false;
}

// Takes the rest of a quoted part, behind its opening quote. False if it never ends.
bool TakeQuoted(std::string_view& strCommand, char cQuote, std::string& strArgument)
{
    while (!strCommand.empty())
    {
        char c = strCommand.front();
        strCommand.remove_prefix(1);
        if (c == cQuote)
            return true;
        const bool bEscape = cQuote == '"' && c == '\\' && !strCommand.empty() &&
                             (strCommand.front() == '"' || strCommand.front() == '\\');
        if (bEscape)
        {
            c = strCommand.front();
            strCommand.remove_prefix(1);
        }
        strArgument += c;
    }
    return false;
}

// Takes one argument, up to a blank or the end.
bool TakeArgument(std::string_view& strCommand, std::string& strArgument, std::string& strError)
{
    while (!strCommand.empty() && BLANKS.find(strCommand.front()) == std::string_view::npos)
    {
        char c = strCommand.front();
        strCommand.remove_prefix(1);
        if (c == '"' || c == '\'')
        {
            if (!TakeQuoted(strCommand, c, strArgument))
                return Fail(strError, "A quote of the command is not closed.");
            continue;
        }
        if (c == '\\')
        {
            if (strCommand.empty())
                return Fail(strError, "The command ends in a backslash.");
            c = strCommand.front();
            strCommand.remove_prefix(1);
        }
        strArgument += c;
    }
    return true;
}

// Takes a placeholder, behind its per cent sign.
bool TakePlaceholder(std::string_view& strArgument, const ENCODER_PLACEHOLDER& placeholder, std::string& strExpanded)
{
    if (strArgument.empty())
        return false;
    const char cKind = strArgument.front();
    strArgument.remove_prefix(1);
    if (cKind == '%')
    {
        strExpanded += '%';
        return true;
    }
    std::string_view strName;
    if (cKind == '{')
    {
        const size_t nEnd = strArgument.find('}');
        if (nEnd == std::string_view::npos)
            return false;
        strName = strArgument.substr(0, nEnd);
        strArgument.remove_prefix(nEnd + 1);
    }
    std::string strText;
    if (!placeholder(cKind, strName, strText))
        return false;
    strExpanded += strText;
    return true;
}
} // namespace

bool EncoderSplitCommand(std::string_view strCommand, std::vector<std::string>& aryArguments, std::string& strError)
{
    aryArguments.clear();
    for (;;)
    {
        const size_t nNext = strCommand.find_first_not_of(BLANKS);
        if (nNext == std::string_view::npos)
            break;
        strCommand.remove_prefix(nNext);
        std::string strArgument;
        if (!TakeArgument(strCommand, strArgument, strError))
            return false;
        aryArguments.push_back(std::move(strArgument));
    }
    if (aryArguments.empty() || aryArguments[0].empty())
        return Fail(strError, "The command names no program.");
    return true;
}

bool EncoderExpandArgument(std::string_view strArgument, const ENCODER_PLACEHOLDER& placeholder,
                           std::string& strExpanded, std::string& strError)
{
    strExpanded.clear();
    while (!strArgument.empty())
    {
        const char c = strArgument.front();
        strArgument.remove_prefix(1);
        if (c != '%')
            strExpanded += c;
        else if (!TakePlaceholder(strArgument, placeholder, strExpanded))
            return Fail(strError, "The command has an unknown placeholder; a per cent sign is written %%.");
    }
    return true;
}
