// C_ScaleFactory holds no state: every call makes a new scale, so it is safe from any thread.
#include "model/LinearScale.h"

#include <BufferApi/I_Scale.h>

namespace BufferApi {

C_ScaleFactory& C_ScaleFactory::GetInstance()
{
    static C_ScaleFactory instance;
    return instance;
}

I_Scale* C_ScaleFactory::CreateLinearScale(double factor, double offset, const std::string& unit,
                                           const std::string& description) const
{
    return new Private::LinearScale(factor, offset, unit, description);
}

I_Scale* C_ScaleFactory::CreateIdentityScale() const
{
    return new Private::LinearScale(1.0, 0.0, std::string(), std::string());
}

} // namespace BufferApi
