/**
 * @file
 * @brief Finds memory leaks of component objects; debug output; message box.
 */
#ifndef QEL_DEBUG_INTERFACES_H
#define QEL_DEBUG_INTERFACES_H

#include "qelArray.h"
#include "qelExport.h"
#include "qelString.h"

/**
 * @brief The library's debug output.
 * @ingroup files
 *
 * Discards `text`, unless the library was built with the CMake option `QEL_DEBUG_OUTPUT`: then sends it to the debugger
 * with `OutputDebugStringW`.
 */
QEL_API void qelOutputDebugString(const qelString& text);

/**
 * @brief Finds memory leaks of component objects; all members are static.
 * @ingroup files
 *
 * Component classes report their construction and destruction; at the end of a context, the objects that it leaked can
 * be listed. The list goes to qelOutputDebugString(), which shows it only in a build with the CMake option
 * `QEL_DEBUG_OUTPUT`.
 *
 * @par Example
 * @code
 * int document = 0;                                                // any address serves as a context
 * int beam = 0;
 * qelDebugInterfaces::setCurrentContextInitiator(&document);
 * qelDebugInterfaces::objectConstructed(L"Beam", &beam);           // in the constructor of Beam
 * qelDebugInterfaces::objectDestroied(L"Beam", &beam);             // in its destructor
 * qelDebugInterfaces::contextInitiatorEnd(&document);
 *
 * qelDebugInterfaces::entriesNumber();                             // == 1, destroyed or not
 * qelDebugInterfaces::showResults(&document);                      // what the document has left behind: nothing
 * qelDebugInterfaces::clearAllDebugInfo(&document);
 * qelDebugInterfaces::entriesNumber();                             // == 0
 * @endcode
 *
 * @par Ownership
 * Addresses are only compared, never dereferenced. The records are process-wide and stay until they are cleared.
 *
 * @par Threads
 * Not thread-safe.
 *
 * @par Cost
 * Made for thousands of objects: reporting a destruction searches the records, O(n).
 */
class QEL_API qelDebugInterfaces
{
public:
    /**
     * @brief Record of one object.
     *
     * Internal: no member returns one.
     *
     * @par Example
     * @code
     * const qelDebugInterfaces::DebugInfo info;
     * info.destroyed;                           // == 0
     * @endcode
     */
    struct DebugInfo
    {
        void* initiator = nullptr; ///< the context it was created in; may be null
        qelString className;       ///< as it was reported
        void* object = nullptr;    ///< its address
        int destroyed = 0;         ///< 1 once its destruction was reported
    };

    /// @name Contexts
    /// Contexts nest; the innermost is the current one. Any value serves as an initiator.
    /// @{

    /// Begins a context.
    static void setCurrentContextInitiator(void* initiator);

    /// Ends the current context if it is that of `initiator`; otherwise does nothing.
    static void contextInitiatorEnd(void* initiator);
    /// @}

    /// @name Objects
    /// @{

    /// Records an object of the current context. O(1), except when the list grows.
    static void objectConstructed(const qelString& className, void* object);

    /**
     * Marks the oldest unmarked record of that object and class name (case-sensitive); ignored when there is none. The
     * record stays. O(n).
     */
    static void objectDestroied(const qelString& className, void* object);

    /// Removes the records of one context, or all of them for null. O(n).
    static void clearAllDebugInfo(void* initiator);

    /// Number of records, those of destroyed objects included.
    static int entriesNumber();
    /// @}

    /**
     * Writes a heading and one line per object not destroyed to qelOutputDebugString(): its position among all records,
     * in brackets its position within the context, the low 32 bits of its address and the class name. Null lists the
     * objects of all contexts. Without such objects there is no output.
     */
    static void showResults(void* initiator);

private:
    /// Position of the record that objectDestroied() marks, or -1. `className` is only read.
    static int getIndexAt(qelString& className, void* object);

    static qelArray<void*>& m_ContextInitiators; ///< the current context is the last one
    static qelArray<DebugInfo>& m_Info;          ///< in order of construction
};

static_assert(sizeof(qelDebugInterfaces::DebugInfo) == 40, "two addresses, a name and a flag");

/**
 * @brief Message box; all members are static.
 * @ingroup files
 *
 * @par Example
 * @code
 * // Needs a user who presses OK.
 * qelWinMessage::messageBox(L"The list of parts is complete.");
 * @endcode
 *
 * @par Failure
 * Where no box can be shown, the call returns at once.
 */
class QEL_API qelWinMessage
{
public:
    /**
     * Shows a box without an owner, with the caption "Orvalis", the information icon and an OK button. Returns when the
     * user has closed it; until then it runs the calling thread's message loop.
     */
    static void messageBox(const qelString& text);
};

#endif
