// Questions about stdio streams and descriptors that plain C does not ask.
#pragma once

#include <stdio.h>

namespace krm::platform {

// May this stream be read / written? False for a closed stream.
bool stream_readable(FILE *stream);
bool stream_writable(FILE *stream);

}  // namespace krm::platform
