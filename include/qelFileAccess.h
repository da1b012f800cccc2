/**
 * @file
 * @brief Reads and writes text files (ANSI, UTF-8, UTF-16) and raw bytes.
 */
#ifndef QEL_FILE_ACCESS_H
#define QEL_FILE_ACCESS_H

#include "qelExport.h"
#include "qelString.h"

#include <stddef.h>
#include <stdio.h>

/**
 * @brief Reads and writes a file: text in ANSI, UTF-8 or UTF-16, or raw bytes.
 * @ingroup files
 *
 * Uses the C runtime's streams. The constructor opens the file and fixes its encoding; it stays open until close() or
 * the destructor.
 *
 * @par Example
 * @code
 * qelFileAccess list(L"Parts.txt", L"w", qelFileAccess::UNICODE_TEXT);
 * list.write(L"%d parts\n", 12);                                        // == 9, units written
 * list.close();
 *
 * qelFileAccess file(L"Parts.txt", L"r", qelFileAccess::UNICODE_TEXT);
 * file.isOpen();                                                        // == 1
 * qelString text;
 * file.readFile(text, static_cast<size_t>(file.getFileLength()));       // == 9
 * text;                                                                 // == L"12 parts\n"
 * @endcode
 *
 * @par Ownership
 * An object owns its stream and closes it. Copies share the stream and each would close it, so copy closed objects
 * only; assigning to an open one leaks its stream.
 *
 * @par Threads
 * Not thread-safe, like qelString: readFile() uses its process-wide buffers.
 *
 * @par Cost
 * Buffered: output is in the file after close(). Strings have at most 524,288 units; lengths are 32-bit `long`.
 *
 * @par Failure
 * Throws only `std::bad_alloc`. After a failed open, isOpen() is 0: the file is missing, another program has it locked,
 * or there is no room for the byte-order mark (BOM). On a closed object every operation is harmless, returns what its
 * comment says, and leaves its arguments alone unless stated otherwise.
 *
 * @par Encoding
 * The constructor appends the runtime's "ccs=" key for the encoding to the caller's mode. With a key, new files begin
 * with a BOM. In existing files the BOM decides, and is skipped; without one, the key does. Only the BOMs of UTF-16
 * (little-endian) and UTF-8 are recognised:
 *
 * | to read or continue | encoding |
 * |---|---|
 * | UTF-16 or UTF-8 with a BOM, else ANSI | UNICODE |
 * | UTF-8 that may have no BOM | UTF8 |
 * | UTF-16 that may have no BOM | UTF16LE |
 * | big-endian UTF-16 | none: convert the file first |
 *
 * Text modes read CR LF as a line feed, write a line feed as CR LF, and end at a character 0x1A in every reading
 * operation, readFile() included. Binary modes ("rb") do none of this and ignore keys: only readFile() decodes,
 * everything else reads and writes plain 16-bit units.
 */
class QEL_API qelFileAccess
{
public:
// Most hosts define UNICODE as a macro, which would swallow the enumerator.
#pragma push_macro("UNICODE")
#undef UNICODE
    /// How the text of a file is encoded. Any other value behaves as ANSI.
    enum encodeType : int
    {
        ANSI = 0,         ///< no key; lines and puts() in the ANSI code page
        UNICODE = 1,      ///< "ccs=UNICODE": UTF-16 on new files; existing ones without a BOM are ANSI
        UNICODE_TEXT = 1, ///< the same value, for sources in which UNICODE is a macro
        UTF8 = 2,         ///< "ccs=UTF-8"; lines and puts() deliberately carry only the ANSI code page
        UTF16LE = 3       ///< "ccs=UTF-16LE"
    };
#pragma pop_macro("UNICODE")

    /// @name Opening and closing
    /// @{

    /// No file; encoding ANSI.
    qelFileAccess();

    /**
     * Opens `fileName` with the runtime's `_wfopen_s`, in `mode` with the encoding's key appended: "r" becomes
     * "r, ccs=UTF-8". An empty name opens nothing. The encoding is kept whether or not the file could be opened.
     */
    qelFileAccess(const qelString& fileName, const qelString& mode, encodeType encoding);

    /// Shares the stream: copy closed objects only.
    qelFileAccess(const qelFileAccess&) = default;

    /// Shares the stream: assign closed objects only.
    qelFileAccess& operator=(const qelFileAccess&) = default;

    /// Closes the file.
    virtual ~qelFileAccess();

    /// Closes the file, if open.
    void close();

    /// 1 when a file is open, else 0.
    int isOpen() const;

    /// The encoding given at construction.
    encodeType getCodingMethod() const;
    /// @}

    /**
     * @name Writing
     * New files hold a BOM and UTF-8 with the encoding UTF8, a BOM and UTF-16 with UNICODE and UTF16LE. A file that has
     * text already continues in its own encoding: with UTF8 and mode "a", one without a BOM gets UTF-8 and no BOM.
     *
     * A surrogate pair may be split between two calls, but seek(), getFileLength(), readFile() and close() in between
     * separate its halves. An unpaired surrogate becomes U+FFFD in UTF-8 and stays as it is in UTF-16.
     *
     * ANSI, and UNICODE on a file without a BOM, write the code page of the C runtime's locale: write() fails at a
     * character that it lacks.
     *
     * Output is buffered: a disk error may show only in a later call, and never in close().
     */
    /// @{

