#include <BufferApi/I_Buffer.h>

namespace BufferApi {
I_Buffer::~I_Buffer() = default;
} // namespace BufferApi
