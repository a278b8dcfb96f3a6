// MadeFolders: the folders that a rip makes for its files, which go again where nothing came to stand in them.
//
// Threads: one.

#pragma once

#include <filesystem>
#include <vector>

class MadeFolders
{
public:
    MadeFolders() = default;
    // Removes those folders of its own making that are empty; whatever somebody has put into one keeps it.
    ~MadeFolders();
    MadeFolders(const MadeFolders&) = delete;
    MadeFolders& operator=(const MadeFolders&) = delete;

    // The folder with all above it, as far as they are missing. What was made ahead of an error is remembered, too.
    std::error_code Make(const std::filesystem::path& folder);

private:
    std::vector<std::filesystem::path> m_aryMade; // each behind the one that it stands in
};
