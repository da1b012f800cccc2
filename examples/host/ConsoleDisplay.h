// Progress as a line on the console.
#pragma once

#include "qelProcessEvolutionManager.h"

#include <string>
#include <vector>

/**
 * Shows the main process as a bar with its percentage, and the sub-process under way behind it. On a console the line
 * is drawn over and over; in a file or a pipe every tenth percent has a line of its own.
 */
class ConsoleDisplay final : public ProgressDisplayProtocol
{
public:
    /// Registers with the library's register of processes.
    ConsoleDisplay();
    ~ConsoleDisplay();

    ConsoleDisplay(const ConsoleDisplay&) = delete;
    ConsoleDisplay& operator=(const ConsoleDisplay&) = delete;

    void setProgress(int key, int percent) override;
    void addProcess(int key, qelString action, bool cancelAllowed) override;
    void removeProcess(int key) override;

private:
    struct Process
    {
        std::wstring action;
        int percent;
    };

    bool isShown(int key) const;
    std::wstring line() const;
    void draw();
    void endLine();

    const int m_number; ///< of this display, the only one of the host
    const bool m_isConsole;
    std::vector<Process> m_processes; ///< by key
    size_t m_width = 0;               ///< of the line on the console, 0 when there is none
    int m_tenth = -1;                 ///< last tenth that has got a line
};
