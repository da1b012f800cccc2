// The DLL loaded and unloaded while the process runs.

#include "qelRegExWrapper.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <string.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <new>
#include <set>

namespace
{
TEST(qelUnload, EverythingComesAndGoesWithTheModule)
{
    for (int round = 0; round < 3; ++round)
    {
        ASSERT_EQ(GetModuleHandleW(L"VarnelQELRoots.dll"), nullptr);
        const HMODULE module = LoadLibraryW(L"VarnelQELRoots.dll");
        ASSERT_NE(module, nullptr);
        EXPECT_EQ(GetModuleHandleW(L"VarnelQELRoots.dll"), module);
        EXPECT_TRUE(FreeLibrary(module));
    }
    EXPECT_EQ(GetModuleHandleW(L"VarnelQELRoots.dll"), nullptr);
}

size_t committedMemory()
{
    size_t committed = 0;
    MEMORY_BASIC_INFORMATION region;
    const unsigned char* at = nullptr;
    while (VirtualQuery(at, &region, sizeof region) == sizeof region)
    {
        committed += region.State == MEM_COMMIT ? region.RegionSize : 0;
        at = static_cast<const unsigned char*>(region.BaseAddress) + region.RegionSize;
    }
    return committed;
}

TEST(qelUnload, GivesTheMemoryBack)
{
    // It stays: that of Wine 10 loses 768 KB whenever it goes with the library.
    const HMODULE commonControls = LoadLibraryW(L"comctl32.dll");
    FreeLibrary(LoadLibraryW(L"VarnelQELRoots.dll"));
    const size_t before = committedMemory();
    for (int round = 0; round < 10; ++round)
    {
        FreeLibrary(LoadLibraryW(L"VarnelQELRoots.dll"));
    }
    // The two scratch buffers alone are one and a half megabytes a time.
    EXPECT_LT(committedMemory(), before + 1024 * 1024);
    FreeLibrary(commonControls);
}

#if defined(__MINGW32__)
/// The words of the library's data that are nobody's address and end with the zero byte of a stack guard.
std::set<std::uint64_t> possibleGuards(HMODULE module)
{
    const auto* image = reinterpret_cast<const char*>(module);
    const auto* headers =
        reinterpret_cast<const IMAGE_NT_HEADERS*>(image + reinterpret_cast<const IMAGE_DOS_HEADER*>(image)->e_lfanew);
    const IMAGE_SECTION_HEADER* section = reinterpret_cast<const IMAGE_SECTION_HEADER*>(headers + 1);
    std::set<std::uint64_t> words;
    for (int i = 0; i < headers->FileHeader.NumberOfSections; ++i, ++section)
    {
        if ((section->Characteristics & IMAGE_SCN_MEM_WRITE) == 0)
        {
            continue;
        }
        const DWORD end = section->VirtualAddress + section->Misc.VirtualSize;
        for (DWORD at = section->VirtualAddress; at + sizeof(std::uint64_t) <= end; at += sizeof(std::uint64_t))
        {
            std::uint64_t word = 0;
            memcpy(&word, image + at, sizeof word);
            if ((word & 0xFF) == 0 && word >> 48 != 0)
            {
                words.insert(word);
            }
        }
    }
    return words;
}

TEST(qelUnload, EachLoadChoosesAnotherStackGuard)
{
    std::set<std::uint64_t> before;
    for (int round = 0; round < 3; ++round)
    {
        const HMODULE module = LoadLibraryW(L"VarnelQELRoots.dll");
        ASSERT_NE(module, nullptr);
        std::set<std::uint64_t> changed;
        const std::set<std::uint64_t> now = possibleGuards(module);
        std::set_difference(now.begin(), now.end(), before.begin(), before.end(),
                            std::inserter(changed, changed.end()));
        EXPECT_FALSE(changed.empty());
        before = now;
        EXPECT_TRUE(FreeLibrary(module));
    }
}
#endif

size_t blocksInUse(HANDLE heap)
{
    size_t bytes = 0;
    PROCESS_HEAP_ENTRY entry = {};
    HeapLock(heap);
    while (HeapWalk(heap, &entry))
    {
        bytes += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? entry.cbData : 0;
    }
    HeapUnlock(heap);
    return bytes;
}

size_t heapInUse()
{
    HANDLE heaps[64];
    const DWORD count = GetProcessHeaps(64, heaps);
    size_t bytes = 0;
    for (DWORD i = 0; i < count && i < 64; ++i)
    {
        bytes += blocksInUse(heaps[i]);
    }
    return bytes;
}

// Bytes that a round with the library keeps in the heap.
double keptByARound(void (*round)())
{
    // It stays, as above.
    const HMODULE commonControls = LoadLibraryW(L"comctl32.dll");
    // What the system sets up once.
    round();
    round();
    const int kRounds = 20;
    const size_t before = heapInUse();
    for (int i = 0; i < kRounds; ++i)
    {
        round();
    }
    const double kept = static_cast<double>(heapInUse() - before) / kRounds;
    FreeLibrary(commonControls);
    return kept;
}

// The list with the progress dialog in it, eight pointers, and a lock of GCC's runtime. With the heap's own bytes.
const double kOfAList = 120;

void loadAndRelease()
{
    FreeLibrary(LoadLibraryW(L"VarnelQELRoots.dll"));
}

TEST(qelUnload, LeavesOneListInTheHeap)
{
    EXPECT_LT(keptByARound(&loadAndRelease), kOfAList);
}

void loadThrowAndRelease()
{
#if defined(_MSC_VER)
    const char* const kAllocateArray = "?allocateArray@qelMemoryControllerController@@SAPEAEAEBJAEB_K@Z";
#else
    const char* const kAllocateArray = "_ZN29qelMemoryControllerController13allocateArrayERKlRKy";
#endif
    const HMODULE module = LoadLibraryW(L"VarnelQELRoots.dll");
    using AllocateArray = unsigned char*(const long&, const unsigned long long&);
    const auto allocateArray =
        reinterpret_cast<AllocateArray*>(reinterpret_cast<void*>(GetProcAddress(module, kAllocateArray)));
    const long impossible = -1;
    EXPECT_THROW(allocateArray(impossible, 1), std::bad_alloc);
    FreeLibrary(module);
}

// With the runtime of GCC 14; nothing more with that of GCC 12.
const double kMoreAfterAnException = 180;

TEST(qelUnload, LeavesHardlyMoreAfterAnException)
{
    EXPECT_LT(keptByARound(&loadThrowAndRelease), kOfAList + kMoreAfterAnException);
}

// Importing functions would keep the library loaded.
#if defined(_MSC_VER)
const char* const kMakeText = "??0qelString@@QEAA@PEB_W@Z";
const char* const kDestroyText = "??1qelString@@QEAA@XZ";
const char* const kMakeExpression = "??0qelRegExWrapper@@QEAA@XZ";
const char* const kSetExpression = "?setRegularExpression@qelRegExWrapper@@QEAAXAEBVqelString@@@Z";
const char* const kMatch =
    "?match@qelRegExWrapper@@QEAA_NAEBVqelString@@AEAV?$qelArray@VqelString@@"
    "V?$qelArrayObjectCopyReallocator@VqelString@@@@V?$qelArrayMemoryController@VqelString@@@@@@@Z";
const char* const kDestroyExpression = "??1qelRegExWrapper@@QEAA@XZ";
#else
const char* const kMakeText = "_ZN9qelStringC1EPKw";
const char* const kDestroyText = "_ZN9qelStringD1Ev";
const char* const kMakeExpression = "_ZN15qelRegExWrapperC1Ev";
const char* const kSetExpression = "_ZN15qelRegExWrapper20setRegularExpressionERK9qelString";
const char* const kMatch = "_ZN15qelRegExWrapper5matchERK9qelStringR8qelArrayIS0_29qelArrayObjectCopyReallocatorIS0_E"
                           "24qelArrayMemoryControllerIS0_EE";
const char* const kDestroyExpression = "_ZN15qelRegExWrapperD1Ev";
#endif

template <class Function> Function* exported(HMODULE module, const char* name)
{
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

void loadFailInAPatternAndRelease()
{
    const HMODULE module = LoadLibraryW(L"VarnelQELRoots.dll");
    alignas(8) unsigned char text[sizeof(qelString)];
    alignas(8) unsigned char expression[sizeof(qelRegExWrapper)];
    alignas(8) unsigned char results[sizeof(qelArray<qelString>)] = {}; // remain as they are
    exported<void(void*, const wchar_t*)>(module, kMakeText)(text, L"(a");
    exported<void(void*)>(module, kMakeExpression)(expression);
    exported<void(void*, const void*)>(module, kSetExpression)(expression, text);
    EXPECT_FALSE(exported<bool(void*, const void*, void*)>(module, kMatch)(expression, text, results));
    exported<void(void*)>(module, kDestroyExpression)(expression);
    exported<void(void*)>(module, kDestroyText)(text);
    FreeLibrary(module);
}

TEST(qelUnload, LeavesHardlyMoreAfterARegularExpressionThatFails)
{
    EXPECT_LT(keptByARound(&loadFailInAPatternAndRelease), kOfAList + kMoreAfterAnException);
}
} // namespace
