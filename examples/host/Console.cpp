#include "Console.h"

#include <windows.h>

#include <algorithm>

namespace
{
std::string toUtf8(const std::wstring& text)
{
    const int units = static_cast<int>(text.size());
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<size_t>(bytes), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), units, result.data(), bytes, nullptr, nullptr);
    return result;
}

void write(DWORD stream, const std::wstring& text)
{
    const HANDLE handle = GetStdHandle(stream);
    DWORD mode = 0;
    DWORD written = 0;
    if (GetConsoleMode(handle, &mode))
    {
        WriteConsoleW(handle, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
        return;
    }
    const std::string bytes = toUtf8(text);
    WriteFile(handle, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
}
} // namespace

void print(const std::wstring& text)
{
    write(STD_OUTPUT_HANDLE, text);
}

void printError(const std::wstring& text)
{
    write(STD_ERROR_HANDLE, text);
}

Table::Table(std::vector<std::wstring> heading)
{
    m_rows.push_back(std::move(heading));
}

void Table::add(std::vector<std::wstring> row)
{
    m_rows.push_back(std::move(row));
}

void Table::print() const
{
    std::vector<size_t> widths(m_rows.front().size());
    for (const auto& row : m_rows)
    {
        for (size_t column = 0; column < widths.size(); ++column)
        {
            widths[column] = std::max(widths[column], row[column].size());
        }
    }

    std::wstring text;
    for (const auto& row : m_rows)
    {
        for (size_t column = 0; column + 1 < widths.size(); ++column)
        {
            text += row[column];
            text.append(widths[column] - row[column].size() + 2, L' ');
        }
        text += row.back() + L"\n";
    }
    ::print(text);
}
