/**
 * @file
 * @brief Running codes such as 0007, A, Z, AA or 1B, one step a call.
 */
#ifndef QEL_INCREMENTAL_COUNTER_H
#define QEL_INCREMENTAL_COUNTER_H

#include "qelArray.h"
#include "qelExport.h"
#include "qelString.h"

/**
 * @brief Configuration of a qelIncrementalCounter, for callers to keep and copy.
 * @ingroup numbering
 *
 * Says where a code begins, which characters it is made of, and how many codes there are. A new record is empty and all
 * 0.
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
    qelString firstCharacter;     ///< its last character is where the range of every position begins
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
 * @brief Running codes such as 0007, A, Z, AA or 1B, one step a call.
 * @ingroup numbering
 *
 * Marks and names in sequence. Every position of the code runs through `range` characters from the last character of
 * `firstCharacter` on, leaves out the excluded ones, and then starts over and carries to the left. A carry out of the
 * first position adds one.
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
 * A step is O(length of the code), and one allocation for the new text.
 *
 * @par Failure
 * `eMaxCountReached` is the only refusal. A code past the length limit of qelString fails as its concatenation does.
 * When memory runs out, the counter stays as it was.
 *
 * @par Rules that surprise, and are meant
 * - `maxCount` counts values, the start value among them, so N allows N - 1 steps; 0 allows none and -1 any number.
 *   A refused step counts too, and setCounterString() does not start the count again.
 * - A position starts over only when it meets the end of its range exactly. One that stands behind it never does, and
 *   counts on through all characters.
 * - Starting over does not look at the excluded characters, and goes to the digit 0 instead of the first character
 *   when the start value and `firstCharacter` hold nothing but digits. A position added in front then leaves out
 *   the digit 0.
 * - A code is text: a position that has counted past 0xFFFF to the NUL character does not show in it.
 */
class QEL_API qelIncrementalCounter
{
public:
    /// What became of a step.
    enum eIncrementStatus : int
    {
        eIncremented = 0,     ///< the code moved on
        eMaxCountReached = 1, ///< the limit is reached; the code stays
    };

    /// A counter that refuses every step until it is configured: empty texts, userValue -1, range 1, maxCount 0.
    qelIncrementalCounter();

    /// A counter of its own with the same configuration, code and count.
    qelIncrementalCounter(const qelIncrementalCounter&) = default;

    /// Takes over configuration, code and count.
    qelIncrementalCounter& operator=(const qelIncrementalCounter& other);

    /// Releases its texts.
    virtual ~qelIncrementalCounter();

    /// Takes over the whole record and starts from its start value. Nothing is checked. Returns 1.
    int setDataFrom(const StructIncrementalCounter& source);

    /// Goes back to the start value and begins to count steps anew.
    void reset();

    /// The current code.
    qelString getCounterString() const;

    /// Goes on from `code`, which is not checked. The steps made so far still count.
    void setCounterString(const qelString& code);

    /// Moves the code on by one step.
    eIncrementStatus increment();

protected:
    /// The last character of firstCharacter, or 0 when that is empty.
    wchar_t initChar() const;

    /**
     * The character that follows `current` in one position, leaving out those in `excluded`. Sets `carry` to 1 when
     * the position starts over, else to 0.
     */
    wchar_t incrementAtPosition(wchar_t current, qelString excluded, int& carry) const;

private:
    StructIncrementalCounter m_data;
    int m_numericOnly;              ///< 1 when startValue and firstCharacter hold nothing but digits
    qelString m_counterString;      ///< the current code
    qelArray<wchar_t> m_characters; ///< the current code, one element a position
    int m_callCount;                ///< calls of increment() since the last reset()
};

#if defined(_MSC_VER)
#pragma warning(pop)
#endif

static_assert(sizeof(qelIncrementalCounter) == 168, "virtual table, record, flag, code twice and count");

#endif
