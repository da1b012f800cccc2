// The text of the configuration file of data sources. Not part of the public interface.
#ifndef QEL_DATABASE_CONFIGURATION_H
#define QEL_DATABASE_CONFIGURATION_H

#include "qelDataSourcesUtilities.h"

/**
 * Walks the DataSource elements of a configuration text, front to back, in one pass.
 *
 * The text is matched, deliberately not parsed as XML. Only the first "Orvalis" section counts and only self-closing
 * elements; an attribute is found by its name anywhere in the element, its value is what stands between the next two
 * double quotes; entities and comments mean nothing.
 */
class DatabaseConfiguration
{
public:
    /// The text must outlive this object.
    explicit DatabaseConfiguration(const qelString& text);

    /// How many elements begin: next() does not find more of them.
    long mostEntries() const;

    /// Sets `entry` to the next complete element, values trimmed; false when there is none left.
    bool next(qelDataSource& entry);

private:
    const wchar_t* m_position; ///< where the search for the next element starts; null when there is none left
    const wchar_t* m_end;      ///< end of the section
};

#endif
