/**
 * @file
 * @brief The C runtime's bounds-checked string functions and a few file functions.
 */
#ifndef QEL_RUNTIME_H
#define QEL_RUNTIME_H

#include "qelExport.h"

#include <stddef.h>
#include <stdio.h>

struct tm;
class qelString;

/**
 * @defgroup runtime Runtime functions
 * @ingroup text
 * @brief The C runtime's bounds-checked string functions and a few file functions (qelRuntime.h).
 *
 * Modules that call these functions all use this library's C runtime, and so share streams, environment and error
 * messages.
 *
 * The narrow form of a function takes bytes, the form with suffix 8 `wchar_t`, the form with suffix 6 `unsigned short`;
 * 6 and 8 do the same. A capacity is the size of a buffer in elements, terminator included: bytes for narrow text,
 * 16-bit units for wide text.
 *
 * @par Example
 * @code
 * wchar_t path[260];
 * qelwmakepath8(path, 260, nullptr, L"Lists", L"parts", L"csv"); // == 0
 * path;                                                          // == L"Lists\\parts.csv"
 * qelFileExists(path);                                           // == 0
 *
 * FILE* file = nullptr;
 * qelfopen(&file, L"parts.csv", L"wb");
 * if (file != nullptr)
 * {
 *     qelfprintf(file, "%d;%s", 12, "IPE 300");                  // == 10
 *     qelfclose(file);                                           // == 0
 * }
 * @endcode
 *
 * @par Ownership
 * The caller owns the buffer of qeldupenv(), the string of qelGetBSTR8() and the stream of qelfopen().
 *
 * @par Threads
 * Thread-safe, except functions that take a qelString. Use a buffer or stream on one thread at a time, and do not
 * change the environment while a function reads it.
 *
 * @par Failure
 * Unless a function says otherwise, it returns 0 for success, else the runtime's error code: EINVAL (22) for an invalid
 * argument, ERANGE (34) for a buffer that is too small. Nothing is truncated, unless a function says so. Do not use a
 * buffer after a failure: in most functions it then holds an empty string.
 *
 * An invalid argument, and in most functions a buffer that is too small, goes to the runtime's invalid-parameter
 * handler. In the UCRT (Visual C++) it ends the process unless the host has set another; msvcrt (MinGW) has none, and
 * the error code is returned.
 *
 * @{
 */

/// @name Copying and appending
/// @{

/// Copies `source` with its terminator: `strcpy_s` / `wcscpy_s`.
QEL_API int qelstrcpy(char* destination, size_t capacity, const char* source);

/// qelstrcpy() for wide text.
QEL_API int qelwcscpy6(unsigned short* destination, size_t capacity, const unsigned short* source);

/// qelstrcpy() for wide text.
QEL_API int qelwcscpy8(wchar_t* destination, size_t capacity, const wchar_t* source);

/**
 * Copies at most `count` elements and a terminator: `strncpy_s` / `wcsncpy_s`. With `_TRUNCATE` as count, text that
 * does not fit is truncated and the result is STRUNCATE (80).
 */
QEL_API int qelstrncpy(char* destination, size_t capacity, const char* source, size_t count);

/// qelstrncpy() for wide text.
QEL_API int qelwcsncpy6(unsigned short* destination, size_t capacity, const unsigned short* source, size_t count);

/// qelstrncpy() for wide text.
QEL_API int qelwcsncpy8(wchar_t* destination, size_t capacity, const wchar_t* source, size_t count);

/// Appends `source`; `capacity` is that of the whole buffer: `strcat_s` / `wcscat_s`.
QEL_API int qelstrcat(char* destination, size_t capacity, const char* source);

/// qelstrcat() for wide text.
QEL_API int qelwcscat6(unsigned short* destination, size_t capacity, const unsigned short* source);

/// qelstrcat() for wide text.
QEL_API int qelwcscat8(wchar_t* destination, size_t capacity, const wchar_t* source);

/// Appends at most `count` elements; `_TRUNCATE` as for qelstrncpy(): `strncat_s` / `wcsncat_s`.
QEL_API int qelstrncat(char* destination, size_t capacity, const char* source, size_t count);

/// qelstrncat() for wide text.
QEL_API int qelwcsncat6(unsigned short* destination, size_t capacity, const unsigned short* source, size_t count);

/// qelstrncat() for wide text.
QEL_API int qelwcsncat8(wchar_t* destination, size_t capacity, const wchar_t* source, size_t count);
/// @}

/// @name Changing in place
/// Text without a terminator within the capacity is an invalid argument (EINVAL).
/// @{

/// To upper case by the runtime's current locale: `_strupr_s` / `_wcsupr_s`.
QEL_API int qelstrupr(char* buffer, size_t capacity);

/// qelstrupr() for wide text.
QEL_API int qelwcsupr6(unsigned short* buffer, size_t capacity);