    /**
     * Formatted output as with `vfwprintf_s`, whatever the encoding: "%s" takes wide text in all three forms, even with
     * a `char` format, which is converted from the ANSI code page first. A null format is an empty one. Returns the
     * number of units written, negative on error, 0 when no file is open. When out of memory nothing is written.
     */
    int write(const char* format, ...) const;

    /// @overload
    int write(const wchar_t* format, ...) const;

    /// @overload
    int write(const unsigned short* format, ...) const;

    /// Refuses objects among the values, such as a qelString: pass getStringW().
    template <class Unit, class... Values, typename qelEnableIf<(... || !__is_trivially_copyable(Values))>::Type = 0>
    int write(const Unit* format, const Values&... values) const = delete;

    /**
     * Writes the string as it is, without a line end: its wide form for UNICODE and UTF16LE, otherwise its narrow form,
     * with "?" for what the ANSI code page lacks. Returns a non-negative value, EOF on error, 0 when no file is open.
     */
    int puts(qelString text) const;
    /// @}

    /// @name Reading
    /// @{

    /**
     * `fread`: reads up to `count` elements of `size` bytes and returns how many are complete. 0 when no file is open,
     * for a null buffer, and for an impossible size.
     */
    size_t read(void* buffer, size_t size, size_t count) const;

    /**
     * Reads up to and including the next line feed into `line` and returns a copy of it. `maxCount` includes the
     * terminator and is limited to 256 for UNICODE and UTF16LE, 512 otherwise; the next call returns the rest of a
     * longer line. The line is empty at the end of the file, after a failed read, for a `maxCount` below 2 and when no
     * file is open.
     */
    qelString getStringW(qelString& line, int maxCount) const;

    /**
     * Skips white space and reads one token up to the next. Returns 1 when there was one, 0 when it did not match or
     * has 256 units or more, EOF at the end of the file. `token` is always set, but meaningful only with 1. When no
     * file is open the result is 0 and `token` is left alone.
     */
    int readString(qelString& token) const;

    /// Reads an integer, as readString() reads a token: 1, 0 or EOF.
    int readInt(int& value) const;

    /// Reads a floating-point number, likewise.
    int readDouble(double& value) const;

    /// Reads a wide character, whatever the encoding; WEOF at the end, 0 when no file is open. WEOF equals U+FFFF: use
    /// eof() to tell them apart.
    int getc() const;

    /// Not 0 once a read has met the end of the file, and when no file is open.
    int eof() const;

    /**
     * Reads the file into `contents`, at most `maxLength` units, and returns how many units were read: 16-bit units of
     * UTF-16 and UTF-8, bytes of ANSI text. `contents` keeps the first 524,288. It is empty, and the result 0, when no
     * file is open or nothing could be read. It is also empty when out of memory; the stream then stays usable, at an
     * unspecified position.
     *
     * With a key (UNICODE, UTF8, UTF16LE) the whole file is read from its start, in the encoding of its BOM or else of
     * the key, without the BOM. Invalid UTF-8 becomes U+FFFD. The big-endian BOM, FE FF, counts as FF FE. Needs a
     * seekable file, so no pipe.
     *
     * Without a key, the bytes from the current position decide:
     * - Bytes 0 and 1 are FF FE or FE FF: UTF-16, little-endian in both cases, follows.
     * - Bytes 2 to 4, deliberately not the first three, are EF BB BF: little-endian UTF-16 follows them.
     * - Otherwise the whole file is read from its start, as text in the ANSI code page.
     *
     * One pass over the file, with memory for the text that is kept, whatever `maxLength` is. Reading continues after
     * the units read.
     */
    size_t readFile(qelString& contents, size_t maxLength) const;
    /// @}

    /// @name Positioning
    /// @{

    /// `fseek`, with an origin of 0 = start, 1 = current position, 2 = end. 0 on success, else -1.
    int seek(long offset, int origin) const;

    /// Length of the file in bytes, -1 when unknown, 0 when no file is open. Moves to the start of the file.
    long getFileLength();
    /// @}

    /// @name Files and folders
    /// 0 on success, else -1 with the runtime's error number set.
    /// @{

    /// Deletes a file; fails for a folder and a read-only file.
    static int removeFile(const qelString& path);

    /// Renames or moves a file or folder; fails when `to` exists.
    static int renameFile(const qelString& from, const qelString& to);

    /// Changes the current folder of the process.
    static int changeWorkingDir(const qelString& path);

    /// Creates one folder; also succeeds when a folder or file of that name exists.
    static int makeDir(const qelString& path);
    /// @}

private:
    FILE* m_stream;        ///< the open file, or null
    encodeType m_encoding; ///< as given at construction
};

static_assert(sizeof(qelFileAccess::encodeType) == 4, "encodings are 32-bit");
static_assert(sizeof(qelFileAccess) == 24, "virtual table, stream and encoding");

#endif
