#include "qelDataSourcesUtilities.h"

#include <stdio.h>

int main()
{
    qelDataSourcesUtilities sources;
    qelString connection;
    if (sources.getConnectionString(L"PelionProfiles2020", connection, L"x64") != 1)
    {
        puts("There is no profile catalogue.");
        return 1;
    }
    puts(connection.getStringA());

    const int outcome = qelDataSourcesUtilities::testConnection(connection);
    puts(outcome == 1 ? "It opens." : outcome == 0 ? "Its database file is missing." : "It does not open.");
    return outcome == 1 ? 0 : 1;
}
