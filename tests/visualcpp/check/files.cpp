#include "Check.h"

#include "qelDebugInterfaces.h"
#include "qelFileAccess.h"
#include "qelLogfile.h"
#include "qelPerfMonitor.h"

#include <windows.h>

#include <stdio.h>

namespace
{
const wchar_t kPath[] = L"abiCheck-file.txt";

/// The bytes of the file in hexadecimal digits.
qelString bytesOf(const wchar_t* path)
{
    qelString digits;
    const HANDLE file = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    unsigned char byte = 0;
    DWORD count = 0;
    while (file != INVALID_HANDLE_VALUE && ReadFile(file, &byte, 1, &count, nullptr) != FALSE && count == 1)
    {
        digits += qelString().format(L"%02x", static_cast<unsigned>(byte));
    }
    if (file != INVALID_HANDLE_VALUE)
    {
        CloseHandle(file);
    }
    return digits;
}

void writeBytes(const char* bytes, DWORD count)
{
    const HANDLE file = CreateFileW(kPath, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD written = 0;
    CHECK(WriteFile(file, bytes, count, &written, nullptr) != FALSE && written == count);
    CloseHandle(file);
}

/// Every mode with every encoding: whether it opens and which bytes it writes.
void showWriting()
{
    const wchar_t* const modes[] = {L"w", L"wb", L"w+", L"a", L"r+"};
    for (const wchar_t* mode : modes)
    {
        for (int encoding = qelFileAccess::ANSI; encoding <= qelFileAccess::UTF16LE; ++encoding)
        {
            DeleteFileW(kPath);
            qelFileAccess file(kPath, mode, static_cast<qelFileAccess::encodeType>(encoding));
            const int written = file.write(L"a\x00E4%s|%d\n", L"x", 5);
            const int put = file.puts(L"b\x20AC\n");
            qelString line;
            line.format(L"%s %d: %d %d %d ", mode, encoding, file.isOpen(), written, put);
            file.close();
            show("written", line + bytesOf(kPath));
        }
    }
}

void showReading(const char* what, const char* bytes, DWORD count)
{
    writeBytes(bytes, count);
    for (int encoding = qelFileAccess::ANSI; encoding <= qelFileAccess::UTF16LE; ++encoding)
    {
        qelFileAccess file(kPath, L"r", static_cast<qelFileAccess::encodeType>(encoding));
        qelString line;
        qelString token;
        int number = -1;
        double value = -1;
        file.getStringW(line, 100);
        const int results[] = {file.readString(token), file.readInt(number), file.readDouble(value), file.getc(),
                               file.eof() != 0};
        qelString all;
        const size_t length = file.readFile(all, 1000);
        show(what, line + L"/" + token + L"/" +
                       qelString().format(L"%d %d %d %d %d, %d %g, %d/", results[0], results[1], results[2], results[3],
                                          results[4], number, value, static_cast<int>(length)) +
                       all);
    }
}

void checkFileAccess()
{
    showWriting();
    const char utf16[] = "\xFF\xFE"
                         "a\0\xE4\0\r\0\n\0-\x4E \0007\0 \0001\0.\0005\0x\0";
    showReading("UTF-16", utf16, sizeof utf16 - 1);
    const char utf8[] = "\xEF\xBB\xBF"
                        "a\xC3\xA4\r\n\xE4\xB8\xAD 7 1.5x";
    showReading("UTF-8", utf8, sizeof utf8 - 1);
    const char ansi[] = "a\xE4\r\n\x80 7 1.5x";
    showReading("ANSI", ansi, sizeof ansi - 1);

    {
        qelFileAccess file(kPath, L"rb", qelFileAccess::ANSI);
        CHECK(file.isOpen() == 1 && file.getCodingMethod() == qelFileAccess::ANSI &&
              file.getFileLength() == sizeof ansi - 1);
        char bytes[4] = "";
        CHECK(file.seek(2, SEEK_SET) == 0 && file.read(bytes, 1, 2) == 2 && bytes[0] == '\r');
    }
    CHECK(qelFileAccess::makeDir(L"abiCheck-folder") == 0);
    CHECK(qelFileAccess::renameFile(kPath, L"abiCheck-folder\\moved.txt") == 0);
    CHECK(qelFileAccess::changeWorkingDir(L"abiCheck-folder") == 0);
    CHECK(qelFileAccess::removeFile(L"moved.txt") == 0 && qelFileAccess::removeFile(L"moved.txt") != 0);
    CHECK(qelFileAccess::changeWorkingDir(L"..") == 0 && RemoveDirectoryW(L"abiCheck-folder") != FALSE);
    const qelFileAccess closed;
    CHECK(closed.isOpen() == 0 && closed.write(L"x") == 0);
}

void checkLogs()
{
    const qelString path(L"abiCheck.log");
    qelLogfile log(path);
    CHECK(qelLogfile::getLogStatus() == 0 && log.appendWithSave(L"off\n") == 0);
    qelLogfile::setLogStatus(1);
    CHECK(log.reset() != 0 && log.appendWithSave(L"St\x00FCtze\n") == 1);
    // "[hh:mm:ss] ", the text in the code page of the C runtime's locale, and a line end of two bytes.
    show("log", bytesOf(path.getStringW()).mid(22));
    qelPerfMonitor monitor(path);
    monitor.start(L"Load");
    monitor.end(L"Load");
    qelLogfile::logToFile(path, L"message");
    qelFileAccess file(path, L"r", qelFileAccess::ANSI);
    qelString text;
    file.readFile(text, 1000);
    file.close();
    CHECK(text.mid(11) == L"message" || text.find(L"] message") > 0);
    qelLogfile::listModules(path);
    qelFileAccess listing(path, L"r", qelFileAccess::ANSI);
    listing.readFile(text, 100000);
    listing.close();
    CHECK(text.find(L"VarnelQELRoots.dll") > 0 && text.find(L"PID : ") > 0);
    qelString version;
    qelString library(L"VarnelQELRoots.dll");
    CHECK(qelLogfile::GetFileVersion(library, version) == 1);
    show("version", version);
    CHECK(DeleteFileW(path.getStringW()) != FALSE);
    qelLogfile::setLogStatus(0);
}

void checkDebugInterfaces()
{
    int document = 0;
    int objects[2] = {};
    qelDebugInterfaces::setCurrentContextInitiator(&document);
    qelDebugInterfaces::objectConstructed(L"Beam", &objects[0]);
    qelDebugInterfaces::objectConstructed(L"Plate", &objects[1]);
    qelDebugInterfaces::objectDestroied(L"Beam", &objects[0]);
    qelDebugInterfaces::contextInitiatorEnd(&document);
    CHECK(qelDebugInterfaces::entriesNumber() == 2);
    qelDebugInterfaces::showResults(&document);
    qelDebugInterfaces::clearAllDebugInfo(&document);
    CHECK(qelDebugInterfaces::entriesNumber() == 0);
    const qelDebugInterfaces::DebugInfo info;
    CHECK(info.object == nullptr && info.className.isEmpty() == 1);
    qelOutputDebugString(L"abiCheck");
}
} // namespace

void checkFiles()
{
    checkFileAccess();
    checkLogs();
    checkDebugInterfaces();
}
