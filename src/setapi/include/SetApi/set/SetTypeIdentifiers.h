#pragma once
// The type identifiers: names of kinds of set in the factory's registry and under the key
// "SetIdentifier" of a set file. Several belong to sets that other programs write or to view sets
// of the host application; this library only holds them and compares them.

#include <SetApi/Export.h>
#include <SetApi/set/I_Set.h>

#include <QString>

namespace SetApi {
namespace TypeIdentifiers {

SETAPI_API extern const QString Recording;          // "SET_TYPE_ID_RECORDING"
SETAPI_API extern const QString Vector;             // "SET_TYPE_ID_VECTOR"
SETAPI_API extern const QString Plot;               // "SET_TYPE_ID_PLOT"
SETAPI_API extern const QString Folder;             // "SET_TYPE_ID_FOLDER"
SETAPI_API extern const QString Properties;         // "SET_TYPE_ID_PROPERTIES"
SETAPI_API extern const QString Calibration;        // "SET_TYPE_ID_CALIBRATION"
SETAPI_API extern const QString Surface;            // "SET_TYPE_ID_SURFACE"
SETAPI_API extern const QString MultiCycleRecording; // "SET_TYPE_ID_MULTI_CYCLE_RECORDING"
SETAPI_API extern const QString ParticleField;      // "ParticleField"
SETAPI_API extern const QString Image;              // "SET_TYPE_ID_IMAGE"
SETAPI_API extern const QString TomoSet;            // "TomoSet"
SETAPI_API extern const QString PerspectiveCalibrationSet;
SETAPI_API extern const QString DropliteShadowSet;
SETAPI_API extern const QString IcosSet;
SETAPI_API extern const QString SprayGeoSet;
SETAPI_API extern const QString StatisticalResult;
SETAPI_API extern const QString FuelSenorEngineParameter;
SETAPI_API extern const QString GenericCalibration;
SETAPI_API extern const QString ExiplexCrossTalk;
SETAPI_API extern const QString RamanDBView;
SETAPI_API extern const QString RamanRFView;
SETAPI_API extern const QString RamanTMView;
SETAPI_API extern const QString RamanProcView;
SETAPI_API extern const QString IMIResultView;

// All 24, in the order above.
SETAPI_API const QString* All(unsigned& count);

} // namespace TypeIdentifiers

// The identifier a file-based set reports for its type. Bits are tested in a fixed order, the first
// hit deciding: recording, vector, profile, folder, properties, calibration, surface, recording
// loop or hypersampled recording, particle field; anything else is an image set.
SETAPI_API QString GetTypeIdentifierForSetType(unsigned setType);

// The display name of a type ("Image", "Vector", ..., "?" when no known bit is set). The bits are
// tested in another order than for the identifier, so a type with both the vector and the
// recording bit is a "Vector" here but "SET_TYPE_ID_RECORDING" above; both orders are kept.
SETAPI_API QString GetSetTypeDisplayName(unsigned setType);

// The display name of the set at a path: empty if the path does not exist, otherwise the set is
// opened through the factory and its type named as GetSetTypeDisplayName does.
SETAPI_API QString GetTypeNameOfSet(const QString& path);

} // namespace SetApi
