/**
 * @file
 * @brief Text and raw-byte files through the C runtime's streams.
 */
#ifndef QEL_FILE_ACCESS_H
#define QEL_FILE_ACCESS_H

#include "qelExport.h"
#include "qelString.h"

#include <stddef.h>
#include <stdio.h>

/**
 * @brief One open file: text in ANSI, UTF-8 or UTF-16, or raw bytes.
 * @ingroup files
 *
 * Reads and writes configuration files, lists and reports through the C runtime's streams. A file is opened in the
 * constructor, with its encoding fixed, and stays open until close() or the destructor.
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
 * only; assigning over an open one loses its stream.
 *
 * @par Threads
 * As for qelString: readFile() works in its process-wide buffers.
 *
 * @par Cost
 * That of the runtime's buffered streams: what was written is in the file after close(). readFile() reads a file in one
 * pass; a text has at most 524,288 units, a length is a 32-bit `long`.
 *
 * @par Failure
 * Nothing is thrown but std::bad_alloc, and nothing is reported in words. A failed open leaves isOpen() 0: the file is
 * missing, another program has it for itself alone, or there is no room for the byte-order mark. On a closed object
 * every operation is harmless: what it returns stands with it, and its targets stay as they are unless that says
 * otherwise.
 *
 * @par Encoding
 * The constructor appends the runtime's "ccs=" key for the encoding to the caller's mode. With a key the runtime
 * begins new files with a byte-order mark (BOM). Of an existing file the BOM decides, and is skipped; without one the
 * key says what the file holds. What is recognised is UTF-16 (little-endian) and UTF-8 by their BOMs, nothing else:
 *
 * | to read or continue | encoding |
 * |---|---|
 * | UTF-16 or UTF-8 with a BOM, else ANSI | UNICODE |
 * | UTF-8 that may have no BOM | UTF8 |
 * | UTF-16 that may have no BOM | UTF16LE |
 * | big-endian UTF-16 | none: convert the file first |
 *
 * A text mode reads a carriage return with its line feed as one line feed, writes a line feed as both, and ends at a
 * character 0x1A in every reading operation, readFile() included. Binary modes ("rb") do none of this, and keys have no
 * effect in them: only readFile() decodes, everything else reads and writes plain 16-bit units.
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
        UTF8 = 2,         ///< "ccs=UTF-8"; lines and puts() deliberately carry no more than the ANSI code page has
        UTF16LE = 3       ///< "ccs=UTF-16LE"
    };
#pragma pop_macro("UNICODE")

    /// @name Life
    /// @{

    /// No file; encoding ANSI.
    qelFileAccess();

    /**
     * Opens `fileName` with the runtime's `_wfopen_s`, in `mode` with the encoding's key appended: "r" becomes
     * "r, ccs=UTF-8". An empty name opens nothing. The encoding is kept whether or not the file could be opened.
     */
    qelFileAccess(const qelString& fileName, const qelString& mode, encodeType encoding);

    /// Shares the stream: for closed objects only.
    qelFileAccess(const qelFileAccess&) = default;

    /// Shares the stream: between closed objects only.
    qelFileAccess& operator=(const qelFileAccess&) = default;

    /// Closes the file.
    virtual ~qelFileAccess();

    /// Closes the file; harmless when none is open.
    void close();

    /// 1 when a file is open, else 0.
    int isOpen() const;

    /// The encoding given at construction.
    encodeType getCodingMethod() const;
    /// @}

    /**
     * @name Writing
     * A key decides what a new file holds: UTF8 a BOM and UTF-8, UNICODE and UTF16LE a BOM and UTF-16. A file that has
     * text already goes on in its own encoding: opened with UTF8 in mode "a", one without a BOM takes UTF-8 and stays
     * without.
     *
     * A character outside the basic plane may come in two calls. Half of one is U+FFFD in UTF-8, and stays as it is in
     * UTF-16; seek(), getFileLength(), readFile() and close() between the halves part them.
     *
     * ANSI, and UNICODE on a file without a BOM, write the code page of the C runtime's locale: a unit that it lacks
     * makes write() fail there.
     *
     * Output is buffered: what goes wrong on the disk may show with a later call only, or not at all in close().
     */
    /// @{

    /**
     * Formatted writing as with `vfwprintf_s`, whatever the encoding: "%s" takes wide text in all three forms, also
     * with a `char` format, which is converted from the ANSI code page first. A null format is the empty one. Returns
     * the number of units written, negative on error with every encoding, 0 when no file is open. Where memory is short
     * nothing has been written.
     */
    int write(const char* format, ...) const;

    /// @overload
    int write(const wchar_t* format, ...) const;

    /// @overload
    int write(const unsigned short* format, ...) const;

    /**
     * Writes the text as it is, without a line end: its wide form for UNICODE and UTF16LE, otherwise its narrow form,
     * with "?" for what the ANSI code page lacks. Returns a non-negative value, EOF on error with every encoding, 0
     * when no file is open.
     */
    int puts(qelString text) const;
    /// @}

    /// @name Reading
    /// @{

    /**
     * `fread`: up to `count` elements of `size` bytes; returns how many came whole. 0 when no file is open, for a null
     * buffer, and for a size that no memory could have.
     */
    size_t read(void* buffer, size_t size, size_t count) const;

    /**
     * Reads up to and including the next line feed into `line` and returns a copy of it. `maxCount` counts characters
     * with the terminator: at most 256 for UNICODE and UTF16LE, 512 otherwise; a greater one is taken as that. The rest
     * of a longer line comes with the next call. The line is empty at the end of the file, after a failed read, for a
     * `maxCount` below 2 and when no file is open.
     */
    qelString getStringW(qelString& line, int maxCount) const;

    /**
     * Reads one token that ends at white space, after any white space before it. Returns what the runtime's wide
     * scanner does: 1 when there was one, 0 when it did not match, EOF at the end of the file. A token of 256 units or
     * more is refused with 0. Whatever the result, the target is set; it means something only with 1. When no file is open
     * the result is 0 and the target stays as it is.
     */
    int readString(qelString& token) const;

    /// Reads a whole number, as readString() reads a token: 1, 0 or EOF.
    int readInt(int& value) const;

    /// Reads a number with point and exponent, likewise.
    int readDouble(double& value) const;

    /// The next wide character, whatever the encoding; WEOF at the end, 0 when no file is open. WEOF is also the value
    /// of the noncharacter U+FFFF: eof() tells them apart.
    int getc() const;

    /// Not 0 once a read has met the end of the file, and when no file is open.
    int eof() const;

    /**
     * Reads the file into `contents`, at most `maxLength` units, and returns how many units were read: 16-bit units of
     * UTF-16 and UTF-8, bytes of ANSI text. Of more than 524,288 units `contents` keeps the first 524,288. It is empty,
     * and the result 0, when no file is open or nothing could be read. It is empty as well when memory runs out; the
     * stream then stays usable, anywhere in the file.
     *
     * With a key (UNICODE, UTF8, UTF16LE) the whole file is read from its start, in the encoding that its BOM or else
     * the key says, without the BOM. Bytes that are no UTF-8 become U+FFFD. A swapped BOM, FE FF, counts as FF FE. Needs
     * a file that can be positioned, so no pipe.
     *
     * Without a key the bytes from the current position count:
     * - 0 and 1 are FF FE or FE FF: UTF-16 in the machine's order follows, in both cases.
     * - 2 to 4, deliberately not the first three, are EF BB BF: UTF-16 in the machine's order follows them.
     * - Otherwise the position goes to the start of the file, and its bytes are text in the ANSI code page.
     *
     * One pass over the file; memory for the text that is kept, whatever `maxLength` is. Reading goes on behind the
     * units that were read.
     */
    size_t readFile(qelString& contents, size_t maxLength) const;
    /// @}

    /// @name Positioning
    /// @{

    /// `fseek`, with an origin of 0 = start, 1 = current position, 2 = end. 0 on success, else -1.
    int seek(long offset, int origin) const;

    /// Length of the file in bytes, -1 when it cannot be told, 0 when no file is open. Moves to the start of the file.
    long getFileLength();
    /// @}

    /// @name Files and folders
    /// 0 on success, else -1 with the runtime's error number set.
    /// @{

    /// Deletes a file; not a folder, and not one that is write-protected.
    static int removeFile(const qelString& path);

    /// Renames or moves a file or folder; nothing is done where `to` exists.
    static int renameFile(const qelString& from, const qelString& to);

    /// Makes a folder the current one of the process.
    static int changeWorkingDir(const qelString& path);

    /// Makes one folder. What exists already counts as made, a file of that name included.
    static int makeDir(const qelString& path);
    /// @}

private:
    FILE* m_stream;        ///< the open file, null when there is none
    encodeType m_encoding; ///< as given at construction
};

static_assert(sizeof(qelFileAccess::encodeType) == 4, "encodings are 32-bit");
static_assert(sizeof(qelFileAccess) == 24, "virtual table, stream and encoding");

#endif
