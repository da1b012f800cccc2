// Runs on a system whose ODBC installer library lacks the function that the library needs; see CMakeLists.txt.

#include "qelDataSourcesUtilities.h"

#include "support/FreshProcess.h"
#include "support/MessageBoxes.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace
{
std::filesystem::path systemFolder()
{
    wchar_t path[MAX_PATH] = {};
    GetSystemDirectoryW(path, MAX_PATH);
    return path;
}

std::filesystem::path programPath()
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    return path;
}

/// Keeps our own library in the installer's place.
class OldInstaller
{
public:
    OldInstaller()
    {
        std::filesystem::rename(m_place, m_kept);
        std::filesystem::copy_file(programPath().replace_filename("qelOldOdbcInstaller.dll"), m_place);
    }

    ~OldInstaller() { std::filesystem::rename(m_kept, m_place); }

    OldInstaller(const OldInstaller&) = delete;
    OldInstaller& operator=(const OldInstaller&) = delete;

private:
    const std::filesystem::path m_place = systemFolder() / "odbccp32.dll";
    const std::filesystem::path m_kept = systemFolder() / "odbccp32.kept";
};

TEST(qelOdbcInstallerOld, GivesNoDriversAndTellsTheUserOnEveryCall)
{
    const std::wstring text = L"The program " + programPath().wstring() +
                              L", or one of its DLLs attempted to call the function SQLGetInstalledDriversW which is "
                              L"not supported in the loaded ODBC installer DLL (" +
                              (systemFolder() / "odbccp32.dll").wstring() + L"). Press OK to proceed.";
    qelTest::MessageBoxes boxes(L"ODBC Installer Error");
    EXPECT_EQ(qelDataSourcesUtilities::readInstalledOdbcDrivers(), 0);
    EXPECT_EQ(qelDataSourcesUtilities::defaultODBCDriverIsInstalled(), 0);
    const std::vector<qelTest::SeenBox> seen = boxes.seen();
    ASSERT_EQ(seen.size(), 2u);
    for (const qelTest::SeenBox& box : seen)
    {
        EXPECT_EQ(box.text, text);
        EXPECT_TRUE(box.hasInformationIcon);
        EXPECT_EQ(box.buttons, std::vector<std::wstring>{L"OK"});
    }
}

TEST(qelOdbcInstallerOld, LeavesTheDefaultDriverPreferred)
{
    qelTest::MessageBoxes boxes(L"ODBC Installer Error");
    qelString driver;
    EXPECT_EQ(qelDataSourcesUtilities::getOdbcDriverName(driver), 1);
    EXPECT_STREQ(driver.getStringW(), L"Microsoft Access Driver (*.mdb, *.accdb)");
    EXPECT_EQ(boxes.seen().size(), 1u);
}
} // namespace

// The library in use cannot be put back, so the process that exchanges it is not the one that loads it.
int main(int argc, char** argv)
{
    if (qelTest::runsAlone(argc, argv))
    {
        return qelTest::runEachTestAlone(argc, argv);
    }
    const OldInstaller installed;
    return qelTest::runEachTestAlone(argc, argv);
}
