// Connections are made for real, through whatever drivers tests/config/CMakeLists.txt names to the driver manager.

#include "qelDataSourcesUtilities.h"

#include "config/DataSourceFixture.h"
#include "support/ImportHook.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>

#include <filesystem>
#include <fstream>

using qelTest::ImportHook;

namespace
{
int test(const std::wstring& connection)
{
    return qelDataSourcesUtilities::testConnection(connection.c_str());
}

std::wstring withDriver(const std::wstring& driver, const std::wstring& file)
{
    return L"DRIVER={" + driver + L"};UID=;PWD=;DBQ=" + file;
}

// What the library asks of the driver manager, in order: one letter for each call and kind of handle. Each call reaches
// the driver manager, unless it is the one that is to fail.
std::string calls;
std::string failing;

/// Notes a call; whether it is to fail.
bool note(const std::string& call)
{
    calls += call + " ";
    return call == failing;
}

std::string kind(SQLSMALLINT type)
{
    return type == SQL_HANDLE_ENV ? "environment" : type == SQL_HANDLE_DBC ? "connection" : "other";
}

SQLRETURN SQL_API allocate(SQLSMALLINT type, SQLHANDLE input, SQLHANDLE* output)
{
    return note("allocate-" + kind(type)) ? SQL_ERROR : SQLAllocHandle(type, input, output);
}

SQLRETURN SQL_API release(SQLSMALLINT type, SQLHANDLE handle)
{
    note("free-" + kind(type));
    const SQLRETURN result = SQLFreeHandle(type, handle);
    EXPECT_EQ(result, SQL_SUCCESS);
    return result;
}

SQLRETURN SQL_API disconnect(SQLHDBC connection)
{
    note("disconnect");
    return SQLDisconnect(connection);
}

SQLRETURN SQL_API setAttribute(SQLHENV environment, SQLINTEGER attribute, SQLPOINTER value, SQLINTEGER length)
{
    EXPECT_EQ(attribute, SQL_ATTR_ODBC_VERSION);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(value), SQL_OV_ODBC3);
    EXPECT_EQ(length, SQL_IS_INTEGER);
    return note("set-version") ? SQL_ERROR : SQLSetEnvAttr(environment, attribute, value, length);
}

std::wstring askedFor;
SQLRETURN connectResult;

SQLRETURN SQL_API connect(SQLHDBC connection, SQLHWND parent, SQLWCHAR* text, SQLSMALLINT length, SQLWCHAR* completed,
                          SQLSMALLINT capacity, SQLSMALLINT* completedLength, SQLUSMALLINT completion)
{
    askedFor = text;
    EXPECT_EQ(parent, nullptr);
    EXPECT_EQ(length, SQL_NTS);
    EXPECT_NE(completed, nullptr);
    EXPECT_EQ(capacity, 512);
    EXPECT_NE(completedLength, nullptr);
    EXPECT_EQ(completion, SQL_DRIVER_NOPROMPT);
    if (note("connect"))
    {
        return connectResult;
    }
    return SQLDriverConnectW(connection, parent, text, length, completed, capacity, completedLength, completion);
}

class qelTestConnection : public testing::Test
{
protected:
    qelTest::TemporaryFolder m_folder;
    const std::wstring m_database = qelTest::driverPath(m_folder.write(L"model.mdb", qelTest::emptyDatabase()));
    const std::wstring m_missing = qelTest::driverPath(m_folder.path(L"missing.mdb"));
};

/// The same with every call to the driver manager noted.
class qelTestConnectionCalls : public qelTestConnection
{
protected:
    qelTestConnectionCalls()
    {
        calls.clear();
        failing.clear();
        connectResult = SQL_ERROR;
    }

    int testWithFailing(const std::string& call)
    {
        calls.clear();
        failing = call;
        return test(withDriver(qelTest::kDefaultDriver, m_missing));
    }

private:
    ImportHook m_allocate{"SQLAllocHandle", allocate};
    ImportHook m_release{"SQLFreeHandle", release};
    ImportHook m_disconnect{"SQLDisconnect", disconnect};
    ImportHook m_setAttribute{"SQLSetEnvAttr", setAttribute};
    ImportHook m_connect{"SQLDriverConnectW", connect};
};

TEST_F(qelTestConnection, IsOneWhereADriverOpensTheDatabase)
{
    EXPECT_EQ(test(withDriver(qelTest::kDefaultDriver, m_database)), 1);
    EXPECT_EQ(test(withDriver(qelTest::kAlternateDriver, m_database)), 1);
}

TEST_F(qelTestConnection, IsOneWithoutDatabaseKeyToo)
{
    const std::wstring file = qelTest::driverPath(m_folder.write(L"tables.db", ""));
    EXPECT_EQ(test(L"DRIVER={SQLite3};Database=" + file), 1);
}

TEST_F(qelTestConnection, IsZeroWhereTheDatabaseFileIsMissing)
{
    EXPECT_EQ(test(withDriver(qelTest::kDefaultDriver, m_missing)), 0);
    EXPECT_EQ(test(withDriver(L"No such driver", m_missing)), 0);
    EXPECT_EQ(test(L"DRIVER={No such driver};DBQ="), 0);
}

TEST_F(qelTestConnection, IsMinusOneWhereTheFileExistsButIsNoDatabase)
{
    const std::wstring file = qelTest::driverPath(m_folder.write(L"text.mdb", "not a database"));
    EXPECT_EQ(test(withDriver(qelTest::kDefaultDriver, file)), -1);
}

TEST_F(qelTestConnection, IsMinusOneWhereTheFileExistsButTheDriverIsMissing)
{
    EXPECT_EQ(test(withDriver(L"No such driver", m_database)), -1);
}

