// The memory behind LyString: the block that a string points into, and the manager that makes and takes back blocks.
//
// Each loaded library has a manager of its own. A block names the manager that made it and always goes back to that
// one, from any thread and from any library.
//
// Layout of a block (a LyString points at the first character, not at the block):
//
//   0  manager     pointer to the manager that made the block
//   8  nLength     characters in use, without the terminator
//  12  nAllocated  capacity in characters, terminator included
//  16  nReferences 1 owned, 2 and above shared, EMPTY_REFERENCES the shared empty string, -1 locked
//  20  characters  nAllocated of them
//
// Sizes: a count of characters above MAX_CHARACTERS, or for which there is no memory, gives no block. Construct then
// answers null, and the operations that answer characters give the shared empty string. A negative count is 0 unless
// an operation says what -1 means.

#pragma once

#include "LyLock.h"
#include <atomic>
#include <cstddef>

class ILyStringManager;

struct LyStringBuffer
{
    static constexpr int EMPTY_REFERENCES = 0x7ffffc17; // the manager's shared empty string: never counted, never freed
    static constexpr int LOCKED = -1;                   // a caller holds the writable pointer: never shared
    static constexpr int MAX_CHARACTERS = 0x7ffffffe;   // the terminator must be countable, too

    ILyStringManager* manager;
    int nLength;
    int nAllocated;
    int nReferences;
    wchar_t characters[1];

    static LyStringBuffer* FromCharacters(wchar_t* p)
    {
        return reinterpret_cast<LyStringBuffer*>(reinterpret_cast<char*>(p) - offsetof(LyStringBuffer, characters));
    }
    // The count may be changed by another thread that shares the block.
    int GetReferences() const { return __atomic_load_n(&nReferences, __ATOMIC_ACQUIRE); }
};
static_assert(offsetof(LyStringBuffer, nLength) == 8 && offsetof(LyStringBuffer, nAllocated) == 12);
static_assert(offsetof(LyStringBuffer, nReferences) == 16 && offsetof(LyStringBuffer, characters) == 20);
static_assert(sizeof(wchar_t) == 4);

// The order of the operations is their order in the virtual table: other libraries call them there.
class ILyStringManager
{
public:
    // A block for nChars characters and a terminator, which is not written yet; nReferences is 1.
    virtual LyStringBuffer* Construct(int nChars, bool bUseBlockManager) = 0;
    virtual void Delete(LyStringBuffer* pBlock) = 0; // takes back a block of this manager; null does nothing
    // The four that follow return the address of the characters. The first one copies: nSourceLength of -1 measures,
    // nAllocate of -1 takes the length of the source. Without bTrustLength the source ends at its first zero.
    virtual wchar_t* NewLyStringBuffer(const wchar_t* pSource, int nSourceLength, int nAllocate,
                                       bool bAllocateEvenIfEmpty, bool bTrustLength, bool bUseBlockManager) = 0;
    virtual wchar_t* NewLyStringBuffer(const char* pSource) = 0; // each byte becomes the character of its value
    virtual wchar_t* NewLyStringBuffer(int nChars) = 0;          // nChars characters, all zero
    virtual wchar_t* NewLyStringBuffer() = 0;                    // empty, and not shared
    virtual wchar_t* GetEmptyLyStringData() const = 0;

protected:
    ~ILyStringManager() = default;
};

// The manager of one library. It exists before the first string of any static constructor and outlives every string
// in static destruction: it is made by whoever needs it first, in static storage, and is never destroyed. What it keeps
// for later goes back to the allocator after all static destructors of the library ran; from then on it keeps nothing,
// but still works.
//
// Small blocks that come back are kept in BLOCK_SLOTS slots for the next string.
// Threads: every operation may be called from any thread.
class LyStringGlobals : public ILyStringManager
{
public:
    static constexpr unsigned int INITIALIZED = 0xb23a8c33;
    static constexpr int BLOCK_SLOTS = 16;
    static constexpr int MAX_SLOT_CAPACITY = 1031; // characters, terminator included; larger blocks are not kept
    static constexpr int GOOD_SLACK = 15;          // a kept block with no more than this to spare ends the search
    static constexpr int CHARACTER_TABLE_SIZE = 256;

