#include "BufferComparison.h"
#include "Commands.h"
#include "Interrupt.h"
#include "PictureWriter.h"
#include "PlaneView.h"
#include "ProgressLine.h"
#include "SetArguments.h"
#include "SyntheticCamera.h"
#include "Terminal.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/factory/SetWriter.h>
#include <SetApi/set/C_Set.h>
#include <SetApi/set/I_Set.h>
#include <SetApi/stream/StreamSetWriter.h>

#include <BufferApi/AttributeStore.h>
#include <BufferApi/Attributes.h>
#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Frame.h>

#include <RTE/Exception.h>

#include <QDateTime>
#include <QDirIterator>
#include <QFileInfo>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <memory>

namespace SetApiTool {

namespace {

using Clock = std::chrono::steady_clock;

// How often the progress line is rewritten.
constexpr std::chrono::milliseconds RefreshPeriod(200);
// Threads of the set writer for a plain set.
constexpr unsigned PlainWriterThreads = 2;

double SecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

std::string Fixed(double value, int decimals)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

std::string Megabytes(double bytes)
{
    return Fixed(bytes / 1e6, 1) + " MB";
}

std::string Rate(double bytes, double seconds)
{
    return seconds > 0 ? Fixed(bytes / 1e6 / seconds, 1) + " MB/s" : std::string("-- MB/s");
}

const char* TypeName(BufferApi::E_DataType type)
{
    return type == BufferApi::DATATYPE_FLOAT ? "float" : "word";
}

// The bytes of the set file and of every file in the set's folder.
unsigned long long BytesOnDisk(const std::string& name)
{
    unsigned long long bytes = 0;
    const QString folder = QString::fromStdString(name);
    const QFileInfo setFile(folder + QStringLiteral(".set"));
    if (setFile.isFile())
        bytes += static_cast<unsigned long long>(setFile.size());
    QDirIterator files(folder, QDir::Files | QDir::Hidden | QDir::NoSymLinks, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        files.next();
        bytes += static_cast<unsigned long long>(files.fileInfo().size());
    }
    return bytes;
}

// Either writer behind one face, with the figures the report needs. The set writer has no
// high-water mark and does not tell whether a producer waited; for it both are tracked here, from
// its fill level around each Store. Whatever happens, the writer's threads are ended before it is
// destroyed.
class Recorder {
public:
    explicit Recorder(const S_RecordSettings& settings) : m_queueSize(settings.queue)
    {
        if (settings.plain)
            m_plain = std::make_unique<SetApi::SetWriter>(settings.queue, PlainWriterThreads);
        else
            m_stream = std::make_unique<SetApi::StreamSetWriter>(settings.queue);
    }

    ~Recorder()
    {
        try {
            if (!m_finished)
                Abort();
            Release();
        } catch (...) {
            // A failure while tidying up after another one: the first one is what is reported.
        }
    }

    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    SetApi::I_SetWriter& Writer() const
    {
        return m_plain ? static_cast<SetApi::I_SetWriter&>(*m_plain) : *m_stream;
    }

    const char* Description() const { return m_plain ? "set writer, 2 threads" : "stream set writer"; }

    void Create(const std::string& name)
    {
        Writer().Create(QString::fromStdString(name), m_pack);
        if (m_plain) {
            // The set writer does not raise for a set that could not be made; its set tells.
            const std::shared_ptr<SetApi::I_Set> set = m_plain->GetSetWhenFinished();
            if (!set || !set->IsOpen())
                RTE_THROW_MSG(RTE::Exception, "could not create the set '" << name << "'");
        }
    }

    void SetPack(BufferApi::BufferPackType_t pack) { m_pack = pack; }

    void Store(std::shared_ptr<const BufferApi::I_Buffer> buffer, unsigned index)
    {
        if (m_plain && m_plain->GetFillLevel() >= m_queueSize)
            m_waited = true; // no free place: this Store waits for a worker
        Writer().Store(std::move(buffer), index);
        m_highWater = std::max(m_highWater, Writer().GetFillLevel());
    }

    std::size_t FillLevel() const { return Writer().GetFillLevel(); }
    std::size_t QueueSize() const { return Writer().GetQueueSize(); }

    // Every queued image stored, the threads ended.
    void Close()
    {
        if (m_plain)
            m_plain->Close();
        else
            m_stream->Close();
        m_finished = true;
    }

