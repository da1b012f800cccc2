// "host progress": a long operation that shows how far it is, and that the user can cancel.
#include "Commands.h"
#include "Console.h"
#include "ConsoleDisplay.h"

#include "qelFileAccess.h"
#include "qelNumberCreator.h"
#include "qelProcessEvolutionManager.h"
#include "qelProgressCtrl.h"

#include <windows.h>

#include <atomic>

namespace
{
const int kCancelled = 3;

struct Options
{
    int parts = 3000;
    int pause = 20; ///< milliseconds after each percent
    std::wstring file = L"parts.txt";
};

struct Part
{
    qelString number;
    const wchar_t* section;
    int length; ///< millimetres
};

bool parseNumber(const std::wstring& text, int greatest, int& number)
{
    wchar_t* end = nullptr;
    const long value = wcstol(text.c_str(), &end, 10);
    if (text.empty() || *end != 0 || value < 0 || value > greatest)
    {
        return false;
    }
    number = static_cast<int>(value);
    return true;
}

bool parse(const Arguments& arguments, Options& options)
{
    for (size_t i = 0; i < arguments.size(); ++i)
    {
        const std::wstring& argument = arguments[i];
        const bool isKnown = argument == L"--parts" || argument == L"--pause" || argument == L"--output";
        if (!isKnown)
        {
            printError(L"host progress: there is no option " + argument + L"\n");
            return false;
        }
        if (++i == arguments.size())
        {
            printError(L"host progress: a value is missing behind " + argument + L"\n");
            return false;
        }
        const std::wstring& value = arguments[i];
        if (argument == L"--output")
        {
            options.file = value;
        }
        else if (!parseNumber(value, argument == L"--parts" ? 1000000 : 10000,
                              argument == L"--parts" ? options.parts : options.pause))
        {
            printError(L"host progress: " + value + L" is no number for " + argument + L"\n");
            return false;
        }
    }
    return true;
}

// Set in threads of their own. The register belongs to the main thread: they only leave word.
// NOLINTNEXTLINE(cppcoreguidelines-avoid-non-const-global-variables): Windows passes nothing to its handler
std::atomic<bool> cancelWanted{false};

BOOL WINAPI onInterrupt(DWORD event)
{
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
    {
        return FALSE;
    }
    cancelWanted = true;
    return TRUE;
}

bool isCancelLetter(wchar_t character)
{
    return character == L'c' || character == L'C';
}

/// For scripts that feed this program through a pipe.
DWORD WINAPI watchPipe(void* input)
{
    char character = 0;
    DWORD read = 0;
    while (!cancelWanted && ReadFile(input, &character, 1, &read, nullptr) && read == 1)
    {
        // Never taken back: Ctrl+C may have set it meanwhile.
        if (isCancelLetter(static_cast<wchar_t>(character)))
        {
            cancelWanted = true;
        }
    }
    return 0;
}

void watchForCancel()
{
    SetConsoleCtrlHandler(onInterrupt, TRUE);
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    if (GetFileType(input) == FILE_TYPE_PIPE)
    {
        // Ends with the program.
        const HANDLE thread = CreateThread(nullptr, 0, watchPipe, input, 0, nullptr);
        if (thread != nullptr)
        {
            CloseHandle(thread);
        }
    }
}

bool isCancelKey(const INPUT_RECORD& input)
{
    const KEY_EVENT_RECORD& key = input.Event.KeyEvent;
    return input.EventType == KEY_EVENT && key.bKeyDown != 0 &&
           (key.wVirtualKeyCode == VK_ESCAPE || isCancelLetter(key.uChar.UnicodeChar));
}

bool isCancelWanted()
{
    // Fails at once where the input is no console.
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    INPUT_RECORD event = {};
    DWORD count = 0;
    while (PeekConsoleInputW(input, &event, 1, &count) && count > 0)
    {
        ReadConsoleInputW(input, &event, 1, &count);
        if (isCancelKey(event))
        {
            cancelWanted = true;
        }
    }
    return cancelWanted;
}

/// Without this the dialog could not be moved, covered and put away.
void dispatchMessages()
{
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
    {
        const HWND active = GetActiveWindow();
        if (active == nullptr || !IsDialogMessageW(active, &message))
        {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
}

/// Waits, and stays alive meanwhile.
void rest(int milliseconds)
{
    const ULONGLONG end = GetTickCount64() + static_cast<ULONGLONG>(milliseconds);
    dispatchMessages();
    for (ULONGLONG now = GetTickCount64(); now < end; now = GetTickCount64())
    {
        MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(end - now), QS_ALLINPUT);
        dispatchMessages();
    }
}

/// The operation as a whole: the main process and the dialog.
class Operation
{
public:
    Operation(const wchar_t* action, int pause)
        : m_manager(*qelProcessEvolutionManager::getProcessEvolutionManager())
        , m_pause(pause)
    {
        m_manager.EnableCancel(true);
        m_key = m_manager.registerProcess(action);
        qelProgressCtrl::m_ProgressCtrlWindowController->defaultWindow().switchOn();
        if (qelProgressCtrl::activate(action) == 0)
        {
            printError(L"host progress: there is no display for the dialog\n");
        }
    }

    ~Operation()
    {
        qelProgressCtrl::reset();
        m_manager.deRegisterProcess(m_key);
    }

    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;

    bool isCancelled() const { return m_manager.getIsCanceled(); }

    /// Runs one half of the operation, a step at a time, as a sub-process. False when it was cancelled or has failed.
    template <class Step> bool run(const wchar_t* action, int half, int steps, Step step)
    {
        const int key = m_manager.registerProcess(action);
        qelProgressCtrl::setTitle(action);
        int shown = 0;
        for (int i = 0; i < steps && !isCancelled(); ++i)
        {
            if (!step(i))
            {
                m_manager.deRegisterProcess(key);
                return false;
            }
            const int percent = static_cast<int>(100LL * (i + 1) / steps);
            if (percent != shown)
            {
                shown = percent;
                show(key, percent, half * 50 + percent / 2);
            }
        }
        // Refused, and not needed, once cancelled.
        m_manager.deRegisterProcess(key);
        return !isCancelled();
    }

private:
    void show(int key, int percent, int total)
    {
        m_manager.increaseProgress(key, percent);
        m_manager.increaseProgress(m_key, total);
        qelProgressCtrl::setPercentage(total);
        rest(m_pause);
        if (isCancelWanted())
        {
            m_manager.cancelProcess();
        }
    }

    qelProcessEvolutionManager& m_manager;
    const int m_pause;
    int m_key = 0;
};

/// Beams and columns of a hall, each kind with numbers of its own.
class Numbering
{
public:
    Numbering()
    {
        prepare(m_beams, L"B");
        prepare(m_columns, L"C");
    }

    Part next(int position)
    {
        const bool isColumn = position % 4 == 3;
        Part part;
        part.number = (isColumn ? m_columns : m_beams).getNextNumber();
        part.section = isColumn ? L"HEB 240" : L"IPE 300";
        part.length = isColumn ? 7200 : 4000 + position % 9 * 250;
        return part;
    }

private:
    static void prepare(qelNumberCreator& creator, const wchar_t* prefix)
    {
        StructNumberingDataRange digits;
        digits.firstSymbol = L"0";
        digits.symbolCount = 10;
        digits.defaultStart = L"1";
        creator.setNumberingPrefix(prefix);
        creator.overrideDataRange(digits, static_cast<eNumberingType>(3));
    }

    qelNumberCreator m_beams;
    qelNumberCreator m_columns;
};

/// Numbers the parts and writes their list; false when cancelled or not writable.
bool work(Operation& operation, const Options& options)
{
    Numbering numbering;
    std::vector<Part> parts;
    const auto number = [&](int i) {
        parts.push_back(numbering.next(i));
        return true;
    };
    if (!operation.run(L"Numbering", 0, options.parts, number))
    {
        return false;
    }

    qelFileAccess list(options.file.c_str(), L"w", qelFileAccess::UTF8);
    if (list.isOpen() == 0)
    {
        return false;
    }
    const auto write = [&](int i) {
        const Part& part = parts[static_cast<size_t>(i)];
        return list.write(L"%s\t%s\t%d\n", part.number.getStringW(), part.section, part.length) > 0;
    };
    const bool done = operation.run(L"Writing", 1, options.parts, write);
    list.close();
    if (!done)
    {
        // Half a list is worse than none.
        qelFileAccess::removeFile(options.file.c_str());
    }
    return done;
}

int run(const Arguments& arguments)
{
    Options options;
    if (!parse(arguments, options))
    {
        return kUsageError;
    }

    watchForCancel();
    bool done = false;
    bool cancelled = false;
    {
        // NOLINTNEXTLINE(misc-const-correctness): the register of processes calls it
        ConsoleDisplay display;
        Operation operation(L"List of parts", options.pause);
        done = work(operation, options);
        cancelled = operation.isCancelled();
    }
    if (done)
    {
        print(std::to_wstring(options.parts) + L" parts are in " + options.file + L".\n");
        return 0;
    }
    if (cancelled)
    {
        print(L"Cancelled; no list was written.\n");
        return kCancelled;
    }
    printError(L"host progress: " + options.file + L" cannot be written\n");
    return 1;
}
} // namespace

const Command progressCommand = {
    L"progress",
    L"a long operation with a progress dialog, which can be cancelled",
    L"usage: host progress [--parts COUNT] [--pause MS] [--output FILE]\n"
    L"\n"
    L"Numbers the parts of a hall and writes their list. How far it is can be seen in a dialog and on the console,\n"
    L"where C, Escape or Ctrl+C cancels it; from a pipe, the letter C does. The exit status is then 3 and no list is\n"
    L"left.\n"
    L"\n"
    L"  --parts COUNT   number of parts; without it, 3000\n"
    L"  --pause MS      milliseconds to wait after each percent, so that there is something to see; without it, 20\n"
    L"  --output FILE   the list; without it, parts.txt in the current folder\n"
    L"  --help          show this text\n",
    run,
};
