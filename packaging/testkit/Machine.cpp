#include "Machine.h"

#include "Process.h"

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace
{
const wchar_t kDrivers[] = L"Software\\ODBC\\ODBCINST.INI\\ODBC Drivers";
const wchar_t kApplication[] = L"Software\\Kelvara";
const unsigned kSeconds = 60;

FARPROC ntdll(const char* name)
{
    return GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name);
}

/// Where values of the application may be.
const struct Place
{
    HKEY hive;
    REGSAM view;
    const char* name;
} kPlaces[] = {{HKEY_CURRENT_USER, 0, "HKEY_CURRENT_USER\\Software\\Kelvara"},
               {HKEY_LOCAL_MACHINE, KEY_WOW64_64KEY, "HKEY_LOCAL_MACHINE\\Software\\Kelvara"},
               {HKEY_LOCAL_MACHINE, KEY_WOW64_32KEY, "HKEY_LOCAL_MACHINE\\Software\\WOW6432Node\\Kelvara"}};

bool exists(HKEY hive, const wchar_t* path, REGSAM view)
{
    HKEY key = nullptr;
    const bool found = RegOpenKeyExW(hive, path, 0, KEY_READ | view, &key) == ERROR_SUCCESS;
    if (found)
    {
        RegCloseKey(key);
    }
    return found;
}

/// Whether there is anything below or in a key of the application.
bool holdsSomething(const Place& place)
{
    HKEY key = nullptr;
    if (RegOpenKeyExW(place.hive, kApplication, 0, KEY_READ | place.view, &key) != ERROR_SUCCESS)
    {
        return false;
    }
    DWORD keys = 0;
    DWORD values = 0;
    const LSTATUS status = RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values, nullptr,
                                            nullptr, nullptr, nullptr);
    RegCloseKey(key);
    return status != ERROR_SUCCESS || keys != 0 || values != 0;
}

/// Removes all below and in a key, and the key as well.
void remove(HKEY hive, const wchar_t* path, REGSAM view)
{
    HKEY key = nullptr;
    if (RegOpenKeyExW(hive, path, 0, KEY_ALL_ACCESS | view, &key) == ERROR_SUCCESS)
    {
        RegDeleteTreeW(key, nullptr);
        RegCloseKey(key);
        RegDeleteKeyExW(hive, path, view, 0);
    }
}

/// Files in the folder: the list itself, or a mark that there was none. Either stands for a run that has not ended.
std::wstring listIn(const std::wstring& folder)
{
    return folder + L"\\odbc-drivers.reg";
}

std::wstring markIn(const std::wstring& folder)
{
    return folder + L"\\no-odbc-drivers.txt";
}

bool registryTool(const std::wstring& arguments, const std::wstring& folder)
{
    return testkit::run(L"reg.exe " + arguments, folder, folder + L"\\reg.txt", kSeconds) == 0;
}
} // namespace

bool testkit::isWine()
{
    return ntdll("wine_get_version") != nullptr;
}

std::string testkit::systemName()
{
    RTL_OSVERSIONINFOW version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    const auto getVersion =
        reinterpret_cast<LONG(WINAPI*)(RTL_OSVERSIONINFOW*)>(reinterpret_cast<void*>(ntdll("RtlGetVersion")));
    getVersion(&version);
    std::string name = "Windows " + std::to_string(version.dwMajorVersion) + "." +
                       std::to_string(version.dwMinorVersion) + "." + std::to_string(version.dwBuildNumber);
    if (isWine())
    {
        const auto getWine =
            reinterpret_cast<const char*(CDECL*)()>(reinterpret_cast<void*>(ntdll("wine_get_version")));
        name = std::string("Wine ") + getWine() + " as " + name;
    }
    return name;
}

bool testkit::mayWriteToMachineHive()
{
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Software", 0, KEY_READ | KEY_WRITE | KEY_WOW64_64KEY, &key) !=
        ERROR_SUCCESS)
    {
        return false;
    }
    RegCloseKey(key);
    return true;
}

std::string testkit::installedApplication()
{
    for (const Place& place : kPlaces)
    {
        if (holdsSomething(place))
        {
            return place.name;
        }
    }
    return "";
}

testkit::SavedRegistry::SavedRegistry(const std::wstring& folder)
    : m_folder(folder)
{
    std::filesystem::create_directories(folder);
    if (!exists(HKEY_LOCAL_MACHINE, kDrivers, KEY_WOW64_64KEY))
    {
        std::ofstream(std::filesystem::path(markIn(folder))) << "There was no list of ODBC drivers.\n";
    }
    else if (!registryTool(L"export \"HKLM\\" + std::wstring(kDrivers) + L"\" \"" + listIn(folder) + L"\" /y", folder))
    {
        throw std::runtime_error("the list of ODBC drivers cannot be kept");
    }
}

testkit::SavedRegistry::~SavedRegistry()
{
    for (const Place& place : kPlaces)
    {
        // The tests remove what they make; this is for those that were ended before.
        if (holdsSomething(place))
        {
            remove(place.hive, kApplication, place.view);
        }
    }
    restore(m_folder);
}

bool testkit::SavedRegistry::restore(const std::wstring& folder)
{
    const bool hasList = std::filesystem::exists(listIn(folder));
    if (!hasList && !std::filesystem::exists(markIn(folder)))
    {
        return false;
    }
    remove(HKEY_LOCAL_MACHINE, kDrivers, KEY_WOW64_64KEY);
    // Where that fails the file stays: the next run tries again, and so may anybody with a double click on it.
    if (!hasList || registryTool(L"import \"" + listIn(folder) + L'"', folder))
    {
        DeleteFileW(listIn(folder).c_str());
        DeleteFileW(markIn(folder).c_str());
    }
    return true;
}
