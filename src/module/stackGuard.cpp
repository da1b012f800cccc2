// What GCC's stack protection needs: functions with a buffer keep this value behind it, and end the process when it has
// changed by the time they return.
//
// Not that of the compiler, libssp: it asks a cryptography provider for the value, which loads further DLLs under the
// loader lock.

#if defined(__MINGW32__)

#include <windows.h>

#include <stdint.h>

// NOLINTBEGIN(bugprone-reserved-identifier): the compiler's names
extern "C"
{
    // NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): set once, when the library is loaded
    uintptr_t __stack_chk_guard;

    [[noreturn]] void __stack_chk_fail();
}
// NOLINTEND(bugprone-reserved-identifier)

namespace
{
/// Before any other initialiser: a function that is under way when the value changes would seem to have been overrun.
__attribute__((constructor(101), no_stack_protector)) void setStackGuard()
{
    LARGE_INTEGER ticks;
    QueryPerformanceCounter(&ticks);
    const uintptr_t seed = reinterpret_cast<uintptr_t>(&ticks) ^ __builtin_ia32_rdtsc() ^ GetCurrentProcessId() ^
                           static_cast<uintptr_t>(ticks.QuadPart) << 20;
    // Multiplied, so that all bits depend on all. The lowest byte is 0, which a text that runs over cannot write.
    __stack_chk_guard = (seed * 0x9E3779B97F4A7C15) & ~uintptr_t{0xFF};
}
} // namespace

void __stack_chk_fail()
{
    // At once: neither handlers nor destructors may run on this stack.
    __asm__ volatile("int $0x29" : : "c"(FAST_FAIL_STACK_COOKIE_CHECK_FAILURE));
    __builtin_unreachable();
}

#endif
