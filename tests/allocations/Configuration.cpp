#include "allocations/Operations.h"

#include "config/DataSourceFixture.h"
#include "qelDataSourcesUtilities.h"
#include "qelProductDefines.h"
#include "qelRegistry.h"
#include "support/SavedRegistryKey.h"
#include "support/TemporaryFolder.h"

#include <windows.h>

#include <memory>
#include <optional>

using namespace qelTest;

namespace
{
using Sources = qelDataSourcesUtilities;

const qelString& keyName()
{
    static const qelString name(kInstallationKey);
    return name;
}

const qelString& valueName()
{
    static const qelString name(L"DataPath");
    return name;
}

/// What the library asks the registry for, in both hives.
class Installation
{
public:
    Installation()
    {
        for (const SavedRegistryKey* key : {&m_user, &m_machine})
        {
            key->setText(L"DataPath", L"D:\\Data\\");
            key->setText(L"BinPath", L"D:\\Bin\\");
        }
        for (const SavedRegistryKey* key : {&m_userConnections, &m_machineConnections})
        {
            key->setText(L"PelionProfiles2020", L"{Varnel ODBC Driver}PelionProfiles2020;DBQ=p");
        }
        m_drivers.setText(L"SQLite3", L"Installed");
        m_drivers.setText(kDefaultDriver, L"Installed");
    }

private:
    SavedRegistryKey m_user{HKEY_CURRENT_USER, kInstallationKey};
    SavedRegistryKey m_machine{HKEY_LOCAL_MACHINE, kInstallationKey};
    SavedRegistryKey m_userConnections{HKEY_CURRENT_USER, kConnectionsKey};
    SavedRegistryKey m_machineConnections{HKEY_LOCAL_MACHINE, kConnectionsKey};
    SavedRegistryKey m_drivers{HKEY_LOCAL_MACHINE, kDriversKey};
};

template <class Read> void reads(Operations& table, const char* name, Read read)
{
    throwing(table, {name}, [=](Trial& trial) {
        const Installation installation;
        qelString value(L"none yet");
        trial([&] { read(value); }, [&] { return wide(value); });
    });
}

void addRegistry(Operations& table)
{
    reads(table, "qelRegistry::getRegValue(qelString const&, qelString const&, qelString&, int, bool)",
          [](qelString& value) { qelRegistry::getRegValue(keyName(), valueName(), value); });
    reads(table, "qelRegistry::getRegValueCurrentUser(qelString const&, qelString const&, qelString&, int)",
          [](qelString& value) { qelRegistry::getRegValueCurrentUser(keyName(), valueName(), value); });
    reads(table, "qelRegistry::getRegPathEnvironment()",
          [](qelString& value) { value = qelRegistry::getRegPathEnvironment(); });
    reads(table, "qelRegistry::getPathBinary(bool)", [](qelString& value) { value = qelRegistry::getPathBinary(); });
    reads(table, "qelRegistry::getPathData(bool)", [](qelString& value) { value = qelRegistry::getPathData(); });
    static const qelString name(L"PelionProfiles2020");
    reads(table, "qelRegistry::getDatabaseConnectionsString(qelString)",
          [](qelString& value) { value = qelRegistry::getDatabaseConnectionsString(name); });
    withoutMemory(table,
                  {"qelRegistry::getRegValue(qelString const&, qelString const&, unsigned long&, int, bool)",
                   "qelRegistry::getRegValueCurrentUser(qelString const&, qelString const&, int&, int)",
                   "qelRegistry::getCurrentCultureId()", "qelProductDefines::getOVProductName()",
                   "qelProductDefines::getOVProduct()", "qelProductDefines::setOVProductName(wchar_t const*)",
                   "qelProductDefines::setOVProduct()"},
                  [](Trial& trial) {
                      const Installation installation;
                      trial(
                          [&] {
                              unsigned long value = 0;
                              int own = 0;
                              qelRegistry::getRegValue(keyName(), valueName(), value);
                              qelRegistry::getRegValueCurrentUser(keyName(), valueName(), own);
                              qelRegistry::getCurrentCultureId();
                              qelProductDefines::setOVProductName(qelProductDefines::getOVProductName());
                              qelProductDefines::getOVProduct();
                          },
                          [] { return std::wstring(); });
                  });
    throwing(table, {"qelRegistry::getCurrentLanguage()"}, [](Trial& trial) {
        const Installation installation;
        unsigned long language = 0xFFFFFFFF;
        trial([&] { language = qelRegistry::getCurrentLanguage(); }, [&] { return number(language); });
    });
}

void addDataSource(Operations& table)
{
    static const qelString texts[] = {L"Bolts", L"DRIVER={Varnel ODBC Driver};DBQ=Bolts.mdb", L"x64"};
    withoutMemory(table,
                  {"qelDataSource::qelDataSource()", "qelDataSource::qelDataSource(qelDataSource const&)",
                   "qelDataSource::qelDataSource(qelString const&, qelString const&, qelString const&)",
                   "qelDataSource::operator=(qelDataSource const&)",
                   "qelDataSource::operator==(qelDataSource const&) const", "qelDataSource::~qelDataSource()"},
                  [](Trial& trial) {
                      trial(
                          [&] {
                              const qelDataSource bolts(texts[0], texts[1], texts[2]);
                              qelDataSource copy(bolts);
                              qelDataSource other;
                              other = copy;
                              trial.result = other == bolts ? L"equal" : L"not";
                          },
                          [] { return std::wstring(); });
                  });
}

/// The catalogue with a configuration file that is not yet read.
class Catalogue
{
public:
    Catalogue()
    {
        static int used = 0;
        const std::string element = "<DataSource Name=\"Own\" Platform=\"x64\" Value=\"DRIVER={" +
                                    std::string("Varnel ODBC Driver") + "};DBQ=own.mdb\"/>";
        const std::wstring path = m_folder.write(L"configuration" + std::to_wstring(GetCurrentProcessId()) + L"-" +
                                                     std::to_wstring(++used) + L".xml",
                                                 configuration(element));
        m_sources = std::make_unique<Sources>(path.c_str());
    }

