#include "MadeFolders.h"

#include <unistd.h>

MadeFolders::~MadeFolders()
{
    for (auto it = m_aryMade.rbegin(); it != m_aryMade.rend(); ++it)
        (void)rmdir(it->c_str());
}

std::error_code MadeFolders::Make(const std::filesystem::path& folder)
{
    std::error_code error;
    std::filesystem::path step;
    for (const std::filesystem::path& part : folder)
    {
        step /= part;
        if (std::filesystem::create_directory(step, error))
            m_aryMade.push_back(step);
        if (error)
            return error;
    }
    return error;
}
