// A program whose tests end in every way, for the tests of the kit.

#include <gtest/gtest.h>

#include <windows.h>

#include <stdlib.h>

namespace
{
TEST(Sample, Passes) {}

TEST(Sample, Fails)
{
    FAIL() << "as it should";
}

TEST(Sample, IsSkipped)
{
    GTEST_SKIP() << "as it should be";
}

TEST(Sample, EndsTheProgram)
{
    TerminateProcess(GetCurrentProcess(), 3);
}

TEST(Sample, PassesBehindTheEnd) {}

TEST(Sample, EndsTheProgramWithoutError)
{
    TerminateProcess(GetCurrentProcess(), 0);
}

class Numbers : public testing::TestWithParam<int>
{
};

TEST_P(Numbers, AreBelowTwo)
{
    EXPECT_LT(GetParam(), 2);
}

INSTANTIATE_TEST_SUITE_P(Few, Numbers, testing::Values(1, 2));
} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const int result = RUN_ALL_TESTS();
    // Trouble behind the last test.
    char stated[20] = {};
    return GetEnvironmentVariableA("QEL_SAMPLE_RESULT", stated, sizeof(stated)) != 0 ? atoi(stated) : result;
}
