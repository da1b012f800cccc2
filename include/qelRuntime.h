/**
 * @file
 * @brief The C runtime's bounds-checked functions and a few file functions, through one place.
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
 * @brief The C runtime's bounds-checked functions and a few file functions, through one place (qelRuntime.h).
 *
 * Modules that call the runtime through these functions all use the runtime of this library, so streams, environment
 * and error texts are the same for all of them.
 *
 * The narrow form of a function takes bytes, the form with suffix 8 `wchar_t` and the form with suffix 6
 * `unsigned short`. 6 and 8 are one function under two names: both types hold the same UTF-16 text. A capacity is the
 * whole size of a buffer in elements, terminator included: bytes for narrow text, 16-bit units for wide text.
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
 * The caller owns the buffer of qeldupenv(), the text of qelGetBSTR8() and the stream of qelfopen().
 *
 * @par Threads
 * Thread-safe: the functions keep nothing between calls. A buffer or stream is used by one thread at a time, and the
 * environment must not change while a function reads it. Functions that take a qelString stay on its thread.
 *
 * @par Failure
 * Where nothing else is said, 0 for success, else the runtime's error code, unchanged: EINVAL (22) for an argument that
 * cannot be, ERANGE (34) for a buffer that is too small. Nothing is cut, unless a function says so. Do not use a buffer
 * after a failure: in most functions it then holds the empty text.
 *
 * An invalid argument, and in most functions a buffer that is too small, goes to the runtime's invalid-parameter
 * handling. On the UCRT (Visual C++) its handler ends the process unless the host has set another; on msvcrt (MinGW)
 * there is none and the error code comes back.
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
 * does not fit is cut and the result is STRUNCATE (80).
 */
QEL_API int qelstrncpy(char* destination, size_t capacity, const char* source, size_t count);

/// qelstrncpy() for wide text.
QEL_API int qelwcsncpy6(unsigned short* destination, size_t capacity, const unsigned short* source, size_t count);

/// qelstrncpy() for wide text.
QEL_API int qelwcsncpy8(wchar_t* destination, size_t capacity, const wchar_t* source, size_t count);

/// Appends `source`; `capacity` covers the text that is there too: `strcat_s` / `wcscat_s`.
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

/// Every element before the terminator becomes `character`: `_strset_s` / `_wcsset_s`.
QEL_API int qelstrset(char* buffer, size_t capacity, int character);

/// qelstrset() for wide text.
QEL_API int qelwcsset6(unsigned short* buffer, size_t capacity, unsigned short character);

/// qelstrset() for wide text.
QEL_API int qelwcsset8(wchar_t* buffer, size_t capacity, wchar_t character);

/**
 * The next token of `text`, or null when there is none: `strtok_s` / `wcstok_s`. The first call passes the text, which
 * is cut up in place, the following ones null; `context` keeps the position between them.
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
 * its elements with the terminator. A variable that does not exist gives null and 0, and the result is 0 all the same;
 * ENOMEM (12) when there is no memory.
 *
 * The caller frees the buffer with `free` of the runtime that the library uses: for a host built with the same compiler
 * and the same runtime DLL that is its own `free`.
 */
QEL_API int qeldupenv(char** buffer, size_t* length, const char* name);

/// qeldupenv() for wide text.
QEL_API int qelwdupenv6(unsigned short** buffer, size_t* length, const unsigned short* name);

/// qeldupenv() for wide text.
QEL_API int qelwdupenv8(wchar_t** buffer, size_t* length, const wchar_t* name);

/**
 * The full path of the file `name`, looked for in the current folder and then in the folders that the environment
 * variable `variable` lists: `_searchenv_s` / `_wsearchenv_s`. ENOENT (2) and an empty text when it is in none.
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
 * `_splitpath_s` / `_wsplitpath_s`. A part is left out with a null buffer of capacity 0; one without the other is
 * EINVAL. When a part does not fit, all are empty.
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

/// Joins the parts, any of which may be null or empty, and adds the separators they lack: `_makepath_s` /
/// `_wmakepath_s`.
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
 * The local time of `when`, in seconds since 1970-01-01 00:00 UTC: `_localtime64_s`. A time out of the runtime's range
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

/// As qelitoa() for `long`: `_ltoa_s` / `_ltow_s`.
QEL_API int qelltoa(long value, char* buffer, size_t capacity, int radix);

/// qelltoa() for wide text.
QEL_API int qelltow6(long value, unsigned short* buffer, size_t capacity, int radix);

/// qelltoa() for wide text.
QEL_API int qelltow8(long value, wchar_t* buffer, size_t capacity, int radix);

/// `value` with `digits` significant digits: `_gcvt_s`. The form of the exponent is the runtime's.
QEL_API int qelgcvt(char* buffer, size_t capacity, double value, int digits);

/// The runtime's message for the error `number`, cut to what fits: `strerror_s` / `_wcserror_s`.
QEL_API int qelstrerror(char* buffer, size_t capacity, int number);

/// qelstrerror() for wide text.
QEL_API int qelwcserror6(unsigned short* buffer, size_t capacity, int number);

/// qelstrerror() for wide text.
QEL_API int qelwcserror8(wchar_t* buffer, size_t capacity, int number);
/// @}

/// @name Automation strings
/// @{

/// The text as a new automation string; an empty text gives an empty one. Null when there is no memory. The caller
/// frees it with `SysFreeString`.
QEL_API unsigned short* qelGetBSTR6(const qelString& text);

/// As qelGetBSTR6(), under the other type of 16-bit text.
QEL_API wchar_t* qelGetBSTR8(const qelString& text);
/// @}

/// @name Files
/// A null stream or buffer does nothing and gives the result of a failure; qelfeof() then says that the end is reached,
/// so that a loop around it stops.
/// @{

/**
 * Opens the file as `_wfopen` does and stores the stream in `*file`. Always returns 0: failure shows only as a null
 * `*file`, which callers must test. A null `file` opens nothing. The caller closes the stream with qelfclose().
 */
QEL_API int qelfopen(FILE** file, const qelString& name, const qelString& mode);

/**
 * Writes formatted text; returns the number of characters or a negative value. The format language is the platform's:
 * "%s" takes wide text in a wide format and narrow text in a narrow one, "%S" the other way round.
 */
QEL_API int qelfprintf(FILE* file, const char* format, ...);

/// @overload
QEL_API int qelfprintf(FILE* file, const wchar_t* format, ...);

/// `fclose`: 0, or EOF on failure.
QEL_API int qelfclose(FILE* file);

/// `feof`: not 0 once a read has met the end of the file.
QEL_API int qelfeof(FILE* file);

/// `fread`: the number of whole elements of `size` bytes that were read.
QEL_API size_t qelfread(void* buffer, size_t size, size_t count, FILE* file);

/// `fgets`: reads up to `size` - 1 bytes, a line at most; `buffer`, or null at the end of the file.
QEL_API char* qelfgets(char* buffer, int size, FILE* file);

/// `fputs`: not negative, or EOF on failure.
QEL_API int qelfputs(const char* text, FILE* file);

/**
 * 1 when at least one file or folder has this name, else 0. The name may hold wildcards ("*.mdb") in its last part. As
 * with every search by name, a drive's root and a name that ends in a separator are not found.
 */
QEL_API int qelFileExists(const qelString& name);
/// @}

/// @}

#endif
