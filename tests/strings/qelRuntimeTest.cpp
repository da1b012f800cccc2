#include "qelRuntime.h"

#include "qelString.h"

#include <gtest/gtest.h>

namespace
{
TEST(qelFileExists, FindsFoldersAndPatternsButNothingElse)
{
    EXPECT_EQ(qelFileExists(L"C:\\windows"), 1);
    EXPECT_EQ(qelFileExists(L"C:\\win*"), 1);
    EXPECT_EQ(qelFileExists(L"C:\\no such folder"), 0);
    EXPECT_EQ(qelFileExists(L""), 0);
}
} // namespace
