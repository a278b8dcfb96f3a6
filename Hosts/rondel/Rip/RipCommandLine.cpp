// The command of a rip as it could be typed: it stands in the log, and says how to go on.

#include "RipRun.h"

namespace
{
// For any shell of the POSIX family.
std::string Quote(const std::string& str)
{
    const char* const PLAIN = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_@%+=:,./-";
    if (!str.empty() && str.find_first_not_of(PLAIN) == std::string::npos)
        return str;
    std::string strQuoted = "'";
    for (const char c : str)
        strQuoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return strQuoted + "'";
}
} // namespace

std::string MakeRipCommandLine(const RIP_WISHES& wishes)
{
    std::string strLine = "rondel rip " + Quote(wishes.strDisc);
    const auto add = [&](const char* pOption, const std::string& strValue)
    {
        if (!strValue.empty())
            strLine += std::string(" ") + pOption + " " + Quote(strValue);
    };
    add("--tracks", wishes.choice.strTracks);
    add("--range", wishes.choice.strRange);
    if (wishes.choice.bHidden)
        strLine += " --hidden";
    add("--mode", wishes.bSecure ? "secure" : "burst");
    for (const std::string& strEncoder : wishes.aryEncoders)
        add("--encoder", strEncoder);
    add("--to", wishes.names.strTo);
    if (wishes.names.strTemplate != DEFAULT_NAME_TEMPLATE)
        add("--name", wishes.names.strTemplate);
    if (wishes.names.bImage)
        strLine += " --image";
    add("--picture", wishes.names.strPicture);
    if (wishes.nCacheSectors >= 0)
        add("--cache", std::to_string(wishes.nCacheSectors));
    if (wishes.nSpeed > 0)
        add("--speed", std::to_string(wishes.nSpeed));
    if (!wishes.bAnalyze)
        strLine += " --no-analysis";
    for (const std::string& strAnswer : wishes.aryAnswers)
        add("--verify-with", strAnswer);
    return strLine;
}
