#include "strings/RuntimeGaps.h"

#include <errno.h>
#include <stdlib.h>
#include <string.h>
#include <wchar.h>

#if defined(_UCRT) || defined(_MSC_VER)

int qelRuntimeGaps::dupenv(char** buffer, size_t* length, const char* name)
{
    return _dupenv_s(buffer, length, name);
}

int qelRuntimeGaps::wdupenv(wchar_t** buffer, size_t* length, const wchar_t* name)
{
    return _wdupenv_s(buffer, length, name);
}

// What vfprintf and vfwprintf call in Visual C++'s headers; MinGW's differ.

int qelRuntimeGaps::print(FILE* file, const char* format, va_list args)
{
    return __stdio_common_vfprintf(_CRT_INTERNAL_LOCAL_PRINTF_OPTIONS, file, format, nullptr, args);
}

int qelRuntimeGaps::print(FILE* file, const wchar_t* format, va_list args)
{
    return __stdio_common_vfwprintf(_CRT_INTERNAL_LOCAL_PRINTF_OPTIONS, file, format, nullptr, args);
}

#else

namespace
{
/// Sets errno too, as the runtime does.
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
} // namespace

int qelRuntimeGaps::dupenv(char** buffer, size_t* length, const char* name)
{
    return duplicate(buffer, length, name);
}

int qelRuntimeGaps::wdupenv(wchar_t** buffer, size_t* length, const wchar_t* name)
{
    return duplicate(buffer, length, name);
}

// A null locale is the current one.

int qelRuntimeGaps::print(FILE* file, const char* format, va_list args)
{
    return _vfprintf_l(file, format, nullptr, args);
}

int qelRuntimeGaps::print(FILE* file, const wchar_t* format, va_list args)
{
    return _vfwprintf_l(file, format, nullptr, args);
}

#endif
