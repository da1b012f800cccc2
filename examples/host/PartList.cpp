#include "PartList.h"

#include "Console.h"

#include "qelFileAccess.h"

#include <string.h>
#include <wchar.h>

namespace
{
const wchar_t* const kHeading = L"position;profile;code;h;b;tw;tf;r;length;material;quantity";

enum Column
{
    kPosition,
    kProfile,
    kCode,
    kHeight,
    kWidth,
    kWebThickness,
    kFlangeThickness,
    kRadius,
    kLength,
    kMaterial,
    kQuantity,
    kColumns
};

/// Why a list cannot be used, in words for the user.
struct Refusal
{
    std::wstring reason;
};

qelString readText(const std::wstring& file)
{
    // With this encoding the mark at the start of the file decides; without one it is ANSI text.
    qelFileAccess stream(file.c_str(), L"r", qelFileAccess::UTF8);
    if (stream.isOpen() == 0)
    {
        throw Refusal{L"cannot be opened"};
    }
    const long bytes = stream.getFileLength();
    if (bytes < 0 || bytes > qelString::kMaxLength)
    {
        throw Refusal{L"is too long for a part list"};
    }
    qelString text;
    // What was read is counted in units where there is a mark, else in bytes. A NUL would have ended the text early.
    const size_t count = stream.readFile(text, static_cast<size_t>(bytes));
    if (count != static_cast<size_t>(text.length()) && count != strlen(text.getStringA()))
    {
        throw Refusal{L"is no text"};
    }
    return text;
}

/// Takes the next line off the text. False when nothing is left.
bool takeLine(const wchar_t*& rest, std::wstring& line)
{
    if (*rest == 0)
    {
        return false;
    }
    const size_t length = wcscspn(rest, L"\n");
    line.assign(rest, length);
    rest += rest[length] == 0 ? length : length + 1;
    return true;
}

std::vector<std::wstring> split(const std::wstring& line)
{
    std::vector<std::wstring> fields(1);
    for (const wchar_t c : line)
    {
        if (c == L';')
        {
            fields.emplace_back();
        }
        else
        {
            fields.back() += c;
        }
    }
    return fields;
}

qelString toText(const std::wstring& field)
{
    qelString text(field.c_str());
    text.TrimLeft();
    text.TrimRight();
    if (text.isEmpty())
    {
        throw Refusal{L"a column is empty"};
    }
    return text;
}

// qelString::toDouble() stops at what does not fit, so that has to be looked for first.
double toDimension(const std::wstring& field)
{
    const qelString text = toText(field);
    const std::wstring digits = text.getStringW();
    const bool isNumber = digits.size() <= 12 && digits.find_first_not_of(L"0123456789.") == std::wstring::npos &&
                          digits.find_first_of(L"0123456789") != std::wstring::npos &&
                          digits.find(L'.') == digits.rfind(L'.');
    if (!isNumber)
    {
        throw Refusal{L"\"" + digits + L"\" is no dimension"};
    }
    return text.toDouble();
}

int toQuantity(const std::wstring& field)
{
    const qelString text = toText(field);
    const std::wstring digits = text.getStringW();
    const bool isNumber = digits.size() <= 6 && digits.find_first_not_of(L"0123456789") == std::wstring::npos;
    if (!isNumber || text.toInteger() == 0)
    {
        throw Refusal{L"\"" + digits + L"\" is no quantity"};
    }
    return text.toInteger();
}

// The library knows the code of every type.
eDSTVType toType(const std::wstring& field)
{
    const qelString code = toText(field);
    for (int type = eDSTV_I; type <= eDSTV_CSE; ++type)
    {
        qelProfTypeDSTVValues values;
        values.setDSTVType(static_cast<eDSTVType>(type));
        if (values.getProftypeString() == code)
        {
            return values.getDSTVType();
        }
    }
    throw Refusal{std::wstring(L"there is no profile code \"") + code.getStringW() + L"\""};
}

Part toPart(const std::wstring& line)
{
    const std::vector<std::wstring> fields = split(line);
    if (fields.size() != kColumns)
    {
        throw Refusal{L"has " + std::to_wstring(fields.size()) + L" of " + std::to_wstring(kColumns) + L" columns"};
    }
    Part part;
    part.position = toText(fields[kPosition]);
    part.profile = toText(fields[kProfile]);
    part.type = toType(fields[kCode]);
    part.height = toDimension(fields[kHeight]);
    part.width = toDimension(fields[kWidth]);
    part.webThickness = toDimension(fields[kWebThickness]);
    part.flangeThickness = toDimension(fields[kFlangeThickness]);
    part.radius = toDimension(fields[kRadius]);
    part.length = toDimension(fields[kLength]);
    part.material = toText(fields[kMaterial]);
    part.quantity = toQuantity(fields[kQuantity]);
    return part;
}

void refuse(const std::wstring& place, const Refusal& refusal)
{
    printError(L"host: " + place + L": " + refusal.reason + L"\n");
}

bool toLimit(const std::wstring& value, size_t& limit)
{
    if (value.empty() || value.size() > 6 || value.find_first_not_of(L"0123456789") != std::wstring::npos)
    {
        return false;
    }
    limit = static_cast<size_t>(qelString(value.c_str()).toInteger());
    return limit > 0;
}
} // namespace

bool parsePartListOptions(const std::wstring& command, const Arguments& arguments, PartListOptions& options)
{
    const std::wstring speaker = L"host " + command + L": ";
    for (size_t i = 0; i < arguments.size(); ++i)
    {
        const std::wstring& argument = arguments[i];
        if (argument == L"--file" || argument == L"--limit")
        {
            if (++i == arguments.size())
            {
                printError(speaker + L"a value is missing behind " + argument + L"\n");
                return false;
            }
            if (argument == L"--file")
            {
                options.file = arguments[i];
            }
            else if (!toLimit(arguments[i], options.limit))
            {
                printError(speaker + L"\"" + arguments[i] + L"\" is no number of rows\n");
                return false;
            }
        }
        else if (argument.compare(0, 2, L"--") == 0)
        {
            printError(speaker + L"there is no option " + argument + L"\n");
            return false;
        }
        else
        {
            options.names.push_back(argument);
        }
    }
    return true;
}

bool readParts(const std::wstring& file, std::vector<Part>& parts)
{
    std::wstring place = file;
    try
    {
        const qelString text = readText(file);
        const wchar_t* rest = text.getStringW();
        std::wstring line;
        if (!takeLine(rest, line) || line != kHeading)
        {
            throw Refusal{std::wstring(L"is no part list: its first line should be\n") + kHeading};
        }
        for (int number = 2; takeLine(rest, line); ++number)
        {
            place = file + L", line " + std::to_wstring(number);
            if (!line.empty())
            {
                parts.push_back(toPart(line));
            }
        }
        place = file;
        if (parts.empty())
        {
            throw Refusal{L"has no parts"};
        }
    }
    catch (const Refusal& refusal)
    {
        refuse(place, refusal);
        return false;
    }
    return true;
}

std::wstring millimetres(double dimension)
{
    return dimension == 0.0 ? L"-" : qelString().format(L"%.12g", dimension).getStringW();
}
