// Makes bad input out of good.
#ifndef QEL_TEST_MUTATION_H
#define QEL_TEST_MUTATION_H

#include "support/GuardedMemory.h"
#include "support/SeededRun.h"

#include <algorithm>
#include <string>
#include <vector>

namespace qelTest
{
/// Good inputs of one reader, and what is special to it.
template <class Text> struct Corpus
{
    std::vector<Text> good;
    std::vector<Text> pieces; ///< that are put in at random places
};

/// A good input with a few changes, or random pieces and units. Without zeros.
template <class Text> Text mutated(SeededRun& run, const Corpus<Text>& corpus)
{
    const auto any = [&run](const std::vector<Text>& texts) {
        return texts[static_cast<size_t>(run.below(static_cast<int>(texts.size())))];
    };
    const auto unit = [&run] {
        using Unit = typename Text::value_type;
        static const unsigned special[] = {1, 9, 10, 13, 32, 0x7F, 0x80, 0xFF, 0x100, 0xD800, 0xDC00, 0xFEFF, 0xFFFF};
        const unsigned value = run.oneIn(3) ? run.pick(special) : static_cast<unsigned>(run.between(1, 0xFFFF));
        const Unit result = static_cast<Unit>(run.oneIn(2) ? value : static_cast<unsigned>(run.between(32, 126)));
        return result == 0 ? Unit(1) : result;
    };
    Text text = run.oneIn(8) ? Text() : any(corpus.good);
    for (int changes = text.empty() ? run.below(12) : run.below(5); changes > 0; --changes)
    {
        const auto at = static_cast<size_t>(run.below(static_cast<int>(text.size()) + 1));
        const auto count = static_cast<size_t>(run.below(6));
        switch (run.below(7))
        {
        case 0:
            text.insert(at, 1, unit());
            break;
        case 1:
            text.erase(at, count);
            break;
        case 2:
            text.resize(at);
            break;
        case 3:
            text.insert(at, text.substr(text.size() / 3, count));
            break;
        case 4:
            text.insert(at, any(corpus.pieces));
            break;
        case 5:
            text += any(corpus.good);
            break;
        default:
            if (at < text.size())
            {
                text[at] = unit();
            }
        }
    }
    return text;
}

/// A place whose end is followed by a closed page, for one text after another.
template <class Unit> class GuardedPlace
{
public:
    explicit GuardedPlace(size_t units)
        : m_units(units)
        , m_buffer(units)
    {
    }

    /// The text and a zero, at the very end.
    const Unit* put(const std::basic_string<Unit>& text)
    {
        Unit* const begin = m_buffer.get() + m_units - text.size() - 1;
        std::copy_n(text.c_str(), text.size() + 1, begin);
        return begin;
    }

private:
    size_t m_units;
    GuardedBuffer<Unit> m_buffer;
};
} // namespace qelTest

#endif
