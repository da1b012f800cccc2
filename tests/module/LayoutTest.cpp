// The layout that hosts are compiled against.

#include "qelArray.h"
#include "qelDebugInterfaces.h"
#include "qelLogfile.h"
#include "qelPerfMonitor.h"
#include "qelRegExWrapper.h"
#include "qelString.h"
#include "qelStringClassArray.h"

#include "support/PrivateMembers.h"

#include <gtest/gtest.h>

#include <stddef.h>

#include <type_traits>

struct LogName
{
    using type = qelString qelLogfile::*;
    friend type member(LogName);
};

struct LogStreamField
{
    using type = FILE* qelLogfile::*;
    friend type member(LogStreamField);
};

struct MonitorLog
{
    using type = qelLogfile qelPerfMonitor::*;
    friend type member(MonitorLog);
};

struct MonitorStart
{
    using type = int qelPerfMonitor::*;
    friend type member(MonitorStart);
};

struct MonitorEnd
{
    using type = int qelPerfMonitor::*;
    friend type member(MonitorEnd);
};

template struct PrivateMember<LogName, &qelLogfile::m_fileName>;
template struct PrivateMember<LogStreamField, &qelLogfile::m_stream>;
template struct PrivateMember<MonitorLog, &qelPerfMonitor::m_log>;
template struct PrivateMember<MonitorStart, &qelPerfMonitor::m_startTicks>;
template struct PrivateMember<MonitorEnd, &qelPerfMonitor::m_endTicks>;

