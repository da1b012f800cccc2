// RAII owner of an ODBC environment and connection. Not part of the public interface.
#ifndef QEL_ODBC_CONNECTION_H
#define QEL_ODBC_CONNECTION_H

#include "qelString.h"

#include <windows.h>

#include <sql.h>
#include <sqlext.h>

class OdbcConnection
{
public:
    /// Allocates the environment and a connection, not yet open.
    OdbcConnection();

    /// Disconnects and frees both handles.
    ~OdbcConnection();

    OdbcConnection(const OdbcConnection&) = delete;
    OdbcConnection& operator=(const OdbcConnection&) = delete;

    /// Whether the constructor succeeded.
    bool isReady() const;

    /// Connects without prompting. Requires isReady().
    bool open(const qelString& connectionString);

private:
    SQLHENV m_environment;
    SQLHDBC m_connection;
};

#endif
