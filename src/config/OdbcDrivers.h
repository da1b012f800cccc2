// The installed drivers, and which of two names to write. Not part of the public interface.
#ifndef QEL_ODBC_DRIVERS_H
#define QEL_ODBC_DRIVERS_H

#include "qelDataSourcesUtilities.h"

/**
 * The driver functions without their promise to throw nothing: where memory is lacking, they throw, and the list stays
 * unread. The catalogue needs to know, since it keeps what it gets.
 */
class qelDataSourcesUtilities::Drivers
{
public:
    /// The list, which is read unless that is done.
    static const qelArray<qelString>& installed();

    /// See qelDataSourcesUtilities::defaultODBCDriverIsInstalled().
    static int defaultIsInstalled();

    /// The driver for new connection strings.
    static const wchar_t* forNewConnections();

    /// See qelDataSourcesUtilities::replaceAlternateDriver().
    static int replaceAlternate(qelString& connectionString);
};

#endif
