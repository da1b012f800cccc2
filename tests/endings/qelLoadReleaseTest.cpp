// The library loaded, used and released again and again.

#include "soak/ProcessCounts.h"
#include "support/OpenHandles.h"
#include "tasks/LoadedPool.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <atomic>

using qelTest::LoadedLibrary;
using qelTest::LoadedPool;

namespace
{
int cycles = 100; // of the command line

void increment(void* counter)
{
    ++*static_cast<std::atomic<int>*>(counter);
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

/// Every second pool is waited for; the others are destroyed with their workers at work.
void useOnce(int round)
{
    ASSERT_FALSE(LoadedLibrary::isLoaded());
    std::atomic<int> ran(0);
    const LoadedLibrary library;
    LoadedPool pool(library, 2);
    for (int i = 0; i < 10; ++i)
    {
        pool.queue(&increment, &ran);
    }
    if (round % 2 == 0)
    {
        pool.wait();
        ASSERT_EQ(ran, 10);
    }
    pool.destroy();
    library.unload();
    ASSERT_TRUE(LoadedLibrary::isUnloadedSoon());
}

TEST(qelLoadRelease, LeavesNoHandleAndNoThread)
{
    // It stays: that of Wine 10 loses 768 KB whenever it goes with the library.
    const HMODULE commonControls = LoadLibraryW(L"comctl32.dll");
    for (int round = 0; round < 10; ++round)
    {
        useOnce(round);
        ASSERT_FALSE(HasFatalFailure()) << round;
    }
    const int handles = qelTest::openHandles();
    const int threads = qelTest::threads();
    const size_t memory = committedMemory();
    for (int round = 0; round < cycles; ++round)
    {
        useOnce(round);
        ASSERT_FALSE(HasFatalFailure()) << round;
    }
    const double grown = static_cast<double>(committedMemory()) - static_cast<double>(memory);
    const int handlesAfter = qelTest::openHandles();
    const int threadsAfter = qelTest::threads();
    EXPECT_EQ(handlesAfter, handles);
    EXPECT_EQ(threadsAfter, threads);
    // Each load leaves a list in the heap; a thread that the system starts meanwhile has a stack.
    EXPECT_LT(grown, 4.0 * 1024 * cycles + 8 * 1024 * 1024);
    printf("%d cycles: %s before, %d after; %s before, %d after; %.1f KB kept a cycle\n", cycles,
           qelTest::counted(handles, "handle").c_str(), handlesAfter, qelTest::counted(threads, "thread").c_str(),
           threadsAfter, grown / 1024 / cycles);
    FreeLibrary(commonControls);
}
} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (argc == 3 && strcmp(argv[1], "--cycles") == 0)
    {
        cycles = atoi(argv[2]);
    }
    return RUN_ALL_TESTS();
}
