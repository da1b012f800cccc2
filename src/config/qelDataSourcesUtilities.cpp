// The catalogue: data sources from the registry and the configuration file.

#include "qelDataSourcesUtilities.h"

#include "config/DataSourceIndex.h"
#include "config/DatabaseConfiguration.h"
#include "config/Literals.h"
#include "config/OdbcDrivers.h"

#include "qelFileAccess.h"
#include "qelRegistry.h"

#include <windows.h>

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

const long kBuiltInSources = 3;

bool namesBuiltIn(const qelString& connectionString)
{
    return qelLiterals::find(connectionString, kProfiles) != nullptr ||
           qelLiterals::find(connectionString, kMapping) != nullptr ||
           qelLiterals::find(connectionString, kCurrentProject) != nullptr;
}

/// The contents of the file; empty when it cannot be read.
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
        DataSourceIndex::clear();
    }
}

qelDataSourcesUtilities::qelDataSourcesUtilities(const qelDataSourcesUtilities&) = default;

qelDataSourcesUtilities::~qelDataSourcesUtilities() = default;

qelDataSourcesUtilities& qelDataSourcesUtilities::operator=(const qelDataSourcesUtilities&) = default;

int qelDataSourcesUtilities::readConnectionStrings()
{
    qelString profiles = qelRegistry::getDatabaseConnectionsString(kProfiles);
    (void)Drivers::replaceAlternate(profiles);
    qelString mapping = qelRegistry::getDatabaseConnectionsString(kMapping);
    (void)Drivers::replaceAlternate(mapping);

    // The current project uses the driver and options of the profile catalogue.
    qelString head;
    qelString databaseFile;
    (void)splitConnectionString(profiles, head, databaseFile);
    const qelString project = head + qelRegistry::getPathData(false) + kModelDatabase;

    const qelString text = readWhole(*m_pDatabaseConfigurationFilePath);
    DatabaseConfiguration configuration(text);
    // Kept only when complete: later calls do not read again.
    qelArray<qelDataSource> read(kBuiltInSources + configuration.mostEntries());
    read.append(qelDataSource(kProfiles, profiles, kBuiltInPlatform));
    read.append(qelDataSource(kMapping, mapping, kBuiltInPlatform));
    read.append(qelDataSource(kCurrentProject, project, kBuiltInPlatform));
    for (qelDataSource entry; configuration.next(entry);)
    {
        (void)Drivers::replaceAlternate(entry.m_ConnectionString);
        read.append(entry);
    }
    m_DataSources.append(read);
    return static_cast<int>(m_DataSources.length());
}

int qelDataSourcesUtilities::getConnectionString(qelString name, qelString& connectionString, qelString platform)
{
    // Drivers first: the catalogue gets their names.
    (void)Drivers::installed();
    if (m_DataSources.isEmpty() == 1)
    {
        (void)readConnectionStrings();
    }

    const long index = DataSourceIndex::find(m_DataSources, qelDataSource(name, qelString(), platform));
    if (index < 0)
    {
        OutputDebugStringW(L"\n Connection string not found for datasource '");
        OutputDebugStringW(name.getStringW());
        OutputDebugStringW(L"'\n");
        connectionString.empty();
        return 0;
    }

    const qelString found = m_DataSources[index].m_ConnectionString;
    qelString head;
    qelString databaseFile;
    const bool builtIn = namesBuiltIn(found);
    if (builtIn || splitConnectionString(found, head, databaseFile) == 0)
    {
        connectionString = found;
        return builtIn ? 1 : 0;
    }
    // Deliberately for any path: an absolute one gets the data folder in front too, and the current project's then has
    // it twice.
    connectionString = head + qelRegistry::getPathData(false) + L"\\" + databaseFile;
    return 1;
}

int qelDataSourcesUtilities::splitConnectionString(qelString connectionString, qelString& head, qelString& databaseFile)
{
    const wchar_t* key = qelLiterals::find(connectionString, kDatabaseKey);
    if (key == nullptr)
    {
        head.empty();
        databaseFile.empty();
        return 0;
    }
    const int file = static_cast<int>(key - connectionString.getStringW()) + kDatabaseKeyLength;
    // Both or none.
    const qelString front = connectionString.left(file);
    const qelString back = connectionString.mid(file);
    head = front;
    databaseFile = back;
    return 1;
}

int qelDataSourcesUtilities::getConnectionStringForFile(qelString databaseFile, qelString& connectionString)
{
    connectionString.format(L"DRIVER={%s};UID=;PWD=;DBQ=%s", Drivers::forNewConnections(), databaseFile.getStringW());
    return 1;
}
