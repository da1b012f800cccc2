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

/// As tests leave the registry that are ended in their middle.
void leaveKeys()
{
    const wchar_t kText[] = L"Installed";
    RegSetKeyValueW(HKEY_CURRENT_USER, L"Software\\Kelvara\\Orvalis\\2020", L"DataPath", REG_SZ, kText, sizeof(kText));
    RegDeleteKeyExW(HKEY_LOCAL_MACHINE, L"Software\\ODBC\\ODBCINST.INI\\ODBC Drivers", KEY_WOW64_64KEY, 0);
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, L"Software\\ODBC\\ODBCINST.INI\\ODBC Drivers", L"A driver of the tests", REG_SZ,
                    kText, sizeof(kText));
}
} // namespace

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (GetEnvironmentVariableA("QEL_SAMPLE_LEAVES_KEYS", nullptr, 0) != 0)
    {
        leaveKeys();
    }
    const int result = RUN_ALL_TESTS();
    // Trouble behind the last test.
    char stated[20] = {};
    return GetEnvironmentVariableA("QEL_SAMPLE_RESULT", stated, sizeof(stated)) != 0 ? atoi(stated) : result;
}
