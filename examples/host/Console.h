// Text for the person in front of the program.
#pragma once

#include <string>
#include <vector>

/// Writes to a console as it is, to a file or a pipe as UTF-8.
void print(const std::wstring& text);

/// The same for the error output.
void printError(const std::wstring& text);

/// Rows of text in columns, each as wide as its widest cell.
class Table
{
public:
    explicit Table(std::vector<std::wstring> heading);

    /// `row` has as many cells as the heading.
    void add(std::vector<std::wstring> row);

    void print() const;

private:
    std::vector<std::vector<std::wstring>> m_rows; ///< the heading first
};
