#include "docs/Examples.h"

#include "qelLogfile.h"
#include "qelProductDefines.h"
#include "qelProgressCtrl.h"
#include "qelZClipping.h"

namespace
{
const wchar_t kInstallation[] = L"Software\\Kelvara\\Orvalis\\2020";
const wchar_t kConnections[] = L"Software\\Kelvara\\Varnel\\DatabaseConnections";
const wchar_t kDriver[] = L"Microsoft Access Driver (*.mdb, *.accdb)";

std::wstring currentFolder()
{
    wchar_t path[MAX_PATH] = {};
    GetCurrentDirectoryW(MAX_PATH, path);
    return path;
}
} // namespace

Examples::Examples()
    : m_installation(HKEY_LOCAL_MACHINE, kInstallation)
    , m_installationOfUser(HKEY_CURRENT_USER, kInstallation)
    , m_connections(HKEY_LOCAL_MACHINE, kConnections)
    , m_connectionsOfUser(HKEY_CURRENT_USER, kConnections)
    , m_drivers(HKEY_LOCAL_MACHINE, L"Software\\ODBC\\ODBCINST.INI\\ODBC Drivers")
    , m_folderBefore(currentFolder())
{
    m_installation.setText(L"BinPath", L"D:\\Bin\\");
    m_installation.setText(L"DataPath", L"D:\\Data\\");
    m_connections.setText(L"PelionProfiles2020",
                          L"DRIVER={" + std::wstring(kDriver) + L"};UID=;PWD=;DBQ=D:\\Data\\PelionProfiles2020.mdb");
    m_drivers.setText(kDriver, L"Installed");
    SetCurrentDirectoryW(m_folder.path().c_str());
}

Examples::~Examples()
{
    qelLogfile::setLogStatus(0);
    qelZClipping::kClipLowerDefault = -20.0;
    qelZClipping::kClipUpperDefault = 20.0;
    qelProgressCtrl::reset();
    qelProgressCtrl::m_ProgressCtrlWindowController->defaultWindow().switchOff();
    SetCurrentDirectoryW(m_folderBefore.c_str());
}

void number(int) {}

void loadModel() {}

void pumpMessages()
{
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
    {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}
