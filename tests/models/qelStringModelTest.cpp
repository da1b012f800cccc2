// Strings that share, change and convert, against a plain model: the text of each, who shares a buffer with whom, and
// the narrow form that each holds.
#include "qelString.h"
#include "support/SeededRun.h"
#include "support/StringInternals.h"
#include "support/StringRules.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <cwchar>
#include <cwctype>
#include <memory>
#include <string>
#include <vector>

namespace
{
using qelTest::SeededRun;
using std::wstring;

const int kStrings = 5;
const size_t kLongest = 150;

/// A string of the model. Copies share a buffer until one of them changes.
struct Model
{
    std::shared_ptr<wstring> buffer;
    bool isCached = false;
    std::string narrow;

    const wstring& text() const { return *buffer; }
    int length() const { return static_cast<int>(buffer->size()); }
};

std::shared_ptr<wstring> newBuffer(const wstring& text)
{
    static const auto empty = std::make_shared<wstring>();
    return text.empty() ? empty : std::make_shared<wstring>(text);
}

/// Whether 1252 is the ANSI code page. In any other only ASCII characters are used where it matters.
bool isWestern()
{
    return GetACP() == 1252;
}

/// Text in code page 1252: the characters of alphabet() are known by hand.
std::string narrowOf(const wstring& text)
{
    std::string narrow;
    for (const wchar_t c : text)
    {
        if (c < 0x80 || (c >= 0xA0 && c <= 0xFF))
        {
            narrow += static_cast<char>(c);
        }
        else
        {
            narrow += c == 0x20AC ? '\x80' : '?';
        }
    }
    return narrow;
}

wstring wideOf(const std::string& text)
{
    wstring wide;
    for (const char c : text)
    {
        wide += c == '\x80' ? wchar_t(0x20AC) : static_cast<wchar_t>(static_cast<unsigned char>(c));
    }
    return wide;
}

const wstring& alphabet()
{
    static const wstring ascii = L"aabbccABC012379 \t\n\r.,;:/\\'\"+-_";
    static const wstring western = ascii + L"\x00E4\x00C4\x00E9\x20AC";
    return isWestern() ? western : ascii;
}

/// Characters that code page 1252 lacks as well.
const wstring& wideAlphabet()
{
    static const wstring all = alphabet() + (isWestern() ? L"\x4E16\x0416\xD83D\xDE00" : L"");
    return all;
}

const wchar_t* const kSets[] = {L"", L" ", L"\t\n ", L"ab", L"abcABC", L"0123456789", L",;", L"'\"", L"\x00E4", L"x"};

int signOf(int value)
{
    return (value > 0) - (value < 0);
}

int ordinal(const wstring& a, const wstring& b)
{
    return signOf(a.compare(b));
}

/// The strings under test beside their models, and one operation at a time on both.
class Strings
{
public:
    explicit Strings(SeededRun& run)
        : m_run(run)
    {
        for (Model& model : m_models)
        {
            model.buffer = newBuffer(L"");
        }
    }

    void operate()
    {
        using Operation = void (Strings::*)();
        static const Operation operations[] = {
            &Strings::assignWide,    &Strings::assignWide,
            &Strings::assignWide,    &Strings::assignNarrow,
            &Strings::assignShort,   &Strings::assignCopy,
            &Strings::assignCopy,    &Strings::construct,
            &Strings::concatenate,   &Strings::concatenate,
            &Strings::append,        &Strings::append,
            &Strings::cutLeading,    &Strings::setUnit,
            &Strings::findText,      &Strings::findLast,
            &Strings::classify,      &Strings::changeCase,
            &Strings::replaceUnit,   &Strings::replaceText,
            &Strings::replaceRange,  &Strings::removeUnit,
            &Strings::takePart,      &Strings::copyPart,
            &Strings::trim,          &Strings::trim,
            &Strings::parseNumbers,  &Strings::printNumbers,
            &Strings::formatText,    &Strings::compareStrings,
            &Strings::tokenize,      &Strings::splitPath,
            &Strings::reverseShared, &Strings::askForNarrow,
            &Strings::askForNarrow,  &Strings::makeEmpty,
            &Strings::decodeEscapes, &Strings::comparePrefixes,
        };
        m_at = m_run.below(kStrings);
        m_other = m_run.below(kStrings);
        (this->*m_run.pick(operations))();
    }

