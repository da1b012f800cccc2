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
 * packages take it from the three numbers. The loaded DLL may be newer: see its version resource.
 */
#ifndef QEL_VERSION_H
#define QEL_VERSION_H

// NOLINTBEGIN(cppcoreguidelines-macro-usage,modernize-macro-to-enum): the preprocessor asks for them and joins them

/// Incremented by changes that hosts must be adapted to or recompiled for.
#define QEL_VERSION_MAJOR 1

/// Incremented by additions; existing hosts keep working.
#define QEL_VERSION_MINOR 0

/// Incremented by fixes that change no declaration.
#define QEL_VERSION_PATCH 0

/// The version as a literal, "major.minor.patch". Concatenates with both kinds of literals: `L"version "
/// QEL_VERSION_TEXT`.
#define QEL_VERSION_TEXT                                                                                               \
    QEL_VERSION_AS_TEXT(QEL_VERSION_MAJOR)                                                                             \
    "." QEL_VERSION_AS_TEXT(QEL_VERSION_MINOR) "." QEL_VERSION_AS_TEXT(QEL_VERSION_PATCH)

/// @cond
#define QEL_VERSION_AS_TEXT(number) QEL_VERSION_AS_LITERAL(number)
#define QEL_VERSION_AS_LITERAL(number) #number
/// @endcond
// NOLINTEND(cppcoreguidelines-macro-usage,modernize-macro-to-enum)

#endif
