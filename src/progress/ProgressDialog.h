// The one progress dialog of the process. Not part of the public interface.
#ifndef QEL_PROGRESS_DIALOG_H
#define QEL_PROGRESS_DIALOG_H

#include <windows.h>

/// All that touches window handles. With no dialog on the screen, every call but open() does nothing.
class ProgressDialog
{
public:
    ProgressDialog() = delete;

    /// Shows a fresh dialog in place of one that is there; false when it cannot be made.
    static bool open(const wchar_t* title);

    static void close();
    static void setTitle(const wchar_t* title);
    static void setPercentage(int percent);

private:
    static INT_PTR CALLBACK procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
    static void createBar(HWND dialog);

    static bool isThere();
    static void forget();
    static LONG_PTR mark();

    static HWND m_dialog;      ///< null when there is none
    static HWND m_progressBar; ///< null when there is none, also when it could not be made
};

#endif
