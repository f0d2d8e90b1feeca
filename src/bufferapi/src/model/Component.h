#pragma once
// The concrete component: a name, an element type, one plane per depth of the frame and an
// optional value scale.

#include "model/PlaneMemory.h"

#include <BufferApi/Export.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_PlaneBase.h>
#include <BufferApi/I_Scale.h>

#include <memory>
#include <string>
#include <vector>

namespace BufferApi {
namespace Private {

class BUFFERAPI_API Component final : public I_Component {
public:
    // `depth` planes of width x height, memory per `memory`. Bad shapes or types raise
    // RTE::VerificationFailed.
    Component(std::string name, E_DataType type, unsigned width, unsigned height, unsigned depth,
              PlaneMemory memory);

    const std::string& GetName() const override { return m_name; }
    E_DataType GetDataType() const override { return m_type; }
    unsigned GetPlaneCount() const override { return unsigned(m_planes.size()); }
    I_PlaneBase* GetPlane(unsigned plane) override;
    const I_PlaneBase* GetPlane(unsigned plane) const override;
    void SetPlane(unsigned plane, std::unique_ptr<I_PlaneBase> replacement) override;
    const I_Scale* GetScale() const override { return m_scale.get(); }
    void SetScale(std::unique_ptr<I_Scale> scale) override { m_scale = std::move(scale); }

    // Deep copy: planes (in library memory), scale, name.
    std::unique_ptr<Component> Clone() const;

private:
    Component(const Component& other);

    std::string m_name;
    E_DataType m_type;
    std::vector<std::unique_ptr<I_PlaneBase>> m_planes;
    std::unique_ptr<I_Scale> m_scale;
};

} // namespace Private
} // namespace BufferApi
