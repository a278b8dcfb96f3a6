// A unit of its own: where a compiler sees malloc meet delete in one unit, it warns.

#include "CountAllocations.h"
#include <atomic>
#include <cstdlib>
#include <new>

static std::atomic<long long> s_nCount;

static void* Allocate(size_t nBytes) noexcept
{
    s_nCount.fetch_add(1, std::memory_order_relaxed);
    return std::malloc(nBytes != 0 ? nBytes : 1);
}

long long CountAllocations::GetCount() { return s_nCount; }

void* operator new(size_t nBytes)
{
    if (void* p = Allocate(nBytes))
        return p;
    throw std::bad_alloc();
}
void* operator new[](size_t nBytes) { return operator new(nBytes); }
void* operator new(size_t nBytes, const std::nothrow_t&) noexcept { return Allocate(nBytes); }
void* operator new[](size_t nBytes, const std::nothrow_t&) noexcept { return Allocate(nBytes); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, size_t) noexcept { std::free(p); }
void operator delete[](void* p, size_t) noexcept { std::free(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { std::free(p); }
