#include "Findings.h"

#include "qelDataSourcesUtilities.h"
#include "qelLogfile.h"
#include "qelRegistry.h"

#include <windows.h>

#include <tlhelp32.h>

#include <algorithm>

namespace
{
std::wstring languageName(unsigned long language)
{
    switch (language)
    {
    case 5:
        return L"Czech";
    case 7:
        return L"German";
    case 12:
        return L"French";
    case 19:
        return L"Dutch";
    case 21:
        return L"Polish";
    case 25:
        return L"Russian";
    default:
        return L"English";
    }
}

Connection tryConnection(const qelString& connectionString)
{
    if (connectionString.isEmpty() != 0)
    {
        return Connection::untested;
    }
    switch (qelDataSourcesUtilities::testConnection(connectionString))
    {
    case 1:
        return Connection::connected;
    case 0:
        return Connection::fileMissing;
    default:
        return Connection::failed;
    }
}

/// Puts asterisks in place of every password: reports are passed on.
std::wstring withoutPasswords(std::wstring text)
{
    size_t attribute = 0;
    while (attribute < text.size())
    {
        const size_t value = text.find(L'=', attribute) + 1;
        if (value == 0)
        {
            break;
        }
        // A value in braces may hold semicolons.
        const size_t from = value < text.size() && text[value] == L'{' ? text.find(L'}', value) : value;
        size_t end = std::min(text.find(L';', std::min(from, text.size())), text.size());
        const bool isPassword =
            qelString::compareNoCase(text.substr(attribute, value - attribute).c_str(), L"PWD=") == 0;
        if (isPassword && value < end)
        {
            text.replace(value, end - value, L"***");
            end = value + 3;
        }
        attribute = end + 1;
    }
    return text;
}

std::vector<DataSource> lookAtDataSources(const Request& request)
{
    qelDataSourcesUtilities sources(request.configurationFile.c_str());
    std::vector<DataSource> found;
    for (const std::wstring& name : request.names)
    {
        qelString connectionString;
        const bool isUsable =
            sources.getConnectionString(name.c_str(), connectionString, request.platform.c_str()) == 1;
        found.push_back({name, request.platform, isUsable, tryConnection(connectionString),
                         withoutPasswords(connectionString.getStringW())});
    }
    return found;
}

std::vector<Module> lookAtModules()
{
    std::vector<Module> found;
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPMODULE, GetCurrentProcessId());
    if (snapshot == INVALID_HANDLE_VALUE)
    {
        return found;
    }
    MODULEENTRY32W entry = {};
    entry.dwSize = sizeof entry;
    for (BOOL more = Module32FirstW(snapshot, &entry); more; more = Module32NextW(snapshot, &entry))
    {
        qelString path = entry.szExePath;
        qelString version;
        qelLogfile::GetFileVersion(path, version);
        found.push_back({reinterpret_cast<unsigned long long>(entry.modBaseAddr), entry.modBaseSize,
                         version.getStringW(), path.getStringW()});
    }
    CloseHandle(snapshot);
    return found;
}
} // namespace

Findings look(const Request& request)
{
    Findings findings;
    findings.binaries = qelRegistry::getPathBinary().getStringW();
    findings.data = qelRegistry::getPathData().getStringW();
    findings.culture = qelRegistry::getCurrentCultureId();
    findings.language = languageName(qelRegistry::getCurrentLanguage());

    findings.installedDrivers = qelDataSourcesUtilities::readInstalledOdbcDrivers();
    findings.defaultDriver = qelDataSourcesUtilities::defaultODBCDriverIsInstalled();
    qelString driver;
    qelDataSourcesUtilities::getOdbcDriverName(driver);
    findings.driver = driver.getStringW();

    findings.configurationFile = request.configurationFile;
    findings.dataSources = lookAtDataSources(request);
    findings.modules = lookAtModules();
    return findings;
}

bool allConnected(const Findings& findings)
{
    return std::all_of(findings.dataSources.begin(), findings.dataSources.end(), [](const DataSource& source) {
        return source.isUsable && source.connection == Connection::connected;
    });
}
