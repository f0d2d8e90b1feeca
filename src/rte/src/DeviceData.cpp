#include <RTE/DeviceData.h>

namespace RTE {
namespace DeviceData {

const char* const DEVDATANAME = "DevDataName";
const char* const DEVDATASOURCE = "DevDataSource";
const char* const DEVDATATRACE = "DevDataTrace";
const char* const DEVDATASCALEI = "DevDataScaleI";
const char* const DEVDATASCALEX = "DevDataScaleX";

} // namespace DeviceData
} // namespace RTE