    enum CHARACTER_CLASS : int
    {
        DIGIT = 1,
        ALPHABETIC = 2,
        WHITE_SPACE = 4,
        UPPER_CASE = 8,
        LOWER_CASE = 16,
        PUNCTUATION = 32,
        PRINTABLE = 64
    };

    // A further manager, with blocks and an empty string of its own. It must outlive its strings.
    LyStringGlobals();
    ~LyStringGlobals();
    LyStringGlobals(const LyStringGlobals&) = delete;
    LyStringGlobals& operator=(const LyStringGlobals&) = delete;

    LyStringBuffer* Construct(int nChars, bool bUseBlockManager) override;
    void Delete(LyStringBuffer* pBlock) override;
    wchar_t* NewLyStringBuffer(const wchar_t* pSource, int nSourceLength, int nAllocate, bool bAllocateEvenIfEmpty,
                               bool bTrustLength, bool bUseBlockManager) override;
    wchar_t* NewLyStringBuffer(const char* pSource) override;
    wchar_t* NewLyStringBuffer(int nChars) override;
    wchar_t* NewLyStringBuffer() override;
    wchar_t* GetEmptyLyStringData() const override { return m_pEmpty; }

    // Fills the two character tables of this library's manager, from the user's locale if asked, which is that of the
    // whole process. Strings may be in use in other threads, and calls in several threads wait for each other.
    static void SetLocale(bool bApplyUserLocale);
    // Makes the manager of this library if it is not there yet. Safe from several threads at once.
    static void EnsureManager();
    // The manager of this library, made on demand.
    static ILyStringManager* GetManager()
    {
        if (s_nInitialized.load(std::memory_order_acquire) != INITIALIZED)
            EnsureManager();
        return s_pManager;
    }
    // The same as what it is: the owner of the character tables.
    static LyStringGlobals& GetGlobals()
    {
        if (s_nInitialized.load(std::memory_order_acquire) != INITIALIZED)
            EnsureManager();
        return *s_pGlobals;
    }

    // Case folding and classes: by the tables below 256, by the C library's wide functions above.
    int ToLower(wchar_t c) const
    {
        return IsInTables(c) ? m_nLowerCase[c].load(std::memory_order_relaxed) : ToLowerWide(c);
    }
    bool IsSpace(wchar_t c) const { return HasClass(c, WHITE_SPACE); }
    // True if the character belongs to any of the classes, a union of CHARACTER_CLASS.
    bool HasClass(wchar_t c, int nClasses) const
    {
        return IsInTables(c) ? (m_nClasses[c].load(std::memory_order_relaxed) & nClasses) != 0
                             : HasClassWide(c, nClasses);
    }
    int GetSlotCount() const { return m_nSlots.load(std::memory_order_relaxed); }

    static std::atomic<unsigned int> s_nInitialized; // INITIALIZED says that s_pManager is valid
    static ILyStringManager* s_pManager;

    // Makes the manager while the library loads, if nobody needed it earlier.
    struct Loader
    {
        Loader() { EnsureManager(); }
    };

private:
    friend struct LyStringGlobalsTeardown;

    static LyStringGlobals* s_pGlobals;

    explicit LyStringGlobals(LyStringBuffer* pEmptyBlock);
    void InitializeEmpty(LyStringBuffer* pBlock);
    void FillCharacterTables();
    void Retire();
    LyStringBuffer* TakeBlock(int nNeeded);
    static bool IsInTables(wchar_t c) { return c >= 0 && c < CHARACTER_TABLE_SIZE; }
    static int ToLowerWide(wchar_t c);
    static bool HasClassWide(wchar_t c, int nClasses);

    LyLock m_Lock;
    wchar_t* m_pEmpty = nullptr;
    LyStringBuffer* m_pSlots[BLOCK_SLOTS] LY_GUARDED_BY(m_Lock) = {};
    std::atomic<int> m_nSlots{0}; // occupied slots; changed under the lock, read without it as a hint
    std::atomic<int> m_nLowerCase[CHARACTER_TABLE_SIZE] = {};
    std::atomic<int> m_nClasses[CHARACTER_TABLE_SIZE] = {};
};
static_assert(sizeof(std::atomic<int>) == sizeof(int));
