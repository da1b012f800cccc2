// A test program without a C++ library: the same sources are built by MinGW-w64 and with Visual C++'s ABI, and must
// print the same in both.
#pragma once

#include "qelString.h"

/// Counts a check and prints it when it fails.
void check(bool passed, const char* condition, const char* file, int line);

/// Prints a value that both builds must have in common.
void show(const char* what, const qelString& value);
void show(const char* what, double value);

/// Number of checks that have failed.
int failures();

/// Number of checks so far.
int checks();

#define CHECK(condition) check((condition), #condition, __FILE__, __LINE__)

void checkStrings();
void checkStandardLibrary();
void checkArrays();
void checkRuntime();
void checkFiles();
void checkConfiguration();
void checkNumbering();
void checkProgress();
void checkNumbers();
void checkTasks();
void checkBorder();
