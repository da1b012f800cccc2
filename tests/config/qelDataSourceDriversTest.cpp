// Which drivers are installed, and what follows from that. Every test starts in a new process: the library reads the
// list once.

#include "qelDataSourcesUtilities.h"

#include "config/DataSourceFixture.h"
#include "support/FailingAllocation.h"
#include "support/FreshProcess.h"
#include "support/ImportHook.h"

#include <gtest/gtest.h>

#include <vector>

using qelTest::Answer;
using qelTest::failEachAllocation;
using qelTest::ImportHook;
using qelTest::kAlternateDriver;
using qelTest::kDefaultDriver;
using Sources = qelDataSourcesUtilities;

namespace
{
class qelDataSourceDrivers : public qelTest::DataSourceTest
{
protected:
    void install(const std::wstring& driver) const { m_drivers.setText(driver, L"Installed"); }

    qelTest::SavedRegistryKey m_drivers{HKEY_LOCAL_MACHINE, qelTest::kDriversKey};
};

std::wstring driverForNewConnections()
{
    qelString driver = L"from before";
    EXPECT_EQ(Sources::getOdbcDriverName(driver), 1);
    return driver.getStringW();
}

struct Replacement
{
    int count;
    std::wstring text;
};

bool operator==(const Replacement& a, const Replacement& b)
{
    return a.count == b.count && a.text == b.text;
}

Replacement replaceIn(const wchar_t* text)
{
    qelString connection = text;
    const int count = Sources::replaceAlternateDriver(connection);
    return {count, connection.getStringW()};
}

// Reading the list

TEST_F(qelDataSourceDrivers, AreCountedAsTheInstallerNamesThem)
{
    install(L"SQLite3");
    install(kDefaultDriver);
    install(L"Tr\u00E4ger");
    EXPECT_EQ(Sources::readInstalledOdbcDrivers(), 3);
}

TEST_F(qelDataSourceDrivers, AreReadOncePerProcess)
{
    install(L"SQLite3");
    EXPECT_EQ(Sources::readInstalledOdbcDrivers(), 1);
    install(kDefaultDriver);
    EXPECT_EQ(Sources::readInstalledOdbcDrivers(), 1);
    EXPECT_EQ(Sources::defaultODBCDriverIsInstalled(), -1);
}

TEST_F(qelDataSourceDrivers, AreAskedForAgainWhileNothingIsKnown)
{
    ASSERT_FALSE(m_drivers.exists());
    EXPECT_EQ(Sources::readInstalledOdbcDrivers(), 0);
    m_drivers.create();
    EXPECT_EQ(Sources::readInstalledOdbcDrivers(), 0);
    install(L"SQLite3");
    install(kDefaultDriver);
    EXPECT_EQ(Sources::readInstalledOdbcDrivers(), 2);
}

TEST_F(qelDataSourceDrivers, AreTrimmed)
{
    install(std::wstring(L" \t") + kDefaultDriver + L"  ");
    EXPECT_EQ(Sources::readInstalledOdbcDrivers(), 1);
    EXPECT_EQ(Sources::defaultODBCDriverIsInstalled(), 1);
}

TEST_F(qelDataSourceDrivers, CountEvenWhenTheirNameIsBlank)
{
    install(L"   ");
    EXPECT_EQ(Sources::readInstalledOdbcDrivers(), 1);
    EXPECT_EQ(Sources::defaultODBCDriverIsInstalled(), -1);
}

TEST_F(qelDataSourceDrivers, ThatNeedMoreRoomThanThereIsHarmNothing)
{
    install(std::wstring(200, L'a'));
    for (int i = 0; i < 20; ++i)
    {
        install(std::to_wstring(i) + std::wstring(150, L'b'));
    }
    const int count = Sources::readInstalledOdbcDrivers();
    EXPECT_GE(count, 0);
    EXPECT_LE(count, 21);
}

// What the installer's function leaves in the buffer, put there by a function in its place: the real one always ends
// its lists.

std::wstring installerList;
BOOL installerResult = TRUE;
int installerCapacity = 0;

BOOL WINAPI leaveList(LPWSTR names, WORD capacity, WORD* used)
{
    installerCapacity = capacity;
    wmemcpy(names, installerList.c_str(), installerList.size());
    *used = static_cast<WORD>(installerList.size());
    return installerResult;
}

FARPROC WINAPI findLeaveList(HMODULE module, LPCSTR name)
{
    if (std::string(name) != "SQLGetInstalledDriversW")
    {
        return GetProcAddress(module, name);
    }
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(leaveList));
}

