#include "Check.h"

#include <stdio.h>
#include <string.h>

namespace
{
int checkCount = 0;
int failureCount = 0;

const char* nameOf(const char* path)
{
    const char* name = path;
    for (const char* at = path; *at != 0; ++at)
    {
        name = *at == '/' || *at == '\\' ? at + 1 : name;
    }
    return name;
}
} // namespace

void check(bool passed, const char* condition, const char* file, int line)
{
    ++checkCount;
    if (!passed)
    {
        ++failureCount;
        printf("%s:%d: failed: %s\n", nameOf(file), line, condition);
    }
}

void show(const char* what, const qelString& value)
{
    printf("%s = ", what);
    for (const wchar_t* at = value.getStringW(); *at != 0; ++at)
    {
        if (*at >= L' ' && *at <= L'~')
        {
            putchar(*at);
        }
        else
        {
            printf("<%04x>", static_cast<unsigned>(*at));
        }
    }
    putchar('\n');
}

void show(const char* what, double value)
{
    // The bits: the runtimes print numbers in different ways.
    unsigned long long bits = 0;
    memcpy(&bits, &value, sizeof bits);
    printf("%s = %08x%08x\n", what, static_cast<unsigned>(bits >> 32), static_cast<unsigned>(bits & 0xFFFFFFFF));
}

int failures()
{
    return failureCount;
}

int checks()
{
    return checkCount;
}

int main()
{
    checkStrings();
    checkStandardLibrary();
    checkArrays();
    checkRuntime();
    checkFiles();
    checkConfiguration();
    checkNumbering();
    checkProgress();
    checkNumbers();
    checkTasks();
    checkBorder();
    printf("%d checks, %d failed\n", checks(), failures());
    return failures() == 0 ? 0 : 1;
}
