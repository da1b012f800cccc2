#include "faults/Operations.h"

#include "qelDataSourcesUtilities.h"

using namespace qelTest;

namespace
{
FARPROC WINAPI findNothing(HMODULE, const char*)
{
    SetLastError(ERROR_PROC_NOT_FOUND);
    return nullptr;
}

std::string withBoxes(int result)
{
    return outcome(result, std::to_string(machine->boxes) + " box");
}

std::string driversOfAnOldInstaller()
{
    machine->boxes = 0;
    void* const found = importedCalls->redirect("GetProcAddress", reinterpret_cast<void*>(&findNothing));
    const int result = qelDataSourcesUtilities::readInstalledOdbcDrivers();
    importedCalls->redirect("GetProcAddress", found);
    return withBoxes(result);
}

std::string drivers()
{
    machine->drivers.setText(L"SQLite3", L"Installed");
    machine->drivers.setText(L"Microsoft Access Driver (*.mdb, *.accdb)", L"Installed");
    machine->boxes = 0;
    return withBoxes(qelDataSourcesUtilities::readInstalledOdbcDrivers() > 0 ? 1 : 0);
}

const char kConfiguration[] =
    "<Orvalis><DataSource Platform=\"x64\" Name=\"Own\" Value=\"DRIVER={D};DBQ=own.mdb\"/></Orvalis>";

/// Looks a data source up in a catalogue that has not been read yet, and once more in the one that was read.
std::string lookedUp(const wchar_t* name)
{
    machine->userInstallation.setText(L"DataPath", L"D:\\Data");
    machine->machineInstallation.setText(L"DataPath", L"E:\\Shared");
    machine->userConnections.setText(L"PelionProfiles2020", L"DRIVER={D};DBQ=profiles.mdb");
    static int files = 0;
    const std::wstring file = L"configuration" + std::to_wstring(++files) + L".xml";
    qelDataSourcesUtilities sources(qelString(machine->folder.write(file, kConfiguration).c_str()));
    qelString first;
    qelString second;
    const int result = sources.getConnectionString(name, first, L"x64");
    importedCalls->stop();
    sources.getConnectionString(name, second, L"x64");
    DeleteFileW(machine->folder.path(file).c_str());
    return outcome(result, first) + " / then " + plain(second);
}

std::string connected(bool exists)
{
    const std::wstring file = machine->folder.write(L"own.db", "");
    if (!exists)
    {
        DeleteFileW(file.c_str());
    }
    return std::to_string(qelDataSourcesUtilities::testConnection((L"DRIVER={No such driver};DBQ=" + file).c_str()));
}

std::string connectedForReal()
{
    return std::to_string(qelDataSourcesUtilities::testConnection(L"DRIVER={SQLite3};Database=:memory:"));
}

const char kOwn[] = "1, DRIVER={D};DBQ=D:\\Data\\own.mdb / then DRIVER={D};DBQ=D:\\Data\\own.mdb";
const char kShared[] = "1, DRIVER={D};DBQ=E:\\Shared\\own.mdb / then DRIVER={D};DBQ=D:\\Data\\own.mdb";
const char kNoFolder[] = "1, DRIVER={D};DBQ=\\own.mdb / then DRIVER={D};DBQ=D:\\Data\\own.mdb";
const char kNone[] = "0, no text / then no text";
} // namespace

Area qelTest::dataSourceOperations()
{
    return {
        "Data sources",
        {
            Operation("readInstalledOdbcDrivers, installer without the function", "0, 1 box", driversOfAnOldInstaller)
                .untilSuccess({"GetSystemDirectoryW", "LoadLibraryExW"})
                .fails("MessageBoxW", "0, 0 box")
                .fails("GetProcAddress: what it finds fails", "0, 0 box")
                .ignores({"GetSystemDirectoryW", "LoadLibraryExW", "GetModuleFileNameW", "GetProcAddress"}),
            Operation("readInstalledOdbcDrivers", "1, 0 box", drivers)
                .untilSuccess({"GetProcAddress"})
                .fails("GetProcAddress", "0, 1 box")
                .fails("GetProcAddress: what it finds fails", "0, 0 box"),
            Operation("getConnectionString", kOwn, [] { return lookedUp(L"Own"); })
                .fails("RegOpenKeyExW", kShared, "5")
                .fails("RegOpenKeyExW", kNoFolder, "all")
                .fails("RegQueryValueExW", kShared, "5")
                .fails("RegQueryValueExW", kNoFolder, "all")
                .fails("_wfopen_s", kNone)
                .fails("_get_osfhandle", kNone)
                .fails("GetFileType", kNone)
                .fails("ReadFile", kNone)
                .fails("SetFilePointerEx", kNone)
                .fails("ftell", kNone)
                .fails("fseek", kNone, "1,3,all")
                .ignores({"RegOpenKeyExW", "RegQueryValueExW", "RegCloseKey", "GetCPInfo", "fseek", "fsetpos",
                          "_setmode", "fclose"}),
            Operation("testConnection", "1", connectedForReal)
                .fails("SQLAllocHandle", "-1")
                .fails("SQLSetEnvAttr", "-1")
                .fails("SQLDriverConnectW", "-1")
                .ignores({"SQLDisconnect", "SQLFreeHandle"}),
            Operation("testConnection, missing file", "0", [] { return connected(false); })
                .fails("SQLAllocHandle", "-1")
                .fails("SQLSetEnvAttr", "-1")
                .ignores({"SQLDriverConnectW", "SQLDisconnect", "SQLFreeHandle", "FindFirstFileW"}),
            Operation("testConnection, missing driver", "-1", [] { return connected(true); })
                .fails("FindFirstFileW", "0")
                .ignores({"SQLAllocHandle", "SQLSetEnvAttr", "SQLDriverConnectW", "SQLDisconnect", "SQLFreeHandle",
                          "FindClose"}),
        },
    };
}
