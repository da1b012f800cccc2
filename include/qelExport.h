/**
 * @file
 * @brief QEL_API, the export macro.
 *
 * Every exported class, function and static member carries QEL_API. Templates never do: they are compiled into each
 * module that uses them.
 *
 * - `QEL_BUILD_DLL` is defined while the DLL itself is built.
 * - `QEL_USE_DLL` is defined in modules that link against it (the CMake target does so). Visual C++ needs it for
 *   exported data; functions work without it.
 * - With neither, QEL_API is empty, for tools that only parse the headers.
 *
 * Every other header of the library includes this one. It rejects targets other than 64-bit Windows.
 */
#ifndef QEL_EXPORT_H
#define QEL_EXPORT_H

#if !defined(_WIN64)
#error "VarnelQELRoots is a 64-bit Windows library."
#endif

/// Marks what the DLL exports; see the top of this file.
#if defined(QEL_BUILD_DLL)
#define QEL_API __declspec(dllexport)
#elif defined(QEL_USE_DLL)
#define QEL_API __declspec(dllimport)
#else
#define QEL_API
#endif

static_assert(sizeof(wchar_t) == 2, "text is made of 16-bit units");
static_assert(sizeof(long) == 4, "lengths and positions are 32-bit");

#endif
