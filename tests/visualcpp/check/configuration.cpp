#include "Check.h"

#include "qelDataSourcesUtilities.h"
#include "qelGlobalStorage.h"
#include "qelProductDefines.h"
#include "qelRegistry.h"

#include <windows.h>

#include <wchar.h>

namespace
{
const wchar_t kKey[] = L"Software\\Kelvara\\AbiCheck";

void checkRegistry()
{
    HKEY key = nullptr;
    CHECK(RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr) ==
          ERROR_SUCCESS);
    const wchar_t text[] = L"D:\\St\x00FCtze\\";
    const DWORD number = 1031;
    RegSetValueExW(key, L"Text", 0, REG_SZ, reinterpret_cast<const BYTE*>(text), sizeof text);
    RegSetValueExW(key, L"Number", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), sizeof number);
    RegCloseKey(key);

    qelString value(L"before\\");
    CHECK(qelRegistry::getRegValueCurrentUser(kKey, L"Text", value) == 1 && value == L"D:\\St\x00FCtze\\");
    int read = 0;
    CHECK(qelRegistry::getRegValueCurrentUser(kKey, L"Number", read) == 1 && read == 1031);
    CHECK(qelRegistry::getRegValueCurrentUser(kKey, L"None", value) == 0 && value == L"D:\\St\x00FCtze\\");
    unsigned long unknown = 7;
    CHECK(qelRegistry::getRegValue(kKey, L"None", unknown) == 0 && unknown == 7);
    CHECK(RegDeleteKeyW(HKEY_CURRENT_USER, kKey) == ERROR_SUCCESS);
    show("environment", qelRegistry::getRegPathEnvironment());
    CHECK(qelRegistry::getCurrentCultureId() != 0 && qelRegistry::getCurrentLanguage() != 0);
    (void)qelRegistry::getPathBinary();
    (void)qelRegistry::getPathData();
    CHECK(qelRegistry::getDatabaseConnectionsString(L"no such name").isEmpty() == 1);
}

void checkProduct()
{
    CHECK(wcscmp(qelProductDefines::getOVProduct(), L"Kelvara\\Orvalis\\2020") == 0);
    const wchar_t* const name = qelProductDefines::getOVProductName();
    qelProductDefines::setOVProductName(L"Tool");
    CHECK(wcscmp(name, L"Tool") == 0 && wcscmp(qelProductDefines::getOVProduct(), L"Kelvara\\Tool\\") == 0);

    qelString paths(L"C:\\Support");
    CHECK(qelGlobalStorage::g_pMoxSupportPaths == nullptr);
    qelGlobalStorage::g_pMoxSupportPaths = &paths;
    CHECK(*qelGlobalStorage::g_pMoxSupportPaths == L"C:\\Support");
    qelGlobalStorage::g_pMoxSupportPaths = nullptr;
}

void checkDataSources()
{
    const qelDataSource source(L"Grades", L"DRIVER={x};DBQ=a.mdb", L"x64");
    qelDataSource copy;
    copy = source;
    CHECK(copy == source && copy.m_Name == L"Grades");

    qelDataSourcesUtilities sources(L"no-such-file.xml");
    qelString connection(L"before");
    CHECK(sources.getConnectionString(L"none", connection, L"x64") == 0 && connection.isEmpty() == 1);
    qelString head;
    qelString file;
    CHECK(qelDataSourcesUtilities::splitConnectionString(source.m_ConnectionString, head, file) == 1);
    CHECK(head == L"DRIVER={x};DBQ=" && file == L"a.mdb");
    CHECK(qelDataSourcesUtilities::getConnectionStringForFile(L"b.mdb", connection) == 1);
    show("connection", connection);
    CHECK(qelDataSourcesUtilities::testConnection(L"DRIVER={no such driver};DBQ=no-such-file.mdb") <= 0);
    show("driver", qelString::integerToString(qelDataSourcesUtilities::defaultODBCDriverIsInstalled()));
    qelString driver;
    CHECK(qelDataSourcesUtilities::getOdbcDriverName(driver) == 1);
    show("driver", driver);
}
} // namespace

void checkConfiguration()
{
    checkRegistry();
    checkProduct();
    checkDataSources();
}
