#pragma once
// Small buffers for the seeds of the buffer file targets: an image buffer of two word frames with
// attributes, a depth-2 float image and a vector buffer.

#include <BufferApi/I_Buffer.h>

#include <memory>
#include <vector>

namespace SetApiFuzz {

std::vector<std::unique_ptr<BufferApi::I_Buffer>> SmallBuffers();

} // namespace SetApiFuzz
