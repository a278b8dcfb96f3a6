#include "LyStringManager.h"
#include "LyStringDetails.h"
#include <cctype>
#include <climits>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <new>

constinit std::atomic<unsigned int> LyStringGlobals::s_nInitialized{0};
constinit ILyStringManager* LyStringGlobals::s_pManager = nullptr;
constinit LyStringGlobals* LyStringGlobals::s_pGlobals = nullptr;

namespace
{
// The manager and its empty string stand in static storage that no constructor and no destructor touches: strings are
// made and dropped before the first one ran and after the last one.
alignas(LyStringGlobals) unsigned char s_ManagerStorage[sizeof(LyStringGlobals)];
alignas(LyStringBuffer) unsigned char s_EmptyStorage[sizeof(LyStringBuffer)];
pthread_mutex_t s_CreationMutex = PTHREAD_MUTEX_INITIALIZER;
pthread_mutex_t s_LocaleMutex = PTHREAD_MUTEX_INITIALIZER;

LyStringGlobals::Loader s_Loader;

LyStringBuffer* AllocateBlock(int nNeeded)
{
    size_t nBytes = offsetof(LyStringBuffer, characters) + static_cast<size_t>(nNeeded) * sizeof(wchar_t);
    auto* pBlock = static_cast<LyStringBuffer*>(std::malloc(nBytes));
    if (pBlock)
        pBlock->nAllocated = nNeeded;
    return pBlock;
}

// The length of the source as the caller means it, see NewLyStringBuffer.
int GetSourceLength(const wchar_t* pSource, int nSourceLength, bool bTrustLength)
{
    if (pSource == nullptr)
        return 0;
    if (nSourceLength == -1)
        return LyStringDetails::Measure(pSource);
    if (nSourceLength < 1)
        return 0;
    if (bTrustLength)
        return nSourceLength;
    const wchar_t* pZero = std::wmemchr(pSource, 0, static_cast<size_t>(nSourceLength));
    return pZero ? static_cast<int>(pZero - pSource) : nSourceLength;
}

int GetClasses(int c)
{
    return (std::isdigit(c) ? LyStringGlobals::DIGIT : 0) | (std::isalpha(c) ? LyStringGlobals::ALPHABETIC : 0) |
           (std::isspace(c) ? LyStringGlobals::WHITE_SPACE : 0) | (std::isupper(c) ? LyStringGlobals::UPPER_CASE : 0) |
           (std::islower(c) ? LyStringGlobals::LOWER_CASE : 0) | (std::ispunct(c) ? LyStringGlobals::PUNCTUATION : 0) |
           (std::isprint(c) ? LyStringGlobals::PRINTABLE : 0);
}
} // namespace

// ---- The life of the manager

LyStringGlobals::LyStringGlobals()
{
    InitializeEmpty(Construct(0, true));
    FillCharacterTables();
}

LyStringGlobals::LyStringGlobals(LyStringBuffer* pEmptyBlock)
{
    InitializeEmpty(pEmptyBlock);
    FillCharacterTables();
}

LyStringGlobals::~LyStringGlobals()
{
    Retire();
    if (m_pEmpty)
        std::free(LyStringBuffer::FromCharacters(m_pEmpty));
}

void LyStringGlobals::InitializeEmpty(LyStringBuffer* pBlock)
{
    if (pBlock == nullptr)
        return;
    pBlock->nReferences = LyStringBuffer::EMPTY_REFERENCES;
    m_pEmpty = pBlock->characters;
    *m_pEmpty = 0;
}

