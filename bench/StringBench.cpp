// qelString beside std::wstring.

#include "Bench.h"

#include <windows.h>

#include <stdio.h>

using std::wstring;

namespace
{
wstring replaced(const wstring& text, const wstring& what, const wstring& with)
{
    wstring result;
    size_t at = 0;
    for (size_t hit = text.find(what); hit != wstring::npos; hit = text.find(what, at))
    {
        result.append(text, at, hit - at).append(with);
        at = hit + what.size();
    }
    return result.append(text, at, wstring::npos);
}

std::vector<wstring> tokensOf(const wstring& text, const wchar_t* separators)
{
    std::vector<wstring> tokens;
    size_t begin = text.find_first_not_of(separators);
    while (begin != wstring::npos)
    {
        const size_t end = text.find_first_of(separators, begin);
        tokens.push_back(text.substr(begin, end - begin));
        begin = text.find_first_not_of(separators, end);
    }
    return tokens;
}

wstring trimmed(const wstring& text)
{
    const size_t first = text.find_first_not_of(L"\t\n ");
    return first == wstring::npos ? wstring() : text.substr(first, text.find_last_not_of(L"\t\n ") - first + 1);
}

wstring formatted(const wchar_t* text, int number)
{
    wstring result(static_cast<size_t>(_scwprintf(L"%s: %d", text, number)), L'\0');
    (void)swprintf_s(result.data(), result.size() + 1, L"%s: %d", text, number);
    return result;
}

std::string narrowed(const wstring& text)
{
    const int units = static_cast<int>(text.size());
    std::string narrow(
        static_cast<size_t>(WideCharToMultiByte(CP_ACP, 0, text.data(), units, nullptr, 0, "?", nullptr)), '\0');
    WideCharToMultiByte(CP_ACP, 0, text.data(), units, narrow.data(), static_cast<int>(narrow.size()), "?", nullptr);
    return narrow;
}

wstring widened(const std::string& text)
{
    const int bytes = static_cast<int>(text.size());
    wstring wide(static_cast<size_t>(MultiByteToWideChar(CP_ACP, 0, text.data(), bytes, nullptr, 0)), L'\0');
    MultiByteToWideChar(CP_ACP, 0, text.data(), bytes, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

/// Names of steel sections, `length` units of them.
wstring sections(size_t length)
{
    wstring text;
    while (text.size() < length)
    {
        text += L"HEA 200 S355;";
    }
    return text.substr(0, length);
}

bool benchTextOf(size_t length)
{
    const wstring peer = sections(length);
    const wstring peerTwin = peer;
    const wstring peerNeedle = peer + L"#";
    const wstring peerPadded = L" \t " + peer + L" \t ";
    const std::string narrow = narrowed(peer);
    const qelString ours(peer.c_str());
    const qelString ourTwin(peer.c_str());
    const qelString ourNeedle(peerNeedle.c_str());
    const qelString ourPadded(peerPadded.c_str());
    const qelString hash(L"#");
    const qelString what(L"200");
    const qelString with(L"1000");
    const qelString separators(L"; ");

    printf("\nTexts of %d units", static_cast<int>(length));
    qelBench::Table table("std::wstring");
    table.compare(
        // NOLINTNEXTLINE(readability-redundant-string-cstr): what is measured is how its length is found
        "construct from wide text", [&] { return qelString(peer.c_str()); }, [&] { return wstring(peer.c_str()); });
    table.compare(
        "construct from narrow text", [&] { return qelString(narrow.c_str()); }, [&] { return widened(narrow); });
    table.compare("copy", [&] { return qelString(ours); }, [&] { return wstring(peer); });
    table.compare("length", [&] { return ours.length(); }, [&] { return static_cast<int>(peer.size()); });
    table.compare("compare, equal texts", [&] { return ours == ourTwin; }, [&] { return peer == peerTwin; });
    table.compare(
        "compare, a text and its copy", [&] { return ours == qelString(ours); }, [&] { return peer == wstring(peer); });
    table.compare("concatenate two", [&] { return ours + ourTwin; }, [&] { return peer + peerTwin; });
    table.compare(
        "append 20 to one",
        [&] {
            qelString text;
            for (int i = 0; i < 20; ++i)
            {
                text += ours;
            }
            return text;
        },
        [&] {
            wstring text;
            for (int i = 0; i < 20; ++i)
            {
                text += peer;
            }
            return text;
        });
    table.compare(
        "find at the end", [&] { return ourNeedle.find(hash); },
        // NOLINTNEXTLINE(performance-faster-string-find): qelString searches for a text as well
        [&] { return static_cast<int>(peerNeedle.find(L"#")); });
    table.compare(
        "replace all",
        [&] {
            qelString text(ours);
            text.replace(what, with);
            return text;
        },
        [&] { return replaced(peer, L"200", L"1000"); });
    table.compare(
        "tokens",
        [&] {
            qelString text(ours);
            qelArray<qelString> tokens;
            qelString::getTokens(text, tokens, separators);
            return tokens;
        },
        [&] { return tokensOf(peer, L"; "); });
    table.compare(
        "trim both ends",
        [&] {
            qelString text(ourPadded);
            text.TrimLeft();
            text.TrimRight();
            return text;
        },
        [&] { return trimmed(peerPadded); });
    table.compare(
        "format",
        [&] {
            qelString text;
            text.format(L"%s: %d", ours.getStringW(), 355);
            return text;
        },
        [&] { return formatted(peer.c_str(), 355); });
    // A copy has no narrow form yet.
    table.compare(
        "narrow form", [&] { return std::string(qelString(ours).getStringA()); }, [&] { return narrowed(peer); });
    table.compare(
        "narrow form, asked for again", [&] { return ours.getStringA()[0]; }, [&] { return narrowed(peer)[0]; });
    return table.isRight();
}
} // namespace

bool qelBench::benchStrings()
{
    const bool shortTexts = benchTextOf(12);
    const bool longTexts = benchTextOf(10000);
    return shortTexts && longTexts;
}
