#include "Bench.h"

#include <stdio.h>

namespace qelBench
{
Table::Table(const char* peer)
{
    printf("\n%-42s %12s %12s %8s\n", "nanoseconds a call", "library", peer, "ratio");
}

void Table::printRow(const char* what, double ours, double peer)
{
    printf("%-42s %12.1f %12.1f %8.2f\n", what, ours, peer, ours / peer);
    (void)fflush(stdout);
}

void Table::printWrong(const char* what)
{
    ++m_wrong;
    printf("%-42s the results differ\n", what);
}
} // namespace qelBench

int main()
{
    puts("Best of 30 samples; a ratio below 1 means that the library is the faster one.");
    const bool strings = qelBench::benchStrings();
    const bool arrays = qelBench::benchArrays();
    return strings && arrays ? 0 : 1;
}
