// What the loader calls in a console program that has wmain().

#include "initialisers.h"
#include "securityCookie.h"

#include <stdlib.h>

#include <corecrt_startup.h>

extern "C" int wmain(int argc, wchar_t** argv);

extern "C" __declspec(safebuffers) void wmainCRTStartup()
{
    setSecurityCookie();
    _set_app_type(_crt_console_app);
    if (_configure_wide_argv(_crt_argv_unexpanded_arguments) != 0 || _initialize_wide_environment() != 0 ||
        !runInitialisers())
    {
        _exit(255);
    }
    exit(wmain(*__p___argc(), *__p___wargv()));
}
