#include "qelFileAccess.h"

#include "files/EncodedStream.h"
#include "files/WorkBuffer.h"
#include "strings/CodePage.h"
#include "strings/Text.h"

#include <direct.h>
#include <errno.h>
#include <stdarg.h>
#include <stdint.h>
#include <stdlib.h>
#include <wchar.h>

#if defined(_UCRT) && !defined(_MSC_VER)
// Not every MinGW declares it.
extern "C" _CRTIMP _invalid_parameter_handler __cdecl _set_thread_local_invalid_parameter_handler(
    _invalid_parameter_handler handler);
#endif

namespace
{
/// Size of the line buffer: 256 wide characters or 512 bytes.
const int kLineBytes = 512;
const int kLineUnits = kLineBytes / static_cast<int>(sizeof(wchar_t));
const size_t kTokenUnits = 256;

// UTF8 deliberately is not among them.
bool isWide(qelFileAccess::encodeType encoding)
{
    return encoding == qelFileAccess::UNICODE_TEXT || encoding == qelFileAccess::UTF16LE;
}

const wchar_t* openModeKey(qelFileAccess::encodeType encoding)
{
    switch (encoding)
    {
    case qelFileAccess::UNICODE_TEXT:
        return L", ccs=UNICODE";
    case qelFileAccess::UTF8:
        return L", ccs=UTF-8";
    case qelFileAccess::UTF16LE:
        return L", ccs=UTF-16LE";
    default:
        return L"";
    }
}

#if defined(_UCRT) || defined(_MSC_VER)
void ignoreInvalidParameter(const wchar_t*, const wchar_t*, const wchar_t*, unsigned, uintptr_t) {}
#endif

/// The stream, or null. An open mode that the runtime does not know is a failed open like any other.
FILE* openStream(const wchar_t* fileName, const wchar_t* mode)
{
    FILE* stream = nullptr;
#if defined(_UCRT) || defined(_MSC_VER)
    // There it would end the process.
    const _invalid_parameter_handler before = _set_thread_local_invalid_parameter_handler(ignoreInvalidParameter);
#endif
    const bool opened = _wfopen_s(&stream, fileName, mode) == 0;
#if defined(_UCRT) || defined(_MSC_VER)
    (void)_set_thread_local_invalid_parameter_handler(before);
#endif
    return opened ? stream : nullptr;
}

int writeFormatted(FILE* stream, const wchar_t* format, va_list args)
{
    return stream == nullptr ? 0 : vfwprintf_s(stream, format == nullptr ? L"" : format, args);
}

/// The scanner's result. At the end of the file, behind nothing but white space, some runtimes do not say EOF.
int scanned(FILE* stream, int result)
{
    return result == 0 && feof(stream) != 0 ? EOF : result;
}

/// Reads one number; `value` is set whatever the result.
template <typename Number> int readNumber(FILE* stream, const wchar_t* format, Number& value)
{
    if (stream == nullptr)
    {
        return 0;
    }
    Number number = 0;
    const int result = fwscanf_s(stream, format, &number);
    value = number;
    return scanned(stream, result);
}

/// fread, with the result kept within its bounds: at an end-of-file character some runtimes return -1.
size_t readElements(FILE* stream, void* target, size_t size, size_t count)
{
    const size_t got = fread(target, size, count, stream);
    return got <= count ? got : 0;
}

/// Reads and drops up to `count` elements and returns how many there were.
size_t skipElements(FILE* stream, size_t size, size_t count)
{
    unsigned char dropped[1024];
    size_t skipped = 0;
    while (skipped < count)
    {
        const size_t left = count - skipped;
        const size_t room = sizeof dropped / size;
        const size_t wanted = left < room ? left : room;
        const size_t got = readElements(stream, dropped, size, wanted);
        skipped += got;
        if (got < wanted)
        {
            break;
        }
    }
    qelText::scrub(dropped, sizeof dropped);
    return skipped;
}

/// Reads up to `maxLength` units, of which at most `kept` go into `contents`, and returns how many there were.
template <typename Unit> size_t readUnits(FILE* stream, qelString& contents, size_t maxLength, size_t kept)
{
    qelWorkBuffer<Unit> text(maxLength < kept ? maxLength : kept);
    const size_t got = readElements(stream, text.units(), sizeof(Unit), text.capacity());
    contents = text.end(got);
    return got < text.capacity() ? got : got + skipElements(stream, sizeof(Unit), maxLength - got);
}

/// readFile() of a stream without a key.
size_t readBytes(FILE* stream, qelString& contents, size_t maxLength)
{
    unsigned char mark[3] = {};
    if (readElements(stream, mark, 1, 2) == 2 && qelEncodedStream::isUtf16Mark(mark))
    {
        return readUnits<wchar_t>(stream, contents, maxLength, qelText::kCapacity);
    }
    // Kept as callers know it: there is no rewind, so the mark is looked for behind the first two bytes.
    if (readElements(stream, mark, 1, 3) == 3 && qelEncodedStream::isUtf8Mark(mark))
    {
        return readUnits<wchar_t>(stream, contents, maxLength, qelText::kCapacity);
    }
    (void)fseek(stream, 0, SEEK_SET);
    return readUnits<char>(stream, contents, maxLength, qelCodePage::mostBytes());
}
} // namespace

qelFileAccess::qelFileAccess()
    : m_stream(nullptr)
    , m_encoding(ANSI)
{
}

