// Byte-order marks, and what the runtime's "ccs=" open modes leave open. Not part of the public interface.
#ifndef QEL_ENCODED_STREAM_H
#define QEL_ENCODED_STREAM_H

#include "qelFileAccess.h"

namespace qelEncodedStream
{
/// True for the encodings that open their stream with a "ccs=" key.
bool hasKey(qelFileAccess::encodeType encoding);

/// Whether two bytes are the mark of UTF-16. Deliberately, the bytes of a swapped mark mean the same as the right ones.
bool isUtf16Mark(const unsigned char* bytes);

/// Whether three bytes are the mark of UTF-8.
bool isUtf8Mark(const unsigned char* bytes);

/// The text of the whole file behind a stream opened with a key; see qelFileAccess::readFile().
size_t readFile(FILE* stream, qelFileAccess::encodeType encoding, qelString& contents, size_t maxLength);
} // namespace qelEncodedStream

#endif
