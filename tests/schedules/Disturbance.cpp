#include "schedules/Disturbance.h"

#include "support/ImportHook.h"

#include <windows.h>

#include <atomic>

using qelTest::Disturbance;
using qelTest::ImportHook;

namespace
{
// Of 256 points.
struct Style
{
    unsigned sleeps;
    unsigned yields;
    unsigned spins;
};

const Style kStyles[] = {{4, 128, 0}, {16, 0, 64}, {48, 16, 16}, {0, 64, 192}, {1, 8, 32}, {96, 0, 0}};
const uint64_t kStyleCount = sizeof kStyles / sizeof kStyles[0];
const uint64_t kLongestSpin = 4000;

std::atomic<uint64_t> seedOfSchedule(0);
std::atomic<uint64_t> schedule(0);
std::atomic<uint64_t> threads(0);
std::atomic<uint64_t> pointCount(0);
std::atomic<uint64_t> yieldCount(0);
std::atomic<uint64_t> sleepCount(0);

/// The schedule, the thread and the point of the calling thread, kept in the value of its slot itself: thread-local
/// variables of the C++ runtime allocate.
const DWORD slot = TlsAlloc();
const int kPointBits = 24;
const int kThreadBits = 16;

uint64_t nextPlace()
{
    const uint64_t now = schedule & 0xFFFFFF;
    auto place = reinterpret_cast<uint64_t>(TlsGetValue(slot));
    if (place >> (kPointBits + kThreadBits) != now)
    {
        place = now << (kPointBits + kThreadBits) | (++threads & 0xFFFF) << kPointBits;
    }
    TlsSetValue(slot, reinterpret_cast<void*>(place + 1));
    return place & ((1ull << (kPointBits + kThreadBits)) - 1);
}

void spin(uint64_t rounds)
{
    for (volatile uint64_t i = 0; i < rounds;)
    {
        i = i + 1;
    }
}

void WINAPI initializeLock(CRITICAL_SECTION* section)
{
    Disturbance::point();
    InitializeCriticalSection(section);
}

void WINAPI enterLock(CRITICAL_SECTION* section)
{
    Disturbance::point();
    EnterCriticalSection(section);
    Disturbance::point();
}

BOOL WINAPI tryLock(CRITICAL_SECTION* section)
{
    Disturbance::point();
    const BOOL entered = TryEnterCriticalSection(section);
    Disturbance::point();
    return entered;
}

void WINAPI leaveLock(CRITICAL_SECTION* section)
{
    Disturbance::point();
    LeaveCriticalSection(section);
    Disturbance::point();
}

void WINAPI deleteLock(CRITICAL_SECTION* section)
{
    Disturbance::point();
    DeleteCriticalSection(section);
}

HANDLE WINAPI createEvent(SECURITY_ATTRIBUTES* security, BOOL manual, BOOL signalled, const wchar_t* name)
{
    Disturbance::point();
    return CreateEventW(security, manual, signalled, name);
}

BOOL WINAPI setEvent(HANDLE event)
{
    Disturbance::point();
    const BOOL done = SetEvent(event);
    Disturbance::point();
    return done;
}

BOOL WINAPI resetEvent(HANDLE event)
{
    Disturbance::point();
    const BOOL done = ResetEvent(event);
    Disturbance::point();
    return done;
}

DWORD WINAPI waitForOne(HANDLE handle, DWORD time)
{
    Disturbance::point();
    const DWORD result = WaitForSingleObject(handle, time);
    Disturbance::point();
    return result;
}

DWORD WINAPI waitForSeveral(DWORD count, const HANDLE* handles, BOOL all, DWORD time)
{
    Disturbance::point();
    const DWORD result = WaitForMultipleObjects(count, handles, all, time);
    Disturbance::point();
    return result;
}

HANDLE WINAPI createThread(SECURITY_ATTRIBUTES* security, SIZE_T stack, LPTHREAD_START_ROUTINE start, void* argument,
                           DWORD flags, DWORD* id)
{
    Disturbance::point();
    const HANDLE thread = CreateThread(security, stack, start, argument, flags, id);
    Disturbance::point();
    return thread;
}

BOOL WINAPI findModule(DWORD flags, const wchar_t* name, HMODULE* module)
{
    Disturbance::point();
    return GetModuleHandleExW(flags, name, module);
}

void WINAPI endThread(HMODULE module, DWORD code)
{
    Disturbance::point();
    FreeLibraryAndExitThread(module, code);
}

BOOL WINAPI closeHandle(HANDLE handle)
{
    Disturbance::point();
    return CloseHandle(handle);
}

/// Never ends: the import table goes with the library.
template <class Function> void hook(const char* name, Function* replacement)
{
    (void)new ImportHook(name, replacement);
}
} // namespace

uint64_t qelTest::mixed(uint64_t a, uint64_t b)
{
    uint64_t value = a + 0x9E3779B97F4A7C15 * (b + 1);
    value = (value ^ value >> 30) * 0xBF58476D1CE4E5B9;
    value = (value ^ value >> 27) * 0x94D049BB133111EB;
    return value ^ value >> 31;
}

void Disturbance::begin(uint64_t seed)
{
    seedOfSchedule = seed;
    threads = 0;
    ++schedule;
}

void Disturbance::hookLibrary()
{
    hook("InitializeCriticalSection", &initializeLock);
    hook("EnterCriticalSection", &enterLock);
    hook("TryEnterCriticalSection", &tryLock);
    hook("LeaveCriticalSection", &leaveLock);
    hook("DeleteCriticalSection", &deleteLock);
    hook("CreateEventW", &createEvent);
    hook("SetEvent", &setEvent);
    hook("ResetEvent", &resetEvent);
    hook("WaitForSingleObject", &waitForOne);
    hook("WaitForMultipleObjects", &waitForSeveral);
    hook("CreateThread", &createThread);
    hook("GetModuleHandleExW", &findModule);
    hook("FreeLibraryAndExitThread", &endThread);
    hook("CloseHandle", &closeHandle);
}

void Disturbance::point()
{
    ++pointCount;
    const uint64_t seed = seedOfSchedule;
    const uint64_t drawn = mixed(seed, nextPlace());
    const Style& style = kStyles[seed % kStyleCount];
    const auto dice = static_cast<unsigned>(drawn & 0xFF);
    if (dice < style.sleeps)
    {
        ++sleepCount;
        Sleep(1);
    }
    else if (dice < style.sleeps + style.yields)
    {
        ++yieldCount;
        SwitchToThread();
    }
    else if (dice < style.sleeps + style.yields + style.spins)
    {
        spin((drawn >> 8) % kLongestSpin);
    }
}

uint64_t Disturbance::points()
{
    return pointCount;
}

uint64_t Disturbance::yields()
{
    return yieldCount;
}

uint64_t Disturbance::sleeps()
{
    return sleepCount;
}
