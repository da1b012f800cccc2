#include "Check.h"

#include "qelStandardLibrary.h"

// The one source here that needs a C++ library: its headers are enough.
void checkStandardLibrary()
{
    const std::string bytes = qelStandardLibrary::toUtf8(L"St\x00FCtze \xD834\xDD1E");
    CHECK(bytes == "St\xC3\xBCtze \xF0\x9D\x84\x9E");
    CHECK(qelStandardLibrary::fromUtf8(bytes) == L"St\x00FCtze \xD834\xDD1E");
    CHECK(qelStandardLibrary::fromUtf8("a\xFFz") == L"a\xFFFDz");

    const std::wstring wide = qelStandardLibrary::toWide(L"HEA 200");
    CHECK(wide == L"HEA 200");
    CHECK(qelStandardLibrary::fromWide(std::wstring_view(wide).substr(0, 3)) == L"HEA");
    CHECK(qelStandardLibrary::toView(L"") == std::wstring_view());
    CHECK(std::hash<qelString>()(L"HEA 200") == std::hash<std::wstring>()(wide));

    const qelStandardLibrary::NaturalLess isBefore;
    CHECK(isBefore(L"P9", L"P10") && !isBefore(L"P10", L"P9"));
    CHECK(!isBefore(L"P7", L"P007") && !isBefore(L"P007", L"P7"));
    CHECK(qelStandardLibrary::CaseInsensitiveLess()(L"HEA", L"heb"));
    CHECK(qelStandardLibrary::OrdinalLess()(L"HEA", L"hea"));
}
