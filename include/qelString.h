/**
 * @file
 * @brief The library's text type.
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
 * @brief Holds a text and its reference count, so that copies of a qelString can share one buffer (copy-on-write).
 * @ingroup text
 *
 * Only qelString makes these. It never writes to a text once built; qelString::strRev() is the one exception.
 *
 * @par Example
 * @code
 * const qelString profile = L"HEA 200";
 * const qelString copy = profile;
 * copy.getStringW() == profile.getStringW(); // == true, one representation for both
 * @endcode
 *
 * @par Ownership
 * It belongs to the strings that share it and goes with the last of them. Representation and text are one block.
 *
 * @par Threads
 * The reference count is not thread-safe: it is a plain integer, so strings that share a text stay on one thread.
 */
class QEL_API qelStringRepr
{
public:
    /// The library shares representations instead of copying them; a copy refers to the same text.
    qelStringRepr(const qelStringRepr&) = default;

    /// As the copy: refers to the same text from then on.
    qelStringRepr& operator=(const qelStringRepr&) = default;

    /// Overwrites the text with zeros.
    virtual ~qelStringRepr();

    /// Frees the block that holds the representation and, behind it, its text.
    static void operator delete(void* block);

private:
    friend class qelString;
    friend struct qelStringAccess;

    /// Refers to `data`, which holds the text of the new representation; the count starts at 1.
    explicit qelStringRepr(wchar_t* data);

    wchar_t* m_data; ///< the text, ended by a 0 unit
    int m_refCount;  ///< objects that share this representation
};

/**
 * @brief The string class of the library: UTF-16 text with copy-on-write.
 * @ingroup text
 *
 * Every interface of the library that takes or returns text uses it. Strings that are copies of each other share one
 * text, so a copy costs one increment of a reference count, and strings go into and out of functions by value. A change
 * builds a new text and leaves the one that others share as it is. The text in the process's ANSI code page, its narrow
 * form, is made on demand.
 *
 * Positions and lengths count UTF-16 code units, from 0; "not found" is -1. A character beyond U+FFFF takes two units.
 * Comparison is by unit, so case-sensitive; compareNoCase() is case-insensitive, compareWithNumbers() sorts as people
 * count.
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
 * A string owns its narrow form and shares its text. Pointers from getStringW() and getStringA() stay valid until this
 * object is next changed or destroyed. Text and narrow forms are overwritten with zeros before their memory is freed.
 *
 * @par Threads
 * Not thread-safe, not even for separate objects: keep all use of the class on one thread at a time. The reference
 * count of a shared text is a plain integer, and several operations work without a lock in two buffers that belong to
 * the process (qelStringTempBufferWide and qelStringTempBuffer).
 *
 * @par Cost
 * Copying and isEmpty() are O(1). length() measures the text on every call, O(n). A change is one allocation and O(n),
 * where the member says nothing else.
 *
 * @par Failure
 * Nothing reports an error or throws by itself; memory that cannot be had surfaces from the allocation. A text has at
 * most 524,288 units: longer text given to a constructor or an assignment is cut there. Results of concatenation,
 * replacement and formatting end at 524,287 units: a longer one goes to the C runtime's invalid-parameter handling,
 * which may end the process; where that returns, the result is the empty text.
 */
class QEL_API qelString
{
public:
    /// Capacity of both process-wide buffers and the greatest length of a text, in units. An enumerator, since
    /// a constant object would have to be imported wherever it is not folded.
    enum : int
    {
        kMaxLength = 0x80000
    };

    /// The representation of every empty text; made when the library is loaded and never freed.
    static qelStringRepr* m_repEmpty;

    /// Process-wide scratch buffer of 524,288 wide units.
    static wchar_t* qelStringTempBufferWide;

    /// Process-wide scratch buffer of 524,288 bytes.
    static char* qelStringTempBuffer;

    /// @name Construction and assignment
    /// @{

    /// The empty text.
    qelString();

    /// A copy of `text`; null or empty gives the empty text.
    qelString(const wchar_t* text);

    /// @overload
    qelString(const unsigned short* text);

    /// The text of `text` in the ANSI code page; null or empty gives the empty text.
    qelString(const char* text);

