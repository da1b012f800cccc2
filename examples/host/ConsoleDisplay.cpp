#include "ConsoleDisplay.h"

#include "Console.h"

#include <windows.h>

#include <algorithm>

namespace
{
const int kBarWidth = 30;

bool isConsole(DWORD stream)
{
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(stream), &mode) != FALSE;
}

std::wstring bar(int percent)
{
    const size_t full = static_cast<size_t>(std::clamp(percent, 0, 100) * kBarWidth / 100);
    return L"[" + std::wstring(full, L'#') + std::wstring(kBarWidth - full, L'.') + L"]";
}

std::wstring percentage(int percent)
{
    const std::wstring text = std::to_wstring(percent) + L"%";
    return std::wstring(text.size() < 4 ? 4 - text.size() : 0, L' ') + text;
}
} // namespace

ConsoleDisplay::ConsoleDisplay()
    : m_number(qelProcessEvolutionManager::getProcessEvolutionManager()->registerDisplay(this))
    , m_isConsole(isConsole(STD_OUTPUT_HANDLE))
{
}

ConsoleDisplay::~ConsoleDisplay()
{
    qelProcessEvolutionManager::getProcessEvolutionManager()->deRegisterDisplay(m_number);
    endLine();
}

void ConsoleDisplay::setProgress(int key, int percent)
{
    if (isShown(key))
    {
        m_processes[static_cast<size_t>(key)].percent = percent;
        draw();
    }
}

void ConsoleDisplay::addProcess(int key, qelString action, bool cancelAllowed)
{
    m_processes.resize(static_cast<size_t>(key));
    m_processes.push_back({action.getStringW(), 0});
    if (cancelAllowed)
    {
        print(L"Press C, Escape or Ctrl+C to cancel.\n");
    }
    draw();
}

void ConsoleDisplay::removeProcess(int key)
{
    if (!isShown(key))
    {
        return;
    }
    if (key == 0)
    {
        // With the main process all is over, also when it is cancelled.
        m_processes.clear();
        endLine();
        m_tenth = -1;
        return;
    }
    m_processes.erase(m_processes.begin() + key);
    draw();
}

bool ConsoleDisplay::isShown(int key) const
{
    return key >= 0 && static_cast<size_t>(key) < m_processes.size();
}

std::wstring ConsoleDisplay::line() const
{
    const Process& main = m_processes.front();
    std::wstring text = bar(main.percent) + L" " + percentage(main.percent) + L"  " + main.action;
    if (m_processes.size() > 1)
    {
        const Process& sub = m_processes.back();
        text += L": " + sub.action + L" " + std::to_wstring(sub.percent) + L"%";
    }
    return text;
}

void ConsoleDisplay::draw()
{
    std::wstring text = line();
    if (m_isConsole)
    {
        const size_t width = text.size();
        text.resize(std::max(width, m_width), L' ');
        m_width = width;
        print(L"\r" + text);
        return;
    }
    const int tenth = m_processes.front().percent / 10;
    if (tenth != m_tenth)
    {
        m_tenth = tenth;
        print(text + L"\n");
    }
}

void ConsoleDisplay::endLine()
{
    if (m_width > 0)
    {
        print(L"\n");
        m_width = 0;
    }
}
