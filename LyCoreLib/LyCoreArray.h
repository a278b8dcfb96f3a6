// The dynamic arrays: values, numbers, pointers, and pointers that own what they point to.
//
// Elements lie in one block and move bytewise, whatever they are: an element type must not point into itself.
// Spare slots between the count and the capacity hold no object; an element is constructed before its first use.
//
// Errors:  a negative index or size is refused (false, -1, or nothing done). operator[] and SetAt do not check bounds.
// Threads: an array belongs to one thread at a time; nothing here locks.

#pragma once

#include "LyArrayBase.h"
#include <climits>
#include <cstddef>
#include <cstring>
#include <functional>
#include <new>
#include <type_traits>

// T is the element, ARG the type in which one is handed over (T or const T&). With bSimple the elements are plain data
// that need no construction and no destruction.
//
// The order of the virtual operations is their order in the table: two places of the destructor, SetAt, DestroyElement.
template <class T, class ARG, bool bSimple>
class LyCoreArray : public LyArrayBase
{
    static_assert(!bSimple || std::is_trivially_copyable_v<T>, "plain data has no copying and no end of its own");
    static_assert(alignof(T) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__, "the block comes from array new of bytes");

public:
    LyCoreArray() = default;
    LyCoreArray(const LyCoreArray& other);
    LyCoreArray(LyCoreArray&& other) noexcept { Take(other); }
    LyCoreArray& operator=(const LyCoreArray& other);
    LyCoreArray& operator=(LyCoreArray&& other) noexcept;
    virtual ~LyCoreArray() { RemoveAll(true); }

    // Puts value at nIndex, which must be below the count, and returns nIndex.
    virtual int SetAt(int nIndex, ARG value, bool bDestroyExisting = false);
    // What leaves the array passes here before its destructor runs. A hook: does nothing here. A class that overrides
    // it calls RemoveAll(true) in its own destructor, while the override still holds.
    virtual void DestroyElement(int nIndex) { (void)nIndex; }

    // Makes the array nSize elements long. Longer: new elements are constructed (plain ones are zero with bZeroNew);
    // without bKeepContents plain elements may lose their values on the way. Shorter: as RemoveAt, capacity stays.
    bool SetSize(int nSize, bool bExactSize = false, bool bZeroNew = true, bool bKeepContents = true);
    // As SetAt, but grows the array up to nIndex first. Returns nIndex, or -1 if it is refused.
    int SetAtGrow(int nIndex, ARG value);
    // Removes up to nCount elements from nIndex on. An index outside the array or a count below 1 does nothing.
    void RemoveAt(int nIndex, int nCount = 1);
    void RemoveAll(bool bFreeMemory = true); // without bFreeMemory the capacity stays
    // Adds copies of the elements of other, which may be this array.
    bool Append(const LyCoreArray& other);
    int Add(ARG value) { return SetAtGrow(m_nCount, static_cast<ARG>(value)); } // the index, or -1

    T& operator[](int nIndex) { return m_pData[nIndex]; }
    const T& operator[](int nIndex) const { return m_pData[nIndex]; }
    T* GetData() { return m_pData; } // null as long as nothing was ever in the array
    const T* GetData() const { return m_pData; }
    T* begin() { return m_pData; }
    T* end() { return m_pData + m_nCount; }
    const T* begin() const { return m_pData; }
    const T* end() const { return m_pData + m_nCount; }

protected:
    T* m_pData = nullptr; // array new of bytes, m_nAllocated elements

private:
    static size_t Bytes(int nElements) { return static_cast<size_t>(nElements) * sizeof(T); }
    void* Slot(int nIndex) { return static_cast<void*>(m_pData + nIndex); }
    bool IsInside(const T* p) const;
    void EndElements(int nIndex, int nCount);
    void Take(LyCoreArray& other);
};

template <class T, class ARG, bool bSimple>
class LyArray : public LyCoreArray<T, ARG, bSimple>
{
};