class qelDataSourceDriverList : public qelDataSourceDrivers
{
    ImportHook m_find{"GetProcAddress", findLeaveList};
};

TEST_F(qelDataSourceDriverList, EndsAtTheFirstEmptyName)
{
    installerList = std::wstring(L"one\0two\0\0three\0\0", 16);
    EXPECT_EQ(Sources::readInstalledOdbcDrivers(), 2);
    EXPECT_EQ(installerCapacity, 2000);
}

TEST_F(qelDataSourceDriverList, MayFillTheBufferWithoutAnyEnd)
{
    installerList = std::wstring(2000, L'x');
    EXPECT_EQ(Sources::readInstalledOdbcDrivers(), 1);
}

TEST_F(qelDataSourceDriverList, MayFillTheBufferWithoutEmptyName)
{
    installerList = std::wstring(1000, L'x') + L'\0' + std::wstring(998, L'y') + L'\0';
    ASSERT_EQ(installerList.size(), 2000u);
    EXPECT_EQ(Sources::readInstalledOdbcDrivers(), 2);
}

TEST_F(qelDataSourceDriverList, IsIgnoredWhenTheCallFails)
{
    installerList = std::wstring(L"one\0\0", 5);
    installerResult = FALSE;
    EXPECT_EQ(Sources::readInstalledOdbcDrivers(), 0);
    installerResult = TRUE;
    EXPECT_EQ(Sources::readInstalledOdbcDrivers(), 1);
}

// Loading the installer library

UINT systemFolderLength = 0;
std::vector<std::wstring> loaded;
std::vector<std::wstring> shown;

UINT WINAPI longSystemFolder(LPWSTR buffer, UINT capacity)
{
    EXPECT_EQ(capacity, 522u);
    if (systemFolderLength < capacity)
    {
        wmemset(buffer, L'x', systemFolderLength);
        buffer[systemFolderLength] = 0;
    }
    return systemFolderLength;
}

HMODULE WINAPI noteLoading(LPCWSTR path, HANDLE file, DWORD flags)
{
    EXPECT_EQ(file, nullptr);
    EXPECT_EQ(flags, 0u);
    loaded.push_back(path);
    return LoadLibraryExW(path, file, flags);
}

int WINAPI noteMessage(HWND owner, LPCWSTR text, LPCWSTR caption, UINT type)
{
    EXPECT_EQ(owner, nullptr);
    EXPECT_STREQ(caption, L"ODBC Installer Error");
    EXPECT_EQ(type, static_cast<UINT>(MB_OK | MB_ICONINFORMATION));
    shown.push_back(text);
    return IDOK;
}

class qelOdbcInstallerLibrary : public qelDataSourceDrivers
{
    ImportHook m_load{"LoadLibraryExW", noteLoading};
    ImportHook m_message{"MessageBoxW", noteMessage};
};

TEST_F(qelOdbcInstallerLibrary, IsLoadedOnceFromTheSystemFolder)
{
    wchar_t system[MAX_PATH] = {};
    GetSystemDirectoryW(system, MAX_PATH);
    EXPECT_EQ(Sources::readInstalledOdbcDrivers(), 0);
    EXPECT_EQ(Sources::readInstalledOdbcDrivers(), 0);
    EXPECT_EQ(loaded, std::vector<std::wstring>{std::wstring(system) + L"\\odbccp32.dll"});
    EXPECT_TRUE(shown.empty());
}

TEST_F(qelOdbcInstallerLibrary, IsNotLoadedBeforeDriversAreAskedFor)
{
    configureElements("");
    EXPECT_TRUE(loaded.empty());
    qelString empty;
    EXPECT_EQ(Sources::replaceAlternateDriver(empty), 0);
    EXPECT_TRUE(loaded.empty());
}

