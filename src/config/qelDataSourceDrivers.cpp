// The driver half of qelDataSourcesUtilities: installed drivers, driver names, connection test.

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

/// The result of `question`, or `otherwise` when out of memory: these functions throw nothing to hosts.
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
    // Most connection strings name the right driver: avoid allocations for them.
    return qelLiterals::find(connectionString, driver) == nullptr ? 0 : connectionString.replace(driver, replacement);
}
} // namespace

const qelArray<qelString>& qelDataSourcesUtilities::Drivers::installed()
{
    if (m_InstalledOdbcDrivers.isEmpty() == 0)
    {
        return m_InstalledOdbcDrivers;
    }
    // Two more zeros than announced to the installer terminate a list that fills the buffer.
    wchar_t names[kDriverListCapacity + 2] = {};
    if (OdbcInstaller::getInstalledDrivers(names, kDriverListCapacity))
    {
        // Kept only when complete: later calls would take a partial list for the whole.
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
    // Must not read drivers for an empty string: that may show a message box.
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
