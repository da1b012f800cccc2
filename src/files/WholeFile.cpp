// Reads whole files.
//
// With a key, reads blocks from the file handle below the stream and converts them with the system's functions. The
// stream's own translation is several times slower and leaves text in buffers that nobody wipes.

#include "files/WholeFile.h"

#include "strings/CodePage.h"
#include "strings/Text.h"

#include <fcntl.h>
#include <io.h>

namespace
{
enum Form
{
    kAnsi,
    kUtf8,
    kUtf16
};

const char kControlZ = 0x1A;

const size_t kBlock = 0x10000;

/// Greatest size of a character, or of CR LF, in bytes.
const size_t kLongest = 4;

size_t smaller(size_t a, size_t b)
{
    return a < b ? a : b;
}

/// Whether no unit in a chunk is a carriage return or an end-of-file character.
template <typename Unit> bool isPlain(__m128i chunk)
{
    const __m128i special = sizeof(Unit) == 1 ? _mm_or_si128(_mm_cmpeq_epi8(chunk, _mm_set1_epi8('\r')),
                                                             _mm_cmpeq_epi8(chunk, _mm_set1_epi8(kControlZ)))
                                              : _mm_or_si128(_mm_cmpeq_epi16(chunk, _mm_set1_epi16('\r')),
                                                             _mm_cmpeq_epi16(chunk, _mm_set1_epi16(kControlZ)));
    return _mm_movemask_epi8(special) == 0;
}

/// Converts in place to what a text mode reads: "\r " becomes a line feed, and an end-of-file character ends the text.
/// Returns the new length.
template <typename Unit> size_t translateLines(Unit* text, size_t length, bool& ended)
{
    const ptrdiff_t chunkLength = sizeof(__m128i) / sizeof(Unit);
    Unit* to = text;
    const Unit* from = text;
    const Unit* const end = text + length;
    while (from < end)
    {
        if (end - from >= chunkLength)
        {
            // The fast path.
            const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
            if (isPlain<Unit>(chunk))
            {
                _mm_storeu_si128(reinterpret_cast<__m128i*>(to), chunk);
                to += chunkLength;
                from += chunkLength;
                continue;
            }
        }
        if (*from == kControlZ)
        {
            ended = true;
            break;
        }
        from += *from == '\r' && end - from > 1 && from[1] == '\n' ? 1 : 0;
        *to++ = *from++;
    }
    return static_cast<size_t>(to - text);
}

/// Reads a file as UTF-16 or, when ANSI, as bytes.
class FileText
{
public:
    FileText(HANDLE file, Form form, bool textMode, long long start)
        : m_file(file)
        , m_form(form)
        , m_textMode(textMode)
        , m_ended(false)
        , m_position(start)
        , m_memory(kBlock + kBlock * sizeof(wchar_t))
        , m_block(m_memory.data())
    {
    }

    /// File position of the next character.
    long long position() const { return m_position; }

    /// Reads up to `room` units and returns how many, 0 only at the end. A character that does not fit is truncated,
    /// but position() moves past it.
    template <typename Unit> size_t operator()(Unit* to, size_t room)
    {
        const size_t bytes = readBlock(room, m_form == kUtf16 ? 2 : 1);
        Unit* units = reinterpret_cast<Unit*>(m_block);
        size_t length = bytes / sizeof(Unit);
        if (m_form == kUtf8)
        {
            auto* const converted = reinterpret_cast<wchar_t*>(m_block + kBlock);
            units = reinterpret_cast<Unit*>(converted);
            // An empty block is an error to the call, which also returns 0.
            length = static_cast<size_t>(
                MultiByteToWideChar(CP_UTF8, 0, m_block, static_cast<int>(bytes), converted, kBlock));
        }
        if (m_textMode)
        {
            length = translateLines(units, length, m_ended);
        }
        memcpy(to, units, smaller(length, room) * sizeof(Unit));
        return length;
    }

private:
    /// Reads as many whole characters as surely fit, at least one. Returns the number of bytes.
    size_t readBlock(size_t room, size_t size)
    {
        const bool single = room * size < 2 * kLongest;
        const size_t wanted = single ? kLongest : smaller(room * size, kBlock);
        const size_t available = m_ended ? 0 : readBytes(wanted);
        size_t length = available;
        if (single)
        {
            for (length = smaller(size, available); length < available && divides(length, size);)
            {
                length += size;
            }
        }
        else if (available == wanted)
        {
            // What follows the block is unknown. Malformed text may have no place to split.
            length -= size;
            for (size_t step = 1; step < kLongest && divides(length, size); ++step)
            {
                length -= size;
            }
        }
        m_position += static_cast<long long>(length);
        return length;
    }

    size_t readBytes(size_t wanted) const
    {
        OVERLAPPED from = {};
        from.Offset = static_cast<DWORD>(m_position);
        from.OffsetHigh = static_cast<DWORD>(m_position >> 32);
        DWORD got = 0;
        return ReadFile(m_file, m_block, static_cast<DWORD>(wanted), &got, &from) != 0 ? got : 0;
    }

