// The ODBC installer library, loaded at run time. Not part of the public interface.
#ifndef QEL_ODBC_INSTALLER_H
#define QEL_ODBC_INSTALLER_H

#include <windows.h>

class OdbcInstaller
{
public:
    /**
     * SQLGetInstalledDriversW: fills `names` with up to `capacity` units, a list of null-terminated names ended by an
     * empty one. Returns false on failure; a library that is missing or lacks the function is also reported in a
     * message box, on every call.
     */
    static bool getInstalledDrivers(wchar_t* names, WORD capacity);

private:
    /// Loads the library if necessary; false on failure.
    static bool load();

    static HMODULE m_library; ///< kept once loaded, never released
};

#endif