// Numbers and pointers that own nothing.
template <class T>
class LyNumberArray : public LyArray<T, T, true>
{
};

template <class T>
class LyPointerArray : public LyNumberArray<T*>
{
};

// Pointers to objects that the array deletes when they leave it, unless it was told that it does not own them. What
// SetAt without bDestroyExisting, SetAtGrow or operator[] replace is not deleted: it belongs to the caller again.
// The second template argument is part of the name by which other libraries know the type; it changes nothing.
template <class T, bool = false>
class LyOwnedPtrArray : public LyCoreArray<T*, T*, false>
{
public:
    LyOwnedPtrArray() = default;
    explicit LyOwnedPtrArray(bool bOwned) : m_bOwned(bOwned) {}
    LyOwnedPtrArray(const LyOwnedPtrArray&) = delete;
    LyOwnedPtrArray& operator=(const LyOwnedPtrArray&) = delete;
    ~LyOwnedPtrArray() override { this->RemoveAll(true); }

    void DestroyElement(int nIndex) override
    {
        if (!m_bOwned || nIndex < 0 || nIndex >= this->m_nCount)
            return;
        T* p = this->m_pData[nIndex];
        this->m_pData[nIndex] = nullptr;
        delete p;
    }

    // Takes the pointer out of the array without deleting the object. Null for an index outside the array.
    T* Detach(int nIndex)
    {
        if (nIndex < 0 || nIndex >= this->m_nCount)
            return nullptr;
        T* p = this->m_pData[nIndex];
        this->m_pData[nIndex] = nullptr;
        this->RemoveAt(nIndex, 1);
        return p;
    }

    bool m_bOwned = true; // removal deletes the object
};

// ---- Implementation

template <class T, class ARG, bool bSimple>
LyCoreArray<T, ARG, bSimple>::LyCoreArray(const LyCoreArray& other) : LyArrayBase()
{
    m_nGrowBlock = other.m_nGrowBlock;
    Append(other);
}

template <class T, class ARG, bool bSimple>
LyCoreArray<T, ARG, bSimple>& LyCoreArray<T, ARG, bSimple>::operator=(const LyCoreArray& other)
{
    if (this == &other)
        return *this;
    RemoveAll(false);
    Append(other);
    return *this;
}

template <class T, class ARG, bool bSimple>
LyCoreArray<T, ARG, bSimple>& LyCoreArray<T, ARG, bSimple>::operator=(LyCoreArray&& other) noexcept
{
    if (this == &other)
        return *this;
    RemoveAll(true);
    Take(other);
    return *this;
}

template <class T, class ARG, bool bSimple>
void LyCoreArray<T, ARG, bSimple>::Take(LyCoreArray& other)
{
    m_nCount = other.m_nCount;
    m_nAllocated = other.m_nAllocated;
    m_nGrowBlock = other.m_nGrowBlock;
    m_pData = other.m_pData;
    other.m_nCount = 0;
    other.m_nAllocated = 0;
    other.m_pData = nullptr;
}

template <class T, class ARG, bool bSimple>
int LyCoreArray<T, ARG, bSimple>::SetAt(int nIndex, ARG value, bool bDestroyExisting)
{
    if (bDestroyExisting)
        DestroyElement(nIndex);
    m_pData[nIndex] = static_cast<ARG>(value);
    return nIndex;
}

template <class T, class ARG, bool bSimple>
bool LyCoreArray<T, ARG, bSimple>::SetSize(int nSize, bool bExactSize, bool bZeroNew, bool bKeepContents)
{
    if (nSize < 0)
        return false;
    if (nSize <= m_nCount)
    {
        RemoveAt(nSize, m_nCount - nSize);
        return true;
    }
    const bool bInPlace = nSize <= m_nAllocated;
    // Elements that have an end of their own are always kept, since dropping their bytes would drop what they hold.
    void* pData = m_pData;
    if (!GrowAllocatedHelper(pData, static_cast<int>(sizeof(T)), nSize, bExactSize, bZeroNew,
                             bKeepContents || !bSimple))
        return false;
    m_pData = static_cast<T*>(pData);
    if constexpr (bSimple)
    {
        if (bInPlace && bZeroNew)
            memset(Slot(m_nCount), 0, Bytes(nSize - m_nCount));
    }
    else
    {
        for (int i = m_nCount; i < nSize; ++i)
            new (Slot(i)) T();
    }
    m_nCount = nSize;
    return true;
}