void LyStringGlobals::EnsureManager()
{
    pthread_mutex_lock(&s_CreationMutex);
    if (s_pGlobals == nullptr)
    {
        auto* pEmptyBlock = new (s_EmptyStorage) LyStringBuffer{};
        pEmptyBlock->nAllocated = 1;
        s_pGlobals = new (s_ManagerStorage) LyStringGlobals(pEmptyBlock);
        pEmptyBlock->manager = s_pGlobals;
    }
    if (s_pManager != s_pGlobals)
        s_pManager = s_pGlobals;
    // Whoever sees the marker without the mutex sees the whole object.
    s_nInitialized.store(INITIALIZED, std::memory_order_release);
    pthread_mutex_unlock(&s_CreationMutex);
}

// Gives the kept blocks back, and keeps none from now on: with the slots said to be full, Delete frees at once.
void LyStringGlobals::Retire()
{
    LySingleLock lock(&m_Lock);
    for (LyStringBuffer*& pSlot : m_pSlots)
    {
        std::free(pSlot);
        pSlot = nullptr;
    }
    m_nSlots.store(BLOCK_SLOTS, std::memory_order_relaxed);
}

struct LyStringGlobalsTeardown
{
    static void Run()
    {
        if (LyStringGlobals::s_pGlobals)
            LyStringGlobals::s_pGlobals->Retire();
    }
};

// Runs after all static destructors of the library, at unloading and at exit: the priority is the lowest one that a
// program may use. A string that lives still longer finds the manager retired, but working.
__attribute__((destructor(101))) static void RetireManager() { LyStringGlobalsTeardown::Run(); }

// ---- Blocks

LyStringBuffer* LyStringGlobals::Construct(int nChars, bool bUseBlockManager)
{
    if (nChars > LyStringBuffer::MAX_CHARACTERS)
        return nullptr;
    if (nChars < 0)
        nChars = 0;
    int nNeeded = nChars + 1;
    LyStringBuffer* pBlock = nullptr;
    if (bUseBlockManager && nNeeded <= MAX_SLOT_CAPACITY && GetSlotCount() > 0)
        pBlock = TakeBlock(nNeeded);
    if (pBlock == nullptr)
        pBlock = AllocateBlock(nNeeded);
    if (pBlock == nullptr)
        return nullptr;
    pBlock->manager = this;
    pBlock->nLength = nChars;
    pBlock->nReferences = 1;
    return pBlock;
}

// The kept block with the least to spare, the earlier one of two; or null. It keeps its own capacity.
LyStringBuffer* LyStringGlobals::TakeBlock(int nNeeded)
{
    LySingleLock lock(&m_Lock);
    LyStringBuffer** ppBest = nullptr;
    int nBestSlack = INT_MAX;
    for (LyStringBuffer*& pSlot : m_pSlots)
    {
        if (pSlot == nullptr || pSlot->nAllocated < nNeeded || pSlot->nAllocated - nNeeded >= nBestSlack)
            continue;
        ppBest = &pSlot;
        nBestSlack = pSlot->nAllocated - nNeeded;
        if (nBestSlack <= GOOD_SLACK)
            break;
    }
    if (ppBest == nullptr)
        return nullptr;
    LyStringBuffer* pBlock = *ppBest;
    *ppBest = nullptr;
    m_nSlots.store(GetSlotCount() - 1, std::memory_order_relaxed);
    return pBlock;
}

void LyStringGlobals::Delete(LyStringBuffer* pBlock)
{
    if (pBlock == nullptr || pBlock->characters == m_pEmpty)
        return;
    if (pBlock->nAllocated <= MAX_SLOT_CAPACITY && GetSlotCount() < BLOCK_SLOTS)
    {
        LySingleLock lock(&m_Lock);
        // The hint may be old by now: only under the lock is the count true.
        if (GetSlotCount() < BLOCK_SLOTS)
        {
            LyStringBuffer** ppSlot = m_pSlots;
            while (*ppSlot)
                ++ppSlot;
            *ppSlot = pBlock;
            m_nSlots.store(GetSlotCount() + 1, std::memory_order_relaxed);
            return;
        }
    }
    std::free(pBlock);
}

