// The driver half of qelDataSourcesUtilities: what is installed, which name to write, does a connection work.

#include "qelDataSourcesUtilities.h"

#include "config/OdbcConnection.h"
#include "config/OdbcInstaller.h"

#include "qelRuntime.h"

#include <wchar.h>

namespace
{
const wchar_t kDefaultDriver[] = L"Microsoft Access Driver (*.mdb, *.accdb)";
const wchar_t kAlternateDriver[] = L"Varnel ODBC Driver";

/// Room for the installer's list of names, in units.
const WORD kDriverListCapacity = 2000;
} // namespace

int qelDataSourcesUtilities::readInstalledOdbcDrivers()
{
    if (m_InstalledOdbcDrivers.isEmpty())
    {
        // Two zeros more than the installer is told of end a list that fills all the room.
        wchar_t names[kDriverListCapacity + 2] = {};
        if (OdbcInstaller::getInstalledDrivers(names, kDriverListCapacity))
        {
            for (const wchar_t* next = names; *next != 0; next += wcslen(next) + 1)
            {
                qelString name(next);
                name.TrimLeft();
                name.TrimRight();
                m_InstalledOdbcDrivers.append(name);
            }
        }
    }
    return static_cast<int>(m_InstalledOdbcDrivers.length());
}

int qelDataSourcesUtilities::defaultODBCDriverIsInstalled()
{
    if (readInstalledOdbcDrivers() == 0)
    {
        return 0;
    }
    long index = 0;
    return m_InstalledOdbcDrivers.find(kDefaultDriver, index) ? 1 : -1;
}

int qelDataSourcesUtilities::getOdbcDriverName(qelString& driverName)
{
    driverName = defaultODBCDriverIsInstalled() == -1 ? kAlternateDriver : kDefaultDriver;
    return 1;
}

int qelDataSourcesUtilities::replaceAlternateDriver(qelString& connectionString)
{
    // An empty text must not go looking for drivers, which may stop at a message box.
    if (connectionString.isEmpty())
    {
        return 0;
    }
    return defaultODBCDriverIsInstalled() == -1 ? connectionString.replace(kDefaultDriver, kAlternateDriver)
                                                : connectionString.replace(kAlternateDriver, kDefaultDriver);
}

int qelDataSourcesUtilities::defaultDriverIsUsedInAllDataSources()
{
    const int installed = defaultODBCDriverIsInstalled();
    if (installed != 0)
    {
        for (long i = 0; i < m_DataSources.length(); ++i)
        {
            if (wcsstr(m_DataSources[i].m_ConnectionString.getStringW(), kAlternateDriver) != nullptr)
            {
                return 0;
            }
        }
    }
    return installed;
}

int qelDataSourcesUtilities::testConnection(qelString connectionString)
{
    OdbcConnection connection;
    if (!connection.isReady())
    {
        return -1;
    }
    if (connection.open(connectionString))
    {
        return 1;
    }
    qelString head;
    qelString databaseFile;
    const bool namesFile = splitConnectionString(connectionString, head, databaseFile) == 1;
    return namesFile && qelFileExists(databaseFile) == 0 ? 0 : -1;
}
