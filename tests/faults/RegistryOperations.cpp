#include "faults/Operations.h"

#include "qelRegistry.h"

using namespace qelTest;

namespace
{
/// The key that holds the paths of the installation.
qelString installation()
{
    return qelString(L"Software\\Kelvara\\Orvalis\\2020");
}

std::string machineText()
{
    machine->machineInstallation.setText(L"BinPath", L"C:\\Bin\\");
    qelString value = L"before\\";
    const int result = qelRegistry::getRegValue(installation(), L"BinPath", value);
    return outcome(result, value);
}

std::string machineNumber()
{
    machine->machineInstallation.setNumber(L"Language", 1036);
    unsigned long value = 7;
    const int result = qelRegistry::getRegValue(installation(), L"Language", value);
    return outcome(result, std::to_string(value));
}

std::string createdKey()
{
    RegDeleteKeyExW(HKEY_LOCAL_MACHINE, machine->missing.path().c_str(), KEY_WOW64_64KEY, 0);
    qelString value = L"before";
    const int result = qelRegistry::getRegValue(qelString(machine->missing.path().c_str()), L"Text", value, 1);
    return outcome(result, machine->missing.exists() ? "there is a key" : "there is no key");
}

std::string userText()
{
    machine->userInstallation.setText(L"DataPath", L"D:\\Data");
    qelString value = L"before\\";
    const int result = qelRegistry::getRegValueCurrentUser(installation(), L"DataPath", value);
    return outcome(result, value);
}

std::string userNumber()
{
    machine->userInstallation.setNumber(L"Language", 1031);
    int value = 7;
    const int result = qelRegistry::getRegValueCurrentUser(installation(), L"Language", value);
    return outcome(result, std::to_string(value));
}

void setLanguages()
{
    machine->userInstallation.setNumber(L"Language", 1031);
    machine->machineInstallation.setNumber(L"Language", 1036);
}

std::string connection()
{
    machine->userConnections.setText(L"Own", L"of the user");
    machine->machineConnections.setText(L"Own", L"of the machine");
    return plain(qelRegistry::getDatabaseConnectionsString(L"Own"));
}
} // namespace

Area qelTest::registryOperations()
{
    return {
        "Registry",
        {
            Operation("getRegValue, string", "1, C:\\Bin", machineText)
                .fails("RegOpenKeyExW", "0, before")
                .fails("RegQueryValueExW", "0, before")
                .ignores({"RegCloseKey"}),
            Operation("getRegValue, number", "1, 1036", machineNumber)
                .fails("RegOpenKeyExW", "0, 7")
                .fails("RegQueryValueExW", "0, 7")
                .ignores({"RegCloseKey"}),
            Operation("getRegValue, missing key created", "0, there is a key", createdKey)
                .fails("RegCreateKeyExW", "0, there is no key")
                .ignores({"RegOpenKeyExW", "RegQueryValueExW", "RegCloseKey"}),
            Operation("getRegValueCurrentUser, string", "1, D:\\Data", userText)
                .fails("RegOpenKeyExW", "0, before\\")
                .fails("RegQueryValueExW", "0, before\\")
                .ignores({"RegCloseKey"}),
            Operation("getRegValueCurrentUser, number", "1, 1031", userNumber)
                .fails("RegOpenKeyExW", "0, 7")
                .fails("RegQueryValueExW", "0, 7")
                .ignores({"RegCloseKey"}),
            Operation("getCurrentCultureId", "1031",
                      [] {
                          setLanguages();
                          return std::to_string(qelRegistry::getCurrentCultureId());
                      })
                .fails("RegOpenKeyExW", "1036", "1")
                .fails("RegOpenKeyExW", "9", "all")
                .fails("RegQueryValueExW", "1036", "1")
                .fails("RegQueryValueExW", "9", "all")
                .ignores({"RegCloseKey"}),
            Operation("getCurrentLanguage", "7",
                      [] {
                          setLanguages();
                          return std::to_string(qelRegistry::getCurrentLanguage());
                      })
                .fails("RegOpenKeyExW", "12", "1")
                .fails("RegOpenKeyExW", "9", "all")
                .fails("RegQueryValueExW", "12", "1")
                .fails("RegQueryValueExW", "9", "all")
                .ignores({"RegCloseKey"}),
            Operation("getPathBinary", "C:\\Bin",
                      [] {
                          machine->machineInstallation.setText(L"BinPath", L"C:\\Bin");
                          return plain(qelRegistry::getPathBinary());
                      })
                .fails("RegOpenKeyExW", "no text")
                .fails("RegQueryValueExW", "no text")
                .ignores({"RegCloseKey"}),
            Operation("getPathData", "D:\\Data",
                      [] {
                          machine->userInstallation.setText(L"DataPath", L"D:\\Data");
                          machine->machineInstallation.setText(L"DataPath", L"E:\\Shared");
                          return plain(qelRegistry::getPathData());
                      })
                .fails("RegOpenKeyExW", "E:\\Shared", "1")
                .fails("RegOpenKeyExW", "no text", "all")
                .fails("RegQueryValueExW", "E:\\Shared", "1")
                .fails("RegQueryValueExW", "no text", "all")
                .ignores({"RegCloseKey"}),
            Operation("getDatabaseConnectionsString", "of the user", connection)
                .fails("RegOpenKeyExW", "of the machine", "1")
                .fails("RegOpenKeyExW", "no text", "all")
                .fails("RegQueryValueExW", "of the machine", "1")
                .fails("RegQueryValueExW", "no text", "all")
                .ignores({"RegCloseKey"}),
        },
    };
}
