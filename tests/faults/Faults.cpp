#include "faults/Faults.h"

#include <windows.h>

#include <sql.h>
#include <sqlext.h>

#include <cerrno>
#include <cstdio>
#include <cwchar>

namespace
{
using qelTest::Fault;
using qelTest::Spared;

// In place of any function: what it is called with does not matter, and what it returns stands in the same register
// whatever its type.

template <long long result, DWORD error = ERROR_GEN_FAILURE> long long fails()
{
    SetLastError(error);
    return result;
}

template <long long result, int error> long long failsInRuntime()
{
    errno = error;
    return result;
}

/// The bounded functions of the runtime return the error itself.
template <int error> long long refuses()
{
    return failsInRuntime<error, error>();
}

// Whoever frees something has freed it all the same.

int closesWithoutFlushing(FILE* file)
{
    (void)fclose(file);
    errno = ENOSPC;
    return EOF;
}

SQLRETURN SQL_API freesHandle(SQLSMALLINT kind, SQLHANDLE handle)
{
    SQLFreeHandle(kind, handle);
    return SQL_ERROR;
}

SQLRETURN SQL_API disconnects(SQLHDBC connection)
{
    SQLDisconnect(connection);
    return SQL_ERROR;
}

errno_t opensNothing(FILE** file, const wchar_t*, const wchar_t*)
{
    *file = nullptr;
    return static_cast<errno_t>(refuses<EACCES>());
}

FARPROC WINAPI findsFailing(HMODULE, const char*)
{
    long long (*const function)() = &fails<FALSE>;
    return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(function));
}

template <class Function> void* address(Function* function)
{
    return reinterpret_cast<void*>(function);
}

LSTATUS WINAPI closesKey(HKEY key)
{
    RegCloseKey(key);
    return ERROR_INVALID_HANDLE;
}

BOOL WINAPI closesHandle(HANDLE handle)
{
    CloseHandle(handle);
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
}

BOOL WINAPI closesSearch(HANDLE handle)
{
    FindClose(handle);
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
}

BOOL WINAPI releasesModule(HMODULE module)
{
    FreeLibrary(module);
    SetLastError(ERROR_INVALID_HANDLE);
    return FALSE;
}
} // namespace

