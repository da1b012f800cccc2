// The layout that hosts are compiled against.

#include "qelArray.h"
#include "qelString.h"

#include <gtest/gtest.h>

#include <type_traits>

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
static_assert(std::is_same<qelArray<wchar_t>, qelArray<wchar_t, qelArrayObjectCopyReallocator<wchar_t>,
                                                       qelArrayMemoryController<wchar_t>>>::value,
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

TEST(qelLayout, IsTheSameInTheLibraryAndInItsHost)
{
    // An array filled here and a string made there: both sides read the other's fields.
    qelString text(L"a,b");
    const qelString copies[2] = { text, text };
    EXPECT_EQ(reinterpret_cast<const unsigned char*>(&copies[1]) - reinterpret_cast<const unsigned char*>(&copies[0]),
              16);
    EXPECT_STREQ(copies[1].getStringW(), L"a,b");
}
} // namespace
