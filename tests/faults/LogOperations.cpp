#include "faults/Operations.h"

#include "qelLogfile.h"
#include "qelPerfMonitor.h"

#include "support/TestFile.h"

#include <algorithm>

using namespace qelTest;

namespace
{
std::wstring path()
{
    return machine->folder.path(L"own.log");
}

qelString named()
{
    return qelString(path().c_str());
}

/// The log with digits in place of those of times.
std::string content()
{
    std::string text = contentOf(path());
    for (size_t i = 0; i + 9 < text.size(); ++i)
    {
        if (text[i] == '[' && text[i + 9] == ']')
        {
            text.replace(i + 1, 8, "TIME");
        }
    }
    return text.empty() ? "empty file" : text;
}

/// Logging is on while it lives; the log holds "old " at first.
class Logging
{
public:
    Logging()
    {
        qelLogfile::setLogStatus(1);
        machine->folder.write(L"own.log", "old ");
    }

    Logging(const Logging&) = delete;
    Logging& operator=(const Logging&) = delete;
    ~Logging() { qelLogfile::setLogStatus(0); }
};

std::string appended()
{
    const Logging on;
    const int result = qelLogfile(named()).appendWithSave(L"text");
    return outcome(result, content());
}

std::string emptied()
{
    const Logging on;
    const int result = qelLogfile(named()).reset();
    return outcome(result, content());
}

std::string logged()
{
    const Logging on;
    qelLogfile::logToFile(named(), L"text");
    std::string text = content();
    std::replace(text.begin(), text.end(), '\n', '/');
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    return text;
}

std::string measured()
{
    const Logging on;
    qelPerfMonitor monitor(named());
    monitor.start(L"a");
    monitor.end(L"a");
    const std::string text = content();
    const bool known = text.find("-1") == std::string::npos;
    return std::to_string(std::count(text.begin(), text.end(), '[')) + " lines" + (known ? "" : ", -1 for a time");
}

std::string measuredWithBox()
{
    const Logging on;
    machine->boxes = 0;
    qelPerfMonitor(named()).endWithMessageBox(L"a");
    return std::to_string(machine->boxes) + " box";
}

std::string version()
{
    qelString file = L"c:\\windows\\system32\\kernel32.dll";
    qelString text = L"before";
    const int result = qelLogfile::GetFileVersion(file, text);
    return outcome(result, plain(text) == "before" ? "before" : text.isEmpty() == 1 ? "empty" : "a version");
}

/// What a listing has.
struct Listing
{
    bool emptied;   ///< nothing of before
    bool firstLine; ///< with the process
    bool columns;   ///< their names
    long rows;
    long versions;
};

Listing readListing(const std::string& text)
{
    Listing listing = {text.compare(0, 4, "old ") != 0, text.find(" PID : ") != std::string::npos,
                       text.find("Base        Size") != std::string::npos, 0, 0};
    for (size_t at = text.find("0x"); at != std::string::npos; at = text.find("\n0x", at + 1))
    {
        ++listing.rows;
        const size_t version = text[at] == '0' ? at + 22 : at + 23;
        listing.versions += text.compare(version, 4, "    ") != 0 ? 1 : 0;
    }
    return listing;
}

std::string missing(long count, long of, const char* one, const char* several)
{
    return count == of ? ""
                       : std::string(", without ") +
                             (count + 1 == of ? one
                              : count == 0    ? "any "
                                              : "some ") +
                             (count + 1 == of ? "" : several);
}

/// Lists the modules, and says in how far the listing differs from one without a failure.
std::string listed()
{
    const Logging on;
    qelLogfile::listModules(named());
    const std::string text = content();
    if (text == "old ")
    {
        return "nothing written";
    }
    static const Listing full = readListing(text); // the first time nothing fails
    const Listing now = readListing(text);
    if (!now.firstLine && !now.columns && now.rows == 0)
    {
        return "empty file";
    }
    return std::string("listing") + (now.emptied ? "" : ", not emptied first") +
           (now.firstLine ? "" : ", without the process") + (now.columns ? "" : ", without the columns") +
           missing(now.rows, full.rows, "one module", "modules") +
           (now.rows == full.rows ? missing(now.versions, full.versions, "one version", "versions") : "");
}
} // namespace

