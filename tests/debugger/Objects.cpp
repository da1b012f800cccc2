// Objects of the classes that have a view in the debugger, for printers.txt to look at. The program makes them and
// writes its memory to the core file that it is given.

#include "CoreFile.h"

#include "qelArray.h"
#include "qelBalancedTree.h"
#include "qelDataSourcesUtilities.h"
#include "qelDebugInterfaces.h"
#include "qelFileAccess.h"
#include "qelIncrementalCounter.h"
#include "qelLogfile.h"
#include "qelNumberCreator.h"
#include "qelPerfMonitor.h"
#include "qelProcessEvolutionManager.h"
#include "qelProfTypeDSTVValues.h"
#include "qelProgressCtrl.h"
#include "qelRegExWrapper.h"
#include "qelString.h"
#include "qelStringClassArray.h"
#include "qelThreadsPool.h"
#include "qelZClipping.h"

#include <stdio.h>
#include <string.h>

class Profile : public qelBalancedTreeEntry
{
public:
    Profile(const wchar_t* name, int height)
        : m_name(name)
        , m_height(height)
    {
    }

    int compare(const qelBalancedTreeEntry& other) const override
    {
        const int theirs = static_cast<const Profile&>(other).m_height;
        return theirs < m_height ? -1 : theirs > m_height ? 1 : 0;
    }

    qelString m_name;
    int m_height;
};

/// A display that shows nothing.
class Silent final : public ProgressDisplayProtocol
{
public:
    void setProgress(int, int) override {}
    void addProcess(int, qelString, bool) override {}
    void removeProcess(int) override {}
};

// The members of some classes, to make objects that the classes would not make.

struct RawArray
{
    int logicalLength;
    int physicalLength;
    int growLength;
    const void* elements;
};

struct RawEntry
{
    const void* table;
    int weight;
    int side;
    const void* left;
    const void* right;
};

struct RawTree
{
    const void* table;
    const void* root;
};

struct RawTask
{
    const void* next;
    void (*function)(void*);
    void* argument;
};

struct RawPool
{
    int threadCount;
    const void* threadHandles;
    const void* taskList;
    const void* queueMutex;
    const void* workEvent;
    bool stopRequested;
};

/// The same bytes taken for objects of several classes.
struct Damaged
{
    explicit Damaged(const void* bytes)
        : text(static_cast<const qelString*>(bytes))
        , representation(static_cast<const qelStringRepr*>(bytes))
        , array(static_cast<const qelArray<qelString>*>(bytes))
        , list(static_cast<const qelStringClassArray*>(bytes))
        , tree(static_cast<const qelBalancedTree*>(bytes))
        , counter(static_cast<const qelIncrementalCounter*>(bytes))
        , creator(static_cast<const qelNumberCreator*>(bytes))
        , manager(static_cast<const qelProcessEvolutionManager*>(bytes))
        , pool(static_cast<const qelThreadsPool*>(bytes))
        , file(static_cast<const qelFileAccess*>(bytes))
    {
    }

    const qelString* text;
    const qelStringRepr* representation;
    const qelArray<qelString>* array;
    const qelStringClassArray* list;
    const qelBalancedTree* tree;
    const qelIncrementalCounter* counter;
    const qelNumberCreator* creator;
    const qelProcessEvolutionManager* manager;
    const qelThreadsPool* pool;
    const qelFileAccess* file;
};

qelString profile;
qelString copyOfProfile;
qelString emptyText;
qelString grade;
qelString longText;
qelString beyondBasicPlane;
qelString halfACharacter;
qelArray<qelString> profiles;
qelArray<double> lengths;
qelArray<int> empty;
qelArray<int> shorterThanEmpty;
qelArray<int> numbers;
qelStringClassArray names;
qelBalancedTree heights;
qelBalancedTree emptyTree;
qelBalancedTree largeTree;
StructIncrementalCounter letters;
qelIncrementalCounter counter;
StructNumberingDataRange digits;
qelNumberCreator parts;
qelDataSource catalogue(L"SteelGrades", L"DRIVER={Varnel ODBC Driver};UID=;PWD=;DBQ=Grades.mdb", L"x64");
qelDataSourcesUtilities sources(L"D:\\Orvalis\\Databases.xml");
qelFileAccess closedFile;
qelLogfile importLog(L"Import.log");
qelPerfMonitor monitor(L"Perf.log");
qelRegExWrapper pattern;
qelZClipping clipping(eZClip_Default, 12.5, -3.0);
qelProfTypeDSTVValues section;
qelThreadsPool idlePool(0);
Silent display;

