// Reads a file whole behind a stream that translates.
//
// What fread delivers on such a stream depends on the runtime, on the mark and on the key: bytes here, 16-bit units
// there, and text without a mark is taken for what the key says. So the bytes are read beside the stream, through the
// file handle below it, and translated here, by one rule for all.

#include "files/EncodedStream.h"

#include "files/WorkBuffer.h"
#include "strings/CodePage.h"

#include <fcntl.h>
#include <io.h>

namespace
{
const unsigned kControlZ = 0x1A;
const unsigned kReplacement = 0xFFFD;

/// The bytes of a file from its start, in blocks. At the end the file's position is what it was before: the stream
/// relies on it.
class FileBytes
{
public:
    /// No form of a character, a carriage return with its line feed included, takes more bytes.
    static const size_t kLongest = 4;

    explicit FileBytes(HANDLE file)
        : m_file(file)
        , m_before()
        , m_blockStart(0)
        , m_next(0)
        , m_end(0)
        , m_complete(false)
    {
        const LARGE_INTEGER start = {};
        (void)SetFilePointerEx(m_file, start, &m_before, FILE_CURRENT);
        (void)SetFilePointerEx(m_file, start, nullptr, FILE_BEGIN);
    }

    ~FileBytes()
    {
        (void)SetFilePointerEx(m_file, m_before, nullptr, FILE_BEGIN);
        qelText::scrub(m_block, sizeof m_block);
    }

    FileBytes(const FileBytes&) = delete;
    FileBytes& operator=(const FileBytes&) = delete;

    /// Where in the file next() stands.
    long long position() const { return m_blockStart + static_cast<long long>(m_next); }

    /// How many bytes stand at next(): kLongest or more, fewer only at the end of the file.
    size_t available()
    {
        if (m_end - m_next < kLongest && !m_complete)
        {
            fill();
        }
        return m_end - m_next;
    }

    const unsigned char* next() const { return m_block + m_next; }

    void advance(size_t bytes) { m_next += bytes; }

private:
    /// Moves what is left to the front of the block and reads behind it.
    void fill()
    {
        const size_t left = m_end - m_next;
        memmove(m_block, m_block + m_next, left);
        DWORD got = 0;
        m_complete =
            ReadFile(m_file, m_block + left, static_cast<DWORD>(sizeof m_block - left), &got, nullptr) == 0 || got == 0;
        m_blockStart += static_cast<long long>(m_next);
        m_next = 0;
        m_end = left + got;
    }

    HANDLE m_file;
    LARGE_INTEGER m_before; ///< where the file stood
    long long m_blockStart; ///< where in the file the block begins
    size_t m_next;          ///< the next byte, counted in the block
    size_t m_end;           ///< behind the last byte read into the block
    bool m_complete;        ///< nothing is left in the file behind the block
    unsigned char m_block[0x2000];
};

// The forms that text has in a file: the type that its units are read as, the fewest bytes that a character takes, and
// decode(), which sets `character` to the first one of at least that many bytes and returns the bytes that it takes.

struct AnsiBytes
{
    using Unit = char;
    static const size_t kLeast = 1;

    // Bytes stay bytes here: line ends and the end mark are the same in every code page, and their number is asked for.
    static size_t decode(const unsigned char* bytes, size_t, unsigned& character)
    {
        character = bytes[0];
        return 1;
    }
};

struct Utf16
{
    using Unit = wchar_t;
    static const size_t kLeast = 2;

    static size_t decode(const unsigned char* bytes, size_t, unsigned& character)
    {
        character = bytes[0] | static_cast<unsigned>(bytes[1]) << 8;
        return 2;
    }
};

struct Utf8
{
    using Unit = wchar_t;
    static const size_t kLeast = 1;

