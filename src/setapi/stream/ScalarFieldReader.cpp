#include <SetApi/stream/ScalarFieldReader.h>

#include <SetApi/stream/ScalarFieldWriter.h>

#include <RTE/Exception.h>
#include <RTE/PluginRegistry.h>
#include <StreamIO/ScaleXml.h>

#include <QFile>
#include <QXmlStreamReader>

namespace SetApi {

namespace {

const char* const Description = "Reader for scalar field data of type word, float or double.";

// Moves on to the next start element, or to the end of the document or an error.
void AdvanceToNextStartElement(QXmlStreamReader& xml)
{
    do {
        xml.readNext();
    } while (!xml.atEnd() && !xml.isStartElement());
}

// The scale element the reader stands on. A document that breaks off inside it keeps the scale
// read so far out of it: the head file is good once it has given the name.
RTE::S_Scale ReadIntensityScale(QXmlStreamReader& xml, const RTE::S_Scale& current)
{
    try {
        return Private::ReadScale(xml);
    } catch (const RTE::Exception&) {
        if (xml.hasError())
            return current;
        throw;
    }
}

} // namespace

C_ScalarFieldReader::C_ScalarFieldReader() = default;

C_ScalarFieldReader::~C_ScalarFieldReader() = default;

std::string C_ScalarFieldReader::PluginName() { return "ScalarField"; }

std::string C_ScalarFieldReader::PluginKey() { return "Core.Set.Recording.ScalarFieldFrameReader"; }

RTE::I_Plugin* C_ScalarFieldReader::CreateObject(RTE::I_CreationContext*) { return new C_ScalarFieldReader; }

void C_ScalarFieldReader::pluginRegister()
{
    RTE::C_PluginRegistry::GetInstance().RegisterPlugin(PluginKey(), PluginName(), Description, &CreateObject);
}

void C_ScalarFieldReader::pluginAutoRegister() { pluginRegister(); }

std::string C_ScalarFieldReader::GetPluginName() const { return PluginKey(); }

std::string C_ScalarFieldReader::GetPluginType() const { return PluginName(); }

std::string C_ScalarFieldReader::GetPluginDescription() const { return Description; }

void C_ScalarFieldReader::Open(const QString& destination)
{
    const QString path = ScalarFieldWriter::GetFilenameForScalarFieldName(destination);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        RTE_THROW_MSG(RTE::VerificationFailed, "Open file error for read-only mode for " << path);

    // One pass over the tokens; the root's name does not matter. Every start element that is
    // looked at is looked at once: after a Name element the next token is examined as it stands,
    // and after a scale the start element reached is examined too.
    QString name;
    RTE::S_Scale scale;
    QXmlStreamReader xml(&file);
    xml.readNext();
    while (!xml.atEnd()) {
        if (xml.isStartElement()) {
            bool advanced = false;
            if (xml.name() == QLatin1String("Name")) {
                const QXmlStreamAttributes attributes = xml.attributes();
                RTE_VERIFY(attributes.hasAttribute(QLatin1String("Name")), "Attribute 'Name' is missing.");
                name = attributes.value(QLatin1String("Name")).toString();
                xml.readNext();
                advanced = true;
            }
            if (xml.isStartElement() && xml.name() == QLatin1String("ScaleI")) {
                scale = ReadIntensityScale(xml, scale);
                AdvanceToNextStartElement(xml);
                continue;
            }
            if (advanced)
                continue;
        }
        xml.readNext();
    }
    // An XML error is no failure of its own: without a name the file is of the wrong kind, with
    // one it has told what it must.
    if (name.isEmpty())
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("Wrong type of XML file"));
    file.close();

    m_reader.Open(destination);
    m_name = name;
    m_intensityScale = scale;
}

QString C_ScalarFieldReader::GetNameOfScalarField() const { return m_name; }

RTE::S_Scale C_ScalarFieldReader::GetIntensityScale() const { return m_intensityScale; }

std::uint32_t C_ScalarFieldReader::GetFrameWidth() const { return m_reader.GetFrameWidth(); }

std::uint32_t C_ScalarFieldReader::GetFrameHeight() const { return m_reader.GetFrameHeight(); }

std::uint32_t C_ScalarFieldReader::GetFramesPerImageCount() const { return m_reader.GetFramesPerImageCount(); }

std::uint32_t C_ScalarFieldReader::GetImageCount() const { return m_reader.GetImageCount(); }

void C_ScalarFieldReader::LoadFrame(std::uint32_t image, std::uint32_t frame, std::uint16_t* target)
{
    m_reader.LoadFrame(image, frame, target);
}

bool C_ScalarFieldReader::IsDataConsistent() const { return m_reader.IsDataConsistent(); }

std::uint32_t C_ScalarFieldReader::GetFrameDepth() const { return m_reader.GetFrameDepth(); }

void C_ScalarFieldReader::LoadFrame(std::uint32_t image, std::uint32_t frame, bool* target)
{
    m_reader.LoadFrame(image, frame, target);
}

void C_ScalarFieldReader::LoadFrame(std::uint32_t image, std::uint32_t frame, double* target)
{
    m_reader.LoadFrame(image, frame, target);
}

void C_ScalarFieldReader::LoadFrame(std::uint32_t image, std::uint32_t frame, float* target)
{
    m_reader.LoadFrame(image, frame, target);
}

void C_ScalarFieldReader::LoadPlane(std::uint32_t image, std::uint32_t plane, std::uint32_t frame, bool* target)
{
    m_reader.LoadPlane(image, plane, frame, target);
}

void C_ScalarFieldReader::LoadPlane(std::uint32_t image, std::uint32_t plane, std::uint32_t frame, double* target)
{
    m_reader.LoadPlane(image, plane, frame, target);
}

void C_ScalarFieldReader::LoadPlane(std::uint32_t image, std::uint32_t plane, std::uint32_t frame, float* target)
{
    m_reader.LoadPlane(image, plane, frame, target);
}

void C_ScalarFieldReader::LoadPlane(std::uint32_t image, std::uint32_t plane, std::uint32_t frame,
                                    std::uint16_t* target)
{
    m_reader.LoadPlane(image, plane, frame, target);
}

bool C_ScalarFieldReader::IsWordData() const { return m_reader.IsWordData(); }

bool C_ScalarFieldReader::IsFloatData() const { return m_reader.IsFloatData(); }

bool C_ScalarFieldReader::IsDoubleData() const { return m_reader.IsDoubleData(); }

bool C_ScalarFieldReader::IsBoolData() const { return m_reader.IsBoolData(); }

} // namespace SetApi
