/**
 * @file
 * @brief Copy-on-write UTF-16 string.
 */
#ifndef QEL_STRING_H
#define QEL_STRING_H

#include "qelArray.h"
#include "qelExport.h"

#include <stdarg.h>
#include <stddef.h>

struct tm;
class qelString;

/// @cond
template <bool> struct qelEnableIf
{
};

template <> struct qelEnableIf<true>
{
    using Type = int;
};
/// @endcond

struct qelStringAccess;

/**
 * @brief Reference-counted buffer that copies of a qelString share.
 * @ingroup text
 *
 * Only qelString makes these. Once built, a buffer is never written to, except by qelString::strRev().
 *
 * @par Example
 * @code
 * const qelString profile = L"HEA 200";
 * const qelString copy = profile;
 * copy.getStringW() == profile.getStringW(); // == true, one representation for both
 * @endcode
 *
 * @par Ownership
 * The strings that share it own it; the last one frees it. This object and its text are one block.
 *
 * @par Threads
 * Not thread-safe: the reference count is a plain integer, so strings that share a buffer must stay on one thread.
 */
class QEL_API qelStringRepr
{
public:
    /// Shallow: the copy refers to the same text. The library itself shares representations instead.
    qelStringRepr(const qelStringRepr&) = default;

    /// Shallow, like the copy.
    qelStringRepr& operator=(const qelStringRepr&) = default;

    /// Overwrites the text with zeros.
    virtual ~qelStringRepr();

    /// Frees the block that holds the object and, behind it, its text.
    static void operator delete(void* block);

private:
    friend class qelString;
    friend struct qelStringAccess;

    /// Refers to `data`, which already holds the text; the count starts at 1.
    explicit qelStringRepr(wchar_t* data);

    wchar_t* m_data; ///< the text, null-terminated
    int m_refCount;  ///< strings that share this buffer
};

/**
 * @brief Copy-on-write UTF-16 string.
 * @ingroup text
 *
 * Every interface of the library that takes or returns text uses it. Copies share one buffer, so a copy costs one
 * increment of a reference count, and strings are passed and returned by value. A change builds a new buffer and leaves
 * the shared one as it is. The same text in the process's ANSI code page, the narrow form, is made on demand.
 *
 * Positions and lengths count UTF-16 code units, from 0; "not found" is -1. A character beyond U+FFFF takes two units
 * (a surrogate pair). Comparison is by unit, so case-sensitive; compareNoCase() is case-insensitive,
 * compareWithNumbers() gives natural order.
 *
 * @par Example
 * @code
 * qelString path = L"D:/Data/model.mdb";
 * path.replace(L"/", L"\\");             // == 2
 * path.getStringW();                     // == L"D:\\Data\\model.mdb"
 * path.find(L"model");                   // == 8
 * path.mid(3, 4);                        // == L"Data"
 *
 * const qelString saved = path + L".bak";
 * saved.right(8);                        // == L".mdb.bak"
 * saved.getStringA();                    // == "D:\\Data\\model.mdb.bak"
 * @endcode
 *
 * @par Ownership
 * Pointers from getStringW() and getStringA() stay valid until this object is next changed or destroyed. Buffers and
 * narrow forms are overwritten with zeros before their memory is freed.
 *
 * @par Threads
 * Not thread-safe, not even for separate objects: keep all use of the class on one thread at a time. Reference counts
 * are plain integers, and several operations use two process-wide buffers without a lock (qelStringTempBufferWide and
 * qelStringTempBuffer).
 *
 * @par Cost
 * Copying and isEmpty() are O(1). length() counts on every call, O(n). A change is one allocation and O(n), unless the
 * member says otherwise.
 *
 * @par Failure
 * Throws `std::bad_alloc` when out of memory, and nothing else. A string has at most 524,288 units: constructors and
 * assignments truncate longer text. Results of concatenation, replacement and formatting have at most 524,287: a longer
 * one goes to the C runtime's invalid-parameter handler, which may end the process; where that returns, the result is
 * empty.
 */
class QEL_API qelString
{
public:
    /// Capacity of both process-wide buffers and greatest length of a string, in units. An enumerator because a
    /// constant object would have to be imported wherever it is not folded.
    enum : int
    {
        kMaxLength = 0x80000
    };

    /// The buffer of every empty string; made when the library is loaded and never freed.
    static qelStringRepr* m_repEmpty;

    /// Process-wide scratch buffer of 524,288 units.
    static wchar_t* qelStringTempBufferWide;