    Sources& sources() { return *m_sources; }

private:
    Installation m_installation;
    TemporaryFolder m_folder;
    std::unique_ptr<Sources> m_sources;
};

void addCatalogue(Operations& table)
{
    static const qelString name(L"Own");
    static const qelString platform(L"x64");
    throwing(table, {"qelDataSourcesUtilities::qelDataSourcesUtilities(qelString)"}, [](Trial& trial) {
        const Installation installation;
        std::optional<Sources> sources;
        trial([&] { sources.emplace(); }, [&] { return number(sources ? 1 : 0); });
    });
    throwing(table,
             {"qelDataSourcesUtilities::getConnectionString(qelString, qelString&, qelString)",
              "qelDataSourcesUtilities::readConnectionStrings()"},
             [](Trial& trial) {
                 Catalogue catalogue;
                 qelString connection(L"none yet");
                 trial([&] { catalogue.sources().getConnectionString(name, connection, platform); },
                       [&] { return wide(connection); });
                 // What the catalogue holds stays: all of it, after every case.
                 catalogue.sources().getConnectionString(name, connection, platform);
             });
    throwing(table, {"qelDataSourcesUtilities::splitConnectionString(qelString, qelString&, qelString&)"},
             [](Trial& trial) {
                 const qelString connection(L"DRIVER={x};DBQ=d:\\a.mdb");
                 qelString head(L"head");
                 qelString file(L"file");
                 trial([&] { Sources::splitConnectionString(connection, head, file); },
                       [&] { return wide(head) + L"|" + wide(file); });
             });
    throwing(table, {"qelDataSourcesUtilities::getConnectionStringForFile(qelString, qelString&)"}, [](Trial& trial) {
        const Installation installation;
        const qelString file(L"d:\\a.mdb");
        qelString connection(L"none yet");
        trial([&] { Sources::getConnectionStringForFile(file, connection); }, [&] { return wide(connection); });
    });
    withoutMemory(table,
                  {"qelDataSourcesUtilities::qelDataSourcesUtilities(qelDataSourcesUtilities const&)",
                   "qelDataSourcesUtilities::operator=(qelDataSourcesUtilities const&)",
                   "qelDataSourcesUtilities::~qelDataSourcesUtilities()"},
                  [](Trial& trial) {
                      Sources sources;
                      trial(
                          [&] {
                              Sources copy(sources);
                              copy = sources;
                          },
                          [] { return std::wstring(); });
                  });
}

/// Tells by its result; reads the list of drivers first where it is not known.
template <class Ask> void asks(Operations& table, const char* name, Ask ask)
{
    quiet(table, {name}, [=](Trial& trial) {
        const Installation installation;
        trial.mayGive(L"0");
        trial([&] { trial.result = number(ask()); }, [] { return std::wstring(); });
    });
}

void addDrivers(Operations& table)
{
    asks(table, "qelDataSourcesUtilities::readInstalledOdbcDrivers()", &Sources::readInstalledOdbcDrivers);
    asks(table, "qelDataSourcesUtilities::defaultODBCDriverIsInstalled()", &Sources::defaultODBCDriverIsInstalled);
    asks(table, "qelDataSourcesUtilities::defaultDriverIsUsedInAllDataSources()",
         &Sources::defaultDriverIsUsedInAllDataSources);
    quiet(table, {"qelDataSourcesUtilities::getOdbcDriverName(qelString&)"}, [](Trial& trial) {
        const Installation installation;
        qelString name(L"none yet");
        trial.mayGive(L"1", L"");
        trial([&] { trial.result = number(Sources::getOdbcDriverName(name)); }, [&] { return wide(name); });
    });
    quiet(table, {"qelDataSourcesUtilities::replaceAlternateDriver(qelString&)"}, [](Trial& trial) {
        const Installation installation;
        qelString connection(L"DRIVER={Varnel ODBC Driver};UID=");
        trial.mayGive(L"0");
        trial([&] { trial.result = number(Sources::replaceAlternateDriver(connection)); },
              [&] { return wide(connection); });
    });
    quiet(table, {"qelDataSourcesUtilities::testConnection(qelString)"}, [](Trial& trial) {
        const qelString missing(L"DRIVER={no such driver};DBQ=D:\\no such file.mdb");
        trial.mayGive(L"-1");
        trial([&] { trial.result = number(Sources::testConnection(missing)); }, [] { return std::wstring(); });
    });
}
} // namespace

void qelTest::addConfiguration(Operations& table)
{
    // Made here, not inside of an operation.
    (void)keyName();
    (void)valueName();
    addRegistry(table);
    addDataSource(table);
    addCatalogue(table);
    addDrivers(table);
}
