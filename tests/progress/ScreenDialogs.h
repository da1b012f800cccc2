// The dialogs on the screen that belong to a thread of this process.
#ifndef QEL_TEST_SCREEN_DIALOGS_H
#define QEL_TEST_SCREEN_DIALOGS_H

#include <windows.h>

#include <string>
#include <vector>

namespace qelTest
{
inline std::wstring classOf(HWND window)
{
    wchar_t name[64] = {};
    GetClassNameW(window, name, 64);
    return name;
}

inline std::wstring textOf(HWND window)
{
    std::wstring text(static_cast<size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
    text.resize(static_cast<size_t>(GetWindowTextW(window, &text[0], static_cast<int>(text.size()))));
    return text;
}

/// Visible or not.
inline std::vector<HWND> dialogsOf(DWORD thread)
{
    std::vector<HWND> dialogs;
    EnumThreadWindows(
        thread,
        [](HWND window, LPARAM list) -> BOOL {
            if (classOf(window) == L"#32770")
            {
                reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
            }
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&dialogs));
    return dialogs;
}

/// The one dialog of the calling thread; null when there is none, or more than one.
inline HWND onlyDialog()
{
    const std::vector<HWND> dialogs = dialogsOf(GetCurrentThreadId());
    return dialogs.size() == 1 ? dialogs.front() : nullptr;
}

inline std::wstring titleOf(HWND dialog)
{
    return textOf(GetDlgItem(dialog, 1002));
}

inline std::wstring percentTextOf(HWND dialog)
{
    return textOf(GetDlgItem(dialog, 1003));
}

inline HWND barOf(HWND dialog)
{
    return FindWindowExW(dialog, nullptr, L"msctls_progress32", nullptr);
}

inline void pumpMessages()
{
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
    {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}
} // namespace qelTest

#endif
