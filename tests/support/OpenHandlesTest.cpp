#include "support/OpenHandles.h"
#include "support/TestFile.h"

#include <gtest/gtest.h>

namespace
{
TEST(OpenHandles, CountsFilesWhileTheyAreOpen)
{
    const qelTest::TestFile onDisk(std::string("text"));
    const int before = qelTest::openHandles();
    const HANDLE file =
        CreateFileW(onDisk.widePath().c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_EQ(qelTest::openHandles(), before + 1);
    CloseHandle(file);
    EXPECT_EQ(qelTest::openHandles(), before);
}
} // namespace
