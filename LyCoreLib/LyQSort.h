// Sorting in place, without recursion, on one thread or on two: the caller's and a helper's.
//
// The order of elements that compare equal is not kept.
// Threads: one Sort at a time per object. With two threads the comparer is called from both at once. The helper has
//          ended when Sort returns.

#pragma once

#include "LyLock.h"
#include "LyThread.h"
#include <cstddef>

template <class T>
class ILyQSortCompare
{
public:
    virtual int LyQSort_Compare(T* pFirst, T* pSecond) = 0; // above 0 if the first sorts behind the second

protected:
    ~ILyQSortCompare() = default;
};

template <class T>
class LyQSort : public LyThread
{
public:
    static constexpr ptrdiff_t PARTITION_CUTOFF = 17; // fewer elements go through the shell sort
    static constexpr int STACK_DEPTH = 124;
    static constexpr unsigned int IDLE_SLEEP_MS = 5;
    static constexpr int STOP_LOOP_SLEEP_MS = 1; // the helper is about to end when Sort waits for it

    LyQSort() : LyThread(false, false) { m_nStopLoopSleepMS = STOP_LOOP_SLEEP_MS; }
    ~LyQSort() override { Stop(-1); }

    // Sorts nCount elements from pArray on by the comparer, with a helper thread if bMultiThreaded.
    void Sort(ILyQSortCompare<T>* pCompare, T* pArray, unsigned long nCount, bool bMultiThreaded);

    bool Thread() override; // the helper

private:
    void SortPartition(T* pLow, T* pHigh);
    bool SortStep(T*& pLow, T*& pHigh);
    void OrderThree(T* pLow, T* pMiddle, T* pHigh);
    void Split(T* pLow, T* pHigh, T* pMiddle, T*& pLeftEnd, T*& pRightStart);
    void ShellSort(T* pLow, T* pHigh);
    void Push(T* pLow, T* pHigh);
    bool Pop(T*& pLow, T*& pHigh);
    bool WaitForRange(T*& pLow, T*& pHigh);

    int Compare(T* pFirst, T* pSecond) { return m_pCompare->LyQSort_Compare(pFirst, pSecond); }
    static void Swap(T* pFirst, T* pSecond)
    {
        T value = *pFirst;
        *pFirst = *pSecond;
        *pSecond = value;
    }

    LyLock m_SortLock; // guards the idle count and the stack
    ILyQSortCompare<T>* m_pCompare = nullptr;
    bool m_bMultiThreaded = false;
    int m_nIdle = 0; // workers that found the stack empty
    // Ranges that wait to be sorted, both ends included. Deliberate: pushing has no bounds test. The larger part is
    // pushed and the smaller one worked on, so the depth is logarithmic in the number of elements.
    T* m_pLeft[STACK_DEPTH] = {};
    T* m_pRight[STACK_DEPTH] = {};
    int m_nDepth = 0;
};

// ---- Implementation

template <class T>
void LyQSort<T>::Sort(ILyQSortCompare<T>* pCompare, T* pArray, unsigned long nCount, bool bMultiThreaded)
{
    if (nCount < 2 || pArray == nullptr || pCompare == nullptr)
        return;
    m_pCompare = pCompare;
    m_bMultiThreaded = bMultiThreaded;
    m_nDepth = 0;
    m_nIdle = 0;
    m_nRunCount = 0;
    SortPartition(pArray, pArray + (nCount - 1));
    Stop(-1);
}

template <class T>
bool LyQSort<T>::Thread()
{
    T* pLow = nullptr;
    T* pHigh = nullptr;
    if (WaitForRange(pLow, pHigh))
        SortPartition(pLow, pHigh);
    return true;
}

// Works on ranges until every worker is idle.
template <class T>
void LyQSort<T>::SortPartition(T* pLow, T* pHigh)
{
    do
    {
        while (SortStep(pLow, pHigh))
        {
        }
    } while (WaitForRange(pLow, pHigh));
}

// One step down a range. True if it left a smaller range to go on with.
template <class T>
bool LyQSort<T>::SortStep(T*& pLow, T*& pHigh)
{
    const ptrdiff_t nCount = pHigh - pLow + 1;
    if (nCount < PARTITION_CUTOFF)
    {
        ShellSort(pLow, pHigh);
        return false;
    }
    T* pMiddle = pLow + nCount / 2;
    OrderThree(pLow, pMiddle, pHigh);
    T* pLeftEnd = pHigh;
    T* pRightStart = pLow;
    Split(pLow, pHigh, pMiddle, pLeftEnd, pRightStart);
    if (pLeftEnd - pLow >= pHigh - pRightStart)
    {
        if (pLow < pLeftEnd)
            Push(pLow, pLeftEnd);
        pLow = pRightStart;
    }
    else
    {
        if (pRightStart < pHigh)
            Push(pRightStart, pHigh);
        pHigh = pLeftEnd;
    }
    return pLow < pHigh;
}