    // What is not well-formed becomes one replacement character for each longest beginning of a well-formed one.
    static size_t decode(const unsigned char* bytes, size_t available, unsigned& character)
    {
        const unsigned lead = bytes[0];
        if (lead < 0x80)
        {
            character = lead;
            return 1;
        }
        const size_t length = lead < 0xC2 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 1;
        // The second byte rules out overlong forms, surrogates and what lies beyond the last character.
        const unsigned lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
        const unsigned highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
        unsigned value = lead & (0x7Fu >> length);
        size_t good = 1;
        while (good < length && good < available)
        {
            const unsigned trail = bytes[good];
            if (trail < (good == 1 ? lowest : 0x80) || trail > (good == 1 ? highest : 0xBF))
            {
                break;
            }
            value = value << 6 | (trail & 0x3F);
            ++good;
        }
        character = length > 1 && good == length ? value : kReplacement;
        return good;
    }
};

/// Takes units one by one; keeps the first ones and counts all.
template <typename Unit> class Collector
{
public:
    explicit Collector(size_t room)
        : m_text(room)
        , m_count(0)
    {
    }

    void add(unsigned unit)
    {
        if (m_count < m_text.capacity())
        {
            m_text.units()[m_count] = static_cast<Unit>(unit);
        }
        ++m_count;
    }

    size_t count() const { return m_count; }

    const Unit* text()
    {
        const size_t kept = m_count < m_text.capacity() ? m_count : m_text.capacity();
        return m_text.end(kept);
    }

private:
    qelWorkBuffer<Unit> m_text;
    size_t m_count;
};

/// Translates the rest of the file and returns the number of units, at most `maxLength`.
template <typename Form> size_t translate(FileBytes& bytes, bool textMode, qelString& contents, size_t maxLength)
{
    const size_t most = sizeof(typename Form::Unit) == 1 ? qelCodePage::mostBytes() : qelText::kCapacity;
    Collector<typename Form::Unit> collector(maxLength < most ? maxLength : most);
    while (collector.count() < maxLength)
    {
        const size_t available = bytes.available();
        if (available < Form::kLeast)
        {
            break;
        }
        unsigned character = 0;
        const size_t length = Form::decode(bytes.next(), available, character);
        if (textMode && character == kControlZ)
        {
            break;
        }
        unsigned following = 0;
        if (textMode && character == '\r' && available >= length + Form::kLeast)
        {
            (void)Form::decode(bytes.next() + length, available - length, following);
        }
        bytes.advance(length);
        if (following == '\n')
        {
            continue;
        }
        if (character <= 0xFFFF)
        {
            collector.add(character);
            continue;
        }
        collector.add(0xD7C0 + (character >> 10));
        if (collector.count() < maxLength)
        {
            collector.add(0xDC00 + (character & 0x3FF));
        }
    }
    contents = collector.text();
    return collector.count();
}

enum Mark
{
    kNoMark,
    kUtf16Mark,
    kUtf8Mark
};

/// Steps over the mark at the start of a file and tells which it is.
Mark takeMark(FileBytes& bytes)
{
    const size_t available = bytes.available();
    if (available >= 2 && qelEncodedStream::isUtf16Mark(bytes.next()))
    {
        bytes.advance(2);
        return kUtf16Mark;
    }
    if (available >= 3 && qelEncodedStream::isUtf8Mark(bytes.next()))
    {
        bytes.advance(3);
        return kUtf8Mark;
    }
    return kNoMark;
}

/// True unless the stream was opened in a binary mode. The runtime tells it only while changing it.
bool isTextMode(FILE* stream, bool utf8)
{
    const int descriptor = _fileno(stream);
    const int mode = _setmode(descriptor, _O_BINARY);
    if (mode == _O_BINARY || mode == -1)
    {
        return false;
    }
    // One value stands for both translations to Unicode.
    (void)_setmode(descriptor, mode != _O_WTEXT ? mode : utf8 ? _O_U8TEXT : _O_U16TEXT);
    return true;
}

/// The text of the whole file and the number of its units; sets `position` behind the last one.
size_t readText(FILE* stream, HANDLE file, qelFileAccess::encodeType encoding, qelString& contents, size_t maxLength,
                long long& position)
{
    FileBytes bytes(file);
    const Mark mark = takeMark(bytes);
    const bool textMode = isTextMode(stream, mark == kUtf8Mark || (mark == kNoMark && encoding == qelFileAccess::UTF8));
    const size_t count = mark == kUtf16Mark  ? translate<Utf16>(bytes, textMode, contents, maxLength)
                         : mark == kUtf8Mark ? translate<Utf8>(bytes, textMode, contents, maxLength)
                                             : translate<AnsiBytes>(bytes, textMode, contents, maxLength);
    position = bytes.position();
    return count;
}
} // namespace

bool qelEncodedStream::hasKey(qelFileAccess::encodeType encoding)
{
    return encoding == qelFileAccess::UNICODE_TEXT || encoding == qelFileAccess::UTF8 ||
           encoding == qelFileAccess::UTF16LE;
}

bool qelEncodedStream::isUtf16Mark(const unsigned char* bytes)
{
    return (bytes[0] == 0xFF && bytes[1] == 0xFE) || (bytes[0] == 0xFE && bytes[1] == 0xFF);
}

bool qelEncodedStream::isUtf8Mark(const unsigned char* bytes)
{
    return bytes[0] == 0xEF && bytes[1] == 0xBB && bytes[2] == 0xBF;
}

size_t qelEncodedStream::readFile(FILE* stream, qelFileAccess::encodeType encoding, qelString& contents,
                                  size_t maxLength)
{
    auto* const file = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    if (GetFileType(file) != FILE_TYPE_DISK)
    {
        contents.empty();
        return 0;
    }
    // Brings what was written into the file and empties the stream's buffer.
    (void)fseek(stream, 0, SEEK_SET);

    long long position = 0;
    const size_t count = readText(stream, file, encoding, contents, maxLength, position);
    if (count < maxLength)
    {
        // Lets the stream know that the end was met, at an end-of-file character too.
        (void)fseek(stream, 0, SEEK_END);
        (void)fgetwc(stream);
    }
    else
    {
        (void)_fseeki64(stream, position, SEEK_SET);
    }
    return count;
}
