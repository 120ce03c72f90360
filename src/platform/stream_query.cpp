#include "platform/stream_query.h"

#include <stdio_ext.h>

namespace krm::platform {

bool stream_readable(FILE *stream) { return __freadable(stream) != 0; }
bool stream_writable(FILE *stream) { return __fwritable(stream) != 0; }

}  // namespace krm::platform
