#include "progress/ProgressDialog.h"

#include "module/Module.h"
#include "progress/resource.h"

#include <commctrl.h>

namespace
{
// In pixels; the template is in dialog units.
const RECT barPlace = {10, 40, 300, 60};
const LONG gapBelowBar = 4; // what the template has at 120 dpi

/**
 * Widens the dialog if the bar would be clipped, and moves the percentage below the bar if the two would overlap: both
 * happen at 96 dpi.
 */
void makeRoom(HWND dialog)
{
    RECT client = {};
    GetClientRect(dialog, &client);
    const LONG missing = barPlace.right + barPlace.left - client.right;
    const LONG wider = missing > 0 ? missing : 0;

    const HWND percentage = GetDlgItem(dialog, IDC_PROGRESS_PERCENT);
    RECT place = {};
    GetWindowRect(percentage, &place);
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&place), 2);
    RECT overlap = {};
    const bool isCovered = IntersectRect(&overlap, &place, &barPlace) != FALSE;
    const LONG lower = isCovered ? barPlace.bottom + gapBelowBar - place.top : 0;

    const UINT sameOrder = SWP_NOZORDER | SWP_NOACTIVATE;
    SetWindowPos(percentage, nullptr, place.left, place.top + lower, 0, 0, SWP_NOSIZE | sameOrder);
    RECT outer = {};
    GetWindowRect(dialog, &outer);
    SetWindowPos(dialog, nullptr, 0, 0, outer.right - outer.left + wider, outer.bottom - outer.top + lower,
                 SWP_NOMOVE | sameOrder);
}
} // namespace

bool ProgressDialog::open(const wchar_t* title)
{
    close();
    const INITCOMMONCONTROLSEX classes = {sizeof(classes), ICC_PROGRESS_CLASS};
    InitCommonControlsEx(&classes);
    const HWND dialog = CreateDialogParamW(qelModule::handle(), MAKEINTRESOURCEW(IDD_PROGRESS), nullptr, procedure, 0);
    // Messages during the creation of a dialog, and the message box of createBar(), can run host code: hooks and
    // timers. That code may have closed the dialog or opened another one.
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
        // First, since messages sent while destroying the dialog may re-enter this function.
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
    wchar_t text[16];
    wsprintfW(text, L"%d%%", percent);
    SetDlgItemTextW(m_dialog, IDC_PROGRESS_PERCENT, text);
}

INT_PTR CALLBACK ProgressDialog::procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM)
{
    switch (message)
    {
    case WM_CREATE:
        return TRUE;

    case WM_INITDIALOG:
        // Stored at once: a message box below runs host code, which may call anything.
        m_dialog = dialog;
        SetWindowLongPtrW(dialog, DWLP_USER, mark());
        if (!isThere())
        {
            // Without the mark it would count as somebody else's, and never be closed.
            DestroyWindow(dialog);
            return TRUE;
        }
        createBar(dialog);
        return TRUE;

    case WM_COMMAND:
        if (LOWORD(wParam) == IDOK || LOWORD(wParam) == IDCANCEL)
        {
            EndDialog(dialog, LOWORD(wParam));
            // That only hides a modeless dialog. Host code that ran meanwhile may have closed it itself.
            if (dialog == m_dialog)
            {
                close();
            }
            return TRUE;
        }
        return FALSE;

    default:
        return FALSE;
    }
}

void ProgressDialog::createBar(HWND dialog)
{
    HWND bar = CreateWindowExW(0, PROGRESS_CLASSW, nullptr, WS_CHILD | WS_VISIBLE | PBS_SMOOTH, barPlace.left,
                               barPlace.top, barPlace.right - barPlace.left, barPlace.bottom - barPlace.top, dialog,
                               nullptr, qelModule::handle(), nullptr);
    m_progressBar = bar;
    if (bar == nullptr)
    {
        MessageBoxW(nullptr, L"Progress Bar not created!", L"", MB_OK);
        return;
    }
    SendMessageW(bar, PBM_SETRANGE, 0, MAKELPARAM(0, 100));
    SendMessageW(bar, PBM_SETSTEP, 1, 0);
    makeRoom(dialog);
}

bool ProgressDialog::isThere()
{
    // Anybody can destroy the dialog, and a thread that ends destroys its windows without notice. The handle may belong
    // to another window by now.
    if (m_dialog != nullptr && GetWindowLongPtrW(m_dialog, DWLP_USER) != mark())
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

/// A value that no other window has there.
LONG_PTR ProgressDialog::mark()
{
    return reinterpret_cast<LONG_PTR>(&m_dialog);
}
