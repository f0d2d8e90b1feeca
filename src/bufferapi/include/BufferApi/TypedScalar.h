#pragma once
// Typed scalars: further per-pixel quantities of a frame (a correlation value, a temperature...),
// each a component of its own element type and value scale, reached by the scalar's name.

#include <BufferApi/DataType.h>
#include <BufferApi/Export.h>

#include <string>
#include <vector>

namespace BufferApi {

class I_Frame;
class I_Component;
class I_PlaneBase;
class I_Scale;

// Adds the typed scalar `name` to the frame (zero-filled, identity scale). An existing scalar of
// that name, an empty name or a null frame raise RTE::VerificationFailed.
BUFFERAPI_API void CreateTypedScalarInFrame(I_Frame* frame, const std::string& name, E_DataType type);

// The names of the frame's typed scalars, in the order of adding.
BUFFERAPI_API std::vector<std::string> GetNamesOfFrameBoundTypedScalars(const I_Frame* frame);

// Access to one typed scalar of a frame. Constructing it for a scalar the frame does not have
// raises RTE::VerificationFailed.
class BUFFERAPI_API C_TypedScalarFrame {
public:
    C_TypedScalarFrame(I_Frame* frame, const std::string& name);
    const std::string& GetName() const { return m_name; }
    E_DataType GetDataType() const;
    // Plane `plane` of the scalar.
    I_PlaneBase* GetComponent(unsigned plane);
    // The value scale; identity unless set.
    const I_Scale& GetScale() const;
    void SetLinearScale(double factor, double offset, const std::string& unit, const std::string& description);

private:
    I_Component* m_component;
    std::string m_name;
};

} // namespace BufferApi
