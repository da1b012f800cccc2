/**
 * @file
 * @brief Counts through codes such as 0007, 0008 or A, Z, AA.
 */
#ifndef QEL_INCREMENTAL_COUNTER_H
#define QEL_INCREMENTAL_COUNTER_H

#include "qelArray.h"
#include "qelExport.h"
#include "qelString.h"

/**
 * @brief Configuration of a qelIncrementalCounter.
 * @ingroup numbering
 *
 * Says where codes begin, which characters they consist of, and how many there are.
 *
 * @par Example
 * @code
 * StructIncrementalCounter digits;
 * digits.startValue = L"0007";
 * digits.firstCharacter = L"0";
 * digits.range = 10;
 * digits.maxCount = -1;
 *
 * qelIncrementalCounter counter;
 * counter.setDataFrom(digits);
 * counter.increment();
 * counter.getCounterString();       // == L"0008"
 * @endcode
 */
struct QEL_API StructIncrementalCounter
{
    int userValue = 0;            ///< the caller's; only kept and copied
    qelString userText;           ///< the caller's; only kept and copied
    qelString startValue;         ///< first code, and the code after reset()
    qelString firstCharacter;     ///< its last character begins the range of every position
    int range = 0;                ///< number of characters in the range
    qelString excludedCharacters; ///< characters that are left out
    int maxCount = 0;             ///< number of codes, the start value included; -1 for no limit
    qelString extraText;          ///< the caller's; only kept and copied
};

static_assert(sizeof(StructIncrementalCounter) == 104, "three integers and five texts, in this order");

#if defined(_MSC_VER)
#pragma warning(push)
#pragma warning(disable : 4251) // the array is a template, and so compiled into each module
#endif

/**
 * @brief Counts through codes such as 0007, 0008 or A, Z, AA.
 * @ingroup numbering
 *
 * For marks and names in sequence. Every position of the code runs through `range` characters from the last character
 * of `firstCharacter` on, skipping the excluded ones, then starts over and carries to the left. A carry out of the
 * first position adds a position.
 *
 * @par Example
 * @code
 * StructIncrementalCounter letters;
 * letters.startValue = L"H";
 * letters.firstCharacter = L"A";
 * letters.range = 26;
 * letters.excludedCharacters = L"IO";
 * letters.maxCount = -1;
 *
 * qelIncrementalCounter counter;
 * counter.setDataFrom(letters);
 * counter.getCounterString();         // == L"H"
 * counter.increment();                // == qelIncrementalCounter::eIncremented
 * counter.getCounterString();         // == L"J"
 * @endcode
 *
 * @par Cost
 * A step is O(length of the code). A short code allocates only when it grows, or while a copy of it exists.
 *
 * @par Failure
 * A code past the length limit of qelString fails like its concatenation. Out of memory throws `std::bad_alloc` and
 * leaves the counter as it was.
 *
 * @par Surprising but deliberate
 * - `maxCount` counts values, the start value among them, so N allows N - 1 steps; 0 allows none and -1 any number. A
 *   refused step counts too, and setCounterString() does not restart the count.
 * - A position starts over only when it hits the end of its range exactly. One past it never does, and counts on
 *   through all characters.
 * - Starting over ignores the excluded characters, and goes to the digit 0 instead of the first character when the
 *   start value and `firstCharacter` are all digits. A position added in front then skips the digit 0.
 * - A position that has counted past 0xFFFF to the NUL character does not show in the code.
 */
class QEL_API qelIncrementalCounter
{
public:
    /// Result of a step.
    enum eIncrementStatus : int
    {
        eIncremented = 0,     ///< the code moved on
        eMaxCountReached = 1, ///< limit reached; the code stays
    };

    /// A counter that refuses every step until it is configured: empty strings, userValue -1, range 1, maxCount 0.
    qelIncrementalCounter();

    /// Copies configuration, code and count.
    qelIncrementalCounter(const qelIncrementalCounter&) = default;

    /// Copies configuration, code and count.
    qelIncrementalCounter& operator=(const qelIncrementalCounter& other);

    /// Destroys the counter.
    virtual ~qelIncrementalCounter();

    /// Copies the configuration, unchecked, and starts from its start value. Returns 1.
    int setDataFrom(const StructIncrementalCounter& source);

    /// Goes back to the start value and restarts the count of steps.
    void reset();

    /// The current code.
    qelString getCounterString() const;

    /// Continues from `code`, which is not checked. The steps so far still count.
    void setCounterString(const qelString& code);

    /// Moves to the next code.
    eIncrementStatus increment();

protected:
    /// The last character of firstCharacter, or 0 when that is empty.
    wchar_t initChar() const;

    /**
     * The character after `current` in one position, skipping those in `excluded`. Sets `carry` to 1 when the position
     * starts over, else to 0.
     */
    wchar_t incrementAtPosition(wchar_t current, qelString excluded, int& carry) const;

private:
    StructIncrementalCounter m_data;
    int m_numericOnly;              ///< 1 when startValue and firstCharacter are all digits
    qelString m_counterString;      ///< the current code
    qelArray<wchar_t> m_characters; ///< the current code, one element per position
    int m_callCount;                ///< calls of increment() since the last reset()
};

#if defined(_MSC_VER)
#pragma warning(pop)
#endif

static_assert(sizeof(qelIncrementalCounter) == 168, "virtual table, record, flag, code twice and count");

#endif
