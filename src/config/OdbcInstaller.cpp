#include "config/OdbcInstaller.h"

#include <stdio.h>
#include <wchar.h>

namespace
{
using GetInstalledDrivers = BOOL(WINAPI*)(LPWSTR names, WORD capacity, WORD* used);

const UINT kPathCapacity = 522;
const wchar_t kLibraryName[] = L"\\odbccp32.dll";
const UINT kLibraryNameSize = sizeof(kLibraryName) / sizeof(wchar_t);

const DWORD kFileNameCapacity = 261;
const size_t kMessageCapacity = 783;
const char kFunctionName[] = "SQLGetInstalledDriversW";
const wchar_t kFunctionMissing[] =
    L"The program %s, or one of its DLLs attempted to call the function %S which is not supported in the loaded ODBC "
    L"installer DLL (%s). Press OK to proceed.";
static_assert(sizeof(kFunctionMissing) / sizeof(wchar_t) + sizeof(kFunctionName) + size_t{2} * kFileNameCapacity <=
                  kMessageCapacity,
              "the message always fits");

void tellUser(const wchar_t* text)
{
    (void)MessageBoxW(nullptr, text, L"ODBC Installer Error", MB_OK | MB_ICONINFORMATION);
}

void tellUserThatFunctionIsMissing(HMODULE library)
{
    // One more unit than announced: a truncated name need not be null-terminated.
    wchar_t program[kFileNameCapacity + 1] = {};
    wchar_t installer[kFileNameCapacity + 1] = {};
    (void)GetModuleFileNameW(nullptr, program, kFileNameCapacity);
    (void)GetModuleFileNameW(library, installer, kFileNameCapacity);

    wchar_t text[kMessageCapacity] = {};
    (void)swprintf_s(text, kMessageCapacity, kFunctionMissing, program, kFunctionName, installer);
    tellUser(text);
}
} // namespace

bool OdbcInstaller::load()
{
    if (m_library == nullptr)
    {
        wchar_t path[kPathCapacity] = {};
        const UINT length = GetSystemDirectoryW(path, kPathCapacity);
        if (length > 0 && length <= kPathCapacity - kLibraryNameSize)
        {
            wmemcpy(path + length, kLibraryName, kLibraryNameSize);
            m_library = LoadLibraryExW(path, nullptr, 0);
        }
    }
    return m_library != nullptr;
}

bool OdbcInstaller::getInstalledDrivers(wchar_t* names, WORD capacity)
{
    if (!load())
    {
        tellUser(L"The ODBC installer DLL (ODBCCP32.DLL) is not installed on this system.");
        return false;
    }
    void* address = reinterpret_cast<void*>(GetProcAddress(m_library, kFunctionName));
    if (address == nullptr)
    {
        tellUserThatFunctionIsMissing(m_library);
        return false;
    }
    WORD used = 0;
    return reinterpret_cast<GetInstalledDrivers>(address)(names, capacity, &used) != FALSE;
}
