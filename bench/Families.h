// The rows, a family a source.
#ifndef QEL_BENCH_FAMILIES_H
#define QEL_BENCH_FAMILIES_H

#include "Harness.h"

namespace qelBench
{
void addStrings(Table& table);
void addSearching(Table& table);
void addLists(Table& table);
void addTrees(Table& table);
void addPatterns(Table& table);
void addFiles(Table& table);
void addConfiguration(Table& table);
void addNumbering(Table& table);
void addNumerics(Table& table);
void addThreads(Table& table);
} // namespace qelBench

#endif
