#include "support/MessageBoxes.h"

namespace
{
std::wstring textOf(HWND window)
{
    std::wstring text(2000, L'\0');
    text.resize(static_cast<size_t>(GetWindowTextW(window, &text[0], static_cast<int>(text.size()))));
    return text;
}

std::wstring classOf(HWND window)
{
    wchar_t name[64] = {};
    GetClassNameW(window, name, 64);
    return name;
}

qelTest::SeenBox read(HWND box)
{
    const LRESULT information = reinterpret_cast<LRESULT>(LoadIconW(nullptr, IDI_INFORMATION));
    qelTest::SeenBox seen = {};
    for (HWND child = GetWindow(box, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT))
    {
        const LONG style = GetWindowLongW(child, GWL_STYLE);
        if ((style & WS_VISIBLE) == 0)
        {
            continue;
        }
        if (classOf(child) == L"Button")
        {
            seen.buttons.push_back(textOf(child));
        }
        else if ((style & SS_TYPEMASK) == SS_ICON)
        {
            seen.hasInformationIcon = SendMessageW(child, STM_GETICON, 0, 0) == information;
        }
        else
        {
            seen.text = textOf(child);
        }
    }
    return seen;
}
} // namespace

qelTest::MessageBoxes::MessageBoxes(const wchar_t* caption)
    : m_caption(caption)
    , m_stop(false)
    , m_watcher(&MessageBoxes::watch, this)
{
}

qelTest::MessageBoxes::~MessageBoxes()
{
    if (m_watcher.joinable())
    {
        m_stop = true;
        m_watcher.join();
    }
}

std::vector<qelTest::SeenBox> qelTest::MessageBoxes::seen()
{
    m_stop = true;
    m_watcher.join();
    m_stop = false;
    std::vector<SeenBox> result = m_seen;
    m_watcher = std::thread(&MessageBoxes::watch, this);
    return result;
}

HWND qelTest::MessageBoxes::find() const
{
    HWND box = FindWindowW(L"#32770", m_caption.c_str());
    DWORD owner = 0;
    GetWindowThreadProcessId(box, &owner);
    return owner == GetCurrentProcessId() && IsWindowVisible(box) ? box : nullptr;
}

void qelTest::MessageBoxes::watch()
{
    while (!m_stop)
    {
        if (HWND box = find())
        {
            m_seen.push_back(read(box));
            PostMessageW(box, WM_COMMAND, IDOK, 0);
            for (int waited = 0; IsWindow(box) && waited < 2000; ++waited)
            {
                Sleep(1);
            }
        }
        Sleep(5);
    }
}