Area qelTest::logOperations()
{
    return {
        "Logs, versions and modules",
        {
            Operation("appendWithSave", "1, old [TIME] text", appended)
                .fails("_wfopen", "0, old ")
                .fails("_vfwprintf_l", "1, old ")
                .ignores({"_get_osfhandle", "LockFileEx", "fclose"}),
            Operation("reset", "1, empty file", emptied).fails("_wfsopen", "1, old ").ignores({"fclose"}),
            Operation("logToFile", "old /[TIME] text", logged)
                .fails("_wfopen", "old ")
                .fails("_vfwprintf_l", "old ")
                .ignores({"_get_osfhandle", "LockFileEx", "fclose"}),
            Operation("qelPerfMonitor::start, end", "2 lines", measured)
                .fails("_wfopen", "1 lines", "1,2")
                .fails("_wfopen", "0 lines", "all")
                .fails("_vfwprintf_l", "1 lines", "1,2")
                .fails("_vfwprintf_l", "0 lines", "all")
                .fails("vswprintf_s", "2 lines")
                .fails("clock", "2 lines, -1 for a time")
                .ignores({"_get_osfhandle", "LockFileEx", "fclose"}),
            Operation("qelPerfMonitor::endWithMessageBox", "1 box", measuredWithBox)
                .fails("MessageBoxW", "0 box")
                .ignores({"_wfopen", "_vfwprintf_l", "vswprintf_s", "clock", "_get_osfhandle", "LockFileEx", "fclose"}),
            Operation("GetFileVersion", "1, a version", version)
                .fails("GetFileVersionInfoSizeW", "0, before")
                .fails("GetFileVersionInfoW", "0, before")
                .fails("VerQueryValueW", "0, before")
                .fails("vswprintf_s", "1, empty"),
            Operation("listModules", "listing", listed)
                .fails("CreateToolhelp32Snapshot: modules change", "listing", "1,2")
                .fails("CreateToolhelp32Snapshot", "nothing written", "1,all")
                .fails("CreateToolhelp32Snapshot", "listing, without any modules", "2")
                .fails("Process32FirstW", "nothing written")
                .fails("Process32NextW", "nothing written")
                .fails("Module32FirstW", "listing, without any modules")
                .fails("Module32NextW", "listing", "last")
                .fails("Module32NextW", "listing, without some modules or listing, without one module")
                .fails("GetFileVersionInfoSizeW", "listing, without any versions", "all")
                .fails("GetFileVersionInfoSizeW", "listing or listing, without one version")
                .fails("GetFileVersionInfoW", "listing, without any versions", "all")
                .fails("GetFileVersionInfoW", "listing, without one version")
                .fails("VerQueryValueW", "listing, without any versions", "all")
                .fails("VerQueryValueW", "listing, without one version")
                .fails("_wfsopen", "listing, not emptied first")
                .fails("_wfopen", "empty file or nothing written", "all")
                .fails("_wfopen", "listing, without the process, without the columns", "1")
                .fails("_wfopen", "listing, without one module")
                .fails("_vfwprintf_l", "empty file", "all")
                .fails("_vfwprintf_l", "listing, without the process", "1")
                .fails("_vfwprintf_l", "listing, without the columns", "2")
                .fails("_vfwprintf_l", "listing, without one module")
                .fails("vswprintf_s", "empty file", "all")
                .fails("vswprintf_s", "listing, without the process", "1")
                .fails("vswprintf_s", "listing, without the columns", "2")
                .fails("vswprintf_s", "listing, without one module or listing, without one version")
                .ignores({"_get_osfhandle", "LockFileEx", "fclose", "CloseHandle"}),
        },
    };
}
