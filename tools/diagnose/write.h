// The two forms of the report.
#pragma once

#include "Findings.h"

/// For people: sections and tables.
void writeText(const Findings& findings);

/// For programs: one JSON object.
void writeJson(const Findings& findings);

/// A number as "0x" and at least eight hexadecimal digits.
std::wstring hexadecimal(unsigned long long value);