    /// Shares the text of `other`. O(1).
    qelString(const qelString& other);

    /// Gives up its share of the text; the last one to do so scrubs and frees it.
    ~qelString();

    /// Shares the text of `other`. O(1).
    qelString& operator=(const qelString& other);

    /// Takes a copy of `text`, which may point into this string's own text; null or empty gives the empty text.
    qelString& operator=(const wchar_t* text);

    /// @overload
    qelString& operator=(const unsigned short* text);

    /// As the `char` constructor; `text` may be this string's own narrow form.
    qelString& operator=(const char* text);

    /// As assigning `text`; returns a copy of this string.
    qelString setFromUnsignedShortString(const unsigned short* text);

    /**
     * Decodes narrow text with MIF escapes ("\M+", a selector digit and two hexadecimal pairs). The last selector
     * chooses the code page of the whole text: 1 = 932, 2 = 950, 3 = 949, 4 = 1361, 5 = 936, anything else and no
     * escape at all = the ANSI code page. Null gives the empty text; an escape that the end of the text cuts gives no
     * bytes; a pair that is no number gives 0; a decoded 0 byte ends the text. Any three bytes that have the bits of
     * "\M+" start an escape, deliberately. Returns a copy of this string.
     */
    qelString setFromMIFString(const char* text);

    /// Makes this the empty text.
    qelString& empty();
    /// @}

    /// @name Access
    /// @{

    /// The text, ended by a 0 unit. Never null.
    const wchar_t* getStringW() const;

    /// The same pointer as getStringW() under the other type of 16-bit text.
    const unsigned short* getStringWAsUnsignedShort() const;

    /**
     * The text in the ANSI code page, with "?" for what that page lacks. Made on the first call and kept until this
     * string is next changed.
     */
    const char* getStringA() const;

    /// Number of units, at most 524,288. O(n).
    int length() const;

    /// 1 when the text is empty, else 0. O(1).
    int isEmpty() const;

    /// The unit at `index`; not checked.
    const wchar_t& operator[](int index) const;

    /**
     * Overwrites the unit at `index` in a copy of the text. An index equal to length() overwrites the terminator, so
     * the text then runs on into what the wide scratch buffer held behind it; an index outside the scratch buffer
     * changes nothing. The `char` form converts the byte from the ANSI code page first.
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

    /// Whether both texts have the same units.
    bool operator==(const qelString& other) const;

    /// Whether a unit or the length differs.
    bool operator!=(const qelString& other) const;

    /// Whether this text comes before `other`.
    bool operator<(const qelString& other) const;

    /// Whether this text comes behind `other`.
    bool operator>(const qelString& other) const;

    /// -1, 0 or 1.
    static int compare(const qelString& a, const qelString& b);

    /// Compares at most `n` units, all of them for a negative `n`; only the sign of the result has a meaning.
    static int compare(const qelString& a, const qelString& b, int n);

    /// As the C runtime's `_wcsicmp` / `_wcsnicmp`; only the sign of the result has a meaning. A negative `n` compares
    /// all units.
    static int compareNoCase(const qelString& a, const qelString& b);

    /// @overload
    static int compareNoCase(const qelString& a, const qelString& b, int n);

    /**
     * Natural order: digits at the same position are compared by the value of the number they start, so x9 comes
     * before x10. Returns -1, 0 or 1. Three results surprise and are meant: a text is equal to any longer text that
     * starts with it, but a longer one is greater than its own beginning; a digit comes before whatever is no digit
     * when it stands in `a`, but is compared by code value when it stands in `b`; a7 equals a007.
     */
    static int compareWithNumbers(const qelString& a, const qelString& b);

    /// compare() for sorting and searching: each argument points to a `qelString`; 0 when either is null.
    static int strCompare(const void* a, const void* b);

    /// compareNoCase() for sorting and searching, likewise.
    static int strCompareNoCase(const void* a, const void* b);
    /// @}

    /// @name Concatenation and removal of leading units
    /// @{

    /// The text of this string followed by that of `other`.
    qelString operator+(const qelString& other) const;

    /// Appends the text of `other`, which may be this string.
    const qelString& operator+=(const qelString& other);

