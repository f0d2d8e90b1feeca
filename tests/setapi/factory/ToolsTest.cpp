// Copying one buffer between sets, and a set file without its type line: the refusals with their
// texts, byte-exact copies whatever the file holds, and a copy that opens as a plain set.

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/factory/Tools.h>
#include <SetApi/set/C_NullSet.h>
#include <SetApi/set/C_Set.h>
#include <SetApi/set/C_SetBase.h>

#include <BufferApi/Creation.h>
#include <BufferApi/I_Frame.h>

#include <RTE/Exception.h>
#include <RTE/FileSystem.h>

#include "support/TestSupport.h"

#include <QFileInfo>

#include <map>
#include <memory>

using namespace SetApi;
using TestSupport::MessageOf;
using TestSupport::ReadFile;
using TestSupport::TempDir;
using TestSupport::WriteFile;

namespace {

QFileInfo Info(const std::string& path) { return QFileInfo(QString::fromStdString(path)); }

// A set that keeps its buffers in memory and no files: not file-based.
class MemorySet : public C_SetBase {
public:
    std::string GetName() const override { return "memory"; }
    bool IsOpen() const override { return true; }
    void StoreBuffer(const BufferApi::I_Buffer* buffer, unsigned index) override { m_buffers[index] = buffer->Clone(); }
    std::unique_ptr<BufferApi::I_Buffer> LoadBuffer(unsigned index) const override
    {
        return m_buffers.at(index)->Clone();
    }
    std::map<unsigned, std::unique_ptr<BufferApi::I_Buffer>> m_buffers;
};

std::unique_ptr<BufferApi::I_Buffer> WordBuffer(unsigned short seed)
{
    std::unique_ptr<BufferApi::I_Buffer> buffer(BufferApi::CreateBuffer());
    std::unique_ptr<BufferApi::I_FrameImage> frame(BufferApi::CreateImageFrame(BufferApi::DATATYPE_WORD, 8, 4, 1));
    auto* pixels = static_cast<unsigned short*>(frame->GetPixelPlane(0)->GetData());
    for (unsigned short i = 0; i < 32; ++i)
        pixels[i] = static_cast<unsigned short>(seed + i);
    buffer->AddFrame(std::move(frame));
    return buffer;
}

unsigned short Pixel(const BufferApi::I_Buffer& buffer, unsigned i)
{
    const auto* frame = dynamic_cast<const BufferApi::I_FrameImage*>(buffer.GetFrame(0));
    return static_cast<const unsigned short*>(frame->GetPixelPlane(0)->GetData())[i];
}

std::unique_ptr<C_Set> MakeSet(const std::string& name)
{
    return std::unique_ptr<C_Set>(C_Set::Create(name, I_Set::SET_TYPE_IMAGE, true));
}

} // namespace

TEST(CopyBuffer, RefusesSetsThatAreNotOpen)
{
    C_NullSet closed("nothing");
    MemorySet open;
    EXPECT_EQ(MessageOf([&] { CopyBuffer(closed, 0, open, 0, CopyParameterValueSpec()); }), "Source set not valid");
    EXPECT_EQ(MessageOf([&] { CopyBuffer(open, 0, closed, 0, CopyParameterValueSpec()); }),
              "Destination set not valid");
}

TEST(CopyBuffer, BetweenFileBasedSetsTheFileIsCopiedAsItLies)
{
    TempDir dir;
    auto source = MakeSet(dir / "Source");
    auto target = MakeSet(dir / "Target");
    const char raw[] = "not even a buffer file \0\xff";
    const std::string bytes(raw, sizeof raw - 1);
    WriteFile(dir / "Source/B00003.im7", bytes);

    CopyBuffer(*source, 2, *target, 0, CopyParameterValueSpec());
    EXPECT_EQ(ReadFile(dir / "Target/B00001.im7"), bytes);
    EXPECT_EQ(target->GetSize(), 1u);
}

TEST(CopyBuffer, OtherwiseTheBufferIsLoadedAndStored)
{
    TempDir dir;
    auto fileSet = MakeSet(dir / "Files");
    fileSet->StoreBuffer(WordBuffer(100).get(), 0);
    MemorySet memory;

    CopyBuffer(*fileSet, 0, memory, 5, CopyParameterValueSpec(CopyParameterValueSpec::ParameterValueFromFilename));
    ASSERT_EQ(memory.m_buffers.count(5), 1u);
    EXPECT_EQ(Pixel(*memory.m_buffers[5], 31), 131);

    memory.StoreBuffer(WordBuffer(7).get(), 1);
    CopyBuffer(memory, 1, *fileSet, 1, CopyParameterValueSpec());
    EXPECT_EQ(Pixel(*fileSet->LoadBuffer(1), 0), 7);
}

