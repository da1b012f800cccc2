// The driver half of qelDataSourcesUtilities: what is installed, which name to write, does a connection work.

#include "config/Literals.h"
#include "config/OdbcConnection.h"
#include "config/OdbcDrivers.h"
#include "config/OdbcInstaller.h"

#include "qelRuntime.h"

#include <wchar.h>

namespace
{
const wchar_t kDefaultDriver[] = L"Microsoft Access Driver (*.mdb, *.accdb)";
const wchar_t kAlternateDriver[] = L"Varnel ODBC Driver";

/// Room for the installer's list of names, in units.
const WORD kDriverListCapacity = 2000;

/// The answer to a question, or `otherwise` where there is no memory for it: hosts see no exception of these functions.
template <class Question> int answer(const Question& question, int otherwise)
{
    try
    {
        return question();
    }
    catch (...)
    {
        return otherwise;
    }
}

template <size_t Size>
int replace(qelString& connectionString, const wchar_t (&driver)[Size], const wchar_t* replacement)
{
    // Most connection strings name the right driver: nothing need be made for them.
    return qelLiterals::find(connectionString, driver) == nullptr ? 0 : connectionString.replace(driver, replacement);
}
} // namespace

const qelArray<qelString>& qelDataSourcesUtilities::Drivers::installed()
{
    if (m_InstalledOdbcDrivers.isEmpty() == 0)
    {
        return m_InstalledOdbcDrivers;
    }
    // Two zeros more than the installer is told of end a list that fills all the room.
    wchar_t names[kDriverListCapacity + 2] = {};
    if (OdbcInstaller::getInstalledDrivers(names, kDriverListCapacity))
    {
        // Kept only when it is complete: half a list would be taken for the whole one ever after.
        qelArray<qelString> read;
        for (const wchar_t* next = names; *next != 0; next += wcslen(next) + 1)
        {
            qelString name(next);
            name.TrimLeft();
            name.TrimRight();
            read.append(name);
        }
        m_InstalledOdbcDrivers = read;
    }
    return m_InstalledOdbcDrivers;
}

int qelDataSourcesUtilities::Drivers::defaultIsInstalled()
{
    const qelArray<qelString>& drivers = installed();
    for (long i = 0; i < drivers.length(); ++i)
    {
        if (wcscmp(drivers[i].getStringW(), kDefaultDriver) == 0)
        {
            return 1;
        }
    }
    return drivers.isEmpty() != 0 ? 0 : -1;
}

const wchar_t* qelDataSourcesUtilities::Drivers::forNewConnections()
{
    return defaultIsInstalled() == -1 ? kAlternateDriver : kDefaultDriver;
}

int qelDataSourcesUtilities::Drivers::replaceAlternate(qelString& connectionString)
{
    // An empty text must not go looking for drivers, which may stop at a message box.
    if (connectionString.isEmpty() != 0)
    {
        return 0;
    }
    return defaultIsInstalled() == -1 ? replace(connectionString, kDefaultDriver, kAlternateDriver)
                                      : replace(connectionString, kAlternateDriver, kDefaultDriver);
}

int qelDataSourcesUtilities::readInstalledOdbcDrivers()
{
    return answer([] { return static_cast<int>(Drivers::installed().length()); }, 0);
}

int qelDataSourcesUtilities::defaultODBCDriverIsInstalled()
{
    return answer(&Drivers::defaultIsInstalled, 0);
}

int qelDataSourcesUtilities::getOdbcDriverName(qelString& driverName)
{
    driverName.empty();
    return answer(
        [&] {
            driverName = Drivers::forNewConnections();
            return 1;
        },
        1);
}

int qelDataSourcesUtilities::replaceAlternateDriver(qelString& connectionString)
{
    return answer([&] { return Drivers::replaceAlternate(connectionString); }, 0);
}

int qelDataSourcesUtilities::defaultDriverIsUsedInAllDataSources()
{
    const int installed = defaultODBCDriverIsInstalled();
    if (installed != 0)
    {
        for (long i = 0; i < m_DataSources.length(); ++i)
        {
            if (qelLiterals::find(m_DataSources[i].m_ConnectionString, kAlternateDriver) != nullptr)
            {
                return 0;
            }
        }
    }
    return installed;
}

int qelDataSourcesUtilities::testConnection(qelString connectionString)
{
    const auto test = [&] {
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
    };
    return answer(test, -1);
}
