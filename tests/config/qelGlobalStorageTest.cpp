#include "qelGlobalStorage.h"
#include "qelProductDefines.h"
#include "qelString.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <wchar.h>

namespace
{
// Read before the first test runs.
const qelString* const initialSupportPaths = qelGlobalStorage::g_pMoxSupportPaths;
} // namespace

TEST(qelGlobalStorage, HoldsNoSupportPathsAtLoad)
{
    EXPECT_EQ(initialSupportPaths, nullptr);
}

TEST(qelGlobalStorage, HandsOutWhatTheHostStored)
{
    qelString paths(L"C:\\support;D:\\support");
    qelGlobalStorage::g_pMoxSupportPaths = &paths;
    qelProductDefines::setOVProductName(L"Other");
    EXPECT_EQ(qelGlobalStorage::g_pMoxSupportPaths, &paths);
    EXPECT_STREQ(qelGlobalStorage::g_pMoxSupportPaths->getStringW(), L"C:\\support;D:\\support");
    qelGlobalStorage::g_pMoxSupportPaths = nullptr;
}

TEST(qelGlobalStorage, IsAnEmptyTrivialClass)
{
    EXPECT_TRUE(std::is_empty<qelGlobalStorage>::value);
    EXPECT_TRUE(std::is_trivially_default_constructible<qelGlobalStorage>::value);
    EXPECT_TRUE(std::is_trivially_copy_assignable<qelGlobalStorage>::value);
    EXPECT_TRUE(std::is_trivially_move_assignable<qelGlobalStorage>::value);
    EXPECT_TRUE(std::is_trivially_destructible<qelGlobalStorage>::value);
}