class qelOdbcInstallerFolder : public qelOdbcInstallerLibrary
{
protected:
    /// Asks for drivers with a system folder of this length; the number of attempts to load.
    static size_t attemptsWith(UINT length)
    {
        systemFolderLength = length;
        loaded.clear();
        shown.clear();
        EXPECT_EQ(Sources::readInstalledOdbcDrivers(), 0);
        EXPECT_EQ(shown,
                  std::vector<std::wstring>{L"The ODBC installer DLL (ODBCCP32.DLL) is not installed on this system."});
        return loaded.size();
    }

private:
    ImportHook m_folder{"GetSystemDirectoryW", longSystemFolder};
};

TEST_F(qelOdbcInstallerFolder, ThatIsUnknownOrTooLongCountsAsAMissingLibrary)
{
    EXPECT_EQ(attemptsWith(0), 0u);
    EXPECT_EQ(attemptsWith(509), 0u);
    EXPECT_EQ(attemptsWith(520), 0u);
    EXPECT_EQ(attemptsWith(521), 0u);
    EXPECT_EQ(attemptsWith(522), 0u);
    EXPECT_EQ(attemptsWith(5000), 0u);
}

TEST_F(qelOdbcInstallerFolder, MayLeaveJustRoomForTheName)
{
    EXPECT_EQ(attemptsWith(508), 1u);
    EXPECT_EQ(loaded.front(), std::wstring(508, L'x') + L"\\odbccp32.dll");
}

TEST_F(qelOdbcInstallerFolder, IsLookedIntoAgainAfterAFailure)
{
    EXPECT_EQ(attemptsWith(508), 1u);
    EXPECT_EQ(attemptsWith(508), 1u);
}

FARPROC WINAPI findNothing(HMODULE, LPCSTR)
{
    return nullptr;
}

DWORD WINAPI longFileName(HMODULE, LPWSTR buffer, DWORD capacity)
{
    EXPECT_EQ(capacity, 261u);
    wmemset(buffer, L'x', capacity);
    return capacity;
}

TEST_F(qelOdbcInstallerLibrary, WithoutItsFunctionIsToldWithFileNamesOfAnyLength)
{
    const ImportHook find("GetProcAddress", findNothing);
    const ImportHook fileName("GetModuleFileNameW", longFileName);
    EXPECT_EQ(Sources::readInstalledOdbcDrivers(), 0);
    const std::wstring longest(261, L'x');
    EXPECT_EQ(shown, std::vector<std::wstring>{
                         L"The program " + longest +
                         L", or one of its DLLs attempted to call the function SQLGetInstalledDriversW which is not "
                         L"supported in the loaded ODBC installer DLL (" +
                         longest + L"). Press OK to proceed."});
}

// The default driver

TEST_F(qelDataSourceDrivers, HaveTheDefaultDriverAmongThem)
{
    install(L"SQLite3");
    install(kDefaultDriver);
    install(kAlternateDriver);
    EXPECT_EQ(Sources::defaultODBCDriverIsInstalled(), 1);
}

TEST_F(qelDataSourceDrivers, LackTheDefaultDriver)
{
    install(L"SQLite3");
    install(kAlternateDriver);
    EXPECT_EQ(Sources::defaultODBCDriverIsInstalled(), -1);
}

TEST_F(qelDataSourceDrivers, LackTheDefaultDriverWhoseNameHasOtherLetterCase)
{
    install(L"Microsoft Access Driver (*.MDB, *.ACCDB)");
    EXPECT_EQ(Sources::defaultODBCDriverIsInstalled(), -1);
}

TEST_F(qelDataSourceDrivers, LackTheDefaultDriverWhoseNameIsOnlyTheBeginningOrPart)
{
    install(L"Microsoft Access Driver (*.mdb)");
    install(std::wstring(kDefaultDriver) + L" 64");
    EXPECT_EQ(Sources::defaultODBCDriverIsInstalled(), -1);
}

TEST_F(qelDataSourceDrivers, SayNothingOfTheDefaultDriverWhenNoneIsKnown)
{
    EXPECT_EQ(Sources::defaultODBCDriverIsInstalled(), 0);
}

TEST_F(qelDataSourceDrivers, GiveTheDefaultDriverForNewConnections)
{
    install(kDefaultDriver);
    install(kAlternateDriver);
    EXPECT_EQ(driverForNewConnections(), kDefaultDriver);
}