const std::vector<Fault>& qelTest::faults()
{
    static const std::vector<Fault> table = {
        // Registry
        {"RegOpenKeyExW", nullptr, "access denied", address(&fails<ERROR_ACCESS_DENIED>)},
        {"RegCreateKeyExW", nullptr, "access denied", address(&fails<ERROR_ACCESS_DENIED>)},
        {"RegQueryValueExW", nullptr, "key deleted meanwhile", address(&fails<ERROR_KEY_DELETED>)},
        {"RegQueryValueExW", nullptr, "too long", address(&fails<ERROR_MORE_DATA>)},
        {"RegCloseKey", nullptr, "closes, invalid handle", address(&closesKey)},

        // Files
        {"_wfopen_s", nullptr, "sharing violation", address(&opensNothing)},
        {"_wfopen", nullptr, "sharing violation", address(&failsInRuntime<0, EACCES>)},
        {"_wfsopen", nullptr, "too many open", address(&failsInRuntime<0, EMFILE>)},
        {"fclose", nullptr, "closes, disk full", address(&closesWithoutFlushing)},
        {"fflush", nullptr, "disk full", address(&failsInRuntime<EOF, ENOSPC>)},
        {"fputs", nullptr, "disk full", address(&failsInRuntime<EOF, ENOSPC>)},
        {"fputws", nullptr, "disk full", address(&failsInRuntime<EOF, ENOSPC>)},
        {"fputwc", nullptr, "disk full", address(&failsInRuntime<WEOF, ENOSPC>)},
        {"vfwprintf_s", "__stdio_common_vfwprintf_s", "disk full", address(&failsInRuntime<-1, ENOSPC>)},
        {"_vfwprintf_l", "__stdio_common_vfwprintf", "disk full", address(&failsInRuntime<-1, ENOSPC>)},
        {"_vfprintf_l", "__stdio_common_vfprintf", "disk full", address(&failsInRuntime<-1, ENOSPC>)},
        {"fread", nullptr, "read error", address(&failsInRuntime<0, EIO>)},
        {"fgets", nullptr, "read error", address(&failsInRuntime<0, EIO>)},
        {"fgetws", nullptr, "read error", address(&failsInRuntime<0, EIO>)},
        {"fgetwc", nullptr, "read error", address(&failsInRuntime<WEOF, EIO>)},
        {"fwscanf_s", "__stdio_common_vfwscanf", "read error", address(&failsInRuntime<EOF, EIO>)},
        {"fseek", nullptr, "bad descriptor", address(&failsInRuntime<-1, EBADF>)},
        {"fsetpos", "_fseeki64", "bad descriptor", address(&failsInRuntime<-1, EBADF>)},
        {"ftell", nullptr, "bad descriptor", address(&failsInRuntime<-1, EBADF>)},
        {"_get_osfhandle", nullptr, "bad descriptor", address(&failsInRuntime<-1, EBADF>)},
        {"_setmode", nullptr, "bad descriptor", address(&failsInRuntime<-1, EBADF>)},
        {"GetFileType", nullptr, "unknown", address(&fails<FILE_TYPE_UNKNOWN, ERROR_INVALID_HANDLE>)},
        {"ReadFile", nullptr, "read error", address(&fails<FALSE, ERROR_READ_FAULT>)},
        {"SetFilePointerEx", nullptr, "bad handle", address(&fails<FALSE, ERROR_INVALID_HANDLE>)},
        {"LockFileEx", nullptr, "locked by another", address(&fails<FALSE, ERROR_LOCK_VIOLATION>)},
        {"LockFileEx", nullptr, "not supported", address(&fails<FALSE, ERROR_NOT_SUPPORTED>)},
        {"_wremove", nullptr, "access denied", address(&failsInRuntime<-1, EACCES>)},
        {"_wrename", nullptr, "access denied", address(&failsInRuntime<-1, EACCES>)},
        {"_wchdir", nullptr, "no such folder", address(&failsInRuntime<-1, ENOENT>)},
        {"_wmkdir", nullptr, "access denied", address(&failsInRuntime<-1, EACCES>)},
        {"FindFirstFileW", nullptr, "access denied", address(&fails<-1, ERROR_ACCESS_DENIED>)},
        {"FindClose", nullptr, "closes, invalid handle", address(&closesSearch)},

        // ODBC
        {"GetSystemDirectoryW", nullptr, "fails", address(&fails<0>)},
        {"LoadLibraryExW", nullptr, "not found", address(&fails<0, ERROR_MOD_NOT_FOUND>)},
        {"GetProcAddress", nullptr, "not found", address(&fails<0, ERROR_PROC_NOT_FOUND>)},
        {"GetProcAddress", nullptr, "what it finds fails", address(&findsFailing)},
        {"GetModuleFileNameW", nullptr, "fails", address(&fails<0>)},
        {"SQLAllocHandle", nullptr, "error", address(&fails<SQL_ERROR>)},
        {"SQLSetEnvAttr", nullptr, "error", address(&fails<SQL_ERROR>)},
        {"SQLDriverConnectW", nullptr, "error", address(&fails<SQL_ERROR>)},
        {"SQLDisconnect", nullptr, "disconnects, error", address(&disconnects)},
        {"SQLFreeHandle", nullptr, "frees, error", address(&freesHandle)},

        // Snapshots and versions
        {"CreateToolhelp32Snapshot", nullptr, "modules change", address(&fails<-1, ERROR_BAD_LENGTH>)},
        {"CreateToolhelp32Snapshot", nullptr, "access denied", address(&fails<-1, ERROR_ACCESS_DENIED>)},
        {"Process32FirstW", nullptr, "no more", address(&fails<FALSE, ERROR_NO_MORE_FILES>)},
        {"Process32NextW", nullptr, "no more", address(&fails<FALSE, ERROR_NO_MORE_FILES>)},
        {"Module32FirstW", nullptr, "no more", address(&fails<FALSE, ERROR_NO_MORE_FILES>)},
        {"Module32NextW", nullptr, "no more", address(&fails<FALSE, ERROR_NO_MORE_FILES>)},
        {"GetFileVersionInfoSizeW", nullptr, "no resource", address(&fails<0, ERROR_RESOURCE_DATA_NOT_FOUND>)},
        {"GetFileVersionInfoW", nullptr, "vanished", address(&fails<FALSE, ERROR_FILE_NOT_FOUND>)},
        {"VerQueryValueW", nullptr, "no such block", address(&fails<FALSE, ERROR_RESOURCE_TYPE_NOT_FOUND>)},

        // Windows
        {"MessageBoxW", nullptr, "fails", address(&fails<0, ERROR_NOT_ENOUGH_MEMORY>)},
        {"InitCommonControlsEx", nullptr, "fails", address(&fails<FALSE>)},
        {"CreateDialogParamW", nullptr, "fails", address(&fails<0, ERROR_NOT_ENOUGH_MEMORY>)},
        {"CreateWindowExW", nullptr, "fails", address(&fails<0, ERROR_NOT_ENOUGH_MEMORY>)},
        {"DestroyWindow", nullptr, "access denied", address(&fails<FALSE, ERROR_ACCESS_DENIED>)},
        {"GetClientRect", nullptr, "fails", address(&fails<FALSE>)},
        {"GetWindowRect", nullptr, "fails", address(&fails<FALSE>)},
        {"GetDlgItem", nullptr, "no such control", address(&fails<0, ERROR_CONTROL_ID_NOT_FOUND>)},
        {"SetDlgItemTextW", nullptr, "fails", address(&fails<FALSE>)},
        {"SetWindowPos", nullptr, "fails", address(&fails<FALSE>)},
        {"SetWindowLongPtrW", nullptr, "fails", address(&fails<0>)},
        {"GetWindowLongPtrW", nullptr, "fails", address(&fails<0>)},
        {"SendMessageW", nullptr, "blocked", address(&fails<0, ERROR_ACCESS_DENIED>)},
        {"EndDialog", nullptr, "fails", address(&fails<FALSE>)},

        // Threads and fibers
        {"CreateEventW", nullptr, "no memory", address(&fails<0, ERROR_NOT_ENOUGH_MEMORY>)},
        {"CreateThread", nullptr, "no memory", address(&fails<0, ERROR_NOT_ENOUGH_MEMORY>)},
        {"GetModuleHandleExW", nullptr, "fails", address(&fails<FALSE, ERROR_MOD_NOT_FOUND>)},
        {"FreeLibrary", nullptr, "releases, fails", address(&releasesModule)},
        {"CloseHandle", nullptr, "closes, invalid handle", address(&closesHandle)},
        {"ResetEvent", nullptr, "fails", address(&fails<FALSE>)},
        {"WaitForSingleObject", nullptr, "fails", address(&fails<WAIT_FAILED>)},
        {"WaitForMultipleObjects", nullptr, "fails", address(&fails<WAIT_FAILED>)},
        {"ConvertThreadToFiberEx", nullptr, "no memory", address(&fails<0, ERROR_NOT_ENOUGH_MEMORY>)},
        {"CreateFiberEx", nullptr, "no memory", address(&fails<0, ERROR_NOT_ENOUGH_MEMORY>)},

        // Text and time
        {"MultiByteToWideChar", nullptr, "bad text", address(&fails<0, ERROR_NO_UNICODE_TRANSLATION>)},
        {"WideCharToMultiByte", nullptr, "bad text", address(&fails<0, ERROR_NO_UNICODE_TRANSLATION>)},
        {"GetCPInfo", nullptr, "no such code page", address(&fails<FALSE, ERROR_INVALID_PARAMETER>)},
        {"_vscwprintf", "__stdio_common_vswprintf", "bad format", address(&failsInRuntime<-1, EINVAL>)},
        {"vswprintf_s", "__stdio_common_vswprintf_s", "bad format", address(&failsInRuntime<-1, EINVAL>)},
        {"__stdio_common_vsprintf_s", nullptr, "bad format", address(&failsInRuntime<-1, EINVAL>)},
        {"strftime", nullptr, "does not fit", address(&failsInRuntime<0, ERANGE>)},
        {"SystemTimeToFileTime", nullptr, "invalid time", address(&fails<FALSE, ERROR_INVALID_PARAMETER>)},
        {"FileTimeToSystemTime", nullptr, "out of range", address(&fails<FALSE, ERROR_INVALID_PARAMETER>)},
        {"clock", nullptr, "not available", address(&failsInRuntime<-1, EINVAL>)},
        {"SysAllocString", nullptr, "no memory", address(&fails<0, ERROR_NOT_ENOUGH_MEMORY>)},
    };
    return table;
}

