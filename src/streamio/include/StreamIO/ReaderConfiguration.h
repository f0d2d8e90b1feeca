#pragma once
// The table of contents of a stream set: one entry per stream naming the reader plug-in that
// reads it, the prefix of its files and the part of the buffer it feeds; and whether the set was
// repaired, with what was done. Kept in the set's "ReaderConfiguration.xml".

#include <StreamIO/ContentPurpose.h>
#include <StreamIO/Export.h>

#include <QString>

#include <vector>

namespace SetApi {
namespace Private {

struct STREAMIO_API C_ReaderInfo {
    C_ReaderInfo() = default;
    C_ReaderInfo(const QString& name, const QString& type, const QString& filePrefix,
                 const QString& formatDescription, const C_ContentPurpose& purpose);

    bool operator==(const C_ReaderInfo& other) const;
    bool operator!=(const C_ReaderInfo& other) const { return !(*this == other); }

    // The plug-in name within its key, e.g. "Masks".
    QString Name;
    // The plug-in key, e.g. "Core.Set.Recording.MaskFrameReader".
    QString Type;
    QString FilePrefix;
    QString FormatDescription;
    C_ContentPurpose ContentPurpose;
};

class STREAMIO_API C_ReaderConfiguration {
public:
    C_ReaderConfiguration() = default;

    // Entries keep the order in which they were added.
    void AddReader(const C_ReaderInfo& info);
    // RTE::VerificationFailed for an index not below GetReaderCount().
    const C_ReaderInfo& GetReader(unsigned index) const;
    unsigned GetReaderCount() const;
    void RemoveReader(unsigned index);

    bool HasBeenRepaired() const { return m_repaired; }
    QString GetDetailsOfRepair() const { return m_repairDetails; }
    void MarkAsRepaired(const QString& details);

private:
    std::vector<C_ReaderInfo> m_readers;
    bool m_repaired = false;
    QString m_repairDetails;
};

} // namespace Private
} // namespace SetApi