TEST_F(qelDataSourceDrivers, GiveTheAlternateDriverForNewConnectionsWhereTheDefaultOneIsMissing)
{
    install(L"SQLite3");
    EXPECT_EQ(driverForNewConnections(), kAlternateDriver);
    qelString connection;
    EXPECT_EQ(Sources::getConnectionStringForFile(L"D:\\m.mdb", connection), 1);
    EXPECT_STREQ(connection.getStringW(), L"DRIVER={Varnel ODBC Driver};UID=;PWD=;DBQ=D:\\m.mdb");
}

TEST_F(qelDataSourceDrivers, GiveTheDefaultDriverForNewConnectionsWhenNoneIsKnown)
{
    EXPECT_EQ(driverForNewConnections(), kDefaultDriver);
    qelString connection;
    EXPECT_EQ(Sources::getConnectionStringForFile(L"D:\\m.mdb", connection), 1);
    EXPECT_STREQ(connection.getStringW(), L"DRIVER={Microsoft Access Driver (*.mdb, *.accdb)};UID=;PWD=;DBQ=D:\\m.mdb");
}

// Rewriting

TEST_F(qelDataSourceDrivers, PutTheDefaultNameInPlaceOfEveryAlternateOne)
{
    install(kDefaultDriver);
    EXPECT_EQ(replaceIn(L"{Varnel ODBC Driver};{Varnel ODBC Driver}"),
              (Replacement{2, L"{Microsoft Access Driver (*.mdb, *.accdb)};"
                              L"{Microsoft Access Driver (*.mdb, *.accdb)}"}));
    EXPECT_EQ(replaceIn(L"{Microsoft Access Driver (*.mdb, *.accdb)}"),
              (Replacement{0, L"{Microsoft Access Driver (*.mdb, *.accdb)}"}));
}

TEST_F(qelDataSourceDrivers, PutTheAlternateNameInPlaceOfEveryDefaultOneThatIsMissing)
{
    install(kAlternateDriver);
    EXPECT_EQ(replaceIn(L"{Microsoft Access Driver (*.mdb, *.accdb)}Microsoft Access Driver (*.mdb, *.accdb)"),
              (Replacement{2, L"{Varnel ODBC Driver}Varnel ODBC Driver"}));
    EXPECT_EQ(replaceIn(L"{Varnel ODBC Driver}"), (Replacement{0, L"{Varnel ODBC Driver}"}));
}

TEST_F(qelDataSourceDrivers, PutTheDefaultNameInPlaceWhenNoneIsKnown)
{
    EXPECT_EQ(replaceIn(L"{Varnel ODBC Driver}"), (Replacement{1, L"{Microsoft Access Driver (*.mdb, *.accdb)}"}));
    EXPECT_EQ(replaceIn(L"{Microsoft Access Driver (*.mdb, *.accdb)}"),
              (Replacement{0, L"{Microsoft Access Driver (*.mdb, *.accdb)}"}));
}

TEST_F(qelDataSourceDrivers, AreReplacedInTheirOwnLetterCaseOnly)
{
    install(kDefaultDriver);
    EXPECT_EQ(replaceIn(L"{varnel odbc driver}"), (Replacement{0, L"{varnel odbc driver}"}));
}

TEST_F(qelDataSourceDrivers, AreNotReadForAnEmptyConnectionString)
{
    install(L"SQLite3");
    EXPECT_EQ(replaceIn(L""), (Replacement{0, L""}));
    install(kDefaultDriver);
    // Had the list been read for the empty text, it would now lack the default driver.
    EXPECT_EQ(Sources::defaultODBCDriverIsInstalled(), 1);
}

// The catalogue

TEST_F(qelDataSourceDrivers, AreReadBeforeTheCatalogue)
{
    install(kAlternateDriver);
    m_userConnections.setText(L"PelionProfiles2020",
                              L"DRIVER={Microsoft Access Driver (*.mdb, *.accdb)};DBQ=PelionProfiles2020.mdb");
    m_userConnections.setText(L"QELMapping2020", L"{Microsoft Access Driver (*.mdb, *.accdb)}QELMapping2020");
    configureElements("<DataSource Name=\"Own\" Platform=\"x64\" "
                      "Value=\"DRIVER={Microsoft Access Driver (*.mdb, *.accdb)};DBQ=a.mdb\"/>");
    EXPECT_EQ(ask(L"Own"), (Answer{1, L"DRIVER={Varnel ODBC Driver};DBQ=D:\\Data\\a.mdb"}));
    EXPECT_EQ(ask(L"PelionProfiles2020"), (Answer{1, L"DRIVER={Varnel ODBC Driver};DBQ=PelionProfiles2020.mdb"}));
    EXPECT_EQ(ask(L"QELMapping2020"), (Answer{1, L"{Varnel ODBC Driver}QELMapping2020"}));
    EXPECT_EQ(ask(L"PelionCurrentProject"),
              (Answer{1, L"DRIVER={Varnel ODBC Driver};DBQ=D:\\Data\\D:\\Data\\Kernel\\Data\\model.mdb"}));
}

