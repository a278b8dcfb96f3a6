#include "RipLeftovers.h"
#include "LyPlatform.h"
#include "ReportFields.h"
#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <set>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
// As PartialFile and EncoderOutput name them.
constexpr std::string_view PARTIAL_MARK = ".part";
constexpr size_t PARTIAL_DIGITS = 2;
constexpr std::string_view ENCODER_PREFIX = ".rondel-";
constexpr size_t ENCODER_DIGITS = 16;

// The file that a name of a file in the making stands for; empty for other names.
std::string GetTarget(const std::string& strName)
{
    const size_t nMark = strName.rfind(PARTIAL_MARK);
    if (nMark == std::string::npos)
        return {};
    const std::string_view strNumber = std::string_view(strName).substr(nMark + PARTIAL_MARK.size());
    const bool bNumber =
        strNumber.size() <= PARTIAL_DIGITS && strNumber.find_first_not_of("0123456789") == std::string_view::npos;
    return bNumber ? strName.substr(0, nMark) : std::string();
}

// ".rondel-0123456789abcdef.part", or with a suffix behind it.
bool IsOfEncoder(std::string_view strName)
{
    if (!strName.starts_with(ENCODER_PREFIX))
        return false;
    strName.remove_prefix(ENCODER_PREFIX.size());
    if (strName.find_first_not_of("0123456789abcdef") != ENCODER_DIGITS)
        return false;
    strName.remove_prefix(ENCODER_DIGITS);
    return strName == PARTIAL_MARK || strName.starts_with(std::string(PARTIAL_MARK) + ".");
}

// A file that is opened to be looked at. Nothing waits for it, and no link is followed.
class Leftover
{
public:
    explicit Leftover(const std::string& strPath)
        : m_strPath(strPath),
          m_nDescriptor(open(strPath.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC))
    {
    }
    ~Leftover()
    {
        if (m_nDescriptor >= 0)
            (void)close(m_nDescriptor);
    }
    Leftover(const Leftover&) = delete;
    Leftover& operator=(const Leftover&) = delete;

    bool IsEmpty() const
    {
        struct stat status;
        return fstat(m_nDescriptor, &status) == 0 && status.st_size == 0;
    }
    // Whether it begins as a state does, as far as it goes.
    bool IsState() const
    {
        const std::string strHead = std::string("{\"") + REPORT_FORMAT_KEY + "\":\"" + REPORT_FORMAT + "\"";
        std::string strFound(strHead.size(), '\0');
        const ssize_t nBytes = pread(m_nDescriptor, strFound.data(), strFound.size(), 0);
        return nBytes >= 0 && strHead.starts_with(strFound.substr(0, static_cast<size_t>(nBytes)));
    }
    void RemoveUnlessInUse() const
    {
        struct stat status;
        if (fstat(m_nDescriptor, &status) == 0 && S_ISREG(status.st_mode) && LyPlatform::IsOpenedOnce(m_nDescriptor))
            (void)unlink(m_strPath.c_str());
    }

private:
    std::string m_strPath;
    int m_nDescriptor;
};

std::set<std::string> GetTargets(const RIP_NAMES& names)
{
    const std::vector<std::string> aryAll = names.GetAll();
    std::set<std::string> setTargets(aryAll.begin(), aryAll.end());
    setTargets.insert(names.GetState());
    return setTargets;
}

// Calls with the folder and the name of each file that has the mark of one in the making.
template <class FUNCTION>
void ForEachPartialFile(const RIP_NAMES& names, FUNCTION function)
{
    std::set<std::string> setFolders;
    for (const std::string& strTarget : GetTargets(names))
        setFolders.insert(strTarget.substr(0, strTarget.rfind('/')));
    for (const std::string& strFolder : setFolders)
    {
        std::error_code error;
        std::filesystem::directory_iterator it(strFolder + "/", error);
        for (; !error && it != std::filesystem::directory_iterator(); it.increment(error))
        {
            const std::string strName = it->path().filename().string();
            if (strName.find(PARTIAL_MARK) != std::string::npos)
                function(strFolder, strName);
        }
    }
}
} // namespace

void RemoveLeftovers(const RIP_NAMES& names, const RIP_REPORT* pState)
{
    const std::set<std::string> setTargets = GetTargets(names);
    std::set<std::string> setForeign;
    if (pState != nullptr)
        for (const std::string& strName : pState->aryPartsBefore)
            setForeign.insert(names.GetPath(strName));
    const auto isOwn = [&](const std::string& strFolder, const std::string& strName, const Leftover& file)
    {
        const std::string strTarget = GetTarget(strName);
        const std::string strPath = strFolder + "/" + strTarget;
        if (IsOfEncoder(strName))
            return true;
        if (strTarget == RIP_PROOF_NAME)
            return file.IsEmpty();
        if (strPath == names.GetState())
            return file.IsState();
        return pState != nullptr && !strTarget.empty() && setTargets.contains(strPath) &&
               !setForeign.contains(strFolder + "/" + strName);
    };
    ForEachPartialFile(names,
                       [&](const std::string& strFolder, const std::string& strName)
                       {
                           const Leftover file(strFolder + "/" + strName);
                           if (isOwn(strFolder, strName, file))
                               file.RemoveUnlessInUse();
                       });
}

std::vector<std::string> ListPartialFiles(const RIP_NAMES& names)
{
    const std::set<std::string> setTargets = GetTargets(names);
    std::vector<std::string> aryFound;
    ForEachPartialFile(names,
                       [&](const std::string& strFolder, const std::string& strName)
                       {
                           const std::string strPath = strFolder + "/" + strName;
                           const std::string strTarget = GetTarget(strName);
                           if (!strTarget.empty() && setTargets.contains(strFolder + "/" + strTarget))
                               aryFound.push_back(strPath.substr(names.strFolder.size() + 1));
                       });
    std::sort(aryFound.begin(), aryFound.end());
    return aryFound;
}
