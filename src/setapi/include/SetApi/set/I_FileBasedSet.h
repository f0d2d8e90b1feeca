#pragma once
// A set whose buffers are files of their own: which file holds an index, and copying one buffer
// file from another file-based set.

#include <SetApi/Export.h>
#include <SetApi/set/CopyParameterValueSpec.h>

#include <QFileInfo>

namespace SetApi {

class SETAPI_API I_FileBasedSet {
public:
    virtual ~I_FileBasedSet();
    virtual QFileInfo GetFileInfoForIndex(unsigned index) const = 0;
    virtual void CopyBufferFromSet(const I_FileBasedSet& source, unsigned sourceIndex, unsigned targetIndex,
                                   CopyParameterValueSpec spec) = 0;
};

} // namespace SetApi
