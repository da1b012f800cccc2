// Wide functions are implemented for wchar_t; the forms for unsigned short forward to them.

#include "qelRuntime.h"

#include "qelString.h"
#include "strings/RuntimeGaps.h"
#include "strings/Text.h"

#include <oleauto.h>

#include <share.h>
#include <stdarg.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <wchar.h>

namespace
{
using qelText::wide;

wchar_t* wide(unsigned short* text)
{
    return reinterpret_cast<wchar_t*>(text);
}

unsigned short* shorts(wchar_t* text)
{
    return reinterpret_cast<unsigned short*>(text);
}
} // namespace

// Copying and appending

int qelstrcpy(char* destination, size_t capacity, const char* source)
{
    return strcpy_s(destination, capacity, source);
}

int qelwcscpy8(wchar_t* destination, size_t capacity, const wchar_t* source)
{
    return wcscpy_s(destination, capacity, source);
}

int qelwcscpy6(unsigned short* destination, size_t capacity, const unsigned short* source)
{
    return qelwcscpy8(wide(destination), capacity, wide(source));
}

int qelstrncpy(char* destination, size_t capacity, const char* source, size_t count)
{
    return strncpy_s(destination, capacity, source, count);
}

int qelwcsncpy8(wchar_t* destination, size_t capacity, const wchar_t* source, size_t count)
{
    return wcsncpy_s(destination, capacity, source, count);
}

int qelwcsncpy6(unsigned short* destination, size_t capacity, const unsigned short* source, size_t count)
{
    return qelwcsncpy8(wide(destination), capacity, wide(source), count);
}

int qelstrcat(char* destination, size_t capacity, const char* source)
{
    return strcat_s(destination, capacity, source);
}

int qelwcscat8(wchar_t* destination, size_t capacity, const wchar_t* source)
{
    return wcscat_s(destination, capacity, source);
}

int qelwcscat6(unsigned short* destination, size_t capacity, const unsigned short* source)
{
    return qelwcscat8(wide(destination), capacity, wide(source));
}

int qelstrncat(char* destination, size_t capacity, const char* source, size_t count)
{
    return strncat_s(destination, capacity, source, count);
}

int qelwcsncat8(wchar_t* destination, size_t capacity, const wchar_t* source, size_t count)
{
    return wcsncat_s(destination, capacity, source, count);
}

int qelwcsncat6(unsigned short* destination, size_t capacity, const unsigned short* source, size_t count)
{
    return qelwcsncat8(wide(destination), capacity, wide(source), count);
}

// Changing in place

int qelstrupr(char* buffer, size_t capacity)
{
    return _strupr_s(buffer, capacity);
}

int qelwcsupr8(wchar_t* buffer, size_t capacity)
{
    return _wcsupr_s(buffer, capacity);
}

int qelwcsupr6(unsigned short* buffer, size_t capacity)
{
    return qelwcsupr8(wide(buffer), capacity);
}

int qelstrlwr(char* buffer, size_t capacity)
{
    return _strlwr_s(buffer, capacity);
}

int qelwcslwr8(wchar_t* buffer, size_t capacity)
{
    return _wcslwr_s(buffer, capacity);
}

int qelwcslwr6(unsigned short* buffer, size_t capacity)
{
    return qelwcslwr8(wide(buffer), capacity);
}

int qelstrset(char* buffer, size_t capacity, int character)
{
    return _strset_s(buffer, capacity, character);
}

int qelwcsset8(wchar_t* buffer, size_t capacity, wchar_t character)
{
    return _wcsset_s(buffer, capacity, character);
}

int qelwcsset6(unsigned short* buffer, size_t capacity, unsigned short character)
{
    return qelwcsset8(wide(buffer), capacity, static_cast<wchar_t>(character));
}

char* qelstrtok(char* text, const char* delimiters, char** context)
{
    return strtok_s(text, delimiters, context);
}

wchar_t* qelwcstok8(wchar_t* text, const wchar_t* delimiters, wchar_t** context)
{
    return wcstok_s(text, delimiters, context);
}