wchar_t* LyStringGlobals::NewLyStringBuffer(const wchar_t* pSource, int nSourceLength, int nAllocate,
                                            bool bAllocateEvenIfEmpty, bool bTrustLength, bool bUseBlockManager)
{
    int nLength = GetSourceLength(pSource, nSourceLength, bTrustLength);
    if (nAllocate == -1)
        nAllocate = nLength;
    if (nAllocate < 0)
        nAllocate = 0;
    if (nAllocate == 0 && !bAllocateEvenIfEmpty)
        return m_pEmpty;
    LyStringBuffer* pBlock = Construct(nAllocate, bUseBlockManager);
    if (pBlock == nullptr)
        return m_pEmpty;
    if (nLength > nAllocate)
        nLength = nAllocate;
    if (nLength > 0)
        std::wmemcpy(pBlock->characters, pSource, static_cast<size_t>(nLength));
    pBlock->characters[nLength] = 0;
    pBlock->nLength = nLength;
    return pBlock->characters;
}

// Deliberate: bytes 128 to 255 become the characters 128 to 255. This form is no code page conversion; whoever needs
// one has converted before.
wchar_t* LyStringGlobals::NewLyStringBuffer(const char* pSource)
{
    size_t nLength = pSource ? std::strlen(pSource) : 0;
    if (nLength == 0 || nLength > LyStringBuffer::MAX_CHARACTERS)
        return m_pEmpty;
    LyStringBuffer* pBlock = Construct(static_cast<int>(nLength), true);
    if (pBlock == nullptr)
        return m_pEmpty;
    for (size_t i = 0; i < nLength; ++i)
        pBlock->characters[i] = static_cast<unsigned char>(pSource[i]);
    pBlock->characters[nLength] = 0;
    return pBlock->characters;
}

wchar_t* LyStringGlobals::NewLyStringBuffer(int nChars)
{
    LyStringBuffer* pBlock = nChars > 0 ? Construct(nChars, true) : nullptr;
    if (pBlock == nullptr)
        return m_pEmpty;
    std::wmemset(pBlock->characters, 0, static_cast<size_t>(nChars) + 1);
    return pBlock->characters;
}

wchar_t* LyStringGlobals::NewLyStringBuffer()
{
    LyStringBuffer* pBlock = Construct(0, true);
    if (pBlock == nullptr)
        return m_pEmpty;
    pBlock->characters[0] = 0;
    return pBlock->characters;
}

// ---- Characters

void LyStringGlobals::SetLocale(bool bApplyUserLocale)
{
    // Several sources may be made at once, and each applies the locale anew.
    pthread_mutex_lock(&s_LocaleMutex);
    if (bApplyUserLocale)
        std::setlocale(LC_ALL, "");
    GetGlobals().FillCharacterTables();
    pthread_mutex_unlock(&s_LocaleMutex);
}

void LyStringGlobals::FillCharacterTables()
{
    for (int i = 0; i < CHARACTER_TABLE_SIZE; ++i)
    {
        m_nLowerCase[i].store(std::tolower(i), std::memory_order_relaxed);
        m_nClasses[i].store(GetClasses(i), std::memory_order_relaxed);
    }
}

int LyStringGlobals::ToLowerWide(wchar_t c) { return static_cast<int>(std::towlower(static_cast<wint_t>(c))); }

bool LyStringGlobals::HasClassWide(wchar_t c, int nClasses)
{
    auto n = static_cast<wint_t>(c);
    return ((nClasses & DIGIT) && std::iswdigit(n)) || ((nClasses & ALPHABETIC) && std::iswalpha(n)) ||
           ((nClasses & WHITE_SPACE) && std::iswspace(n)) || ((nClasses & UPPER_CASE) && std::iswupper(n)) ||
           ((nClasses & LOWER_CASE) && std::iswlower(n)) || ((nClasses & PUNCTUATION) && std::iswpunct(n)) ||
           ((nClasses & PRINTABLE) && std::iswprint(n));
}
