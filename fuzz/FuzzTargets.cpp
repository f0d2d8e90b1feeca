#include "FuzzTargets.h"

namespace SetApiFuzz {

const std::vector<Target>& AllTargets()
{
    static const std::vector<Target> targets = {
        {"set_file", RunSetFile, SeedsSetFile},
        {"parameter_tree", RunParameterTree, SeedsParameterTree},
        {"settings_document", RunSettingsDocument, SeedsSettingsDocument},
        {"buffer_head", RunBufferHead, SeedsBufferHead},
        {"buffer_attributes", RunBufferAttributes, SeedsBufferAttributes},
        {"packed_plane", RunPackedPlane, SeedsPackedPlane},
        {"buffer_import", RunBufferImport, SeedsBufferImport},
        {"image_stream", RunImageStream, SeedsImageStream},
        {"mask_stream", RunMaskStream, SeedsMaskStream},
        {"scalar_field_stream", RunScalarFieldStream, SeedsScalarFieldStream},
        {"attribute_stream", RunAttributeStream, SeedsAttributeStream},
        {"scale_stream", RunScaleStream, SeedsScaleStream},
        {"trace_stream", RunTraceStream, SeedsTraceStream},
        {"reader_configuration", RunReaderConfiguration, SeedsReaderConfiguration},
        {"stream_set", RunStreamSet, SeedsStreamSet},
    };
    return targets;
}

const Target* FindTarget(const std::string& name)
{
    for (const Target& target : AllTargets())
        if (name == target.name)
            return &target;
    return nullptr;
}

} // namespace SetApiFuzz
