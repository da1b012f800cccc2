// The installed ODBC drivers, and which of two names to use. Not part of the public interface.
#ifndef QEL_ODBC_DRIVERS_H
#define QEL_ODBC_DRIVERS_H

#include "qelDataSourcesUtilities.h"

/**
 * The driver functions for internal use: unlike the public ones they throw `std::bad_alloc`, leaving the list unread,
 * so that the catalogue does not keep a wrong answer.
 */
class qelDataSourcesUtilities::Drivers
{
public:
    /// The list; reads it if necessary.
    static const qelArray<qelString>& installed();

    /// See qelDataSourcesUtilities::defaultODBCDriverIsInstalled().
    static int defaultIsInstalled();

    /// The driver for new connection strings.
    static const wchar_t* forNewConnections();

    /// See qelDataSourcesUtilities::replaceAlternateDriver().
    static int replaceAlternate(qelString& connectionString);
};

#endif