template <class T, class ARG, bool bSimple>
int LyCoreArray<T, ARG, bSimple>::SetAtGrow(int nIndex, ARG value)
{
    if (nIndex < 0 || nIndex == INT_MAX)
        return -1;
    if (nIndex < m_nCount)
        return SetAt(nIndex, static_cast<ARG>(value), false);
    if constexpr (std::is_lvalue_reference_v<ARG>)
    {
        // An element of this very array would be left behind in the old block.
        if (nIndex >= m_nAllocated && IsInside(std::addressof(value)))
        {
            T copy(value);
            return SetSize(nIndex + 1, false, true, true) ? SetAt(nIndex, copy, false) : -1;
        }
    }
    return SetSize(nIndex + 1, false, true, true) ? SetAt(nIndex, static_cast<ARG>(value), false) : -1;
}

template <class T, class ARG, bool bSimple>
bool LyCoreArray<T, ARG, bSimple>::IsInside(const T* p) const
{
    return !std::less<const T*>()(p, m_pData) && std::less<const T*>()(p, m_pData + m_nCount);
}

template <class T, class ARG, bool bSimple>
void LyCoreArray<T, ARG, bSimple>::EndElements(int nIndex, int nCount)
{
    for (int i = nIndex; i < nIndex + nCount; ++i)
    {
        DestroyElement(i);
        if constexpr (!bSimple)
            m_pData[i].~T();
    }
}

template <class T, class ARG, bool bSimple>
void LyCoreArray<T, ARG, bSimple>::RemoveAt(int nIndex, int nCount)
{
    if (nIndex < 0 || nCount < 1 || nIndex >= m_nCount)
        return;
    if (nCount > m_nCount - nIndex)
        nCount = m_nCount - nIndex;
    EndElements(nIndex, nCount);
    const int nTail = m_nCount - nIndex - nCount;
    if (nTail > 0)
        memmove(Slot(nIndex), Slot(nIndex + nCount), Bytes(nTail));
    m_nCount -= nCount;
    memset(Slot(m_nCount), 0, Bytes(m_nAllocated - m_nCount));
}

template <class T, class ARG, bool bSimple>
void LyCoreArray<T, ARG, bSimple>::RemoveAll(bool bFreeMemory)
{
    if (m_pData == nullptr)
        return;
    EndElements(0, m_nCount);
    if (bFreeMemory)
    {
        delete[] reinterpret_cast<unsigned char*>(m_pData);
        m_pData = nullptr;
        m_nAllocated = 0;
    }
    else
    {
        memset(Slot(0), 0, Bytes(m_nCount)); // what was there is gone, and no spare slot may look like an element
    }
    m_nCount = 0;
}

template <class T, class ARG, bool bSimple>
bool LyCoreArray<T, ARG, bSimple>::Append(const LyCoreArray& other)
{
    const int nOld = m_nCount;
    const int nAdded = other.m_nCount;
    if (nAdded == 0)
        return true;
    if (nAdded > INT_MAX - nOld || !SetSize(nOld + nAdded, false, false, true))
        return false;
    if constexpr (bSimple)
    {
        memcpy(Slot(nOld), static_cast<const void*>(other.m_pData), Bytes(nAdded));
    }
    else
    {
        for (int i = 0; i < nAdded; ++i)
            m_pData[nOld + i] = other.m_pData[i];
    }
    return true;
}