/// qelstrupr() for wide text.
QEL_API int qelwcsupr8(wchar_t* buffer, size_t capacity);

/// To lower case by the runtime's current locale: `_strlwr_s` / `_wcslwr_s`.
QEL_API int qelstrlwr(char* buffer, size_t capacity);

/// qelstrlwr() for wide text.
QEL_API int qelwcslwr6(unsigned short* buffer, size_t capacity);

/// qelstrlwr() for wide text.
QEL_API int qelwcslwr8(wchar_t* buffer, size_t capacity);

/// Sets every element before the terminator to `character`: `_strset_s` / `_wcsset_s`.
QEL_API int qelstrset(char* buffer, size_t capacity, int character);

/// qelstrset() for wide text.
QEL_API int qelwcsset6(unsigned short* buffer, size_t capacity, unsigned short character);

/// qelstrset() for wide text.
QEL_API int qelwcsset8(wchar_t* buffer, size_t capacity, wchar_t character);

/**
 * The next token of `text`, or null when there is none: `strtok_s` / `wcstok_s`. The first call passes the text, which
 * is modified in place, later ones null; `context` keeps the position.
 */
QEL_API char* qelstrtok(char* text, const char* delimiters, char** context);

/// qelstrtok() for wide text.
QEL_API unsigned short* qelwcstok6(unsigned short* text, const unsigned short* delimiters, unsigned short** context);

/// qelstrtok() for wide text.
QEL_API wchar_t* qelwcstok8(wchar_t* text, const wchar_t* delimiters, wchar_t** context);
/// @}

/// @name Environment
/// @{

/**
 * A copy of the value of the environment variable `name`: `_dupenv_s` / `_wdupenv_s`. `length`, which may be null, gets
 * its length with the terminator. A variable that does not exist gives null and 0, with result 0; ENOMEM (12) when out
 * of memory.
 *
 * The caller frees the buffer with `free` of the library's C runtime: its own `free` for a host built with the same
 * compiler and runtime DLL.
 */
QEL_API int qeldupenv(char** buffer, size_t* length, const char* name);

/// qeldupenv() for wide text.
QEL_API int qelwdupenv6(unsigned short** buffer, size_t* length, const unsigned short* name);

/// qeldupenv() for wide text.
QEL_API int qelwdupenv8(wchar_t** buffer, size_t* length, const wchar_t* name);

/**
 * The full path of the file `name`, searched for in the current folder and then in the folders of the environment
 * variable `variable`: `_searchenv_s` / `_wsearchenv_s`. ENOENT (2) and an empty string when not found.
 */
QEL_API int qelsearchenv(const char* name, const char* variable, char* result, size_t capacity);

/// qelsearchenv() for wide text.
QEL_API int qelwsearchenv6(const unsigned short* name, const unsigned short* variable, unsigned short* result,
                           size_t capacity);

/// qelsearchenv() for wide text.
QEL_API int qelwsearchenv8(const wchar_t* name, const wchar_t* variable, wchar_t* result, size_t capacity);
/// @}

/// @name Paths
/// @{

/**
 * Splits `path` into drive ("c:"), folder (with its last separator), file name and extension (with its dot):
 * `_splitpath_s` / `_wsplitpath_s`. To skip a part, pass a null buffer and capacity 0; one without the other is EINVAL.
 * When a part does not fit, all are empty.
 */
QEL_API int qelsplitpath(const char* path, char* drive, size_t driveCapacity, char* dir, size_t dirCapacity,
                         char* fname, size_t fnameCapacity, char* ext, size_t extCapacity);

/// qelsplitpath() for wide text.
QEL_API int qelwsplitpath6(const unsigned short* path, unsigned short* drive, size_t driveCapacity, unsigned short* dir,
                           size_t dirCapacity, unsigned short* fname, size_t fnameCapacity, unsigned short* ext,
                           size_t extCapacity);

/// qelsplitpath() for wide text.
QEL_API int qelwsplitpath8(const wchar_t* path, wchar_t* drive, size_t driveCapacity, wchar_t* dir, size_t dirCapacity,
                           wchar_t* fname, size_t fnameCapacity, wchar_t* ext, size_t extCapacity);

/// Joins the parts, any of which may be null or empty, and adds missing separators: `_makepath_s` / `_wmakepath_s`.
QEL_API int qelmakepath(char* destination, size_t capacity, const char* drive, const char* dir, const char* fname,
                        const char* ext);

/// qelmakepath() for wide text.
QEL_API int qelwmakepath6(unsigned short* destination, size_t capacity, const unsigned short* drive,
                          const unsigned short* dir, const unsigned short* fname, const unsigned short* ext);

/// qelmakepath() for wide text.
QEL_API int qelwmakepath8(wchar_t* destination, size_t capacity, const wchar_t* drive, const wchar_t* dir,
                          const wchar_t* fname, const wchar_t* ext);
