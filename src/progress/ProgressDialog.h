// The one progress dialog of the process. Not part of the public interface.
#ifndef QEL_PROGRESS_DIALOG_H
#define QEL_PROGRESS_DIALOG_H

#include <windows.h>

/// Does everything with window handles. Without a dialog, every call but open() does nothing.
class ProgressDialog
{
public:
    ProgressDialog() = delete;

    /// Replaces the dialog, if any, with a new one; false when it cannot be created.
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
    static HWND m_progressBar; ///< null when there is none or it could not be created
};

#endif
