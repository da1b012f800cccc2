#include "progress/ProgressDialog.h"

#include "module/Module.h"
#include "progress/resource.h"
#include "qelString.h"

#include <commctrl.h>

bool ProgressDialog::open(const wchar_t* title)
{
    close();
    const INITCOMMONCONTROLSEX classes = {sizeof(classes), ICC_PROGRESS_CLASS};
    InitCommonControlsEx(&classes);
    const HWND dialog = CreateDialogParamW(qelModule::handle(), MAKEINTRESOURCEW(IDD_PROGRESS), nullptr, procedure, 0);
    // The host runs while the dialog is made. It may have closed it again, or opened another one in its place.
    if (dialog == nullptr || dialog != m_dialog)
    {
        return false;
    }
    setTitle(title);
    ShowWindow(m_dialog, SW_SHOWNORMAL);
    return true;
}

void ProgressDialog::close()
{
    if (isThere())
    {
        const HWND dialog = m_dialog;
        // First, since what the host hears of the end may lead it back here.
        forget();
        DestroyWindow(dialog);
    }
}

void ProgressDialog::setTitle(const wchar_t* title)
{
    if (isThere())
    {
        SetDlgItemTextW(m_dialog, IDC_PROGRESS_TITLE, title);
    }
}

void ProgressDialog::setPercentage(int percent)
{
    if (!isThere())
    {
        return;
    }
    if (m_progressBar != nullptr)
    {
        SendMessageW(m_progressBar, PBM_SETPOS, static_cast<WPARAM>(percent), 0);
    }
    SetDlgItemTextW(m_dialog, IDC_PROGRESS_PERCENT, qelString().format(L"%d%%", percent).getStringW());
}

INT_PTR CALLBACK ProgressDialog::procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM)
{
    switch (message)
    {
    case WM_CREATE:
        return TRUE;

    case WM_INITDIALOG:
        // Kept at once: a message box below lets the host run, which may call anything.
        m_dialog = dialog;
        createBar(dialog);
        return TRUE;

    case WM_COMMAND:
        if (LOWORD(wParam) == IDOK || LOWORD(wParam) == IDCANCEL)
        {
            EndDialog(dialog, LOWORD(wParam));
            // A modeless dialog is only hidden by that. The host hears of it and may have closed the dialog itself.
            if (dialog == m_dialog)
            {
                close();
            }
            return TRUE;
        }
        return FALSE;

    case WM_DESTROY:
        // Whoever destroys it, no handle of it is used afterwards.
        if (dialog == m_dialog)
        {
            forget();
        }
        return FALSE;

    default:
        return FALSE;
    }
}

void ProgressDialog::createBar(HWND dialog)
{
    const RECT place = {10, 40, 300, 60};
    HWND bar = CreateWindowExW(0, PROGRESS_CLASSW, nullptr, WS_CHILD | WS_VISIBLE | PBS_SMOOTH, place.left, place.top,
                               place.right - place.left, place.bottom - place.top, dialog, nullptr, qelModule::handle(),
                               nullptr);
    m_progressBar = bar;
    if (bar == nullptr)
    {
        MessageBoxW(nullptr, L"Progress Bar not created!", L"", MB_OK);
        return;
    }
    SendMessageW(bar, PBM_SETRANGE, 0, MAKELPARAM(0, 100));
    SendMessageW(bar, PBM_SETSTEP, 1, 0);
}

bool ProgressDialog::isThere()
{
    // A thread that ends takes its windows with it and tells nobody.
    if (m_dialog != nullptr && !IsWindow(m_dialog))
    {
        forget();
    }
    return m_dialog != nullptr;
}

void ProgressDialog::forget()
{
    m_dialog = nullptr;
    m_progressBar = nullptr;
}
