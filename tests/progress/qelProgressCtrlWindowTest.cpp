// The built-in output window: real dialogs on a real display.

#include "ScreenDialogs.h"
#include "qelProgressCtrl.h"
#include "support/FailingAllocation.h"
#include "support/ImportHook.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <commctrl.h>

#include <atomic>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

using namespace qelTest;

namespace
{
static_assert(std::has_virtual_destructor<qelProgressCtrlWindow>::value, "destroyed through its virtual table");
using Window = qelProgressCtrlWindow;
static_assert(std::is_same<decltype(&Window::activate), int (Window::*)(qelString)>::value &&
                  std::is_same<decltype(&Window::reset), int (Window::*)()>::value &&
                  std::is_same<decltype(&Window::setPercentage), int (Window::*)(int, int)>::value &&
                  std::is_same<decltype(&Window::setTitle), int (Window::*)(const qelString&)>::value,
              "what windows of a host replace");

std::wstring keptTitle(const qelProgressCtrlWindow& window)
{
    qelString title;
    window.getTitle(title);
    return title.getStringW();
}

int keptPercent(const qelProgressCtrlWindow& window)
{
    int percent = -1;
    window.getPercentage(percent);
    return percent;
}

int positionOf(HWND dialog)
{
    return static_cast<int>(SendMessageW(barOf(dialog), PBM_GETPOS, 0, 0));
}

RECT placeIn(HWND dialog, HWND child)
{
    RECT place = {};
    GetWindowRect(child, &place);
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&place), 2);
    return place;
}

bool equal(const RECT& one, const RECT& other)
{
    return EqualRect(&one, &other) != FALSE;
}

// Position and size are rounded each for itself.
RECT pixels(HWND dialog, LONG left, LONG top, LONG width, LONG height)
{
    RECT scaled = {left, top, width, height};
    MapDialogRect(dialog, &scaled);
    return {scaled.left, scaled.top, scaled.left + scaled.right, scaled.top + scaled.bottom};
}

class qelProgressWindow : public testing::Test
{
protected:
    ~qelProgressWindow() override
    {
        // One that never was active may close the dialog in the place of one that is gone.
        qelProgressCtrlWindow closing;
        closing.setActivity(1);
        closing.reset();
        pumpMessages();
        EXPECT_TRUE(dialogsOf(GetCurrentThreadId()).empty());
    }

    qelProgressCtrlWindow window;
};

// ---- Templates

const WORD kGerman = 0x0407;

/// Reads a dialog template as it lies in the resources of the DLL.
class Template
{
public:
    struct Control
    {
        DWORD style;
        DWORD extendedStyle;
        short x, y, cx, cy;
        WORD id;
        std::wstring className;
        std::wstring text;
    };

    explicit Template(int number)
    {
        const HMODULE module = GetModuleHandleW(L"VarnelQELRoots.dll");
        const HRSRC found = FindResourceExW(module, MAKEINTRESOURCEW(5), MAKEINTRESOURCEW(number), kGerman);
        exists = found != nullptr;
        if (exists)
        {
            m_at = static_cast<const unsigned char*>(LockResource(LoadResource(module, found)));
            read();
        }
    }

    bool exists;
    DWORD style = 0;
    DWORD extendedStyle = 0;
    short x = 0, y = 0, cx = 0, cy = 0;
    std::wstring menu, className, caption, font;
    WORD fontSize = 0;
    std::vector<Control> controls;

private:
    void read()
    {
        style = number<DWORD>();
        extendedStyle = number<DWORD>();
        const WORD count = number<WORD>();
        x = number<short>();
        y = number<short>();
        cx = number<short>();
        cy = number<short>();
        menu = text();
        className = text();
        caption = text();
        if ((style & DS_SETFONT) != 0)
        {
            fontSize = number<WORD>();
            font = text();
        }
        for (WORD i = 0; i < count; ++i)
        {
            m_at += (4 - reinterpret_cast<uintptr_t>(m_at) % 4) % 4;
            Control control = {};
            control.style = number<DWORD>();
            control.extendedStyle = number<DWORD>();
            control.x = number<short>();
            control.y = number<short>();
            control.cx = number<short>();
            control.cy = number<short>();
            control.id = number<WORD>();
            control.className = text();
            control.text = text();
            EXPECT_EQ(number<WORD>(), 0);
            controls.push_back(control);
        }
    }

    template <class T> T number()
    {
        T value;
        std::memcpy(&value, m_at, sizeof(value));
        m_at += sizeof(value);
        return value;
    }

    // A text, or a number behind 0xFFFF: of the classes, 0x82 is "static".
    std::wstring text()
    {
        std::wstring result;
        wchar_t unit = number<wchar_t>();
        if (unit == 0xFFFF)
        {
            return number<WORD>() == 0x82 ? L"static" : L"?";
        }
        for (; unit != 0; unit = number<wchar_t>())
        {
            result += unit;
        }
        return result;
    }

    const unsigned char* m_at = nullptr;
};

// Names of window classes have no case.
bool isStatic(const std::wstring& className)
{
    return _wcsicmp(className.c_str(), L"static") == 0;
}

void expectControl(const Template::Control& control, WORD id, DWORD style, const wchar_t* text)
{
    EXPECT_EQ(control.id, id);
    EXPECT_TRUE(isStatic(control.className)) << control.className;
    EXPECT_EQ(control.style, style);
    EXPECT_EQ(control.extendedStyle, 0U);
    EXPECT_EQ(control.text, text);
}

