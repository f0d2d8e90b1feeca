#pragma once
// Observer of one set: told after a buffer has been stored under an index, on the storing thread,
// before the set's own bookkeeping of file names is updated. Observers are not owned by the set.

#include <SetApi/Export.h>

namespace SetApi {

class SETAPI_API I_SetObserver {
public:
    virtual ~I_SetObserver();
    virtual void OnBufferStored(unsigned index) = 0;
};

} // namespace SetApi
