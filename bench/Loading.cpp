// Loading and unloading the DLL, and its size. A program of its own: the others have the DLL loaded all the time.

#include "Harness.h"

#include <windows.h>

#include <cstdlib>
#include <cstring>
#include <string>

using namespace qelBench;
using std::wstring;

namespace
{
const wchar_t kLibrary[] = L"VarnelQELRoots.dll";
const wchar_t kEmpty[] = L"benchEmpty.dll"; // the same runtime inside, and nothing else
const char kEmptyName[] = "an empty DLL with the same runtime";

/// System DLLs that the library uses and this program does not.
const wchar_t* const kSystemLibraries[] = {L"advapi32.dll", L"comctl32.dll", L"odbc32.dll",
                                           L"oleaut32.dll", L"user32.dll",   L"version.dll"};

wstring beside(const wchar_t* name)
{
    wchar_t path[MAX_PATH];
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    const wstring program(path);
    return program.substr(0, program.rfind(L'\\') + 1) + name;
}

bool loadAndFree(const wstring& path)
{
    const HMODULE module = LoadLibraryW(path.c_str());
    return module != nullptr && FreeLibrary(module) != FALSE && GetModuleHandleW(path.c_str()) == nullptr;
}

/// What stays loaded while the row lasts.
void loadSystemLibraries()
{
    for (const wchar_t* name : kSystemLibraries)
    {
        LoadLibraryW(name);
    }
}

void addLoadAgain(Table& table)
{
    Row row{"load and free, system DLLs there", "1 load", kEmptyName, 2.0};
    row.clock = Clock::wall;
    table.add(row, [] {
        loadSystemLibraries();
        const wstring ours = beside(kLibrary);
        const wstring empty = beside(kEmpty);
        return Sides{repeated([ours] { return loadAndFree(ours); }), repeated([empty] { return loadAndFree(empty); }),
                     [ours, empty] { return loadAndFree(ours) && loadAndFree(empty); }};
    });
}

/// Microseconds, as the exit code of a new process of this program says.
double loadInNewProcess(const wstring& library)
{
    wstring command = L"\"" + beside(L"benchLoad.exe") + L"\" --load \"" + library + L"\"";
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process))
    {
        return 0;
    }
    DWORD microseconds = 0;
    WaitForSingleObject(process.hProcess, INFINITE);
    GetExitCodeProcess(process.hProcess, &microseconds);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return microseconds;
}

/// In the place of the time that starting a process takes, the time that it told.
Side loadingOnce(const wstring& library)
{
    return [library](Clock, long calls) {
        double taken = 0;
        for (long i = 0; i < calls; ++i)
        {
            taken += 1000 * loadInNewProcess(library);
        }
        return taken;
    };
}

void addLoadFirst(Table& table)
{
    Row row{"load, nothing there", "1 load in a new process", kEmptyName};
    row.reason =
        "COMCTL32, OLEAUT32 and USER32 are loaded with it; with all system DLLs there, it takes twice as long as "
        "the empty DLL. Loading them later is another job for each compiler, and a missing DLL would show in "
        "the middle of a call.";
    row.clock = Clock::wall;
    table.add(row, [] {
        const wstring ours = beside(kLibrary);
        const wstring empty = beside(kEmpty);
        return Sides{loadingOnce(ours), loadingOnce(empty),
                     [ours, empty] { return loadInNewProcess(ours) > 0 && loadInNewProcess(empty) > 0; }};
    });
}

/// 0 where it cannot be loaded.
int loadOnce(const wchar_t* library)
{
    const double begin = now(Clock::wall);
    const bool loaded = LoadLibraryW(library) != nullptr;
    return loaded ? static_cast<int>((now(Clock::wall) - begin) / 1000) : 0;
}

double fileSize(const wstring& path)
{
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data);
    return data.nFileSizeLow;
}

void addSize(Table& table)
{
    Row row{"size of the DLL without symbols", "1 file", "a limit of 1.4 MB", 1.0};
    row.unit = "bytes";
    table.add(row, [] {
        const double size = fileSize(beside(kLibrary));
        return Sides{figure(size), figure(1.4e6), [size] { return size > 0; }};
    });
}
} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && std::strcmp(argv[1], "--load") == 0)
    {
        const std::string name = argv[2];
        return loadOnce(wstring(name.begin(), name.end()).c_str());
    }
    Table table;
    table.family("Loading and size");
    addLoadAgain(table);
    addLoadFirst(table);
    addSize(table);
    return run(table, argc, argv);
}