    /// Process-wide scratch buffer of 524,288 bytes.
    static char* qelStringTempBuffer;

    /// @name Construction and assignment
    /// @{

    /// An empty string.
    qelString();

    /// A copy of `text`; null gives an empty string.
    qelString(const wchar_t* text);

    /// @overload
    qelString(const unsigned short* text);

    /// `text` converted from the ANSI code page; null gives an empty string.
    qelString(const char* text);

    /// Shares the buffer of `other`. O(1).
    qelString(const qelString& other);

    /// Releases the buffer; the last string to do so overwrites it with zeros and frees it.
    ~qelString();

    /// Shares the buffer of `other`. O(1).
    qelString& operator=(const qelString& other);

    /// Copies `text`, which may point into this string; null gives an empty string.
    qelString& operator=(const wchar_t* text);

    /// @overload
    qelString& operator=(const unsigned short* text);

    /// Like the `char` constructor; `text` may be this string's own narrow form.
    qelString& operator=(const char* text);

    /// Assigns `text`; returns a copy of this string.
    qelString setFromUnsignedShortString(const unsigned short* text);

    /**
     * Decodes narrow text with MIF escapes ("\M+", a selector digit and two hexadecimal pairs). The last selector
     * chooses the code page of everything: 1 = 932, 2 = 950, 3 = 949, 4 = 1361, 5 = 936, anything else or no escape =
     * the ANSI code page. Null gives an empty string; a truncated escape at the end gives no bytes; a pair that is no
     * hexadecimal number gives 0; a decoded 0 byte ends the string. Deliberately, any three bytes that include the bits
     * of "\M+" start an escape. Returns a copy of this string.
     */
    qelString setFromMIFString(const char* text);

    /// Makes this string empty.
    qelString& empty();
    /// @}

    /// @name Access
    /// @{

    /// The code units, null-terminated. Never null.
    const wchar_t* getStringW() const;

    /// The same pointer as getStringW(), as the other 16-bit type.
    const unsigned short* getStringWAsUnsignedShort() const;

    /**
     * The string in the ANSI code page, with "?" for what that page lacks. Made on the first call and kept until this
     * string is next changed.
     */
    const char* getStringA() const;

    /// Number of units, at most 524,288. O(n).
    int length() const;

    /// 1 when empty, else 0. O(1).
    int isEmpty() const;

    /// The unit at `index`; not checked.
    const wchar_t& operator[](int index) const;

    /**
     * Replaces the unit at `index`; other strings that share the buffer keep theirs. An index equal to length()
     * overwrites the terminator, and the string then runs on into whatever the wide scratch buffer holds there; an
     * index outside the scratch buffer changes nothing. The `char` form converts the byte from the ANSI code page
     * first.
     */
    qelString& setAt(int index, const wchar_t& c);

    /// @overload
    qelString& setAt(int index, const unsigned short& c);

    /// @overload
    qelString& setAt(int index, const char& c);
    /// @}

    /// @name Comparison
    /// Ordinal: unit by unit as unsigned 16-bit values, without case folding or locale, unless a member says otherwise.
    /// @{

    /// Whether both strings have the same units.
    bool operator==(const qelString& other) const;

    /// Whether a unit or the length differs.
    bool operator!=(const qelString& other) const;

    /// Whether this string comes before `other`.
    bool operator<(const qelString& other) const;

    /// Whether this string comes after `other`.
    bool operator>(const qelString& other) const;

    /// -1, 0 or 1.
    static int compare(const qelString& a, const qelString& b);

    /// Compares at most `n` units, all for a negative `n`; only the sign of the result has a meaning.
    static int compare(const qelString& a, const qelString& b, int n);

    /// Case-insensitive, by the C runtime's `_wcsicmp` / `_wcsnicmp`; only the sign of the result has a meaning. A
    /// negative `n` compares all units.
    static int compareNoCase(const qelString& a, const qelString& b);

    /// @overload
    static int compareNoCase(const qelString& a, const qelString& b, int n);

    /**
     * Natural order: numbers at the same position are compared by value, so x9 comes before x10. Returns -1, 0 or 1.
     * Three results are surprising but deliberate: a string equals any longer one that starts with it, yet the longer
     * one is greater than its own beginning; a digit in `a` comes before any non-digit, but a digit in `b` is compared
     * by code value; a7 equals a007.
     */
    static int compareWithNumbers(const qelString& a, const qelString& b);

    /// compare() as a `qsort` comparator: each argument points to a `qelString`; 0 when either is null.
    static int strCompare(const void* a, const void* b);

