#include "config/OdbcConnection.h"

#include "strings/Text.h"

#include <sqlucode.h>

#include <stdint.h>

namespace
{
/// Whether a call gave SQL_SUCCESS or SQL_SUCCESS_WITH_INFO.
bool succeeded(SQLRETURN result)
{
    return SQL_SUCCEEDED(result);
}
} // namespace

OdbcConnection::OdbcConnection()
    : m_environment(SQL_NULL_HANDLE)
    , m_connection(SQL_NULL_HANDLE)
{
    SQLHANDLE handle = SQL_NULL_HANDLE;
    if (!succeeded(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &handle)))
    {
        return;
    }
    m_environment = handle;

    auto* const version = reinterpret_cast<SQLPOINTER>(static_cast<uintptr_t>(SQL_OV_ODBC3));
    if (!succeeded(SQLSetEnvAttr(m_environment, SQL_ATTR_ODBC_VERSION, version, SQL_IS_INTEGER)))
    {
        return;
    }

    if (succeeded(SQLAllocHandle(SQL_HANDLE_DBC, m_environment, &handle)))
    {
        m_connection = handle;
    }
}

OdbcConnection::~OdbcConnection()
{
    if (m_connection != SQL_NULL_HANDLE)
    {
        (void)SQLDisconnect(m_connection);
        (void)SQLFreeHandle(SQL_HANDLE_DBC, m_connection);
    }
    if (m_environment != SQL_NULL_HANDLE)
    {
        (void)SQLFreeHandle(SQL_HANDLE_ENV, m_environment);
    }
}

bool OdbcConnection::isReady() const
{
    return m_connection != SQL_NULL_HANDLE;
}

bool OdbcConnection::open(const qelString& connectionString)
{
    // The driver manager does not write to its argument, despite the declaration.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): see above
    auto* text = const_cast<SQLWCHAR*>(connectionString.getStringW());
    SQLWCHAR completed[512] = {};
    SQLSMALLINT completedLength = 0;
    const SQLRETURN result =
        SQLDriverConnectW(m_connection, nullptr, text, SQL_NTS, completed, 512, &completedLength, SQL_DRIVER_NOPROMPT);
    // It may hold a password.
    qelText::scrub(completed, sizeof(completed));
    return succeeded(result);
}
