// Owner of an ODBC environment and a connection in it. Not part of the public interface.
#ifndef QEL_ODBC_CONNECTION_H
#define QEL_ODBC_CONNECTION_H

#include "qelString.h"

#include <windows.h>

#include <sql.h>
#include <sqlext.h>

class OdbcConnection
{
public:
    /// Makes the environment and, in it, a connection that is not yet open.
    OdbcConnection();

    /// Disconnects and frees whatever has been made.
    ~OdbcConnection();

    OdbcConnection(const OdbcConnection&) = delete;
    OdbcConnection& operator=(const OdbcConnection&) = delete;

    /// Whether the construction got as far as a connection that can be opened.
    bool isReady() const;

    /// Connects without prompting. The connection must be ready.
    bool open(const qelString& connectionString);

private:
    SQLHENV m_environment;
    SQLHDBC m_connection;
};

#endif
