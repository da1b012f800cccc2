#include "Check.h"

#include "qelArray.h"
#include "qelStringClassArray.h"

namespace
{
void checkTemplates()
{
    qelArray<qelString> names;
    names.append(L"HEA 200");
    names.append(L"IPE 300");
    names.insertAt(0, L"UPN 80");
    names.append(names[0]);
    CHECK(names.length() == 4 && names.physicalLength() == 8 && names.first() == names.last());
    long index = -1;
    CHECK(names.find(L"IPE 300", index) && index == 2);
    names.removeAt(0);
    names.setAt(5, L"L 50x50x5");
    CHECK(names.length() == 6 && names[4].isEmpty() == 1);
    qelArray<qelString> copy(names);
    copy.append(names);
    CHECK(copy.length() == 12 && copy.last() == L"L 50x50x5");

    qelArray<double, qelArrayMemCopyReallocator<double>, qelArrayMemoryController<double>> values(3, 5);
    for (int i = 0; i < 20; ++i)
    {
        values.append(i * 0.5);
    }
    CHECK(values.length() == 20 && values.physicalLength() == 20 && values[19] == 9.5);
    values.setLogicalLength(2);
    values.setPhysicalLength(0);
    CHECK(values.isEmpty() == 1 && values.physicalLength() == 0);
}

void checkStringList()
{
    qelStringClassArray list;
    list.append(L"b");
    list.append(L"A");
    list.append(L"c");
    list.append(L"b");
    list.sort(qelString::strCompareNoCase);
    CHECK(list.first() == L"A" && list.last() == L"c" && list.length() == 4);
    long index = -1;
    CHECK(list.bsearch(L"C", index, qelString::strCompareNoCase) == 1 && index == 3);
    CHECK(list.lfind(L"B", index, qelString::strCompareNoCase) == 1 && index == 1);
    CHECK(list.contains(L"c") == 1 && list.find(L"zz", index) == 0 && index == 1);
    CHECK(list.remove(L"b") == 1 && list.length() == 3);
    list.insertAt(0, L"0").reverse().swap(0, 1).removeFirst().removeLast();
    qelStringClassArray other(list);
    other.append(list).setAt(0, L"x");
    CHECK(other.at(0) == L"x" && other.length() == 2 * list.length());
    show("list", other.at(1));
}
} // namespace

void checkArrays()
{
    checkTemplates();
    checkStringList();
}
