#include "SetPrinter.h"

#include <SetApi/set/C_DataSetParameter.h>
#include <SetApi/set/C_SetUtilities.h>
#include <SetApi/set/SetTypeIdentifiers.h>
#include <SetApi/stream/LoadSaveReaderConfiguration.h>
#include <SetApi/stream/StreamSet.h>

#include <StreamIO/I_ScalarFieldReader.h>

#include <RTE/Exception.h>
#include <RTE/PluginFactory.h>

#include <QFileInfo>

#include <iomanip>
#include <memory>
#include <sstream>

namespace SetApiTool {

namespace {

void PrintParameters(std::ostream& out, const std::string& setName, const std::string& indent)
{
    SetApi::C_DataSetParameter parameters;
    if (!SetApi::C_SetUtilities::ReadSetGroupVariables(setName + ".set", parameters)) {
        out << indent << "parameters: (no set file)\n";
        return;
    }
    out << indent << "parameters:\n";
    for (unsigned long long i = 0; i < parameters.GetSize(); ++i) {
        const std::string name = parameters.GetName(static_cast<unsigned>(i));
        out << indent << "  " << std::left << std::setw(16) << name << " = ";
        if (parameters.IsString(name)) {
            std::string value;
            parameters.GetValue(name, value);
            out << '"' << value << '"';
        } else if (parameters.IsDouble(name)) {
            double value = 0;
            parameters.GetValue(name, value);
            out << value;
        } else {
            int value = 0;
            parameters.GetValue(name, value);
            out << value;
        }
        out << '\n';
    }
}

// The name of the scalar field a stream holds, read through its reader; empty when it cannot be read.
std::string ScalarFieldName(const SetApi::Private::C_ReaderInfo& info, const QString& destination)
{
    try {
        std::unique_ptr<RTE::I_Plugin> plugin =
            RTE::C_PluginFactory::GetInstance().CreateUnique(info.Type.toStdString(), info.Name.toStdString());
        auto* reader = dynamic_cast<SetApi::I_ScalarFieldReader*>(plugin.get());
        if (reader == nullptr)
            return std::string();
        reader->Open(destination);
        return reader->GetNameOfScalarField().toStdString();
    } catch (const RTE::Exception&) {
        return std::string();
    }
}

std::string FramesOf(const SetApi::C_ContentPurpose& purpose)
{
    if (!purpose.IsAssociatedToFrames())
        return std::string();
    if (purpose.StartFrame() == purpose.EndFrame())
        return "frame " + std::to_string(purpose.StartFrame());
    return "frames " + std::to_string(purpose.StartFrame()) + ".." + std::to_string(purpose.EndFrame());
}

} // namespace

std::string DescribeCorruption(const SetApi::Private::StreamSet& set)
{
    if (!set.IsCorrupt())
        return "intact";
    const SetApi::Private::StreamSetReader::CorruptionStates& states = set.GetCorruptionStates();
    std::vector<std::string> problems;
    if (states.minImageCount != states.maxImageCount)
        problems.push_back("frame streams end at " + std::to_string(states.minImageCount) + ".." +
                           std::to_string(states.maxImageCount) + " images");
    if (states.globalAttributesCorrupt)
        problems.push_back("global attributes missing");
    for (const std::uint32_t frame : states.corruptAttributeFrames)
        problems.push_back("attributes of frame " + std::to_string(frame) + " missing");
    if (states.masksCorrupt)
        problems.push_back("masks missing");
    if (states.scalarFieldsCorrupt)
        problems.push_back("scalar fields missing");
    if (states.scalesCorrupt)
        problems.push_back("scales missing");
    if (states.tracesCorrupt)
        problems.push_back("traces missing");
    std::string text = "corrupt: ";
    for (std::size_t i = 0; i < problems.size(); ++i)
        text += (i == 0 ? "" : ", ") + problems[i];
    return text;
}

void PrintStreamSet(std::ostream& out, const SetApi::Private::StreamSet& set, const std::string& indent)
{
    const QString configurationPath = SetApi::GetStreamSetConfigurationName(QString::fromStdString(set.GetName()));
    const SetApi::Private::C_ReaderConfiguration configuration =
        SetApi::Private::LoadReaderConfiguration(configurationPath);
    const QString folder = QFileInfo(configurationPath).absolutePath();
    const std::vector<std::uint32_t>& imageCounts = set.GetCorruptionStates().imageCounts;
    std::size_t frameStream = 0;

    out << indent << "streams:    " << configuration.GetReaderCount() << '\n';
    for (unsigned i = 0; i < configuration.GetReaderCount(); ++i) {
        const SetApi::Private::C_ReaderInfo& info = configuration.GetReader(i);
        const SetApi::C_ContentPurpose& purpose = info.ContentPurpose;
        const std::string type = info.Type.toStdString();
        std::string kind;
        std::string images;
        if (type == "Core.Set.Recording.FrameReader") {
            kind = "frame";
            if (frameStream < imageCounts.size())
                images = std::to_string(imageCounts[frameStream++]) + " images";
        } else if (type == "Core.Set.Recording.MaskFrameReader") {
            kind = "mask";
        } else if (type == "Core.Set.Recording.ScalarFieldFrameReader") {
            const std::string name = ScalarFieldName(info, folder + QLatin1Char('/') + info.FilePrefix);
            kind = name.empty() ? "scalar field (unreadable)" : "scalar field \"" + name + "\"";
        } else if (type == "Core.Set.Recording.ScaleReader") {
            kind = "scales";
        } else if (type == "Core.Set.Recording.AttributeReader") {
            kind = purpose.IsAssociatedToFrames() ? "attributes (frame " + std::to_string(purpose.StartFrame()) + ")"
                                                  : "attributes (global)";
        } else if (type == "Core.Set.Recording.TraceReader") {
            kind = "traces";
        } else {
            kind = "unknown (" + type + ")";
        }
        std::ostringstream line;
        line << "  " << std::left << std::setw(20) << info.FilePrefix.toStdString() << ' ' << std::setw(28) << kind
             << ' ' << std::setw(12) << FramesOf(purpose) << ' ' << images;
        std::string text = line.str();
        text.erase(text.find_last_not_of(' ') + 1);
        out << indent << text << '\n';
    }
    out << indent << "images:     " << set.GetSize() << '\n';
    out << indent << "state:      " << DescribeState(set) << '\n';
}

std::string DescribeState(const SetApi::Private::StreamSet& set)
{
    if (!set.HasBeenRepaired())
        return DescribeCorruption(set);
    const std::string repaired = "repaired (" + set.GetDetailsOfRepair().toStdString() + ")";
    // A repair cannot bring back images a camera never wrote: such a set stays corrupt.
    return set.IsCorrupt() ? DescribeCorruption(set) + "; " + repaired : repaired;
}

void PrintSet(std::ostream& out, const SetApi::I_Set& set, const std::string& indent)
{
    unsigned count = 0, first = 0, last = 0;
    set.GetInfo(count, first, last);
    const unsigned type = set.GetSetType();
    out << indent << "name:       " << set.GetName() << '\n'
        << indent << "title:      " << set.GetTitle().toStdString() << '\n'
        << indent << "identifier: " << set.GetTypeIdentifier().toStdString() << '\n'
        << indent << "type:       " << SetApi::GetSetTypeDisplayName(type).toStdString() << " (0x" << std::hex
        << type << std::dec << ")\n"
        << indent << "size:       " << set.GetSize();
    if (count > 0)
        out << " (indices " << first << " to " << last << ")";
    out << '\n';
    const std::string source = set.GetSourceSet();
    if (!source.empty())
        out << indent << "source set: " << source << '\n';
    PrintParameters(out, set.GetName(), indent);
}

} // namespace SetApiTool
