// Reading whole files, and log lines.

#include "Families.h"
#include "Plain.h"

#include "qelFileAccess.h"
#include "qelLogfile.h"
#include "support/TemporaryFolder.h"

#include <windows.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>

using namespace qelBench;
using std::string;
using std::wstring;

namespace
{
/// What the bytes of a file are.
enum class Content
{
    ansi,
    utf8,
    utf16,
};

/// The size that the open file has, and its bytes.
string readBytes(const wstring& path)
{
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    LARGE_INTEGER size = {};
    GetFileSizeEx(file, &size);
    string bytes(static_cast<size_t>(size.QuadPart), '\0');
    DWORD got = 0;
    (void)ReadFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &got, nullptr);
    CloseHandle(file);
    bytes.resize(got);
    return bytes;
}

wstring converted(UINT page, const char* bytes, size_t size)
{
    const int length = static_cast<int>(size);
    wstring units(size, L'\0'); // no byte becomes more than one unit
    units.resize(static_cast<size_t>(MultiByteToWideChar(page, 0, bytes, length, units.data(), length)));
    return units;
}

wstring readByHand(const wstring& path, Content content)
{
    const string bytes = readBytes(path);
    if (content == Content::ansi)
    {
        return converted(CP_ACP, bytes.data(), bytes.size());
    }
    if (content == Content::utf8)
    {
        return converted(CP_UTF8, bytes.data() + 3, bytes.size() - 3);
    }
    wstring units((bytes.size() - 2) / sizeof(wchar_t), L'\0');
    memcpy(units.data(), bytes.data() + 2, units.size() * sizeof(wchar_t));
    return units;
}

/// Lines of 40 units that end with a line feed alone, so that both modes deliver the same.
string fileOf(long units, Content content)
{
    wstring text = sections(static_cast<size_t>(units));
    for (size_t i = 39; i < text.size(); i += 40)
    {
        text[i] = L'\n';
    }
    if (content == Content::utf16)
    {
        return "\xFF\xFE" + string(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
    }
    return (content == Content::utf8 ? "\xEF\xBB\xBF" : "") + narrowed(text);
}

struct Reading
{
    const char* name;
    Content content;
    const wchar_t* mode;
    qelFileAccess::encodeType encoding;
    const char* reason;
};

void addReading(Table& table, const Reading& reading, long units)
{
    Row row{string("read a file, ") + reading.name, sizeText(units, "units"), "ReadFile and one conversion", 1.2,
            reading.reason};
    row.clock = Clock::wall;
    table.add(row, [reading, units] {
        const auto folder = std::make_shared<const qelTest::TemporaryFolder>();
        const wstring path = folder->write(L"text.txt", fileOf(units, reading.content));
        const auto ours = [reading, units, folder, name = qelString(path.c_str())] {
            const qelFileAccess file(name, reading.mode, reading.encoding);
            qelString text;
            file.readFile(text, static_cast<size_t>(units) + 3);
            return text;
        };
        return sides(ours, [reading, path] { return readByHand(path, reading.content); });
    });
}

void addReadings(Table& table)
{
    const char* const kStream = "It opens a stream of the runtime, which takes 8 us more than a handle: 1.2 at best.";
    const char* const kRuntime =
        "The runtime makes line ends of the bytes one by one. Read below the stream, as with a "
        "key, it is 1.0 to 1.2; but then a key that the caller wrote into the mode would not count.";
    const Reading kReadings[] = {
        {"ANSI, text mode", Content::ansi, L"r", qelFileAccess::ANSI, kRuntime},
        {"ANSI, binary mode", Content::ansi, L"rb", qelFileAccess::ANSI, kStream},
        {"UTF-16 by its BOM, binary mode", Content::utf16, L"rb", qelFileAccess::ANSI, kStream},
        {"UTF-16, text mode with key", Content::utf16, L"r", qelFileAccess::UTF16LE, kStream},
        {"UTF-8, text mode with key", Content::utf8, L"r", qelFileAccess::UTF8, kStream},
        {"ANSI, text mode with key", Content::ansi, L"r", qelFileAccess::UNICODE_TEXT, kStream},
    };
    for (const Reading& reading : kReadings)
    {
        addReading(table, reading, 10000);
        addReading(table, reading, 500000);
    }
}

void logByHand(const wstring& path, const wstring& message)
{
    FILE* file = _wfopen(path.c_str(), L"a+");
    wchar_t time[9] = {};
    _wstrtime_s(time, 9);
    (void)fwprintf(file, L"\n[%ls] %ls", time, message.c_str());
    (void)fclose(file);
}

/// The last line without its time of day, of which both have 11 characters.
string lastMessage(const wstring& path)
{
    const string bytes = readBytes(path);
    return bytes.substr(bytes.rfind('[') + 11);
}

void addLogLine(Table& table)
{
    Row row{
        "log line", "60 units", "_wfopen, fwprintf, fclose", 1.1,
        "It locks the file, so that no other writer's line is overwritten: one call of the system. Without it 0.99."};
    row.clock = Clock::wall;
    table.add(row, [] {
        const auto folder = std::make_shared<const qelTest::TemporaryFolder>();
        const wstring message = sections(60);
        const qelString ourMessage(message.c_str());
        const qelString ourPath(folder->path(L"ours.log").c_str());
        const wstring theirPath = folder->path(L"theirs.log");
        const auto ours = [folder, ourMessage, ourPath] {
            qelLogfile::logToFile(ourPath, ourMessage);
            return 0;
        };
        const auto theirs = [message, theirPath] {
            logByHand(theirPath, message);
            return 0;
        };
        const auto same = [ours, theirs, ourPath, theirPath] {
            return ours() == theirs() && lastMessage(ourPath.getStringW()) == lastMessage(theirPath);
        };
        return Sides{repeated(ours), repeated(theirs), same};
    });
}

void addGrowth(Table& table, const char* name, Content content, const wchar_t* mode, qelFileAccess::encodeType encoding)
{
    table.add(Growth{name, 1.15}, [=](long n) {
        const auto folder = std::make_shared<const qelTest::TemporaryFolder>();
        const qelString path(folder->write(L"text.txt", fileOf(n, content)).c_str());
        return repeated([=] {
            const qelFileAccess file(path, mode, encoding);
            qelString text;
            file.readFile(text, static_cast<size_t>(n) + 3);
            (void)folder->path();
            return text;
        });
    });
}
} // namespace

void qelBench::addFiles(Table& table)
{
    table.family("Files");
    addReadings(table);
    addLogLine(table);
    addGrowth(table, "read a file, ANSI", Content::ansi, L"rb", qelFileAccess::ANSI);
    addGrowth(table, "read a file, UTF-8", Content::utf8, L"r", qelFileAccess::UTF8);
    addGrowth(table, "read a file, UTF-16", Content::utf16, L"r", qelFileAccess::UTF16LE);
}
