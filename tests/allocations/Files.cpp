#include "allocations/Operations.h"

#include "qelDebugInterfaces.h"
#include "qelFileAccess.h"
#include "qelLogfile.h"
#include "qelPerfMonitor.h"
#include "support/MessageBoxes.h"
#include "support/TemporaryFolder.h"

#include <windows.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>

using namespace qelTest;

namespace
{
const unsigned short* sixteen(const wchar_t* text)
{
    return reinterpret_cast<const unsigned short*>(text);
}

qelString text(const std::wstring& value)
{
    return qelString(value.c_str());
}

/// What a file holds, byte by byte.
std::wstring bytesOf(const std::wstring& path)
{
    std::ifstream stream(std::string(path.begin(), path.end()), std::ios::binary);
    std::wstring bytes;
    for (std::istreambuf_iterator<char> at(stream), end; at != end; ++at)
    {
        bytes += static_cast<wchar_t>(static_cast<unsigned char>(*at));
    }
    return bytes;
}

/// The same with each number as 0: logs have times in them.
std::wstring logIn(const std::wstring& path)
{
    std::wstring text = bytesOf(path);
    std::replace_if(text.begin(), text.end(), [](wchar_t c) { return c >= L'0' && c <= L'9'; }, L'0');
    const auto end = std::unique(text.begin(), text.end(), [](wchar_t a, wchar_t b) { return a == L'0' && b == L'0'; });
    text.erase(end, text.end());
    return text;
}

std::vector<std::wstring> linesOf(const std::wstring& text)
{
    std::vector<std::wstring> lines;
    std::wistringstream stream(text);
    for (std::wstring line; std::getline(stream, line);)
    {
        lines.push_back(line);
    }
    return lines;
}

/// The row of a module in listModules(), with blanks for its version; nothing where this is no row.
std::wstring withoutVersion(const std::wstring& row)
{
    const size_t version = 22;
    const size_t width = 16;
    const size_t path =
        row.substr(0, 2) == L"0x" ? row.find_first_not_of(L"0123456789. ", version) : std::wstring::npos;
    return path == std::wstring::npos ? L"" : row.substr(0, version) + std::wstring(width, L' ') + row.substr(path);
}

/// Lines of listModules() from the first one on, all where it has not thrown. Rows may lack their version.
bool isListing(const Seen& left, const Seen& whole)
{
    const std::vector<std::wstring> lines = linesOf(left.state);
    const std::vector<std::wstring> all = linesOf(whole.state);
    if (lines.size() > all.size() || (left.result == whole.result && lines.size() != all.size()))
    {
        return false;
    }
    return std::equal(lines.begin(), lines.end(), all.begin(), [](const std::wstring& line, const std::wstring& row) {
        return line == row || (!line.empty() && line == withoutVersion(row));
    });
}

const char kContent[] = "HEA 200 1.5\nIPE 300\n";

/// An operation on a file that is open for reading and holds kContent. `failure` is what else a failure may leave.
template <class Read> void reads(Operations& table, const char* name, Read read, const wchar_t* failure = nullptr)
{
    throwing(table, {name}, [=](Trial& trial) {
        const TemporaryFolder folder;
        const qelFileAccess file(text(folder.write(L"file.txt", kContent)), L"r", qelFileAccess::ANSI);
        qelString seen(L"none yet");
        if (failure != nullptr)
        {
            trial.mayGive(L"", failure);
        }
        trial(
            [&] {
                file.seek(0, 0);
                read(file, seen);
            },
            [&] { return wide(seen); });
    });
}

/// The same for one that writes to a file.
template <class Write> void writes(Operations& table, const char* name, Write write)
{
    throwing(table, {name}, [=](Trial& trial) {
        const TemporaryFolder folder;
        const std::wstring path = folder.path(L"file.txt");
        const qelFileAccess file(text(path), L"w", qelFileAccess::ANSI);
        trial([&] { write(file); },
              [&] {
                  // What is in the stream's buffer goes to the file.
                  file.seek(0, 1);
                  return bytesOf(path);
              });
    });
}

void addAccess(Operations& table)
{
    throwing(table, {"qelFileAccess::qelFileAccess(qelString const&, qelString const&, qelFileAccess::encodeType)"},
             [](Trial& trial) {
                 const TemporaryFolder folder;
                 const qelString path = text(folder.write(L"file.txt", kContent));
                 const qelString mode(L"r");
                 std::optional<qelFileAccess> file;
                 trial([&] { file.emplace(path, mode, qelFileAccess::UTF8); },
                       [&] { return number(file ? file->isOpen() : -1); });
             });
    // Empty as after any failed read.
    reads(
        table, "qelFileAccess::getStringW(qelString&, int) const",
        [](const qelFileAccess& file, qelString& seen) { file.getStringW(seen, 100); }, L"");
    reads(table, "qelFileAccess::readString(qelString&) const",
          [](const qelFileAccess& file, qelString& seen) { file.readString(seen); });
    throwing(table, {"qelFileAccess::readFile(qelString&, unsigned long long) const"}, [](Trial& trial) {
        const TemporaryFolder folder;
        const qelFileAccess file(text(folder.write(L"file.txt", kContent)), L"r", qelFileAccess::ANSI);
        qelString contents(L"none yet");
        trial.mayGive(L"", L"");
        trial(
            [&] {
                file.seek(0, 0);
                trial.result = number(static_cast<long long>(file.readFile(contents, 100)));
            },
            [&] { return wide(contents); });
    });
    writes(table, "qelFileAccess::write(char const*, ...) const",
           [](const qelFileAccess& file) { return file.write("%d parts", 12); });
    static const qelString line(L"12 parts");
    writes(table, "qelFileAccess::puts(qelString) const", [](const qelFileAccess& file) { return file.puts(line); });
    withoutMemory(
        table,
        {"qelFileAccess::qelFileAccess()", "qelFileAccess::~qelFileAccess()", "qelFileAccess::close()",
         "qelFileAccess::isOpen() const", "qelFileAccess::getCodingMethod() const", "qelFileAccess::eof() const",
         "qelFileAccess::write(wchar_t const*, ...) const", "qelFileAccess::write(unsigned short const*, ...) const",
         "qelFileAccess::read(void*, unsigned long long, unsigned long long) const",
         "qelFileAccess::readInt(int&) const", "qelFileAccess::readDouble(double&) const",
         "qelFileAccess::getc() const", "qelFileAccess::seek(long, int) const", "qelFileAccess::getFileLength()",
         "qelFileAccess::makeDir(qelString const&)", "qelFileAccess::renameFile(qelString const&, qelString const&)",
         "qelFileAccess::removeFile(qelString const&)", "qelFileAccess::changeWorkingDir(qelString const&)"},
        [](Trial& trial) {
            const TemporaryFolder folder;
            const qelString path = text(folder.path(L"file.txt"));
            const qelString moved = text(folder.path(L"moved.txt"));
            const qelString inside = text(folder.path(L"inside"));
            const qelString here(L".");
            std::optional<qelFileAccess> file(std::in_place, path, L"w+", qelFileAccess::ANSI);
            trial(
                [&] {
                    const qelFileAccess none;
                    file->write(L"%d", 1);
                    file->write(sixteen(L"%d"), 2);
                    char byte = 0;
                    int integer = 0;
                    double real = 0;
                    file->getFileLength();
                    file->readInt(integer);
                    file->seek(0, 0);
                    file->readDouble(real);
                    file->seek(0, 0);
                    file->getc();
                    file->read(&byte, 1, 1);
                    trial.result = number(none.isOpen() + file->eof() + file->getCodingMethod());
                    file->close();
                    file.reset();
                    qelFileAccess::renameFile(path, moved);
                    qelFileAccess::removeFile(moved);
                    qelFileAccess::makeDir(inside);
                    qelFileAccess::changeWorkingDir(here);
                },
                [] { return std::wstring(); });
        });
}

/// A line that the log file gets, or not.
template <class Write> void logs(Operations& table, Names names, Write write)
{
    throwing(table, std::move(names), [=](Trial& trial) {
        const TemporaryFolder folder;
        const std::wstring path = folder.path(L"log.txt");
        qelLogfile::setLogStatus(1);
        const qelString name = text(path);
        trial([&] { write(name); }, [&] { return logIn(path); });
        qelLogfile::setLogStatus(0);
    });
}

void addLogs(Operations& table)
{
    static const qelString line(L"line");
    throwing(table, {"qelLogfile::qelLogfile(qelString)"}, [](Trial& trial) {
        const qelString longName(std::wstring(300, L'x').c_str());
        std::optional<qelLogfile> log;
        trial([&] { log.emplace(longName); }, [&] { return number(log ? 1 : 0); });
    });
    throwing(table, {"qelPerfMonitor::qelPerfMonitor(qelString const&)"}, [](Trial& trial) {
        const qelString longName(std::wstring(300, L'x').c_str());
        std::optional<qelPerfMonitor> monitor;
        trial([&] { monitor.emplace(longName); }, [&] { return number(monitor ? 1 : 0); });
    });
    withoutMemory(table,
                  {"qelLogfile::reset()", "qelLogfile::appendWithSave(qelString const&)", "qelLogfile::assertClose()",
                   "qelLogfile::getLogStatus()", "qelLogfile::setLogStatus(int)", "qelLogfile::~qelLogfile()",
                   "qelLogfile::logToFile(qelString const&, qelString const&)"},
                  [](Trial& trial) {
                      const TemporaryFolder folder;
                      std::optional<qelLogfile> log(std::in_place, text(folder.path(L"log.txt")));
                      const qelString other = text(folder.path(L"other.txt"));
                      trial(
                          [&] {
                              qelLogfile::setLogStatus(1);
                              log->reset();
                              log->appendWithSave(line);
                              log.reset();
                              trial.result = number(qelLogfile::getLogStatus());
                              qelLogfile::setLogStatus(0);
                              qelLogfile::logToFile(other, line);
                          },
                          [] { return std::wstring(); });
                  });
    throwingOrQuiet(table, {"qelLogfile::GetFileVersion(qelString&, qelString&)"}, [](Trial& trial) {
        qelString library(L"VarnelQELRoots.dll");
        qelString version(L"none yet");
        trial.mayGive(L"0");
        trial([&] { trial.result = number(qelLogfile::GetFileVersion(library, version)); },
              [&] { return wide(version) + wide(library); });
    });
    throwingOrQuiet(table, {"qelLogfile::listModules(qelString const&)"}, [](Trial& trial) {
        const TemporaryFolder folder;
        const std::wstring path = folder.path(L"modules.txt");
        const qelString name = text(path);
        trial.mayLeave(&isListing);
        trial(
            [&] {
                qelLogfile::listModules(name);
                trial.result = L"listed";
            },
            [&] { return bytesOf(path); });
    });
    logs(table, {"qelPerfMonitor::start(qelString const&)"}, [](const qelString& name) {
        qelPerfMonitor monitor(name);
        monitor.start(line);
    });
    logs(table, {"qelPerfMonitor::end(qelString const&)"}, [](const qelString& name) {
        qelPerfMonitor monitor(name);
        monitor.end(line);
    });
    throwing(table, {"qelPerfMonitor::endWithMessageBox(qelString const&)"}, [](Trial& trial) {
        const TemporaryFolder folder;
        const std::wstring path = folder.path(L"log.txt");
        MessageBoxes boxes(L"Orvalis");
        qelPerfMonitor monitor(text(path));
        trial([&] { monitor.endWithMessageBox(line); },
              [&] { return number(static_cast<long long>(boxes.seen().size())); });
    });
}

void addDebugging(Operations& table)
{
    static const qelString name(L"Beam");
    static int context = 0;
    static int object = 0;
    throwing(table, {"qelDebugInterfaces::objectConstructed(qelString const&, void*)"}, [](Trial& trial) {
        for (int i = 0; i < 8; ++i)
        {
            qelDebugInterfaces::objectConstructed(name, &object);
        }
        trial([] { qelDebugInterfaces::objectConstructed(name, &object); },
              [] { return number(qelDebugInterfaces::entriesNumber()); });
        qelDebugInterfaces::clearAllDebugInfo(nullptr);
    });
    throwing(table, {"qelDebugInterfaces::setCurrentContextInitiator(void*)"}, [](Trial& trial) {
        int set = 0;
        for (int i = 0; i < 8; ++i)
        {
            qelDebugInterfaces::setCurrentContextInitiator(&context);
        }
        trial(
            [&] {
                qelDebugInterfaces::setCurrentContextInitiator(&context);
                ++set;
            },
            [&] { return number(set); });
        for (int i = 0; i < 8 + set; ++i)
        {
            qelDebugInterfaces::contextInitiatorEnd(&context);
        }
    });
    withoutMemory(table,
                  {"qelDebugInterfaces::contextInitiatorEnd(void*)",
                   "qelDebugInterfaces::objectDestroied(qelString const&, void*)",
                   "qelDebugInterfaces::clearAllDebugInfo(void*)", "qelDebugInterfaces::entriesNumber()",
                   "qelDebugInterfaces::showResults(void*)", "qelDebugInterfaces::getIndexAt(qelString&, void*)",
                   "qelOutputDebugString(qelString const&)"},
                  [](Trial& trial) {
                      qelDebugInterfaces::setCurrentContextInitiator(&context);
                      qelDebugInterfaces::objectConstructed(name, &object);
                      trial(
                          [&] {
                              qelDebugInterfaces::objectDestroied(name, &object);
                              qelDebugInterfaces::showResults(&context);
                              qelDebugInterfaces::clearAllDebugInfo(&context);
                              qelDebugInterfaces::contextInitiatorEnd(&context);
                              qelOutputDebugString(name);
                              trial.result = number(qelDebugInterfaces::entriesNumber());
                          },
                          [] { return std::wstring(); });
                  });
    withoutMemory(table, {"qelWinMessage::messageBox(qelString const&)"}, [](Trial& trial) {
        MessageBoxes boxes(L"Orvalis");
        trial([] { qelWinMessage::messageBox(name); }, [] { return std::wstring(); });
    });
}
} // namespace

void qelTest::addFiles(Operations& table)
{
    addAccess(table);
    addLogs(table);
    addDebugging(table);
}