TEST(qelProgressTemplates, DescribeTheDialog)
{
    const Template dialog(101);
    ASSERT_TRUE(dialog.exists);
    EXPECT_EQ(dialog.style & ~static_cast<DWORD>(DS_SETFONT),
              static_cast<DWORD>(DS_MODALFRAME) | WS_POPUP | WS_VISIBLE);
    EXPECT_EQ(dialog.extendedStyle, 0U);
    EXPECT_EQ(dialog.cx, 169);
    EXPECT_EQ(dialog.cy, 48);
    EXPECT_EQ(dialog.menu + dialog.className + dialog.caption, L"");
    EXPECT_EQ(dialog.font, L"MS Sans Serif");
    EXPECT_EQ(dialog.fontSize, 8);

    ASSERT_EQ(dialog.controls.size(), 2U);
    const Template::Control& title = dialog.controls[0];
    expectControl(title, 1002, WS_CHILD | WS_VISIBLE | SS_CENTER, L"Progress of the process ");
    EXPECT_EQ((std::vector<int>{title.x, title.y, title.cx, title.cy}), (std::vector<int>{7, 4, 158, 8}));
    const Template::Control& percent = dialog.controls[1];
    expectControl(percent, 1003, WS_CHILD | WS_VISIBLE | SS_CENTER | SS_SUNKEN, L"");
    EXPECT_EQ((std::vector<int>{percent.x, percent.y, percent.cx, percent.cy}), (std::vector<int>{46, 32, 78, 8}));
}

TEST(qelProgressTemplates, HoldAPaneThatNothingUses)
{
    const Template pane(103);
    ASSERT_TRUE(pane.exists);
    EXPECT_NE(pane.style & WS_CHILD, 0U);
    EXPECT_EQ(pane.style & (WS_POPUP | WS_CAPTION), 0U);
    EXPECT_EQ(pane.cx, 140);
    EXPECT_EQ(pane.cy, 42);
    EXPECT_EQ(pane.font, L"MS Sans Serif");
    EXPECT_EQ(pane.fontSize, 8);
    ASSERT_EQ(pane.controls.size(), 2U);
    EXPECT_EQ(pane.controls[0].text, L"Progress of the process ");
    EXPECT_TRUE(isStatic(pane.controls[0].className));
    EXPECT_EQ(pane.controls[1].id, 1000);
    EXPECT_EQ(pane.controls[1].text, L"0%");
    EXPECT_TRUE(isStatic(pane.controls[1].className));
}

TEST(qelProgressTemplates, AreGerman)
{
    std::vector<WORD> languages;
    for (int number : {101, 103})
    {
        EnumResourceLanguagesW(
            GetModuleHandleW(L"VarnelQELRoots.dll"), MAKEINTRESOURCEW(5), MAKEINTRESOURCEW(number),
            [](HMODULE, LPCWSTR, LPCWSTR, WORD found, LONG_PTR list) -> BOOL {
                reinterpret_cast<std::vector<WORD>*>(list)->push_back(found);
                return TRUE;
            },
            reinterpret_cast<LONG_PTR>(&languages));
    }
    EXPECT_EQ(languages, std::vector<WORD>(2, kGerman));
}

// ---- The dialog on the screen

TEST_F(qelProgressWindow, ShowsADialogLikeTheTemplate)
{
    ASSERT_EQ(window.activate(L"Numbering of parts"), 1);
    const HWND dialog = onlyDialog();
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(GetWindow(dialog, GW_OWNER), nullptr);
    EXPECT_EQ(textOf(dialog), L"");
    EXPECT_TRUE(IsWindowVisible(dialog));
    EXPECT_FALSE(IsIconic(dialog));
    const DWORD style = static_cast<DWORD>(GetWindowLongW(dialog, GWL_STYLE));
    EXPECT_EQ(style & (WS_POPUP | WS_VISIBLE), WS_POPUP | WS_VISIBLE);
    EXPECT_NE(style & DS_MODALFRAME, 0U);
    EXPECT_NE(style & WS_CAPTION, static_cast<DWORD>(WS_CAPTION));

    LOGFONTW font = {};
    const HFONT handle = reinterpret_cast<HFONT>(SendMessageW(dialog, WM_GETFONT, 0, 0));
    ASSERT_NE(GetObjectW(handle, sizeof(font), &font), 0);
    EXPECT_STREQ(font.lfFaceName, L"MS Sans Serif");

    int children = 0;
    for (HWND child = GetWindow(dialog, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT))
    {
        ++children;
    }
    EXPECT_EQ(children, 3);

    const HWND title = GetDlgItem(dialog, 1002);
    EXPECT_EQ(classOf(title), L"Static");
    EXPECT_EQ(textOf(title), L"Numbering of parts");
    EXPECT_TRUE(IsWindowVisible(title));
    EXPECT_EQ(GetWindowLongW(title, GWL_STYLE) & SS_TYPEMASK, SS_CENTER);
    EXPECT_TRUE(equal(placeIn(dialog, title), pixels(dialog, 7, 4, 158, 8)));

    const HWND percent = GetDlgItem(dialog, 1003);
    EXPECT_EQ(classOf(percent), L"Static");
    EXPECT_EQ(textOf(percent), L"");
    EXPECT_TRUE(IsWindowVisible(percent));
    EXPECT_EQ(GetWindowLongW(percent, GWL_STYLE) & (SS_TYPEMASK | SS_SUNKEN), SS_CENTER | SS_SUNKEN);
}

// Checks of other resolutions: see printDialogPlaces.
TEST_F(qelProgressWindow, GrowsWhereBarOrPercentageWouldNotBeSeen)
{
    window.activate(L"");
    const HWND dialog = onlyDialog();
    // As the template has them, in the units of this screen.
    const RECT client = pixels(dialog, 0, 0, 169, 48);
    const RECT percent = pixels(dialog, 46, 32, 78, 8);

    const LONG width = client.right < 310 ? 310 : client.right;
    const bool covered = percent.top < 60 && percent.bottom > 40;
    const LONG down = covered ? 64 - percent.top : 0;
    RECT placed = {};
    GetClientRect(dialog, &placed);
    EXPECT_TRUE(equal(placed, RECT{0, 0, width, client.bottom + down})) << placed.right << " by " << placed.bottom;
    EXPECT_TRUE(equal(placeIn(dialog, GetDlgItem(dialog, 1003)),
                      RECT{percent.left, percent.top + down, percent.right, percent.bottom + down}));
}

