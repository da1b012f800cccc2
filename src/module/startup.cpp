// All process-wide objects, in the order of their construction. This runs when the library is loaded, before any
// exported function can be called and before the host's own static initialisers.
//
// Nothing here is destroyed: the objects must outlive every caller. Their storage is freed with the module.

#include "config/DataSourceIndex.h"
#include "config/OdbcInstaller.h"
#include "progress/EndUnderWay.h"
#include "progress/ProgressDialog.h"
#include "qelDataSourcesUtilities.h"
#include "qelDebugInterfaces.h"
#include "qelDouble.h"
#include "qelGlobalStorage.h"
#include "qelLogfile.h"
#include "qelMathUtilities.h"
#include "qelProductDefines.h"
#include "qelProcessEvolutionManager.h"
#include "qelProgressCtrl.h"
#include "qelRegistry.h"
#include "qelString.h"
#include "qelZClipping.h"
#include "strings/Text.h"

#include <math.h>

// NOLINTBEGIN(cppcoreguidelines-avoid-non-const-global-variables): the one place for process-wide objects
namespace
{
wchar_t wideScratch[qelText::kCapacity];
char narrowScratch[qelText::kCapacity];

wchar_t emptyText[qelUnits::kPerChunk];
alignas(qelStringRepr) unsigned char emptyRepresentation[sizeof(qelStringRepr)];

/// Holds an object that is made once and never destroyed, whatever its class says.
template <class T> class Lasting
{
public:
    T& make() { return *new (static_cast<void*>(m_storage), qelPlacement()) T(); }

private:
    alignas(T) unsigned char m_storage[sizeof(T)];
};

Lasting<qelArray<void*>> contextInitiators;
Lasting<qelArray<qelDebugInterfaces::DebugInfo>> debugInfo;
Lasting<qelArray<qelDataSource>> dataSources;
Lasting<qelArray<qelString>> installedOdbcDrivers;
Lasting<DataSourceIndex::Slots> dataSourceSlots;

alignas(qelProcessEvolutionManager) unsigned char processEvolutionManager[sizeof(qelProcessEvolutionManager)];
Lasting<qelProgressCtrlWindowController> progressWindowController;
} // namespace
// NOLINTEND(cppcoreguidelines-avoid-non-const-global-variables)

wchar_t* qelString::qelStringTempBufferWide = wideScratch;
char* qelString::qelStringTempBuffer = narrowScratch;
qelStringRepr* qelString::m_repEmpty =
    new (static_cast<void*>(emptyRepresentation), qelPlacement()) qelStringRepr(emptyText);

const wchar_t qelRegistry::RegPathEnvironment[kMaxPath] = L"Software\\Kelvara\\Orvalis\\2020";
const wchar_t qelRegistry::RegDatabase[kMaxPath] = L"Software\\Kelvara\\Varnel\\DatabaseConnections";

int qelLogfile::doLogging = 0;
int qelLogfile::firstLogToFile = 1;

qelArray<void*>& qelDebugInterfaces::m_ContextInitiators = contextInitiators.make();
qelArray<qelDebugInterfaces::DebugInfo>& qelDebugInterfaces::m_Info = debugInfo.make();

qelArray<qelDataSource>& qelDataSourcesUtilities::m_DataSources = dataSources.make();
qelArray<qelString>& qelDataSourcesUtilities::m_InstalledOdbcDrivers = installedOdbcDrivers.make();
qelString* qelDataSourcesUtilities::m_pDatabaseConfigurationFilePath = nullptr;
DataSourceIndex::Slots& DataSourceIndex::m_slots = dataSourceSlots.make();
long DataSourceIndex::m_entries = -1;
HMODULE OdbcInstaller::m_library = nullptr;

wchar_t qelProductDefines::ms_szOVProductName[kCapacity] = L"Orvalis";
wchar_t qelProductDefines::ms_szOVProduct[kCapacity] = L"Kelvara\\Orvalis\\2020";
qelString* qelGlobalStorage::g_pMoxSupportPaths = nullptr;

double qelZClipping::kClipLowerDefault = -20.0;
double qelZClipping::kClipUpperDefault = 20.0;

const double qelDouble::MinRoundOffset = 0.0001;
const double qelMathUtilities::PI = acos(-1.0);

// Not in Lasting: only the class itself may construct it.
qelProcessEvolutionManager* qelProcessEvolutionManager::m_pProcessEvolutionManager =
    new (static_cast<void*>(processEvolutionManager), qelPlacement()) qelProcessEvolutionManager();
qelProcessEvolutionManager::EndUnderWay* qelProcessEvolutionManager::EndUnderWay::m_innermost = nullptr;

qelProgressCtrlWindowController* qelProgressCtrl::m_ProgressCtrlWindowController = &progressWindowController.make();
HWND ProgressDialog::m_dialog = nullptr;
HWND ProgressDialog::m_progressBar = nullptr;
