// Reads a file whole.
//
// Behind a key, the bytes come in blocks from the file handle below the stream, and the system converts them. The
// stream's own translation takes several times as long and leaves text in buffers that nobody wipes.

#include "files/WholeFile.h"

#include "strings/CodePage.h"
#include "strings/StringAccess.h"
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

const size_t kBlock = 0x10000;

/// No character takes more bytes, nor a carriage return with its line feed more units.
const size_t kLongest = 4;

size_t smaller(size_t a, size_t b)
{
    return a < b ? a : b;
}

/// The first `c` in the text from `text` to `end`, or `end`.
template <typename Unit> const Unit* find(const Unit* text, const Unit* end, Unit c)
{
    const Unit* found = qelUnits::find(text, end, c);
    return found == nullptr ? end : found;
}

/// Makes of the text, in place, what a text mode delivers: "\r\n" is one line feed, and an end-of-file character ends
/// the text. Returns its length.
template <typename Unit> size_t translateLines(Unit* text, size_t length, bool& ended)
{
    const Unit* const all = text + length;
    const Unit* const end = find<Unit>(text, all, 0x1A);
    ended = ended || end != all;
    Unit* to = text;
    for (const Unit* from = text; from < end;)
    {
        // From one carriage return to the next.
        const Unit* const next = find<Unit>(from + 1, end, '\r');
        from += *from == '\r' && end - from > 1 && from[1] == '\n' ? 1 : 0;
        if (to != from)
        {
            memmove(to, from, static_cast<size_t>(next - from) * sizeof(Unit));
        }
        to += next - from;
        from = next;
    }
    return static_cast<size_t>(to - text);
}

/// The text of a file as UTF-16 or, where it is ANSI, as bytes.
class FileText
{
public:
    FileText(HANDLE file, Form form, bool textMode, long long start)
        : m_file(file)
        , m_form(form)
        , m_size(form == kUtf16 ? sizeof(wchar_t) : 1)
        , m_textMode(textMode)
        , m_ended(false)
        , m_position(start)
        , m_utf8(form == kUtf8 ? kBlock : 0)
    {
    }

    /// Where in the file the next character stands.
    long long position() const { return m_position; }

    /// Reads up to `room` units and returns how many there are, 0 only at the end. A character that does not fit is
    /// cut, but counts whole. Nothing else is left in the room.
    template <typename Unit> size_t operator()(Unit* to, size_t room)
    {
        if (room >= 2 * kLongest)
        {
            return readUnits(to, room, false);
        }
        Unit character[kLongest];
        const size_t length = readUnits(character, kLongest, true);
        memcpy(to, character, smaller(length, room) * sizeof(Unit));
        qelText::scrub(character, sizeof character);
        return length;
    }

private:
    /// Reads as many whole characters as surely fit, or a single one.
    template <typename Unit> size_t readUnits(Unit* to, size_t room, bool single)
    {
        const bool converts = m_form == kUtf8;
        char* const bytes = converts ? m_utf8.data() : reinterpret_cast<char*>(to);
        const size_t wanted = (converts ? smaller(room, kBlock) : room) * m_size;
        size_t filled = m_ended ? 0 : readBytes(bytes, wanted);
        const size_t used = single ? firstCut(bytes, filled) : filled == wanted ? lastCut(bytes, filled) : filled;
        m_position += static_cast<long long>(used);

        size_t length = used / sizeof(Unit);
        if (converts)
        {
            // No bytes are an error to the call, and give 0 as well.
            length = static_cast<size_t>(MultiByteToWideChar(CP_UTF8, 0, bytes, static_cast<int>(used),
                                                             reinterpret_cast<wchar_t*>(to), static_cast<int>(room)));
            filled = length * sizeof(Unit);
        }
        if (m_textMode)
        {
            length = translateLines(to, length, m_ended);
        }
        qelText::scrub(to + length, filled - length * sizeof(Unit));
        return length;
    }

    size_t readBytes(char* bytes, size_t wanted) const
    {
        OVERLAPPED from = {};
        from.Offset = static_cast<DWORD>(m_position);
        from.OffsetHigh = static_cast<DWORD>(m_position >> 32);
        DWORD got = 0;
        return ReadFile(m_file, bytes, static_cast<DWORD>(wanted), &got, &from) != 0 ? got : 0;
    }

    /// Where the first character ends.
    size_t firstCut(const char* bytes, size_t count) const
    {
        size_t cut = smaller(m_size, count);
        while (cut + m_size <= count && divides(bytes + cut))
        {
            cut += m_size;
        }
        return cut;
    }

    /// Where the last character begins: it is not known what follows the bytes.
    size_t lastCut(const char* bytes, size_t count) const
    {
        size_t cut = count - m_size;
        for (size_t step = 1; step < kLongest && divides(bytes + cut); ++step)
        {
            cut -= m_size;
        }
        // Behind more bytes than follow the first one of any character, all places are good.
        return divides(bytes + cut) ? count - m_size : cut;
    }

    /// Whether a cut at this place, which is not the first one, divides a character of UTF-8, or a line end.
    bool divides(const char* at) const
    {
        return (m_form == kUtf8 && (*at & 0xC0) == 0x80) ||
               (m_textMode && memcmp(at - m_size, "\r", m_size) == 0 && memcmp(at, "\n", m_size) == 0);
    }

    HANDLE m_file;
    Form m_form;
    size_t m_size; ///< of a unit in the file
    bool m_textMode;
    bool m_ended; ///< an end-of-file character was met
    long long m_position;
    qelText::NarrowBuffer m_utf8; ///< what is to be converted
};

void assign(qelString& contents, const wchar_t* text, size_t length)
{
    qelStringAccess::assign(contents, text, qelUnits::measure(text, length));
}

void assign(qelString& contents, const char* text, size_t length)
{
    qelStringAccess::assign(contents, text, qelUnits::measure(text, length), CP_ACP);
}

/// Wipes units when it goes.
template <typename Unit> struct Wiped
{
    ~Wiped() { qelText::scrub(text, length * sizeof(Unit)); }

    Unit* text;
    size_t length;
};

/// Reads up to `maxLength` units from a source and returns how many there were. `contents` takes the first `capacity`
/// ones, for which `text` has room.
template <typename Unit, typename Source>
size_t collect(Source& source, Unit* text, size_t capacity, qelString& contents, size_t maxLength)
{
    const size_t most = smaller(maxLength, capacity);
    size_t count = 0;
    size_t got = 1;
    for (; got != 0 && count < most; count += got)
    {
        got = source(text + count, most - count);
    }
    const Wiped<Unit> kept = {text, smaller(count, most)};
    assign(contents, kept.text, kept.length);
    for (; got != 0 && count < maxLength; count += got)
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
    const qelText::NarrowBuffer bytes(capacity);
    return collect(source, bytes.data(), capacity, contents, maxLength);
}

/// Deliberately, the bytes of a swapped mark mean the same as the right ones.
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

/// Whether the stream is in a text mode. The runtime tells the mode only while one is set: this sets the one that a
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
    // Deliberately no rewind: this mark is looked for behind the first two bytes.
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
    // Brings what was written into the file and empties the stream's buffer.
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
        // Lets the stream know that the end was met, at an end-of-file character too.
        (void)fseek(stream, 0, SEEK_END);
        (void)fgetwc(stream);
    }
    else
    {
        (void)_fseeki64(stream, text.position(), SEEK_SET);
    }
    return count;
}
