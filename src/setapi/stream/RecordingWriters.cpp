#include "RecordingWriters.h"

#include <BufferApi/AttributeStore.h>
#include <BufferApi/I_Attribute.h>
#include <DataObjects/C_AttributesContainer.h>

#include <RTE/Exception.h>
#include <RTE/Logger.h>

#include <exception>

namespace SetApi {
namespace Private {

GeneralImageWriter::GeneralImageWriter(unsigned width, unsigned height, unsigned depth, unsigned framesPerImage,
                                       C_ImageWriter::E_BitsPerPixel bits, const QString& compression)
    : ImageStreamRecordingWriterOf<C_ImageWriter>(width, height, depth, framesPerImage, bits, compression)
{
}

GeneralImageWriter::~GeneralImageWriter() = default;

MaskWriter::MaskWriter(unsigned width, unsigned height, unsigned depth, unsigned framesPerImage)
    : ImageStreamRecordingWriterOf<SetApi::MaskWriter>(width, height, depth, framesPerImage)
{
}

MaskWriter::~MaskWriter() = default;

ScalarFieldWriter::ScalarFieldWriter(unsigned width, unsigned height, unsigned depth, unsigned framesPerImage,
                                     C_ImageWriter::E_BitsPerPixel bits, const QString& name,
                                     const RTE::S_Scale& intensityScale)
    : ImageStreamRecordingWriterOf<SetApi::ScalarFieldWriter>(width, height, depth, framesPerImage, bits, name,
                                                              intensityScale)
{
}

ScalarFieldWriter::~ScalarFieldWriter() = default;

ScaleRecordingWriter::ScaleRecordingWriter() = default;

ScaleRecordingWriter::~ScaleRecordingWriter() = default;

void ScaleRecordingWriter::SetDestination(const QString& destination) { m_writer.SetDestination(destination); }

QString ScaleRecordingWriter::GetCorrespondingReaderType() const { return m_writer.GetCorrespondingReaderType(); }

QString ScaleRecordingWriter::GetCorrespondingReaderName() const { return m_writer.GetCorrespondingReaderName(); }

QString ScaleRecordingWriter::GetFormatDescription() const { return m_writer.GetFormatDescription(); }

void ScaleRecordingWriter::WriteScalesForAllImages(const RTE::S_Scale& x, const RTE::S_Scale& y,
                                                   const RTE::S_Scale& intensity)
{
    m_writer.WriteScalesForAllImages(x, y, intensity);
}

AttributeRecordingWriter::AttributeRecordingWriter() { m_writer.SetRecordsPerBatch(RecordsPerBatch); }

AttributeRecordingWriter::~AttributeRecordingWriter()
{
    try {
        m_writer.Close();
    } catch (const std::exception& e) {
        // Already logged where it was raised; a destructor cannot pass it on.
        RTE::C_Logger("Set").error("Closing the attribute stream " + m_destination.toStdString() +
                                   " failed: " + e.what());
    }
}

void AttributeRecordingWriter::SetDestination(const QString& destination) { m_destination = destination; }

QString AttributeRecordingWriter::GetCorrespondingReaderType() const { return m_writer.GetCorrespondingReaderType(); }

QString AttributeRecordingWriter::GetCorrespondingReaderName() const { return m_writer.GetCorrespondingReaderName(); }

QString AttributeRecordingWriter::GetFormatDescription() const { return m_writer.GetFormatDescription(); }

void AttributeRecordingWriter::OpenIfNeeded()
{
    if (!m_notOpened)
        return;
    m_writer.Open(m_destination);
    m_notOpened = false;
}

void AttributeRecordingWriter::WriteImage(const BufferApi::AttributeStore& attributes)
{
    OpenIfNeeded();
    for (std::size_t i = 0; i < attributes.GetCount(); ++i) {
        const BufferApi::I_AttributeBase& attribute = attributes.At(i);
        const QString name = QString::fromStdString(attribute.GetName());
        if (attribute.IsString()) {
            const auto* text = dynamic_cast<const BufferApi::I_AttributeString*>(&attribute);
            if (text != nullptr)
                m_writer.Add(name, QString::fromStdString(text->GetValue()));
            continue;
        }
        const auto* array = dynamic_cast<const BufferApi::I_AttributePlane*>(&attribute);
        if (array == nullptr)
            continue;
        const std::size_t count = array->GetCount();
        const void* data = array->GetData();
        switch (array->GetDataType()) {
        case BufferApi::DATATYPE_WORD:
            m_writer.AddArray(name, count, static_cast<const unsigned short*>(data));
            break;
        case BufferApi::DATATYPE_INT32:
            m_writer.AddArray(name, count, static_cast<const int*>(data));
            break;
        case BufferApi::DATATYPE_FLOAT:
            m_writer.AddArray(name, count, static_cast<const float*>(data));
            break;
        case BufferApi::DATATYPE_DOUBLE:
            m_writer.AddArray(name, count, static_cast<const double*>(data));
            break;
        default:
            break;
        }
    }
    m_writer.NextImage();
}

namespace {

template <typename Element>
void AddList(AttributeWriter& writer, const QString& name, const DataObjects::C_AttributeValue& value)
{
    const std::vector<Element> elements = value.GetValue<std::vector<Element>>();
    writer.AddArray(name, elements.size(), elements.data());
}

} // namespace

void AttributeRecordingWriter::WriteImage(const DataObjects::C_AttributesContainer& attributes)
{
    using DataObjects::C_AttributeValue;
    OpenIfNeeded();
    for (const DataObjects::C_Attribute& attribute : attributes.GetAttributes()) {
        const QString name = QString::fromStdString(attribute.GetName());
        const C_AttributeValue& value = attribute.GetValue();
        switch (value.GetType()) {
        case C_AttributeValue::TYPE_STRING:
            m_writer.Add(name, QString::fromStdString(value.GetValue<std::string>()));
            break;
        case C_AttributeValue::TYPE_WORD:
        case C_AttributeValue::TYPE_WORD_LIST:
            AddList<unsigned short>(m_writer, name, value);
            break;
        case C_AttributeValue::TYPE_INT:
        case C_AttributeValue::TYPE_INT_LIST:
            AddList<int>(m_writer, name, value);
            break;
        case C_AttributeValue::TYPE_FLOAT:
        case C_AttributeValue::TYPE_FLOAT_LIST:
            AddList<float>(m_writer, name, value);
            break;
        case C_AttributeValue::TYPE_DOUBLE:
        case C_AttributeValue::TYPE_DOUBLE_LIST:
            AddList<double>(m_writer, name, value);
            break;
        default:
            break;
        }
    }
    m_writer.NextImage();
}

} // namespace Private
} // namespace SetApi
