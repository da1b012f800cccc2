// Every test program that is linked to the library has this: with QEL_TEST_GUARDED_MEMORY in its environment, all its
// tests run under a GuardedHeap, and it fails when a string was not wiped. tools/long/guarded-memory.sh reads the line
// it prints.
#include "support/GuardedMemory.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace
{
class GuardedProgram : public testing::Environment
{
public:
    void SetUp() override { m_heap = std::make_unique<qelTest::GuardedHeap>(); }

    void TearDown() override
    {
        const qelTest::GuardedHeapCounts counts = qelTest::GuardedHeap::counts();
        std::printf("guarded memory: %lld blocks, %lld unguarded, %lld string buffers, %lld narrow forms, %lld not "
                    "wiped\n",
                    counts.blocks, counts.unguarded, counts.stringBuffers, counts.narrowForms, counts.notWiped);
        EXPECT_EQ(0, counts.notWiped);
        // Blocks come back until the process ends.
        m_heap.release();
    }

private:
    std::unique_ptr<qelTest::GuardedHeap> m_heap;
};

const bool isGuarded = std::getenv("QEL_TEST_GUARDED_MEMORY") != nullptr &&
                       testing::AddGlobalTestEnvironment(new GuardedProgram) != nullptr;
} // namespace
