#include <SetApi/factory/I_SetWriter.h>

namespace SetApi {

I_SetWriter::~I_SetWriter() = default;

} // namespace SetApi
