#include "support/DebugOutput.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace
{
TEST(DebugOutput, CollectsWideAndNarrowTextsInOrder)
{
    const qelTest::DebugOutput debugger;
    OutputDebugStringW(L"one %s");
    OutputDebugStringA("two");
    EXPECT_EQ(debugger.texts(), (std::vector<std::wstring>{L"one %s", L"two"}));
}

TEST(DebugOutput, CollectsOnlyWhileItLives)
{
    OutputDebugStringW(L"before");
    const qelTest::DebugOutput debugger;
    EXPECT_TRUE(debugger.texts().empty());
}
} // namespace
