#include <BufferApi/I_PlaneBase.h>

namespace BufferApi {

I_PlaneBase::~I_PlaneBase() = default;

} // namespace BufferApi
