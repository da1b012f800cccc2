// C runtime functions that MinGW lacks, with the contract of the originals. Not part of the public interface.
//
// With Visual C++, and with MinGW on the UCRT, these are the runtime's functions. With MinGW on msvcrt:
// - The import library has no _dupenv_s and _wdupenv_s.
// - vfprintf and vfwprintf interpret formats differently; print() does as Windows does.
#ifndef QEL_RUNTIME_GAPS_H
#define QEL_RUNTIME_GAPS_H

#include <stdarg.h>
#include <stddef.h>
#include <stdio.h>

namespace qelRuntimeGaps
{
int dupenv(char** buffer, size_t* length, const char* name);
int wdupenv(wchar_t** buffer, size_t* length, const wchar_t* name);
int print(FILE* file, const char* format, va_list args);
int print(FILE* file, const wchar_t* format, va_list args);
} // namespace qelRuntimeGaps

#endif
