// What one of the C runtimes lacks, to the contract of the function of the same name. Not part of the public interface.
//
// With the UCRT these are the runtime's own functions. With msvcrt, which MinGW links, they are not all there:
// - The import library has no _dupenv_s and _wdupenv_s.
// - Wine's DLL has no _strset_s, leaves out the terminator of a cut text in _wcserror_s, writes a terminator into a
//   buffer of no capacity in _wcsupr_s and _wcslwr_s. Its _searchenv_s and _wsearchenv_s find a folder for the empty
//   name, stop at a null variable, and call it success when the path of a file in the current folder is too long.
// - MinGW's vfprintf and vfwprintf have a format language of their own; print() has the platform's.
//
// Wine's print functions, of either runtime, do not tell that nothing could be written: print() does.
#ifndef QEL_RUNTIME_GAPS_H
#define QEL_RUNTIME_GAPS_H

#include <stdarg.h>
#include <stddef.h>
#include <stdio.h>

namespace qelRuntimeGaps
{
int dupenv(char** buffer, size_t* length, const char* name);
int wdupenv(wchar_t** buffer, size_t* length, const wchar_t* name);
int strset(char* buffer, size_t capacity, int character);
int wcserror(wchar_t* buffer, size_t capacity, int number);
int wcsupr(wchar_t* buffer, size_t capacity);
int wcslwr(wchar_t* buffer, size_t capacity);
int searchenv(const char* name, const char* variable, char* result, size_t capacity);
int wsearchenv(const wchar_t* name, const wchar_t* variable, wchar_t* result, size_t capacity);
int print(FILE* file, const char* format, va_list args);
int print(FILE* file, const wchar_t* format, va_list args);
} // namespace qelRuntimeGaps

#endif