qelFileAccess::qelFileAccess(const qelString& fileName, const qelString& mode, encodeType encoding)
    : m_stream(nullptr)
    , m_encoding(encoding)
{
    if (fileName.isEmpty() == 0)
    {
        m_stream = openStream(fileName.getStringW(), (mode + openModeKey(encoding)).getStringW());
    }
}

qelFileAccess::~qelFileAccess()
{
    close();
}

void qelFileAccess::close()
{
    if (m_stream != nullptr)
    {
        (void)fclose(m_stream);
        m_stream = nullptr;
    }
}

int qelFileAccess::isOpen() const
{
    return m_stream != nullptr ? 1 : 0;
}

qelFileAccess::encodeType qelFileAccess::getCodingMethod() const
{
    return m_encoding;
}

int qelFileAccess::write(const char* format, ...) const
{
    const qelString wideFormat(format);
    va_list args;
    va_start(args, format);
    const int written = writeFormatted(m_stream, wideFormat.getStringW(), args);
    va_end(args);
    return written;
}

int qelFileAccess::write(const wchar_t* format, ...) const
{
    va_list args;
    va_start(args, format);
    const int written = writeFormatted(m_stream, format, args);
    va_end(args);
    return written;
}

int qelFileAccess::write(const unsigned short* format, ...) const
{
    va_list args;
    va_start(args, format);
    const int written = writeFormatted(m_stream, qelText::wide(format), args);
    va_end(args);
    return written;
}

int qelFileAccess::puts(qelString text) const
{
    if (m_stream == nullptr)
    {
        return 0;
    }
    if (isWide(m_encoding))
    {
        return fputws(text.getStringW(), m_stream);
    }
    if (m_encoding == UTF8)
    {
        // The stream translates and takes wide text only: hand it what the narrow form stands for. The wide call's
        // failure is not negative.
        const int result = fputws(qelString(text.getStringA()).getStringW(), m_stream);
        return result == static_cast<int>(WEOF) ? EOF : result;
    }
    return fputs(text.getStringA(), m_stream);
}

size_t qelFileAccess::read(void* buffer, size_t size, size_t count) const
{
    if (m_stream == nullptr || buffer == nullptr || size == 0 || count > SIZE_MAX / size)
    {
        return 0;
    }
    return readElements(m_stream, buffer, size, count);
}

qelString qelFileAccess::getStringW(qelString& line, int maxCount) const
{
    line.empty();
    if (m_stream == nullptr || maxCount < 2)
    {
        return line;
    }
    wchar_t buffer[kLineBytes] = {};
    const int most = isWide(m_encoding) ? kLineUnits : kLineBytes;
    const int limit = maxCount < most ? maxCount : most;
    if (isWide(m_encoding))
    {
        if (fgetws(buffer, limit, m_stream) != nullptr)
        {
            line = buffer;
        }
    }
    else if (m_encoding == UTF8)
    {
        // The stream translates and gives wide text only: keep what its narrow form can hold.
        if (fgetws(buffer, limit, m_stream) != nullptr)
        {
            line = qelString(buffer).getStringA();
        }
    }
    else
    {
        char* narrow = reinterpret_cast<char*>(buffer);
        if (fgets(narrow, limit, m_stream) != nullptr)
        {
            line = narrow;
        }
    }
    qelText::scrub(buffer, sizeof buffer);
    return line;
}

int qelFileAccess::readString(qelString& token) const
{
    if (m_stream == nullptr)
    {
        return 0;
    }
    wchar_t buffer[kTokenUnits] = {};
    const int result = fwscanf_s(m_stream, L"%s", buffer, static_cast<unsigned>(kTokenUnits));
    token = buffer;
    qelText::scrub(buffer, sizeof buffer);
    return scanned(m_stream, result);
}

int qelFileAccess::readInt(int& value) const
{
    return readNumber(m_stream, L"%d", value);
}

int qelFileAccess::readDouble(double& value) const
{
    return readNumber(m_stream, L"%lf", value);
}

int qelFileAccess::getc() const
{
    return m_stream == nullptr ? 0 : fgetwc(m_stream);
}

int qelFileAccess::eof() const
{
    return m_stream == nullptr ? 1 : feof(m_stream);
}

size_t qelFileAccess::readFile(qelString& contents, size_t maxLength) const
{
    if (m_stream == nullptr)
    {
        contents.empty();
        return 0;
    }
    return qelEncodedStream::hasKey(m_encoding) ? qelEncodedStream::readFile(m_stream, m_encoding, contents, maxLength)
                                                : readBytes(m_stream, contents, maxLength);
}

int qelFileAccess::seek(long offset, int origin) const
{
    if (m_stream == nullptr || origin < SEEK_SET || origin > SEEK_END)
    {
        return -1;
    }
    return fseek(m_stream, offset, origin);
}

long qelFileAccess::getFileLength()
{
    if (m_stream == nullptr)
    {
        return 0;
    }
    (void)fseek(m_stream, 0, SEEK_END);
    const long length = ftell(m_stream);
    (void)fseek(m_stream, 0, SEEK_SET);
    return length;
}

int qelFileAccess::removeFile(const qelString& path)
{
    return _wremove(path.getStringW());
}

int qelFileAccess::renameFile(const qelString& from, const qelString& to)
{
    return _wrename(from.getStringW(), to.getStringW());
}

int qelFileAccess::changeWorkingDir(const qelString& path)
{
    return _wchdir(path.getStringW());
}

int qelFileAccess::makeDir(const qelString& path)
{
    return _wmkdir(path.getStringW()) == 0 || errno == EEXIST ? 0 : -1;
}