// What lies in memory that was never set, was set to 0, or was given back.
unsigned char zeroBytes[512];
unsigned char wildBytes[512];
const Damaged zero(zeroBytes);
const Damaged wild(wildBytes);
const RawArray rawOverfull = {5, 2, 8, zeroBytes};
const RawArray rawAstray = {5, 8, 8, reinterpret_cast<const void*>(0x10000)};
RawEntry rawEntry = {nullptr, eBalanced, 0, &rawEntry, nullptr};
const RawTree rawTree = {nullptr, &rawEntry};
RawTask rawTask = {&rawTask, nullptr, nullptr};
const RawPool rawPool = {0, nullptr, &rawTask, nullptr, nullptr, true};
const Damaged overfull(&rawOverfull);
const Damaged astray(&rawAstray);
const Damaged looped(&rawTree);
const Damaged loopedPool(&rawPool);

/// Where the sessions find the program.
bool stop(const char* path, qelString title, const qelArray<qelString>& texts)
{
    const wchar_t* const images[] = {L"qelDebuggerObjects.exe", L"VarnelQELRoots.dll", nullptr};
    return title.length() > 0 && texts.length() > 0 && writeCoreFile(path, images);
}

void check(void*) {}

void measure(void*) {}

int main(int argc, char** argv)
{
    profile = L"HEA 200";
    copyOfProfile = profile;
    profile.getStringA();
    grade = L"Stahlg\u00FCte \"S355\" \u20AC";
    const wchar_t grinning[] = {0xD83D, 0xDE00, 0};
    beyondBasicPlane = grinning;
    const wchar_t half[] = {L'A', 0xD83D, 0};
    halfACharacter = half;
    for (int i = 0; i < 200; ++i)
    {
        longText += L"0123456789";
    }

    profiles.append(profile);
    profiles.append(L"IPE 300");
    profiles.append(L"");
    lengths.setPhysicalLength(4);
    lengths.append(6000.0);
    lengths.append(1450.5);
    shorterThanEmpty.removeAt(0);
    for (int i = 0; i < 1000; ++i)
    {
        numbers.append(i);
    }
    names.append(L"UPN 120");
    names.append(L"HEB 160");

    heights.insert(new Profile(L"IPE 300", 300));
    heights.insert(new Profile(L"HEA 200", 190));
    heights.insert(new Profile(L"HEB 160", 160));
    heights.insert(new Profile(L"IPE 400", 400));
    for (int i = 0; i < 1500; ++i)
    {
        largeTree.insert(new Profile(L"", i));
    }

    letters.startValue = L"H";
    letters.firstCharacter = L"A";
    letters.range = 26;
    letters.excludedCharacters = L"IO";
    letters.maxCount = 40;
    counter.setDataFrom(letters);
    counter.increment();
    digits.rangeName = L"digits";
    digits.firstSymbol = L"0";
    digits.symbolCount = 10;
    digits.defaultStart = L"98";
    parts.setNumberingPrefix(L"P");
    parts.setNumberingSufix(L"-S235");
    parts.overrideDataRange(digits, static_cast<eNumberingType>(3));
    parts.getNextNumber();

    pattern.setRegularExpression(L"(HE[ABM]|IPE) *(\\d+)");
    section.setDSTVType(eDSTV_I);
    section.setH1(190.0);
    section.setB1(200.0);
    section.setTS(6.5);
    section.setALPHA_S(0.25);

    idlePool.QueueTask(check, &profile);
    idlePool.QueueTask(measure, nullptr);

    qelProcessEvolutionManager* manager = qelProcessEvolutionManager::getProcessEvolutionManager();
    manager->EnableCancel(true);
    manager->registerDisplay(&display);
    manager->registerProcess(L"List of parts");
    manager->increaseProgress(manager->registerProcess(L"Numbering"), 40);
    qelProgressCtrl::appendOutputWindow(&qelProgressCtrl::m_ProgressCtrlWindowController->defaultWindow());
    qelProgressCtrl::m_ProgressCtrlWindowController->defaultWindow().switchOn();
    qelProgressCtrl::setTitle(L"Numbering of parts");
    qelProgressCtrl::setPercentage(25);

    qelDebugInterfaces::setCurrentContextInitiator(&parts);
    qelDebugInterfaces::objectConstructed(L"Beam", &profile);
    qelDebugInterfaces::objectConstructed(L"Plate", &grade);
    qelDebugInterfaces::objectDestroied(L"Beam", &profile);

    memset(wildBytes, 0xCD, sizeof wildBytes);

    if (argc != 2 || !stop(argv[1], L"Parts", profiles))
    {
        fputs("the core file could not be written\n", stderr);
        return 1;
    }
    return 0;
}
