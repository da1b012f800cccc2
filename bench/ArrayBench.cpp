// qelArray beside std::vector.

#include "Bench.h"

#include <stdio.h>

namespace
{
using Doubles = qelArray<double, qelArrayMemCopyReallocator<double>>;
using Texts = qelArray<qelString>;

template <class Array> Array appended(int count, long physicalLength)
{
    Array array(physicalLength);
    for (int i = 0; i < count; ++i)
    {
        array.append(i);
    }
    return array;
}

template <class T> std::vector<T> pushed(int count, size_t reserved)
{
    std::vector<T> array;
    array.reserve(reserved);
    for (int i = 0; i < count; ++i)
    {
        array.push_back(static_cast<T>(i));
    }
    return array;
}

bool benchArraysOf(int count)
{
    const auto size = static_cast<size_t>(count);
    const auto doubles = appended<Doubles>(count, count);
    const std::vector<double> peerDoubles = pushed<double>(count, size);
    Texts texts(count);
    std::vector<std::wstring> peerTexts;
    for (int i = 0; i < count; ++i)
    {
        texts.append(L"a text that does not fit inside a string object");
        peerTexts.emplace_back(texts.last().getStringW());
    }

    printf("\nArrays of %d elements", count);
    qelBench::Table table("std::vector");
    table.compare(
        "append ints", [&] { return appended<qelArray<int>>(count, 0); }, [&] { return pushed<int>(count, 0); });
    table.compare(
        "append ints, size given at once", [&] { return appended<qelArray<int>>(count, count); },
        [&] { return pushed<int>(count, size); });
    table.compare(
        "append doubles", [&] { return appended<Doubles>(count, 0); }, [&] { return pushed<double>(count, 0); });
    table.compare(
        "append texts",
        [&] {
            Texts array;
            for (int i = 0; i < count; ++i)
            {
                array.append(texts[i]);
            }
            return array;
        },
        [&] {
            std::vector<std::wstring> array;
            for (const std::wstring& text : peerTexts)
            {
                // NOLINTNEXTLINE(performance-inefficient-vector-operation): growing is what is measured
                array.push_back(text);
            }
            return array;
        });
    table.compare(
        "copy doubles and insert one in front",
        [&] {
            Doubles array(doubles);
            array.insertAt(0, -1.0);
            return array;
        },
        [&] {
            std::vector<double> array(peerDoubles);
            array.insert(array.begin(), -1.0);
            return array;
        });
    table.compare("copy doubles", [&] { return Doubles(doubles); }, [&] { return std::vector<double>(peerDoubles); });
    table.compare("copy texts", [&] { return Texts(texts); }, [&] { return std::vector<std::wstring>(peerTexts); });
    return table.isRight();
}
} // namespace

bool qelBench::benchArrays()
{
    const bool few = benchArraysOf(10);
    const bool many = benchArraysOf(5000);
    return few && many;
}