unsigned short* qelwcstok6(unsigned short* text, const unsigned short* delimiters, unsigned short** context)
{
    if (context == nullptr)
    {
        return shorts(qelwcstok8(wide(text), wide(delimiters), nullptr));
    }
    wchar_t* position = wide(*context);
    wchar_t* token = qelwcstok8(wide(text), wide(delimiters), &position);
    *context = shorts(position);
    return shorts(token);
}

// Environment

int qeldupenv(char** buffer, size_t* length, const char* name)
{
    return qelRuntimeGaps::dupenv(buffer, length, name);
}

int qelwdupenv8(wchar_t** buffer, size_t* length, const wchar_t* name)
{
    return qelRuntimeGaps::wdupenv(buffer, length, name);
}

int qelwdupenv6(unsigned short** buffer, size_t* length, const unsigned short* name)
{
    if (buffer == nullptr)
    {
        return qelwdupenv8(nullptr, length, wide(name));
    }
    wchar_t* value = nullptr;
    const int result = qelwdupenv8(&value, length, wide(name));
    *buffer = shorts(value);
    return result;
}

int qelsearchenv(const char* name, const char* variable, char* result, size_t capacity)
{
    return _searchenv_s(name, variable, result, capacity);
}

int qelwsearchenv8(const wchar_t* name, const wchar_t* variable, wchar_t* result, size_t capacity)
{
    return _wsearchenv_s(name, variable, result, capacity);
}

int qelwsearchenv6(const unsigned short* name, const unsigned short* variable, unsigned short* result, size_t capacity)
{
    return qelwsearchenv8(wide(name), wide(variable), wide(result), capacity);
}

// Paths

int qelsplitpath(const char* path, char* drive, size_t driveCapacity, char* dir, size_t dirCapacity, char* fname,
                 size_t fnameCapacity, char* ext, size_t extCapacity)
{
    return _splitpath_s(path, drive, driveCapacity, dir, dirCapacity, fname, fnameCapacity, ext, extCapacity);
}

int qelwsplitpath8(const wchar_t* path, wchar_t* drive, size_t driveCapacity, wchar_t* dir, size_t dirCapacity,
                   wchar_t* fname, size_t fnameCapacity, wchar_t* ext, size_t extCapacity)
{
    return _wsplitpath_s(path, drive, driveCapacity, dir, dirCapacity, fname, fnameCapacity, ext, extCapacity);
}

int qelwsplitpath6(const unsigned short* path, unsigned short* drive, size_t driveCapacity, unsigned short* dir,
                   size_t dirCapacity, unsigned short* fname, size_t fnameCapacity, unsigned short* ext,
                   size_t extCapacity)
{
    return qelwsplitpath8(wide(path), wide(drive), driveCapacity, wide(dir), dirCapacity, wide(fname), fnameCapacity,
                          wide(ext), extCapacity);
}

int qelmakepath(char* destination, size_t capacity, const char* drive, const char* dir, const char* fname,
                const char* ext)
{
    return _makepath_s(destination, capacity, drive, dir, fname, ext);
}

int qelwmakepath8(wchar_t* destination, size_t capacity, const wchar_t* drive, const wchar_t* dir, const wchar_t* fname,
                  const wchar_t* ext)
{
    return _wmakepath_s(destination, capacity, drive, dir, fname, ext);
}

int qelwmakepath6(unsigned short* destination, size_t capacity, const unsigned short* drive, const unsigned short* dir,
                  const unsigned short* fname, const unsigned short* ext)
{
    return qelwmakepath8(wide(destination), capacity, wide(drive), wide(dir), wide(fname), wide(ext));
}

// Time

int qelstrtime(char* buffer, size_t capacity)
{
    return _strtime_s(buffer, capacity);
}

int qelwstrtime8(wchar_t* buffer, size_t capacity)
{
    return _wstrtime_s(buffer, capacity);
}

int qelwstrtime6(unsigned short* buffer, size_t capacity)
{
    return qelwstrtime8(wide(buffer), capacity);
}

