#include "BufferPrinter.h"
#include "PlaneView.h"

#include <SetApi/set/I_FileBasedSet.h>

#include <BufferApi/BufferFile.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_Scale.h>
#include <BufferApi/TypedScalar.h>

#include <QFileInfo>

#include <algorithm>
#include <exception>
#include <memory>
#include <sstream>
#include <vector>

namespace SetApiTool {

namespace {

using namespace BufferApi;

// Attribute values can be long texts (a camera's settings); the overview shows their start on one line.
std::string Shorten(const std::string& text)
{
    constexpr std::size_t limit = 60;
    std::string line;
    for (char c : text)
        line += (c == '\n' || c == '\r' || c == '\t') ? ' ' : c;
    if (line.size() > limit) {
        std::size_t cut = limit;
        while (cut > 0 && (static_cast<unsigned char>(line[cut]) & 0xc0) == 0x80)
            --cut; // not inside a UTF-8 sequence
        line = line.substr(0, cut) + "...";
    }
    return line;
}

std::string KindName(const DataObjects::BufferStructureInformation& info)
{
    if (info.isImage)
        return "image";
    if (info.isVector)
        return "vector field (grid " + std::to_string(info.vectorGridSize) + ")";
    if (info.isVector3C)
        return "3-component vector field (grid " + std::to_string(info.vectorGridSize) + ")";
    return "unknown kind";
}

std::string KindName(const I_Frame& frame)
{
    switch (frame.GetKind()) {
    case E_FrameKind::Image: return "image";
    case E_FrameKind::Vector: return "vector field";
    case E_FrameKind::Vector3C: return "3-component vector field";
    }
    return "unknown kind";
}

std::string Describe(const I_Scale& scale)
{
    std::ostringstream text;
    text << scale.GetFactor() << " * v + " << scale.GetOffset();
    if (!scale.GetUnit().empty())
        text << " " << scale.GetUnit();
    if (!scale.GetDescription().empty())
        text << " \"" << scale.GetDescription() << '"';
    return text.str();
}

// Texts in quotes, numbers as they are (lists separated by ";").
void PrintAttributes(std::ostream& out, const DataObjects::C_Attributes& attributes, const std::string& indent)
{
    for (const DataObjects::C_Attribute& attribute : attributes.GetAttributes()) {
        const DataObjects::C_AttributeValue& value = attribute.GetValue();
        out << indent << attribute.GetName() << " = ";
        if (value.IsString())
            out << '"' << Shorten(value.ToString()) << "\"\n";
        else
            out << Shorten(value.ToString()) << '\n';
    }
}

void PrintFrame(std::ostream& out, const I_Frame& frame, unsigned number, const std::string& indent)
{
    out << indent << "frame " << number << " \"" << frame.GetName() << "\": " << frame.GetWidth() << " x "
        << frame.GetHeight() << " x " << frame.GetDepth() << ", " << DataTypeName(frame.GetDataType()) << ", "
        << KindName(frame) << (frame.HasMask() ? ", mask" : "") << '\n';
    // Typed scalars are shown under their own names, apart from the frame's other components.
    I_Frame& editable = const_cast<I_Frame&>(frame); // the typed-scalar view wants a mutable frame; nothing is changed
    std::vector<const I_PlaneBase*> scalarPlanes;
    std::ostringstream scalars;
    for (const std::string& name : GetNamesOfFrameBoundTypedScalars(&frame)) {
        C_TypedScalarFrame scalar(&editable, name);
        scalarPlanes.push_back(scalar.GetComponent(0));
        scalars << (scalarPlanes.size() > 1 ? ", " : " ") << name << " (" << DataTypeName(scalar.GetDataType()) << ", "
                << Describe(scalar.GetScale()) << ')';
    }
    out << indent << "  components:";
    bool first = true;
    for (unsigned c = 0; c < frame.GetComponentCount(); ++c) {
        const I_Component* component = frame.GetComponentAt(c);
        if (std::find(scalarPlanes.begin(), scalarPlanes.end(), component->GetPlane(0)) != scalarPlanes.end())
            continue;
        out << (first ? " " : ", ") << component->GetName() << " (" << DataTypeName(component->GetDataType());
        if (const I_Scale* scale = component->GetScale())
            out << ", " << Describe(*scale);
        out << ')';
        first = false;
    }
    out << '\n';
    if (!scalarPlanes.empty())
        out << indent << "  typed scalars:" << scalars.str() << '\n';
    static const char* const axes[SCALE_TYPE_COUNT] = {"x", "y", "z", "t", "intensity"};
    for (unsigned axis = 0; axis < SCALE_TYPE_COUNT; ++axis) {
        const I_Scale& scale = frame.GetScale(E_ScaleType(axis));
        const bool identity = scale.GetFactor() == 1.0 && scale.GetOffset() == 0.0 && scale.GetUnit().empty()
                              && scale.GetDescription().empty();
        if (!identity)
            out << indent << "  scale " << axes[axis] << ": " << Describe(scale) << '\n';
    }
}

// The frames of the head of the buffer file that holds the index, for sets of buffer files.
void PrintFrames(std::ostream& out, const SetApi::I_Set& set, unsigned index,
                 const DataObjects::GlobalAndFrameAttributes* attributes, const std::string& indent)
{
    const auto* fileBased = dynamic_cast<const SetApi::I_FileBasedSet*>(&set);
    if (!fileBased)
        return;
    const std::string path = fileBased->GetFileInfoForIndex(index).filePath().toStdString();
    unsigned frames = 0, width = 0, height = 0, depth = 0;
    const std::unique_ptr<I_Buffer> head(GetImportInformation(path, frames, width, height, depth, false));
    if (!head)
        return;
    for (unsigned f = 0; f < head->GetNumberOfFrames(); ++f) {
        PrintFrame(out, *head->GetFrame(f), f, indent);
        if (attributes && f < attributes->frames.size() && !attributes->frames[f].IsEmpty()) {
            out << indent << "  attributes:\n";
            PrintAttributes(out, attributes->frames[f], indent + "    ");
        }
    }
}

} // namespace

void PrintBuffers(std::ostream& out, const SetApi::I_Set& set, const std::string& indent)
{
    unsigned count = 0, first = 0, last = 0;
    set.GetInfo(count, first, last);
    if (count == 0) {
        out << indent << "buffers:    none\n";
        return;
    }
    out << indent << "buffers:    " << count << " (indices " << first << ".." << last << ")\n";

    DataObjects::BufferStructureInformation info;
    try {
        info = set.GetBufferStructureInformation(first);
    } catch (const std::exception& e) {
        out << indent << "buffer " << first << ":   cannot be read: " << e.what() << '\n';
        return;
    }
    out << indent << "buffer " << first << ":   " << info.frameCount << (info.frameCount == 1 ? " frame" : " frames")
        << " of " << info.width << " x " << info.height << " x " << info.depth << ", "
        << DataTypeName(info.dataType) << ", " << KindName(info) << (info.hasMask ? ", mask" : ", no mask") << '\n';

    // Attributes and frame details are extras: a set class that cannot tell them still gets the
    // structure above.
    DataObjects::GlobalAndFrameAttributes attributes;
    bool haveAttributes = false;
    try {
        attributes = set.GetAttributes(first);
        haveAttributes = true;
    } catch (const std::exception&) {
    }
    if (haveAttributes && !attributes.global.IsEmpty()) {
        out << indent << "  attributes:\n";
        PrintAttributes(out, attributes.global, indent + "    ");
    }
    try {
        PrintFrames(out, set, first, haveAttributes ? &attributes : nullptr, indent + "  ");
    } catch (const std::exception& e) {
        out << indent << "  frames: cannot be read: " << e.what() << '\n';
    }
}

} // namespace SetApiTool
