// Loading one image: an empty buffer of the set's shape, filled frame by frame straight from the
// streams into its planes, then widened in place where a stream's frames are smaller. The streams
// of different frames are read in parallel.

#include <SetApi/stream/StreamSetReader.h>

#include <SetApi/stream/PlaneWidening.h>

#include <StreamIO/I_ImageFrameReader.h>
#include <StreamIO/I_RecordingFrameReader.h>
#include <StreamIO/I_ScalarFieldReader.h>

#include <BufferApi/Creation.h>
#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>
#include <BufferApi/TypedScalar.h>

#include <RTE/Exception.h>

#include <atomic>
#include <exception>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>

namespace SetApi {
namespace Private {

namespace {

// An entry must feed frames, as many per image as its stream holds.
void CheckFramePurpose(const C_ContentPurpose& purpose, std::uint32_t framesPerImage, const char* readerName)
{
    RTE_VERIFY(purpose.IsAssociatedToFrames(), "FrameReader is not associated with frames.");
    if (framesPerImage != purpose.FrameCount())
        RTE_THROW_MSG(RTE::VerificationFailed, "Detected frame count inconsistency: " << readerName << "-FrameCount="
                                                   << framesPerImage << "ContentPurpose-FrameCount="
                                                   << purpose.FrameCount());
}

// Frame number `frame` of the buffer under construction.
BufferApi::I_FrameImage& FrameAt(const std::vector<BufferApi::I_FrameImage*>& frames, std::uint64_t frame)
{
    if (frame >= frames.size())
        RTE_THROW_MSG(RTE::VerificationFailed, "The configuration names frame " << frame << ", but the set has "
                                                                                << frames.size() << " frames.");
    return *frames[std::size_t(frame)];
}

// The reader's frames must fit into the planes of the buffer, or its load would write past them.
void CheckFits(const I_RecordingFrameReader& reader, const BufferApi::I_PlaneBase& plane)
{
    if (reader.GetFrameWidth() > plane.GetWidth() || reader.GetFrameHeight() > plane.GetHeight())
        RTE_THROW_MSG(RTE::Exception, "A stream of frames of " << reader.GetFrameWidth() << " x "
                                                               << reader.GetFrameHeight()
                                                               << " does not fit into the frames of the set, of "
                                                               << plane.GetWidth() << " x " << plane.GetHeight()
                                                               << ".");
}

void Widen(const I_RecordingFrameReader& reader, BufferApi::I_PlaneBase& plane)
{
    WidenPlane(plane.GetData(), plane.GetElementSize(), reader.GetFrameWidth(), reader.GetFrameHeight(),
               plane.GetWidth(), plane.GetHeight());
}

// Loads one plane of the reader into the plane, as the plane's element type (the reader converts
// from the stream's type), and widens it.
void LoadPlaneInto(I_ImageFrameReader& reader, unsigned image, unsigned planeIndex, std::uint32_t readerFrame,
                   BufferApi::I_PlaneBase& plane)
{
    CheckFits(reader, plane);
    void* data = plane.GetData();
    switch (plane.GetDataType()) {
    case BufferApi::DATATYPE_WORD:
        reader.LoadPlane(image, planeIndex, readerFrame, static_cast<std::uint16_t*>(data));
        break;
    case BufferApi::DATATYPE_FLOAT:
        reader.LoadPlane(image, planeIndex, readerFrame, static_cast<float*>(data));
        break;
    case BufferApi::DATATYPE_DOUBLE:
        reader.LoadPlane(image, planeIndex, readerFrame, static_cast<double*>(data));
        break;
    case BufferApi::DATATYPE_BYTE:
        reader.LoadPlane(image, planeIndex, readerFrame, static_cast<bool*>(data));
        break;
    default:
        RTE_THROW(RTE::VerificationFailed, QStringLiteral("A stream cannot be loaded into a plane of this type."));
    }
    Widen(reader, plane);
}

// Runs the jobs with the outcome of running them one after the other: the failure of the first
// failing job in order is raised, and jobs behind it that have not started are not started.
// In parallel when allowed and there is more than one job.
void RunInOrder(const std::vector<std::function<void()>>& jobs, bool parallel)
{
    const long count = long(jobs.size());
    std::vector<std::exception_ptr> failures(jobs.size());
    std::atomic<long> firstFailure(count);
#pragma omp parallel for schedule(dynamic, 1) if (parallel && count > 1)
    for (long i = 0; i < count; ++i) {
        if (i > firstFailure.load())
            continue;
        try {
            jobs[std::size_t(i)]();
        } catch (...) {
            failures[std::size_t(i)] = std::current_exception();
            long seen = firstFailure.load();
            while (i < seen && !firstFailure.compare_exchange_weak(seen, i)) {
            }
        }
    }
    if (firstFailure.load() < count)
        std::rethrow_exception(failures[std::size_t(firstFailure.load())]);
}

BufferApi::E_DataType ScalarFieldType(const I_ScalarFieldReader& reader)
{
    if (reader.IsDoubleData())
        return BufferApi::DATATYPE_DOUBLE;
    if (reader.IsFloatData())
        return BufferApi::DATATYPE_FLOAT;
    return BufferApi::DATATYPE_WORD;
}

} // namespace

std::unique_ptr<BufferApi::I_Buffer> StreamSetReader::LoadBuffer(unsigned image) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    CheckImageIndex(image);
    std::unique_ptr<BufferApi::I_Buffer> buffer(BufferApi::CreateBuffer());
    const std::vector<BufferApi::I_FrameImage*> frames = CreateEmptyFrames(*buffer);
    ReadFrames(image, frames);
    ReadScales(image, *buffer);
    ReadAttributes(image, *buffer);
    ReadTraces(image, *buffer);
    return buffer;
}

std::vector<BufferApi::I_FrameImage*> StreamSetReader::CreateEmptyFrames(BufferApi::I_Buffer& buffer) const
{
    struct ScalarField {
        BufferApi::E_DataType type;
        RTE::S_Scale scale;
    };
    // By name; the first stream of a name decides its type and scale.
    std::map<QString, ScalarField> scalarFields;
    for (const auto& entry : m_scalarFieldReaders)
        scalarFields.emplace(entry.reader->GetNameOfScalarField(),
                             ScalarField{ScalarFieldType(*entry.reader), entry.reader->GetIntensityScale()});

    const BufferApi::E_DataType type = m_isWordData    ? BufferApi::DATATYPE_WORD
                                       : m_isFloatData ? BufferApi::DATATYPE_FLOAT
                                                       : BufferApi::DATATYPE_DOUBLE;
    const bool overwritten = PixelPlanesAreFullyWritten();
    std::vector<BufferApi::I_FrameImage*> frames;
    frames.reserve(m_frameCount);
    for (std::uint32_t index = 0; index < m_frameCount; ++index) {
        std::unique_ptr<BufferApi::I_FrameImage> owned(
            overwritten ? BufferApi::CreateImageFrameForOverwrite(type, m_frameWidth, m_frameHeight, m_frameDepth)
                        : BufferApi::CreateImageFrame(type, m_frameWidth, m_frameHeight, m_frameDepth));
        BufferApi::I_FrameImage* frame = owned.get();
        buffer.AddFrame(std::move(owned));
        if (!m_maskReaders.empty())
            frame->AddMask();
        for (const auto& field : scalarFields) {
            const std::string name = field.first.toStdString();
            BufferApi::CreateTypedScalarInFrame(frame, name, field.second.type);
            const RTE::S_Scale& scale = field.second.scale;
            BufferApi::C_TypedScalarFrame(frame, name)
                .SetLinearScale(scale.factor, scale.offset, scale.unit.toStdString(), scale.description.toStdString());
        }
        frames.push_back(frame);
    }
    return frames;
}

bool StreamSetReader::PixelPlanesAreFullyWritten() const
{
    // A frame is written whole by an image reader of the set's depth and element type (smaller
    // frames are widened, which zero-fills the rest), or by a word reader when the depth is 1. A
    // load that fails half-way throws the buffer away, so it never shows what was left.
    std::vector<bool> covered(m_frameCount, false);
    const auto cover = [&covered](const C_ContentPurpose& purpose) {
        if (!purpose.IsAssociatedToFrames())
            return;
        for (std::uint64_t f = purpose.StartFrame(); f <= purpose.EndFrame() && f < covered.size(); ++f)
            covered[std::size_t(f)] = true;
    };
    for (const auto& entry : m_imageFrameReaders) {
        const I_ImageFrameReader& reader = *entry.reader;
        const bool sameType = (m_isWordData && reader.IsWordData()) || (m_isFloatData && reader.IsFloatData()) ||
                              (m_isDoubleData && reader.IsDoubleData());
        if (!sameType || reader.GetFrameDepth() != m_frameDepth)
            return false;
        cover(entry.purpose);
    }
    if (!m_recordingFrameReaders.empty() && (m_frameDepth != 1 || !m_isWordData))
        return false;
    for (const auto& entry : m_recordingFrameReaders)
        cover(entry.purpose);
    for (bool written : covered)
        if (!written)
            return false;
    return true;
}

void StreamSetReader::ReadFrames(unsigned image, const std::vector<BufferApi::I_FrameImage*>& frames) const
{
    // One job per entry, in the order image readers, recording frame readers, mask readers, scalar
    // field readers. Each job writes only the components of its own frames and uses only its own
    // reader, so the jobs of a recording with several cameras run in parallel. Should two entries
    // write the same component of the same frame, the later one must win: then they run one after
    // the other.
    std::vector<std::function<void()>> jobs;
    std::set<std::pair<std::uint64_t, std::string>> targets;
    bool overlapping = false;
    const auto addJob = [&](const C_ContentPurpose& purpose, const std::string& component, std::function<void()> job) {
        for (std::uint64_t f = purpose.StartFrame(); f <= purpose.EndFrame() && f < frames.size(); ++f)
            overlapping |= !targets.emplace(f, component).second;
        jobs.push_back(std::move(job));
    };

    for (const auto& entry : m_imageFrameReaders)
        addJob(entry.purpose, BufferApi::I_FrameImage::COMPONENT_PIXEL, [&, image] {
            I_ImageFrameReader& reader = *entry.reader;
            CheckFramePurpose(entry.purpose, reader.GetFramesPerImageCount(), "FrameReader");
            std::uint32_t k = 0;
            for (std::uint64_t f = entry.purpose.StartFrame(); f <= entry.purpose.EndFrame(); ++f, ++k) {
                BufferApi::I_FrameImage& frame = FrameAt(frames, f);
                for (unsigned p = 0; p < m_frameDepth; ++p) {
                    BufferApi::I_PlaneBase& plane = *frame.GetPixelPlane(p);
                    const BufferApi::E_DataType type = plane.GetDataType();
                    // The frames were made of the type of the flag that is set; a load into them
                    // is a load of that type.
                    if ((type == BufferApi::DATATYPE_WORD && m_isWordData) ||
                        (type == BufferApi::DATATYPE_FLOAT && m_isFloatData) ||
                        (type == BufferApi::DATATYPE_DOUBLE && m_isDoubleData))
                        LoadPlaneInto(reader, image, p, k, plane);
                }
            }
        });

    for (const auto& entry : m_recordingFrameReaders)
        addJob(entry.purpose, BufferApi::I_FrameImage::COMPONENT_PIXEL, [&, image] {
            I_RecordingFrameReader& reader = *entry.reader;
            CheckFramePurpose(entry.purpose, reader.GetFramesPerImageCount(), "FrameReader");
            std::uint32_t k = 0;
            for (std::uint64_t f = entry.purpose.StartFrame(); f <= entry.purpose.EndFrame(); ++f, ++k) {
                BufferApi::I_PlaneBase& plane = *FrameAt(frames, f).GetPixelPlane(0);
                RTE_VERIFY(plane.GetDataType() == BufferApi::DATATYPE_WORD,
                           "A stream of word frames cannot be loaded into frames of another type.");
                CheckFits(reader, plane);
                reader.LoadFrame(image, k, static_cast<std::uint16_t*>(plane.GetData()));
                Widen(reader, plane);
            }
        });

    for (const auto& entry : m_maskReaders)
        addJob(entry.purpose, BufferApi::I_Frame::COMPONENT_MASK, [&, image] {
            I_ImageFrameReader& reader = *entry.reader;
            CheckFramePurpose(entry.purpose, reader.GetFramesPerImageCount(), "MaskFrameReader");
            std::uint32_t k = 0;
            for (std::uint64_t f = entry.purpose.StartFrame(); f <= entry.purpose.EndFrame(); ++f, ++k) {
                BufferApi::I_FrameImage& frame = FrameAt(frames, f);
                for (unsigned p = 0; p < m_frameDepth; ++p)
                    ReadPlaneMask(reader, image, p, k, frame);
            }
        });

    for (const auto& entry : m_scalarFieldReaders) {
        const std::string name = entry.reader->GetNameOfScalarField().toStdString();
        addJob(entry.purpose, "scalar field " + name, [&, image, name] {
            I_ScalarFieldReader& reader = *entry.reader;
            CheckFramePurpose(entry.purpose, reader.GetFramesPerImageCount(), "ScalarFieldFrameReader");
            std::uint32_t k = 0;
            for (std::uint64_t f = entry.purpose.StartFrame(); f <= entry.purpose.EndFrame(); ++f, ++k) {
                BufferApi::C_TypedScalarFrame scalar(&FrameAt(frames, f), name);
                // The scalar's planes have the type of the first stream of its name; a stream of
                // another type is converted by its reader.
                for (unsigned p = 0; p < m_frameDepth; ++p)
                    LoadPlaneInto(reader, image, p, k, *scalar.GetComponent(p));
            }
        });
    }

    RunInOrder(jobs, !overlapping);
}

void StreamSetReader::ReadPlaneMask(I_ImageFrameReader& reader, unsigned image, unsigned plane,
                                    unsigned readerFrame, BufferApi::I_FrameImage& frame) const
{
    BufferApi::I_Component* mask = frame.GetComponent(BufferApi::I_Frame::COMPONENT_MASK);
    RTE_VERIFY(mask != nullptr, "The frame has no mask component.");
    BufferApi::I_PlaneBase& target = *mask->GetPlane(plane);
    RTE_VERIFY(target.GetElementSize() == 1, "A mask plane must hold one byte per pixel.");
    CheckFits(reader, target);
    reader.LoadPlane(image, plane, readerFrame, static_cast<bool*>(target.GetData()));
    WidenPlane(target.GetData(), 1, reader.GetFrameWidth(), reader.GetFrameHeight(), target.GetWidth(),
               target.GetHeight());
}

} // namespace Private
} // namespace SetApi