    /// Drops the first `count` units; less than 1 drops nothing, as many as there are or more leaves the empty text.
    qelString& operator>>=(int count);

    /// A text without the first `count` units, likewise.
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
     * text only where the ANSI code page has one byte a character.
     */
    int find_last_of(char c) const;

    /// True when every unit is a letter or digit (`iswalnum`); true for the empty text.
    bool IsAlphaNumeric() const;

    /// True when every unit is a letter (`iswalpha`); true for the empty text.
    bool IsAlphabetic() const;

    /// True when every unit is a digit (`iswdigit`); false for the empty text.
    bool IsNumeric() const;
    /// @}

    /// @name Replacing
    /// @{

    /**
     * Replaces every `from` by `to` and returns how many there were. The text is rebuilt even when there were none. A
     * `to` of 0 cuts the text at the first place; the count still covers them all. The `char` form converts both from
     * the ANSI code page.
     */
    int replace(wchar_t from, wchar_t to);

    /// @overload
    int replace(unsigned short from, unsigned short to);

    /// @overload
    int replace(char from, char to);

    /**
     * Replaces every `what`, from left to right and without looking into inserted text, and returns how many there
     * were. An empty `what` gives 0 and changes nothing.
     */
    int replace(const qelString& what, const qelString& with);

    /// Replaces `count` units from `start`; a range past the end drops the tail, a count below 1 changes nothing.
    qelString& replace(int start, int count, const qelString& with);

    /// Removes every `c`; the `char` form converts it from the ANSI code page first.
    void removeAll(const wchar_t& c);

    /// @overload
    void removeAll(const unsigned short& c);

    /// @overload
    void removeAll(const char& c);
    /// @}

    /// @name Cutting
    /// @{

    /// The first `n` units; empty for a negative `n`, the whole text (shared) for `n` at or above length(). O(n).
    qelString left(int n) const;

    /// The last `n` units; empty for a negative `n`, the whole text (shared) for `n` at or above length().
    qelString right(int n) const;

    /// Up to `count` units from `start`, all that are left for a negative count; a start outside the text gives the
    /// empty text.
    qelString mid(int start, int count) const;

    /// The text from `start` on; a start outside the text gives the empty text.
    qelString mid(int start) const;

    /**
     * Sets this string to up to `count` units of `source` from `start`, or to the empty text when `start` is negative
     * or not below the source's length or `count` is below 1. Returns a copy of this string.
     */
    qelString copy(const qelString& source, int start, int count);

    /// Sets this string to the text of `source` from `start` on, likewise.
    qelString copy(const qelString& source, int start);

    /// Removes tabs, line feeds and spaces, but deliberately no carriage return, from the beginning.
    void TrimLeft();

    /// The same from the end.
    void TrimRight();

    /// Removes the units that occur in `set` from the beginning; an empty set removes nothing. The text is rebuilt even
    /// when nothing is removed, and its limit is that of a formatted one.
    void TrimLeft(const qelString& set);

    /// The same from the end.
    void TrimRight(const qelString& set);
    /// @}

    /// @name Letter case and order
    /// @{

    /// To upper case by the C runtime's current locale.
    qelString& toUpper();

    /// To lower case, likewise.
    qelString& toLower();

    /**
     * Reverses the text in place and returns a new string of it. Deliberately without detaching: every string that
     * shares the text is reversed with this one, and this string's narrow form is not renewed.
     */
    qelString strRev();
    /// @}

    /// @name Numbers
    /// Parsing skips leading white space, stops at the first character that does not fit, and gives 0 for no number.
    /// @{

    /// A whole number, base 10. What one past 32 bits gives is the C runtime's choice.
    int toInteger() const;

    /// As toInteger().
    long toLong() const;

    /// Deliberately parses the 32-bit range only, then widens.
    long long toIntPtr() const;

    /// A number with point and exponent, as the C runtime reads it in its current locale.
    double toDouble() const;

    /// The value in base `radix` (2 to 36; another one gives the empty text). Only base 10 knows a sign.
    static qelString integerToString(int value, int radix = 10);

    /// As integerToString(): both types have 32 bits.
    static qelString longToString(long value, int radix = 10);

