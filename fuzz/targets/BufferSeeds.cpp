#include "BufferSeeds.h"

#include <BufferApi/AttributeStore.h>
#include <BufferApi/Creation.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>

#include <cstdint>
#include <cstring>

namespace SetApiFuzz {

using namespace BufferApi;

namespace {

// Fills every plane of the frame with a smooth ramp, so that packing has something to do.
void Fill(I_Frame& frame)
{
    for (unsigned c = 0; c < frame.GetComponentCount(); ++c) {
        I_Component* component = frame.GetComponentAt(c);
        for (unsigned p = 0; p < component->GetPlaneCount(); ++p) {
            I_PlaneBase* plane = component->GetPlane(p);
            const std::size_t elements = std::size_t(plane->GetWidth()) * plane->GetHeight();
            auto* bytes = static_cast<std::uint8_t*>(plane->GetData());
            const std::size_t size = GetDataTypeSize(plane->GetDataType());
            for (std::size_t i = 0; i < elements * size; ++i)
                bytes[i] = std::uint8_t((i / size + c * 3 + p) % 7);
        }
    }
}

} // namespace

std::vector<std::unique_ptr<I_Buffer>> SmallBuffers()
{
    std::vector<std::unique_ptr<I_Buffer>> buffers;

    std::unique_ptr<I_Buffer> image(CreateBuffer());
    image->GetAttributeStore().SetString("Comment", "two frames");
    const double times[3] = {0.5, -1.0, 1e300};
    image->GetAttributeStore().SetArray("Times", 3, DATATYPE_DOUBLE, times);
    for (unsigned f = 0; f < 2; ++f) {
        I_Frame* frame = image->AddFrame(std::unique_ptr<I_Frame>(CreateImageFrame(DATATYPE_WORD, 8, 4, 1)));
        frame->SetName("Camera " + std::to_string(f + 1));
        frame->SetSettings("<Settings/>");
        const std::uint16_t window[2] = {std::uint16_t(f), 4};
        frame->GetAttributeStore().SetArray("Window", 2, DATATYPE_WORD, window);
        const float gain = 1.5f;
        frame->GetAttributeStore().SetArray("Gain", 1, DATATYPE_FLOAT, &gain);
        const std::int32_t counts[2] = {-3, 70000};
        frame->GetAttributeStore().SetArray("Counts", 2, DATATYPE_INT32, counts);
        Fill(*frame);
    }
    buffers.push_back(std::move(image));

    std::unique_ptr<I_Buffer> deep(CreateBuffer());
    I_Frame* deepFrame = deep->AddFrame(std::unique_ptr<I_Frame>(CreateImageFrame(DATATYPE_FLOAT, 3, 2, 2)));
    deepFrame->AddComponent("MASK", DATATYPE_BYTE);
    Fill(*deepFrame);
    buffers.push_back(std::move(deep));

    std::unique_ptr<I_Buffer> vectors(CreateBuffer());
    Fill(*vectors->AddFrame(std::unique_ptr<I_Frame>(CreateVectorFrame(DATATYPE_FLOAT, 4, 3, 1, 16))));
    Fill(*vectors->AddFrame(std::unique_ptr<I_Frame>(CreateVector3CFrame(DATATYPE_DOUBLE, 2, 2, 1, 8))));
    buffers.push_back(std::move(vectors));
    return buffers;
}

} // namespace SetApiFuzz
