// The memory of this process as a core file.
#ifndef QEL_TEST_CORE_FILE_H
#define QEL_TEST_CORE_FILE_H

/**
 * Writes the program, the modules loaded by it that are named in `modules` (null at the end) and all private memory to
 * an ELF core file, which GDB reads on any system without having to trace a process. True when all of it was written.
 *
 * The program prints where each image lies: name, a blank and the address in hexadecimal, a line each.
 */
bool writeCoreFile(const char* path, const wchar_t* const* modules);

#endif
