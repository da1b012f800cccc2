// The kit's own program on a kit that holds nothing but qelTestKitSample, whose tests end in every way.

#include "Process.h"

#include "support/SavedRegistryKey.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <sstream>

using qelTest::SavedRegistryKey;

namespace
{
const unsigned kSeconds = 60;
const wchar_t kApplication[] = L"Software\\Kelvara";
const wchar_t kDrivers[] = L"Software\\ODBC\\ODBCINST.INI\\ODBC Drivers";

std::filesystem::path folderOfThisProgram()
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return std::filesystem::path(path).parent_path();
}

class TestKit : public testing::Test
{
protected:
    TestKit()
    {
        m_folder.write(L"kit\\known-differences.txt", "");
        std::filesystem::create_directories(m_kit / L"bin");
        for (const wchar_t* name : {L"testkit.exe", L"qelTestKitSample.exe"})
        {
            std::filesystem::copy_file(folderOfThisProgram() / name, m_kit / L"bin" / name);
        }
    }

    /// Runs the kit with that list of programs; its exit code. Both output and summary are kept.
    unsigned long run(const std::string& programs)
    {
        m_folder.write(L"kit\\programs.txt", programs);
        const std::wstring output = m_folder.path(L"output.txt");
        DeleteFileW(output.c_str());
        const unsigned long code =
            testkit::run(L'"' + (m_kit / L"bin\\testkit.exe").wstring() + L'"', m_folder.path(), output, kSeconds);
        m_output = content(output);
        m_summary = content(m_kit / L"results\\summary.txt");
        return code;
    }

    /// Whether the summary has a line that begins so, with any number of blanks where there is one.
    bool says(const std::string& begin) const
    {
        std::istringstream lines(m_summary);
        for (std::string line; std::getline(lines, line);)
        {
            std::istringstream words(line);
            std::string text;
            for (std::string word; words >> word;)
            {
                text += (text.empty() ? "" : " ") + word;
            }
            if (text.compare(0, begin.size(), begin) == 0)
            {
                return true;
            }
        }
        return false;
    }

    static std::string content(const std::filesystem::path& file)
    {
        std::ifstream stream(file);
        std::ostringstream text;
        text << stream.rdbuf();
        return text.str();
    }

    const qelTest::TemporaryFolder m_folder;
    const std::filesystem::path m_kit = m_folder.path(L"kit");
    std::string m_output;
    std::string m_summary;
};

TEST_F(TestKit, CountsEveryEndAndFails)
{
    EXPECT_EQ(run("bin\\qelTestKitSample\n"), 1u);
    EXPECT_TRUE(says("qelTestKitSample 8 3 4 0 1 ")) << m_summary;
    EXPECT_TRUE(says("Sample.Fails, see results\\qelTestKitSample.txt")) << m_summary;
    EXPECT_TRUE(says("Sample.EndsTheProgram ended the program, see ")) << m_summary;
    EXPECT_TRUE(says("1 programs, 8 tests: 3 passed, 4 failed, 0 known to differ, 1 skipped; 0 programs not run"))
        << m_summary;
    EXPECT_TRUE(says("FAILED")) << m_summary;
    EXPECT_FALSE(says("PASSED")) << m_summary;
    EXPECT_EQ(m_output, m_summary);
    EXPECT_NE(content(m_kit / L"results\\qelTestKitSample.txt").find("as it should"), std::string::npos);
}

TEST_F(TestKit, PassesWhenAllThatFailsIsKnown)
{
    m_folder.write(L"kit\\known-differences.txt", "any | Sample.Fails | The first reason.\n"
                                                  "any | Sample.EndsTheProgram | The second.\n"
                                                  "any | Sample.EndsTheProgramWithoutError | The third.\n"
                                                  "any | Few/Numbers.AreBelowTwo/1 | The fourth.\n"
                                                  "any | Sample.Passes | Did not come true.\n");
    EXPECT_EQ(run("bin\\qelTestKitSample\n"), 0u);
    EXPECT_TRUE(says("qelTestKitSample 8 3 0 4 1 ")) << m_summary;
    EXPECT_TRUE(says("Sample.Fails: The first reason.")) << m_summary;
    EXPECT_TRUE(says("Few/Numbers.AreBelowTwo/1: The fourth.")) << m_summary;
    EXPECT_FALSE(says("Sample.Passes")) << m_summary;
    EXPECT_TRUE(says("PASSED")) << m_summary;
}

