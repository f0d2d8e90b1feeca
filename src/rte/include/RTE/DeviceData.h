#pragma once
// Attribute name stems for analogue device data stored with a buffer. The attribute of trace i is
// the stem followed by i in decimal, e.g. DEVDATANAME + "0".

#include <RTE/Export.h>

namespace RTE {
namespace DeviceData {

// Name of the device channel of a trace.
extern RTE_API const char* const DEVDATANAME;
// Number of traces stored with the buffer.
extern RTE_API const char* const DEVDATASOURCE;
// The trace values.
extern RTE_API const char* const DEVDATATRACE;
// Scale of the trace values (intensity axis).
extern RTE_API const char* const DEVDATASCALEI;
// Scale of the trace's time or angle axis.
extern RTE_API const char* const DEVDATASCALEX;

} // namespace DeviceData
} // namespace RTE
