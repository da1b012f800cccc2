/**
 * @file
 * @brief The version of the library that a module is compiled against.
 *
 * @code
 * #if QEL_VERSION_MAJOR > 1
 * #error "This module is written for VarnelQELRoots 1."
 * #endif
 * puts("compiled against VarnelQELRoots " QEL_VERSION_TEXT);
 * @endcode
 *
 * The version is stated here and nowhere else: the DLL's version resource, the CMake package and the names of the
 * packages take it from the three numbers. The DLL in the process may be a newer one than this; its version resource
 * tells which.
 */
#ifndef QEL_VERSION_H
#define QEL_VERSION_H

// NOLINTBEGIN(cppcoreguidelines-macro-usage,modernize-macro-to-enum): the preprocessor asks for them and joins them

/// Grows with a change that hosts must be adapted to or compiled anew for.
#define QEL_VERSION_MAJOR 1

/// Grows with additions; hosts that were compiled before them go on as they are.
#define QEL_VERSION_MINOR 0

/// Grows with corrections that leave every declaration as it was.
#define QEL_VERSION_PATCH 0

/// The version as text, "major.minor.patch". It joins with literals of either kind: `L"version " QEL_VERSION_TEXT`.
#define QEL_VERSION_TEXT                                                                                               \
    QEL_VERSION_AS_TEXT(QEL_VERSION_MAJOR)                                                                             \
    "." QEL_VERSION_AS_TEXT(QEL_VERSION_MINOR) "." QEL_VERSION_AS_TEXT(QEL_VERSION_PATCH)

/// @cond
#define QEL_VERSION_AS_TEXT(number) QEL_VERSION_AS_LITERAL(number)
#define QEL_VERSION_AS_LITERAL(number) #number
/// @endcond
// NOLINTEND(cppcoreguidelines-macro-usage,modernize-macro-to-enum)

#endif
