#include "BufferComparison.h"
#include "PlaneView.h"

#include <BufferApi/AttributeStore.h>
#include <BufferApi/I_Attribute.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>
#include <BufferApi/I_Scale.h>

#include <cstring>
#include <sstream>

namespace SetApiTool {

namespace {

using namespace BufferApi;

bool SameBits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

std::string Describe(const I_Scale& scale)
{
    std::ostringstream text;
    text.precision(17);
    text << scale.GetFactor() << " * x + " << scale.GetOffset() << " \"" << scale.GetUnit() << "\" \""
         << scale.GetDescription() << '"';
    return text.str();
}

std::string ScaleDifference(const I_Scale& expected, const I_Scale& actual)
{
    if (SameBits(expected.GetFactor(), actual.GetFactor()) && SameBits(expected.GetOffset(), actual.GetOffset())
        && expected.GetUnit() == actual.GetUnit() && expected.GetDescription() == actual.GetDescription())
        return {};
    return Describe(actual) + " instead of " + Describe(expected);
}

std::string AttributeDifference(const AttributeStore& expected, const AttributeStore& actual)
{
    if (expected.GetCount() != actual.GetCount())
        return std::to_string(actual.GetCount()) + " attributes instead of " + std::to_string(expected.GetCount());
    for (std::size_t i = 0; i < expected.GetCount(); ++i) {
        const I_AttributeBase& e = expected.At(i);
        const I_AttributeBase& a = actual.At(i);
        const std::string where = "attribute " + std::to_string(i) + " \"" + e.GetName() + "\"";
        if (e.GetName() != a.GetName())
            return where + " is named \"" + a.GetName() + "\"";
        if (e.IsString() != a.IsString())
            return where + " changed between text and array";
        if (e.IsString()) {
            const auto* es = dynamic_cast<const I_AttributeString*>(&e);
            const auto* as = dynamic_cast<const I_AttributeString*>(&a);
            if (!es || !as || es->GetValue() != as->GetValue())
                return where + " has another text";
            continue;
        }
        const auto* ep = dynamic_cast<const I_AttributePlane*>(&e);
        const auto* ap = dynamic_cast<const I_AttributePlane*>(&a);
        if (!ep || !ap)
            return where + " is of an unknown kind";
        if (ep->GetDataType() != ap->GetDataType() || ep->GetCount() != ap->GetCount())
            return where + " has another type or length";
        const std::size_t bytes = std::size_t(ep->GetCount()) * GetDataTypeSize(ep->GetDataType());
        if (bytes > 0 && (!ep->GetData() || !ap->GetData() || std::memcmp(ep->GetData(), ap->GetData(), bytes) != 0))
            return where + " has other values";
    }
    return {};
}

std::string PlaneDifference(const I_PlaneBase& expected, const I_PlaneBase& actual)
{
    if (expected.GetDataType() != actual.GetDataType() || expected.GetWidth() != actual.GetWidth()
        || expected.GetHeight() != actual.GetHeight())
        return "has another type or size";
    if (expected.HasData() != actual.HasData())
        return "has memory on one side only";
    if (!expected.HasData())
        return {};
    const auto* e = static_cast<const unsigned char*>(expected.GetData());
    const auto* a = static_cast<const unsigned char*>(actual.GetData());
    const std::size_t bytes = expected.GetByteSize();
    if (std::memcmp(e, a, bytes) == 0)
        return {};
    std::size_t i = 0;
    while (e[i] == a[i])
        ++i;
    const std::size_t element = i / expected.GetElementSize();
    return "differs first at pixel (" + std::to_string(element % expected.GetWidth()) + ", "
           + std::to_string(element / expected.GetWidth()) + ")";
}

std::string ComponentDifference(const I_Component& expected, const I_Component& actual)
{
    if (expected.GetName() != actual.GetName())
        return "is named \"" + actual.GetName() + "\"";
    if (expected.GetDataType() != actual.GetDataType())
        return "is of type " + DataTypeName(actual.GetDataType()) + " instead of " + DataTypeName(expected.GetDataType());
    if (expected.GetPlaneCount() != actual.GetPlaneCount())
        return "has " + std::to_string(actual.GetPlaneCount()) + " planes instead of "
               + std::to_string(expected.GetPlaneCount());
    const I_Scale* es = expected.GetScale();
    const I_Scale* as = actual.GetScale();
    if ((es == nullptr) != (as == nullptr))
        return es ? "has lost its value scale" : "has gained a value scale";
    if (es) {
        const std::string difference = ScaleDifference(*es, *as);
        if (!difference.empty())
            return "value scale is " + difference;
    }
    for (unsigned p = 0; p < expected.GetPlaneCount(); ++p) {
        const std::string difference = PlaneDifference(*expected.GetPlane(p), *actual.GetPlane(p));
        if (!difference.empty())
            return "plane " + std::to_string(p) + " " + difference;
    }
    return {};
}

template <class VectorFrame>
bool SameGridSize(const I_Frame& expected, const I_Frame& actual)
{
    const auto* e = dynamic_cast<const VectorFrame*>(&expected);
    const auto* a = dynamic_cast<const VectorFrame*>(&actual);
    return !e || !a || e->GetGridSize() == a->GetGridSize();
}

std::string FrameDifference(const I_Frame& expected, const I_Frame& actual)
{
    if (expected.GetKind() != actual.GetKind())
        return "is of another kind";
    if (expected.GetName() != actual.GetName())
        return "is named \"" + actual.GetName() + "\" instead of \"" + expected.GetName() + "\"";
    if (expected.GetWidth() != actual.GetWidth() || expected.GetHeight() != actual.GetHeight()
        || expected.GetDepth() != actual.GetDepth())
        return "has another size";
    if (expected.GetDataType() != actual.GetDataType())
        return "is of type " + DataTypeName(actual.GetDataType()) + " instead of " + DataTypeName(expected.GetDataType());
    if (expected.GetSettings() != actual.GetSettings())
        return "has another settings text";
    if (!SameGridSize<I_FrameVector>(expected, actual) || !SameGridSize<I_FrameVector3C>(expected, actual))
        return "has another grid size";
    static const char* const axes[SCALE_TYPE_COUNT] = {"x", "y", "z", "t", "intensity"};
    for (unsigned axis = 0; axis < SCALE_TYPE_COUNT; ++axis) {
        const std::string difference = ScaleDifference(expected.GetScale(E_ScaleType(axis)),
                                                       actual.GetScale(E_ScaleType(axis)));
        if (!difference.empty())
            return std::string(axes[axis]) + " scale is " + difference;
    }
    std::string difference = AttributeDifference(expected.GetAttributeStore(), actual.GetAttributeStore());
    if (!difference.empty())
        return difference;
    if (expected.GetComponentCount() != actual.GetComponentCount())
        return "has " + std::to_string(actual.GetComponentCount()) + " components instead of "
               + std::to_string(expected.GetComponentCount());
    for (unsigned c = 0; c < expected.GetComponentCount(); ++c) {
        difference = ComponentDifference(*expected.GetComponentAt(c), *actual.GetComponentAt(c));
        if (!difference.empty())
            return "component \"" + expected.GetComponentAt(c)->GetName() + "\" " + difference;
    }
    return {};
}

} // namespace

std::string FirstDifference(const I_Buffer& expected, const I_Buffer& actual)
{
    if (expected.GetNumberOfFrames() != actual.GetNumberOfFrames())
        return std::to_string(actual.GetNumberOfFrames()) + " frames instead of "
               + std::to_string(expected.GetNumberOfFrames());
    for (unsigned f = 0; f < expected.GetNumberOfFrames(); ++f) {
        const std::string difference = FrameDifference(*expected.GetFrame(f), *actual.GetFrame(f));
        if (!difference.empty())
            return "frame " + std::to_string(f) + " " + difference;
    }
    const std::string difference = AttributeDifference(expected.GetAttributeStore(), actual.GetAttributeStore());
    return difference.empty() ? std::string() : "buffer " + difference;
}

} // namespace SetApiTool