    /// Everything that can be seen of all strings.
    void check() const
    {
        for (int i = 0; i < kStrings; ++i)
        {
            const wstring& text = m_models[i].text();
            ASSERT_EQ(text, m_strings[i].getStringW());
            ASSERT_EQ(m_models[i].length(), m_strings[i].length());
            ASSERT_EQ(text.empty() ? 1 : 0, m_strings[i].isEmpty());
            const char* const cache = charCacheOf(m_strings[i]);
            ASSERT_EQ(m_models[i].isCached, cache != nullptr);
            if (cache != nullptr)
            {
                ASSERT_EQ(m_models[i].narrow, cache);
            }
            if (text.empty())
            {
                ASSERT_EQ(qelString::m_repEmpty, representationOf(m_strings[i]));
            }
            else
            {
                ASSERT_EQ(m_models[i].buffer.use_count(), shareCountOf(m_strings[i]));
            }
            for (int k = 0; k < i; ++k)
            {
                ASSERT_EQ(m_models[i].buffer == m_models[k].buffer,
                          representationOf(m_strings[i]) == representationOf(m_strings[k]));
            }
        }
    }

private:
    qelString& string() { return m_strings[m_at]; }
    Model& model() { return m_models[m_at]; }
    const qelString& otherString() const { return m_strings[m_other]; }
    const Model& otherModel() const { return m_models[m_other]; }
    const wstring& text() const { return m_models[m_at].text(); }

    /// The model of the chosen string has a buffer of its own now.
    void becomes(const wstring& text)
    {
        model().buffer = newBuffer(text);
        model().isCached = false;
    }

    /// The model shares the buffer of another one; nothing happens when it does already.
    void shares(const Model& other)
    {
        if (model().buffer != other.buffer)
        {
            model().buffer = other.buffer;
            model().isCached = false;
        }
    }

    /// Keeps strings short enough for a million steps.
    void shorten()
    {
        if (text().size() > kLongest)
        {
            becomes(text().substr(text().size() / 2));
            string() >>= static_cast<int>(m_strings[m_at].length() / 2);
        }
    }

    wstring wide() { return qelTest::randomText(m_run, wideAlphabet(), 12); }
    wstring set() { return m_run.pick(kSets); }
    wchar_t unit() { return wideAlphabet()[static_cast<size_t>(m_run.below(static_cast<int>(wideAlphabet().size())))]; }

    void assignWide()
    {
        const wstring text = wide();
        string() = text.empty() && m_run.oneIn(2) ? nullptr : text.c_str();
        becomes(text);
    }

    void assignNarrow()
    {
        const wstring text = qelTest::randomText(m_run, alphabet(), 12);
        string() = narrowOf(text).c_str();
        // It goes by way of a second string, and two empty strings share already.
        shares({newBuffer(text), false, ""});
    }

    void assignShort()
    {
        const wstring text = wide();
        const auto* units = reinterpret_cast<const unsigned short*>(text.c_str());
        if (m_run.oneIn(2))
        {
            string() = units;
        }
        else
        {
            const qelString result = string().setFromUnsignedShortString(units);
            EXPECT_EQ(text, result.getStringW());
        }
        becomes(text);
    }

    void assignCopy()
    {
        string() = otherString();
        shares(otherModel());
    }

    void construct()
    {
        const wstring text = wide();
        const auto* units = reinterpret_cast<const unsigned short*>(text.c_str());
        const qelString fromWide(text.c_str());
        const qelString fromShort(units);
        const qelString copy(fromShort);
        EXPECT_EQ(text, fromShort.getStringW());
        EXPECT_EQ(representationOf(fromShort), representationOf(copy));
        string() = fromWide;
        shares({newBuffer(text), false, ""});
    }

    void concatenate()
    {
        string() = string() + otherString();
        const wstring sum = text() + otherModel().text();
        shares({newBuffer(sum), false, ""});
        shorten();
    }

    void append()
    {
        const wstring sum = text() + otherModel().text();
        string() += otherString();
        shares({newBuffer(sum), false, ""});
        shorten();
    }

