#include "qelFileAccess.h"

#include "files/WholeFile.h"
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

// Deliberately without UTF8.
bool isWide(qelFileAccess::encodeType encoding)
{
    return encoding == qelFileAccess::UNICODE_TEXT || encoding == qelFileAccess::UTF16LE;
}

bool hasKey(qelFileAccess::encodeType encoding)
{
    return isWide(encoding) || encoding == qelFileAccess::UTF8;
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

/// The stream, or null. An invalid mode is a failed open like any other.
FILE* openStream(const wchar_t* fileName, const wchar_t* mode)
{
    FILE* stream = nullptr;
#if defined(_UCRT) || defined(_MSC_VER)
    // The default handler would end the process.
    const _invalid_parameter_handler before = _set_thread_local_invalid_parameter_handler(ignoreInvalidParameter);
#endif
    const bool opened = _wfopen_s(&stream, fileName, mode) == 0;
#if defined(_UCRT) || defined(_MSC_VER)
    (void)_set_thread_local_invalid_parameter_handler(before);
#endif
    return opened ? stream : nullptr;
}

bool isHighSurrogate(wchar_t unit)
{
    return (unit & 0xFC00) == 0xD800;
}

/// Writes text with surrogate pairs. For UTF-8 the runtime converts its buffer in pieces, and spoils a pair that lies
/// across the end of a piece. So each pair is put near the start of the buffer: no piece is that short, and the second
/// half may come with the next call.
bool writeUnits(FILE* stream, const wchar_t* text, size_t length)
{
    const size_t shortest = 64;
    size_t behindFlush = shortest;
    for (size_t i = 0; i < length; ++i)
    {
        if (isHighSurrogate(text[i]) && behindFlush >= shortest)
        {
            if (fflush(stream) != 0)
            {
                return false;
            }
            behindFlush = 0;
        }
        // WEOF has the value of a valid unit.
        if (fputwc(text[i], stream) == WEOF && text[i] != WEOF)
        {
            return false;
        }
        ++behindFlush;
    }
    return true;
}

/// Writes to a stream with a key; true when all was written.
bool writeText(FILE* stream, const wchar_t* text, size_t length)
{
    size_t plain = 0;
    while (plain < length && text[plain] != 0 && text[plain] != WEOF && !isHighSurrogate(text[plain]))
    {
        ++plain;
    }
    if (plain < length)
    {
        return writeUnits(stream, text, length);
    }
    const int result = fputws(text, stream);
    return result >= 0 && result != WEOF;
}

/// vfwprintf_s for a stream with a key.
int writeFormattedByKey(FILE* stream, const wchar_t* format, va_list args)
{
    va_list again;
    va_copy(again, args);
    const int length = _vscwprintf(format, again);
    va_end(again);
    if (length < 0)
    {
        // Let the runtime report the error.
        return vfwprintf_s(stream, format, args);
    }
    const size_t capacity = static_cast<size_t>(length) + 1;
    const qelText::NarrowBuffer memory(capacity * sizeof(wchar_t));
    auto* const text = reinterpret_cast<wchar_t*>(memory.data());
    const int made = vswprintf_s(text, capacity, format, args);
    return made >= 0 && writeText(stream, text, static_cast<size_t>(made)) ? made : -1;
}

int writeFormatted(FILE* stream, qelFileAccess::encodeType encoding, const wchar_t* format, va_list args)
{
    if (stream == nullptr)
    {
        return 0;
    }
    const wchar_t* const used = format == nullptr ? L"" : format;
    return hasKey(encoding) ? writeFormattedByKey(stream, used, args) : vfwprintf_s(stream, used, args);
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
    return result;
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
    const int written = writeFormatted(m_stream, m_encoding, wideFormat.getStringW(), args);
    va_end(args);
    return written;
}

int qelFileAccess::write(const wchar_t* format, ...) const
{
    va_list args;
    va_start(args, format);
    const int written = writeFormatted(m_stream, m_encoding, format, args);
    va_end(args);
    return written;
}

int qelFileAccess::write(const unsigned short* format, ...) const
{
    va_list args;
    va_start(args, format);
    const int written = writeFormatted(m_stream, m_encoding, qelText::wide(format), args);
    va_end(args);
    return written;
}

int qelFileAccess::puts(qelString text) const
{
    if (m_stream == nullptr)
    {
        return 0;
    }
    if (!hasKey(m_encoding))
    {
        return fputs(text.getStringA(), m_stream);
    }
    // The stream takes wide text only. For UTF8, convert the narrow form back.
    const qelString wide = m_encoding == UTF8 ? qelString(text.getStringA()) : text;
    return writeText(m_stream, wide.getStringW(), static_cast<size_t>(wide.length())) ? 0 : EOF;
}

size_t qelFileAccess::read(void* buffer, size_t size, size_t count) const
{
    if (m_stream == nullptr || buffer == nullptr || size == 0 || count > SIZE_MAX / size)
    {
        return 0;
    }
    return fread(buffer, size, count, m_stream);
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
        // The stream returns wide text only: keep what the narrow form can hold.
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
    return result;
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
    contents.empty();
    if (m_stream == nullptr)
    {
        return 0;
    }
    return hasKey(m_encoding) ? qelWholeFile::readByKey(m_stream, m_encoding, contents, maxLength)
                              : qelWholeFile::read(m_stream, contents, maxLength);
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
