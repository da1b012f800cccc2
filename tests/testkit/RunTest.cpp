#include "GoogleTest.h"
#include "Process.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <sstream>

using testkit::Outcome;

namespace
{
const unsigned kSeconds = 60;

std::wstring samplePath()
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return (std::filesystem::path(path).parent_path() / L"qelTestKitSample.exe").wstring();
}

std::string content(const std::wstring& file)
{
    std::ifstream stream(std::filesystem::path(file), std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

TEST(TestKitList, NamesTestsWithTheirSuites)
{
    const std::vector<std::string> expected = {"First.one", "First.two", "Few/Numbers.AreOdd/0", "qelT/0.Copies"};
    EXPECT_EQ(testkit::listedTests("Running main() from somewhere\r\n"
                                   "First.\r\n  one\r\n  two\r\n"
                                   "Few/Numbers.\n  AreOdd/0  # GetParam() = 1\n"
                                   "qelT/0.  # TypeParam = char\n  Copies\n"),
              expected);
}

TEST(TestKitReport, TellsHowEachTestEnded)
{
    std::map<std::string, Outcome> outcomes;
    EXPECT_EQ(
        testkit::readReport("[ RUN      ] A.a\r\n[       OK ] A.a (0 ms)\r\n"
                            "[ RUN      ] A.b\r\ntext without an end[  FAILED  ] A.b, where GetParam() = 2 (3 ms)\r\n"
                            "[ RUN      ] A.c\r\n[  SKIPPED ] A.c (0 ms)\r\n"
                            "[  PASSED  ] 1 test.\r\n[  FAILED  ] 1 test, listed below:\r\n[  FAILED  ] A.b\r\n",
                            outcomes),
        "");
    const std::map<std::string, Outcome> expected = {
        {"A.a", Outcome::passed}, {"A.b", Outcome::failed}, {"A.c", Outcome::skipped}};
    EXPECT_EQ(outcomes, expected);
}

TEST(TestKitReport, TellsTheTestInWhichItEnds)
{
    std::map<std::string, Outcome> outcomes;
    EXPECT_EQ(testkit::readReport("[ RUN      ] A.a\n[       OK ] A.a (0 ms)\n[ RUN      ] A.b\nsome text", outcomes),
              "A.b");
    EXPECT_EQ(outcomes.size(), 1u);
}

TEST(TestKitRun, GoesOnBehindTestsThatEndTheProgram)
{
    const qelTest::TemporaryFolder folder;
    const testkit::Results results =
        testkit::runTests(samplePath(), folder.path(), folder.path(L"sample output.txt"), kSeconds);
    const std::vector<std::string> tests = {"Sample.Passes",
                                            "Sample.Fails",
                                            "Sample.IsSkipped",
                                            "Sample.EndsTheProgram",
                                            "Sample.PassesBehindTheEnd",
                                            "Sample.EndsTheProgramWithoutError",
                                            "Few/Numbers.AreBelowTwo/0",
                                            "Few/Numbers.AreBelowTwo/1"};
    EXPECT_EQ(results.tests, tests);
    const std::map<std::string, Outcome> outcomes = {{"Sample.Passes", Outcome::passed},
                                                     {"Sample.Fails", Outcome::failed},
                                                     {"Sample.IsSkipped", Outcome::skipped},
                                                     {"Sample.EndsTheProgram", Outcome::ended},
                                                     {"Sample.PassesBehindTheEnd", Outcome::passed},
                                                     {"Sample.EndsTheProgramWithoutError", Outcome::ended},
                                                     {"Few/Numbers.AreBelowTwo/0", Outcome::passed},
                                                     {"Few/Numbers.AreBelowTwo/1", Outcome::failed}};
    EXPECT_EQ(results.outcomes, outcomes);
    EXPECT_EQ(results.trouble, "");
    EXPECT_NE(content(folder.path(L"sample output.txt")).find("as it should"), std::string::npos);
}

TEST(TestKitRun, TellsOfTroubleBehindTheLastTest)
{
    const qelTest::TemporaryFolder folder;
    SetEnvironmentVariableW(L"QEL_SAMPLE_RESULT", L"5");
    SetEnvironmentVariableW(L"GTEST_FILTER", L"Sample.Passes");
    const testkit::Results results =
        testkit::runTests(samplePath(), folder.path(), folder.path(L"output.txt"), kSeconds);
    SetEnvironmentVariableW(L"QEL_SAMPLE_RESULT", nullptr);
    SetEnvironmentVariableW(L"GTEST_FILTER", nullptr);
    EXPECT_EQ(results.tests, std::vector<std::string>{"Sample.Passes"});
    EXPECT_EQ(results.trouble, "every test passed, and yet: exit code 5 (0x5)");
}

TEST(TestKitRun, TellsOfAProgramThatIsMissing)
{
    const qelTest::TemporaryFolder folder;
    const testkit::Results results =
        testkit::runTests(folder.path(L"missing.exe"), folder.path(), folder.path(L"output.txt"), kSeconds);
    EXPECT_TRUE(results.tests.empty());
    EXPECT_EQ(results.trouble, "it lists no tests");
}

TEST(TestKitProcess, IsEndedWhenItTakesTooLong)
{
    const qelTest::TemporaryFolder folder;
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(testkit::run(L"ping.exe -n 60 127.0.0.1", folder.path(), folder.path(L"output.txt"), 1),
              testkit::kTimedOut);
    EXPECT_LT(GetTickCount64() - start, 30000u);
}

TEST(TestKitProcess, SaysWhenItCannotBeStarted)
{
    const qelTest::TemporaryFolder folder;
    EXPECT_EQ(testkit::run(L"\"no such program.exe\"", folder.path(), folder.path(L"output.txt"), 1),
              testkit::kNotStarted);
}
} // namespace