namespace
{
template <class T> using BytesArray = qelArray<T, qelArrayMemCopyReallocator<T>, qelArrayMemoryController<T>>;

static_assert(sizeof(void*) == 8 && sizeof(long) == 4 && sizeof(wchar_t) == 2, "the platform");

static_assert(sizeof(qelString) == 16 && alignof(qelString) == 8, "two pointers");
static_assert(!std::is_polymorphic<qelString>::value, "no virtual table");
static_assert(sizeof(qelStringRepr) == 24, "virtual table, text, count");
static_assert(std::is_polymorphic<qelStringRepr>::value && std::has_virtual_destructor<qelStringRepr>::value,
              "destroyed through its virtual table");
static_assert(std::is_copy_constructible<qelStringRepr>::value && std::is_copy_assignable<qelStringRepr>::value,
              "copied member by member");
static_assert(!std::is_constructible<qelStringRepr, const wchar_t*>::value &&
                  !std::is_constructible<qelStringRepr, wchar_t*>::value,
              "made by qelString only");

static_assert(sizeof(qelArray<qelString>) == 24 && sizeof(qelArray<wchar_t>) == 24 && sizeof(BytesArray<double>) == 24,
              "the same for every element and policy");
static_assert(!std::is_polymorphic<qelArray<qelString>>::value, "no virtual table");
static_assert(
    std::is_same<qelArray<wchar_t>,
                 qelArray<wchar_t, qelArrayObjectCopyReallocator<wchar_t>, qelArrayMemoryController<wchar_t>>>::value,
    "policies that nobody names");

static_assert(std::is_empty<qelMemoryControllerController>::value, "static members only");
static_assert(std::is_same<decltype(&qelMemoryControllerController::allocateArray),
                           unsigned char* (*)(const long&, const unsigned long long&)>::value,
              "count and element size by reference");
static_assert(std::is_same<decltype(&qelMemoryControllerController::deallocateArray), void (*)(unsigned char*&)>::value,
              "the block by reference");

static_assert(std::is_same<decltype(qelString().length()), int>::value &&
                  std::is_same<decltype(qelString().isEmpty()), int>::value,
              "lengths and answers are int");
static_assert(std::is_same<decltype(qelString() == qelString()), bool>::value, "comparisons are bool");
static_assert(std::is_same<decltype(qelString()[0]), const wchar_t&>::value, "elements are read only");
static_assert(std::is_same<decltype(qelString() += qelString()), const qelString&>::value, "appending is final");

template <class T, class = void> struct HasLessOrEqual : std::false_type
{
};

template <class T>
struct HasLessOrEqual<T, std::void_t<decltype(std::declval<const T&>() <= std::declval<const T&>())>> : std::true_type
{
};

static_assert(!HasLessOrEqual<qelString>::value, "there is no <=");

static_assert(sizeof(qelStringClassArray) == 8 && !std::is_polymorphic<qelStringClassArray>::value, "one pointer");
static_assert(
    std::is_same<decltype(qelStringClassArray().append(qelString())), long>::value &&
        std::is_same<decltype(qelStringClassArray().append(qelStringClassArray())), qelStringClassArray&>::value,
    "the position of one text, the list for many");
static_assert(std::is_same<decltype(qelStringClassArray().remove(qelString())), int>::value &&
                  std::is_same<decltype(qelStringClassArray().isEmpty()), int>::value &&
                  std::is_same<decltype(qelStringClassArray().length()), long>::value,
              "answers are int, lengths long");
static_assert(std::is_same<decltype(qelStringClassArray().at(0)), qelString>::value, "a copy");

static_assert(sizeof(qelRegExWrapper) == 16 && !std::is_polymorphic<qelRegExWrapper>::value, "one text");
static_assert(std::is_same<decltype(&qelRegExWrapper::match),
                           bool (qelRegExWrapper::*)(const qelString&,
                                                     qelArray<qelString, qelArrayObjectCopyReallocator<qelString>,
                                                              qelArrayMemoryController<qelString>>&)>::value,
              "results in an array of texts");

static_assert(sizeof(qelLogfile) == 24 && !std::is_polymorphic<qelLogfile>::value, "name and stream");
static_assert(std::is_same<decltype(&qelLogfile::setLogStatus), void (*)(int)>::value &&
                  std::is_same<decltype(&qelLogfile::getLogStatus), int (*)()>::value,
              "one switch for the process");
static_assert(std::is_same<decltype(&qelLogfile::logToFile), void (*)(const qelString&, const qelString&)>::value &&
                  std::is_same<decltype(&qelLogfile::listModules), void (*)(const qelString&)>::value,
              "static, without results");
static_assert(std::is_same<decltype(&qelLogfile::GetFileVersion), int (*)(qelString&, qelString&)>::value,
              "both texts by reference");

static_assert(sizeof(qelPerfMonitor) == 32 && !std::is_polymorphic<qelPerfMonitor>::value, "log and two times");

static_assert(std::is_empty<qelDebugInterfaces>::value && std::is_empty<qelWinMessage>::value, "static members only");
static_assert(offsetof(qelDebugInterfaces::DebugInfo, initiator) == 0 &&
                  offsetof(qelDebugInterfaces::DebugInfo, className) == 8 &&
                  offsetof(qelDebugInterfaces::DebugInfo, object) == 24 &&
                  offsetof(qelDebugInterfaces::DebugInfo, destroyed) == 32 &&
                  sizeof(qelDebugInterfaces::DebugInfo) == 40,
              "in this order");

template <class Object, class Field> ptrdiff_t offsetIn(const Object& object, Field Object::* field)
{
    return reinterpret_cast<const char*>(&(object.*field)) - reinterpret_cast<const char*>(&object);
}

TEST(qelLayout, OfALogIsNameAndStream)
{
    const qelLogfile log;
    EXPECT_EQ(offsetIn(log, member(LogName())), 0);
    EXPECT_EQ(offsetIn(log, member(LogStreamField())), 16);
}

TEST(qelLayout, OfAPerformanceMonitorIsItsLogAndTwoTimes)
{
    const qelPerfMonitor monitor;
    EXPECT_EQ(offsetIn(monitor, member(MonitorLog())), 0);
    EXPECT_EQ(offsetIn(monitor, member(MonitorStart())), 24);
    EXPECT_EQ(offsetIn(monitor, member(MonitorEnd())), 28);
}

TEST(qelLayout, IsTheSameInTheLibraryAndInItsHost)
{
    // An array filled here and a string made there: both sides read the other's fields.
    qelString text(L"a,b");
    const qelString copies[2] = {text, text};
    EXPECT_EQ(reinterpret_cast<const unsigned char*>(&copies[1]) - reinterpret_cast<const unsigned char*>(&copies[0]),
              16);
    EXPECT_STREQ(copies[1].getStringW(), L"a,b");
}
} // namespace
