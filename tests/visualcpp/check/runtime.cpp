#include "Check.h"

#include "qelRuntime.h"

#include <windows.h>

#include <oleauto.h>

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <wchar.h>

namespace
{
void checkBuffers()
{
    char narrow[16] = "";
    wchar_t wide[16] = L"";
    unsigned short shorts[16] = {};
    CHECK(qelstrcpy(narrow, 16, "abc") == 0 && qelstrcat(narrow, 16, "def") == 0 && strcmp(narrow, "abcdef") == 0);
    CHECK(qelstrncpy(narrow, 16, "abcdef", 2) == 0 && qelstrncat(narrow, 16, "xyz", 1) == 0);
    CHECK(strcmp(narrow, "abx") == 0);
    CHECK(qelwcscpy8(wide, 16, L"Ab") == 0 && qelwcscat8(wide, 16, L"c") == 0 && wcscmp(wide, L"Abc") == 0);
    CHECK(qelwcsncpy8(wide, 16, L"Abcdef", 2) == 0 && qelwcsncat8(wide, 16, L"xy", 1) == 0 &&
          wcscmp(wide, L"Abx") == 0);
    CHECK(qelwcsupr8(wide, 16) == 0 && wcscmp(wide, L"ABX") == 0 && qelwcslwr8(wide, 16) == 0);
    CHECK(qelstrupr(narrow, 16) == 0 && strcmp(narrow, "ABX") == 0 && qelstrlwr(narrow, 16) == 0);
    CHECK(qelwcsset8(wide, 16, L'=') == 0 && wcscmp(wide, L"===") == 0);
    CHECK(qelitow6(-255, shorts, 16, 16) == 0 && shorts[0] == 'f' && shorts[7] == '1' && shorts[8] == 0);
    CHECK(qelitoa(-35, narrow, 16, 36) == 0 && strcmp(narrow, "1z141y5") == 0);
    CHECK(qelltoa(-35, narrow, 16, 10) == 0 && strcmp(narrow, "-35") == 0);
    CHECK(qelgcvt(narrow, 16, 0.5, 5) == 0 && strcmp(narrow, "0.5") == 0);
    CHECK(qelstrtime(narrow, 16) == 0 && strlen(narrow) == 8 && qelwstrdate8(wide, 16) == 0 && wcslen(wide) == 8);
    CHECK(qelstrncpy(narrow, 4, "abcdef", static_cast<size_t>(-1)) == STRUNCATE && strcmp(narrow, "abc") == 0);

    char text[] = "a,b;c";
    char* rest = nullptr;
    CHECK(strcmp(qelstrtok(text, ",;", &rest), "a") == 0 && strcmp(qelstrtok(nullptr, ",;", &rest), "b") == 0);
    CHECK(strcmp(qelstrtok(nullptr, ",;", &rest), "c") == 0 && qelstrtok(nullptr, ",;", &rest) == nullptr);
}

void checkSystem()
{
    char text[200] = "";
    wchar_t wide[260] = L"";
    const int numbers[] = {0, EPERM, ENOENT, EBADF, ENOMEM, EACCES, EEXIST, EINVAL, EMFILE, ENOSPC, EDOM, ERANGE, 9999};
    for (const int number : numbers)
    {
        CHECK(qelstrerror(text, 200, number) == 0 && qelwcserror8(wide, 200, number) == 0);
        CHECK(qelString(text) == qelString(wide));
        show("error text", text);
    }

    SetEnvironmentVariableA("QEL_CHECK", nullptr);
    CHECK(_putenv("QEL_CHECK=value") == 0);
    char* value = nullptr;
    size_t size = 0;
    CHECK(qeldupenv(&value, &size, "QEL_CHECK") == 0 && size == 6 && strcmp(value, "value") == 0);
    free(value);
    wchar_t* wideValue = nullptr;
    CHECK(qelwdupenv8(&wideValue, &size, L"QEL_CHECK") == 0 && size == 6 && wcscmp(wideValue, L"value") == 0);
    free(wideValue);

    CHECK(qelwsearchenv8(L"kernel32.dll", L"PATH", wide, 260) == 0);
    show("found", qelString(wide).toLower());
    CHECK(qelsearchenv("no-such-file.xyz", "PATH", text, 200) == ENOENT && text[0] == 0);

    char drive[3] = "";
    char dir[20] = "";
    char name[20] = "";
    char extension[20] = "";
    CHECK(qelsplitpath("c:\\a\\b.c\\file.tar.gz", drive, 3, dir, 20, name, 20, extension, 20) == 0);
    CHECK(strcmp(dir, "\\a\\b.c\\") == 0 && strcmp(name, "file.tar") == 0 && strcmp(extension, ".gz") == 0);
    CHECK(qelwmakepath8(wide, 260, L"c", L"dir", L"f", L"e") == 0 && wcscmp(wide, L"c:dir\\f.e") == 0);

    tm local = {};
    long long when = 86400 * 365;
    CHECK(qellocaltime(&local, &when) == 0 && (local.tm_year == 71 || local.tm_year == 70));

    wchar_t* automation = qelGetBSTR8(L"St\x00FCtze");
    CHECK(SysStringLen(automation) == 6 && wcscmp(automation, L"St\x00FCtze") == 0);
    SysFreeString(automation);
}

void checkFileFunctions()
{
    const qelString path(L"abiCheck-runtime.txt");
    FILE* file = nullptr;
    CHECK(qelfopen(&file, path, L"wb") == 0 && file != nullptr);
    CHECK(qelfprintf(file, "%s|%S|%d\n", "narrow", L"wide", 5) == 14);
    CHECK(qelfputs("text\n", file) >= 0);
    // A stream of the library's in the host's own functions.
    CHECK(fputs("host\n", file) >= 0 && fclose(file) == 0);

    // And the other way round.
    file = fopen("abiCheck-runtime.txt", "rb");
    CHECK(file != nullptr);
    char line[64] = "";
    CHECK(qelfgets(line, 64, file) == line && strcmp(line, "narrow|wide|5\n") == 0);
    CHECK(qelfread(line, 1, 5, file) == 5 && memcmp(line, "text\n", 5) == 0 && qelfeof(file) == 0);
    CHECK(qelfgets(line, 64, file) == line && qelfgets(line, 64, file) == nullptr && qelfeof(file) != 0);
    (void)qelfclose(file);

    CHECK(qelFileExists(path) == 1 && qelFileExists(L"abiCheck-*.txt") == 1);
    CHECK(DeleteFileW(path.getStringW()) != FALSE && qelFileExists(path) == 0);
    CHECK(qelfopen(&file, L"no-such-folder\\x", L"r") == 0 && file == nullptr);
}
} // namespace

void checkRuntime()
{
    checkBuffers();
    checkSystem();
    checkFileFunctions();
}
