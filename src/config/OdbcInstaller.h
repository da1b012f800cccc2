// The ODBC installer library, loaded at run time. Not part of the public interface.
#ifndef QEL_ODBC_INSTALLER_H
#define QEL_ODBC_INSTALLER_H

#include <windows.h>

class OdbcInstaller
{
public:
    /**
     * SQLGetInstalledDriversW: fills `names` with up to `capacity` units, a list of zero-terminated names that an empty
     * one ends. Returns false when that fails; a library that is missing or lacks the function is also reported to the
     * user, in a message box and on every call.
     */
    static bool getInstalledDrivers(wchar_t* names, WORD capacity);

private:
    /// Loads the library unless that is done; false when it cannot be.
    static bool load();

    static HMODULE m_library; ///< kept once loaded, never released
};

#endif
