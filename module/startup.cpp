// Everything that belongs to the process and exists from the moment the library is loaded, in the order in which it is
// made. The loader runs this before any exported function can be called and before the host's own static initialisers.
//
// Nothing here has a destructor: the objects must outlive every caller, and their storage goes with the module.

#include "config/OdbcInstaller.h"
#include "qelDataSourcesUtilities.h"
#include "qelRegistry.h"
#include "qelString.h"
#include "strings/Text.h"

namespace
{
wchar_t wideScratch[qelText::kCapacity];
char narrowScratch[qelText::kCapacity];

wchar_t emptyText[qelText::kUnitsPerChunk];
alignas(qelStringRepr) unsigned char emptyRepresentation[sizeof(qelStringRepr)];

/// Holds an object that is made once and never destroyed, whatever its class says.
template <class T> class Lasting
{
public:
    T& make() { return *new (static_cast<void*>(m_storage), qelPlacement()) T(); }

private:
    alignas(T) unsigned char m_storage[sizeof(T)];
};

Lasting<qelArray<qelDataSource>> dataSources;
Lasting<qelArray<qelString>> installedOdbcDrivers;
} // namespace

wchar_t* qelString::qelStringTempBufferWide = wideScratch;
char* qelString::qelStringTempBuffer = narrowScratch;
qelStringRepr* qelString::m_repEmpty =
    new (static_cast<void*>(emptyRepresentation), qelPlacement()) qelStringRepr(emptyText);

const wchar_t qelRegistry::RegPathEnvironment[kMaxPath] = L"Software\\Kelvara\\Orvalis\\2020";
const wchar_t qelRegistry::RegDatabase[kMaxPath] = L"Software\\Kelvara\\Varnel\\DatabaseConnections";

qelArray<qelDataSource>& qelDataSourcesUtilities::m_DataSources = dataSources.make();
qelArray<qelString>& qelDataSourcesUtilities::m_InstalledOdbcDrivers = installedOdbcDrivers.make();
qelString* qelDataSourcesUtilities::m_pDatabaseConfigurationFilePath = nullptr;
HMODULE OdbcInstaller::m_library = nullptr;