TEST_F(qelTestConnection, IsMinusOneForAMalformedTextWithoutDatabaseKey)
{
    EXPECT_EQ(test(L"not a connection string"), -1);
    EXPECT_EQ(test(L""), -1);
    EXPECT_EQ(test(L"DRIVER={No such driver};dbq=missing.mdb"), -1);
}

TEST_F(qelTestConnection, TakesAllBehindTheKeyForTheFileName)
{
    EXPECT_EQ(test(L"DRIVER={No such driver};DBQ=" + m_database), -1);
    EXPECT_EQ(test(L"DRIVER={No such driver};DBQ=" + m_database + L";UID=me"), 0);
}

TEST_F(qelTestConnection, TakesFoldersAndPatternsThatMatchForExistingFiles)
{
    m_folder.write(L"inner\\a.txt", "");
    EXPECT_EQ(test(L"DRIVER={No such driver};DBQ=" + m_folder.path(L"inner")), -1);
    EXPECT_EQ(test(L"DRIVER={No such driver};DBQ=" + m_folder.path(L"*.mdb")), -1);
    EXPECT_EQ(test(L"DRIVER={No such driver};DBQ=" + m_folder.path(L"*.accdb")), 0);
}

TEST_F(qelTestConnectionCalls, OpenAndFreeEverythingOnSuccess)
{
    EXPECT_EQ(test(withDriver(qelTest::kDefaultDriver, m_database)), 1);
    EXPECT_EQ(calls, "allocate-environment set-version allocate-connection connect disconnect free-connection "
                     "free-environment ");
}

TEST_F(qelTestConnectionCalls, FreeEverythingWhenTheConnectionFails)
{
    EXPECT_EQ(test(withDriver(qelTest::kDefaultDriver, m_missing)), 0);
    EXPECT_EQ(calls, "allocate-environment set-version allocate-connection connect disconnect free-connection "
                     "free-environment ");
}

TEST_F(qelTestConnectionCalls, HandOverTheConnectionStringUnchanged)
{
    const std::wstring connection = L"DRIVER={Varnel ODBC Driver};X=%s {}};DBQ=" + m_missing;
    test(connection);
    EXPECT_EQ(askedFor, connection);
}

TEST_F(qelTestConnectionCalls, StopWithoutEnvironment)
{
    EXPECT_EQ(testWithFailing("allocate-environment"), -1);
    EXPECT_EQ(calls, "allocate-environment ");
}

TEST_F(qelTestConnectionCalls, FreeTheEnvironmentWhoseVersionCannotBeSet)
{
    EXPECT_EQ(testWithFailing("set-version"), -1);
    EXPECT_EQ(calls, "allocate-environment set-version free-environment ");
}

TEST_F(qelTestConnectionCalls, FreeTheEnvironmentWithoutConnection)
{
    EXPECT_EQ(testWithFailing("allocate-connection"), -1);
    EXPECT_EQ(calls, "allocate-environment set-version allocate-connection free-environment ");
}

TEST_F(qelTestConnectionCalls, TakeSuccessWithInformationForSuccess)
{
    connectResult = SQL_SUCCESS_WITH_INFO;
    EXPECT_EQ(testWithFailing("connect"), 1);
}

TEST_F(qelTestConnectionCalls, TakeEveryOtherResultForFailure)
{
    const SQLRETURN results[] = {SQL_ERROR, SQL_INVALID_HANDLE, SQL_NO_DATA, SQL_STILL_EXECUTING};
    for (SQLRETURN result : results)
    {
        connectResult = result;
        EXPECT_EQ(testWithFailing("connect"), 0) << result;
    }
}

// From the registry and the configuration file to a connection.

class qelDataSourcesConnection : public qelTest::DataSourceTest
{
protected:
    /// The result of connecting to a data source of the catalogue.
    int testSource(const wchar_t* name)
    {
        qelString connection;
        EXPECT_EQ(m_sources->getConnectionString(name, connection, L"x64"), 1);
        return qelDataSourcesUtilities::testConnection(connection);
    }
};

TEST_F(qelDataSourcesConnection, IsMadeToRegisteredProfiles)
{
    const std::wstring file = qelTest::driverPath(m_folder.write(L"PelionProfiles2020.mdb", qelTest::emptyDatabase()));
    m_userConnections.setText(L"PelionProfiles2020", withDriver(qelTest::kAlternateDriver, file));
    configureElements("");
    EXPECT_EQ(testSource(L"PelionProfiles2020"), 1);
    DeleteFileW(file.c_str());
    EXPECT_EQ(testSource(L"PelionProfiles2020"), 0);
}

TEST_F(qelDataSourcesConnection, IsMadeToDatabasesBelowTheDataFolder)
{
    // Set up by tests/config/CMakeLists.txt: a folder, and for drivers that know no backslash a name with one.
    const std::wstring data = QEL_TEST_DATA_FOLDER;
    std::ofstream(std::filesystem::path(data + L"/own.mdb"), std::ios::binary) << qelTest::emptyDatabase();
    m_userInstallation.setText(L"DataPath", data);
    configureElements("<DataSource Name=\"Own\" Platform=\"x64\" Value=\"DRIVER={Varnel ODBC Driver};DBQ=own.mdb\"/>"
                      "<DataSource Name=\"Lost\" Platform=\"x64\" Value=\"DRIVER={Varnel ODBC Driver};DBQ=lost.mdb\"/>");
    EXPECT_EQ(testSource(L"Own"), 1);
    EXPECT_EQ(testSource(L"Lost"), 0);
    EXPECT_TRUE(DeleteFileW((data + L"/own.mdb").c_str()));
}
} // namespace
