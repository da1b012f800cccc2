/**
 * @file
 * @brief Numbers of the form prefix + running code + suffix, one after the other.
 */
#ifndef QEL_NUMBER_CREATOR_H
#define QEL_NUMBER_CREATOR_H

#include "qelExport.h"
#include "qelString.h"

/**
 * @brief Kind of numbering.
 * @ingroup numbering
 *
 * The values are the callers'; only 3 has a meaning here: the first symbol is a zero that never stands in front of a
 * number that has grown.
 */
enum eNumberingType : int
{
};

/**
 * @brief Result of the setters of qelNumberCreator.
 * @ingroup numbering
 */
enum SetCodeTag : int
{
    eCodeSet = 0,    ///< the value was taken over
    eCodeNotSet = 2, ///< the value was the same already, or is not valid
};

/**
 * @brief Symbols of a running code and where it starts.
 * @ingroup numbering
 *
 * What qelNumberCreator::overrideDataRange() takes over. A new record is empty and all 0.
 *
 * @par Example
 * @code
 * StructNumberingDataRange letters;
 * letters.firstSymbol = L"A";
 * letters.symbolCount = 26;
 * letters.defaultStart = L"Z";
 *
 * qelNumberCreator marks;
 * marks.overrideDataRange(letters, static_cast<eNumberingType>(1)); // == eCodeSet
 * marks.getNextNumber();                                            // == L"Z"
 * marks.getNextNumber();                                            // == L"AA"
 * @endcode
 */
struct QEL_API StructNumberingDataRange
{
    int rangeValue = 0;     ///< the caller's; only kept
    qelString rangeName;    ///< the caller's; only kept
    qelString firstSymbol;  ///< its first character is the lowest symbol
    int symbolCount = 0;    ///< number of symbols
    qelString defaultStart; ///< where overrideDataRange() starts
    qelString rangeText;    ///< the caller's; only kept
};

static_assert(sizeof(StructNumberingDataRange) == 80, "two integers and four texts, in this order");

/**
 * @brief Numbers of the form prefix + running code + suffix, one after the other.
 * @ingroup numbering
 *
 * Part and position numbers. The running code is made of the `symbolCount` symbols from the first character of
 * `firstSymbol` on, counts from right to left and grows at the front without end.
 *
 * @par Example
 * @code
 * const eNumberingType kNumeric = static_cast<eNumberingType>(3);
 *
 * StructNumberingDataRange digits;
 * digits.firstSymbol = L"0";
 * digits.symbolCount = 10;
 * digits.defaultStart = L"98";
 *
 * qelNumberCreator parts;
 * parts.setNumberingPrefix(L"P");            // == eCodeSet
 * parts.overrideDataRange(digits, kNumeric); // == eCodeSet
 * parts.getNextNumber();                     // == L"P98"
 * parts.getNextNumber();                     // == L"P99"
 * parts.getNextNumber();                     // == L"P100"
 * @endcode
 *
 * @par Cost
 * A number is O(its length), with one allocation for the result and one for the next running code.
 *
 * @par Failure
 * Refusals are `eCodeNotSet`. A number past the length limit of qelString fails as its concatenation does. When memory
 * runs out, no number is lost: the next call returns the one that could not be made.
 *
 * @par Rules that surprise, and are meant
 * - A copy has no symbol range, and an assignment leaves the target's own one alone: call overrideDataRange() on it.
 * - setNumberingType() starts over from the text `firstSymbol`, overrideDataRange() from `defaultStart`.
 * - overrideDataRange() takes over the range even where it reports that nothing was set.
 * - setNumberingStart() does not touch the next number; reset() goes to the start.
 */
class QEL_API qelNumberCreator
{
public:
    /// Type 0, all texts and the range empty.
    qelNumberCreator();

    /// The given type and prefix, everything else empty.
    qelNumberCreator(eNumberingType type, const qelString& prefix);

    /// Copies everything but the symbol range, which stays empty.
    qelNumberCreator(const qelNumberCreator& other);

    /// Copies everything but the symbol range, which stays as it is.
    qelNumberCreator& operator=(const qelNumberCreator& other);

    /// Releases its texts.
    virtual ~qelNumberCreator();

    /// The type set last.
    eNumberingType getNumberingType() const;

    /// What stands in front of the running code.
    const qelString& getNumberingPrefix() const;

    /// What stands behind the running code.
    const qelString& getNumberingSufix() const;

    /// The running code after reset().
    const qelString& getNumberingStart() const;

    /// Starts over from the text `firstSymbol` of the range; nothing happens when the type is the same already.
    SetCodeTag setNumberingType(eNumberingType type);

    /// `eCodeNotSet` when the text is the same already.
    SetCodeTag setNumberingPrefix(const qelString& prefix);

    /// `eCodeNotSet` when the text is the same already.
    SetCodeTag setNumberingSufix(const qelString& suffix);

    /**
     * Sets where reset() goes, while the next number stays. `eCodeNotSet` when a character is no symbol of the range;
     * the empty text is valid, and so is the text that is set already.
     */
    SetCodeTag setNumberingStart(const qelString& start);

    /**
     * Takes over `range`. When the type is another one too, it is taken over and numbering starts over from
     * `defaultStart`, which is not checked; otherwise start and next number stay and the result is `eCodeNotSet`.
     */
    SetCodeTag overrideDataRange(const StructNumberingDataRange& range, eNumberingType type);

    /// The next number will be the start.
    void reset();

    /**
     * Returns the current number and moves on by one. The symbols of the running code are not checked. One above the
     * range is folded into it, one below it to less than a range below the lowest symbol; with a symbolCount of 0 or
     * less they only move on by one.
     */
    qelString getNextNumber();

protected:
    /// 1 when every character of `number` is a symbol of the range, also for the empty text; else 0.
    int checkNumber(const qelString& number) const;

private:
    eNumberingType m_numberingType;
    qelString m_prefix;
    qelString m_suffix;
    qelString m_start; ///< the running code after reset()
    StructNumberingDataRange m_dataRange;
    qelString m_current; ///< the running code of the next number
};

static_assert(sizeof(qelNumberCreator) == 160, "virtual table, type, three texts, range and running code");

#endif
