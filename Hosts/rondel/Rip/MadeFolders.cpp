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
        // Looked at first: there are places in which nothing is made, and which are there all the same.
        if (std::filesystem::is_directory(step, error))
            continue;
        if (std::filesystem::create_directory(step, error))
            m_aryMade.push_back(step);
        if (error)
            return error;
    }
    return error;
}
