#pragma once
// A named part of a frame (the pixels, the mask, a vector component, a typed scalar): one plane
// per depth of the frame, all of the frame's width and height and of one element type.

#include <BufferApi/DataType.h>
#include <BufferApi/Export.h>

#include <memory>
#include <string>

namespace BufferApi {

class I_PlaneBase;
class I_Scale;

class BUFFERAPI_API I_Component {
public:
    virtual ~I_Component();
    virtual const std::string& GetName() const = 0;
    virtual E_DataType GetDataType() const = 0;
    virtual unsigned GetPlaneCount() const = 0;
    // Plane `plane` (0 <= plane < GetPlaneCount()); another index raises RTE::VerificationFailed.
    virtual I_PlaneBase* GetPlane(unsigned plane) = 0;
    virtual const I_PlaneBase* GetPlane(unsigned plane) const = 0;
    // Puts `replacement` (from CreatePlane, say) in place of plane `plane`; the component owns it
    // from now on. A plane index out of range, a null plane, or one of another element type, width
    // or height raise RTE::VerificationFailed.
    virtual void SetPlane(unsigned plane, std::unique_ptr<I_PlaneBase> replacement) = 0;
    // The scale of the component's values (typed scalars carry one); null when it has none.
    virtual const I_Scale* GetScale() const = 0;
    virtual void SetScale(std::unique_ptr<I_Scale> scale) = 0;
};

} // namespace BufferApi