/// @}

/// @name Time
/// @{

/// The local time of day as hh:mm:ss, which takes 9 elements: `_strtime_s` / `_wstrtime_s`.
QEL_API int qelstrtime(char* buffer, size_t capacity);

/// qelstrtime() for wide text.
QEL_API int qelwstrtime6(unsigned short* buffer, size_t capacity);

/// qelstrtime() for wide text.
QEL_API int qelwstrtime8(wchar_t* buffer, size_t capacity);

/// The local date as mm/dd/yy, which takes 9 elements: `_strdate_s` / `_wstrdate_s`.
QEL_API int qelstrdate(char* buffer, size_t capacity);

/// qelstrdate() for wide text.
QEL_API int qelwstrdate6(unsigned short* buffer, size_t capacity);

/// qelstrdate() for wide text.
QEL_API int qelwstrdate8(wchar_t* buffer, size_t capacity);

/**
 * The local time of `when`, in seconds since 1970-01-01 00:00 UTC: `_localtime64_s`. A time outside the runtime's range
 * gives EINVAL and -1 in every field.
 */
QEL_API int qellocaltime(tm* result, const long long* when);
/// @}

/// @name Numbers and error texts
/// @{

/// `value` in base `radix` (2 to 36); negative values have a sign in base 10 only: `_itoa_s` / `_itow_s`.
QEL_API int qelitoa(int value, char* buffer, size_t capacity, int radix);

/// qelitoa() for wide text.
QEL_API int qelitow6(int value, unsigned short* buffer, size_t capacity, int radix);

/// qelitoa() for wide text.
QEL_API int qelitow8(int value, wchar_t* buffer, size_t capacity, int radix);

/// qelitoa() for `long`: `_ltoa_s` / `_ltow_s`.
QEL_API int qelltoa(long value, char* buffer, size_t capacity, int radix);

/// qelltoa() for wide text.
QEL_API int qelltow6(long value, unsigned short* buffer, size_t capacity, int radix);

/// qelltoa() for wide text.
QEL_API int qelltow8(long value, wchar_t* buffer, size_t capacity, int radix);

/// `value` with `digits` significant digits: `_gcvt_s`. The form of the exponent is the runtime's.
QEL_API int qelgcvt(char* buffer, size_t capacity, double value, int digits);

/// The runtime's message for the error `number`, truncated to the buffer: `strerror_s` / `_wcserror_s`.
QEL_API int qelstrerror(char* buffer, size_t capacity, int number);

/// qelstrerror() for wide text.
QEL_API int qelwcserror6(unsigned short* buffer, size_t capacity, int number);

/// qelstrerror() for wide text.
QEL_API int qelwcserror8(wchar_t* buffer, size_t capacity, int number);
/// @}

/// @name BSTR
/// @{

/// A new BSTR (automation string) of `text`; null when out of memory. The caller frees it with `SysFreeString`.
QEL_API unsigned short* qelGetBSTR6(const qelString& text);

/// qelGetBSTR6() as the other 16-bit type.
QEL_API wchar_t* qelGetBSTR8(const qelString& text);
/// @}

/// @name Files
/// With a null stream or buffer these functions do nothing and return failure; qelfeof() then reports the end of the
/// file, so that loops end.
/// @{

/**
 * Opens a file with `_wfopen` and stores the stream in `*file`. Always returns 0: check `*file` for null. A null `file`
 * opens nothing. The caller closes the stream with qelfclose().
 */
QEL_API int qelfopen(FILE** file, const qelString& name, const qelString& mode);

/**
 * `fprintf` / `fwprintf`; returns the number of characters or a negative value. "%s" takes wide text in a wide format
 * and narrow text in a narrow one, "%S" the other way round.
 */
QEL_API int qelfprintf(FILE* file, const char* format, ...);

/// @overload
QEL_API int qelfprintf(FILE* file, const wchar_t* format, ...);

/// `fclose`: 0, or EOF on failure.
QEL_API int qelfclose(FILE* file);

/// `feof`: not 0 once a read has reached the end of the file.
QEL_API int qelfeof(FILE* file);

/// `fread`: the number of complete elements of `size` bytes read.
QEL_API size_t qelfread(void* buffer, size_t size, size_t count, FILE* file);

/// `fgets`: reads a line, up to `size` - 1 bytes; returns `buffer`, or null at the end of the file.
QEL_API char* qelfgets(char* buffer, int size, FILE* file);

/// `fputs`: not negative, or EOF on failure.
QEL_API int qelfputs(const char* text, FILE* file);

/**
 * 1 when at least one file or folder has this name, else 0. The last part may have wildcards ("*.mdb"). The root of a
 * drive and a name that ends in a separator are not found.
 */
QEL_API int qelFileExists(const qelString& name);
/// @}

/// @}

#endif
