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

/// Bytes of UTF-8 that are converted at a time.
const size_t kBlock = 0x10000;

/// No character takes more bytes, nor a carriage return with its line feed more units.
const size_t kLongest = 4;

size_t smaller(size_t a, size_t b)
{
    return a < b ? a : b;
}

bool moveTo(HANDLE file, long long offset, DWORD origin)
{
    LARGE_INTEGER distance = {};
    distance.QuadPart = offset;
    return SetFilePointerEx(file, distance, nullptr, origin) != FALSE;
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

/// The text of a file from where its handle stands: as UTF-16 or, where it is ANSI, as bytes.
class FileText
{
public:
    FileText(HANDLE file, bool utf8, bool textMode)
        : m_file(file)
        , m_utf8(utf8)
        , m_textMode(textMode)
        , m_endsEarly(false)
        , m_failed(false)
    {
    }

    /// Reads up to `room` units and returns how many there are, 0 only at the end. A character that does not fit is
    /// cut, but counts whole. Nothing else is left in the room.
    template <typename Unit> size_t operator()(Unit* to, size_t room)
    {
        if (room >= 2 * kLongest)
        {
            return read(to, room, false);
        }
        Unit character[kLongest];
        const size_t length = read(character, kLongest, true);
        memcpy(to, character, smaller(length, room) * sizeof(Unit));
        qelText::scrub(character, sizeof character);
        return length;
    }

    /// Whether an end-of-file character was met.
    bool endsEarly() const { return m_endsEarly; }

    /// Whether the system could not read. Nothing more is read then.
    bool failed() const { return m_failed; }

private:
    /// Reads as many whole characters as surely fit, or a single one.
    size_t read(char* to, size_t room, bool single) { return readPlain(to, room, single); }

    size_t read(wchar_t* to, size_t room, bool single)
    {
        if (!m_utf8)
        {
            return readPlain(to, room, single);
        }
        char* const bytes = qelString::qelStringTempBuffer;
        const size_t length = readPlain(bytes, smaller(room, kBlock), single);
        const int made = MultiByteToWideChar(CP_UTF8, 0, bytes, static_cast<int>(length), to, static_cast<int>(room));
        qelText::scrub(bytes, length);
        // No bytes give 0 as well.
        m_failed = m_failed || (made == 0 && length != 0);
        return static_cast<size_t>(made);
    }

    /// The same without a conversion.
    template <typename Unit> size_t readPlain(Unit* to, size_t room, bool single)
    {
        DWORD bytes = 0;
        if (!m_endsEarly && !m_failed)
        {
            // Not from an offset, with which the call would report its completion as well.
            m_failed = ReadFile(m_file, to, static_cast<DWORD>(room * sizeof(Unit)), &bytes, nullptr) == FALSE;
        }
        const size_t filled = bytes / sizeof(Unit);
        const size_t used = single ? firstCut(to, filled) : filled == room ? lastCut(to, filled) : filled;
        if (used < filled)
        {
            const auto back = static_cast<long long>(used * sizeof(Unit)) - static_cast<long long>(bytes);
            m_failed = !moveTo(m_file, back, FILE_CURRENT);
        }
        const size_t length = m_textMode ? translateLines(to, used, m_endsEarly) : used;
        qelText::scrub(to + length, bytes - length * sizeof(Unit));
        return length;
    }

    /// Where the first character ends.
    template <typename Unit> size_t firstCut(const Unit* text, size_t length) const
    {
        size_t cut = smaller(1, length);
        while (cut < length && divides(text + cut))
        {
            ++cut;
        }
        return cut;
    }

    /// Where the last character begins: it is not known what follows the text.
    template <typename Unit> size_t lastCut(const Unit* text, size_t length) const
    {
        for (size_t cut = length - 1; cut >= length - kLongest; --cut)
        {
            if (!divides(text + cut))
            {
                return cut;
            }
        }
        // Behind more bytes than follow the first one of any character, all places are good.
        return length - 1;
    }

    /// Whether a cut at this place, which is not the first one, divides a character of UTF-8, or a line end.
    template <typename Unit> bool divides(const Unit* at) const
    {
        return (m_utf8 && (*at & 0xC0) == 0x80) || (m_textMode && at[-1] == '\r' && *at == '\n');
    }

    HANDLE m_file;
    bool m_utf8;
    bool m_textMode;
    bool m_endsEarly;
    bool m_failed;
};

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
    const size_t length = qelUnits::measure(text, kept.length);
    if constexpr (sizeof(Unit) == 1)
    {
        qelStringAccess::assign(contents, text, length, CP_ACP);
    }
    else
    {
        qelStringAccess::assign(contents, text, length);
    }
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
    if (capacity <= qelText::kCapacity * sizeof(wchar_t))
    {
        char* const scratch = reinterpret_cast<char*>(qelString::qelStringTempBufferWide);
        return collect(source, scratch, capacity, contents, maxLength);
    }
    // Only where a character may take more than two bytes.
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
    const int before = _setmode(descriptor, form == kUtf16 ? _O_U16TEXT : form == kUtf8 ? _O_U8TEXT : _O_TEXT);
    if (before == _O_BINARY)
    {
        (void)_setmode(descriptor, _O_BINARY);
    }
    return before != _O_BINARY;
}

/// What a file gives that cannot be read to its end: nothing, rather than a part.
size_t refuse(FILE* stream, qelString& contents)
{
    (void)fseek(stream, 0, SEEK_END);
    contents.empty();
    return 0;
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
    // Brings what was written into the file and empties the stream's buffer; a seek to the start need not do that.
    unsigned char mark[3] = {};
    DWORD got = 0;
    if (fseek(stream, 0, SEEK_END) != 0 || !moveTo(file, 0, FILE_BEGIN) ||
        ReadFile(file, mark, sizeof mark, &got, nullptr) == FALSE)
    {
        return refuse(stream, contents);
    }
    const bool utf16 = isUtf16Mark(mark);
    const bool utf8 = isUtf8Mark(mark);
    const Form form = utf16 ? kUtf16 : utf8 ? kUtf8 : formByKey(encoding);
    if (!moveTo(file, utf16 ? 2 : utf8 ? 3 : 0, FILE_BEGIN))
    {
        return refuse(stream, contents);
    }
    FileText text(file, form == kUtf8, isTextMode(stream, form));
    const size_t count =
        form == kAnsi ? collectAnsi(text, contents, maxLength) : collectWide(text, contents, maxLength);
    if (text.failed())
    {
        return refuse(stream, contents);
    }
    if (count < maxLength)
    {
        // Lets the stream know that the end was met.
        if (text.endsEarly())
        {
            (void)moveTo(file, 0, FILE_END);
        }
        (void)fgetwc(stream);
    }
    return count;
}