template <class T>
void LyQSort<T>::OrderThree(T* pLow, T* pMiddle, T* pHigh)
{
    if (Compare(pLow, pMiddle) > 0)
        Swap(pLow, pMiddle);
    if (Compare(pLow, pHigh) > 0)
        Swap(pLow, pHigh);
    if (Compare(pMiddle, pHigh) > 0)
        Swap(pMiddle, pHigh);
}

// Moves what sorts behind the middle element to the right and the rest to the left. Elements equal to it that end up
// between the two parts belong to neither.
template <class T>
void LyQSort<T>::Split(T* pLow, T* pHigh, T* pMiddle, T*& pLeftEnd, T*& pRightStart)
{
    T* pUp = pLow;
    T* pDown = pHigh;
    for (;;)
    {
        if (pMiddle > pUp)
            do
                ++pUp;
            while (pUp < pMiddle && Compare(pUp, pMiddle) <= 0);
        if (pMiddle <= pUp)
            do
                ++pUp;
            while (pUp <= pHigh && Compare(pUp, pMiddle) <= 0);
        do
            --pDown;
        while (pDown > pMiddle && Compare(pDown, pMiddle) > 0);
        if (pDown < pUp)
            break;
        if (pDown != pUp)
            Swap(pUp, pDown);
        if (pMiddle == pDown)
            pMiddle = pUp;
    }
    ++pDown;
    if (pMiddle < pDown)
        do
            --pDown;
        while (pDown > pMiddle && Compare(pDown, pMiddle) == 0);
    if (pMiddle >= pDown)
        do
            --pDown;
        while (pDown > pLow && Compare(pDown, pMiddle) == 0);
    pLeftEnd = pDown;
    pRightStart = pUp;
}

template <class T>
void LyQSort<T>::ShellSort(T* pLow, T* pHigh)
{
    const ptrdiff_t nCount = pHigh - pLow + 1;
    if (nCount < 2)
        return;
    for (ptrdiff_t nGap = nCount / 2; nGap > 0; nGap = nGap == 2 ? 1 : nGap * 5 / 11)
    {
        for (ptrdiff_t i = nGap; i < nCount; ++i)
        {
            T kept = pLow[i];
            ptrdiff_t nHole = i;
            for (; nHole >= nGap && Compare(pLow + (nHole - nGap), &kept) > 0; nHole -= nGap)
                pLow[nHole] = pLow[nHole - nGap];
            pLow[nHole] = kept;
        }
    }
}

// The first push of a sort starts the helper. If it cannot be started, the caller's thread does everything.
template <class T>
void LyQSort<T>::Push(T* pLow, T* pHigh)
{
    const LySingleLock lock(&m_SortLock);
    m_pLeft[m_nDepth] = pLow;
    m_pRight[m_nDepth] = pHigh;
    ++m_nDepth;
    if (m_bMultiThreaded && GetRunCount() == 0)
        (void)Start(0, false);
}

// Under the lock.
template <class T>
bool LyQSort<T>::Pop(T*& pLow, T*& pHigh)
{
    if (m_nDepth == 0)
        return false;
    --m_nDepth;
    pLow = m_pLeft[m_nDepth];
    pHigh = m_pRight[m_nDepth];
    return true;
}

// The next range of the stack; waits for one as long as the other worker may still push. False once all are idle.
template <class T>
bool LyQSort<T>::WaitForRange(T*& pLow, T*& pHigh)
{
    m_SortLock.Lock();
    bool bFound = Pop(pLow, pHigh);
    if (!bFound)
    {
        ++m_nIdle;
        const int nWorkers = GetRunCount() >= 1 ? 2 : 1;
        while (!bFound && m_nIdle < nWorkers)
        {
            m_SortLock.Unlock();
            Sleep(IDLE_SLEEP_MS);
            m_SortLock.Lock();
            bFound = Pop(pLow, pHigh);
            if (bFound)
                --m_nIdle;
        }
    }
    m_SortLock.Unlock();
    return bFound;
}
