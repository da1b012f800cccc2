#include "allocations/Operations.h"

#include "qelRuntime.h"
#include "support/TemporaryFolder.h"

#include <windows.h>

#include <oleauto.h>

#include <cstdlib>
#include <cstring>
#include <ctime>

using namespace qelTest;

namespace
{
const unsigned short* sixteen(const wchar_t* text)
{
    return reinterpret_cast<const unsigned short*>(text);
}

unsigned short* sixteen(wchar_t* text)
{
    return reinterpret_cast<unsigned short*>(text);
}

const char kVariable[] = "QEL_FAILING_ALLOCATIONS";

/// A function that hands out a block: `get` returns its error and sets the pointer.
template <class Char, class Get> void handsOut(Operations& table, const char* name, Get get)
{
    quiet(table, {name}, [=](Trial& trial) {
        _putenv_s(kVariable, "HEA 200");
        Char* block = nullptr;
        trial.mayGive(L"12");
        trial(
            [&] {
                allocations::givenAway(block);
                free(block);
                block = nullptr;
                trial.result = number(get(&block));
            },
            [&] { return block == nullptr ? L"none" : std::wstring(block, block + 7); });
        allocations::givenAway(block);
        free(block);
    });
}

template <class Get> void makesAutomationString(Operations& table, const char* name, Get get)
{
    quiet(table, {name}, [=](Trial& trial) {
        const qelString text(L"HEA 200");
        wchar_t* made = nullptr;
        trial.mayGive(L"null");
        trial(
            [&] {
                SysFreeString(made);
                made = get(text);
                trial.result = made == nullptr ? L"null" : made;
            },
            [&] { return made == nullptr ? L"none" : std::wstring(made); });
        SysFreeString(made);
    });
}

void narrowText()
{
    char text[64];
    char* next = nullptr;
    char drive[4], folder[16], file[16], extension[8];
    qelstrcpy(text, 64, "HEA ");
    qelstrncpy(text, 64, "HEA 200", 4);
    qelstrcat(text, 64, "200");
    qelstrncat(text, 64, "xyz", 1);
    qelstrupr(text, 64);
    qelstrlwr(text, 64);
    qelstrtok(text, " ", &next);
    qelsplitpath("d:\\a\\b.c", drive, 4, folder, 16, file, 16, extension, 8);
    qelmakepath(text, 64, drive, folder, file, extension);
    qelstrtime(text, 64);
    qelstrdate(text, 64);
    qelitoa(200, text, 64, 10);
    qelltoa(200, text, 64, 10);
    qelgcvt(text, 64, 0.25, 3);
    qelstrerror(text, 64, 2);
}

// Wine's runtime lacks the function.
void setNarrowText()
{
    char text[] = "HEA";
    if (GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") == nullptr)
    {
        qelstrset(text, 4, 'x');
    }
}

void wideText()
{
    wchar_t text[64];
    wchar_t* next = nullptr;
    wchar_t drive[4], folder[16], file[16], extension[8];
    qelwcscpy8(text, 64, L"HEA ");
    qelwcsncpy8(text, 64, L"HEA 200", 4);
    qelwcscat8(text, 64, L"200");
    qelwcsncat8(text, 64, L"xyz", 1);
    qelwcsupr8(text, 64);
    qelwcslwr8(text, 64);
    qelwcstok8(text, L" ", &next);
    qelwsplitpath8(L"d:\\a\\b.c", drive, 4, folder, 16, file, 16, extension, 8);
    qelwmakepath8(text, 64, drive, folder, file, extension);
    qelwstrtime8(text, 64);
    qelwstrdate8(text, 64);
    qelitow8(200, text, 64, 10);
    qelltow8(200, text, 64, 10);
    qelwcserror8(text, 64, 2);
    qelwcsset8(text, 64, L'x');
}

void sixteenBitText()
{
    wchar_t units[64];
    unsigned short* const text = sixteen(units);
    unsigned short* next = nullptr;
    unsigned short drive[4], folder[16], file[16], extension[8];
    qelwcscpy6(text, 64, sixteen(L"HEA "));
    qelwcsncpy6(text, 64, sixteen(L"HEA 200"), 4);
    qelwcscat6(text, 64, sixteen(L"200"));
    qelwcsncat6(text, 64, sixteen(L"xyz"), 1);
    qelwcsupr6(text, 64);
    qelwcslwr6(text, 64);
    qelwcstok6(text, sixteen(L" "), &next);
    qelwsplitpath6(sixteen(L"d:\\a\\b.c"), drive, 4, folder, 16, file, 16, extension, 8);
    qelwmakepath6(text, 64, drive, folder, file, extension);
    qelwstrtime6(text, 64);
    qelwstrdate6(text, 64);
    qelitow6(200, text, 64, 10);
    qelltow6(200, text, 64, 10);
    qelwcserror6(text, 64, 2);
    qelwcsset6(text, 64, L'x');
}

void calls(Operations& table, Names names, void (*function)())
{
    withoutMemory(table, std::move(names), [=](Trial& trial) { trial(function, [] { return std::wstring(); }); });
}
} // namespace

// NOLINTBEGIN(bugprone-suspicious-missing-comma): names that take two lines
void qelTest::addRuntime(Operations& table)
{
    handsOut<char>(table, "qeldupenv(char**, unsigned long long*, char const*)",
                   [](char** block) { return qeldupenv(block, nullptr, kVariable); });
    handsOut<wchar_t>(table, "qelwdupenv8(wchar_t**, unsigned long long*, wchar_t const*)",
                      [](wchar_t** block) { return qelwdupenv8(block, nullptr, L"QEL_FAILING_ALLOCATIONS"); });
    handsOut<wchar_t>(
        table, "qelwdupenv6(unsigned short**, unsigned long long*, unsigned short const*)", [](wchar_t** block) {
            return qelwdupenv6(reinterpret_cast<unsigned short**>(block), nullptr, sixteen(L"QEL_FAILING_ALLOCATIONS"));
        });
    makesAutomationString(table, "qelGetBSTR8(qelString const&)",
                          [](const qelString& text) { return qelGetBSTR8(text); });
    makesAutomationString(table, "qelGetBSTR6(qelString const&)",
                          [](const qelString& text) { return reinterpret_cast<wchar_t*>(qelGetBSTR6(text)); });
    calls(table,
          {"qelstrcpy(char*, unsigned long long, char const*)",
           "qelstrncpy(char*, unsigned long long, char const*, unsigned long long)",
           "qelstrcat(char*, unsigned long long, char const*)",
           "qelstrncat(char*, unsigned long long, char const*, unsigned long long)",
           "qelstrupr(char*, unsigned long long)", "qelstrlwr(char*, unsigned long long)",
           "qelstrtok(char*, char const*, char**)",
           "qelsplitpath(char const*, char*, unsigned long long, char*, unsigned long long, char*, unsigned long long, "
           "char*, unsigned long long)",
           "qelmakepath(char*, unsigned long long, char const*, char const*, char const*, char const*)",
           "qelstrtime(char*, unsigned long long)", "qelstrdate(char*, unsigned long long)",
           "qelitoa(int, char*, unsigned long long, int)", "qelltoa(long, char*, unsigned long long, int)",
           "qelgcvt(char*, unsigned long long, double, int)", "qelstrerror(char*, unsigned long long, int)"},
          &narrowText);
    calls(table, {"qelstrset(char*, unsigned long long, int)"}, &setNarrowText);
    calls(table,
          {"qelwcscpy8(wchar_t*, unsigned long long, wchar_t const*)",
           "qelwcsncpy8(wchar_t*, unsigned long long, wchar_t const*, unsigned long long)",
           "qelwcscat8(wchar_t*, unsigned long long, wchar_t const*)",
           "qelwcsncat8(wchar_t*, unsigned long long, wchar_t const*, unsigned long long)",
           "qelwcsupr8(wchar_t*, unsigned long long)", "qelwcslwr8(wchar_t*, unsigned long long)",
           "qelwcsset8(wchar_t*, unsigned long long, wchar_t)", "qelwcstok8(wchar_t*, wchar_t const*, wchar_t**)",
           "qelwsplitpath8(wchar_t const*, wchar_t*, unsigned long long, wchar_t*, unsigned long long, wchar_t*, "
           "unsigned long long, wchar_t*, unsigned long long)",
           "qelwmakepath8(wchar_t*, unsigned long long, wchar_t const*, wchar_t const*, wchar_t const*, wchar_t "
           "const*)",
           "qelwstrtime8(wchar_t*, unsigned long long)", "qelwstrdate8(wchar_t*, unsigned long long)",
           "qelitow8(int, wchar_t*, unsigned long long, int)", "qelltow8(long, wchar_t*, unsigned long long, int)",
           "qelwcserror8(wchar_t*, unsigned long long, int)"},
          &wideText);
    calls(table,
          {"qelwcscpy6(unsigned short*, unsigned long long, unsigned short const*)",
           "qelwcsncpy6(unsigned short*, unsigned long long, unsigned short const*, unsigned long long)",
           "qelwcscat6(unsigned short*, unsigned long long, unsigned short const*)",
           "qelwcsncat6(unsigned short*, unsigned long long, unsigned short const*, unsigned long long)",
           "qelwcsupr6(unsigned short*, unsigned long long)", "qelwcslwr6(unsigned short*, unsigned long long)",
           "qelwcsset6(unsigned short*, unsigned long long, unsigned short)",
           "qelwcstok6(unsigned short*, unsigned short const*, unsigned short**)",
           "qelwsplitpath6(unsigned short const*, unsigned short*, unsigned long long, unsigned short*, unsigned long "
           "long, unsigned short*, unsigned long long, unsigned short*, unsigned long long)",
           "qelwmakepath6(unsigned short*, unsigned long long, unsigned short const*, unsigned short const*, unsigned "
           "short const*, unsigned short const*)",
           "qelwstrtime6(unsigned short*, unsigned long long)", "qelwstrdate6(unsigned short*, unsigned long long)",
           "qelitow6(int, unsigned short*, unsigned long long, int)",
           "qelltow6(long, unsigned short*, unsigned long long, int)",
           "qelwcserror6(unsigned short*, unsigned long long, int)"},
          &sixteenBitText);
    calls(table,
          {"qelsearchenv(char const*, char const*, char*, unsigned long long)",
           "qelwsearchenv8(wchar_t const*, wchar_t const*, wchar_t*, unsigned long long)",
           "qelwsearchenv6(unsigned short const*, unsigned short const*, unsigned short*, unsigned long long)",
           "qellocaltime(tm*, long long const*)"},
          [] {
              char path[300];
              wchar_t widePath[300];
              qelsearchenv("no such file", "PATH", path, 300);
              qelwsearchenv8(L"no such file", L"PATH", widePath, 300);
              qelwsearchenv6(sixteen(L"no such file"), sixteen(L"PATH"), sixteen(widePath), 300);
              const long long when = 0;
              tm local = {};
              qellocaltime(&local, &when);
          });
    withoutMemory(table,
                  {"qelfopen(_iobuf**, qelString const&, qelString const&)", "qelfprintf(_iobuf*, char const*, ...)",
                   "qelfprintf(_iobuf*, wchar_t const*, ...)", "qelfclose(_iobuf*)", "qelfeof(_iobuf*)",
                   "qelfread(void*, unsigned long long, unsigned long long, _iobuf*)", "qelfgets(char*, int, _iobuf*)",
                   "qelfputs(char const*, _iobuf*)", "qelFileExists(qelString const&)"},
                  [](Trial& trial) {
                      const TemporaryFolder folder;
                      const qelString path(folder.path(L"stream.txt").c_str());
                      const qelString mode(L"w+");
                      trial(
                          [&] {
                              FILE* file = nullptr;
                              char line[20];
                              qelfopen(&file, path, mode);
                              qelfprintf(file, "%d", 200);
                              qelfprintf(file, L"%d", 200);
                              qelfputs("HEA\n", file);
                              fseek(file, 0, SEEK_SET);
                              qelfgets(line, 20, file);
                              qelfread(line, 1, 20, file);
                              qelfeof(file);
                              qelfclose(file);
                              qelFileExists(path);
                          },
                          [] { return std::wstring(); });
                  });
}
// NOLINTEND(bugprone-suspicious-missing-comma)
