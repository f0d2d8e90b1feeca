#include <SetApi/stream/RepairCorruptStreamSet.h>

#include <SetApi/stream/LoadSaveReaderConfiguration.h>
#include <SetApi/stream/StreamSet.h>

#include <StreamIO/ContentPurpose.h>
#include <StreamIO/ReaderConfiguration.h>

#include <RTE/DateTime.h>
#include <RTE/Exception.h>

namespace SetApi {

RepairCorruptStreamSetDialog::~RepairCorruptStreamSetDialog() = default;

RepairCorruptStreamSetState RepairCorruptStreamSet(std::shared_ptr<I_Set> set, RepairCorruptStreamSetDialog& dialog)
{
    const std::shared_ptr<Private::StreamSet> streamSet = Private::CastToStreamSet(set);
    if (!streamSet || !streamSet->IsCorrupt())
        return RepairCorruptStreamSetState::NotCorrupt;

    const Private::StreamSetReader::CorruptionStates& states = streamSet->GetCorruptionStates();
    QStringList consequences;
    if (states.minImageCount != states.maxImageCount) {
        dialog.AddCorruption(QStringLiteral("Corrupt images"));
        consequences << QStringLiteral("Corrupt images: At least one image of the recording is missing. This can't be "
                                       "repaired. The number of available images is reduced to the minimum of %1 "
                                       "from %2 recorded images.")
                            .arg(states.minImageCount)
                            .arg(states.maxImageCount);
    }
    if (states.globalAttributesCorrupt) {
        dialog.AddCorruption(QStringLiteral("Corrupt global attributes"));
        consequences << QStringLiteral(
            "Corrupt global attributes: Repairing this set would remove all global attributes from the data.");
    }
    for (const std::uint32_t frame : states.corruptAttributeFrames) {
        dialog.AddCorruption(QStringLiteral("Corrupt attributes of frame %1").arg(frame));
        consequences << QStringLiteral("Corrupt attributes of frame %1: Repairing this set would remove all "
                                       "attributes of this frame from the data.")
                            .arg(frame);
    }
    if (states.scalesCorrupt) {
        dialog.AddCorruption(QStringLiteral("Corrupt scales"));
        consequences << QStringLiteral("Corrupt scales: Repairing would remove all scales from the data.");
    }
    if (states.tracesCorrupt) {
        dialog.AddCorruption(QStringLiteral("Corrupt traces"));
        consequences << QStringLiteral("Corrupt traces: Repairing would remove all AD traces from the data.");
    }

    dialog.SetConsequences(consequences);
    if (!dialog.ConfirmRepair())
        return RepairCorruptStreamSetState::RepairDeclined;
    try {
        streamSet->Repair();
    } catch (const RTE::FileWriteError& e) {
        dialog.ReportRepairFailure(streamSet->GetName(), e.message());
        return RepairCorruptStreamSetState::RepairFailed;
    }
    return RepairCorruptStreamSetState::Repaired;
}

bool IsStreamSet(std::shared_ptr<I_Set> set) { return Private::CastToStreamSet(std::move(set)) != nullptr; }

bool IsRepairedStreamSet(std::shared_ptr<I_Set> set)
{
    const std::shared_ptr<Private::StreamSet> streamSet = Private::CastToStreamSet(std::move(set));
    return streamSet && streamSet->HasBeenRepaired();
}

std::unique_ptr<AttributeWriter> AppendAttributesToStreamSet(I_Set* set, int frame)
{
    auto* streamSet = dynamic_cast<Private::StreamSet*>(set);
    RTE_VERIFY(streamSet != nullptr, "No stream set given.");
    const QString folder = QString::fromStdString(streamSet->GetName());
    const QString configurationPath = GetStreamSetConfigurationName(folder);
    Private::C_ReaderConfiguration configuration = Private::LoadReaderConfiguration(configurationPath);

    const QString time = QString::fromStdString(RTE::C_DateTime::Now()->ToString("yyyyddmm_HHMMSS"));
    const QString target = frame < 0 ? QStringLiteral("global") : QString::number(frame);
    const QString prefix = QStringLiteral("AppendedAttributes_%1_%2").arg(time, target);

    auto writer = std::make_unique<AttributeWriter>();
    writer->Open(folder + QLatin1Char('/') + prefix);
    const C_ContentPurpose purpose = frame < 0 ? C_ContentPurpose::CreateGlobalAttributesLink()
                                               : C_ContentPurpose::CreateFrameLink(unsigned(frame));
    configuration.AddReader(Private::C_ReaderInfo(writer->GetCorrespondingReaderName(),
                                                  writer->GetCorrespondingReaderType(), prefix,
                                                  writer->GetFormatDescription(), purpose));
    Private::SaveReaderConfiguration(configuration, configurationPath);
    return writer;
}

} // namespace SetApi