    void cutLeading()
    {
        const int count = m_run.between(-2, model().length() + 2);
        const wstring rest = count < 1 ? text() : text().substr(std::min(text().size(), static_cast<size_t>(count)));
        if (m_run.oneIn(2))
        {
            const qelString result = string() >> count;
            EXPECT_EQ(rest, result.getStringW());
        }
        else
        {
            string() >>= count;
            if (count >= 1)
            {
                becomes(rest);
            }
        }
    }

    void setUnit()
    {
        if (text().empty())
        {
            return;
        }
        const int index = m_run.below(model().length());
        wstring changed = text();
        const wchar_t c = m_run.oneIn(3) ? alphabet()[static_cast<size_t>(m_run.below(10))] : unit();
        changed[static_cast<size_t>(index)] = c;
        const int form = m_run.below(c < 0x80 ? 3 : 2);
        if (form == 0)
        {
            string().setAt(index, c);
        }
        else if (form == 1)
        {
            string().setAt(index, static_cast<unsigned short>(c));
        }
        else
        {
            string().setAt(index, static_cast<char>(c));
        }
        becomes(changed);
    }

    /// Text that has a chance to be found.
    wstring needle()
    {
        if (m_run.oneIn(4) || text().empty())
        {
            return set();
        }
        const int start = m_run.below(model().length());
        return text().substr(static_cast<size_t>(start), static_cast<size_t>(m_run.between(1, 4)));
    }

    void findText()
    {
        const wstring what = needle();
        const int start = m_run.between(-1, model().length() + 1);
        int expected = -1;
        if (start >= 0 && start < model().length())
        {
            const size_t at = text().find(what, static_cast<size_t>(start));
            expected = at == wstring::npos ? -1 : static_cast<int>(at);
        }
        EXPECT_EQ(expected, string().find(what.c_str(), start));
    }

    void findLast()
    {
        const wchar_t c = unit();
        const size_t at = text().rfind(c);
        const int expected = at == wstring::npos ? -1 : static_cast<int>(at);
        EXPECT_EQ(expected, string().find_last_of(c));
        EXPECT_EQ(expected, string().find_last_of(static_cast<unsigned short>(c)));
        if (c < 0x80 && !text().empty() && model().isCached)
        {
            // In the narrow form, which strRev() may have left behind.
            const size_t byte = model().narrow.rfind(static_cast<char>(c), text().size() - 1);
            EXPECT_EQ(byte == std::string::npos ? -1 : static_cast<int>(byte),
                      string().find_last_of(static_cast<char>(c)));
        }
    }

    void classify()
    {
        const auto all = [this](int (*is)(wint_t)) {
            return std::all_of(text().begin(), text().end(), [is](wchar_t c) { return is(c) != 0; });
        };
        EXPECT_EQ(all(&iswalnum), string().IsAlphaNumeric());
        EXPECT_EQ(all(&iswalpha), string().IsAlphabetic());
        EXPECT_EQ(!text().empty() && all(&iswdigit), string().IsNumeric());
    }

    void changeCase()
    {
        wstring changed = text();
        if (m_run.oneIn(2))
        {
            _wcsupr_s(&changed[0], changed.size() + 1);
            string().toUpper();
        }
        else
        {
            _wcslwr_s(&changed[0], changed.size() + 1);
            string().toLower();
        }
        becomes(changed);
    }

    void replaceUnit()
    {
        const wchar_t from = unit();
        const wchar_t to = m_run.oneIn(10) ? L'\0' : unit();
        wstring changed = text();
        const auto expected = static_cast<int>(std::count(changed.begin(), changed.end(), from));
        std::replace(changed.begin(), changed.end(), from, to);
        changed = changed.c_str();
        if (from < 0x80 && to < 0x80 && m_run.oneIn(2))
        {
            EXPECT_EQ(expected, string().replace(static_cast<char>(from), static_cast<char>(to)));
        }
        else if (m_run.oneIn(2))
        {
            EXPECT_EQ(expected, string().replace(static_cast<unsigned short>(from), static_cast<unsigned short>(to)));
        }
        else
        {
            EXPECT_EQ(expected, string().replace(from, to));
        }
        becomes(changed);
    }

