#include "faults/Operations.h"

#include "qelRuntime.h"
#include "qelTimeUtilities.h"

#include <oleauto.h>

#include <ctime>

using namespace qelTest;

namespace
{
SYSTEMTIME noon(WORD day)
{
    SYSTEMTIME time = {};
    time.wYear = 2020;
    time.wMonth = 1;
    time.wDay = day;
    time.wHour = 12;
    return time;
}

std::string difference()
{
    int hours = 7;
    const int order = qelTimeUtilities::getDifferenceBetweenTimesInDays(noon(3), noon(1), hours);
    return outcome(order, std::to_string(hours));
}

std::string added()
{
    SYSTEMTIME result = noon(1);
    const int done = qelTimeUtilities::addTime(noon(1), 24, result);
    return outcome(done, "day " + std::to_string(result.wDay));
}

std::string formattedTime()
{
    std::tm when = {};
    when.tm_year = 120;
    qelString text = L"before";
    return plain(text.formatTime(20, "%Y", &when));
}

std::string automationString()
{
    wchar_t* const text = qelGetBSTR8(L"text");
    const std::string said = text == nullptr ? "null" : plain(text);
    SysFreeString(text);
    return said;
}
} // namespace

Area qelTest::textOperations()
{
    return {
        "Text and time",
        {
            // Text of ASCII alone needs no call.
            Operation("qelString from narrow text", "3 units",
                      [] { return std::to_string(qelString("t\xB1t").length()) + " units"; })
                .fails("MultiByteToWideChar", "0 units"),
            Operation("getStringA", "text",
                      [] {
                          const qelString text(L"text");
                          const std::string narrow = text.getStringA();
                          return narrow.empty() ? "no text" : narrow;
                      })
                .fails("WideCharToMultiByte", "no text", "all")
                .ignores({"GetCPInfo", "WideCharToMultiByte"}),
            Operation("format", "42",
                      [] {
                          qelString text = L"before";
                          return plain(text.format(L"%d", 42));
                      })
                .fails("vswprintf_s", "no text"),
            Operation("format, narrow", "42",
                      [] {
                          qelString text = L"before";
                          return plain(text.format("%d", 42));
                      })
                .fails("__stdio_common_vsprintf_s", "no text"),
            Operation("formatTime", "2020", formattedTime).fails("strftime", "no text"),
            Operation("qelGetBSTR", "text", automationString).fails("SysAllocString", "null"),
            Operation("getDifferenceBetweenTimesInDays", "1, 2", difference)
                // From or to the beginning of 1601, 153,036 days before 2020.
                .fails("SystemTimeToFileTime", "-1, -153036", "1")
                .fails("SystemTimeToFileTime", "1, 153038", "2")
                .fails("SystemTimeToFileTime", "0, 0", "all"),
            Operation("addTime", "1, day 2", added)
                .fails("SystemTimeToFileTime", "0, day 1")
                .fails("FileTimeToSystemTime", "0, day 1"),
        },
    };
}
