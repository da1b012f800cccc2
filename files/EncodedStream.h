// What the runtime's "ccs=" open modes leave open. Not part of the public interface.
#ifndef QEL_ENCODED_STREAM_H
#define QEL_ENCODED_STREAM_H

#include "qelFileAccess.h"

namespace qelEncodedStream
{
/// True for the encodings that open their stream with a "ccs=" key.
bool hasKey(qelFileAccess::encodeType encoding);

/// The text of the whole file behind a stream opened with a key; see qelFileAccess::readFile().
size_t readFile(FILE* stream, qelFileAccess::encodeType encoding, qelString& contents, size_t maxLength);
} // namespace qelEncodedStream

#endif
