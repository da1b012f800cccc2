// "host diagnose": the files that support asks a customer for, written and shown.
#include "Commands.h"
#include "Console.h"

#include "qelDebugInterfaces.h"
#include "qelFileAccess.h"
#include "qelLogfile.h"
#include "qelPerfMonitor.h"

#include <windows.h>

#include <set>

namespace
{
/// Collects what the library sends to the debugger: to the program it comes as an exception.
class DebuggerTexts
{
public:
    DebuggerTexts()
        : m_handler(AddVectoredExceptionHandler(1, collect))
    {
        s_texts.clear();
    }

    ~DebuggerTexts() { RemoveVectoredExceptionHandler(m_handler); }

    DebuggerTexts(const DebuggerTexts&) = delete;
    DebuggerTexts& operator=(const DebuggerTexts&) = delete;

    const std::vector<qelString>& all() const { return s_texts; }

private:
    static LONG CALLBACK collect(EXCEPTION_POINTERS* exception)
    {
        const DWORD wideText = 0x4001000A;
        const DWORD narrowText = 0x40010006;
        const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
        if (record.ExceptionCode == wideText)
        {
            s_texts.emplace_back(reinterpret_cast<const wchar_t*>(record.ExceptionInformation[1]));
            return EXCEPTION_CONTINUE_EXECUTION;
        }
        if (record.ExceptionCode == narrowText)
        {
            s_texts.emplace_back(reinterpret_cast<const char*>(record.ExceptionInformation[1]));
            return EXCEPTION_CONTINUE_EXECUTION;
        }
        return EXCEPTION_CONTINUE_SEARCH;
    }

    static std::vector<qelString> s_texts;
    void* m_handler;
};

std::vector<qelString> DebuggerTexts::s_texts;

/// A component class that reports to the library's record of objects.
class Component
{
public:
    explicit Component(const wchar_t* className)
        : m_className(className)
    {
        qelDebugInterfaces::objectConstructed(m_className, this);
        s_living.insert(this);
    }

    ~Component()
    {
        s_living.erase(this);
        qelDebugInterfaces::objectDestroied(m_className, this);
    }

    Component(const Component&) = delete;
    Component& operator=(const Component&) = delete;

    const qelString& className() const { return m_className; }

    /// The objects not destroyed yet. The library itself names them only in a build with debug output.
    static const std::set<const Component*>& living() { return s_living; }

private:
    static std::set<const Component*> s_living;
    qelString m_className;
};

std::set<const Component*> Component::s_living;

std::wstring fullPath(const std::wstring& folder, const wchar_t* name)
{
    const std::wstring path = folder.empty() ? name : folder + L"\\" + name;
    // With room for the terminator at first, without it in the end.
    std::wstring full(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    return full;
}

bool show(const wchar_t* title, const std::wstring& path)
{
    qelFileAccess file(path.c_str(), L"r", qelFileAccess::ANSI);
    if (!file.isOpen())
    {
        printError(L"host diagnose: " + path + L" could not be written\n");
        return false;
    }
    qelString text;
    file.readFile(text, static_cast<size_t>(file.getFileLength()));
    print(std::wstring(title) + L", in " + path + L"\n\n" + text.getStringW() + L"\n\n");
    return true;
}

/// Two objects of a document, of which one still lives when the document ends.
void useObjects(const std::wstring& path)
{
    int document = 0;
    qelDebugInterfaces::setCurrentContextInitiator(&document);
    const Component beam(L"Beam");
    {
        const Component plate(L"Plate");
    }
    qelDebugInterfaces::contextInitiatorEnd(&document);

    const DebuggerTexts listing;
    qelDebugInterfaces::showResults(&document);

    qelLogfile log(path.c_str());
    log.reset();
    qelString text;
    log.appendWithSave(text.format(L"%d objects recorded\n", qelDebugInterfaces::entriesNumber()));
    for (const Component* left : Component::living())
    {
        log.appendWithSave(text.format(L"not destroyed: %s\n", left->className().getStringW()));
    }
    for (const qelString& line : listing.all())
    {
        // The library puts line ends before its lines.
        log.appendWithSave((line >> 1) + L"\n");
    }
    if (listing.all().empty())
    {
        log.appendWithSave(L"the library's own list is shown by a build with QEL_DEBUG_OUTPUT only\n");
    }
    qelDebugInterfaces::clearAllDebugInfo(&document);
}

int run(const Arguments& arguments)
{
    if (arguments.size() > 1 || (arguments.size() == 1 && arguments[0].compare(0, 2, L"--") == 0))
    {
        printError(L"host diagnose: only the name of a folder can stand here\n");
        return kUsageError;
    }
    const std::wstring folder = arguments.empty() ? L"" : arguments[0];
    const std::wstring logPath = fullPath(folder, L"Diagnose.log");
    const std::wstring timingPath = fullPath(folder, L"DiagnosePerf.log");
    const std::wstring modulesPath = fullPath(folder, L"DiagnoseModules.log");
    const std::wstring objectsPath = fullPath(folder, L"DiagnoseObjects.log");

    qelLogfile::setLogStatus(1);
    qelLogfile::logToFile(logPath.c_str(), L"diagnosis begins");

    qelLogfile(timingPath.c_str()).reset();
    qelPerfMonitor monitor(timingPath.c_str());
    monitor.start(L"Module table");
    qelLogfile::listModules(modulesPath.c_str());
    monitor.end(L"Module table");

    useObjects(objectsPath);
    qelLogfile::logToFile(logPath.c_str(), L"diagnosis ends");

    bool shown = show(L"Log", logPath);
    shown = show(L"Timing", timingPath) && shown;
    shown = show(L"Modules", modulesPath) && shown;
    shown = show(L"Objects", objectsPath) && shown;
    return shown ? 0 : 1;
}
} // namespace

const Command diagnoseCommand = {
    L"diagnose",
    L"log, timing, loaded modules and objects left behind",
    L"usage: host diagnose [FOLDER]\n"
    L"\n"
    L"Writes the files that support asks for and shows their names and contents: a log, the time that listing the\n"
    L"modules took, the modules with their versions, and the objects of an example that were never destroyed.\n"
    L"\n"
    L"  FOLDER    existing folder for the files; without it, the current one\n"
    L"  --help    show this text\n",
    run,
};
