/**
 * @file
 * @brief Record of component objects and their ends, the debug output of the library, and a box for the user.
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
 * It discards the text, unless the library was built with `QEL_DEBUG_OUTPUT`: then the text
 * goes to the debugger, through `OutputDebugStringW`.
 */
QEL_API void qelOutputDebugString(const qelString& text);

/**
 * @brief Record of component objects and their ends; all members are static.
 * @ingroup files
 *
 * Component classes report their construction and destruction; at the end of a context the objects that it leaves
 * behind can be counted and listed. The listing goes to qelOutputDebugString(), which shows it only in a build with the
 * CMake option `QEL_DEBUG_OUTPUT`.
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
 * Addresses are only compared, never followed. The records belong to the process and stay until they are cleared.
 *
 * @par Threads
 * None but the one that creates and destroys the objects, unless the callers take turns.
 *
 * @par Cost
 * Made for thousands of objects: reporting a construction is O(1) but for the growth of the list, reporting a
 * destruction looks through the records, O(n).
 *
 * @par Failure
 * Nothing is reported. A destruction or an end of a context that has no counterpart is ignored.
 */
class QEL_API qelDebugInterfaces
{
public:
    /**
     * @brief An object that was reported.
     *
     * What the record keeps of an object. No member hands one out.
     *
     * @par Example
     * @code
     * const qelDebugInterfaces::DebugInfo info;
     * info.destroyed;                           // == 0
     * @endcode
     *
     * @par Ownership
     * Its addresses are only compared; it shares the class name.
     */
    struct DebugInfo
    {
        void* initiator = nullptr; ///< the context it was created in; null when there was none
        qelString className;       ///< as it was reported
        void* object = nullptr;    ///< its address
        int destroyed = 0;         ///< 1 once its destruction was reported
    };

    /// @name Contexts
    /// Contexts are nested; the innermost is the current one. Any value serves as an initiator.
    /// @{

    /// Begins a context.
    static void setCurrentContextInitiator(void* initiator);

    /// Ends the current context if it is that of `initiator`; otherwise does nothing.
    static void contextInitiatorEnd(void* initiator);
    /// @}

    /// @name Objects
    /// @{

    /// Records an object of the current context. O(1) but for the growth of the list.
    static void objectConstructed(const qelString& className, void* object);

    /**
     * Marks the oldest record of that object and that class name, letter case included, that is not marked yet. The
     * record stays. O(n).
     */
    static void objectDestroied(const qelString& className, void* object);

    /// Removes the records of one context, or all of them for null. O(n).
    static void clearAllDebugInfo(void* initiator);

    /// Number of records, those of destroyed objects included.
    static int entriesNumber();
    /// @}

    /**
     * Hands a heading and one line for each object that is not destroyed to qelOutputDebugString(): its position among
     * all records, in brackets its position among those of the context, the low 32 bits of its address and the class
     * name. Null lists the objects of all contexts. Without such objects there is no output.
     */
    static void showResults(void* initiator);

private:
    /// Position of the record that objectDestroied() is to mark, or -1. `className` is only read.
    static int getIndexAt(qelString& className, void* object);

    static qelArray<void*>& m_ContextInitiators; ///< the current context is the last one
    static qelArray<DebugInfo>& m_Info;          ///< in order of construction
};

static_assert(sizeof(qelDebugInterfaces::DebugInfo) == 40, "two addresses, a name and a flag");

/**
 * @brief Messages to the user; all members are static.
 * @ingroup files
 *
 * A box with a text and an OK button, for what the user has to know at once.
 *
 * @par Example
 * @code
 * // Needs a user who presses OK.
 * qelWinMessage::messageBox(L"The list of parts is complete.");
 * @endcode
 *
 * @par Threads
 * Any; the text is used on one thread at a time. The box belongs to the calling thread.
 *
 * @par Failure
 * Where no box can be shown the call returns at once; nothing is reported.
 */
class QEL_API qelWinMessage
{
public:
    /**
     * Shows a box without an owner, with the caption "Orvalis", the information icon and an OK button. Returns when the
     * user has closed it; meanwhile it runs the messages of the calling thread.
     */
    static void messageBox(const qelString& text);
};

#endif
