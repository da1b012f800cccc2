// The heap filled for real. Each test has a process of its own: it does not recover, and the first failure of a process
// is a different one from all others.

#include "qelRegExWrapper.h"
#include "qelString.h"
#include "support/FreshProcess.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <new>

namespace
{
// What a host links has an exception runtime of its own, whose memory for this thread comes with its first exception.
// That of the C runtime comes with the first error.
void readyOwnRuntime()
{
    try
    {
        throw std::bad_alloc();
    }
    catch (const std::bad_alloc&)
    {
        errno = 0;
    }
}

/// Lets this process have so much memory and no more. Wine does not: there, run-wine.sh limits the program.
void limitMemory()
{
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_PROCESS_MEMORY;
    limits.ProcessMemoryLimit = size_t(1) << 30;
    const HANDLE job = CreateJobObjectW(nullptr, nullptr);
    SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
    AssignProcessToJobObject(job, GetCurrentProcess());
}

/// While it lives, no block can be allocated in this process.
class FullHeap
{
public:
    FullHeap()
    {
        take(&malloc);
        take(&allocateFromProcessHeap);
    }

    FullHeap(const FullHeap&) = delete;
    FullHeap& operator=(const FullHeap&) = delete;

    ~FullHeap()
    {
        while (m_blocks != nullptr)
        {
            const Block block = *m_blocks;
            block.fromProcessHeap ? void(HeapFree(GetProcessHeap(), 0, m_blocks)) : free(m_blocks);
            m_blocks = block.next;
        }
    }

private:
    struct Block
    {
        Block* next;
        bool fromProcessHeap;
    };

    static void* allocateFromProcessHeap(size_t size) { return HeapAlloc(GetProcessHeap(), 0, size); }

    void take(void* (*allocate)(size_t))
    {
        for (size_t size = size_t(1) << 20; size > 0;)
        {
            // The smallest blocks have no room for a link and stay.
            void* block = allocate(size);
            if (block == nullptr)
            {
                size /= 2;
            }
            else if (size >= sizeof(Block))
            {
                m_blocks = new (block) Block{m_blocks, allocate != &malloc};
                m_bytes += size;
            }
            if (m_bytes > kMost)
            {
                printf("nothing limits the memory of this process\n");
                exit(1);
            }
        }
    }

    static const size_t kMost = size_t(4) << 30;

    Block* m_blocks = nullptr;
    size_t m_bytes = 0;
};

enum Outcome
{
    eDone,
    eThrew,
};

Outcome makeString()
{
    try
    {
        const qelString text(L"HEA 200");
        return eDone;
    }
    catch (const std::bad_alloc&)
    {
        return eThrew;
    }
}

Outcome makeStringInAFullHeap()
{
    const FullHeap full;
    return makeString();
}

TEST(qelOutOfMemory, ThrowsBadAllocAsTheFirstExceptionOfTheProcess)
{
    readyOwnRuntime();
    const Outcome outcome = makeStringInAFullHeap();
    EXPECT_EQ(outcome, eThrew);
}

TEST(qelOutOfMemory, ThrowsBadAllocAgainAndAgain)
{
    readyOwnRuntime();
    int thrown = 0;
    {
        const FullHeap full;
        for (int i = 0; i < 1000; ++i)
        {
            thrown += makeString() == eThrew ? 1 : 0;
        }
    }
    EXPECT_EQ(thrown, 1000);
}

TEST(qelOutOfMemory, ThrowsBadAllocAfterAnException)
{
    readyOwnRuntime();
    EXPECT_THROW(qelMemoryControllerController::allocateArray(-1, 1), std::bad_alloc);
    const Outcome outcome = makeStringInAFullHeap();
    EXPECT_EQ(outcome, eThrew);
}

/// Set by one thread, awaited by another.
class Signal
{
public:
    void set() { SetEvent(m_event); }
    void await() { WaitForSingleObject(m_event, 30000); }

private:
    const HANDLE m_event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
};

struct FreshThread
{
    Signal ready;
    Signal full;
    Signal tried;
    Signal over;
    Outcome outcome = eDone;
};

DWORD WINAPI makeStringLater(void* argument)
{
    FreshThread& thread = *static_cast<FreshThread*>(argument);
    readyOwnRuntime();
    thread.ready.set();
    thread.full.await();
    {
        // Heaps may keep blocks for each thread.
        const FullHeap hereAsWell;
        thread.outcome = makeString();
    }
    thread.tried.set();
    // Ending takes memory of Wine's DLLs.
    thread.over.await();
    return 0;
}

TEST(qelOutOfMemory, ThrowsBadAllocOnAThreadThatNeverUsedTheLibrary)
{
    FreshThread thread;
    const HANDLE handle = CreateThread(nullptr, 0, &makeStringLater, &thread, 0, nullptr);
    ASSERT_NE(handle, nullptr);
    thread.ready.await();
    {
        const FullHeap full;
        thread.full.set();
        thread.tried.await();
    }
    thread.over.set();
    ASSERT_EQ(WaitForSingleObject(handle, 30000), WAIT_OBJECT_0);
    EXPECT_EQ(thread.outcome, eThrew);
    CloseHandle(handle);
}

TEST(qelOutOfMemory, IsNoMatchForARegularExpression)
{
    qelRegExWrapper expression;
    expression.setRegularExpression(L"(HE[ABM]|IPE) *(\\d+)");
    const qelString text(L"HEA 200");
    qelArray<qelString> parts;
    bool matched = true;
    {
        const FullHeap full;
        matched = expression.match(text, parts);
    }
    EXPECT_FALSE(matched);
    EXPECT_TRUE(expression.match(text, parts));
}
} // namespace

int main(int argc, char** argv)
{
    if (qelTest::runsAlone(argc, argv))
    {
        limitMemory();
    }
    return qelTest::runEachTestAlone(argc, argv);
}
