// Prints where the progress dialog puts everything at this screen's resolution, in pixels of its client area.

#include "ScreenDialogs.h"
#include "qelProgressCtrl.h"

#include <windows.h>

#include <cstdio>

namespace
{
void print(const char* what, const RECT& place)
{
    std::printf("%s %ld,%ld %ldx%ld / ", what, place.left, place.top, place.right - place.left,
                place.bottom - place.top);
}

RECT placeIn(HWND dialog, HWND child)
{
    RECT place = {};
    GetWindowRect(child, &place);
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&place), 2);
    return place;
}
} // namespace

int main()
{
    // Otherwise the system makes every screen look like one of 96 dpi.
    SetProcessDPIAware();
    qelProgressCtrlWindow window;
    if (window.activate(L"Title") != 1)
    {
        return 1;
    }
    const HWND dialog = qelTest::onlyDialog();
    RECT units = {0, 0, 4, 8};
    MapDialogRect(dialog, &units);
    RECT client = {};
    GetClientRect(dialog, &client);
    print("units", units);
    print("dialog", client);
    print("title", placeIn(dialog, GetDlgItem(dialog, 1002)));
    print("bar", placeIn(dialog, qelTest::barOf(dialog)));
    print("percentage", placeIn(dialog, GetDlgItem(dialog, 1003)));
    window.reset();
    return 0;
}
