// Mistakes that hosts make: compiled by a test that expects the compiler to refuse them.
#include "qelFileAccess.h"
#include "qelString.h"

qelString describe(const qelString& profile)
{
    return qelString().format(L"%s", profile);
}

int print(const qelFileAccess& file, const qelString& profile)
{
    return file.write(L"%s", profile);
}