    /// compareNoCase(), likewise.
    static int strCompareNoCase(const void* a, const void* b);
    /// @}

    /// @name Concatenation and removal of leading units
    /// @{

    /// This string followed by `other`.
    qelString operator+(const qelString& other) const;

    /// Appends `other`, which may be this string.
    const qelString& operator+=(const qelString& other);

    /// Removes the first `count` units: none when `count` is below 1, all when it is length() or more.
    qelString& operator>>=(int count);

    /// A copy without the first `count` units, likewise.
    qelString operator>>(int count) const;
    /// @}

    /// @name Searching
    /// @{

    /// Position of the first `what` at or after `start`, or -1; also -1 when `start` is negative or not below length().
    /// O(n).
    int find(const qelString& what, int start = 0) const;

    /// Position of the last `c`, or -1.
    int find_last_of(wchar_t c) const;

    /// @overload
    int find_last_of(unsigned short c) const;

    /**
     * Position of the last byte `c` among the first length() bytes of the narrow form, or -1. It is a position in this
     * string only where the ANSI code page has one byte per character.
     */
    int find_last_of(char c) const;

    /// True when every unit is a letter or digit (`iswalnum`); true for an empty string.
    bool IsAlphaNumeric() const;

    /// True when every unit is a letter (`iswalpha`); true for an empty string.
    bool IsAlphabetic() const;

    /// True when every unit is a digit (`iswdigit`); false for an empty string.
    bool IsNumeric() const;
    /// @}

    /// @name Replacing
    /// @{

    /**
     * Replaces every `from` with `to` and returns the count. The buffer is rebuilt even when nothing matches. A `to` of
     * 0 truncates the string at the first match; the count still covers all. The `char` form converts both from the
     * ANSI code page.
     */
    int replace(wchar_t from, wchar_t to);

    /// @overload
    int replace(unsigned short from, unsigned short to);

    /// @overload
    int replace(char from, char to);

    /**
     * Replaces every `what` from left to right, without searching inserted text, and returns the count. An empty `what`
     * gives 0 and changes nothing.
     */
    int replace(const qelString& what, const qelString& with);

    /// Replaces `count` units from `start`, a range that is clamped to the string; a count below 1 changes nothing.
    qelString& replace(int start, int count, const qelString& with);

    /// Removes every `c`; the `char` form converts it from the ANSI code page first.
    void removeAll(const wchar_t& c);

    /// @overload
    void removeAll(const unsigned short& c);

    /// @overload
    void removeAll(const char& c);
    /// @}

    /// @name Substrings and trimming
    /// @{

    /// The first `n` units: none for a negative `n`, the whole string (shared) for length() or more. O(n).
    qelString left(int n) const;

    /// The last `n` units, likewise.
    qelString right(int n) const;

    /// Up to `count` units from `start`, the rest for a negative count; empty for a start outside the string.
    qelString mid(int start, int count) const;

    /// The rest from `start` on; empty for a start outside the string.
    qelString mid(int start) const;

    /**
     * Sets this string to up to `count` units of `source` from `start`; empty when `start` is outside `source` or
     * `count` is below 1. Returns a copy of this string.
     */
    qelString copy(const qelString& source, int start, int count);

    /// Sets this string to the rest of `source` from `start` on, likewise.
    qelString copy(const qelString& source, int start);

    /// Removes leading tabs, line feeds and spaces; deliberately not carriage returns.
    void TrimLeft();

    /// The same at the end.
    void TrimRight();

    /// Removes leading units that occur in `set`; an empty set removes nothing. The buffer is rebuilt even when nothing
    /// is removed, with the length limit of formatting.
    void TrimLeft(const qelString& set);

    /// The same at the end.
    void TrimRight(const qelString& set);
    /// @}

    /// @name Letter case and order
    /// @{

    /// Converts to upper case by the C runtime's current locale.
    qelString& toUpper();

    /// Converts to lower case, likewise.
    qelString& toLower();

    /**
     * Reverses this string in place and returns a new string with the result. Deliberately does not detach: every
     * string that shares the buffer is reversed as well, and the narrow form is not updated.
     */
    qelString strRev();
    /// @}

    /// @name Numbers
    /// Parsing skips leading white space, stops at the first character that does not fit, and returns 0 when there is
    /// no number.
    /// @{

    /// A decimal integer; beyond 32 bits the result is the C runtime's.
    int toInteger() const;

    /// Same as toInteger().
    long toLong() const;

    /// Deliberately parses 32 bits only, then widens.
    long long toIntPtr() const;