    void replaceText()
    {
        const wstring what = needle();
        const wstring with = wide();
        wstring changed;
        int expected = 0;
        size_t from = 0;
        for (size_t at = text().find(what); !what.empty() && at != wstring::npos; at = text().find(what, from))
        {
            changed += text().substr(from, at - from) + with;
            from = at + what.size();
            ++expected;
        }
        changed += text().substr(from);
        EXPECT_EQ(expected, string().replace(what.c_str(), with.c_str()));
        if (!what.empty())
        {
            becomes(changed);
        }
        shorten();
    }

    void replaceRange()
    {
        const int start = m_run.between(0, model().length() + 2);
        const int count = m_run.between(-1, 6);
        const wstring with = wide();
        string().replace(start, count, with.c_str());
        if (count >= 1)
        {
            const auto begin = static_cast<size_t>(start);
            const size_t end = begin + static_cast<size_t>(count);
            const wstring tail = end < text().size() ? text().substr(end) : wstring();
            becomes(text().substr(0, begin) + with + tail);
        }
    }

    void removeUnit()
    {
        const wchar_t c = m_run.oneIn(20) ? L'\0' : unit();
        wstring changed = text();
        changed.erase(std::remove(changed.begin(), changed.end(), c), changed.end());
        if (m_run.oneIn(2))
        {
            string().removeAll(c);
        }
        else if (c < 0x80)
        {
            string().removeAll(static_cast<char>(c));
        }
        else
        {
            string().removeAll(static_cast<unsigned short>(c));
        }
        if (changed != text())
        {
            becomes(changed);
        }
    }

    void takePart()
    {
        const int n = m_run.between(-2, model().length() + 2);
        const auto kept = static_cast<size_t>(std::max(0, std::min(n, model().length())));
        const int kind = m_run.below(4);
        if (kind == 2)
        {
            const int start = m_run.between(-1, model().length() + 1);
            const bool isInside = start >= 0 && start < model().length();
            EXPECT_EQ(isInside ? text().substr(static_cast<size_t>(start)) : L"",
                      wstring(string().mid(start).getStringW()));
            const size_t count = n < 0 ? wstring::npos : static_cast<size_t>(n);
            EXPECT_EQ(isInside ? text().substr(static_cast<size_t>(start), count) : L"",
                      wstring(string().mid(start, n).getStringW()));
            return;
        }
        const qelString part = kind == 0 ? string().left(n) : string().right(n);
        const wstring expected = kind == 0 ? text().substr(0, kept) : text().substr(text().size() - kept);
        EXPECT_EQ(expected, part.getStringW());
        EXPECT_EQ(n >= model().length() || text().empty(), representationOf(part) == representationOf(string()));
        if (kind == 3)
        {
            string() = part;
            if (n < model().length())
            {
                shares({newBuffer(expected), false, ""});
            }
        }
    }

    void copyPart()
    {
        const wstring& source = otherModel().text();
        const int start = m_run.between(-1, otherModel().length() + 1);
        const int count = m_run.between(-1, 8);
        const bool toEnd = m_run.oneIn(3);
        const bool isInside = start >= 0 && start < otherModel().length();
        const wstring part = !isInside   ? wstring()
                             : toEnd     ? source.substr(static_cast<size_t>(start))
                             : count < 1 ? wstring()
                                         : source.substr(static_cast<size_t>(start), static_cast<size_t>(count));
        {
            const qelString result =
                toEnd ? string().copy(otherString(), start) : string().copy(otherString(), start, count);
            EXPECT_EQ(representationOf(result), representationOf(string()));
        }
        becomes(part);
    }

    void trim()
    {
        const bool isDefault = m_run.oneIn(2);
        const wstring units = isDefault ? L"\t\n " : set();
        wstring changed = text();
        const bool isLeft = m_run.oneIn(2);
        if (isLeft)
        {
            changed.erase(0, changed.find_first_not_of(units));
        }
        else
        {
            changed.erase(changed.find_last_not_of(units) + 1);
        }
        const bool wasEmpty = text().empty();
        if (isLeft)
        {
            isDefault ? string().TrimLeft() : string().TrimLeft(units.c_str());
        }
        else
        {
            isDefault ? string().TrimRight() : string().TrimRight(units.c_str());
        }
        if (!wasEmpty)
        {
            becomes(changed);
        }
    }