TEST_F(qelProgressWindow, MakesASmoothBarFromZeroToAHundred)
{
    window.activate(L"");
    const HWND dialog = onlyDialog();
    const HWND bar = barOf(dialog);
    ASSERT_NE(bar, nullptr);
    EXPECT_EQ(static_cast<DWORD>(GetWindowLongW(bar, GWL_STYLE)),
              static_cast<DWORD>(PBS_SMOOTH) | WS_CHILD | WS_VISIBLE);
    EXPECT_TRUE(equal(placeIn(dialog, bar), RECT{10, 40, 300, 60}));

    PBRANGE range = {-1, -1};
    SendMessageW(bar, PBM_GETRANGE, TRUE, reinterpret_cast<LPARAM>(&range));
    EXPECT_EQ(range.iLow, 0);
    EXPECT_EQ(range.iHigh, 100);
    EXPECT_EQ(positionOf(dialog), 0);
    SendMessageW(bar, PBM_STEPIT, 0, 0);
    EXPECT_EQ(positionOf(dialog), 1);
}

TEST_F(qelProgressWindow, ShowsEveryPercentageOnBarAndText)
{
    window.activate(L"");
    const HWND dialog = onlyDialog();
    for (int percent = 1; percent <= 100; ++percent)
    {
        EXPECT_EQ(window.setPercentage(percent), 1);
        EXPECT_EQ(positionOf(dialog), percent);
        EXPECT_EQ(percentTextOf(dialog), std::to_wstring(percent) + L"%");
    }
    EXPECT_EQ(window.setPercentage(0, 1), 1);
    EXPECT_EQ(positionOf(dialog), 0);
    EXPECT_EQ(percentTextOf(dialog), L"0%");
}

TEST_F(qelProgressWindow, ShowsAPercentageWithoutAskingForMemory)
{
    window.activate(L"Title");
    EXPECT_EQ(qelTest::failEveryAllocation([this] { EXPECT_EQ(window.setPercentage(42), 1); }, [] {}), 0);
    EXPECT_EQ(percentTextOf(onlyDialog()), L"42%");
}

TEST_F(qelProgressWindow, ShowsTitlesOfEveryKind)
{
    const std::wstring titles[] = {L"", L"Stücklisten für Träger \x2013 Übersicht", L"100%d %s",
                                   std::wstring(5000, L'x')};
    window.activate(titles[1].c_str());
    const HWND dialog = onlyDialog();
    EXPECT_EQ(titleOf(dialog), titles[1]);
    for (const std::wstring& title : titles)
    {
        EXPECT_EQ(window.setTitle(title.c_str()), 1);
        EXPECT_EQ(titleOf(dialog), title);
        EXPECT_EQ(keptTitle(window), title);
    }
}

// ---- State without a dialog

TEST_F(qelProgressWindow, IsBornOffAndInactive)
{
    EXPECT_EQ(window.getOn(), 0);
    EXPECT_EQ(window.getActivity(), 0);
    EXPECT_EQ(window.isActive(), 0);
    qelString title = L"before";
    EXPECT_EQ(window.getTitle(title), 0);
    EXPECT_STREQ(title.getStringW(), L"");
    int percent = 55;
    EXPECT_EQ(window.getPercentage(percent), 0);
    EXPECT_EQ(percent, 0);
}

TEST_F(qelProgressWindow, SwitchesOnAndOff)
{
    window.switchOn();
    EXPECT_EQ(window.getOn(), 1);
    window.switchOn();
    EXPECT_EQ(window.getOn(), 1);
    window.switchOff();
    EXPECT_EQ(window.getOn(), 0);
}

TEST_F(qelProgressWindow, TakesAnyActivity)
{
    for (int activity : {1, 7, -3, 0})
    {
        window.setActivity(activity);
        EXPECT_EQ(window.getActivity(), activity);
        EXPECT_EQ(window.isActive(), activity);
        qelString title;
        int percent = 0;
        EXPECT_EQ(window.getTitle(title), activity);
        EXPECT_EQ(window.getPercentage(percent), activity);
        EXPECT_EQ(window.setTitle(L"t"), activity);
    }
}

TEST_F(qelProgressWindow, KeepsTitleAndPercentageWithoutADialog)
{
    EXPECT_EQ(window.setTitle(L"Kept"), 0);
    EXPECT_EQ(window.setPercentage(30), 0);
    EXPECT_EQ(keptTitle(window), L"Kept");
    EXPECT_EQ(keptPercent(window), 30);
    EXPECT_EQ(window.reset(), 1);
    EXPECT_EQ(keptPercent(window), 0);
    EXPECT_EQ(keptTitle(window), L"Kept");
}

TEST_F(qelProgressWindow, RefusesPercentagesOutsideItsRange)
{
    window.activate(L"");
    window.setPercentage(50);
    for (int percent : {-1, 101, 1000, -2147483647 - 1, 2147483647})
    {
        for (int force : {0, 1})
        {
            EXPECT_EQ(window.setPercentage(percent, force), 0);
            EXPECT_EQ(keptPercent(window), 50);
            EXPECT_EQ(positionOf(onlyDialog()), 50);
            EXPECT_EQ(percentTextOf(onlyDialog()), L"50%");
        }
    }
}

TEST_F(qelProgressWindow, RunsBackwardsOnlyWhenForced)
{
    window.activate(L"");
    EXPECT_EQ(window.setPercentage(50, 0), 1);
    EXPECT_EQ(window.setPercentage(40, 0), 0);
    EXPECT_EQ(positionOf(onlyDialog()), 50);
    EXPECT_EQ(window.setPercentage(40, 1), 1);
    EXPECT_EQ(positionOf(onlyDialog()), 40);
    EXPECT_EQ(percentTextOf(onlyDialog()), L"40%");
    EXPECT_EQ(window.setPercentage(30, -1), 1);
    EXPECT_EQ(keptPercent(window), 30);
}

TEST_F(qelProgressWindow, HasNothingToDoForTheSamePercentage)
{
    window.activate(L"");
    EXPECT_EQ(window.setPercentage(0), 0);
    EXPECT_EQ(percentTextOf(onlyDialog()), L"");
    EXPECT_EQ(window.setPercentage(20), 1);
    EXPECT_EQ(window.setPercentage(20), 0);
    EXPECT_EQ(window.setPercentage(20, 1), 0);
}

