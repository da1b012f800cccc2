#include "Families.h"

int main(int argc, char** argv)
{
    using namespace qelBench;
    Table table;
    addStrings(table);
    addSearching(table);
    addLists(table);
    addTrees(table);
    addPatterns(table);
    addFiles(table);
    addConfiguration(table);
    addNumbering(table);
    addNumerics(table);
    addThreads(table);
    return run(table, argc, argv);
}