    void parseNumbers()
    {
        const int number = m_run.between(-100000, 100000);
        const wstring digits = std::to_wstring(number);
        const wstring whole = wstring(m_run.oneIn(2) ? L" \t" : L"") + digits + (m_run.oneIn(2) ? L"x1" : L"");
        const qelString text(whole.c_str());
        EXPECT_EQ(number, text.toInteger());
        EXPECT_EQ(number, text.toLong());
        EXPECT_EQ(number, text.toIntPtr());
        EXPECT_EQ(number, text.toDouble());
        EXPECT_EQ(_wtoi(m_models[m_at].text().c_str()), string().toInteger());
        EXPECT_EQ(_wtof(m_models[m_at].text().c_str()), string().toDouble());
    }

    static wstring inRadix(long long value, int radix)
    {
        // Only decimal numbers have a sign.
        const bool isNegative = radix == 10 && value < 0;
        unsigned rest = isNegative ? 0U - static_cast<unsigned>(value) : static_cast<unsigned>(value);
        wstring digits;
        do
        {
            digits.insert(digits.begin(), L"0123456789abcdefghijklmnopqrstuvwxyz"[rest % static_cast<unsigned>(radix)]);
            rest /= static_cast<unsigned>(radix);
        } while (rest != 0);
        return isNegative ? L"-" + digits : digits;
    }

    void printNumbers()
    {
        const int value = m_run.between(-1000000000, 1000000000) >> m_run.below(31);
        const int radix = m_run.oneIn(2) ? 10 : m_run.between(2, 36);
        const qelString number = qelString::integerToString(value, radix);
        EXPECT_EQ(inRadix(value, radix), number.getStringW());
        EXPECT_EQ(inRadix(value, radix), wstring(qelString::longToString(value, radix).getStringW()));
        const double quarter = m_run.between(-4000, 4000) / 4.0;
        EXPECT_EQ(quarter, qelString::doubleToString(quarter, 10).toDouble());
        string() = number;
        shares({newBuffer(inRadix(value, radix)), false, ""});
    }

    void formatText()
    {
        const int number = m_run.between(-999, 9999);
        const wstring argument = otherModel().text();
        const wstring expected = L"<" + argument + L"|" + std::to_wstring(number) + L">";
        if (m_run.oneIn(2))
        {
            string().format(L"<%s|%d>", otherString().getStringW(), number);
        }
        else
        {
            static const wchar_t fmt[] = L"<%s|%d>";
            string().format(reinterpret_cast<const unsigned short*>(fmt), otherString().getStringW(), number);
        }
        becomes(expected);
        if (m_run.oneIn(4))
        {
            string().format("%05d%%", number);
            wstring padded = std::to_wstring(number < 0 ? -number : number);
            padded.insert(0, padded.size() < (number < 0 ? 4U : 5U) ? (number < 0 ? 4U : 5U) - padded.size() : 0, L'0');
            becomes((number < 0 ? L"-" : L"") + padded + L"%");
        }
        shorten();
    }

    void compareStrings()
    {
        const wstring& a = text();
        const wstring& b = otherModel().text();
        const qelString& left = string();
        const qelString& right = otherString();
        EXPECT_EQ(a == b, left == right);
        EXPECT_EQ(a != b, left != right);
        EXPECT_EQ(a < b, left < right);
        EXPECT_EQ(a > b, left > right);
        EXPECT_EQ(ordinal(a, b), qelString::compare(left, right));
        EXPECT_EQ(ordinal(a, b), qelString::strCompare(&left, &right));
        EXPECT_EQ(signOf(_wcsicmp(a.c_str(), b.c_str())), signOf(qelString::compareNoCase(left, right)));
        EXPECT_EQ(signOf(_wcsicmp(a.c_str(), b.c_str())), signOf(qelString::strCompareNoCase(&left, &right)));
        EXPECT_EQ(qelTest::naturalOrder(a, b), qelString::compareWithNumbers(left, right));
    }