TEST_F(qelProgressWindow, CopiesItsState)
{
    window.activate(L"Shared");
    window.setPercentage(12);
    window.switchOn();
    {
        const qelProgressCtrlWindow copy(window);
        qelProgressCtrlWindow assigned;
        assigned = window;
        for (const qelProgressCtrlWindow* other : {&copy, static_cast<const qelProgressCtrlWindow*>(&assigned)})
        {
            EXPECT_EQ(other->getOn(), 1);
            EXPECT_EQ(other->getActivity(), 1);
            EXPECT_EQ(keptTitle(*other), L"Shared");
            EXPECT_EQ(keptPercent(*other), 12);
        }
        // A copy shares the dialog.
        EXPECT_EQ(assigned.setPercentage(34), 1);
        EXPECT_EQ(percentTextOf(onlyDialog()), L"34%");
        EXPECT_EQ(keptPercent(window), 12);
    }
    EXPECT_NE(onlyDialog(), nullptr);
}

TEST_F(qelProgressWindow, HasItsVirtualFunctionsInTheStatedOrder)
{
#if defined(__GNUC__)
    const int afterDestructor = 2;
#else
    const int afterDestructor = 1;
#endif
    qelProgressCtrlWindow* const object = &window;
    void** const slots = *reinterpret_cast<void***>(object) + afterDestructor;
    const qelString title(L"By slot");
    window.setActivity(3);
    EXPECT_EQ(reinterpret_cast<int (*)(void*, int, int)>(slots[2])(object, 8, 0), 3);
    EXPECT_EQ(keptPercent(window), 8);
    EXPECT_EQ(reinterpret_cast<int (*)(void*, const qelString*)>(slots[3])(object, &title), 3);
    EXPECT_EQ(keptTitle(window), L"By slot");
    EXPECT_EQ(reinterpret_cast<int (*)(void*)>(slots[1])(object), 1);
    EXPECT_EQ(keptPercent(window), 0);
    EXPECT_EQ(dialogsOf(GetCurrentThreadId()).size(), 0U);
    EXPECT_EQ(reinterpret_cast<int (*)(void*, qelString)>(slots[0])(object, L"Opened by slot"), 1);
    EXPECT_EQ(titleOf(onlyDialog()), L"Opened by slot");
}

TEST_F(qelProgressWindow, HoldsItsFieldsInTheStatedOrder)
{
    const char* const start = reinterpret_cast<const char*>(&window);
    const auto numberAt = [start](size_t offset) {
        int number = 0;
        std::memcpy(&number, start + offset, sizeof(number));
        return number;
    };
    window.switchOn();
    window.setTitle(L"Fields");
    window.setPercentage(42);
    window.setActivity(7);
    EXPECT_EQ(numberAt(8), 1);
    EXPECT_STREQ(reinterpret_cast<const qelString*>(start + 16)->getStringW(), L"Fields");
    EXPECT_EQ(numberAt(32), 42);
    EXPECT_EQ(numberAt(36), 7);
}

// ---- Opening and closing

TEST_F(qelProgressWindow, ResetDestroysTheDialogOnce)
{
    window.activate(L"Title");
    window.setPercentage(60);
    const HWND dialog = onlyDialog();
    EXPECT_EQ(window.reset(), 1);
    EXPECT_FALSE(IsWindow(dialog));
    EXPECT_EQ(window.getActivity(), 0);
    EXPECT_EQ(keptPercent(window), 0);
    EXPECT_EQ(keptTitle(window), L"Title");
    EXPECT_EQ(window.reset(), 1);
}

TEST_F(qelProgressWindow, ActivatingTwiceShowsAFreshDialog)
{
    window.activate(L"First");
    window.setPercentage(70);
    const HWND first = onlyDialog();
    EXPECT_EQ(window.activate(L"Second"), 1);
    const HWND second = onlyDialog();
    ASSERT_NE(second, nullptr);
    EXPECT_FALSE(IsWindow(first));
    EXPECT_EQ(keptPercent(window), 0);
    EXPECT_EQ(positionOf(second), 0);
    EXPECT_EQ(percentTextOf(second), L"");
    EXPECT_EQ(titleOf(second), L"Second");
    EXPECT_EQ(window.setPercentage(10), 1);
}

TEST_F(qelProgressWindow, ASecondWindowTakesTheDialogOver)
{
    qelProgressCtrlWindow other;
    window.activate(L"First");
    const HWND first = onlyDialog();
    EXPECT_EQ(other.activate(L"Second"), 1);
    const HWND second = onlyDialog();
    ASSERT_NE(second, nullptr);
    EXPECT_FALSE(IsWindow(first));

    // The first still counts as active and writes to the dialog that there is.
    EXPECT_EQ(window.isActive(), 1);
    EXPECT_EQ(window.setPercentage(30), 1);
    EXPECT_EQ(percentTextOf(second), L"30%");
    EXPECT_EQ(window.setTitle(L"From the first"), 1);
    EXPECT_EQ(titleOf(second), L"From the first");

    EXPECT_EQ(window.reset(), 1);
    EXPECT_FALSE(IsWindow(second));
    EXPECT_EQ(other.isActive(), 1);
    EXPECT_EQ(other.setPercentage(40), 1);
    EXPECT_EQ(other.setTitle(L"Nowhere"), 1);
    EXPECT_EQ(other.reset(), 1);
}

TEST_F(qelProgressWindow, TwoWindowsTakeTheDialogFromEachOther)
{
    qelProgressCtrlWindow other;
    for (int round = 0; round < 5; ++round)
    {
        EXPECT_EQ(window.activate(L"First"), 1);
        ASSERT_NE(onlyDialog(), nullptr);
        EXPECT_EQ(titleOf(onlyDialog()), L"First");
        EXPECT_EQ(other.activate(L"Second"), 1);
        ASSERT_NE(onlyDialog(), nullptr);
        EXPECT_EQ(titleOf(onlyDialog()), L"Second");
    }
}

TEST_F(qelProgressWindow, WithAnActivityOfItsOwnNeedsNoDialog)
{
    window.setActivity(1);
    EXPECT_EQ(window.setTitle(L"Title"), 1);
    EXPECT_EQ(window.setPercentage(5), 1);
    EXPECT_EQ(dialogsOf(GetCurrentThreadId()).size(), 0U);
    EXPECT_EQ(window.reset(), 1);
    EXPECT_EQ(window.getActivity(), 0);
}

