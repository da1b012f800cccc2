#include "support/GuardedMemory.h"

#include "qelString.h"
#include "support/StringInternals.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace
{
using qelTest::GuardedHeap;
using qelTest::GuardedHeapCounts;

TEST(GuardedHeap, CountsTheBuffersAndNarrowFormsThatAreFreed)
{
    const GuardedHeap heap;
    const GuardedHeapCounts before = GuardedHeap::counts();
    {
        const qelString text(L"text");
        const qelString other(L"other");
        (void)text.getStringA();
    }
    const GuardedHeapCounts after = GuardedHeap::counts();
    EXPECT_EQ(before.blocks + 3, after.blocks);
    EXPECT_EQ(before.stringBuffers + 2, after.stringBuffers);
    EXPECT_EQ(before.narrowForms + 1, after.narrowForms);
    EXPECT_EQ(before.notWiped, after.notWiped);
}

TEST(GuardedHeap, SeesWhatIsLeftInAFreedBuffer)
{
    if (std::getenv("QEL_TEST_GUARDED_MEMORY") != nullptr)
    {
        GTEST_SKIP() << "the program would fail for it";
    }
    const GuardedHeap heap;
    const GuardedHeapCounts before = GuardedHeap::counts();
    {
        // Only the text up to the terminator is wiped.
        const qelString text(std::wstring(200, L's').c_str());
        (representationOf(text)->*member(RepresentationData()))[1] = 0;
    }
    EXPECT_EQ(before.notWiped + 1, GuardedHeap::counts().notWiped);
}

TEST(GuardedHeap, FreesInTheProgramWhatTheLibraryAllocated)
{
    const GuardedHeap heap;
    const long one = 1;
    unsigned char* const block = qelMemoryControllerController::allocateArray(one, 100);
    EXPECT_EQ(100U, qelTest::sizeOfBlock(block));
    free(block);
    unsigned char* const next = qelMemoryControllerController::allocateArray(one, 100);
    EXPECT_NE(block, next);
    free(next);
}
} // namespace
