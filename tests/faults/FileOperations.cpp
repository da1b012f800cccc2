#include "faults/Operations.h"

#include "qelFileAccess.h"
#include "qelRuntime.h"

#include "support/TestFile.h"

#include <functional>

using namespace qelTest;

namespace
{
std::wstring path(const wchar_t* name = L"file.txt")
{
    return machine->folder.path(name);
}

qelString named(const wchar_t* name = L"file.txt")
{
    return qelString(path(name).c_str());
}

bool exists(const wchar_t* name)
{
    return GetFileAttributesW(path(name).c_str()) != INVALID_FILE_ATTRIBUTES;
}

/// Writes with `write` into a new file, and says what is in it then, without the mark.
std::string writing(qelFileAccess::encodeType encoding, const std::function<int(const qelFileAccess&)>& write)
{
    DeleteFileW(path().c_str());
    int result = 0;
    {
        const qelFileAccess file(named(), L"w", encoding);
        result = write(file);
    }
    std::string content = contentOf(path());
    for (const char* mark : {"\xEF\xBB\xBF", "\xFF\xFE"})
    {
        content = content.compare(0, strlen(mark), mark) == 0 ? content.substr(strlen(mark)) : content;
    }
    return outcome(result, content.empty() ? "empty file" : content);
}

/// Lets `read` read from a file of this content.
std::string reading(qelFileAccess::encodeType encoding, const std::string& content,
                    const std::function<std::string(qelFileAccess&)>& read)
{
    machine->folder.write(L"file.txt", content);
    qelFileAccess file(named(), L"r", encoding);
    return file.isOpen() == 1 ? read(file) : "not open";
}

std::string readingLine(qelFileAccess::encodeType encoding, const std::string& content)
{
    return reading(encoding, content, [](qelFileAccess& file) {
        qelString line = L"before";
        file.getStringW(line, 100);
        return "line " + plain(line);
    });
}

std::string readingWhole(qelFileAccess::encodeType encoding, const std::string& content)
{
    return reading(encoding, content, [](qelFileAccess& file) {
        qelString contents = L"before";
        const size_t count = file.readFile(contents, 100);
        return outcome(static_cast<long long>(count), contents);
    });
}

/// A number of the file "42 x".
template <class Number, class Read> std::string readingNumber(const Read& read)
{
    return reading(qelFileAccess::ANSI, "42 x", [&](qelFileAccess& file) {
        Number value = 7;
        const int result = read(file, value);
        return outcome(result, std::to_string(static_cast<int>(value)));
    });
}

/// A stream of the runtime on a file that holds "text".
std::string streaming(const wchar_t* mode, const std::function<std::string(FILE*)>& use)
{
    machine->folder.write(L"file.txt", "text");
    FILE* stream = nullptr;
    qelfopen(&stream, named(), mode);
    const std::string result = use(stream);
    if (stream != nullptr)
    {
        (void)fclose(stream);
    }
    return result;
}

std::string utf16Mark()
{
    return "\xFF\xFE";
}

std::vector<Operation> writers()
{
    return {
        Operation(
            "write", "7, 3 parts",
            [] { return writing(qelFileAccess::ANSI, [](const qelFileAccess& f) { return f.write(L"%d parts", 3); }); })
            .fails("_wfopen_s", "0, no such file")
            .fails("vfwprintf_s", "-1, empty file")
            .ignores({"fclose"}),
        Operation(
            "write, narrow format", "7, 3 parts",
            [] { return writing(qelFileAccess::ANSI, [](const qelFileAccess& f) { return f.write("%d parts", 3); }); })
            .fails("_wfopen_s", "0, no such file")
            .fails("vfwprintf_s", "-1, empty file")
            .ignores({"fclose"}),
        Operation(
            "write, UTF-8", "7, 3 parts",
            [] { return writing(qelFileAccess::UTF8, [](const qelFileAccess& f) { return f.write(L"%d parts", 3); }); })
            .fails("_wfopen_s", "0, no such file")
            .fails("vswprintf_s", "-1, empty file")
            .fails("fputws", "-1, empty file")
            .ignores({"fclose", "_vscwprintf"}),
        Operation("puts", "0, parts",
                  [] { return writing(qelFileAccess::ANSI, [](const qelFileAccess& f) { return f.puts(L"parts"); }); })
            .fails("_wfopen_s", "0, no such file")
            .fails("fputs", "-1, empty file")
            .fails("WideCharToMultiByte", "0, empty file", "all")
            .ignores({"fclose", "GetCPInfo", "WideCharToMultiByte"}),
        Operation("puts, surrogate pair", "0, 6 bytes",
                  [] {
                      DeleteFileW(path().c_str());
                      int result = 0;
                      {
                          const qelFileAccess file(named(), L"w", qelFileAccess::UTF16LE);
                          result = file.puts(L"a\xD83D\xDE00");
                      }
                      const std::string content = contentOf(path());
                      if (content == "no such file")
                      {
                          return outcome(result, content);
                      }
                      const bool marked = content.compare(0, 2, "\xFF\xFE") == 0;
                      return outcome(result, std::to_string(content.size() - (marked ? 2 : 0)) + " bytes");
                  })
            .fails("_wfopen_s", "0, no such file")
            .fails("fflush", "-1, 2 bytes")
            .fails("fputwc", "-1, 0 bytes", "1,all")
            .fails("fputwc", "-1, 2 bytes", "2")
            .fails("fputwc", "-1, 4 bytes", "3")
            .ignores({"fclose"}),
    };
}

std::vector<Operation> readers()
{
    return {
        Operation("read", "4",
                  [] {
                      return reading(qelFileAccess::ANSI, "text", [](qelFileAccess& f) {
                          char buffer[8] = {};
                          return std::to_string(f.read(buffer, 1, 8));
                      });
                  })
            .fails("_wfopen_s", "not open")
            .fails("fread", "0")
            .ignores({"fclose"}),
        Operation("getStringW", "line text", [] { return readingLine(qelFileAccess::ANSI, "text"); })
            .fails("_wfopen_s", "not open")
            .fails("fgets", "line no text")
            .ignores({"fclose"}),
        Operation("getStringW, UTF-16", "line text",
                  [] { return readingLine(qelFileAccess::UTF16LE, utf16Mark() + utf16(L"text")); })
            .fails("_wfopen_s", "not open")
            .fails("fgetws", "line no text")
            .ignores({"fclose"}),
        Operation("getStringW, UTF-8", "line text", [] { return readingLine(qelFileAccess::UTF8, "text"); })
            .fails("_wfopen_s", "not open")
            .fails("fgetws", "line no text")
            .fails("WideCharToMultiByte", "line no text", "all")
            .ignores({"fclose", "GetCPInfo", "WideCharToMultiByte"}),
        Operation("readString", "1, 42",
                  [] {
                      return reading(qelFileAccess::ANSI, "42 x", [](qelFileAccess& f) {
                          qelString token = L"before";
                          const int result = f.readString(token);
                          return outcome(result, token);
                      });
                  })
            .fails("_wfopen_s", "not open")
            .fails("fwscanf_s", "-1, no text")
            .ignores({"fclose"}),
        Operation("readInt", "1, 42",
                  [] { return readingNumber<int>([](qelFileAccess& f, int& value) { return f.readInt(value); }); })
            .fails("_wfopen_s", "not open")
            .fails("fwscanf_s", "-1, 0")
            .ignores({"fclose"}),
        Operation(
            "readDouble", "1, 42",
            [] { return readingNumber<double>([](qelFileAccess& f, double& value) { return f.readDouble(value); }); })
            .fails("_wfopen_s", "not open")
            .fails("fwscanf_s", "-1, 0")
            .ignores({"fclose"}),
        Operation("getc", "116",
                  [] {
                      return reading(qelFileAccess::ANSI, "text",
                                     [](qelFileAccess& f) { return std::to_string(f.getc()); });
                  })
            .fails("_wfopen_s", "not open")
            .fails("fgetwc", "65535")
            .ignores({"fclose"}),
        Operation("seek", "0",
                  [] {
                      return reading(qelFileAccess::ANSI, "text",
                                     [](qelFileAccess& f) { return std::to_string(f.seek(1, 0)); });
                  })
            .fails("_wfopen_s", "not open")
            .fails("fseek", "-1")
            .ignores({"fclose"}),
        Operation("getFileLength", "4",
                  [] {
                      return reading(qelFileAccess::ANSI, "text",
                                     [](qelFileAccess& f) { return std::to_string(f.getFileLength()); });
                  })
            .fails("_wfopen_s", "not open")
            .fails("fseek", "0", "1,all")
            .fails("fseek", "4", "2")
            .fails("ftell", "-1")
            .ignores({"fclose"}),
        Operation("readFile", "4, text", [] { return readingWhole(qelFileAccess::ANSI, "text"); })
            .fails("_wfopen_s", "not open")
            .fails("fread", "0, no text or 4, text")
            .fails("fseek", "0, no text")
            .ignores({"fclose", "GetCPInfo"}),
        Operation("readFile, UTF-8", "4, text", [] { return readingWhole(qelFileAccess::UTF8, "text"); })
            .fails("_wfopen_s", "not open")
            .fails("_get_osfhandle", "0, no text")
            .fails("GetFileType", "0, no text")
            .fails("fseek", "0, no text")
            .fails("ReadFile", "0, no text")
            .fails("SetFilePointerEx", "0, no text")
            .fails("MultiByteToWideChar", "0, no text or 4, text")
            .ignores({"fclose", "fgetwc", "_setmode"}),
        Operation("readFile, UTF-16", "4, text",
                  [] { return readingWhole(qelFileAccess::UTF16LE, utf16Mark() + utf16(L"text")); })
            .fails("_wfopen_s", "not open")
            .fails("_get_osfhandle", "0, no text")
            .fails("GetFileType", "0, no text")
            .fails("fseek", "0, no text")
            .fails("ReadFile", "0, no text")
            .fails("SetFilePointerEx", "0, no text")
            .ignores({"fclose", "fgetwc", "_setmode"}),
    };
}

std::vector<Operation> folders()
{
    return {
        Operation("removeFile", "0, gone",
                  [] {
                      machine->folder.write(L"file.txt", "text");
                      const int result = qelFileAccess::removeFile(named());
                      return outcome(result, exists(L"file.txt") ? "still there" : "gone");
                  })
            .fails("_wremove", "-1, still there"),
        Operation("renameFile", "0, renamed",
                  [] {
                      machine->folder.write(L"file.txt", "text");
                      DeleteFileW(path(L"other.txt").c_str());
                      const int result = qelFileAccess::renameFile(named(), named(L"other.txt"));
                      const bool renamed = exists(L"other.txt") && !exists(L"file.txt");
                      return outcome(result, renamed ? "renamed" : "as before");
                  })
            .fails("_wrename", "-1, as before"),
        Operation("changeWorkingDir", "0", [] { return std::to_string(qelFileAccess::changeWorkingDir(L".")); })
            .fails("_wchdir", "-1"),
        Operation("makeDir", "0, there",
                  [] {
                      RemoveDirectoryW(path(L"folder").c_str());
                      const int result = qelFileAccess::makeDir(named(L"folder"));
                      return outcome(result, exists(L"folder") ? "there" : "not there");
                  })
            .fails("_wmkdir", "-1, not there"),
    };
}

std::vector<Operation> streams()
{
    return {
        Operation("qelfopen", "0, open",
                  [] {
                      machine->folder.write(L"file.txt", "text");
                      FILE* stream = nullptr;
                      const int result = qelfopen(&stream, named(), L"r");
                      const std::string said = outcome(result, stream == nullptr ? "no stream" : "open");
                      qelfclose(stream);
                      return said;
                  })
            .fails("_wfsopen", "0, no stream")
            .ignores({"fclose"}),
        Operation("qelfprintf", "2",
                  [] { return streaming(L"w", [](FILE* f) { return std::to_string(qelfprintf(f, L"%d", 42)); }); })
            .fails("_wfsopen", "-1")
            .fails("_vfwprintf_l", "-1"),
        Operation("qelfprintf, narrow", "2",
                  [] { return streaming(L"w", [](FILE* f) { return std::to_string(qelfprintf(f, "%d", 42)); }); })
            .fails("_wfsopen", "-1")
            .fails("_vfprintf_l", "-1"),
        Operation("qelfputs", "0",
                  [] { return streaming(L"w", [](FILE* f) { return std::to_string(qelfputs("text", f)); }); })
            .fails("_wfsopen", "-1")
            .fails("fputs", "-1"),
        Operation("qelfgets", "text",
                  [] {
                      return streaming(L"r", [](FILE* f) {
                          char line[8] = "before";
                          return std::string(qelfgets(line, 8, f) == nullptr ? "null" : line);
                      });
                  })
            .fails("_wfsopen", "null")
            .fails("fgets", "null"),
        Operation("qelfread", "4",
                  [] {
                      return streaming(L"r", [](FILE* f) {
                          char buffer[8] = {};
                          return std::to_string(qelfread(buffer, 1, 8, f));
                      });
                  })
            .fails("_wfsopen", "0")
            .fails("fread", "0"),
        Operation("qelfclose", "0",
                  [] {
                      FILE* const stream = _wfopen(path().c_str(), L"w");
                      return std::to_string(qelfclose(stream));
                  })
            .fails("fclose", "-1"),
        Operation("qelFileExists", "1",
                  [] {
                      machine->folder.write(L"file.txt", "text");
                      return std::to_string(qelFileExists(named()));
                  })
            .fails("FindFirstFileW", "0")
            .ignores({"FindClose"}),
    };
}
} // namespace

Area qelTest::fileOperations()
{
    Area area = {"Files", {}};
    for (const auto& some : {writers(), readers(), folders(), streams()})
    {
        area.operations.insert(area.operations.end(), some.begin(), some.end());
    }
    return area;
}
