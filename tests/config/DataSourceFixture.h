// Surroundings for tests of data sources: real registry keys, files and databases.
#ifndef QEL_TEST_DATA_SOURCE_FIXTURE_H
#define QEL_TEST_DATA_SOURCE_FIXTURE_H

#include "qelDataSourcesUtilities.h"

#include "support/SavedRegistryKey.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <memory>
#include <ostream>
#include <string>

namespace qelTest
{
const wchar_t kDefaultDriver[] = L"Microsoft Access Driver (*.mdb, *.accdb)";
const wchar_t kAlternateDriver[] = L"Varnel ODBC Driver";
const wchar_t kDriversKey[] = L"Software\\ODBC\\ODBCINST.INI\\ODBC Drivers";
const wchar_t kInstallationKey[] = L"Software\\Kelvara\\Orvalis\\2020";
const wchar_t kConnectionsKey[] = L"Software\\Kelvara\\Varnel\\DatabaseConnections";

/// A new folder below the current one, deleted with all it holds at the end.
class TemporaryFolder
{
public:
    TemporaryFolder();
    ~TemporaryFolder();

    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// Full path of a file in the folder.
    std::wstring path(const std::wstring& name) const;

    /// Writes a file, with the folders on the way to it, and returns its full path.
    std::wstring write(const std::wstring& name, const std::string& bytes) const;

private:
    std::wstring m_path;
};

/// What ODBC drivers call the file: under Wine they are drivers of the host system.
std::wstring driverPath(const std::wstring& path);

/// A database without any table, in the format of the default driver.
std::string emptyDatabase();

/// The bytes of an ASCII text as UTF-16LE with its mark.
std::string utf16(const std::string& text);

/// A configuration file around the given elements.
std::string configuration(const std::string& elements);

/// What a question to the catalogue gave.
struct Answer
{
    int result;
    std::wstring connection;
};

bool operator==(const Answer& a, const Answer& b);
std::ostream& operator<<(std::ostream& stream, const Answer& answer);

/// A machine on which nothing but the data folder is registered, and a place for configuration files.
class DataSourceTest : public testing::Test
{
protected:
    DataSourceTest();

    /// Makes the file the catalogue's own.
    void use(const std::wstring& path);

    /// Writes a new configuration file, makes it the catalogue's own and returns its path.
    std::wstring configure(const std::string& content);

    /// The same for a file with only these elements in its section.
    std::wstring configureElements(const std::string& elements);

    /// Asks for a data source; the text for the answer holds something before.
    Answer ask(const wchar_t* name, const wchar_t* platform = L"x64");

    SavedRegistryKey m_userInstallation;
    SavedRegistryKey m_machineInstallation;
    SavedRegistryKey m_userConnections;
    SavedRegistryKey m_machineConnections;
    TemporaryFolder m_folder;
    std::unique_ptr<qelDataSourcesUtilities> m_sources;
};
} // namespace qelTest

#endif
