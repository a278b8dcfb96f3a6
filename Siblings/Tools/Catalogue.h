// A message catalogue: the texts of one language, as msgfmt compiles them.
//
// GNU gettext, "The Format of GNU MO Files". All numbers have 32 bits, in the
// byte order that the magic number shows:
//
//    0  magic, 0x950412de
//    4  revision: major in the high half, minor in the low half
//    8  N, the number of texts
//   12  offset of the table of originals, N times { length, offset }, sorted
//   16  offset of the table of translations, N times { length, offset }
//   20  size and offset of a hash table, which is not used here
//
// Each text ends with a zero byte that its length does not count. The
// translation of the empty text is the header.
//
// Errors:  nothing in a file is believed. A file that breaks a rule anywhere
// gives no catalogue and a reason. Threads: any number may search a catalogue
// at once.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

class Catalogue
{
public:
    static constexpr size_t MAX_BYTES = size_t{16} << 20; // of a file; no language needs more

    enum LOAD_RESULT
    {
        LOADED,
        NOT_THERE,
        BROKEN
    };

    // Reads a file. On BROKEN, strReason says what is wrong with it.
    LOAD_RESULT Open(const std::string& strPath, std::string& strReason);

    // Takes the bytes of a file. On failure the catalogue is empty, and strReason
    // says what is wrong.
    bool Load(std::string strBytes, std::string& strReason);

    // The translation, UTF-8; empty if there is none. It lives as long as the
    // catalogue.
    std::string_view Find(std::string_view strOriginal) const;

    int GetCount() const { return static_cast<int>(m_nTexts); } // of texts, the header included

    // The text of that number in the order of the originals: original and
    // translation.
    std::pair<std::string_view, std::string_view> GetAt(int nIndex) const;

private:
    const char* Check(); // null, or what is wrong
    const char* CheckTexts() const;
    uint32_t ReadNumber(size_t nOffset) const;
    bool IsTextInside(size_t nTable, uint32_t nIndex) const;
    std::string_view GetText(size_t nTable,
                             uint32_t nIndex) const; // to its first zero byte

    std::string m_strBytes;
    bool m_bSwapped = false;
    uint32_t m_nTexts = 0;
    size_t m_nOriginals = 0; // offsets of the two tables
    size_t m_nTranslations = 0;
};
