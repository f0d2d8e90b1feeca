#include <SetApi/set/SetTypeIdentifiers.h>

#include <SetApi/factory/C_SetFactory.h>

#include <RTE/FileSystem.h>

#include <iterator>

namespace SetApi {
namespace TypeIdentifiers {

const QString Recording = QStringLiteral("SET_TYPE_ID_RECORDING");
const QString Vector = QStringLiteral("SET_TYPE_ID_VECTOR");
const QString Plot = QStringLiteral("SET_TYPE_ID_PLOT");
const QString Folder = QStringLiteral("SET_TYPE_ID_FOLDER");
const QString Properties = QStringLiteral("SET_TYPE_ID_PROPERTIES");
const QString Calibration = QStringLiteral("SET_TYPE_ID_CALIBRATION");
const QString Surface = QStringLiteral("SET_TYPE_ID_SURFACE");
const QString MultiCycleRecording = QStringLiteral("SET_TYPE_ID_MULTI_CYCLE_RECORDING");
const QString ParticleField = QStringLiteral("ParticleField");
const QString Image = QStringLiteral("SET_TYPE_ID_IMAGE");
const QString TomoSet = QStringLiteral("TomoSet");
const QString PerspectiveCalibrationSet = QStringLiteral("PerspectiveCalibrationSet");
const QString DropliteShadowSet = QStringLiteral("DropliteShadowSet");
const QString IcosSet = QStringLiteral("IcosSet");
const QString SprayGeoSet = QStringLiteral("SprayGeoSet");
const QString StatisticalResult = QStringLiteral("StatisticalResult");
const QString FuelSenorEngineParameter = QStringLiteral("FuelSenorEngineParameter");
const QString GenericCalibration = QStringLiteral("GenericCalibration");
const QString ExiplexCrossTalk = QStringLiteral("ExiplexCrossTalk");
const QString RamanDBView = QStringLiteral("RamanDBView");
const QString RamanRFView = QStringLiteral("RamanRFView");
const QString RamanTMView = QStringLiteral("RamanTMView");
const QString RamanProcView = QStringLiteral("RamanProcView");
const QString IMIResultView = QStringLiteral("IMIResultView");

const QString* All(unsigned& count)
{
    static const QString all[] = {Recording, Vector, Plot, Folder, Properties, Calibration, Surface,
                                  MultiCycleRecording, ParticleField, Image, TomoSet,
                                  PerspectiveCalibrationSet, DropliteShadowSet, IcosSet, SprayGeoSet,
                                  StatisticalResult, FuelSenorEngineParameter, GenericCalibration,
                                  ExiplexCrossTalk, RamanDBView, RamanRFView, RamanTMView, RamanProcView,
                                  IMIResultView};
    count = static_cast<unsigned>(std::size(all));
    return all;
}

} // namespace TypeIdentifiers

QString GetTypeIdentifierForSetType(unsigned setType)
{
    struct Rule {
        unsigned bits;
        const QString& identifier;
    };
    static const Rule rules[] = {
        {I_Set::SET_TYPE_RECORDING, TypeIdentifiers::Recording},
        {I_Set::SET_TYPE_VECTOR, TypeIdentifiers::Vector},
        {I_Set::SET_TYPE_PROFILE, TypeIdentifiers::Plot},
        {I_Set::SET_TYPE_FOLDER, TypeIdentifiers::Folder},
        {I_Set::SET_TYPE_PROPERTIES, TypeIdentifiers::Properties},
        {I_Set::SET_TYPE_CALIBRATION, TypeIdentifiers::Calibration},
        {I_Set::SET_TYPE_SURFACE, TypeIdentifiers::Surface},
        {I_Set::SET_TYPE_RECORDING_LOOP | I_Set::SET_TYPE_HYPERSAMPLED_RECORDING,
         TypeIdentifiers::MultiCycleRecording},
        {I_Set::SET_TYPE_PARTICLE_FIELD, TypeIdentifiers::ParticleField},
    };
    for (const Rule& rule : rules)
        if (setType & rule.bits)
            return rule.identifier;
    return TypeIdentifiers::Image;
}

QString GetSetTypeDisplayName(unsigned setType)
{
    struct Rule {
        unsigned bit;
        const char* name;
    };
    static const Rule rules[] = {
        {I_Set::SET_TYPE_IMAGE, "Image"},
        {I_Set::SET_TYPE_VECTOR, "Vector"},
        {I_Set::SET_TYPE_PROFILE, "Profile"},
        {I_Set::SET_TYPE_SCALAR, "Scalar"},
        {I_Set::SET_TYPE_RECORDING, "Recording"},
        {I_Set::SET_TYPE_PROPERTIES, "Properties"},
        {I_Set::SET_TYPE_FOLDER, "Folder"},
        {I_Set::SET_TYPE_HIDDEN, "Hidden"},
        {I_Set::SET_TYPE_SURFACE, "Surface"},
        {I_Set::SET_TYPE_CALIBRATION, "Calibration"},
        {I_Set::SET_TYPE_GEOMETRY, "Geometry"},
        {I_Set::SET_TYPE_INTENSITY_CALIBRATION, "Intensity Calibration"},
        {I_Set::SET_TYPE_INTENSITY_CALIBRATION_HISTORY, "Intensity Calibration History"},
        {I_Set::SET_TYPE_CALIBRATION_DATA, "Calibration Data"},
        {I_Set::SET_TYPE_ACTIVE_INTENSITY_CALIBRATION, "Active Intensity Calibration"},
        {I_Set::SET_TYPE_RECORDING_LOOP, "Recording loop"},
        {I_Set::SET_TYPE_HYPERSAMPLED_RECORDING, "Hypersampled Recording"},
        {I_Set::SET_TYPE_PARTICLE_FIELD, "Particle Field"},
    };
    for (const Rule& rule : rules)
        if (setType & rule.bit)
            return QString::fromLatin1(rule.name);
    return QStringLiteral("?");
}

QString GetTypeNameOfSet(const QString& path)
{
    if (!RTE::FileSystem::Exists(path))
        return QString();
    const std::shared_ptr<I_Set> set = C_SetFactory::Instance().Open(path.toStdString());
    return GetSetTypeDisplayName(set->GetSetType());
}

} // namespace SetApi
