#pragma once
// One frame of a buffer: a name, width, height and depth, an element type, named components with
// one plane per depth, a scale per axis, attributes and a settings text. The derived kinds
// (I_FrameImage, I_FrameVector, I_FrameVector3C) are told apart by dynamic_cast or GetKind().

#include <BufferApi/AttributeStore.h>
#include <BufferApi/DataType.h>
#include <BufferApi/Export.h>

#include <memory>
#include <string>

namespace BufferApi {

class I_Component;
class I_PlaneBase;
class I_Scale;

// The axes that carry a scale. Images use x, y and intensity; z and t are for volumes and series.
enum E_ScaleType { SCALE_X = 0, SCALE_Y = 1, SCALE_Z = 2, SCALE_T = 3, SCALE_I = 4 };
constexpr unsigned SCALE_TYPE_COUNT = 5;

// The kind of a frame, as stored in buffer files.
enum class E_FrameKind : unsigned char { Image = 1, Vector = 2, Vector3C = 3 };

class BUFFERAPI_API I_Frame {
public:
    // The component of the mask: byte planes, non-zero meaning the pixel is valid.
    static const char* const COMPONENT_MASK; // "MASK"

    virtual ~I_Frame();
    virtual E_FrameKind GetKind() const = 0;
    virtual const std::string& GetName() const = 0;
    virtual void SetName(const std::string& name) = 0;
    virtual unsigned GetWidth() const = 0;
    virtual unsigned GetHeight() const = 0;
    virtual unsigned GetDepth() const = 0;
    // Element type of the frame's data (pixels, vector components).
    virtual E_DataType GetDataType() const = 0;
    // False for a frame of a head buffer (GetImportInformation): shape without memory.
    virtual bool HasData() const = 0;

    virtual unsigned GetComponentCount() const = 0;
    // Component number `index` in the order of adding; another index raises RTE::VerificationFailed.
    virtual I_Component* GetComponentAt(unsigned index) = 0;
    virtual const I_Component* GetComponentAt(unsigned index) const = 0;
    // The component of that name, or null.
    virtual I_Component* GetComponent(const std::string& name) = 0;
    virtual const I_Component* GetComponent(const std::string& name) const = 0;
    // Adds a component of GetDepth() planes of the frame's size, zero-filled (without memory in a
    // head frame). A name already present, an empty name or an unknown type raises
    // RTE::VerificationFailed.
    virtual I_Component* AddComponent(const std::string& name, E_DataType type) = 0;
    // Whether there was one to remove.
    virtual bool RemoveComponent(const std::string& name) = 0;

    // The scale of an axis; never null: an axis never set has factor 1, offset 0 and no texts.
    virtual const I_Scale& GetScale(E_ScaleType axis) const = 0;
    // Null restores the identity scale.
    virtual void SetScale(E_ScaleType axis, std::unique_ptr<I_Scale> scale) = 0;

    virtual AttributeStore& GetAttributeStore() = 0;
    virtual const AttributeStore& GetAttributeStore() const = 0;

    // A free text the producer keeps with the frame (camera settings, say); empty by default.
    virtual const std::string& GetSettings() const = 0;
    virtual void SetSettings(const std::string& settings) = 0;

    // A deep copy: components with their planes, scales, attributes, name and settings.
    virtual std::unique_ptr<I_Frame> Clone() const = 0;

    // Convenience: the mask component, or null.
    I_Component* GetMask() { return GetComponent(COMPONENT_MASK); }
    const I_Component* GetMask() const { return GetComponent(COMPONENT_MASK); }
    bool HasMask() const { return GetMask() != nullptr; }
    // Adds the mask component (byte planes), set to 1 (all valid), if the frame has none; returns it.
    I_Component* AddMask();
};

// A frame of pixels: component COMPONENT_PIXEL of the frame's element type.
class BUFFERAPI_API I_FrameImage : public I_Frame {
public:
    static const char* const COMPONENT_PIXEL; // "PIXEL"
    // Plane `plane` of the pixel component.
    I_PlaneBase* GetPixelPlane(unsigned plane);
    const I_PlaneBase* GetPixelPlane(unsigned plane) const;
};

// A 2-component vector field on a grid: components "U" and "V" of the frame's element type; the
// grid spacing in pixels of the image the field was computed from.
class BUFFERAPI_API I_FrameVector : public I_Frame {
public:
    static const char* const COMPONENT_U; // "U"
    static const char* const COMPONENT_V; // "V"
    virtual unsigned GetGridSize() const = 0;
    virtual void SetGridSize(unsigned gridSize) = 0;
};

// A 3-component vector field: components "U", "V" and "W". Not an I_FrameVector.
class BUFFERAPI_API I_FrameVector3C : public I_Frame {
public:
    static const char* const COMPONENT_U; // "U"
    static const char* const COMPONENT_V; // "V"
    static const char* const COMPONENT_W; // "W"
    virtual unsigned GetGridSize() const = 0;
    virtual void SetGridSize(unsigned gridSize) = 0;
};

} // namespace BufferApi
