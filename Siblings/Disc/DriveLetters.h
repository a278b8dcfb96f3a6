// DriveLetters: which letter names which drive. The drives of the machine get D:, E:, F: ... in the order of their
// nodes. A drive keeps its letter as long as it is there; one that comes later gets the first free letter. A letter
// that an option gives to an image is not given to a drive. A:, B: and C: are given by option only.
//
// Threads: one at a time.

#pragma once

#include "DrivePath.h"
#include <array>
#include <functional>
#include <string>
#include <vector>

// The image of each letter; empty for a letter that has none.
using LETTER_IMAGES = std::array<std::string, DRIVE_LETTERS>;

// The options "Letter A" to "Letter Z" of the store "Disc Service"; without a store no letter has an image.
LETTER_IMAGES ReadLetterImages();

class DriveLetters
{
public:
    static constexpr int FIRST_GIVEN = 'D' - 'A';

    // Brings the letters up to date with the drives that are there, in their order. A drive for which pIsHeld is true
    // keeps its letter even while it is gone, so that nobody's commands reach another drive under the same letter.
    // True if a letter names something else than before.
    bool Update(const std::vector<std::string>& aryNodes, const LETTER_IMAGES& images,
                const std::function<bool(const std::string&)>& pIsHeld);

    const std::string& GetPath(int nLetter) const { return m_aryPaths[static_cast<size_t>(nLetter)]; } // may be empty
    bool IsByOption(int nLetter) const { return m_aryByOption[static_cast<size_t>(nLetter)]; }
    int Find(const std::string& strPath) const; // the first letter of that path, or NO_DRIVE_LETTER

private:
    void GiveLetter(const std::string& strNode);

    std::array<std::string, DRIVE_LETTERS> m_aryPaths;
    std::array<bool, DRIVE_LETTERS> m_aryByOption{};
};
