#include "strings/RuntimeGaps.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <wchar.h>

namespace
{
/// Wine's runtimes do not tell that nothing could be written.
int countOrFailure(FILE* file, bool failedBefore, int count)
{
    return !failedBefore && ferror(file) != 0 ? -1 : count;
}
} // namespace

#if defined(_UCRT) || defined(_MSC_VER)

int qelRuntimeGaps::dupenv(char** buffer, size_t* length, const char* name)
{
    return _dupenv_s(buffer, length, name);
}

int qelRuntimeGaps::wdupenv(wchar_t** buffer, size_t* length, const wchar_t* name)
{
    return _wdupenv_s(buffer, length, name);
}

int qelRuntimeGaps::strset(char* buffer, size_t capacity, int character)
{
    return _strset_s(buffer, capacity, character);
}

int qelRuntimeGaps::wcserror(wchar_t* buffer, size_t capacity, int number)
{
    return _wcserror_s(buffer, capacity, number);
}

int qelRuntimeGaps::wcsupr(wchar_t* buffer, size_t capacity)
{
    return _wcsupr_s(buffer, capacity);
}

int qelRuntimeGaps::wcslwr(wchar_t* buffer, size_t capacity)
{
    return _wcslwr_s(buffer, capacity);
}

int qelRuntimeGaps::searchenv(const char* name, const char* variable, char* result, size_t capacity)
{
    return _searchenv_s(name, variable, result, capacity);
}

int qelRuntimeGaps::wsearchenv(const wchar_t* name, const wchar_t* variable, wchar_t* result, size_t capacity)
{
    return _wsearchenv_s(name, variable, result, capacity);
}

// What vfprintf and vfwprintf are in Visual C++'s headers; those of MinGW make something else of the names.

int qelRuntimeGaps::print(FILE* file, const char* format, va_list args)
{
    const bool failedBefore = ferror(file) != 0;
    const int count = __stdio_common_vfprintf(_CRT_INTERNAL_LOCAL_PRINTF_OPTIONS, file, format, nullptr, args);
    return countOrFailure(file, failedBefore, count);
}

int qelRuntimeGaps::print(FILE* file, const wchar_t* format, va_list args)
{
    const bool failedBefore = ferror(file) != 0;
    const int count = __stdio_common_vfwprintf(_CRT_INTERNAL_LOCAL_PRINTF_OPTIONS, file, format, nullptr, args);
    return countOrFailure(file, failedBefore, count);
}

#else

namespace
{
/// Every failure leaves its code in errno too, as the runtime does.
int fail(int code)
{
    errno = code;
    return code;
}

const char* find(const char* name)
{
    return getenv(name); // NOLINT(concurrency-mt-unsafe): what _dupenv_s does, which the import library lacks
}

const wchar_t* find(const wchar_t* name)
{
    return _wgetenv(name);
}

size_t measure(const char* text)
{
    return strlen(text);
}

size_t measure(const wchar_t* text)
{
    return wcslen(text);
}

template <typename Char> int duplicate(Char** buffer, size_t* length, const Char* name)
{
    if (buffer == nullptr)
    {
        return fail(EINVAL);
    }
    *buffer = nullptr;
    if (length != nullptr)
    {
        *length = 0;
    }
    if (name == nullptr)
    {
        return fail(EINVAL);
    }
    const Char* value = find(name);
    if (value == nullptr)
    {
        return 0;
    }
    const size_t size = measure(value) + 1;
    Char* copy = static_cast<Char*>(malloc(size * sizeof(Char)));
    if (copy == nullptr)
    {
        return fail(ENOMEM);
    }
    memcpy(copy, value, size * sizeof(Char));
    *buffer = copy;
    if (length != nullptr)
    {
        *length = size;
    }
    return 0;
}

template <typename Char>
int searchFolders(errno_t (*search)(const Char*, const Char*, Char*, size_t), const Char* name, const Char* variable,
                  Char* result, size_t capacity)
{
    if (name != nullptr && *name == 0 && result != nullptr && capacity != 0)
    {
        *result = 0;
        return fail(ENOENT);
    }
    const Char none = 0;
    const int code = search(name, variable == nullptr ? &none : variable, result, capacity);
    return code == 0 && result != nullptr && *result == 0 ? fail(ERANGE) : code;
}
} // namespace

int qelRuntimeGaps::dupenv(char** buffer, size_t* length, const char* name)
{
    return duplicate(buffer, length, name);
}

int qelRuntimeGaps::wdupenv(wchar_t** buffer, size_t* length, const wchar_t* name)
{
    return duplicate(buffer, length, name);
}

int qelRuntimeGaps::strset(char* buffer, size_t capacity, int character)
{
    if (buffer == nullptr || capacity == 0)
    {
        return fail(EINVAL);
    }
    const size_t length = strnlen(buffer, capacity);
    if (length == capacity)
    {
        buffer[0] = 0;
        return fail(EINVAL);
    }
    memset(buffer, character, length);
    return 0;
}

int qelRuntimeGaps::wcserror(wchar_t* buffer, size_t capacity, int number)
{
    if (buffer == nullptr || capacity == 0)
    {
        return fail(EINVAL);
    }
    const wchar_t* text = _wcserror(number);
    if (text == nullptr)
    {
        buffer[0] = 0;
        return fail(ENOMEM);
    }
    (void)wcsncpy_s(buffer, capacity, text, _TRUNCATE);
    return 0;
}

int qelRuntimeGaps::wcsupr(wchar_t* buffer, size_t capacity)
{
    return capacity == 0 ? fail(EINVAL) : _wcsupr_s(buffer, capacity);
}

int qelRuntimeGaps::wcslwr(wchar_t* buffer, size_t capacity)
{
    return capacity == 0 ? fail(EINVAL) : _wcslwr_s(buffer, capacity);
}

int qelRuntimeGaps::searchenv(const char* name, const char* variable, char* result, size_t capacity)
{
    return searchFolders<char>(&_searchenv_s, name, variable, result, capacity);
}

int qelRuntimeGaps::wsearchenv(const wchar_t* name, const wchar_t* variable, wchar_t* result, size_t capacity)
{
    return searchFolders<wchar_t>(&_wsearchenv_s, name, variable, result, capacity);
}

// A null locale is the current one.

int qelRuntimeGaps::print(FILE* file, const char* format, va_list args)
{
    const bool failedBefore = ferror(file) != 0;
    return countOrFailure(file, failedBefore, _vfprintf_l(file, format, nullptr, args));
}

int qelRuntimeGaps::print(FILE* file, const wchar_t* format, va_list args)
{
    const bool failedBefore = ferror(file) != 0;
    return countOrFailure(file, failedBefore, _vfwprintf_l(file, format, nullptr, args));
}

#endif
