#pragma once
// What a buffer looks like without its pixels: read from a buffer file's head alone, so that a
// caller can choose the typed view of a set before any buffer is loaded.

#include <BufferApi/DataType.h>
#include <DataObjects/Export.h>

namespace BufferApi {
class I_Buffer;
}

namespace DataObjects {

struct DATAOBJECTS_API BufferStructureInformation {
    unsigned frameCount = 0; // frames in the buffer
    unsigned width = 0;      // of frame 0
    unsigned height = 0;     // of frame 0
    unsigned depth = 0;      // planes per component of frame 0
    BufferApi::E_DataType dataType = BufferApi::DATATYPE_UNKNOWN; // element type of frame 0
    bool isImage = false;     // frame 0 is an image frame
    bool isVector = false;    // frame 0 is a 2-component vector frame
    bool isVector3C = false;  // frame 0 is a 3-component vector frame
    bool hasMask = false;     // frame 0 carries a mask component
    int vectorGridSize = 0;   // grid spacing of a vector frame, in pixels

    bool operator==(const BufferStructureInformation& other) const;
    bool operator!=(const BufferStructureInformation& other) const { return !(*this == other); }
};

// The structure of a buffer in memory, loaded or a head buffer (frames with shape but no plane
// memory): frame count, shape, element type, kind and mask of frame 0, the grid size of a vector
// frame 0. A buffer without frames gives all zeros.
DATAOBJECTS_API BufferStructureInformation GetBufferStructureInformationForBuffer(const BufferApi::I_Buffer& buffer);

// Whether the buffer holds an x-y plot in the trace form: at least one frame, and every frame an
// image frame of height 2 and depth 1 with float elements (row 0 the values, row 1 their
// positions). The older form of two frames of height 1 is not one.
DATAOBJECTS_API bool IsXYPlotBuffer(const BufferApi::I_Buffer& buffer);

} // namespace DataObjects
