#include "support/GuardedMemory.h"

#include "support/StringInternals.h"

#include <malloc.h>
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{
const size_t kPage = 4096;
const unsigned char kFilling = 0xCD;

size_t pagesFor(size_t bytes)
{
    return (bytes + kPage - 1) / kPage;
}

[[noreturn]] void fail(const char* what)
{
    std::printf("guarded memory: %s\n", what);
    std::fflush(stdout);
    std::abort();
}

struct Block
{
    size_t size;
    bool exists;
    bool isNarrowForm;
};

/// Guarded blocks, side by side in one range of addresses. Each is followed by a page that is never open.
class Arena
{
public:
    Arena()
        : m_base(static_cast<unsigned char*>(VirtualAlloc(nullptr, kPages * kPage, MEM_RESERVE, PAGE_NOACCESS)))
        , m_blocks(static_cast<Block*>(
              VirtualAlloc(nullptr, kPages * sizeof(Block), MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE)))
    {
        if (m_base == nullptr || m_blocks == nullptr)
        {
            fail("no range of addresses");
        }
    }

    /// Null when there are too many: each takes two entries in the system's list of what a process has mapped, which
    /// is limited.
    void* allocate(size_t bytes, bool isNarrowForm)
    {
        const size_t pages = pagesFor(bytes);
        if (m_live == kMaxLive || pages >= kPages / 4)
        {
            return nullptr;
        }
        const size_t page = findRoom(pages);
        unsigned char* begin = m_base + page * kPage;
        if (pages > 0)
        {
            if (VirtualAlloc(begin, pages * kPage, MEM_COMMIT, PAGE_READWRITE) == nullptr)
            {
                return nullptr;
            }
            std::memset(begin, kFilling, pages * kPage);
        }
        m_blocks[page] = {bytes, true, isNarrowForm};
        m_next = page + pages + 1;
        ++m_live;
        return begin + pages * kPage - bytes;
    }

    bool owns(const void* block) const { return pageOf(block) < kPages; }

    const Block& operator[](const void* block) const { return m_blocks[pageOf(block)]; }

    void release(void* block)
    {
        const size_t page = pageOf(block);
        if (!m_blocks[page].exists)
        {
            fail("a block is freed twice, or its middle");
        }
        const size_t pages = pagesFor(m_blocks[page].size);
        unsigned char* begin = m_base + page * kPage;
        const auto* const front = static_cast<unsigned char*>(block);
        if (std::any_of(static_cast<const unsigned char*>(begin), front, [](unsigned char c) { return c != kFilling; }))
        {
            fail("something was written before a block");
        }
        m_blocks[page].exists = false;
        --m_live;
        if (pages > 0)
        {
            VirtualFree(begin, pages * kPage, MEM_DECOMMIT);
        }
    }

private:
    static constexpr size_t kPages = size_t(4) << 20;
    static constexpr size_t kMaxLive = 20000;

    size_t pageOf(const void* block) const
    {
        return static_cast<size_t>(static_cast<const unsigned char*>(block) - m_base) / kPage;
    }

    /// The first page of so many free ones and one to follow them. From where the last search ended, so that freed
    /// pages stay closed for long.
    size_t findRoom(size_t pages) const
    {
        size_t first = m_next;
        for (size_t found = 0; found <= pages;)
        {
            if (first + pages >= kPages)
            {
                first = 0;
                found = 0;
            }
            const Block& block = m_blocks[first + found];
            if (!block.exists)
            {
                ++found;
            }
            else
            {
                first += found + pagesFor(block.size) + 1;
                found = 0;
            }
        }
        return first;
    }

    unsigned char* m_base;
    Block* m_blocks; ///< by the first page of each
    size_t m_next = 0;
    size_t m_live = 0;
};

class Lock
{
public:
    Lock() { AcquireSRWLockExclusive(&s_lock); }
    ~Lock() { ReleaseSRWLockExclusive(&s_lock); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

private:
    static SRWLOCK s_lock;
};

SRWLOCK Lock::s_lock = SRWLOCK_INIT;

/// Finds out who allocates by the return addresses on the stack.
class NarrowForms
{
public:
    /// While it is called, the next allocation is one for a narrow form.
    void learn()
    {
        const qelString text(L"x");
        m_isLearning = true;
        text.getStringA();
        m_isLearning = false;
    }

    bool isAllocating()
    {
        void* callers[kDepth];
        const USHORT count = RtlCaptureStackBackTrace(2, kDepth, callers, nullptr);
        if (m_isLearning)
        {
            takeOutermostOfLibrary(callers, count);
        }
        return std::any_of(callers, callers + count, [this](void* caller) {
            const auto address = reinterpret_cast<DWORD64>(caller);
            return address >= m_begin && address < m_end;
        });
    }

private:
    static constexpr USHORT kDepth = 6;

    /// qelString::getStringA() is the only function of the library that this program has called.
    void takeOutermostOfLibrary(void* const* callers, USHORT count)
    {
        const HMODULE library = GetModuleHandleW(L"VarnelQELRoots.dll");
        for (USHORT i = 0; i < count; ++i)
        {
            DWORD64 base = 0;
            const RUNTIME_FUNCTION* function =
                RtlLookupFunctionEntry(reinterpret_cast<DWORD64>(callers[i]), &base, nullptr);
            if (function != nullptr && base == reinterpret_cast<DWORD64>(library))
            {
                m_begin = base + function->BeginAddress;
                m_end = base + function->EndAddress;
            }
        }
    }

    bool m_isLearning = false;
    DWORD64 m_begin = 0;
    DWORD64 m_end = 0;
};

// All of these for as long as the process lives: the library frees some of its blocks at the very end.
Arena& arena()
{
    static auto& theArena = *new Arena;
    return theArena;
}

NarrowForms& narrowForms()
{
    static auto& theForms = *new NarrowForms;
    return theForms;
}

qelTest::GuardedHeapCounts theCounts;

/// What both modules call without a guarded heap.
void (*realFree)(void*) = nullptr;

bool isStringBuffer(const void* block, size_t size)
{
    if (size <= sizeof(qelStringRepr))
    {
        return false;
    }
    // The first word of both is the virtual table.
    return std::memcmp(block, qelString::m_repEmpty, sizeof(void*)) == 0;
}

/// What was never written to holds nothing that needs wiping.
bool isLeft(unsigned char c)
{
    return c != 0 && c != kFilling;
}

/// Says what is left in a block; not more than ten times.
void expectWiped(const char* what, const unsigned char* begin, const unsigned char* end)
{
    const unsigned char* const left = std::find_if(begin, end, isLeft);
    if (left != end && ++theCounts.notWiped <= 10)
    {
        std::printf("not wiped: a %s of %d bytes, from byte %d on:", what, static_cast<int>(end - begin),
                    static_cast<int>(left - begin));
        std::for_each(left, std::min(end, left + 32), [](unsigned char c) { std::printf(" %02x", c); });
        std::printf("\n");
    }
}

void checkWiping(const void* block)
{
    const auto* const begin = static_cast<const unsigned char*>(block);
    const Block& found = arena()[block];
    if (found.isNarrowForm)
    {
        ++theCounts.narrowForms;
        expectWiped("narrow form", begin, begin + found.size);
    }
    else if (isStringBuffer(block, found.size))
    {
        ++theCounts.stringBuffers;
        expectWiped("string buffer", begin + sizeof(qelStringRepr), begin + found.size);
    }
}

void* guardedMalloc(size_t bytes)
{
    const bool isNarrowForm = narrowForms().isAllocating();
    void* block = nullptr;
    {
        const Lock lock;
        block = arena().allocate(bytes, isNarrowForm);
        ++(block != nullptr ? theCounts.blocks : theCounts.unguarded);
    }
    return block != nullptr ? block : std::malloc(bytes);
}

void guardedFree(void* block)
{
    // What the library allocated before the hook was there goes back to where it came from.
    if (!arena().owns(block))
    {
        realFree(block);
        return;
    }
    const Lock lock;
    checkWiping(block);
    arena().release(block);
}
} // namespace

qelTest::GuardedHeap::GuardedHeap()
    : m_malloc("malloc", &guardedMalloc)
    , m_free("free", &guardedFree)
    , m_freeOfProgram(GetModuleHandleW(nullptr), "free", reinterpret_cast<void*>(&guardedFree))
{
    if (realFree == nullptr)
    {
        realFree = reinterpret_cast<void (*)(void*)>(m_freeOfProgram.original());
    }
    narrowForms().learn();
}

size_t qelTest::sizeOfBlock(void* block)
{
    const Lock lock;
    return arena().owns(block) ? arena()[block].size : _msize(block);
}

qelTest::GuardedHeapCounts qelTest::GuardedHeap::counts()
{
    const Lock lock;
    return theCounts;
}
