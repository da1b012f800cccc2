// Making, copying, joining, cutting and converting strings.

#include "Families.h"
#include "Plain.h"

#include <windows.h>

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/split.hpp>

#include <algorithm>
#include <cstdio>
#include <cstring>

using namespace qelBench;
using std::wstring;

namespace
{
const char kWide[] = "std::wstring";
const char kConversion[] = "one conversion";
const char kReplacing[] = "conversion with \"?\" for the rest";

/// One string for either side.
struct Pair
{
    explicit Pair(const wstring& text)
        : theirs(text)
        , ours(text.c_str())
    {
    }

    wstring theirs;
    qelString ours;
};

std::shared_ptr<const Pair> pairOf(const wstring& text)
{
    return std::make_shared<const Pair>(text);
}

void addCopies(Table& table)
{
    table.add(Row{"copy", "29 units", kWide, 0.1}, [] {
        const auto d = pairOf(sections(29));
        return sides([d] { return qelString(d->ours); }, [d] { return wstring(d->theirs); });
    });
    table.add(Row{"copy", "29 units", "std::shared_ptr", 0.4}, [] {
        const qelString ours(sections(29).c_str());
        const std::shared_ptr<const wstring> theirs = std::make_shared<const wstring>(sections(29));
        return sides([ours] { return qelString(ours); }, [theirs] { return std::shared_ptr<const wstring>(theirs); });
    });
    table.add(Row{"assign between live strings", "29 units", "std::shared_ptr", 0.7}, [] {
        struct Data
        {
            qelString ours[3] = {L"HEA 200 S355", L"IPE 300 S235", L""};
            std::shared_ptr<const wstring> theirs[3] = {std::make_shared<const wstring>(L"HEA 200 S355"),
                                                        std::make_shared<const wstring>(L"IPE 300 S235"), nullptr};
            int turn = 0;
        };
        const auto d = std::make_shared<Data>();
        return Sides{repeated([d] {
                         d->turn ^= 1;
                         d->ours[2] = d->ours[d->turn];
                         return 0;
                     }),
                     repeated([d] {
                         d->turn ^= 1;
                         d->theirs[2] = d->theirs[d->turn];
                         return 0;
                     }),
                     [d] {
                         d->ours[2] = d->ours[1];
                         d->theirs[2] = d->theirs[1];
                         return plain(d->ours[2]) == *d->theirs[2];
                     }};
    });
}

void addLength(Table& table, long units)
{
    Row row{"length", sizeText(units, "units"), "copying as many bytes", 1 / 0.9};
    row.bytes = static_cast<double>(units) * sizeof(wchar_t);
    table.add(row, [units] {
        const auto d = pairOf(sections(static_cast<size_t>(units)));
        const auto target = std::make_shared<wstring>(d->theirs);
        return sides([d] { return d->ours.length(); },
                     [d, target] {
                         memcpy(target->data(), d->theirs.data(), d->theirs.size() * sizeof(wchar_t));
                         keep(target->data());
                         return static_cast<int>(d->theirs.size());
                     });
    });
}

/// In one call, into room that is enough for every code page.
wstring widenedOnce(const char* text)
{
    const int bytes = static_cast<int>(strlen(text));
    wstring units(static_cast<size_t>(bytes), L'\0');
    units.resize(static_cast<size_t>(MultiByteToWideChar(CP_ACP, 0, text, bytes, units.data(), bytes)));
    return units;
}

void addConstruction(Table& table, long units, double wideBar)
{
    const auto length = static_cast<size_t>(units);
    Row wide{"construct from wide text", sizeText(units, "units"), kWide, wideBar};
    wide.reason = units < 1000 ? "Most of it is the heap's, which both sides pay; here the text is wiped as well."
                               : "Without a stored length the text is measured, copied, measured again and wiped: "
                                 "these passes alone take 0.45.";
    wide.bytes = units < 1000 ? 0 : static_cast<double>(units) * sizeof(wchar_t);
    table.add(wide, [length] {
        const auto d = pairOf(sections(length));
        // NOLINTBEGIN(readability-redundant-string-cstr): what is measured is how the length is found
        return sides([d] { return qelString(d->theirs.c_str()); }, [d] { return wstring(d->theirs.c_str()); });
        // NOLINTEND(readability-redundant-string-cstr)
    });
    Row narrow{"construct from narrow text", sizeText(units, "units"), kConversion, 0.6};
    narrow.reason = "The heap alone takes 0.65, which both sides pay; 0.82 was the best.";
    table.add(narrow, [length] {
        const auto text = std::make_shared<const std::string>(narrowed(sections(length)));
        return sides([text] { return qelString(text->c_str()); }, [text] { return widenedOnce(text->c_str()); });
    });
}

void addConcatenation(Table& table)
{
    const char* const kFive =
        "Each step is a string in a block of its own, four in all; the peer grows three times. 1.16 "
        "was the best.";
    table.add(Row{"concatenate two", "2 x 1 k units", kWide, 1.4, "The result is wiped when it goes."}, [] {
        const auto d = pairOf(sections(1000));
        return sides([d] { return d->ours + d->ours; }, [d] { return d->theirs + d->theirs; });
    });
    table.add(Row{"concatenate five", "5 x 6 units", kWide, 1.0, kFive}, [] {
        const auto d = pairOf(sections(6));
        return sides([d] { return d->ours + d->ours + d->ours + d->ours + d->ours; },
                     [d] { return d->theirs + d->theirs + d->theirs + d->theirs + d->theirs; });
    });
}

bool isBlank(wchar_t c)
{
    return c == L' ' || c == L'\t' || c == L'\n';
}

wstring trimmedLeft(const wstring& text)
{
    size_t begin = 0;
    while (begin < text.size() && isBlank(text[begin]))
    {
        ++begin;
    }
    return text.substr(begin);
}

wstring trimmedRight(const wstring& text)
{
    size_t end = text.size();
    while (end > 0 && isBlank(text[end - 1]))
    {
        --end;
    }
    return text.substr(0, end);
}

/// `blanks` blanks on one side of other units, `units` in all.
wstring padded(size_t units, size_t blanks, bool left)
{
    const wstring pad(blanks, L' ');
    const wstring rest(units - blanks, L'x');
    return left ? pad + rest : rest + pad;
}

void addTrim(Table& table, long units, long blanks, const char* what, const char* reason)
{
    const auto total = static_cast<size_t>(units);
    const auto pad = static_cast<size_t>(blanks);
    const char* const kPeer = "one-sided copy";
    table.add(Row{std::string("trim left, ") + what, sizeText(units, "units"), kPeer, 1.1, reason}, [total, pad] {
        const auto d = pairOf(padded(total, pad, true));
        const auto ours = [d] {
            qelString text(d->ours);
            text.TrimLeft();
            return text;
        };
        return sides(ours, [d] { return trimmedLeft(d->theirs); });
    });
    table.add(Row{std::string("trim right, ") + what, sizeText(units, "units"), kPeer, 1.1, reason}, [total, pad] {
        const auto d = pairOf(padded(total, pad, false));
        const auto ours = [d] {
            qelString text(d->ours);
            text.TrimRight();
            return text;
        };
        return sides(ours, [d] { return trimmedRight(d->theirs); });
    });
}

void addTrims(Table& table)
{
    addTrim(
        table, 10, 0, "nothing",
        "Both sides make one block; here the text is also shared, measured and wiped. From build to build 1.13 to 2.5, "
        "as the code happens to be laid out.");
    addTrim(
        table, 10, 5, "half",
        "std::wstring keeps up to 7 units inside the object; here each text is a block of its own. 5.0 was the best.");
    addTrim(table, 10, 10, "all", "Neither side makes a block; here the string is shared first. 1.4 was the best.");
    addTrim(
        table, 10000, 0, "nothing",
        "Without a stored length the text is measured, copied, measured again and wiped, where the peer copies: these "
        "passes alone take 3.0.");
    const char* const kWiped = "Every text is a block of its own, and wiped when it goes.";
    addTrim(table, 10000, 5000, "half", kWiped);
    addTrim(table, 10000, 10000, "all", kWiped);
}

wstring formatted(const wchar_t* text, int number)
{
    wchar_t buffer[2000];
    const int units = swprintf_s(buffer, 2000, L"%s: %d", text, number);
    return wstring(buffer, static_cast<size_t>(units));
}

wstring integerText(int value)
{
    wchar_t buffer[40];
    _itow_s(value, buffer, 40, 10);
    return buffer;
}

wstring doubleText(double value, int digits)
{
    char buffer[80];
    _gcvt_s(buffer, sizeof buffer, value, digits);
    return widened(buffer);
}

void addFormatting(Table& table)
{
    for (const long units : {12L, 1000L})
    {
        const char* const kReason = "The result is measured once more, since a character 0 ends it, and wiped when it "
                                    "goes. 1.2 was the best for 1 k units.";
        table.add(
            Row{"format text and number", sizeText(units, "units"), "the same call into std::wstring", 1.1, kReason},
            [units] {
                const auto d = pairOf(sections(static_cast<size_t>(units)));
                const auto ours = [d] {
                    qelString text;
                    text.format(L"%s: %d", d->ours.getStringW(), 355);
                    return text;
                };
                return sides(ours, [d] { return formatted(d->theirs.c_str(), 355); });
            });
    }
    table.add(Row{"integer to text", "8 units", "the same call into std::wstring", 1.1}, [] {
        return sides([] { return qelString::integerToString(12345678); }, [] { return integerText(12345678); });
    });
    table.add(Row{"double to text", "9 units", "the same call into std::wstring", 1.1}, [] {
        return sides([] { return qelString::doubleToString(1234.5678, 8); }, [] { return doubleText(1234.5678, 8); });
    });
}

int hexadecimal(const char* text)
{
    const char pair[] = {text[0], text[1], 0};
    return static_cast<int>(strtoul(pair, nullptr, 16));
}

/// What stands between the escapes as it is, each escape as its two bytes; then one conversion.
wstring unescaped(const std::string& text)
{
    const UINT kPages[] = {CP_ACP, 932, 950, 949, 1361, 936};
    UINT page = CP_ACP;
    std::string bytes;
    for (size_t i = 0; i < text.size();)
    {
        if (text.compare(i, 3, "\\M+") == 0 && i + 8 <= text.size())
        {
            page = kPages[text[i + 3] - '0'];
            bytes += static_cast<char>(hexadecimal(&text[i + 4]));
            bytes += static_cast<char>(hexadecimal(&text[i + 6]));
            i += 8;
        }
        else
        {
            bytes += text[i++];
        }
    }
    wstring units(bytes.size(), L'\0');
    const int length = static_cast<int>(bytes.size());
    units.resize(static_cast<size_t>(MultiByteToWideChar(page, 0, bytes.data(), length, units.data(), length)));
    return units;
}

/// A thousand characters, so many of each hundred escaped.
std::string escaped(int perHundred)
{
    std::string text;
    for (int i = 0; i < 1000; ++i)
    {
        text += i % 100 < perHundred ? "\\M+182A0" : "S";
    }
    return text;
}

/// `replacement` stands for what the code page lacks; null leaves that to Windows, which is faster.
std::string converted(const wstring& text, const char* replacement)
{
    const int units = static_cast<int>(text.size());
    std::string bytes(2 * text.size(), '\0'); // no unit needs more than two bytes
    const int room = static_cast<int>(bytes.size());
    bytes.resize(static_cast<size_t>(
        WideCharToMultiByte(CP_ACP, 0, text.data(), units, bytes.data(), room, replacement, nullptr)));
    return bytes;
}

void addNarrowForm(Table& table, long units, const char* peer, const char* replacement, double bar)
{
    Row row{"narrow form, first time", sizeText(units, "units"), peer, bar};
    row.reason = "The form is a block of its own, and wiped when it goes.";
    table.add(row, [units, replacement] {
        const auto d = pairOf(sections(static_cast<size_t>(units)));
        const auto ours = [d] {
            const qelString text(d->ours); // a copy has none yet
            keep(text.getStringA());
            return text;
        };
        return Sides{repeated(ours), repeated([d, replacement] { return converted(d->theirs, replacement); }),
                     [d, replacement] { return d->ours.getStringA() == converted(d->theirs, replacement); }};
    });
}

void addConversions(Table& table)
{
    for (const int share : {0, 10, 100})
    {
        table.add(Row{"decode escapes, " + std::to_string(share) + " %", "1 k characters", "loop and conversion", 1.0},
                  [share] {
                      const auto text = std::make_shared<const std::string>(escaped(share));
                      const auto ours = [text] {
                          qelString decoded;
                          decoded.setFromMIFString(text->c_str());
                          return decoded;
                      };
                      return sides(ours, [text] { return unescaped(*text); });
                  });
    }
    addNarrowForm(table, 12, kReplacing, "?", 1.2);
    addNarrowForm(table, 1000, kReplacing, "?", 0.7);
    addNarrowForm(table, 12, "conversion that leaves the rest to Windows", nullptr, 0);
    addNarrowForm(table, 1000, "conversion that leaves the rest to Windows", nullptr, 0);
    table.add(Row{"narrow form, again", "1 k units", kReplacing, 0.01}, [] {
        const auto d = pairOf(sections(1000));
        return Sides{repeated([d] { return d->ours.getStringA(); }),
                     repeated([d] { return converted(d->theirs, "?"); }),
                     [d] { return d->ours.getStringA() == converted(d->theirs, "?"); }};
    });
}

const wchar_t kSeparator[] = L";";

using Words = std::vector<wstring>;
using Tokens = qelArray<qelString>;

void splitByRuntime(const wstring& text, Words& tokens)
{
    tokens.clear();
    wstring copied(text);
    wchar_t* context = nullptr;
    for (const wchar_t* token = wcstok_s(copied.data(), kSeparator, &context); token != nullptr;
         token = wcstok_s(nullptr, kSeparator, &context))
    {
        tokens.emplace_back(token);
    }
}

void splitByBoost(const wstring& text, Words& tokens)
{
    boost::split(tokens, text, boost::is_any_of(kSeparator), boost::token_compress_on);
}

void splitByHand(const wstring& text, Words& tokens)
{
    tokens.clear();
    for (size_t at = 0; at < text.size();)
    {
        size_t end = at;
        while (end < text.size() && text[end] != kSeparator[0])
        {
            ++end;
        }
        if (end > at)
        {
            tokens.emplace_back(text, at, end - at);
        }
        at = end + 1;
    }
}

void splitQuotedByHand(const wstring& text, Words& tokens)
{
    tokens.clear();
    for (size_t at = 0; at < text.size();)
    {
        size_t end = at;
        bool quoted = false;
        while (end < text.size() && (quoted || text[end] != kSeparator[0]))
        {
            quoted = quoted != (text[end] == L'"');
            ++end;
        }
        if (end > at)
        {
            tokens.emplace_back(text, at, end - at);
        }
        at = end + 1;
    }
}

using Splitter = void (*)(const wstring&, Words&);

/// Names of 12 to 14 units with a separator between them.
wstring listOfNames(long units)
{
    wstring text = sections(static_cast<size_t>(units));
    while (text.back() == kSeparator[0])
    {
        text.pop_back();
    }
    return text;
}

void addFreshTokens(Table& table, long units, const char* peer, Splitter split)
{
    table.add(Row{"tokens, fresh array", sizeText(units, "units"), peer, 1.2}, [units, split] {
        const auto d = pairOf(listOfNames(units));
        const auto ours = [d, separators = qelString(kSeparator)] {
            qelString text(d->ours);
            Tokens tokens;
            qelString::getTokens(text, tokens, separators);
            return tokens;
        };
        const auto theirs = [d, split] {
            Words tokens;
            split(d->theirs, tokens);
            return tokens;
        };
        return sides(ours, theirs);
    });
}

void addKeptTokens(Table& table, long units, const char* peer, Splitter split)
{
    struct Data
    {
        qelString text;
        qelString separators = kSeparator;
        Tokens tokens;
        wstring theirText;
        Words theirs;
    };
    Row row{"tokens, kept array", sizeText(units, "units"), peer, 0.9};
    row.reason = "An old token goes only when the new one is there. Where all go first as in the peer, the heap gives "
                 "them out again sooner, and 1.2 is reached at 100 units.";
    table.add(row, [units, split] {
        const auto d = std::make_shared<Data>();
        d->theirText = listOfNames(units);
        d->text = d->theirText.c_str();
        const auto ours = [d] {
            qelString::getTokens(d->text, d->tokens, d->separators);
            return d->tokens.length();
        };
        const auto theirs = [d, split] {
            split(d->theirText, d->theirs);
            return static_cast<long>(d->theirs.size());
        };
        const auto same = [d, ours, theirs] { return ours() == theirs() && plain(d->tokens) == d->theirs; };
        return Sides{repeated(ours), repeated(theirs), same};
    });
}

/// As the rows above, with words that fit into an object of the peer's.
void addShortTokens(Table& table)
{
    Row row{"tokens of 3 to 7 units, fresh array", "10 k units", "hand loop"};
    row.reason = "std::wstring keeps up to 7 units inside the object; here each token is a block of its own.";
    table.add(row, [] {
        wstring text = listOfNames(10000);
        std::replace(text.begin(), text.end(), L' ', kSeparator[0]);
        const auto d = pairOf(text);
        const auto ours = [d, separators = qelString(kSeparator)] {
            qelString copied(d->ours);
            Tokens tokens;
            qelString::getTokens(copied, tokens, separators);
            return tokens;
        };
        const auto theirs = [d] {
            Words tokens;
            splitByHand(d->theirs, tokens);
            return tokens;
        };
        return sides(ours, theirs);
    });
}

void addTokens(Table& table, long units)
{
    addFreshTokens(table, units, "wcstok_s", splitByRuntime);
    addFreshTokens(table, units, "boost::split", splitByBoost);
    addFreshTokens(table, units, "hand loop", splitByHand);
    addKeptTokens(table, units, "wcstok_s", splitByRuntime);
    addKeptTokens(table, units, "hand loop", splitByHand);
    const char* const kCounted = "The tokens are counted first, as an array grows in small steps.";
    table.add(Row{"tokens, quoted", sizeText(units, "units"), "hand loop", 1.1, kCounted}, [units] {
        wstring text = listOfNames(units);
        for (size_t at = text.find(L"HEA 200"); at != wstring::npos; at = text.find(L"HEA 200", at + 9))
        {
            text.insert(at, L"\"").insert(at + 8, L"\"");
        }
        const auto d = pairOf(text);
        const auto ours = [d, separators = qelString(kSeparator), quotes = qelString(L"\"")] {
            qelString copied(d->ours);
            Tokens tokens;
            qelString::getTokens(copied, tokens, separators, quotes);
            return tokens;
        };
        const auto theirs = [d] {
            Words tokens;
            splitQuotedByHand(d->theirs, tokens);
            return tokens;
        };
        return sides(ours, theirs);
    });
}

/// Bytes of the object and of the block that its first member points to.
double bytesOf(const qelString& text)
{
    void* block = nullptr;
    memcpy(&block, static_cast<const void*>(&text), sizeof block);
    return static_cast<double>(sizeof(qelString) + _msize(block));
}

/// Bytes of the object and of the block that holds the units, if they do not fit into the object.
double bytesOf(wstring text)
{
    const auto* units = reinterpret_cast<const char*>(text.data());
    const auto* object = reinterpret_cast<const char*>(&text);
    const bool inside = units >= object && units < object + sizeof(wstring);
    return static_cast<double>(sizeof(wstring) + (inside ? 0 : _msize(text.data())));
}

void addBytes(Table& table)
{
    for (const long units : {12L, 29L, 1000L})
    {
        Row row{"memory of a string", sizeText(units, "units"), kWide};
        row.unit = "bytes";
        row.reason = "Representation, count and virtual table stand in front of the text.";
        table.add(row, [units] {
            const auto d = pairOf(sections(static_cast<size_t>(units)));
            return Sides{figure(bytesOf(d->ours)), figure(bytesOf(d->theirs)),
                         [d] { return plain(d->ours) == d->theirs; }};
        });
    }
}

/// `count` different units that no European text has.
wstring largeSet(long count)
{
    wstring set;
    for (long i = 0; i < count; ++i)
    {
        set += static_cast<wchar_t>(0x4E00 + i);
    }
    return set;
}

/// Growth of an operation on one string of n units.
template <class Operation> void addGrowth(Table& table, const char* name, double bar, const Operation& operation)
{
    table.add(Growth{name, bar}, [operation](long n) {
        const qelString text(sections(static_cast<size_t>(n)).c_str());
        return repeated([operation, text] { return operation(text); });
    });
}

/// Growth of an operation that changes a copy of a string of n units.
template <class Operation> void addChange(Table& table, const char* name, const Operation& operation)
{
    addGrowth(table, name, 1.15, [operation](const qelString& text) {
        qelString changed(text);
        operation(changed);
        return changed;
    });
}

void addGrowths(Table& table)
{
    addGrowth(table, "copy", 1.15, [](const qelString& text) { return qelString(text); });
    addGrowth(table, "length", 1.15, [](const qelString& text) { return text.length(); });
    addGrowth(table, "construct from wide text", 1.15,
              [](const qelString& text) { return qelString(text.getStringW()); });
    addGrowth(table, "construct from narrow text", 1.15,
              [](const qelString& text) { return qelString(text.getStringA()); });
    addGrowth(table, "concatenate two", 1.15, [](const qelString& text) { return text + text; });
    addGrowth(table, "left half", 1.15, [](const qelString& text) { return text.left(text.length() / 2); });
    addGrowth(table, "right half", 1.15, [](const qelString& text) { return text.right(text.length() / 2); });
    addGrowth(table, "middle", 1.15, [](const qelString& text) { return text.mid(10, text.length() - 20); });
    addChange(table, "narrow form, first time", [](qelString& text) { keep(text.getStringA()); });
    addChange(table, "upper case", [](qelString& text) { text.toUpper(); });
    addChange(table, "lower case", [](qelString& text) { text.toLower(); });
    addChange(table, "format", [](qelString& text) { text.format(L"<%s>", text.getStringW()); });
    addChange(table, "drop leading units", [](qelString& text) { text >>= 10; });
    addChange(table, "set a unit", [](qelString& text) { text.setAt(5, L'x'); });
    addChange(table, "append to a string", [](qelString& text) { text += L"x"; });
    addChange(table, "trim both sides, nothing", [](qelString& text) {
        text.TrimLeft();
        text.TrimRight();
    });
    table.add(Growth{"reverse", 1.15}, [](long n) {
        const auto text = std::make_shared<qelString>(sections(static_cast<size_t>(n)).c_str());
        return repeated([text] { return text->strRev(); });
    });
    table.add(Growth{"trim all, set of n / 8 units", 1.15}, [](long n) {
        const qelString set(largeSet(n / 8).c_str());
        qelString text(set);
        for (int i = 0; i < 3; ++i)
        {
            text += text;
        }
        return repeated([set, text] {
            qelString trimmed(text);
            trimmed.TrimLeft(set);
            return trimmed;
        });
    });
    table.add(Growth{"decode escapes, all", 1.15}, [](long n) {
        std::string text;
        for (long i = 0; i < n; ++i)
        {
            text += "\\M+182A0";
        }
        return repeated([text] {
            qelString decoded;
            decoded.setFromMIFString(text.c_str());
            return decoded;
        });
    });
}

void addTokenGrowths(Table& table)
{
    table.add(Growth{"tokens, array given room", 1.15}, [](long n) {
        const auto text = std::make_shared<qelString>(sections(static_cast<size_t>(n)).c_str());
        return repeated([text, separators = qelString(kSeparator)] {
            Tokens tokens(text->length() / 2);
            qelString::getTokens(*text, tokens, separators);
            return tokens;
        });
    });
    table.add(Growth{"tokens, set of n / 8 units", 1.15}, [](long n) {
        const auto text = std::make_shared<qelString>(sections(static_cast<size_t>(n)).c_str());
        return repeated([text, separators = qelString((largeSet(n / 8) + L";").c_str())] {
            Tokens tokens(text->length() / 2);
            qelString::getTokens(*text, tokens, separators);
            return tokens;
        });
    });
}
} // namespace

void qelBench::addStrings(Table& table)
{
    table.family("Strings");
    addCopies(table);
    for (const long units : {1000L, 10000L, 500000L})
    {
        addLength(table, units);
    }
    addConstruction(table, 29, 1.0);
    addConstruction(table, 10000, 0.4);
    addConcatenation(table);
    addTrims(table);
    addFormatting(table);
    addConversions(table);
    for (const long units : {100L, 10000L})
    {
        addTokens(table, units);
    }
    addShortTokens(table);
    addBytes(table);
    addGrowths(table);
    addTokenGrowths(table);
}