TEST_F(qelProgressWindow, LeavesTheDialogToWindowsWithAnActivityOfOne)
{
    qelProgressCtrlWindow other;
    window.activate(L"Title");
    other.setActivity(7);
    EXPECT_EQ(other.setPercentage(5), 7);
    EXPECT_EQ(other.setTitle(L"Other"), 7);
    EXPECT_EQ(percentTextOf(onlyDialog()), L"");
    EXPECT_EQ(titleOf(onlyDialog()), L"Title");
    EXPECT_EQ(other.reset(), 1);
    EXPECT_EQ(other.getActivity(), 0);
    EXPECT_NE(onlyDialog(), nullptr);
}

TEST_F(qelProgressWindow, LeavesTheDialogWhenItsActivityIsTakenAway)
{
    window.activate(L"Title");
    const HWND dialog = onlyDialog();
    window.setActivity(0);
    EXPECT_EQ(window.setPercentage(5), 0);
    EXPECT_EQ(window.setTitle(L"Other"), 0);
    EXPECT_EQ(percentTextOf(dialog), L"");
    EXPECT_EQ(titleOf(dialog), L"Title");
    EXPECT_EQ(window.reset(), 1);
    EXPECT_TRUE(IsWindow(dialog));
    EXPECT_EQ(window.activate(L"Next"), 1);
    EXPECT_FALSE(IsWindow(dialog));
    EXPECT_NE(onlyDialog(), nullptr);
}

TEST_F(qelProgressWindow, LeavesTheDialogWhenItIsDestroyed)
{
    auto shortLived = std::make_unique<qelProgressCtrlWindow>();
    shortLived->activate(L"Title");
    shortLived.reset();
    EXPECT_NE(onlyDialog(), nullptr);
    EXPECT_EQ(window.activate(L"Next"), 1);
    EXPECT_NE(onlyDialog(), nullptr);
}

TEST_F(qelProgressWindow, UsesTheResetOfADerivedWindowToActivate)
{
    struct Derived : qelProgressCtrlWindow
    {
        int reset() override
        {
            ++resets;
            return qelProgressCtrlWindow::reset();
        }

        int resets = 0;
    };

    Derived derived;
    derived.activate(L"Title");
    EXPECT_EQ(derived.resets, 1);
}

// ---- The user ends the dialog

/// What the library asked of the system, seen on its import table.
struct Calls
{
    static void clear() { s_calls.clear(); }
    static std::vector<std::string>& made() { return s_calls; }

    static INT_PTR s_result;
    static std::vector<std::string> s_calls;
};

INT_PTR Calls::s_result = 0;
std::vector<std::string> Calls::s_calls;

BOOL WINAPI endDialog(HWND dialog, INT_PTR result)
{
    Calls::s_calls.push_back("EndDialog");
    Calls::s_result = result;
    EXPECT_TRUE(IsWindow(dialog));
    return EndDialog(dialog, result);
}

BOOL WINAPI destroyWindow(HWND window)
{
    Calls::s_calls.push_back("DestroyWindow");
    EXPECT_TRUE(IsWindow(window));
    return DestroyWindow(window);
}

BOOL WINAPI setDlgItemText(HWND dialog, int id, LPCWSTR text)
{
    Calls::s_calls.push_back("SetDlgItemText");
    EXPECT_TRUE(IsWindow(dialog));
    return SetDlgItemTextW(dialog, id, text);
}

LRESULT WINAPI sendMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    Calls::s_calls.push_back("SendMessage");
    EXPECT_TRUE(IsWindow(window));
    return SendMessageW(window, message, wParam, lParam);
}

BOOL WINAPI showWindow(HWND window, int how)
{
    Calls::s_calls.push_back("ShowWindow " + std::to_string(how));
    EXPECT_TRUE(IsWindow(window));
    return ShowWindow(window, how);
}

class qelProgressWindowCalls : public qelProgressWindow
{
protected:
    qelProgressWindowCalls() { Calls::clear(); }

    ImportHook m_endDialog{"EndDialog", endDialog};
    ImportHook m_destroyWindow{"DestroyWindow", destroyWindow};
    ImportHook m_setDlgItemText{"SetDlgItemTextW", setDlgItemText};
    ImportHook m_sendMessage{"SendMessageW", sendMessage};
    ImportHook m_showWindow{"ShowWindow", showWindow};
};

using CallList = std::vector<std::string>;

TEST_F(qelProgressWindowCalls, EndsTheDialogOnOkAndCancel)
{
    for (int id : {IDOK, IDCANCEL})
    {
        ASSERT_EQ(window.activate(L"Title"), 1);
        window.setPercentage(42);
        const HWND dialog = onlyDialog();
        Calls::clear();
        PostMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(id), 0);
        EXPECT_TRUE(IsWindow(dialog));
        pumpMessages();
        EXPECT_EQ(Calls::s_result, id);
        EXPECT_EQ(Calls::made(), (CallList{"EndDialog", "DestroyWindow"}));
        EXPECT_FALSE(IsWindow(dialog));
        EXPECT_EQ(dialogsOf(GetCurrentThreadId()).size(), 0U);
    }
}

TEST_F(qelProgressWindowCalls, IsHarmlessAfterTheUserHasEndedTheDialog)
{
    window.activate(L"Title");
    window.setPercentage(42);
    SendMessageW(onlyDialog(), WM_COMMAND, IDCANCEL, 0);
    Calls::clear();

    // Deliberately active until reset, so that working code need not care.
    EXPECT_EQ(window.isActive(), 1);
    EXPECT_EQ(window.setPercentage(43), 1);
    EXPECT_EQ(window.setTitle(L"Other"), 1);
    EXPECT_EQ(keptPercent(window), 43);
    EXPECT_EQ(keptTitle(window), L"Other");
    pumpMessages();
    EXPECT_EQ(window.reset(), 1);
    EXPECT_EQ(window.isActive(), 0);
    EXPECT_EQ(keptPercent(window), 0);
    EXPECT_EQ(window.reset(), 1);
    EXPECT_EQ(Calls::made(), CallList());
}

