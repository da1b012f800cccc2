// What the loader calls in a console program that has main().

#include "initialisers.h"
#include "securityCookie.h"

#include <stdlib.h>

#include <corecrt_startup.h>

int main(int argc, char** argv);

extern "C" __declspec(safebuffers) void mainCRTStartup()
{
    setSecurityCookie();
    _set_app_type(_crt_console_app);
    if (_configure_narrow_argv(_crt_argv_unexpanded_arguments) != 0 || _initialize_narrow_environment() != 0 ||
        !runInitialisers())
    {
        _exit(255);
    }
    exit(main(*__p___argc(), *__p___argv()));
}
