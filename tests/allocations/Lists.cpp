#include "allocations/Operations.h"

#include "support/StringInternals.h"

#include <windows.h>

#include <optional>

using namespace qelTest;

namespace
{
using List = qelStringClassArray;

const qelString& item()
{
    static const qelString item(L"UPN 80");
    return item;
}

/// A full list, so that the next element takes memory.
void fill(List& list)
{
    list.setPhysicalLength(3);
    list.append(L"IPE 300");
    list.append(L"HEA 200");
    list.append(L"L 40");
}

/// The private construction from characters, by its exported name.
void construct(void* where, const qelArray<wchar_t>& characters, int first, int last)
{
#if defined(_MSC_VER)
    const char* const kName = "??0qelString@@AEAA@AEBV?$qelArray@_WV?$qelArrayObjectCopyReallocator@_W@@"
                              "V?$qelArrayMemoryController@_W@@@@HH@Z";
#else
    const char* const kName = "_ZN9qelStringC1ERK8qelArrayIw29qelArrayObjectCopyReallocatorIwE"
                              "24qelArrayMemoryControllerIwEEii";
#endif
    using Constructor = void (*)(void*, const qelArray<wchar_t>&, int, int);
    const FARPROC found = GetProcAddress(GetModuleHandleW(L"VarnelQELRoots.dll"), kName);
    reinterpret_cast<Constructor>(reinterpret_cast<void*>(found))(where, characters, first, last);
}

template <class Change> void changesList(Operations& table, const char* name, Change change)
{
    throwing(table, {name}, [=](Trial& trial) {
        List list;
        fill(list);
        trial([&] { change(list); }, [&] { return listed(list); });
    });
}
} // namespace

void qelTest::addLists(Operations& table)
{
    (void)item();
    throwing(table, {"qelMemoryControllerController::allocateArray(long const&, unsigned long long const&)"},
             [](Trial& trial) {
                 unsigned char* block = nullptr;
                 trial([&] { block = qelMemoryControllerController::allocateArray(4, 8); },
                       [&] { return number(block != nullptr ? 1 : 0); });
                 qelMemoryControllerController::deallocateArray(block);
             });
    throwing(table, {"qelString::StringToArr(qelArray<wchar_t>&) const"}, [](Trial& trial) {
        const qelString text(L"HEA 200");
        qelArray<wchar_t> characters;
        trial([&] { (text.*member(StringToCharacters()))(characters); }, [&] { return number(characters.length()); });
    });
    throwing(table, {"qelString::qelString(qelArray<wchar_t> const&, int, int)"}, [](Trial& trial) {
        qelArray<wchar_t> characters;
        characters.append(L'H');
        alignas(qelString) unsigned char storage[sizeof(qelString)] = {};
        bool made = false;
        trial(
            [&] {
                construct(storage, characters, 0, 0);
                made = true;
            },
            [&] { return number(made ? 1 : 0); });
        if (made)
        {
            reinterpret_cast<qelString*>(storage)->~qelString();
        }
    });
    throwing(table, {"qelStringClassArray::qelStringClassArray(long, long)"}, [](Trial& trial) {
        std::optional<List> made;
        trial([&] { made.emplace(4, 2); }, [&] { return made ? listed(*made) : L"none"; });
    });
    throwing(table, {"qelStringClassArray::qelStringClassArray(qelStringClassArray const&)"}, [](Trial& trial) {
        List list;
        fill(list);
        std::optional<List> made;
        trial([&] { made.emplace(list); }, [&] { return made ? listed(*made) : L"none"; });
    });
    throwing(table, {"qelStringClassArray::operator=(qelStringClassArray const&)"}, [](Trial& trial) {
        List source;
        fill(source);
        List list;
        trial([&] { list = source; }, [&] { return listed(list); });
    });
    changesList(table, "qelStringClassArray::append(qelString const&)", [](List& list) { list.append(item()); });
    changesList(table, "qelStringClassArray::append(qelStringClassArray const&)",
                [](List& list) { list.append(list); });
    changesList(table, "qelStringClassArray::insertAt(long, qelString const&)",
                [](List& list) { list.insertAt(1, item()); });
    changesList(table, "qelStringClassArray::setPhysicalLength(long)", [](List& list) { list.setPhysicalLength(9); });
    changesList(table, "qelStringClassArray::setLogicalLength(long)", [](List& list) { list.setLogicalLength(7); });
    changesList(table, "qelStringClassArray::setAt(long, qelString const&)", [](List& list) { list.setAt(5, item()); });
    // Takes memory only to be faster.
    const auto sorts = [&](const char* name, void (*sort)(List&)) {
        quiet(table, {name}, [sort](Trial& trial) {
            List list;
            fill(list);
            trial([&] { sort(list); }, [&] { return listed(list); });
        });
    };
    sorts("qelStringClassArray::sort(int (*)(void const*, void const*))",
          [](List& list) { list.sort(&qelString::strCompare); });
    sorts("qelStringClassArray::sort(long, long, int (*)(void const*, void const*))",
          [](List& list) { list.sort(0, 2, &qelString::strCompareNoCase); });
    withoutMemory(table,
                  {"qelStringClassArray::~qelStringClassArray()",
                   "qelMemoryControllerController::deallocateArray(unsigned char*&)",
                   "qelStringClassArray::operator[](long)",
                   "qelStringClassArray::operator[](long) const",
                   "qelStringClassArray::at(long) const",
                   "qelStringClassArray::first()",
                   "qelStringClassArray::first() const",
                   "qelStringClassArray::last()",
                   "qelStringClassArray::last() const",
                   "qelStringClassArray::setAll(qelString const&)",
                   "qelStringClassArray::removeAt(long)",
                   "qelStringClassArray::remove(qelString const&, long)",
                   "qelStringClassArray::removeFirst()",
                   "qelStringClassArray::removeLast()",
                   "qelStringClassArray::contains(qelString const&, long) const",
                   "qelStringClassArray::find(qelString const&, long&, long) const",
                   "qelStringClassArray::bsearch(qelString const&, long&, int (*)(void const*, void const*)) const",
                   "qelStringClassArray::lfind(qelString const&, long&, int (*)(void const*, void const*), long) const",
                   "qelStringClassArray::reverse()",
                   "qelStringClassArray::swap(long, long)",
                   "qelStringClassArray::length() const",
                   "qelStringClassArray::logicalLength() const",
                   "qelStringClassArray::isEmpty() const",
                   "qelStringClassArray::physicalLength() const",
                   "qelStringClassArray::growLength() const",
                   "qelStringClassArray::setGrowLength(long)"},
                  [](Trial& trial) {
                      std::optional<List> last(std::in_place);
                      fill(*last);
                      List list;
                      fill(list);
                      const List& fixed = list;
                      long at = 0;
                      trial(
                          [&] {
                              last.reset();
                              list[0] = fixed[1];
                              list.first() = fixed.at(2);
                              list.last() = fixed.first();
                              list.reverse();
                              list.swap(0, 1);
                              list.setGrowLength(4);
                              at = fixed.find(item(), at) + fixed.lfind(item(), at, &qelString::strCompare) +
                                   fixed.bsearch(item(), at, &qelString::strCompare) + fixed.contains(item()) +
                                   fixed.length() + fixed.logicalLength() + fixed.isEmpty() + fixed.physicalLength() +
                                   fixed.growLength() + fixed.last().isEmpty();
                              list.setAll(item());
                              list.remove(item());
                              list.removeAt(0);
                              list.removeFirst();
                              list.removeLast();
                          },
                          [] { return std::wstring(); });
                  });
}