TEST_F(TestKit, FailsWithoutAProgramThatItShouldHave)
{
    EXPECT_EQ(run("bin\\missing\nbin\\other | left out | It is at home.\n"), 1u);
    EXPECT_TRUE(says("missing: it lists no tests")) << m_summary;
    EXPECT_TRUE(says("other: It is at home.")) << m_summary;
}

TEST_F(TestKit, HandsItsResultOnThroughTheCommandFile)
{
    const std::wstring command = (m_kit / L"run-tests.cmd").wstring();
    std::filesystem::copy_file(std::filesystem::path(QEL_TEST_COMMAND_FILE), command);
    const std::string lists[] = {"bin\\missing\n", "unknown | column\n"};
    for (unsigned long code = 1; code <= 2; ++code)
    {
        m_folder.write(L"kit\\programs.txt", lists[code - 1]);
        EXPECT_EQ(testkit::run(L"cmd.exe /c \"\"" + command + L"\" all\"", m_folder.path(),
                               m_folder.path(L"output.txt"), kSeconds),
                  code);
    }
    EXPECT_NE(content(m_folder.path(L"output.txt")).find("results\\summary.txt"), std::string::npos);
}

TEST_F(TestKit, SaysWhyItCannotRun)
{
    EXPECT_EQ(run("bin\\qelTestKitSample | sometimes\n"), 2u);
    EXPECT_NE(m_output.find("the line of bin\\qelTestKitSample is not understood"), std::string::npos) << m_output;
}

TEST_F(TestKit, LeavesARegistryWithTheApplicationAlone)
{
    const SavedRegistryKey application(HKEY_CURRENT_USER, kApplication);
    application.setText(L"Kept", L"text");
    EXPECT_EQ(run("bin\\qelTestKitSample | registry\n"), 1u) << "nothing has run";
    EXPECT_TRUE(says("qelTestKitSample not run")) << m_summary;
    EXPECT_TRUE(says("qelTestKitSample: HKEY_CURRENT_USER\\Software\\Kelvara is not empty")) << m_summary;
    EXPECT_TRUE(application.exists());
}

TEST_F(TestKit, TakesAnEmptyKeyOfTheApplicationForNone)
{
    const SavedRegistryKey application(HKEY_CURRENT_USER, kApplication);
    application.create();
    run("bin\\qelTestKitSample | registry\n");
    EXPECT_TRUE(says("1 programs, 8 tests: ")) << m_summary;
    EXPECT_TRUE(application.exists()) << "as it was";
}

TEST_F(TestKit, RemovesWhatTestsHaveLeftInTheRegistry)
{
    const SavedRegistryKey drivers(HKEY_LOCAL_MACHINE, kDrivers);
    drivers.setText(L"A driver of the machine", L"Installed");
    const SavedRegistryKey application(HKEY_CURRENT_USER, kApplication);
    SetEnvironmentVariableW(L"QEL_SAMPLE_LEAVES_KEYS", L"1");
    run("bin\\qelTestKitSample | registry\n");
    SetEnvironmentVariableW(L"QEL_SAMPLE_LEAVES_KEYS", nullptr);
    EXPECT_TRUE(says("1 programs, 8 tests: ")) << m_summary;
    EXPECT_FALSE(application.exists());
    EXPECT_NO_THROW(drivers.remove(L"A driver of the machine"));
    EXPECT_THROW(drivers.remove(L"A driver of the tests"), std::runtime_error);
}

TEST_F(TestKit, PutsBackTheDriversOfARunThatWasInterrupted)
{
    const SavedRegistryKey drivers(HKEY_LOCAL_MACHINE, kDrivers);
    drivers.setText(L"A driver of the machine", L"Installed");
    const std::filesystem::path kept = m_kit / L"results\\registry\\odbc-drivers.reg";
    std::filesystem::create_directories(kept.parent_path());
    ASSERT_EQ(testkit::run(L"reg.exe export \"HKLM\\" + std::wstring(kDrivers) + L"\" \"" + kept.wstring() + L"\" /y",
                           m_folder.path(), m_folder.path(L"reg.txt"), kSeconds),
              0u);
    drivers.remove(L"A driver of the machine");
    drivers.setText(L"A driver of the tests", L"Installed");

    run("bin\\qelTestKitSample\n");
    EXPECT_TRUE(says("A run before this one was interrupted")) << m_summary;
    EXPECT_FALSE(std::filesystem::exists(kept));
    EXPECT_NO_THROW(drivers.remove(L"A driver of the machine"));
    EXPECT_THROW(drivers.remove(L"A driver of the tests"), std::runtime_error);
}
} // namespace
