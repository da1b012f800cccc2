#include "faults/Operations.h"

#include "qelDebugInterfaces.h"
#include "qelProgressCtrl.h"

#include "progress/ScreenDialogs.h"

#include <commctrl.h>

using namespace qelTest;

namespace
{
/// Destroys what the library has left, and says so.
std::string leftovers()
{
    std::string said;
    for (HWND dialog : dialogsOf(GetCurrentThreadId()))
    {
        said = ", stays open";
        DestroyWindow(dialog);
    }
    pumpMessages();
    return said;
}

std::string seen(int activity)
{
    const HWND dialog = onlyDialog();
    if (dialog == nullptr)
    {
        return outcome(activity, "no dialog");
    }
    const std::string text = plain(titleOf(dialog).c_str()) + " / " + plain(percentTextOf(dialog).c_str());
    const HWND bar = barOf(dialog);
    const std::string place = bar == nullptr ? "missing" : std::to_string(SendMessageW(bar, PBM_GETPOS, 0, 0));
    return outcome(activity, text + " / bar " + place);
}

std::string shown()
{
    machine->boxes = 0;
    qelProgressCtrlWindow window;
    const int activity = window.activate(L"Title");
    window.setPercentage(42);
    window.setTitle(L"New");
    const std::string said = seen(activity);
    window.reset();
    return said + (machine->boxes == 0 ? "" : ", box") + leftovers();
}

std::string cancelled()
{
    qelProgressCtrlWindow window;
    window.activate(L"Title");
    SendMessageW(onlyDialog(), WM_COMMAND, IDCANCEL, 0);
    const std::string said = seen(window.isActive());
    window.reset();
    return said + leftovers();
}

std::string told()
{
    machine->boxes = 0;
    qelWinMessage::messageBox(L"text");
    return std::to_string(machine->boxes) + " box";
}
} // namespace

Area qelTest::windowOperations()
{
    return {
        "Windows",
        {
            Operation("qelProgressCtrlWindow::activate, setPercentage, setTitle, reset", "1, New / 42% / bar 42", shown)
                .fails("CreateDialogParamW", "0, no dialog")
                .fails("CreateWindowExW", "1, New / 42% / bar missing, box")
                .fails("SetWindowLongPtrW", "0, no dialog")
                .fails("GetWindowLongPtrW", "0, no dialog", "1,all")
                .fails("GetWindowLongPtrW", "1, Progress of the process  / no text / bar 0, stays open", "2")
                .fails("GetWindowLongPtrW", "1, Title / no text / bar 0, stays open", "3")
                .fails("GetWindowLongPtrW", "1, Title / 42% / bar 42, stays open", "4")
                .fails("GetWindowLongPtrW", "1, New / 42% / bar 42, stays open", "5")
                .fails("SetDlgItemTextW", "1, New / no text / bar 42", "2")
                .fails("SetDlgItemTextW", "1, Title / 42% / bar 42", "3")
                .fails("SetDlgItemTextW", "1, Progress of the process  / no text / bar 42", "all")
                .fails("SendMessageW", "1, New / 42% / bar 0", "3,all")
                .fails("DestroyWindow", "1, New / 42% / bar 42, stays open")
                .ignores({"InitCommonControlsEx", "GetDlgItem", "GetClientRect", "GetWindowRect", "SetWindowPos",
                          "SetDlgItemTextW", "SendMessageW"}),
            Operation("qelProgressCtrlWindow, closed by the user", "1, no dialog", cancelled)
                .fails("CreateDialogParamW", "0, no dialog")
                .fails("SetWindowLongPtrW", "0, no dialog")
                .fails("GetWindowLongPtrW", "0, no dialog", "1,all")
                .fails("GetWindowLongPtrW", "1, Progress of the process  / no text / bar 0, stays open", "2")
                .fails("GetWindowLongPtrW", "1, Title / no text / bar 0, stays open", "3")
                .fails("DestroyWindow", "1, Title / no text / bar 0, stays open")
                .ignores({"InitCommonControlsEx", "CreateWindowExW", "SendMessageW", "GetClientRect", "GetDlgItem",
                          "GetWindowRect", "SetWindowPos", "SetDlgItemTextW", "EndDialog"}),
            Operation("qelWinMessage::messageBox", "1 box", told).fails("MessageBoxW", "0 box"),
        },
    };
}