TEST_F(qelProgressWindowCalls, LeavesAWindowAloneThatOnlyHasTheHandleOfItsDialog)
{
    // Handles are used again. Nothing but what the library has left in its dialog tells the two apart.
    window.activate(L"Title");
    const HWND other = onlyDialog();
    SetWindowLongPtrW(other, DWLP_USER, 0);
    Calls::clear();
    EXPECT_EQ(window.setPercentage(43), 1);
    EXPECT_EQ(window.setTitle(L"Other"), 1);
    EXPECT_EQ(window.reset(), 1);
    EXPECT_EQ(Calls::made(), CallList());
    EXPECT_EQ(window.activate(L"Next"), 1);
    EXPECT_EQ(titleOf(other), L"Title");
    DestroyWindow(other);
    EXPECT_EQ(titleOf(onlyDialog()), L"Next");
    EXPECT_EQ(window.setPercentage(7), 1);
    EXPECT_EQ(percentTextOf(onlyDialog()), L"7%");
}

TEST_F(qelProgressWindowCalls, ShowsAFreshDialogAfterTheUserHasEndedOne)
{
    window.activate(L"First");
    window.setPercentage(42);
    SendMessageW(onlyDialog(), WM_COMMAND, IDOK, 0);
    Calls::clear();
    EXPECT_EQ(window.activate(L"Second"), 1);
    EXPECT_EQ(Calls::made(), (CallList{"SendMessage", "SendMessage", "SetDlgItemText", "ShowWindow 1"}));
    const HWND dialog = onlyDialog();
    ASSERT_NE(dialog, nullptr);
    EXPECT_TRUE(IsWindowVisible(dialog));
    EXPECT_EQ(titleOf(dialog), L"Second");
    EXPECT_EQ(percentTextOf(dialog), L"");
    EXPECT_EQ(window.setPercentage(1), 1);
    EXPECT_EQ(percentTextOf(dialog), L"1%");
}

TEST_F(qelProgressWindowCalls, DoesNotDestroyADialogThatIsGone)
{
    window.activate(L"Title");
    DestroyWindow(onlyDialog());
    Calls::clear();
    EXPECT_EQ(window.setPercentage(5), 1);
    EXPECT_EQ(window.setTitle(L"Other"), 1);
    EXPECT_EQ(window.reset(), 1);
    EXPECT_EQ(Calls::made(), CallList());
    EXPECT_EQ(window.activate(L"Next"), 1);
    EXPECT_NE(onlyDialog(), nullptr);
}

TEST_F(qelProgressWindowCalls, SurvivesTheEndOfTheThreadThatMadeTheDialog)
{
    std::thread([this] { EXPECT_EQ(window.activate(L"Title"), 1); }).join();
    Calls::clear();
    EXPECT_EQ(window.setPercentage(5), 1);
    EXPECT_EQ(window.setTitle(L"Other"), 1);
    EXPECT_EQ(window.reset(), 1);
    EXPECT_EQ(Calls::made(), CallList());
    EXPECT_EQ(window.activate(L"Next"), 1);
    EXPECT_NE(onlyDialog(), nullptr);
}

TEST_F(qelProgressWindowCalls, KeepsTheNextDialogWhenTheOneBeforeGoesLast)
{
    static qelProgressCtrlWindow* next = nullptr;
    next = &window;
    qelProgressCtrlWindow first;
    first.activate(L"First");
    const ImportHook hook("DestroyWindow", static_cast<BOOL(WINAPI*)(HWND)>([](HWND dialog) -> BOOL {
                              qelProgressCtrlWindow* const opening = next;
                              next = nullptr;
                              if (opening != nullptr)
                              {
                                  EXPECT_EQ(opening->activate(L"Next"), 1);
                              }
                              return DestroyWindow(dialog);
                          }));
    EXPECT_EQ(first.reset(), 1);
    ASSERT_NE(onlyDialog(), nullptr);
    EXPECT_EQ(titleOf(onlyDialog()), L"Next");
    EXPECT_EQ(window.setPercentage(7), 1);
    EXPECT_EQ(percentTextOf(onlyDialog()), L"7%");
}

void resetFromElsewhere()
{
    qelProgressCtrlWindow other;
    other.setActivity(1);
    other.reset();
}

BOOL WINAPI endDialogOfAHostThatResets(HWND dialog, INT_PTR result)
{
    const BOOL ended = EndDialog(dialog, result);
    resetFromElsewhere();
    return ended;
}

BOOL WINAPI destroyWindowOfAHostThatResets(HWND dialog)
{
    Calls::s_calls.push_back("DestroyWindow");
    if (Calls::made().size() == 1)
    {
        resetFromElsewhere();
    }
    return DestroyWindow(dialog);
}

TEST_F(qelProgressWindowCalls, DestroysOnceWhenTheHostResetsAsTheDialogEnds)
{
    const ImportHook hook("EndDialog", endDialogOfAHostThatResets);
    window.activate(L"Title");
    Calls::clear();
    SendMessageW(onlyDialog(), WM_COMMAND, IDOK, 0);
    EXPECT_EQ(Calls::made(), CallList{"DestroyWindow"});
    EXPECT_EQ(dialogsOf(GetCurrentThreadId()).size(), 0U);
}

TEST_F(qelProgressWindowCalls, DestroysOnceWhenTheHostResetsAsTheDialogIsDestroyed)
{
    const ImportHook hook("DestroyWindow", destroyWindowOfAHostThatResets);
    window.activate(L"Title");
    Calls::clear();
    EXPECT_EQ(window.reset(), 1);
    EXPECT_EQ(Calls::made(), CallList{"DestroyWindow"});
    EXPECT_EQ(dialogsOf(GetCurrentThreadId()).size(), 0U);
}

TEST_F(qelProgressWindow, EndsOnTheEscapeKeyWhereTheHostsLoopOffersTheKeys)
{
    window.activate(L"Title");
    const HWND dialog = onlyDialog();
    MSG escape = {};
    escape.hwnd = dialog;
    escape.message = WM_KEYDOWN;
    escape.wParam = VK_ESCAPE;
    EXPECT_TRUE(IsDialogMessageW(dialog, &escape));
    pumpMessages();
    EXPECT_FALSE(IsWindow(dialog));
    EXPECT_EQ(window.isActive(), 1);
}

