#pragma once
// What every frame kind holds: name, shape, element type, plane memory policy, components in the
// order of adding, a scale per axis, attributes and settings. The frame kinds put it behind their
// own interface (FrameBase below).

#include "model/Component.h"
#include "model/PlaneMemory.h"

#include <BufferApi/AttributeStore.h>
#include <BufferApi/DataType.h>
#include <BufferApi/Export.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_Scale.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace BufferApi {
namespace Private {

class BUFFERAPI_API FrameCore {
public:
    // Checks the shape and type (RTE::VerificationFailed).
    FrameCore(E_DataType type, unsigned width, unsigned height, unsigned depth, PlaneMemory memory);
    FrameCore(const FrameCore& other); // deep
    FrameCore& operator=(const FrameCore&) = delete;

    E_DataType type;
    unsigned width;
    unsigned height;
    unsigned depth;
    PlaneMemory memory;
    std::string name;
    std::string settings;
    AttributeStore attributes;
    std::vector<std::unique_ptr<Component>> components;
    std::array<std::unique_ptr<I_Scale>, SCALE_TYPE_COUNT> scales; // null: identity

    Component* ComponentAt(unsigned index) const;
    Component* Find(const std::string& componentName) const;
    Component* Add(const std::string& componentName, E_DataType componentType);
    bool Remove(const std::string& componentName);
    const I_Scale& Scale(E_ScaleType axis) const;
    void SetScale(E_ScaleType axis, std::unique_ptr<I_Scale> scale);
};

// The plane memory policy of a frame made by this library, reached by dynamic_cast.
class BUFFERAPI_API I_PlaneMemoryPolicy {
public:
    virtual ~I_PlaneMemoryPolicy();
    virtual PlaneMemory GetPlaneMemory() const = 0;
    virtual void SetPlaneMemory(PlaneMemory memory) = 0;
};

// I_Frame's operations over a FrameCore, for each frame interface.
template <class Interface>
class FrameBase : public Interface, public I_PlaneMemoryPolicy {
public:
    FrameBase(E_DataType type, unsigned width, unsigned height, unsigned depth, PlaneMemory memory)
        : m_core(type, width, height, depth, memory)
    {
    }

    const std::string& GetName() const override { return m_core.name; }
    void SetName(const std::string& name) override { m_core.name = name; }
    unsigned GetWidth() const override { return m_core.width; }
    unsigned GetHeight() const override { return m_core.height; }
    unsigned GetDepth() const override { return m_core.depth; }
    E_DataType GetDataType() const override { return m_core.type; }
    bool HasData() const override { return m_core.memory != PlaneMemory::None; }

    unsigned GetComponentCount() const override { return unsigned(m_core.components.size()); }
    I_Component* GetComponentAt(unsigned index) override { return m_core.ComponentAt(index); }
    const I_Component* GetComponentAt(unsigned index) const override { return m_core.ComponentAt(index); }
    I_Component* GetComponent(const std::string& name) override { return m_core.Find(name); }
    const I_Component* GetComponent(const std::string& name) const override { return m_core.Find(name); }
    I_Component* AddComponent(const std::string& name, E_DataType type) override { return m_core.Add(name, type); }
    bool RemoveComponent(const std::string& name) override { return m_core.Remove(name); }

    const I_Scale& GetScale(E_ScaleType axis) const override { return m_core.Scale(axis); }
    void SetScale(E_ScaleType axis, std::unique_ptr<I_Scale> scale) override { m_core.SetScale(axis, std::move(scale)); }

    AttributeStore& GetAttributeStore() override { return m_core.attributes; }
    const AttributeStore& GetAttributeStore() const override { return m_core.attributes; }

    const std::string& GetSettings() const override { return m_core.settings; }
    void SetSettings(const std::string& settings) override { m_core.settings = settings; }

    PlaneMemory GetPlaneMemory() const override { return m_core.memory; }
    void SetPlaneMemory(PlaneMemory memory) override { m_core.memory = memory; }

protected:
    FrameBase(const FrameBase& other) : Interface(), I_PlaneMemoryPolicy(), m_core(other.m_core) {}

    FrameCore m_core;
};

} // namespace Private
} // namespace BufferApi
