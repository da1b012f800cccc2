#include "allocations/Operations.h"

#include "qelRegExWrapper.h"

#include <ctime>
#include <optional>

using namespace qelTest;

namespace
{
const unsigned short* sixteen(const wchar_t* text)
{
    return reinterpret_cast<const unsigned short*>(text);
}

/// Calls a member with a list of arguments.
qelString& vformat(qelString& text, const wchar_t* format, ...)
{
    va_list values;
    va_start(values, format);
    qelString& result = text.vformat(format, values);
    va_end(values);
    return result;
}

qelString& vformat(qelString& text, const char* format, ...)
{
    va_list values;
    va_start(values, format);
    qelString& result = text.vformat(format, values);
    va_end(values);
    return result;
}

qelString& vformat(qelString& text, const unsigned short* format, ...)
{
    va_list values;
    va_start(values, format);
    qelString& result = text.vformat(format, values);
    va_end(values);
    return result;
}

template <class Source> void constructs(Operations& table, const char* name, const Source* source)
{
    throwing(table, {name}, [=](Trial& trial) {
        std::optional<qelString> made;
        trial([&] { made.emplace(source); }, [&] { return made ? wide(*made) : L"none"; });
    });
}

void addConstruction(Operations& table)
{
    constructs(table, "qelString::qelString(wchar_t const*)", L"HEA 200");
    constructs(table, "qelString::qelString(unsigned short const*)", sixteen(L"HEA 200"));
    constructs(table, "qelString::qelString(char const*)", "HEA 200");
    changes(table, {"qelString::operator=(wchar_t const*)"}, L"HEA", [](qelString& text) { text = L"IPE 300"; });
    changes(table, {"qelString::operator=(unsigned short const*)"}, L"HEA",
            [](qelString& text) { text = sixteen(L"IPE 300"); });
    changes(table, {"qelString::operator=(char const*)"}, L"HEA", [](qelString& text) { text = "IPE 300"; });
    changes(table, {"qelString::setFromUnsignedShortString(unsigned short const*)"}, L"HEA",
            [](qelString& text) { text.setFromUnsignedShortString(sixteen(L"IPE 300")); });
    changes(table, {"qelString::setFromMIFString(char const*)"}, L"HEA",
            [](qelString& text) { text.setFromMIFString("IPE \\M+18141 300"); });
    withoutMemory(table,
                  {"qelString::qelString()", "qelString::qelString(qelString const&)", "qelString::~qelString()",
                   "qelString::operator=(qelString const&)", "qelString::empty()", "qelString::ReleaseRep()",
                   "qelString::ReleaseCharCache()", "qelStringRepr::~qelStringRepr()",
                   "qelStringRepr::operator delete(void*)"},
                  [](Trial& trial) {
                      std::optional<qelString> last(std::in_place, L"HEA 200");
                      last->getStringA();
                      trial(
                          [&] {
                              qelString none;
                              qelString copy(*last);
                              none = copy;
                              copy.empty();
                              none.empty();
                              last.reset();
                          },
                          [&] { return last ? wide(*last) : L"gone"; });
                  });
}

void addAccess(Operations& table)
{
    throwing(table, {"qelString::getStringA() const"}, [](Trial& trial) {
        // One unit takes two bytes in no ANSI code page of a single byte, so this is the short way.
        const qelString text(L"HEA 200");
        std::string narrow;
        narrow.reserve(100);
        trial([&] { narrow = text.getStringA(); }, [&] { return std::wstring(narrow.begin(), narrow.end()); });
    });
    changes(table, {"qelString::setAt(int, wchar_t const&)"}, L"HEA", [](qelString& text) { text.setAt(2, L'B'); });
    changes(table, {"qelString::setAt(int, unsigned short const&)"}, L"HEA",
            [](qelString& text) { text.setAt(2, static_cast<unsigned short>(L'B')); });
    changes(table, {"qelString::setAt(int, char const&)"}, L"HEA", [](qelString& text) { text.setAt(2, 'B'); });
    withoutMemory(table,
                  {"qelString::getStringW() const",
                   "qelString::getStringWAsUnsignedShort() const",
                   "qelString::length() const",
                   "qelString::isEmpty() const",
                   "qelString::operator[](int) const",
                   "qelString::operator==(qelString const&) const",
                   "qelString::operator!=(qelString const&) const",
                   "qelString::operator<(qelString const&) const",
                   "qelString::operator>(qelString const&) const",
                   "qelString::compare(qelString const&, qelString const&)",
                   "qelString::compare(qelString const&, qelString const&, int)",
                   "qelString::compareNoCase(qelString const&, qelString const&)",
                   "qelString::compareNoCase(qelString const&, qelString const&, int)",
                   "qelString::compareWithNumbers(qelString const&, qelString const&)",
                   "qelString::strCompare(void const*, void const*)",
                   "qelString::strCompareNoCase(void const*, void const*)",
                   "qelString::find(qelString const&, int) const",
                   "qelString::find_last_of(wchar_t) const",
                   "qelString::find_last_of(unsigned short) const",
                   "qelString::IsAlphaNumeric() const",
                   "qelString::IsAlphabetic() const",
                   "qelString::IsNumeric() const",
                   "qelString::toInteger() const",
                   "qelString::toLong() const",
                   "qelString::toIntPtr() const",
                   "qelString::toDouble() const"},
                  [](Trial& trial) {
                      const qelString a(L"HEA 200");
                      const qelString b(L"HEA 1000");
                      trial(
                          [&] {
                              const long long sum =
                                  (a.getStringW() == nullptr) + (a.getStringWAsUnsignedShort() == nullptr) +
                                  a.length() + a.isEmpty() + a[0] + (a == b) + (a != b) + (a < b) + (a > b) +
                                  qelString::compare(a, b) + qelString::compare(a, b, 3) +
                                  qelString::compareNoCase(a, b) + qelString::compareNoCase(a, b, 3) +
                                  qelString::compareWithNumbers(a, b) + qelString::strCompare(&a, &b) +
                                  qelString::strCompareNoCase(&a, &b) + a.find(b) + a.find_last_of(L'0') +
                                  a.find_last_of(static_cast<unsigned short>(L'0')) + a.IsAlphaNumeric() +
                                  a.IsAlphabetic() + a.IsNumeric() + a.toInteger() + a.toLong() + a.toIntPtr() +
                                  static_cast<long long>(a.toDouble());
                              trial.result = sum != 0 ? L"called" : L"";
                          },
                          [] { return std::wstring(); });
                  });
    throwing(table, {"qelString::find_last_of(char) const"}, [](Trial& trial) {
        const qelString text(L"HEA 200");
        int found = 0;
        trial([&] { found = text.find_last_of('0'); }, [&] { return number(found); });
    });
}

void addChanges(Operations& table)
{
    static const qelString more(L" S235");
    static const qelString zero(L"00");
    static const qelString blanks(L" H0");
    makesOfText(table, {"qelString::operator+(qelString const&) const"},
                [](const qelString& text) { return text + more; });
    changes(table, {"qelString::operator+=(qelString const&)"}, L"HEA", [](qelString& text) { text += more; });
    changes(table, {"qelString::operator>>=(int)"}, L"HEA 200", [](qelString& text) { text >>= 4; });
    makesOfText(table, {"qelString::operator>>(int) const"}, [](const qelString& text) { return text >> 4; });
    changes(table, {"qelString::replace(wchar_t, wchar_t)"}, L"HEA", [](qelString& text) { text.replace(L'A', L'B'); });
    changes(table, {"qelString::replace(unsigned short, unsigned short)"}, L"HEA", [](qelString& text) {
        text.replace(static_cast<unsigned short>(L'A'), static_cast<unsigned short>(L'B'));
    });
    changes(table, {"qelString::replace(char, char)"}, L"HEA", [](qelString& text) { text.replace('A', 'B'); });
    changes(table, {"qelString::replace(qelString const&, qelString const&)"}, L"HEA 200 00",
            [](qelString& text) { text.replace(zero, more); });
    changes(table, {"qelString::replace(int, int, qelString const&)"}, L"HEA 200",
            [](qelString& text) { text.replace(1, 2, more); });
    changes(table, {"qelString::removeAll(wchar_t const&)"}, L"HEA", [](qelString& text) { text.removeAll(L'E'); });
    changes(table, {"qelString::removeAll(unsigned short const&)"}, L"HEA",
            [](qelString& text) { text.removeAll(static_cast<unsigned short>(L'E')); });
    changes(table, {"qelString::removeAll(char const&)"}, L"HEA", [](qelString& text) { text.removeAll('E'); });
    makesOfText(table, {"qelString::left(int) const"}, [](const qelString& text) { return text.left(3); });
    makesOfText(table, {"qelString::right(int) const"}, [](const qelString& text) { return text.right(3); });
    makesOfText(table, {"qelString::mid(int, int) const"}, [](const qelString& text) { return text.mid(1, 2); });
    makesOfText(table, {"qelString::mid(int) const"}, [](const qelString& text) { return text.mid(2); });
    changes(table, {"qelString::copy(qelString const&, int, int)"}, L"HEA",
            [](qelString& text) { text.copy(more, 1, 2); });
    changes(table, {"qelString::copy(qelString const&, int)"}, L"HEA", [](qelString& text) { text.copy(more, 1); });
    changes(table, {"qelString::TrimLeft()"}, L"  HEA", [](qelString& text) { text.TrimLeft(); });
    changes(table, {"qelString::TrimRight()"}, L"HEA  ", [](qelString& text) { text.TrimRight(); });
    changes(table, {"qelString::TrimLeft(qelString const&)"}, L"  HEA", [](qelString& text) { text.TrimLeft(blanks); });
    changes(table, {"qelString::TrimRight(qelString const&)"}, L"HEA 200",
            [](qelString& text) { text.TrimRight(blanks); });
    changes(table, {"qelString::toUpper()"}, L"hea", [](qelString& text) { text.toUpper(); });
    changes(table, {"qelString::toLower()"}, L"HEA", [](qelString& text) { text.toLower(); });
    changes(table, {"qelString::strRev()"}, L"HEA 200", [](qelString& text) { text.strRev(); });
}

void addConversions(Operations& table)
{
    makes(table, {"qelString::integerToString(int, int)"}, [] { return qelString::integerToString(2020); });
    makes(table, {"qelString::longToString(long, int)"}, [] { return qelString::longToString(2020, 16); });
    makes(table, {"qelString::doubleToString(double, int)"}, [] { return qelString::doubleToString(0.25, 4); });
    // The format holds the time of day no finer than its century.
    changes(table, {"qelString::time()"}, L"before", [](qelString& text) { text = qelString::time().left(0); });
    changes(table, {"qelString::date()"}, L"before", [](qelString& text) { text = qelString::date().left(0); });
    changes(table, {"qelString::format(char const*, ...)"}, L"HEA", [](qelString& text) { text.format("%d", 300); });
    changes(table, {"qelString::format(wchar_t const*, ...)"}, L"HEA",
            [](qelString& text) { text.format(L"%d", 300); });
    changes(table, {"qelString::format(unsigned short const*, ...)"}, L"HEA",
            [](qelString& text) { text.format(sixteen(L"%d"), 300); });
    changes(table, {"qelString::vformat(char const*, char*)"}, L"HEA",
            [](qelString& text) { vformat(text, "%d", 300); });
    changes(table, {"qelString::vformat(wchar_t const*, char*)"}, L"HEA",
            [](qelString& text) { vformat(text, L"%d", 300); });
    changes(table, {"qelString::vformat(unsigned short const*, char*)"}, L"HEA",
            [](qelString& text) { vformat(text, sixteen(L"%d"), 300); });
    changes(table, {"qelString::formatTime(unsigned long long, char const*, tm const*)"}, L"HEA", [](qelString& text) {
        tm when = {};
        when.tm_year = 120;
        when.tm_mday = 1;
        text.formatTime(20, "%Y", &when);
    });
}

void addParts(Operations& table)
{
    static const qelString separators(L";,");
    static const qelString quotes(L"'");
    const auto split = [&](const char* name, bool quoted) {
        // The tokens made by then stay.
        throwing(table, {name}, [quoted](Trial& trial) {
            qelString text(L"IPE;'a;b',HEA;;L 40");
            qelArray<qelString> tokens;
            tokens.append(L"from before");
            std::wstring sofar = wide(text) + L"8:";
            trial.mayGive(L"", sofar);
            for (const wchar_t* token :
                 {L"[IPE]", quoted ? L"['a;b']" : L"['a]", quoted ? L"[HEA]" : L"[b']", L"[HEA]"})
            {
                sofar += token;
                trial.mayGive(L"", sofar);
            }
            trial(
                [&] {
                    quoted ? qelString::getTokens(text, tokens, separators, quotes)
                           : qelString::getTokens(text, tokens, separators);
                },
                [&] { return wide(text) + listed(tokens); });
        });
    };
    split("qelString::getTokens(qelString&, qelArray<qelString>&, qelString const&)", false);
    split("qelString::getTokens(qelString&, qelArray<qelString>&, qelString const&, qelString)", true);

    throwing(table, {"qelString::SplitPath(qelString&, qelString&, qelString&, qelString&) const"}, [](Trial& trial) {
        const qelString path(L"d:\\Data\\model.mdb");
        qelString parts[4] = {L"drive", L"folder", L"name", L"extension"};
        trial([&] { path.SplitPath(parts[0], parts[1], parts[2], parts[3]); },
              [&] { return wide(parts[0]) + wide(parts[1]) + wide(parts[2]) + wide(parts[3]); });
    });
    static const qelString drive(L"d:");
    static const qelString folder(L"\\Data\\");
    static const qelString name(L"model");
    static const qelString extension(L".mdb");
    changes(table, {"qelString::MakePath(qelString const&, qelString const&, qelString const&, qelString const&)"},
            L"HEA", [](qelString& text) { text.MakePath(drive, folder, name, extension); });
}

void addExpressions(Operations& table)
{
    static const qelString expression(L"(HE[ABM]|IPE) *(\\d+)");
    withoutMemory(table,
                  {"qelRegExWrapper::qelRegExWrapper()", "qelRegExWrapper::qelRegExWrapper(qelRegExWrapper const&)",
                   "qelRegExWrapper::operator=(qelRegExWrapper const&)",
                   "qelRegExWrapper::setRegularExpression(qelString const&)", "qelRegExWrapper::~qelRegExWrapper()"},
                  [](Trial& trial) {
                      trial(
                          [&] {
                              qelRegExWrapper a;
                              a.setRegularExpression(expression);
                              const qelRegExWrapper b(a);
                              a = b;
                          },
                          [] { return std::wstring(); });
                  });
    quiet(table, {"qelRegExWrapper::match(qelString const&, qelArray<qelString>&)"}, [](Trial& trial) {
        qelRegExWrapper wrapper;
        wrapper.setRegularExpression(expression);
        const qelString text(L"HEA 200");
        qelArray<qelString> parts;
        // Those already appended stay.
        trial.mayGive(L"0");
        trial.mayGive(L"0", L"8:[HEA 200]");
        trial.mayGive(L"0", L"8:[HEA 200][HEA]");
        trial.mayGive(L"0", L"8:");
        trial([&] { trial.result = number(wrapper.match(text, parts)); }, [&] { return listed(parts); });
    });
}
} // namespace

void qelTest::addStrings(Operations& table)
{
    addConstruction(table);
    addAccess(table);
    addChanges(table);
    addConversions(table);
    addParts(table);
    addExpressions(table);
}