TEST_F(qelProgressWindow, EndsOnTheIdentifierWhateverIsNotified)
{
    window.activate(L"Title");
    const HWND dialog = onlyDialog();
    SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDOK, BN_DBLCLK), 0);
    EXPECT_FALSE(IsWindow(dialog));
}

TEST_F(qelProgressWindow, StaysOnOtherCommands)
{
    window.activate(L"Title");
    const HWND dialog = onlyDialog();
    for (int id : {0, 3, 8, 257, 1002, 1003})
    {
        SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(static_cast<WORD>(id), 1), 0);
    }
    SendMessageW(dialog, WM_CLOSE, 0, 0);
    EXPECT_TRUE(IsWindow(dialog));
}

TEST_F(qelProgressWindow, DestroysADialogThatTheHostHasHidden)
{
    window.activate(L"Title");
    const HWND dialog = onlyDialog();
    EndDialog(dialog, IDOK);
    EXPECT_TRUE(IsWindow(dialog));
    EXPECT_FALSE(IsWindowVisible(dialog));
    EXPECT_EQ(window.setPercentage(9), 1);
    EXPECT_EQ(window.activate(L"Next"), 1);
    EXPECT_FALSE(IsWindow(dialog));
    ASSERT_NE(onlyDialog(), nullptr);
    EXPECT_TRUE(IsWindowVisible(onlyDialog()));
}

TEST_F(qelProgressWindow, MovesOnlyWhenItsOwnerPumps)
{
    window.activate(L"Title");
    const HWND dialog = onlyDialog();
    PostMessageW(dialog, WM_COMMAND, IDOK, 0);
    for (int percent = 1; percent <= 100; ++percent)
    {
        window.setPercentage(percent);
        window.setTitle(std::to_wstring(percent).c_str());
    }
    EXPECT_TRUE(IsWindow(dialog));
    pumpMessages();
    EXPECT_FALSE(IsWindow(dialog));
}

// ---- The dialog procedure

DLGPROC theirProcedure = nullptr;
std::vector<std::pair<UINT, INT_PTR>> answers;
HINSTANCE usedModule = nullptr;
LPCWSTR usedTemplate = nullptr;
HWND usedOwner = nullptr;

INT_PTR CALLBACK listen(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    const INT_PTR answer = theirProcedure(dialog, message, wParam, lParam);
    answers.emplace_back(message, answer);
    return answer;
}

HWND WINAPI createListening(HINSTANCE module, LPCWSTR name, HWND owner, DLGPROC procedure, LPARAM parameter)
{
    theirProcedure = procedure;
    usedModule = module;
    usedTemplate = name;
    usedOwner = owner;
    return CreateDialogParamW(module, name, owner, listen, parameter);
}

HWND WINAPI createNothing(HINSTANCE, LPCWSTR, HWND, DLGPROC, LPARAM)
{
    return nullptr;
}

TEST_F(qelProgressWindow, AnswersMessagesAsStated)
{
    answers.clear();
    const ImportHook hook("CreateDialogParamW", createListening);
    ASSERT_EQ(window.activate(L"Title"), 1);
    EXPECT_EQ(usedModule, GetModuleHandleW(L"VarnelQELRoots.dll"));
    EXPECT_EQ(usedTemplate, MAKEINTRESOURCEW(101));
    EXPECT_EQ(usedOwner, nullptr);

    int initialised = 0;
    for (const auto& answer : answers)
    {
        initialised += answer.first == WM_INITDIALOG ? 1 : 0;
        EXPECT_EQ(answer.second, answer.first == WM_INITDIALOG || answer.first == WM_CREATE ? 1 : 0) << answer.first;
    }
    EXPECT_EQ(initialised, 1);

    const HWND dialog = onlyDialog();
    EXPECT_EQ(theirProcedure(dialog, WM_CREATE, 0, 0), 1);
    for (int message : {WM_NCCREATE, WM_SIZE, WM_PAINT, WM_ERASEBKGND, WM_CLOSE, WM_SETFONT, WM_TIMER, WM_NOTIFY})
    {
        EXPECT_EQ(theirProcedure(dialog, static_cast<UINT>(message), 0, 0), 0) << message;
    }
    EXPECT_EQ(theirProcedure(dialog, WM_COMMAND, 3, 0), 0);
    EXPECT_EQ(theirProcedure(dialog, WM_COMMAND, 1002, 0), 0);
    EXPECT_EQ(theirProcedure(dialog, WM_COMMAND, IDCANCEL, 0), 1);
    EXPECT_FALSE(IsWindow(dialog));
}

TEST_F(qelProgressWindow, IsNotActiveWhenTheDialogCannotBeMade)
{
    window.activate(L"Before");
    window.setPercentage(10);
    {
        const ImportHook hook("CreateDialogParamW", createNothing);
        EXPECT_EQ(window.activate(L"Title"), 0);
    }
    EXPECT_EQ(window.isActive(), 0);
    EXPECT_EQ(keptTitle(window), L"Title");
    EXPECT_EQ(keptPercent(window), 0);
    EXPECT_EQ(window.setPercentage(10), 0);
    EXPECT_EQ(window.setTitle(L"Other"), 0);
    EXPECT_EQ(dialogsOf(GetCurrentThreadId()).size(), 0U);
    EXPECT_EQ(window.reset(), 1);
    EXPECT_EQ(window.activate(L"Again"), 1);
    EXPECT_NE(onlyDialog(), nullptr);
}

DWORD classesMadeAvailable = 0;
DWORD classesAtCreation = 0;

BOOL WINAPI initCommonControls(const INITCOMMONCONTROLSEX* classes)
{
    classesMadeAvailable |= classes->dwICC;
    return InitCommonControlsEx(classes);
}

HWND WINAPI createAndNoteClasses(HINSTANCE module, LPCWSTR name, HWND owner, DLGPROC procedure, LPARAM parameter)
{
    classesAtCreation = classesMadeAvailable;
    return CreateDialogParamW(module, name, owner, procedure, parameter);
}

