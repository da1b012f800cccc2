// The catalogue: what the registry and the configuration file say about data sources.

#include "qelDataSourcesUtilities.h"

#include "config/DatabaseConfiguration.h"

#include "qelFileAccess.h"
#include "qelRegistry.h"

#include <windows.h>

#include <wchar.h>

namespace
{
const wchar_t kProfiles[] = L"PelionProfiles2020";
const wchar_t kMapping[] = L"QELMapping2020";
const wchar_t kCurrentProject[] = L"PelionCurrentProject";
const wchar_t kBuiltInPlatform[] = L"x64";
const wchar_t kConfigurationFile[] = L"\\Configuration\\DatabaseConfiguration.xml";
const wchar_t kModelDatabase[] = L"\\Kernel\\Data\\model.mdb";

const wchar_t kDatabaseKey[] = L"DBQ=";
const int kDatabaseKeyLength = 4;

bool contains(const qelString& text, const wchar_t* part)
{
    return wcsstr(text.getStringW(), part) != nullptr;
}

bool namesBuiltIn(const qelString& connectionString)
{
    return contains(connectionString, kProfiles) || contains(connectionString, kMapping) ||
           contains(connectionString, kCurrentProject);
}

qelString registeredConnectionString(const wchar_t* name)
{
    qelString connectionString = qelRegistry::getDatabaseConnectionsString(name);
    qelDataSourcesUtilities::replaceAlternateDriver(connectionString);
    return connectionString;
}

/// Makes room for as many entries again where there is none left: the array's own steps are made for short lists.
void append(qelArray<qelDataSource>& sources, const qelDataSource& entry)
{
    if (sources.length() == sources.physicalLength())
    {
        sources.setPhysicalLength(2 * sources.length() + 8);
    }
    sources.append(entry);
}

/// The text of the file; empty when it cannot be read.
qelString readWhole(const qelString& path)
{
    qelString text;
    qelFileAccess file(path, L"r", qelFileAccess::UNICODE_TEXT);
    if (file.isOpen() == 1)
    {
        const long length = file.getFileLength();
        if (length >= 1)
        {
            (void)file.readFile(text, static_cast<size_t>(length));
        }
    }
    return text;
}
} // namespace

qelDataSource::qelDataSource() = default;

qelDataSource::qelDataSource(const qelString& name, const qelString& connectionString, const qelString& platform)
    : m_Name(name)
    , m_Platform(platform)
    , m_ConnectionString(connectionString)
{
}

qelDataSource::qelDataSource(const qelDataSource& other) = default;

qelDataSource::~qelDataSource() = default;

qelDataSource& qelDataSource::operator=(const qelDataSource& other) = default;

bool qelDataSource::operator==(const qelDataSource& other) const
{
    return qelString::compareNoCase(m_Name, other.m_Name) == 0 &&
           qelString::compareNoCase(m_Platform, other.m_Platform) == 0;
}

qelDataSourcesUtilities::qelDataSourcesUtilities(qelString configurationFile)
{
    if (m_pDatabaseConfigurationFilePath == nullptr)
    {
        m_pDatabaseConfigurationFilePath = new qelString();
    }
    if (configurationFile.isEmpty() == 1)
    {
        configurationFile = qelRegistry::getPathData(false) + kConfigurationFile;
    }
    if (qelString::compareNoCase(configurationFile, *m_pDatabaseConfigurationFilePath) != 0)
    {
        *m_pDatabaseConfigurationFilePath = configurationFile;
        m_DataSources.setPhysicalLength(0);
    }
}

qelDataSourcesUtilities::qelDataSourcesUtilities(const qelDataSourcesUtilities&) = default;

qelDataSourcesUtilities::~qelDataSourcesUtilities() = default;

qelDataSourcesUtilities& qelDataSourcesUtilities::operator=(const qelDataSourcesUtilities&) = default;

int qelDataSourcesUtilities::readConnectionStrings()
{
    const qelString profiles = registeredConnectionString(kProfiles);
    append(m_DataSources, qelDataSource(kProfiles, profiles, kBuiltInPlatform));
    append(m_DataSources, qelDataSource(kMapping, registeredConnectionString(kMapping), kBuiltInPlatform));

    // The current project is opened with the driver and the options of the profile catalogue.
    qelString head;
    qelString databaseFile;
    (void)splitConnectionString(profiles, head, databaseFile);
    const qelString project = head + qelRegistry::getPathData(false) + kModelDatabase;
    append(m_DataSources, qelDataSource(kCurrentProject, project, kBuiltInPlatform));

    const qelString text = readWhole(*m_pDatabaseConfigurationFilePath);
    DatabaseConfiguration configuration(text);
    for (qelDataSource entry; configuration.next(entry);)
    {
        (void)replaceAlternateDriver(entry.m_ConnectionString);
        append(m_DataSources, entry);
    }
    return static_cast<int>(m_DataSources.length());
}

int qelDataSourcesUtilities::getConnectionString(qelString name, qelString& connectionString, qelString platform)
{
    connectionString.empty();
    // Drivers first: reading the catalogue writes driver names.
    (void)readInstalledOdbcDrivers();
    if (m_DataSources.isEmpty() == 1)
    {
        (void)readConnectionStrings();
    }

    long index = 0;
    if (!m_DataSources.find(qelDataSource(name, qelString(), platform), index))
    {
        OutputDebugStringW(L"\n Connection string not found for datasource '");
        OutputDebugStringW(name.getStringW());
        OutputDebugStringW(L"'\n");
        return 0;
    }

    connectionString = m_DataSources[index].m_ConnectionString;
    if (connectionString.isEmpty() == 1)
    {
        return 0;
    }
    if (namesBuiltIn(connectionString))
    {
        return 1;
    }
    qelString head;
    qelString databaseFile;
    if (splitConnectionString(connectionString, head, databaseFile) == 0)
    {
        return 0;
    }
    // Deliberately without a look at the path: one that is absolute gets the data folder in front all the same, and
    // the current project's shows it twice. Installed configurations count on it.
    connectionString = head + qelRegistry::getPathData(false) + L"\\" + databaseFile;
    return 1;
}

int qelDataSourcesUtilities::splitConnectionString(qelString connectionString, qelString& head, qelString& databaseFile)
{
    head.empty();
    databaseFile.empty();
    const int key = connectionString.find(kDatabaseKey, 0);
    if (key < 0)
    {
        return 0;
    }
    head = connectionString.left(key + kDatabaseKeyLength);
    databaseFile = connectionString.mid(key + kDatabaseKeyLength);
    return 1;
}

int qelDataSourcesUtilities::getConnectionStringForFile(qelString databaseFile, qelString& connectionString)
{
    qelString driver;
    (void)getOdbcDriverName(driver);
    connectionString.format(L"DRIVER={%s};UID=;PWD=;DBQ=%s", driver.getStringW(), databaseFile.getStringW());
    return 1;
}
