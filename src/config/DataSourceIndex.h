// The catalogue by name and platform. Not part of the public interface.
#ifndef QEL_DATA_SOURCE_INDEX_H
#define QEL_DATA_SOURCE_INDEX_H

#include "qelDataSourcesUtilities.h"

/// A hash table over the positions of the catalogue, made when it is first needed.
class DataSourceIndex
{
public:
    /// A place in the table, for one entry or for none.
    struct Slot
    {
        unsigned hash; ///< of the entry
        long position; ///< of the entry in the catalogue, or -1
    };

    using Slots = qelArray<Slot, qelArrayMemCopyReallocator<Slot>>;

    /// Position of the first entry that equals `wanted`, or -1. Takes note of entries that were appended.
    static long find(const qelArray<qelDataSource>& sources, const qelDataSource& wanted);

    /// To be called when entries go.
    static void clear();

private:
    static void renew(const qelArray<qelDataSource>& sources);

    static Slots& m_slots; ///< a power of two, at least half of them free
    static long m_entries; ///< how many entries have their slots; -1 for no table
};

#endif