    /// A floating-point number, in the C runtime's current locale.
    double toDouble() const;

    /// The value in base `radix` (2 to 36; empty for any other). Negative values have a sign in base 10 only.
    static qelString integerToString(int value, int radix = 10);

    /// Same as integerToString(): both types have 32 bits.
    static qelString longToString(long value, int radix = 10);

    /// The value with `digits` significant digits (0 to 1,023; empty for any other), as the C runtime's `_gcvt_s`
    /// writes it.
    static qelString doubleToString(double value, int digits);
    /// @}

    /// @name Formatting
    /// As `printf` on Windows: "%s" takes wide text in wide formats and narrow text in narrow ones, "%S" the other way
    /// round. Narrow results are converted from the ANSI code page. A null format gives an empty string. Arguments may
    /// point into this string.
    ///
    /// A qelString is not a value for "%s" and does not compile as one: pass getStringW() or getStringA().
    /// @code
    /// const qelString profile = L"HEA 200";
    /// qelString label;
    /// label.format(L"%s x %d", profile.getStringW(), 4);     // == L"HEA 200 x 4"
    /// label.format("%s x %d", profile.getStringA(), 4);      // == L"HEA 200 x 4"
    /// @endcode
    /// @{

    /// Sets this string to the result and returns it.
    qelString& format(const char* fmt, ...);

    /// @overload
    qelString& format(const wchar_t* fmt, ...);

    /// @overload
    qelString& format(const unsigned short* fmt, ...);

    /// Refuses objects among the values: the runtime would print their bytes.
    template <class Unit, class... Values, typename qelEnableIf<(... || !__is_trivially_copyable(Values))>::Type = 0>
    qelString& format(const Unit* fmt, const Values&... values) = delete;

    /// format() with a `va_list`, which is used up.
    qelString& vformat(const char* fmt, va_list args);

    /// @overload
    qelString& vformat(const wchar_t* fmt, va_list args);

    /// @overload
    qelString& vformat(const unsigned short* fmt, va_list args);

    /**
     * Formats a time with `strftime`. `maxSize` is the capacity for the result in bytes, terminator included; a result
     * that does not fit, a `maxSize` of 0 and null arguments give an empty string.
     */
    qelString& formatTime(size_t maxSize, const char* fmt, const tm* when);

    /// The local time of day as hh:mm:ss.
    static qelString time();

    /// The local date as mm/dd/yy.
    static qelString date();
    /// @}

    /// @name Tokens
    /// Both tokenize `text`, leave it as it is, and replace the contents of `tokens`. Every unit of `separators`
    /// separates; runs of separators count as one, so no token is empty. When memory runs out, `tokens` holds those
    /// made by then.
    /// @{

    /// The tokens between separators.
    static void getTokens(qelString& text, qelArray<qelString>& tokens, const qelString& separators);

    /**
     * The same, but separators between a unit of `quotes` and its next occurrence do not separate. Quotes stay in the
     * tokens; a doubled quote stays doubled; an unclosed quote runs to the end.
     */
    static void getTokens(qelString& text, qelArray<qelString>& tokens, const qelString& separators, qelString quotes);
    /// @}

    /// @name Paths
    /// @{

    /**
     * Splits a path into drive ("c:"), folder (with its last separator), file name and extension (with its dot). A part
     * of 260 units or more is an invalid-parameter failure of the C runtime; all four are then empty.
     */
    void SplitPath(qelString& drive, qelString& dir, qelString& fname, qelString& ext) const;

    /// Joins the parts into this string; a path of 260 units or more fails likewise and leaves it empty.
    void MakePath(const qelString& drive, const qelString& dir, const qelString& fname, const qelString& ext);
    /// @}

private:
    friend struct qelStringAccess;

    /// The string `chars[first..last]`; empty for an empty range. An empty array leaves m_rep null. Unused: kept
    /// because it is exported.
    qelString(const qelArray<wchar_t>& chars, int first, int last);

    /// Appends every unit to `chars`, which is not cleared first. Unused: kept because it is exported.
    void StringToArr(qelArray<wchar_t>& chars) const;

    void ReleaseRep();
    void ReleaseCharCache();

    qelStringRepr* m_rep;      ///< the buffer; m_repEmpty when empty, never null for callers
    mutable char* m_charCache; ///< narrow form, or null until it is asked for
};

static_assert(sizeof(qelStringRepr) == 24, "virtual table, text and count");
static_assert(sizeof(qelString) == 16, "text and narrow form");

#endif