    /// The value with `digits` significant digits (0 to 1,023; another number gives the empty text), in the form that
    /// the C runtime's `_gcvt_s` gives it.
    static qelString doubleToString(double value, int digits);
    /// @}

    /// @name Formatting
    /// The platform's format language: "%s" takes wide text in wide formats and narrow text in narrow ones, "%S" the
    /// other way round. Narrow results are converted from the ANSI code page. A null format gives the empty text. An
    /// argument may be this string's own text.
    ///
    /// A qelString is no argument for "%s", and does not compile as one: pass getStringW() or getStringA().
    /// @code
    /// const qelString profile = L"HEA 200";
    /// qelString label;
    /// label.format(L"%s x %d", profile.getStringW(), 4);     // == L"HEA 200 x 4"
    /// label.format("%s x %d", profile.getStringA(), 4);      // == L"HEA 200 x 4"
    /// @endcode
    /// @{

    /// Sets this string to the formatted text and returns it.
    qelString& format(const char* fmt, ...);

    /// @overload
    qelString& format(const wchar_t* fmt, ...);

    /// @overload
    qelString& format(const unsigned short* fmt, ...);

    /// Refuses objects among the values: the runtime would print their bytes.
    template <class Unit, class... Values, typename qelEnableIf<(... || !__is_trivially_copyable(Values))>::Type = 0>
    qelString& format(const Unit* fmt, const Values&... values) = delete;

    /// As format(), with the arguments in a list, which is used up.
    qelString& vformat(const char* fmt, va_list args);

    /// @overload
    qelString& vformat(const wchar_t* fmt, va_list args);

    /// @overload
    qelString& vformat(const unsigned short* fmt, va_list args);

    /**
     * Formats a time with `strftime`. `maxSize` is the greatest size of the result in bytes, terminator included; a
     * result that does not fit, a `maxSize` of 0 and null arguments give the empty text.
     */
    qelString& formatTime(size_t maxSize, const char* fmt, const tm* when);

    /// The local time of day as hh:mm:ss.
    static qelString time();

    /// The local date as mm/dd/yy.
    static qelString date();
    /// @}

    /// @name Tokens
    /// Both replace the contents of `tokens` and leave `text` as it is. Every unit of `separators` separates; runs of
    /// separators count as one and no token is empty.
    /// @{

    /// What stands between the separators.
    static void getTokens(qelString& text, qelArray<qelString>& tokens, const qelString& separators);

    /**
     * The same, but between a unit of `quotes` and its next occurrence separators are ordinary text. Quotes stay in the
     * tokens; a doubled quote inside stays doubled; a quote that is not closed runs to the end of the text.
     */
    static void getTokens(qelString& text, qelArray<qelString>& tokens, const qelString& separators, qelString quotes);
    /// @}

    /// @name Paths
    /// @{

    /**
     * Splits the text into drive ("c:"), folder (with its last separator), file name and extension (with its dot). A
     * part of 260 units or more is an invalid-parameter failure of the C runtime; all four are then empty.
     */
    void SplitPath(qelString& drive, qelString& dir, qelString& fname, qelString& ext) const;

    /// Sets this string to the path made of the parts; one of 260 units or more fails likewise and leaves it empty.
    void MakePath(const qelString& drive, const qelString& dir, const qelString& fname, const qelString& ext);
    /// @}

private:
    friend struct qelStringAccess;

    /// The text of `chars[first..last]`; empty when the range is none. An empty array leaves m_rep null. The library
    /// does not call it: it is kept as an exported name.
    qelString(const qelArray<wchar_t>& chars, int first, int last);

    /// Appends every unit of the text to `chars`, which is not cleared first. The library does not call it: it is kept
    /// as an exported name.
    void StringToArr(qelArray<wchar_t>& chars) const;

    void ReleaseRep();
    void ReleaseCharCache();

    qelStringRepr* m_rep;      ///< the text; m_repEmpty when empty, never null for callers
    mutable char* m_charCache; ///< narrow form, or null until it is asked for
};

static_assert(sizeof(qelStringRepr) == 24, "virtual table, text and count");
static_assert(sizeof(qelString) == 16, "text and narrow form");

#endif