    // Queued images are dropped; what is stored stays.
    void Abort()
    {
        Writer().Abort();
        Writer().WaitUntilFinished();
        m_finished = true;
    }

    // The figures, to be taken after Close or Abort.
    std::size_t HighWater() const { return m_stream ? m_stream->GetMaxQueueSize() : m_highWater; }
    bool Waited() const { return m_stream ? m_stream->HasWaitedOnFullQueue() : m_waited; }
    bool TrackedHere() const { return m_plain != nullptr; }
    std::string Errors() const { return Writer().GetErrorText(); }
    bool Failed() const { return Writer().IsError(); }

    // Destroys the writer: the streams of a stream set are complete and the set is announced.
    void Release()
    {
        m_plain.reset();
        m_stream.reset();
    }

private:
    std::unique_ptr<SetApi::SetWriter> m_plain;
    std::unique_ptr<SetApi::StreamSetWriter> m_stream;
    unsigned m_queueSize;
    BufferApi::BufferPackType_t m_pack = BufferApi::BUFFER_PACK_NONE;
    std::size_t m_highWater = 0;
    bool m_waited = false;
    bool m_finished = false;
};

struct S_RecordFigures {
    unsigned stored = 0;
    double seconds = 0;         // first image made to the writer closed
    double makeSeconds = 0;     // of which making the images
    std::size_t highWater = 0;
    bool waited = false;
    bool trackedHere = false;
    std::string errors;
    std::string refusal; // why the writer refused an image, when it did
};

// The live line: images written by the writer so far, the rate, and the queue.
std::string FormatRecordProgress(unsigned written, unsigned total, double bytes, double seconds, std::size_t fill,
                                 std::size_t queueSize)
{
    return std::to_string(written) + "/" + std::to_string(total) + " images written, " + Rate(bytes, seconds)
           + ", queue " + std::to_string(fill) + "/" + std::to_string(queueSize);
}

// The images the set holds now, for the message after an interrupt.
unsigned ImagesOnDisk(const std::string& name)
{
    try {
        const std::shared_ptr<SetApi::I_Set> set = SetApi::C_SetFactory::Instance().Open(name);
        return set->IsOpen() ? set->GetSize() : 0;
    } catch (const std::exception&) {
        return 0;
    }
}

// Hands the images to the writer until all are stored or an interrupt comes. True when all are.
bool Record(Recorder& recorder, const SyntheticRecording& images, unsigned count, const RecordWatch& watch,
            S_RecordFigures& figures)
{
    std::unique_ptr<ProgressLine> line;
    if (watch.progress)
        line = std::make_unique<ProgressLine>(*watch.progress);
    const double imageBytes = double(images.GetImageBytes());
    const Clock::time_point start = Clock::now();
    Clock::time_point nextRefresh = start + RefreshPeriod;
    for (unsigned index = 0; index < count; ++index) {
        if (watch.interrupted.load())
            break;
        const Clock::time_point made = Clock::now();
        std::shared_ptr<const BufferApi::I_Buffer> image(images.MakeImage(index));
        figures.makeSeconds += SecondsSince(made);
        // The writer keeps its reference until the image is on disk; this one is dropped at once,
        // and the image is never touched again here.
        try {
            recorder.Store(std::move(image), index);
        } catch (const std::exception& e) {
            // The set writer refuses images after its first failure: no use making more.
            figures.refusal = e.what();
            break;
        }
        figures.stored = index + 1;
        if (watch.onStored)
            watch.onStored(figures.stored);
        // A writer that failed (a full disk) may go on taking images, but each later one only
        // fails again: the recording stops at the first failure, whose cause is reported.
        if (recorder.Failed())
            break;
        if (line && Clock::now() >= nextRefresh) {
            const std::size_t fill = recorder.FillLevel();
            const unsigned written = unsigned(figures.stored - std::min<std::size_t>(fill, figures.stored));
            line->Show(FormatRecordProgress(written, count, written * imageBytes, SecondsSince(start), fill,
                                            recorder.QueueSize()));
            nextRefresh = Clock::now() + RefreshPeriod;
        }
    }
    const bool complete = figures.stored == count && !watch.interrupted.load() && figures.refusal.empty()
                          && !recorder.Failed();
    if (complete)
        recorder.Close();
    else
        recorder.Abort();
    figures.seconds = SecondsSince(start);
    if (line) {
        const unsigned written = complete ? count : figures.stored;
        line->Show(FormatRecordProgress(written, count, written * imageBytes, figures.seconds, 0,
                                        recorder.QueueSize()));
        line->Finish();
    }
    figures.highWater = recorder.HighWater();
    figures.waited = recorder.Waited();
    figures.trackedHere = recorder.TrackedHere();
    figures.errors = recorder.Errors();
    return complete;
}

// A stream set keeps no storing time per image and gives each loaded image, beside what was
// recorded, the attributes that its path carries ("name=value" parts) and "_Date" and "_Time" of
// "---". The expected image gets the same, so that everything else is compared bit for bit.
void AsLoadedFromStreamSet(BufferApi::I_Buffer& expected, const std::string& setName)
{
    BufferApi::CreateAttributesFromPathValues(&expected, setName);
    expected.GetAttributeStore().SetString("_Date", "---");
    expected.GetAttributeStore().SetString("_Time", "---");
}

// Reads every image back through a freshly opened set and compares it bit for bit with the image
// made again. Returns the number verified; false in `interrupted` when all were looked at.
unsigned Verify(const std::string& name, const std::string& argument, const SyntheticRecording& images,
                unsigned count, const RecordWatch& watch, bool& interrupted, bool& plain)
{
    const std::shared_ptr<SetApi::I_Set> set = SetApi::C_SetFactory::Instance().Open(name);
    if (!set->IsOpen())
        RTE_THROW_MSG(RTE::Exception, "the recording '" << argument << "' does not open");
    plain = dynamic_cast<const SetApi::C_Set*>(set.get()) != nullptr;
    if (set->GetSize() != count)
        RTE_THROW_MSG(RTE::Exception, "the recording '" << argument << "' holds " << set->GetSize()
                                                        << " images after reopening; " << count << " were recorded");
    std::unique_ptr<ProgressLine> line;
    if (watch.progress)
        line = std::make_unique<ProgressLine>(*watch.progress);
    Clock::time_point nextRefresh = Clock::now() + RefreshPeriod;
    interrupted = false;
    for (unsigned index = 0; index < count; ++index) {
        if (watch.interrupted.load()) {
            interrupted = true;
            return index;
        }
        const std::unique_ptr<BufferApi::I_Buffer> loaded = set->LoadBuffer(index);
        if (!loaded)
            RTE_THROW_MSG(RTE::Exception, "image " << index << " of '" << argument << "' could not be read back");
        const std::unique_ptr<BufferApi::I_Buffer> expected = images.MakeImage(index);
        if (!plain)
            AsLoadedFromStreamSet(*expected, set->GetName());
        const std::string difference = FirstDifference(*expected, *loaded);
        if (!difference.empty())
            RTE_THROW_MSG(RTE::Exception, "image " << index << " of '" << argument
                                                   << "' reads back other than recorded: " << difference);
        if (line && Clock::now() >= nextRefresh) {
            line->Show("verified " + std::to_string(index + 1) + "/" + std::to_string(count) + " images");
            nextRefresh = Clock::now() + RefreshPeriod;
        }
    }
    return count;
}

// The first image of camera 1, read from the recording, as PNG beside the set.
std::string ExportFirstCamera(const std::string& name)
{
    const std::shared_ptr<SetApi::I_Set> set = SetApi::C_SetFactory::Instance().Open(name);
    const std::unique_ptr<BufferApi::I_Buffer> first = set->IsOpen() ? set->LoadBuffer(0) : nullptr;
    if (!first || first->GetNumberOfFrames() == 0)
        RTE_THROW_MSG(RTE::Exception, "the first image of '" << name << "' could not be read for the picture");
    const std::string picture = name + "-camera1.png";
    WritePicture(ViewOfFirstPlane(*first->GetFrame(0)), picture);
    return picture;
}

// A recording the writer reported failures for, said cause first: the writer's first failure
// names the file and the system's reason ("No space left on device"). Then how many images are
// safe, that is complete in every camera, as the recording now opens.
std::string FailureSummary(const S_RecordFigures& figures, unsigned total, const std::string& name)
{
    // The error text has one line per failure, each ended by a line end.
    const std::string& errors = figures.errors;
    std::string cause = errors.substr(0, errors.find('\n'));
    const auto lines = static_cast<unsigned>(std::count(errors.begin(), errors.end(), '\n'));
    const unsigned furtherLines = lines > 1 ? lines - 1 : 0;
    if (cause.empty())
        cause = figures.refusal;
    std::string summary = "the recording failed: " + cause;
    if (furtherLines > 0)
        summary += " (and " + std::to_string(furtherLines) + " more error" + (furtherLines == 1 ? "" : "s") + ")";
    summary += "; " + std::to_string(ImagesOnDisk(name)) + " of " + std::to_string(total)
               + " images are safe in '" + name + "' (complete in all cameras)";
    return summary;
}

} // namespace

int RunRecord(const std::string& set, const S_RecordOptions& options, const RecordWatch& watch, std::ostream& out,
              std::ostream& err)
{
    const S_RecordSettings settings = CheckRecordOptions(options);
    const std::string name = SetNameOf(set);
    if (name.empty())
        RTE_THROW_MSG(RTE::Exception, "no set to record into");
    RequireParentFolder(set, name);
    if (SetApi::C_SetFactory::Instance().Exists(name) || QFileInfo::exists(QString::fromStdString(name + ".set")))
        RTE_THROW_MSG(RTE::Exception, "cannot record into '" << set << "': the set exists (remove it first)");
    if (QFileInfo::exists(QString::fromStdString(name)))
        RTE_THROW_MSG(RTE::Exception, "cannot record into '" << set << "': there is a file or folder '" << name
                                                             << "' in the way");

    const S_SyntheticShape& shape = settings.shape;
    const SyntheticRecording images(shape, QDateTime::currentMSecsSinceEpoch());
    Recorder recorder(settings);
    recorder.SetPack(settings.pack);
    out << "recording " << settings.images << " images of " << shape.cameras
        << (shape.cameras == 1 ? " camera, " : " cameras, ") << shape.width << " x " << shape.height << ' '
        << TypeName(shape.type) << ", into '" << name << "' (" << recorder.Description() << ", queue "
        << settings.queue << ", pack " << int(settings.pack) << ")" << std::endl;
    recorder.Create(name);

    S_RecordFigures figures;
    const bool complete = Record(recorder, images, settings.images, watch, figures);
    recorder.Release();
    if (!figures.errors.empty() || !figures.refusal.empty())
        RTE_THROW_MSG(RTE::Exception, FailureSummary(figures, settings.images, name));
    if (!complete) {
        err << "setapi: recording aborted after " << figures.stored << " of " << settings.images
            << " images; the partial recording stays in '" << name << "' (" << ImagesOnDisk(name)
            << " images readable)" << std::endl;
        return InterruptedExitCode;
    }

    const double bytes = double(settings.images) * double(images.GetImageBytes());
    out << "recorded " << settings.images << " images, " << Megabytes(bytes) << " in " << Fixed(figures.seconds, 2)
        << " s: " << Rate(bytes, figures.seconds) << " (making the images took " << Fixed(figures.makeSeconds, 2)
        << " s of it); on disk " << Megabytes(double(BytesOnDisk(name))) << '\n';
    out << "queue: high-water mark " << figures.highWater << " of " << settings.queue
        << (figures.trackedHere ? " (as seen by the producer)" : "") << "; the producer "
        << (figures.waited ? "waited on a full queue" : "never waited on a full queue") << '\n';
    std::string errors = figures.errors;
    while (!errors.empty() && errors.back() == '\n')
        errors.pop_back();
    out << "errors: " << (errors.empty() ? std::string("none") : errors) << std::endl;

    bool interrupted = false, plain = false;
    const unsigned verified = Verify(name, set, images, settings.images, watch, interrupted, plain);
    if (interrupted) {
        err << "setapi: check aborted after " << verified << " of " << settings.images
            << " images; the recording stays in '" << name << "'" << std::endl;
        return InterruptedExitCode;
    }
    out << "verified " << verified << " images bit-exact (reopened through the factory as a "
        << (plain ? "plain set" : "stream set") << ")" << std::endl;
    const std::string picture = ExportFirstCamera(name);
    out << "wrote '" << picture << "' (image 0 of camera 1)" << std::endl;
    return 0;
}

int RunRecord(const std::string& set, const S_RecordOptions& options)
{
    ScopedInterruptHandler handler;
    RecordWatch watch{InterruptFlag(), nullptr, {}};
    if (StandardErrorIsTerminal())
        watch.progress = &std::cerr;
    return RunRecord(set, options, watch, std::cout, std::cerr);
}

} // namespace SetApiTool
