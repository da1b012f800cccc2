#include "strings/TextSearch.h"

#include "strings/Units.h"

#include <stdint.h>
#include <string.h>

namespace
{
bool isAt(const wchar_t* text, const wchar_t* what, size_t length)
{
    return memcmp(text, what, length * sizeof(wchar_t)) == 0;
}

/// Rabin-Karp: compares a rolling hash of `length` units of the text with that of `what`.
const wchar_t* findBySums(const wchar_t* text, const wchar_t* end, const wchar_t* what, size_t length)
{
    const uint64_t kFactor = 0x9E3779B97F4A7C15; // any large odd number
    if (static_cast<size_t>(end - text) < length)
    {
        return nullptr;
    }
    uint64_t sought = 0;
    uint64_t sum = 0;
    uint64_t factorOfFirst = 1;
    for (size_t i = 0; i < length; ++i)
    {
        sought = sought * kFactor + what[i];
        sum = sum * kFactor + text[i];
        factorOfFirst *= i == 0 ? 1 : kFactor;
    }
    while (sum != sought || !isAt(text, what, length))
    {
        if (text + length == end)
        {
            return nullptr;
        }
        sum = (sum - *text * factorOfFirst) * kFactor + text[length];
        ++text;
    }
    return text;
}
} // namespace

const wchar_t* qelTextSearch::find(const wchar_t* text, const wchar_t* end, const wchar_t* what, size_t whatLength)
{
    // Direct comparison is fast for a short `what`; for a long one, only so many attempts are made.
    const size_t kShort = 32;
    const int kPatience = 32;
    if (whatLength == 0)
    {
        return text;
    }
    if (static_cast<size_t>(end - text) < whatLength)
    {
        return nullptr;
    }
    const wchar_t* behindLastPlace = end - whatLength + 1;
    size_t distance = whatLength - 1;
    for (int failed = 0; whatLength <= kShort || failed < kPatience; ++failed)
    {
        const wchar_t* place = qelUnits::findPair(text, behindLastPlace, *what, distance, what[distance]);
        const size_t same = place == nullptr ? whatLength : qelUnits::mismatch(place, what, whatLength);
        if (same == whatLength)
        {
            return place;
        }
        // What was wrong here will be wrong elsewhere: look for that unit next.
        distance = same;
        text = place + 1;
    }
    return findBySums(text, end, what, whatLength);
}