    /// Whether a split at this place of the block divides a UTF-8 character or a line end.
    bool divides(size_t place, size_t size) const
    {
        const char* const at = m_block + place;
        return (m_form == kUtf8 && (*at & 0xC0) == 0x80) ||
               (m_textMode && memcmp(at - size, "\r", size) == 0 && memcmp(at, "\n", size) == 0);
    }

    HANDLE m_file;
    Form m_form;
    bool m_textMode;
    bool m_ended; ///< an end-of-file character was read
    long long m_position;
    qelText::NarrowBuffer m_memory;
    char* m_block; ///< kBlock bytes of the file, then their conversion
};

/// Reads up to `maxLength` units from a source and returns how many. `contents` gets the first `capacity`; `text` has
/// room for them and a terminator.
template <typename Unit, typename Source>
size_t collect(Source& source, Unit* text, size_t capacity, qelString& contents, size_t maxLength)
{
    const size_t most = smaller(maxLength, capacity);
    size_t count = 0;
    for (size_t got = 1; got != 0 && count < most; count += got)
    {
        got = source(text + count, most - count);
    }
    const size_t kept = smaller(count, most);
    text[kept] = 0;
    contents = text;
    qelText::scrub(text, kept * sizeof(Unit));
    for (size_t got = 1; got != 0 && count < maxLength; count += got)
    {
        got = source(text, smaller(maxLength - count, capacity));
    }
    return smaller(count, maxLength);
}

template <typename Source> size_t collectWide(Source& source, qelString& contents, size_t maxLength)
{
    return collect(source, qelString::qelStringTempBufferWide, qelText::kCapacity, contents, maxLength);
}

template <typename Source> size_t collectAnsi(Source& source, qelString& contents, size_t maxLength)
{
    const size_t capacity = smaller(maxLength, qelCodePage::mostBytes());
    const qelText::NarrowBuffer bytes(capacity + 1);
    return collect(source, bytes.data(), capacity, contents, maxLength);
}

/// Deliberately, a big-endian BOM counts as a little-endian one.
bool isUtf16Mark(const unsigned char* bytes)
{
    return (bytes[0] == 0xFF && bytes[1] == 0xFE) || (bytes[0] == 0xFE && bytes[1] == 0xFF);
}

bool isUtf8Mark(const unsigned char* bytes)
{
    return bytes[0] == 0xEF && bytes[1] == 0xBB && bytes[2] == 0xBF;
}

Form formByKey(qelFileAccess::encodeType encoding)
{
    return encoding == qelFileAccess::UTF8 ? kUtf8 : encoding == qelFileAccess::UTF16LE ? kUtf16 : kAnsi;
}

/// Whether the stream is in a text mode. The runtime reports the mode only when setting one: this sets the one that a
/// text stream has anyway.
bool isTextMode(FILE* stream, Form form)
{
    const int descriptor = _fileno(stream);
    if (_setmode(descriptor, form == kUtf16 ? _O_U16TEXT : form == kUtf8 ? _O_U8TEXT : _O_TEXT) != _O_BINARY)
    {
        return true;
    }
    (void)_setmode(descriptor, _O_BINARY);
    return false;
}
} // namespace

size_t qelWholeFile::read(FILE* stream, qelString& contents, size_t maxLength)
{
    auto units = [stream](auto* to, size_t room) { return fread(to, sizeof *to, room, stream); };
    unsigned char mark[3] = {};
    if (fread(mark, 1, 2, stream) == 2 && isUtf16Mark(mark))
    {
        return collectWide(units, contents, maxLength);
    }
    // Deliberately no rewind: this BOM is expected after the first two bytes.
    if (fread(mark, 1, 3, stream) == 3 && isUtf8Mark(mark))
    {
        return collectWide(units, contents, maxLength);
    }
    (void)fseek(stream, 0, SEEK_SET);
    return collectAnsi(units, contents, maxLength);
}

size_t qelWholeFile::readByKey(FILE* stream, qelFileAccess::encodeType encoding, qelString& contents, size_t maxLength)
{
    auto* const file = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    if (GetFileType(file) != FILE_TYPE_DISK)
    {
        return 0;
    }
    // Flushes output and discards the stream's buffer.
    (void)fseek(stream, 0, SEEK_SET);
    unsigned char mark[3] = {};
    DWORD got = 0;
    if (ReadFile(file, mark, sizeof mark, &got, nullptr) == 0)
    {
        (void)fseek(stream, 0, SEEK_END);
        return 0;
    }
    const bool utf16 = isUtf16Mark(mark);
    const bool utf8 = isUtf8Mark(mark);
    const Form form = utf16 ? kUtf16 : utf8 ? kUtf8 : formByKey(encoding);
    FileText text(file, form, isTextMode(stream, form), utf16 ? 2 : utf8 ? 3 : 0);
    const size_t count =
        form == kAnsi ? collectAnsi(text, contents, maxLength) : collectWide(text, contents, maxLength);
    if (count < maxLength)
    {
        // Moves the stream to the end of the file, also after an end-of-file character.
        (void)fseek(stream, 0, SEEK_END);
        (void)fgetwc(stream);
    }
    else
    {
        (void)_fseeki64(stream, text.position(), SEEK_SET);
    }
    return count;
}
