// ReportPacking: long rows of numbers as one text, for the state of a rip, which is written anew after each piece: two
// lower-case hexadecimal digits for each byte, a row behind the other, its cells without gaps.
//
// Shape:   whole numbers and floats of IEC 60559, little-endian, as wide as the cell's type. A row's cells are those
//          that Cells (ReportFields.h) lists. All bits survive.
// Errors:  UnpackRows answers false, and no rows, for text that is not made of whole rows.
// Threads: any.

#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

// Takes the cells of rows.
class RowPacker
{
public:
    template <class T>
    using Ref = const T&;

    template <class T>
    void Cell(T value)
    {
        static_assert(std::is_arithmetic_v<T> && sizeof value <= sizeof(uint64_t));
        using BITS = std::conditional_t<sizeof value == sizeof(uint16_t), uint16_t,
                                        std::conditional_t<sizeof value == sizeof(uint32_t), uint32_t, uint64_t>>;
        BITS nBits = 0;
        static_assert(sizeof nBits == sizeof value);
        std::memcpy(&nBits, &value, sizeof value);
        AddBits(nBits, sizeof value);
    }
    void Reserve(size_t nBytes) { m_strText.reserve(2 * nBytes); }
    std::string&& Take() { return std::move(m_strText); }

private:
    void AddBits(uint64_t nBits, size_t nBytes);

    std::string m_strText;
};

// Gives them back.
class RowUnpacker
{
public:
    template <class T>
    using Ref = T&;

    explicit RowUnpacker(const std::string& strText) : m_strText(strText) {}

    template <class T>
    void Cell(T& value)
    {
        static_assert(std::is_arithmetic_v<T> && sizeof value <= sizeof(uint64_t));
        using BITS = std::conditional_t<sizeof value == sizeof(uint16_t), uint16_t,
                                        std::conditional_t<sizeof value == sizeof(uint32_t), uint32_t, uint64_t>>;
        const BITS nBits = static_cast<BITS>(TakeBits(sizeof value));
        static_assert(sizeof nBits == sizeof value);
        std::memcpy(&value, &nBits, sizeof value);
    }
    bool GetIsAtEnd() const { return m_nPlace >= m_strText.size(); }
    bool GetIsGood() const { return m_bGood; } // nothing was missing or no digit

private:
    uint64_t TakeBits(size_t nBytes);

    const std::string& m_strText;
    size_t m_nPlace = 0;
    bool m_bGood = true;
};

template <class ROW>
std::string PackRows(const std::vector<ROW>& aryRows)
{
    RowPacker packer;
    packer.Reserve(aryRows.size() * sizeof(ROW));
    for (const ROW& row : aryRows)
        Cells(packer, row);
    return packer.Take();
}

template <class ROW>
bool UnpackRows(const std::string& strText, std::vector<ROW>& aryRows)
{
    RowUnpacker unpacker(strText);
    aryRows.clear();
    aryRows.reserve(strText.size() / (2 * sizeof(ROW)));
    while (unpacker.GetIsGood() && !unpacker.GetIsAtEnd())
        Cells(unpacker, aryRows.emplace_back());
    if (!unpacker.GetIsGood())
        aryRows.clear();
    return unpacker.GetIsGood();
}
