// The part list that "number" and "section" work on: plain text, one part a line, columns separated by semicolons.
#pragma once

#include "Commands.h"

#include "qelProfTypeDSTVValues.h"
#include "qelString.h"

/// One line of the list. Dimensions are in millimetres, 0 where the section has no such dimension.
struct Part
{
    qelString position;
    qelString profile;
    eDSTVType type;
    double height;
    double width;
    double webThickness; ///< of tubes and plates the thickness
    double flangeThickness;
    double radius;
    double length;
    qelString material;
    int quantity;
};

/// What stands behind a command that works on a part list.
struct PartListOptions
{
    std::wstring file = L"parts.csv";
    size_t limit = static_cast<size_t>(-1); ///< greatest number of rows to print
    std::vector<std::wstring> names;
};

/// Reads the options of the command `command`. False where they make no sense, which the user has then been told.
bool parsePartListOptions(const std::wstring& command, const Arguments& arguments, PartListOptions& options);

/// Reads the parts of `file`, in its order. False where it cannot be read or is malformed: the user has been told which
/// line and why, and `parts` is not to be used.
bool readParts(const std::wstring& file, std::vector<Part>& parts);

/// A dimension without needless decimals, "-" for 0.
std::wstring millimetres(double dimension);
