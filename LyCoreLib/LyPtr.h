// LyPtr: an owning pointer that knows how it is to be released. LyCom: strings of one owner that cross libraries.

#pragma once

// Owns, or only borrows, what it points to; the flag word beside the pointer says which.
// T is what it points to; U is the type as which it is deleted, for the cases in which they differ.
template <class T, class U>
class LyPtr
{
public:
    static constexpr int OWNED = 1; // release deletes
    static constexpr int ARRAY = 2; // allocated as an array: release deletes an array

    LyPtr() = default;
    LyPtr(T* p, bool bOwned, bool bArray) { Set(p, bOwned, bArray); }
    ~LyPtr() { Release(); }
    LyPtr(const LyPtr&) = delete;
    LyPtr& operator=(const LyPtr&) = delete;

    T* Get() const { return m_p; }
    T* operator->() const { return m_p; }
    operator T*() const { return m_p; }
    int GetFlags() const { return m_nFlags; }

    // Releases what it held and takes the new pointer. The pointer it holds already gets the new flags only.
    void Set(T* p, bool bOwned, bool bArray)
    {
        if (p != m_p)
            Release();
        m_p = p;
        m_nFlags = (bOwned ? OWNED : 0) | (bArray ? ARRAY : 0);
    }

    // Deletes one object, an array, or nothing, by the flags; then the pointer is null. The flags stay.
    void Release()
    {
        T* p = m_p;
        m_p = nullptr;
        if (p == nullptr || (m_nFlags & OWNED) == 0)
            return;
        if (m_nFlags & ARRAY)
            delete[] static_cast<U*>(p);
        else
            delete static_cast<U*>(p);
    }

    // Gives the pointer away: the caller owns it from now on.
    T* Detach()
    {
        T* p = m_p;
        m_p = nullptr;
        return p;
    }

private:
    T* m_p = nullptr;
    int m_nFlags = OWNED;
};

// System strings: arrays of wide characters with a terminator that one library allocates and another may free.
class LyCom
{
public:
    // A copy; null gives an array that holds only the terminator. Null is returned only if there is no memory.
    static wchar_t* SysAllocString(const wchar_t* p);
    static void SysFreeString(wchar_t* p); // null does nothing
};

// A bare pointer to a system string, for structures and results that travel between libraries. It copies as the
// pointer that it is and frees nothing by itself: whoever holds it frees it.
struct LyXString
{
    wchar_t* m_pText = nullptr;

    void Set(const wchar_t* p); // frees the old text and holds a copy of p, which may be the old text itself
    const wchar_t* Get() const { return m_pText; }
    operator const wchar_t*() const { return m_pText; }
};
static_assert(sizeof(LyXString) == sizeof(void*));