TEST_F(qelDataSourceDrivers, AreReadByAQuestionToAnAlreadyReadCatalogueToo)
{
    m_userConnections.setText(L"QELMapping2020", L"QELMapping2020");
    configureElements("");
    EXPECT_EQ(ask(L"QELMapping2020"), (Answer{1, L"QELMapping2020"}));
    install(L"SQLite3");
    EXPECT_EQ(ask(L"QELMapping2020"), (Answer{1, L"QELMapping2020"}));
    m_drivers.remove(L"SQLite3");
    install(kDefaultDriver);
    EXPECT_EQ(Sources::defaultODBCDriverIsInstalled(), -1);
}

TEST_F(qelDataSourceDrivers, AreUsedAsKnownByAnUnreadCatalogue)
{
    EXPECT_EQ(Sources::defaultDriverIsUsedInAllDataSources(), 0);
    install(kDefaultDriver);
    m_userConnections.setText(L"QELMapping2020", kAlternateDriver);
    configureElements("");
    EXPECT_EQ(Sources::defaultDriverIsUsedInAllDataSources(), 1);
}

TEST_F(qelDataSourceDrivers, MissTheDefaultOneInAnUnreadCatalogue)
{
    install(kAlternateDriver);
    m_userConnections.setText(L"QELMapping2020", kAlternateDriver);
    configureElements("");
    EXPECT_EQ(Sources::defaultDriverIsUsedInAllDataSources(), -1);
}

TEST_F(qelDataSourceDrivers, AreTheDefaultOneInEverySourceOfTheCatalogue)
{
    install(kDefaultDriver);
    m_userConnections.setText(L"QELMapping2020", kAlternateDriver);
    configureElements("<DataSource Name=\"Own\" Platform=\"x64\" Value=\"DRIVER={Varnel ODBC Driver}\"/>");
    ask(L"Own");
    EXPECT_EQ(Sources::defaultDriverIsUsedInAllDataSources(), 1);
}

TEST_F(qelDataSourceDrivers, AreNotTheDefaultOneInASourceThatNamesTheAlternateOneInItsPath)
{
    install(kDefaultDriver);
    m_userInstallation.setText(L"DataPath", L"C:\\Varnel ODBC Driver");
    configureElements("");
    ask(L"Own");
    EXPECT_EQ(Sources::defaultDriverIsUsedInAllDataSources(), 0);
}

TEST_F(qelDataSourceDrivers, AreTheAlternateOneInTheLastSourceOfTheCatalogue)
{
    install(kAlternateDriver);
    configureElements("<DataSource Name=\"A\" Platform=\"x64\" Value=\"DSN=a\"/>"
                      "<DataSource Name=\"B\" Platform=\"x64\" "
                      "Value=\"DRIVER={Microsoft Access Driver (*.mdb, *.accdb)}\"/>");
    ask(L"A");
    EXPECT_EQ(Sources::defaultDriverIsUsedInAllDataSources(), 0);
}

TEST_F(qelDataSourceDrivers, AreNeitherTheDefaultNorTheAlternateOneInAnySource)
{
    install(L"SQLite3");
    configureElements("<DataSource Name=\"A\" Platform=\"x64\" Value=\"{varnel odbc driver}\"/>");
    ask(L"A");
    EXPECT_EQ(Sources::defaultDriverIsUsedInAllDataSources(), -1);
}

TEST_F(qelDataSourceDrivers, AreUnknownWhateverTheSourcesOfTheCatalogueName)
{
    configureElements("");
    ask(L"Own");
    EXPECT_EQ(Sources::defaultDriverIsUsedInAllDataSources(), 0);
}

// Lack of memory. Every function answers as it does when nothing could be found out, throws nothing, and the list is
// read by the next one that has memory.

