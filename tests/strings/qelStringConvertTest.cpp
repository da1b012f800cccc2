#include "strings/TextSupport.h"
#include "support/AnsiCodePage.h"
#include "support/ImportHook.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cerrno>
#include <climits>
#include <cstdarg>
#include <ctime>
#include <limits>
#include <regex>

using namespace qelTest;

namespace
{
const unsigned short* shorts(const wchar_t* text)
{
    return reinterpret_cast<const unsigned short*>(text);
}

template <class... Arguments> errno_t refuse(Arguments...)
{
    return EINVAL;
}

TEST(qelStringNumbers, AreEmptyWhereTheRuntimeRefuses)
{
    const qelTest::ImportHook doubles("_gcvt_s", &refuse<char*, size_t, double, int>);
    EXPECT_EQ(qelString::doubleToString(1.0, 5).isEmpty(), 1);
}

TEST(qelStringNumbers, ParseTheLeadingNumber)
{
    EXPECT_EQ(qelString(L"42").toInteger(), 42);
    EXPECT_EQ(qelString(L" \t-17 mm").toInteger(), -17);
    EXPECT_EQ(qelString(L"+5x").toLong(), 5);
    EXPECT_EQ(qelString(L"007").toLong(), 7);
    EXPECT_EQ(qelString(L"-2147483648").toIntPtr(), -2147483648LL);
    EXPECT_EQ(qelString(L"2147483647").toIntPtr(), 2147483647LL);
    EXPECT_EQ(qelString(L"12.5 kg").toDouble(), 12.5);
    EXPECT_EQ(qelString(L" -1e3").toDouble(), -1000.0);
}

TEST(qelStringNumbers, AreZeroForWhatIsNoNumber)
{
    for (const wchar_t* text : {L"", L"abc", L"-", L"x1", L"."})
    {
        EXPECT_EQ(qelString(text).toInteger(), 0) << text;
        EXPECT_EQ(qelString(text).toLong(), 0) << text;
        EXPECT_EQ(qelString(text).toIntPtr(), 0) << text;
        EXPECT_EQ(qelString(text).toDouble(), 0.0) << text;
    }
}

TEST(qelStringNumbers, ParseOnlyTheThirtyTwoBitRange)
{
    const qelString text(L"4294967298");
    EXPECT_NE(text.toIntPtr(), 4294967298LL);
    EXPECT_EQ(text.toIntPtr(), _wtoi(L"4294967298"));
    EXPECT_EQ(text.toInteger(), _wtoi(L"4294967298"));
    EXPECT_EQ(text.toLong(), _wtol(L"4294967298"));
    EXPECT_EQ(sizeof(text.toIntPtr()), 8u);
}

TEST(qelStringNumbers, AreWrittenInTheRadix)
{
    EXPECT_EQ(plain(qelString::integerToString(255, 16)), L"ff");
    EXPECT_EQ(plain(qelString::integerToString(-42)), L"-42");
    EXPECT_EQ(plain(qelString::integerToString(0, 10)), L"0");
    EXPECT_EQ(plain(qelString::integerToString(INT_MIN, 10)), L"-2147483648");
    EXPECT_EQ(plain(qelString::integerToString(35, 36)), L"z");
    EXPECT_EQ(plain(qelString::integerToString(-1, 16)), L"ffffffff");
    EXPECT_EQ(plain(qelString::integerToString(-1, 2)), std::wstring(32, L'1'));
    EXPECT_EQ(plain(qelString::longToString(255L, 8)), L"377");
    EXPECT_EQ(plain(qelString::longToString(-7)), L"-7");
    EXPECT_EQ(plain(qelString::longToString(LONG_MAX, 2)), std::wstring(31, L'1'));
    EXPECT_EQ(plain(qelString::longToString(LONG_MIN, 2)), L"1" + std::wstring(31, L'0'));
}

TEST(qelStringNumbers, AgreeWithTheRuntimeInEveryRadix)
{
    for (int radix = 2; radix <= 36; ++radix)
    {
        for (const int value : {0, 1, -1, 9, 10, 35, 36, 12345678, -12345678, INT_MAX, INT_MIN, INT_MIN + 1})
        {
            wchar_t digits[40];
            ASSERT_EQ(_itow_s(value, digits, 40, radix), 0);
            EXPECT_EQ(plain(qelString::integerToString(value, radix)), digits) << value << " in base " << radix;
            EXPECT_EQ(plain(qelString::longToString(value, radix)), digits) << value << " in base " << radix;
        }
    }
}

TEST(qelStringNumbers, AreEmptyForAnImpossibleRadix)
{
    for (const int radix : {INT_MIN, -10, 0, 1, 37, INT_MAX})
    {
        EXPECT_TRUE(isShared(qelString::integerToString(1, radix), qelString())) << radix;
        EXPECT_TRUE(isShared(qelString::longToString(1, radix), qelString())) << radix;
    }
}

TEST(qelStringNumbers, KeepTheSignificantDigitsOfADouble)
{
    EXPECT_EQ(qelString::doubleToString(3.14159, 3).toDouble(), 3.14);
    EXPECT_EQ(qelString::doubleToString(-2.5, 5).toDouble(), -2.5);
    EXPECT_EQ(qelString::doubleToString(1e300, 5).toDouble(), 1e300);
    EXPECT_EQ(qelString::doubleToString(1234567.0, 2).toDouble(), 1200000.0);
    EXPECT_EQ(qelString::doubleToString(0.0, 5).toDouble(), 0.0);
    EXPECT_EQ(qelString::doubleToString(0.1, 17).toDouble(), 0.1);
    EXPECT_EQ(qelString::doubleToString((std::numeric_limits<double>::max)(), 17).toDouble(),
              (std::numeric_limits<double>::max)());
}

TEST(qelStringNumbers, AreTheRuntimesTextOfADouble)
{
    for (const int digits : {1, 6, 15, 17, 100})
    {
        for (const double value : {0.0, -1.0 / 3, 1e-7, 123456.75, 6.02e23})
        {
            char expected[1024];
            ASSERT_EQ(_gcvt_s(expected, sizeof expected, value, digits), 0);
            EXPECT_STREQ(qelString::doubleToString(value, digits).getStringA(), expected);
        }
    }
}

TEST(qelStringNumbers, AreTheRuntimesTextOfADoubleWithTheFewestAndTheMostDigits)
{
    const LenientRuntime lenient;
    for (const int digits : {0, 1, 1023})
    {
        for (const double value : {1.0, 0.5, -123456.75})
        {
            char expected[1024] = {};
            const bool fits = _gcvt_s(expected, sizeof expected, value, digits) == 0;
            EXPECT_STREQ(qelString::doubleToString(value, digits).getStringA(), fits ? expected : "")
                << value << ", " << digits;
        }
    }
}

TEST(qelStringNumbers, MayAskForMoreDigitsThanADoubleHas)
{
    EXPECT_EQ(qelString::doubleToString(0.5, 1000).toDouble(), 0.5);
    EXPECT_EQ(qelString::doubleToString(-1e-300, 1000).toDouble(), -1e-300);
    // One that no longer fits the buffer of 1,024 bytes with its exponent fails in the runtime, or is shortened by it.
    const LenientRuntime lenient;
    const qelString widest = qelString::doubleToString(-1.0 / 3e300, 1023);
    EXPECT_TRUE(isShared(widest, qelString()) || widest.toDouble() == -1.0 / 3e300) << plain(widest);
}

TEST(qelStringNumbers, AreEmptyForAnImpossibleNumberOfDigits)
{
    for (const int digits : {INT_MIN, -1, 1024, INT_MAX})
    {
        EXPECT_TRUE(isShared(qelString::doubleToString(1.5, digits), qelString())) << digits;
    }
}

TEST(qelStringFormat, FillsNarrowAndWideFormats)
{
    qelString text(L"old");
    EXPECT_EQ(&text.format("%d-%s-%.1f", 1, "two", 3.0), &text);
    EXPECT_EQ(plain(text), L"1-two-3.0");
    EXPECT_EQ(&text.format(L"%d-%s-%c", 4, L"five", L'6'), &text);
    EXPECT_EQ(plain(text), L"4-five-6");
    EXPECT_EQ(&text.format(shorts(L"%05d|%x"), 7, 255), &text);
    EXPECT_EQ(plain(text), L"00007|ff");
}

TEST(qelStringFormat, TakesTextOfTheFormatsKindAndTheOtherKindInCapitals)
{
    qelString text;
    text.format(L"%s %S", L"wide", "narrow");
    EXPECT_EQ(plain(text), L"wide narrow");
    text.format("%s %S", "narrow", L"wide");
    EXPECT_EQ(plain(text), L"narrow wide");
}

TEST(qelStringFormat, ConvertsNarrowResultsFromTheAnsiCodePage)
{
    qelString text;
    text.format("%s", ansiBytes().c_str());
    EXPECT_EQ(plain(text), ansiText());
}

qelString& forwardNarrow(qelString& text, const char* fmt, ...)
{
    va_list args;
    va_start(args, fmt);
    text.vformat(fmt, args);
    va_end(args);
    return text;
}

qelString& forwardWide(qelString& text, const wchar_t* fmt, ...)
{
    va_list args;
    va_start(args, fmt);
    text.vformat(fmt, args);
    va_end(args);
    return text;
}

qelString& forwardShort(qelString& text, const unsigned short* fmt, ...)
{
    va_list args;
    va_start(args, fmt);
    text.vformat(fmt, args);
    va_end(args);
    return text;
}

TEST(qelStringFormat, TakesArgumentLists)
{
    qelString text;
    EXPECT_EQ(plain(forwardNarrow(text, "%s=%d", "a", 1)), L"a=1");
    EXPECT_EQ(plain(forwardWide(text, L"%s=%d", L"b", 2)), L"b=2");
    EXPECT_EQ(plain(forwardShort(text, shorts(L"%s=%d"), L"c", 3)), L"c=3");
}

TEST(qelStringFormat, TakesItsOwnTextAsArgumentAndAsFormat)
{
    qelString text(L"ab");
    text.format(L"%s%s", text.getStringW(), text.getStringW());
    EXPECT_EQ(plain(text), L"abab");
    text.format("<%s>", text.getStringA());
    EXPECT_EQ(plain(text), L"<abab>");
    text = L"%d!";
    text.format(text.getStringW(), 5);
    EXPECT_EQ(plain(text), L"5!");
}

TEST(qelStringFormat, IsEmptyForANullFormat)
{
    qelString text(L"old");
    EXPECT_TRUE(isShared(text.format(static_cast<const wchar_t*>(nullptr)), qelString()));
    text = L"old";
    EXPECT_TRUE(isShared(text.format(static_cast<const char*>(nullptr)), qelString()));
    text = L"old";
    EXPECT_TRUE(isShared(text.format(static_cast<const unsigned short*>(nullptr)), qelString()));
}

TEST(qelStringFormat, IsTheSharedEmptyTextForAnEmptyResult)
{
    qelString text(L"old");
    EXPECT_TRUE(isShared(text.format(L"%s", L""), qelString()));
    text = L"old";
    EXPECT_TRUE(isShared(text.format("%s", ""), qelString()));
}

TEST(qelStringFormat, EndsAtAZeroCharacter)
{
    qelString text;
    text.format(L"a%cb", 0);
    EXPECT_EQ(plain(text), L"a");
    text.format("c%cd", 0);
    EXPECT_EQ(plain(text), L"c");
}

TEST(qelStringFormat, WorksUpToTheLongestResultAndGivesTheEmptyTextBeyond)
{
    const LenientRuntime lenient;
    const std::string narrow(kLongestResult, 'n');
    const std::wstring wide(kLongestResult, L'w');
    qelString text;
    for (int shorter = 1; shorter >= 0; --shorter)
    {
        text.format("%s", narrow.c_str() + shorter);
        EXPECT_EQ(text, repeated(kLongestResult - shorter, L'n'));
        text.format(L"%s", wide.c_str() + shorter);
        EXPECT_EQ(text, repeated(kLongestResult - shorter, L'w'));
    }
    for (const char* tail : {"x", "xy", "a good deal more"})
    {
        text = L"old";
        text.format("%s%s", narrow.c_str(), tail);
        EXPECT_TRUE(isShared(text, qelString())) << tail;
        text = L"old";
        text.format(L"%s%S", wide.c_str(), tail);
        EXPECT_TRUE(isShared(text, qelString())) << tail;
    }
    text.format("%s", "again");
    EXPECT_EQ(plain(text), L"again");
}

tm aDay()
{
    tm when = {};
    when.tm_year = 121;
    when.tm_mon = 2;
    when.tm_mday = 4;
    when.tm_hour = 5;
    when.tm_min = 6;
    when.tm_sec = 7;
    when.tm_wday = 4;
    when.tm_yday = 62;
    return when;
}

TEST(qelStringTime, IsFormatted)
{
    const tm when = aDay();
    qelString text(L"old");
    EXPECT_EQ(&text.formatTime(100, "%Y-%m-%d %H:%M:%S", &when), &text);
    EXPECT_EQ(plain(text), L"2021-03-04 05:06:07");
}

TEST(qelStringTime, FitsWithItsTerminatorOrIsEmpty)
{
    const tm when = aDay();
    qelString text(L"old");
    text.formatTime(5, "%Y", &when);
    EXPECT_EQ(plain(text), L"2021");
    text.formatTime(4, "%Y", &when);
    EXPECT_TRUE(isShared(text, qelString()));
    text = L"old";
    text.formatTime(1, "%Y", &when);
    EXPECT_TRUE(isShared(text, qelString()));
}

TEST(qelStringTime, MayBeLong)
{
    const tm when = aDay();
    std::string fmt;
    std::wstring expected;
    for (int i = 0; i < 500; ++i)
    {
        fmt += "%Y";
        expected += L"2021";
    }
    qelString text;
    text.formatTime(2001, fmt.c_str(), &when);
    EXPECT_EQ(plain(text), expected);
    text.formatTime(2000, fmt.c_str(), &when);
    EXPECT_TRUE(isShared(text, qelString()));
}

TEST(qelStringTime, IsConvertedFromTheAnsiCodePage)
{
    const tm when = aDay();
    qelString text;
    text.formatTime(100, (ansiBytes() + "%H").c_str(), &when);
    EXPECT_EQ(plain(text), ansiText() + L"05");
}

TEST(qelStringTime, IsEmptyForNothingToFormat)
{
    const tm when = aDay();
    qelString text(L"old");
    EXPECT_TRUE(isShared(text.formatTime(0, "%Y", &when), qelString()));
    text = L"old";
    EXPECT_TRUE(isShared(text.formatTime(100, nullptr, &when), qelString()));
    text = L"old";
    EXPECT_TRUE(isShared(text.formatTime(100, "%Y", nullptr), qelString()));
    text = L"old";
    EXPECT_TRUE(isShared(text.formatTime(100, "", &when), qelString()));
}

TEST(qelStringTime, TakesItsOwnNarrowFormAsFormat)
{
    const tm when = aDay();
    qelString text(L"%d.%m.");
    text.formatTime(100, text.getStringA(), &when);
    EXPECT_EQ(plain(text), L"04.03.");
}

std::wstring localNow(const wchar_t* fmt)
{
    const time_t now = std::time(nullptr);
    tm local = {};
    localtime_s(&local, &now);
    wchar_t text[64];
    wcsftime(text, 64, fmt, &local);
    return text;
}

TEST(qelStringTime, OfNowIsTheLocalTimeAndDate)
{
    // The clock may move on between the two readings; one of the two neighbours must agree.
    const std::wstring earliest = localNow(L"%H:%M:%S %m/%d/%y");
    const std::wstring time = plain(qelString::time());
    const std::wstring date = plain(qelString::date());
    const std::wstring latest = localNow(L"%H:%M:%S %m/%d/%y");
    EXPECT_TRUE(earliest.substr(0, 8) == time || latest.substr(0, 8) == time) << earliest << " " << latest;
    EXPECT_TRUE(earliest.substr(9) == date || latest.substr(9) == date) << earliest << " " << latest;
    EXPECT_TRUE(std::regex_match(time, std::wregex(L"\\d\\d:\\d\\d:\\d\\d")));
    EXPECT_TRUE(std::regex_match(date, std::wregex(L"\\d\\d/\\d\\d/\\d\\d")));
}
} // namespace
