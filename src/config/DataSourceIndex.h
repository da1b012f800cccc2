// Looks up data sources by name and platform. Not part of the public interface.
#ifndef QEL_DATA_SOURCE_INDEX_H
#define QEL_DATA_SOURCE_INDEX_H

#include "qelDataSourcesUtilities.h"

/// A hash table of positions in the catalogue, built on first use.
class DataSourceIndex
{
public:
    /// A slot of the table, for one entry or empty.
    struct Slot
    {
        unsigned hash; ///< of the entry
        long position; ///< of the entry in the catalogue, or -1
    };

    using Slots = qelArray<Slot, qelArrayMemCopyReallocator<Slot>>;

    /// Position of the first entry that equals `wanted`, or -1. Indexes appended entries first.
    static long find(const qelArray<qelDataSource>& sources, const qelDataSource& wanted);

    /// Call it when entries are removed.
    static void clear();

private:
    static void renew(const qelArray<qelDataSource>& sources);

    static Slots& m_slots; ///< a power of two, at least half of them free
    static long m_entries; ///< number of entries indexed; -1 for no table
};

#endif