int qelstrdate(char* buffer, size_t capacity)
{
    return _strdate_s(buffer, capacity);
}

int qelwstrdate8(wchar_t* buffer, size_t capacity)
{
    return _wstrdate_s(buffer, capacity);
}

int qelwstrdate6(unsigned short* buffer, size_t capacity)
{
    return qelwstrdate8(wide(buffer), capacity);
}

int qellocaltime(tm* result, const long long* when)
{
    return _localtime64_s(result, when);
}

// Numbers and error texts

int qelitoa(int value, char* buffer, size_t capacity, int radix)
{
    return _itoa_s(value, buffer, capacity, radix);
}

int qelitow8(int value, wchar_t* buffer, size_t capacity, int radix)
{
    return _itow_s(value, buffer, capacity, radix);
}

int qelitow6(int value, unsigned short* buffer, size_t capacity, int radix)
{
    return qelitow8(value, wide(buffer), capacity, radix);
}

int qelltoa(long value, char* buffer, size_t capacity, int radix)
{
    return _ltoa_s(value, buffer, capacity, radix);
}

int qelltow8(long value, wchar_t* buffer, size_t capacity, int radix)
{
    return _ltow_s(value, buffer, capacity, radix);
}

int qelltow6(long value, unsigned short* buffer, size_t capacity, int radix)
{
    return qelltow8(value, wide(buffer), capacity, radix);
}

int qelgcvt(char* buffer, size_t capacity, double value, int digits)
{
    return _gcvt_s(buffer, capacity, value, digits);
}

int qelstrerror(char* buffer, size_t capacity, int number)
{
    return strerror_s(buffer, capacity, number);
}

int qelwcserror8(wchar_t* buffer, size_t capacity, int number)
{
    return _wcserror_s(buffer, capacity, number);
}

int qelwcserror6(unsigned short* buffer, size_t capacity, int number)
{
    return qelwcserror8(wide(buffer), capacity, number);
}

// BSTR

wchar_t* qelGetBSTR8(const qelString& text)
{
    return SysAllocString(text.getStringW());
}

unsigned short* qelGetBSTR6(const qelString& text)
{
    return shorts(qelGetBSTR8(text));
}

// Files

int qelfopen(FILE** file, const qelString& name, const qelString& mode)
{
    if (file != nullptr)
    {
        // Same as _wfopen, which Visual C++ marks as deprecated.
        *file = _wfsopen(name.getStringW(), mode.getStringW(), _SH_DENYNO);
    }
    return 0;
}

int qelfprintf(FILE* file, const char* format, ...)
{
    if (file == nullptr || format == nullptr)
    {
        return -1;
    }
    va_list args;
    va_start(args, format);
    const int written = qelRuntimeGaps::print(file, format, args);
    va_end(args);
    return written;
}

int qelfprintf(FILE* file, const wchar_t* format, ...)
{
    if (file == nullptr || format == nullptr)
    {
        return -1;
    }
    va_list args;
    va_start(args, format);
    const int written = qelRuntimeGaps::print(file, format, args);
    va_end(args);
    return written;
}

int qelfclose(FILE* file)
{
    return file == nullptr ? EOF : fclose(file);
}

int qelfeof(FILE* file)
{
    return file == nullptr ? 1 : feof(file);
}

size_t qelfread(void* buffer, size_t size, size_t count, FILE* file)
{
    return buffer == nullptr || file == nullptr ? 0 : fread(buffer, size, count, file);
}

char* qelfgets(char* buffer, int size, FILE* file)
{
    return buffer == nullptr || size < 1 || file == nullptr ? nullptr : fgets(buffer, size, file);
}

int qelfputs(const char* text, FILE* file)
{
    return text == nullptr || file == nullptr ? EOF : fputs(text, file);
}

int qelFileExists(const qelString& name)
{
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW(name.getStringW(), &found);
    if (search == INVALID_HANDLE_VALUE)
    {
        return 0;
    }
    FindClose(search);
    return 1;
}
