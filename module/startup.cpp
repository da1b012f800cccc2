// Everything that belongs to the process and exists from the moment the library is loaded, in the order in which it is
// made. The loader runs this before any exported function can be called and before the host's own static initialisers.
//
// Nothing here has a destructor: the objects must outlive every caller, and their storage goes with the module.

#include "qelDouble.h"
#include "qelGlobalStorage.h"
#include "qelMathUtilities.h"
#include "qelProductDefines.h"
#include "qelString.h"
#include "qelZClipping.h"
#include "strings/Text.h"

#include <math.h>

namespace
{
wchar_t wideScratch[qelText::kCapacity];
char narrowScratch[qelText::kCapacity];

alignas(uint64_t) wchar_t emptyText[qelText::kUnitsPerChunk];
alignas(qelStringRepr) unsigned char emptyRepresentation[sizeof(qelStringRepr)];
} // namespace

wchar_t* qelString::qelStringTempBufferWide = wideScratch;
char* qelString::qelStringTempBuffer = narrowScratch;
qelStringRepr* qelString::m_repEmpty =
    new (static_cast<void*>(emptyRepresentation), qelPlacement()) qelStringRepr(emptyText);

wchar_t qelProductDefines::ms_szOVProductName[kCapacity] = L"Orvalis";
wchar_t qelProductDefines::ms_szOVProduct[kCapacity] = L"Kelvara\\Orvalis\\2020";
qelString* qelGlobalStorage::g_pMoxSupportPaths = nullptr;

double qelZClipping::kClipLowerDefault = -20.0;
double qelZClipping::kClipUpperDefault = 20.0;

const double qelDouble::MinRoundOffset = 0.0001;
const double qelMathUtilities::PI = acos(-1.0);
