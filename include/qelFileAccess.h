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
 * One thread at a time for each object, and for each text as qelString says.
 *
 * @par Cost
 * That of the runtime's buffered streams: what was written is in the file after close(). readFile() reads a file in one
 * pass; a text has at most 524,288 units, a length is a 32-bit `long`.
 *
 * @par Failure
 * Nothing is thrown but for memory and nothing is reported in words. A failed open leaves isOpen() 0. On a closed
 * object every operation is harmless: what it returns stands with it, and its targets stay as they are unless that says
 * otherwise.
 *
 * @par Encoding
 * The constructor appends the runtime's "ccs=" key for the encoding to the caller's mode. With a key the runtime writes
 * a byte-order mark on new files, skips it on existing ones and lets it choose the translation. Keys act on text modes:
 * in a binary mode ("rb") only readFile() decodes, everything else then reads and writes plain 16-bit units.
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
        UNICODE = 1,      ///< "ccs=UNICODE": the mark decides, UTF-16 on new files, ANSI where there is none
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

    /// @name Writing
    /// @{

    /**
     * Formatted writing as with `vfwprintf_s`, whatever the encoding: "%s" takes wide text in all three forms, also
     * with a `char` format, which is converted from the ANSI code page first. A null format is the empty one. Returns
     * the number of units written, negative on error, 0 when no file is open.
     */
    int write(const char* format, ...) const;

    /// @overload
    int write(const wchar_t* format, ...) const;

    /// @overload
    int write(const unsigned short* format, ...) const;

    /**
     * Writes the text as it is, without a line end: its wide form for UNICODE and UTF16LE, otherwise its narrow form,
     * with "?" for what the ANSI code page lacks. Returns a non-negative value, the runtime's end-of-file marker on
     * error, 0 when no file is open.
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
     * Reads one token that ends at white space, after any white space before it, as the runtime's wide scanner does:
     * returns 1 when there was one, 0 when it did not match, EOF at the end of the file. A token of 256 units or more
     * is refused with 0. Whatever the result, the target is set; it means something only with 1. When no file is open
     * the result is 0 and the target stays as it is.
     */
    int readString(qelString& token) const;

    /// Reads a whole number, as readString() reads a token: 1, 0 or EOF.
    int readInt(int& value) const;

    /// Reads a number with point and exponent, likewise.
    int readDouble(double& value) const;

    /// The next wide character, whatever the encoding; WEOF at the end, 0 when no file is open.
    int getc() const;

    /// Not 0 once a read has met the end of the file, and when no file is open.
    int eof() const;

    /**
     * Reads the file into `contents`, at most `maxLength` units, and returns how many units were read: 16-bit units for
     * text with a mark, bytes for text in the ANSI code page. Of more than 524,288 units `contents` keeps the first
     * 524,288. It is empty, and the result 0, when no file is open or nothing could be read.
     *
     * With a key (UNICODE, UTF8, UTF16LE) the whole file is read from its start: UTF-16LE or UTF-8 as its mark says,
     * without the mark, or ANSI text when it has none, line ends as the stream's text mode delivers them. Needs a file
     * that can be positioned, so no pipe.
     *
     * Without a key the bytes from the current position count:
     * - 0 and 1 are FF FE or FE FF: UTF-16 in the machine's order follows, in both cases.
     * - 2 to 4, deliberately not the first three, are EF BB BF: UTF-16 in the machine's order follows them.
     * - Otherwise the position goes to the start of the file, and its bytes are text in the ANSI code page.
     *
     * One pass over the file; memory for the text that is kept, whatever `maxLength` is.
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
