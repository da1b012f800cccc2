// Variables of a thread, and objects inside functions that are made once whichever thread comes first.

#include <windows.h>

#include <limits.h>

extern "C"
{
    ULONG _tls_index = 0;

    // The linker sorts these sections by what stands behind the $: variables of threads lie between the two.
#pragma data_seg(".tls")
    char _tls_start = 0;
#pragma data_seg(".tls$ZZZ")
    char _tls_end = 0;
#pragma data_seg()

    // No functions for threads that begin and end: nothing here has thread-local objects with constructors.
    PIMAGE_TLS_CALLBACK qel_no_tls_callbacks[1] = {};

#pragma const_seg(".rdata$T")
    // The linker enters the object of this name into the image's header.
    extern const IMAGE_TLS_DIRECTORY _tls_used;
    const IMAGE_TLS_DIRECTORY _tls_used = {reinterpret_cast<ULONG_PTR>(&_tls_start),
                                           reinterpret_cast<ULONG_PTR>(&_tls_end),
                                           reinterpret_cast<ULONG_PTR>(&_tls_index),
                                           reinterpret_cast<ULONG_PTR>(qel_no_tls_callbacks),
                                           0,
                                           {}};
#pragma const_seg()

    // An object's guard is 0 before it is made, -1 while a thread makes it, and afterwards the epoch in which it was
    // ready. Code compares that with the epoch its thread has seen last, and calls in here only if it is later.
    int _Init_global_epoch = INT_MIN;
    __declspec(thread) int _Init_thread_epoch = INT_MIN;
}

namespace
{
const int kBeingMade = -1;
SRWLOCK lock = SRWLOCK_INIT;
CONDITION_VARIABLE madeOrGivenUp = CONDITION_VARIABLE_INIT;
} // namespace

extern "C" void __cdecl _Init_thread_header(int* guard)
{
    AcquireSRWLockExclusive(&lock);
    while (*guard == kBeingMade)
    {
        SleepConditionVariableSRW(&madeOrGivenUp, &lock, INFINITE, 0);
    }
    if (*guard == 0)
    {
        *guard = kBeingMade; // by this thread
    }
    else
    {
        _Init_thread_epoch = _Init_global_epoch;
    }
    ReleaseSRWLockExclusive(&lock);
}

extern "C" void __cdecl _Init_thread_footer(int* guard)
{
    AcquireSRWLockExclusive(&lock);
    *guard = ++_Init_global_epoch;
    _Init_thread_epoch = _Init_global_epoch;
    ReleaseSRWLockExclusive(&lock);
    WakeAllConditionVariable(&madeOrGivenUp);
}

extern "C" void __cdecl _Init_thread_abort(int* guard)
{
    AcquireSRWLockExclusive(&lock);
    *guard = 0;
    ReleaseSRWLockExclusive(&lock);
    WakeAllConditionVariable(&madeOrGivenUp);
}
