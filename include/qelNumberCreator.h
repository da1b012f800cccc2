/**
 * @file
 * @brief Generates part numbers: prefix + running code + suffix.
 */
#ifndef QEL_NUMBER_CREATOR_H
#define QEL_NUMBER_CREATOR_H

#include "qelExport.h"
#include "qelString.h"

/**
 * @brief Kind of numbering.
 * @ingroup numbering
 *
 * Values are defined by callers; only 3 has a meaning here: the first symbol is a zero, so a number that grows gets the
 * second symbol in front.
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
    eCodeSet = 0,    ///< the value was set
    eCodeNotSet = 2, ///< the value is the same already, or invalid
};

/**
 * @brief Symbols and start of a running code.
 * @ingroup numbering
 *
 * Argument of qelNumberCreator::overrideDataRange().
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
 * @brief Generates part numbers: prefix + running code + suffix.
 * @ingroup numbering
 *
 * The running code consists of the `symbolCount` symbols from the first character of `firstSymbol` on, carries to the
 * left and grows at the front without limit.
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
 * A number is O(its length), with one allocation; two when the running code grows.
 *
 * @par Failure
 * A number past the length limit of qelString fails like its concatenation. Out of memory throws `std::bad_alloc` and
 * loses no number: the next call returns it.
 *
 * @par Surprising but deliberate
 * - A copy has no symbol range, and an assignment keeps the target's own: call overrideDataRange() on it.
 * - setNumberingType() starts over from the string `firstSymbol`, overrideDataRange() from `defaultStart`.
 * - overrideDataRange() sets the range even when it returns `eCodeNotSet`.
 * - setNumberingStart() does not change the next number; reset() goes to the start.
 */
class QEL_API qelNumberCreator
{
public:
    /// Type 0, everything else empty.
    qelNumberCreator();

    /// The given type and prefix, everything else empty.
    qelNumberCreator(eNumberingType type, const qelString& prefix);

    /// Copies everything but the symbol range, which stays empty.
    qelNumberCreator(const qelNumberCreator& other);

    /// Copies everything but the symbol range, which stays as it is.
    qelNumberCreator& operator=(const qelNumberCreator& other);

    /// Destroys the generator.
    virtual ~qelNumberCreator();

    /// The type set last.
    eNumberingType getNumberingType() const;

    /// The text before the running code.
    const qelString& getNumberingPrefix() const;

    /// The text after the running code.
    const qelString& getNumberingSufix() const;

    /// The running code after reset().
    const qelString& getNumberingStart() const;

    /// Sets the type and starts over from the string `firstSymbol` of the range; does nothing when the type is the same
    /// already.
    SetCodeTag setNumberingType(eNumberingType type);

    /// `eCodeNotSet` when the prefix is the same already.
    SetCodeTag setNumberingPrefix(const qelString& prefix);

    /// `eCodeNotSet` when the suffix is the same already.
    SetCodeTag setNumberingSufix(const qelString& suffix);

    /**
     * Sets where reset() goes; the next number stays. `eCodeNotSet` when a character is not a symbol of the range. An
     * empty string is valid, and so is the current start.
     */
    SetCodeTag setNumberingStart(const qelString& start);

    /**
     * Sets the range. When the type differs too, sets it and starts over from `defaultStart`, which is not checked;
     * otherwise start and next number stay and the result is `eCodeNotSet`.
     */
    SetCodeTag overrideDataRange(const StructNumberingDataRange& range, eNumberingType type);

    /// Makes the start the next number.
    void reset();

    /**
     * Returns the current number and moves to the next. The symbols of the running code are not checked. One above the
     * range wraps into it, one below it to less than a range below the lowest symbol; with a symbolCount of 0 or less
     * they just move on by one.
     */
    qelString getNextNumber();

protected:
    /// 1 when every character of `number` is a symbol of the range, also for an empty string; else 0.
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