    void comparePrefixes()
    {
        const int n = m_run.below(6);
        const wstring a = text().substr(0, static_cast<size_t>(n));
        const wstring b = otherModel().text().substr(0, static_cast<size_t>(n));
        EXPECT_EQ(ordinal(a, b), signOf(qelString::compare(string(), otherString(), n)));
        EXPECT_EQ(signOf(_wcsicmp(a.c_str(), b.c_str())), signOf(qelString::compareNoCase(string(), otherString(), n)));
        // Numbers at the same place, which random text seldom has.
        const wstring c = L"p" + std::to_wstring(m_run.below(120)) + set();
        const wstring d = (m_run.oneIn(2) ? L"p" : L"p0") + std::to_wstring(m_run.below(120)) + set();
        EXPECT_EQ(qelTest::naturalOrder(c, d), qelString::compareWithNumbers(c.c_str(), d.c_str()))
            << c.c_str() << ' ' << d.c_str();
    }

    void tokenize()
    {
        const wstring separators = set();
        const wstring quotes = m_run.oneIn(2) ? L"" : m_run.oneIn(2) ? L"'" : L"'\"";
        qelArray<qelString> tokens;
        tokens.append(L"from before");
        if (quotes.empty() && m_run.oneIn(2))
        {
            qelString::getTokens(string(), tokens, separators.c_str());
        }
        else
        {
            qelString::getTokens(string(), tokens, separators.c_str(), quotes.c_str());
        }
        const std::vector<wstring> expected = qelTest::tokensOf(text(), separators, quotes);
        ASSERT_EQ(expected.size(), static_cast<size_t>(tokens.length()));
        for (long i = 0; i < tokens.length(); ++i)
        {
            EXPECT_EQ(expected[static_cast<size_t>(i)], tokens[i].getStringW());
        }
    }

    void splitPath()
    {
        const wstring name = qelTest::randomText(m_run, L"abc.", 6);
        const wstring path = wstring(m_run.oneIn(2) ? L"c:" : L"") + (m_run.oneIn(2) ? L"\\dir/sub\\" : L"") + name;
        const size_t slash = path.find_last_of(L"\\/");
        const size_t colon = path.compare(0, 2, L"c:") == 0 ? 2 : 0;
        const size_t file = slash == wstring::npos ? colon : slash + 1;
        const size_t dot = path.rfind(L'.');
        const size_t extension = dot == wstring::npos || dot < file ? path.size() : dot;
        qelString drive;
        qelString dir;
        qelString fname;
        qelString ext;
        qelString(path.c_str()).SplitPath(drive, dir, fname, ext);
        EXPECT_EQ(path.substr(0, colon), drive.getStringW());
        EXPECT_EQ(path.substr(colon, file - colon), dir.getStringW());
        EXPECT_EQ(path.substr(file, extension - file), fname.getStringW());
        EXPECT_EQ(path.substr(extension), ext.getStringW());
        string().MakePath(drive, dir, fname, ext);
        becomes(path);
    }

    void reverseShared()
    {
        const qelString result = string().strRev();
        std::reverse(model().buffer->begin(), model().buffer->end());
        EXPECT_EQ(text(), result.getStringW());
        EXPECT_EQ(text().empty(), representationOf(result) == representationOf(string()));
    }

    void askForNarrow()
    {
        if (!model().isCached)
        {
            model().narrow = narrowOf(text());
            model().isCached = true;
        }
        const char* const narrow = string().getStringA();
        EXPECT_EQ(model().narrow, narrow);
        EXPECT_EQ(narrow, string().getStringA());
    }

    void makeEmpty()
    {
        string().empty();
        becomes(L"");
    }

    void decodeEscapes()
    {
        std::string text;
        for (int left = m_run.below(6); left > 0; --left)
        {
            // A pair that another piece cuts into is still below 0x80.
            static const char* const pieces[] = {"z",      "\\",        "\\M",       "\\M+", "\\M+1",
                                                 "\\M+14", "\\M+04142", "\\M+5610a", "_o/"};
            text += m_run.pick(pieces);
        }
        {
            const qelString result = string().setFromMIFString(text.c_str());
            EXPECT_EQ(representationOf(result), representationOf(string()));
        }
        becomes(wideOf(qelTest::withoutMifEscapes(text).bytes));
    }

    SeededRun& m_run;
    qelString m_strings[kStrings];
    Model m_models[kStrings];
    int m_at = 0;
    int m_other = 0;
};
} // namespace

TEST(qelStringModel, AgreesWithAPlainString)
{
    SeededRun run;
    Strings strings(run);
    while (run.next())
    {
        strings.operate();
        strings.check();
    }
}
