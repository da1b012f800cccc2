// Reads data sources from the text of the configuration file. Not part of the public interface.
#ifndef QEL_DATABASE_CONFIGURATION_H
#define QEL_DATABASE_CONFIGURATION_H

#include "qelDataSourcesUtilities.h"

/**
 * Iterates over the DataSource elements of a configuration file, in one pass.
 *
 * Deliberately no XML parser. Only the first "Orvalis" section and self-closing elements count; an attribute is found
 * by its name anywhere in the element, its value is the text between the next two double quotes; entities and comments
 * are not recognised.
 */
class DatabaseConfiguration
{
public:
    /// The text must outlive this object.
    explicit DatabaseConfiguration(const qelString& text);

    /// Number of elements that begin: an upper bound for next().
    long mostEntries() const;

    /// Sets `entry` to the next complete element, values trimmed; false when there is none left.
    bool next(qelDataSource& entry);

private:
    const wchar_t* m_position; ///< where the search for the next element starts; null at the end
    const wchar_t* m_end;      ///< end of the section
};

#endif
