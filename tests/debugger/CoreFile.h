// The memory of this process as a core file.
#ifndef QEL_TEST_CORE_FILE_H
#define QEL_TEST_CORE_FILE_H

/**
 * Writes all private memory, the images of the loaded modules that `modules` names (null at the end) and the place of
 * the calling thread to an ELF core file. GDB reads that on Linux without having to trace a process. True when all of
 * it was written.
 *
 * Prints the name and the address of each module, in hexadecimal, on a line each.
 */
bool writeCoreFile(const char* path, const wchar_t* const* modules);

#endif