TEST_F(qelProgressWindow, MakesTheClassOfTheBarAvailableBeforeTheDialog)
{
    classesMadeAvailable = 0;
    classesAtCreation = 0;
    const ImportHook classes("InitCommonControlsEx", initCommonControls);
    const ImportHook dialogs("CreateDialogParamW", createAndNoteClasses);
    EXPECT_EQ(window.activate(L"Title"), 1);
    EXPECT_NE(classesAtCreation & ICC_PROGRESS_CLASS, 0U);
}

qelProgressCtrlWindow* opensMeanwhile = nullptr;

HWND WINAPI createWhileAnotherOpens(HINSTANCE module, LPCWSTR name, HWND owner, DLGPROC procedure, LPARAM parameter)
{
    const HWND dialog = CreateDialogParamW(module, name, owner, procedure, parameter);
    if (opensMeanwhile != nullptr)
    {
        qelProgressCtrlWindow* const other = opensMeanwhile;
        opensMeanwhile = nullptr;
        EXPECT_EQ(other->activate(L"Meanwhile"), 1);
    }
    return dialog;
}

TEST_F(qelProgressWindow, IsNotActiveWhenTheHostOpensAnotherDialogMeanwhile)
{
    qelProgressCtrlWindow other;
    opensMeanwhile = &other;
    const ImportHook hook("CreateDialogParamW", createWhileAnotherOpens);
    EXPECT_EQ(window.activate(L"Title"), 0);
    EXPECT_EQ(window.isActive(), 0);
    EXPECT_EQ(other.isActive(), 1);
    ASSERT_NE(onlyDialog(), nullptr);
    EXPECT_EQ(titleOf(onlyDialog()), L"Meanwhile");
}

// ---- A bar that cannot be made

HWND WINAPI createNoBar(DWORD extendedStyle, LPCWSTR className, LPCWSTR name, DWORD style, int x, int y, int width,
                        int height, HWND parent, HMENU menu, HINSTANCE module, LPVOID parameter)
{
    if (std::wstring(className) == L"msctls_progress32")
    {
        return nullptr;
    }
    return CreateWindowExW(extendedStyle, className, name, style, x, y, width, height, parent, menu, module, parameter);
}

/// Waits in a thread of its own for the message box of the thread that made it, reads it and presses OK.
class BoxReader
{
public:
    explicit BoxReader(DWORD delay = 0)
        : m_thread([this, owner = GetCurrentThreadId(), delay] { read(owner, delay); })
    {
    }

    ~BoxReader() { finish(); }

    void finish()
    {
        if (m_thread.joinable())
        {
            m_thread.join();
        }
    }

    bool seen = false;
    bool owned = true;
    std::wstring caption = L"?";
    std::wstring text;
    std::vector<std::wstring> buttons;

private:
    static bool isBox(HWND window)
    {
        return IsWindowVisible(window) && FindWindowExW(window, nullptr, L"Button", nullptr) != nullptr;
    }

    void read(DWORD owner, DWORD delay)
    {
        for (int tries = 0; tries < 1000 && !seen; ++tries)
        {
            Sleep(10);
            for (HWND window : dialogsOf(owner))
            {
                if (isBox(window))
                {
                    seen = true;
                    Sleep(delay);
                    readBox(window);
                    PostMessageW(window, WM_COMMAND, IDOK, 0);
                }
            }
        }
    }

    void readBox(HWND box)
    {
        owned = GetWindow(box, GW_OWNER) != nullptr;
        caption = textOf(box);
        for (HWND child = GetWindow(box, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT))
        {
            if (!IsWindowVisible(child))
            {
                continue;
            }
            if (classOf(child) == L"Button")
            {
                buttons.push_back(textOf(child));
            }
            else
            {
                text += textOf(child);
            }
        }
    }

    std::thread m_thread; // last, so that what it writes to is there
};

TEST_F(qelProgressWindow, SaysThatTheBarCannotBeMadeAndKeepsTheDialog)
{
    const ImportHook hook("CreateWindowExW", createNoBar);
    BoxReader box;
    EXPECT_EQ(window.activate(L"Title"), 1);
    box.finish();
    ASSERT_TRUE(box.seen);
    EXPECT_EQ(box.text, L"Progress Bar not created!");
    EXPECT_EQ(box.caption, L"");
    EXPECT_FALSE(box.owned);
    EXPECT_EQ(box.buttons.size(), 1U);

    const HWND dialog = onlyDialog();
    ASSERT_NE(dialog, nullptr);
    EXPECT_TRUE(IsWindowVisible(dialog));
    EXPECT_EQ(barOf(dialog), nullptr);
    EXPECT_EQ(titleOf(dialog), L"Title");
    EXPECT_EQ(window.setPercentage(42), 1);
    EXPECT_EQ(percentTextOf(dialog), L"42%");
}

TEST_F(qelProgressWindowCalls, SendsNothingToABarThatIsNotThere)
{
    // The bar of the dialog before is no stand-in.
    window.activate(L"Before");
    const ImportHook hook("CreateWindowExW", createNoBar);
    BoxReader box;
    EXPECT_EQ(window.activate(L"Title"), 1);
    Calls::clear();
    EXPECT_EQ(window.setPercentage(42), 1);
    EXPECT_EQ(Calls::made(), CallList{"SetDlgItemText"});
}

TEST_F(qelProgressWindow, SurvivesAHostThatClosesTheDialogWhileTheBoxIsShown)
{
    const ImportHook hook("CreateWindowExW", createNoBar);
    static bool closed = false;
    closed = false;
    // The box runs the messages of the host.
    const UINT_PTR timer = SetTimer(nullptr, 0, 10, [](HWND, UINT, UINT_PTR, DWORD) {
        if (!closed)
        {
            closed = true;
            qelProgressCtrlWindow other;
            other.setActivity(1);
            other.reset();
        }
    });
    BoxReader box(500);
    EXPECT_EQ(window.activate(L"Title"), 0);
    KillTimer(nullptr, timer);
    box.finish();
    EXPECT_TRUE(box.seen);
    EXPECT_TRUE(closed);
    EXPECT_EQ(window.isActive(), 0);
    EXPECT_EQ(dialogsOf(GetCurrentThreadId()).size(), 0U);
}
} // namespace
