// Results of both sides in types of the C++ library, to compare them; and the texts that the rows work on.
#ifndef QEL_BENCH_PLAIN_H
#define QEL_BENCH_PLAIN_H

#include "Harness.h"

#include "qelArray.h"
#include "qelString.h"
#include "qelStringClassArray.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace qelBench
{
template <class T> T plain(const T& value)
{
    return value;
}

inline std::wstring plain(const qelString& text)
{
    return text.getStringW();
}

inline std::wstring plain(const std::shared_ptr<const std::wstring>& text)
{
    return *text;
}

template <class T, class Reallocator> auto plain(const qelArray<T, Reallocator>& array)
{
    std::vector<decltype(plain(std::declval<T>()))> values;
    values.reserve(static_cast<size_t>(array.length()));
    for (const T& value : array)
    {
        values.push_back(plain(value));
    }
    return values;
}

inline std::vector<std::wstring> plain(const qelStringClassArray& list)
{
    std::vector<std::wstring> values;
    for (const qelString& text : list)
    {
        values.push_back(plain(text));
    }
    return values;
}

/// Sides that return their result: repeated as they are, and compared once.
template <class Ours, class Peer> Sides sides(const Ours& ours, const Peer& peer)
{
    return {repeated(ours), repeated(peer), [ours, peer] { return plain(ours()) == plain(peer()); }};
}

/// Prepares a copy for each call.
template <class T> auto copiesOf(const T& value)
{
    return [value] { return T(value); };
}

/// Sides that change an input which is made anew for each call; what it has become is compared.
template <class PrepareOurs, class Ours, class PreparePeer, class Peer>
Sides preparedSides(const PrepareOurs& prepareOurs, const Ours& ours, const PreparePeer& preparePeer, const Peer& peer)
{
    const auto same = [=] {
        auto ourInput = prepareOurs();
        auto peerInput = preparePeer();
        ours(ourInput);
        peer(peerInput);
        return plain(ourInput) == plain(peerInput);
    };
    return {prepared(prepareOurs, ours), prepared(preparePeer, peer), same};
}

/// "29 units", "10 k units".
std::string sizeText(long size, const char* of);

/// Names of steel sections with their grades, as they stand in part lists; `length` units, the same ones every time.
std::wstring sections(size_t length);

/// `text` in the ANSI code page, as one call of Windows gives it.
std::string narrowed(const std::wstring& text);

/// The way back.
std::wstring widened(const std::string& text);

/// The same numbers in every run.
class Random
{
public:
    /// Below `limit`.
    unsigned next(unsigned limit)
    {
        m_state = m_state * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<unsigned>((m_state >> 33) % limit);
    }

private:
    unsigned long long m_state = 1;
};
} // namespace qelBench

#endif