const std::vector<Spared>& qelTest::spared()
{
    static const std::vector<Spared> table = {
        {"allocate or free memory: the tests of failing allocations do that", {"malloc", "calloc", "realloc", "free"}},
        {"copy environment variables in the UCRT, and the wrappers return what they return; with the older runtime the "
         "library makes the copies itself, with `malloc`",
         {"_dupenv_s", "_wdupenv_s"}},
        {"work on the memory they are given and have no failure",
         {"CompareFileTime", "IntersectRect", "wsprintfW", "_wcsicmp",  "_wcsnicmp",      "_wcsrev",  "_wtof",
          "_wtoi",           "_wtol",         "_ultoa",    "acos",      "bsearch",        "btowc",    "cos",
          "floor",           "iswalnum",      "iswalpha",  "iswcntrl",  "iswctype",       "iswdigit", "iswlower",
          "iswpunct",        "iswspace",      "iswupper",  "iswxdigit", "memchr",         "memcmp",   "memcpy",
          "memmove",         "memset",        "pow",       "qsort",     "ldexp",          "strchr",   "strcmp",
          "strcoll",         "strlen",        "strncmp",   "strnlen",   "strtoul",        "strxfrm",  "towlower",
          "towupper",        "wcschr",        "wcscmp",    "wcscoll",   "wcsftime",       "wcslen",   "wcsncmp",
          "wcsnlen",         "wcsstr",        "wcstol",    "wcsxfrm",   "MapWindowPoints"}},
        {"refuse bad arguments only; the wrappers of the C runtime return what they return",
         {"strcpy_s",     "strncpy_s",      "strcat_s",      "strncat_s",    "wcscpy_s",      "wcsncpy_s",
          "wcscat_s",     "wcsncat_s",      "strtok_s",      "wcstok_s",     "_strupr_s",     "_wcsupr_s",
          "_strlwr_s",    "_wcslwr_s",      "_strset_s",     "_wcsset_s",    "_itoa_s",       "_itow_s",
          "_ltoa_s",      "_ltow_s",        "_gcvt_s",       "_splitpath_s", "_wsplitpath_s", "_makepath_s",
          "_wmakepath_s", "_searchenv_s",   "_wsearchenv_s", "strerror",     "strerror_s",    "_wcserror_s",
          "_localtime64", "_localtime64_s", "_strdate_s",    "_wstrdate_s",  "_strtime_s",    "_wstrtime_s",
          "swprintf_s",   "getenv",         "_wgetenv"}},
        {"say something about process, thread or stream that is always known",
         {"GetACP", "GetCurrentProcess", "GetCurrentProcessId", "GetCurrentThread", "GetCurrentThreadId",
          "GetLastError", "SetLastError", "GetTickCount64", "GetThreadId", "IsThreadAFiber", "_errno", "_fileno",
          "feof", "VirtualQuery", "QueryPerformanceCounter", "QueryPerformanceFrequency"}},
        {"return nothing that tells of a failure",
         {"DeleteCriticalSection", "DeleteFiber", "EnterCriticalSection", "InitializeCriticalSection",
          "LeaveCriticalSection", "FreeLibraryAndExitThread", "GetLocalTime", "GetSystemTime", "OutputDebugStringW",
          "ShowWindow", "Sleep", "SwitchToFiber", "ConvertFiberToThread", "_set_thread_local_invalid_parameter_handler",
          "SwitchToThread", "TryEnterCriticalSection"}},
        {"fail for a handle that is none only, and this one is the pool's own: who waited for it would wait forever",
         {"SetEvent"}},
        {"belong to the runtime of the compiler, which ends the process where it cannot go on",
         {"AddVectoredExceptionHandler",
          "RemoveVectoredExceptionHandler",
          "CreateEventA",
          "CreateSemaphoreA",
          "ReleaseSemaphore",
          "DuplicateHandle",
          "FormatMessageA",
          "GetHandleInformation",
          "GetModuleHandleA",
          "GetModuleHandleW",
          "GetTickCount",
          "GetProcessAffinityMask",
          "SetProcessAffinityMask",
          "GetSystemTimeAsFileTime",
          "GetThreadContext",
          "SetThreadContext",
          "GetThreadPriority",
          "SetThreadPriority",
          "IsDBCSLeadByteEx",
          "IsDebuggerPresent",
          "LoadLibraryW",
          "LocalFree",
          "OpenProcess",
          "OutputDebugStringA",
          "RaiseException",
          "ResumeThread",
          "SuspendThread",
          "RtlCaptureContext",
          "RtlLookupFunctionEntry",
          "RtlUnwindEx",
          "RtlVirtualUnwind",
          "TlsAlloc",
          "TlsGetValue",
          "TlsSetValue",
          "VirtualProtect",
          "AcquireSRWLockExclusive",
          "ReleaseSRWLockExclusive",
          "SleepConditionVariableSRW",
          "WakeAllConditionVariable",
          "__C_specific_handler",
          "___lc_codepage_func",
          "___mb_cur_max_func",
          "__iob_func",
          "__setusermatherr",
          "_amsg_exit",
          "_beginthreadex",
          "_endthreadex",
          "_close",
          "_filelengthi64",
          "_initterm",
          "_initterm_e",
          "_initialize_onexit_table",
          "_register_onexit_function",
          "_execute_onexit_table",
          "_crt_atexit",
          "_resetstkoflw",
          "_lock",
          "_unlock",
          "_read",
          "_setjmp",
          "longjmp",
          "abort",
          "exit",
          "signal",
          "fgetpos",
          "fprintf",
          "fputc",
          "fwrite",
          "localeconv",
          "printf",
          "_vscprintf",
          "_vsnprintf",
          "setlocale",
          "vfprintf",
          "_CxxThrowException",
          "__CxxFrameHandler3",
          "__std_exception_copy",
          "__std_exception_destroy",
          "__std_terminate",
          "__std_type_info_compare",
          "_purecall",
          "_callnewh",
          "_strdup"}},
    };
    return table;
}
