#pragma once
// Observer of the set factory: told of sets created, removed and renamed through it. Notifications
// run on the calling thread under the factory's observer mutex; an observer must not Attach or
// Detach from inside one, and must Detach before it is destroyed.

#include <SetApi/Export.h>

#include <string>

namespace SetApi {

class SETAPI_API I_SetFactoryObserver {
public:
    virtual ~I_SetFactoryObserver();
    virtual void OnCreate(const std::string& path) = 0;
    virtual void OnRemove(const std::string& path) = 0;
    virtual void OnRename(const std::string& oldPath, const std::string& newPath) = 0;
};

} // namespace SetApi