class qelDataSourceDriversWithoutMemory : public qelDataSourceDrivers
{
protected:
    qelDataSourceDriversWithoutMemory()
    {
        install(L"SQLite3");
        install(kAlternateDriver);
        install(kDefaultDriver);
    }

    int m_result = 0;
};

TEST_F(qelDataSourceDriversWithoutMemory, AreNeverKnownInPart)
{
    const int allocations =
        failEachAllocation([this] { EXPECT_NO_THROW(m_result = Sources::readInstalledOdbcDrivers()); },
                           [this](bool failed) { EXPECT_EQ(m_result, failed ? 0 : 3); });
    EXPECT_GE(allocations, 4) << "three names and a list";
    EXPECT_EQ(Sources::defaultODBCDriverIsInstalled(), 1);
}

TEST_F(qelDataSourceDriversWithoutMemory, LeaveTheDefaultDriverUnknown)
{
    failEachAllocation([this] { EXPECT_NO_THROW(m_result = Sources::defaultODBCDriverIsInstalled()); },
                       [this](bool failed) { EXPECT_EQ(m_result, failed ? 0 : 1); });
}

TEST_F(qelDataSourceDriversWithoutMemory, LeaveTheUseOfTheDefaultDriverUnknown)
{
    failEachAllocation([this] { EXPECT_NO_THROW(m_result = Sources::defaultDriverIsUsedInAllDataSources()); },
                       [this](bool failed) { EXPECT_EQ(m_result, failed ? 0 : 1); });
}

TEST_F(qelDataSourceDriversWithoutMemory, GiveAnEmptyOrTheDefaultName)
{
    qelString name;
    failEachAllocation(
        [&] {
            name = L"";
            EXPECT_NO_THROW(m_result = Sources::getOdbcDriverName(name));
        },
        [&](bool failed) {
            EXPECT_EQ(m_result, 1);
            const std::wstring got = name.getStringW();
            EXPECT_TRUE(got == kDefaultDriver || (failed && got.empty()));
        });
}

TEST_F(qelDataSourceDriversWithoutMemory, LeaveAConnectionStringAsItIs)
{
    const qelString before = L"DRIVER={Varnel ODBC Driver};UID=";
    qelString connection;
    failEachAllocation(
        [&] {
            connection = before;
            EXPECT_NO_THROW(m_result = Sources::replaceAlternateDriver(connection));
        },
        [&](bool failed) {
            EXPECT_EQ(m_result, failed ? 0 : 1);
            EXPECT_STREQ(connection.getStringW(), failed ? L"DRIVER={Varnel ODBC Driver};UID="
                                                         : L"DRIVER={Microsoft Access Driver (*.mdb, *.accdb)};UID=");
        });
}

TEST_F(qelDataSourceDriversWithoutMemory, LeaveTheFailureOfAConnectionUnexplained)
{
    const qelString missing = L"DRIVER={no such driver};DBQ=D:\\no such file.mdb";
    const int allocations = failEachAllocation([&] { EXPECT_NO_THROW(m_result = Sources::testConnection(missing)); },
                                               [this](bool failed) { EXPECT_EQ(m_result, failed ? -1 : 0); });
    EXPECT_GE(allocations, 2) << "both parts of the connection string";
}

TEST_F(qelDataSourceDriversWithoutMemory, WriteNoWrongNameIntoTheCatalogue)
{
    m_drivers.remove(kDefaultDriver);
    configureElements("<DataSource Name=\"Own\" Platform=\"x64\" "
                      "Value=\"DRIVER={Microsoft Access Driver (*.mdb, *.accdb)};DBQ=QELMapping2020\"/>");
    const qelString name = L"Own";
    const qelString platform = L"x64";
    qelString connection;
    failEachAllocation(
        [&] {
            try
            {
                m_result = m_sources->getConnectionString(name, connection, platform);
            }
            catch (...)
            {
                m_result = -1;
            }
        },
        [&](bool failed) { EXPECT_EQ(m_result, failed ? -1 : 1); });
    EXPECT_EQ(ask(L"Own"), (Answer{1, L"DRIVER={Varnel ODBC Driver};DBQ=QELMapping2020"}));
    EXPECT_EQ(Sources::readInstalledOdbcDrivers(), 2);
}
} // namespace

int main(int argc, char** argv)
{
    return qelTest::runEachTestAlone(argc, argv);
}
