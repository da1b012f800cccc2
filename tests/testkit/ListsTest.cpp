#include "Lists.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <stdexcept>

using qelTest::TemporaryFolder;

namespace
{
TEST(TestKitPrograms, KeepTheirOrderAndTheirColumns)
{
    const TemporaryFolder folder;
    const auto programs = testkit::readPrograms(folder.write(L"list", "# comment\r\n\r\n"
                                                                      "bin\\first\r\n"
                                                                      "bin\\second | registry\r\n"
                                                                      "  third|left out|Not ready."));
    ASSERT_EQ(programs.size(), 3u);
    EXPECT_EQ(programs[0].path, "bin\\first");
    EXPECT_FALSE(programs[0].writesRegistry);
    EXPECT_EQ(programs[0].leftOut, "");
    EXPECT_EQ(programs[1].path, "bin\\second");
    EXPECT_TRUE(programs[1].writesRegistry);
    EXPECT_EQ(programs[2].path, "third");
    EXPECT_EQ(programs[2].leftOut, "Not ready.");
}

TEST(TestKitPrograms, AreRefusedWithAnUnknownColumn)
{
    const TemporaryFolder folder;
    for (const char* line :
         {"bin\\a | register", "bin\\a | left out", "bin\\a | left out |", "bin\\a | registry | why"})
    {
        EXPECT_THROW(testkit::readPrograms(folder.write(L"list", line)), std::runtime_error) << line;
    }
    EXPECT_THROW(testkit::readPrograms(folder.path(L"missing")), std::runtime_error);
}

TEST(TestKitDifferences, CountForTheirSystem)
{
    const TemporaryFolder folder;
    const std::wstring file = folder.write(L"list", "windows | A.a | one\nwine | B.b | two\nany | C.c | three\n");
    const auto windows = testkit::readDifferences(file, "windows");
    ASSERT_EQ(windows.size(), 2u);
    EXPECT_EQ(windows[0].test, "A.a");
    EXPECT_EQ(windows[0].reason, "one");
    EXPECT_EQ(windows[1].test, "C.c");
    const auto wine = testkit::readDifferences(file, "wine");
    ASSERT_EQ(wine.size(), 2u);
    EXPECT_EQ(wine[0].test, "B.b");
}

TEST(TestKitDifferences, AreRefusedWithoutReasonOrSystem)
{
    const TemporaryFolder folder;
    for (const char* line : {"windows | A.a", "windows | A.a |", "linux | A.a | one"})
    {
        EXPECT_THROW(testkit::readDifferences(folder.write(L"list", line), "windows"), std::runtime_error) << line;
    }
}
} // namespace