TEST(CopySetFileWithoutSetIdentifier, RefusesInThisOrderWithTheseTexts)
{
    TempDir dir;
    const std::string source = dir / "Run.set";
    WriteFile(source, "SetIdentifier=\"StreamSet\";\n");
    RTE::FileSystem::CreateDirectory(dir / "Folder");
    WriteFile(dir / "Taken.set", "");
    const auto refusal = [](const std::string& from, const std::string& to) {
        return MessageOf([&] { CopySetFileWithoutSetIdentifier(Info(from), Info(to)); });
    };

    EXPECT_EQ(refusal(dir / "Missing.set", dir / "Missing.set"), "Source and target set file must not be the same!");
    EXPECT_EQ(refusal(source, dir / "./Run.set"), "Source and target set file must not be the same!");
    EXPECT_EQ(refusal(dir / "Missing.set", dir / "Taken.set"), "Source set file does not exists");
    EXPECT_EQ(refusal(dir / "Folder", dir / "New.set"),
              "sourceSetFile is not a file. Make sure you have created the QFileInfo object from the set file path "
              "with the extension!");
    EXPECT_EQ(refusal(source, dir / "Taken.set"), "Target set file already exists");
    EXPECT_EQ(ReadFile(dir / "Taken.set"), "");

    // A target that cannot be opened is a quiet false.
    EXPECT_FALSE(CopySetFileWithoutSetIdentifier(Info(source), Info(dir / "NoFolder/New.set")));
    EXPECT_FALSE(RTE::FileSystem::Exists(dir / "NoFolder"));
}

TEST(CopySetFileWithoutSetIdentifier, DropsEveryIdentifierLineAndKeepsEveryOtherByte)
{
    TempDir dir;
    const char raw[] = "\x01\x02\0\xff\xfe\xc3(\x80 invalid UTF-8 and a NUL";
    const std::string junk(raw, sizeof raw - 1);
    const std::string source = "// set file\r\n"
                               "SetIdentifier=\"StreamSet\";\n"
                               "  \tSetIdentifier=\"TomoSet\";\n"
                               "MySetIdentifier=1;\n"
                               "// SetIdentifier stays in a comment\n"
                               "setidentifier=\"lower case stays\";\n" +
                               junk + "\n" + std::string(3 << 20, 'x') + "\nlast line without end";
    WriteFile(dir / "Run.set", source);

    EXPECT_TRUE(CopySetFileWithoutSetIdentifier(Info(dir / "Run.set"), Info(dir / "Copy.set")));
    EXPECT_EQ(ReadFile(dir / "Copy.set"), "// set file\n"
                                          "MySetIdentifier=1;\n"
                                          "// SetIdentifier stays in a comment\n"
                                          "setidentifier=\"lower case stays\";\n" +
                                              junk + "\n" + std::string(3 << 20, 'x') +
                                              "\nlast line without end\n");

    WriteFile(dir / "Empty.set", "");
    EXPECT_TRUE(CopySetFileWithoutSetIdentifier(Info(dir / "Empty.set"), Info(dir / "EmptyCopy.set")));
    EXPECT_EQ(ReadFile(dir / "EmptyCopy.set"), "");
}

TEST(CopySetFileWithoutSetIdentifier, TheCopyOpensAsAPlainSet)
{
    TempDir dir;
    MakeSet(dir / "Run");
    const std::string setFile = ReadFile(dir / "Run.set");
    WriteFile(dir / "Run.set", setFile + "SetIdentifier = \"NoSuchSetClass\";\n");
    EXPECT_FALSE(C_SetFactory::Instance().Open(dir / "Run")->IsOpen());

    EXPECT_TRUE(CopySetFileWithoutSetIdentifier(Info(dir / "Run.set"), Info(dir / "Plain.set")));
    const auto opened = C_SetFactory::Instance().Open(dir / "Plain");
    EXPECT_TRUE(opened->IsOpen());
    EXPECT_NE(dynamic_cast<C_Set*>(opened.get()), nullptr);
}
