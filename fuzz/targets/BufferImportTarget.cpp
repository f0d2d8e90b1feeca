// The whole buffer file import: GetImportInformation (head and attributes) and ImportBuffer
// (planes too) on any file.

#include "BufferSeeds.h"
#include "FuzzTargets.h"

#include <BufferApi/BufferFile.h>
#include <BufferApi/I_Buffer.h>
#include <RTE/Parameter/Factory.h>
#include <RTE/Parameter/Integer.h>
#include <RTE/Parameter/Tree.h>

namespace SetApiFuzz {

void RunBufferImport(const std::uint8_t* data, std::size_t size)
{
    Scratch scratch;
    const std::string path = scratch.Write("B00001.im7", data, size);
    Guarded([&] {
        unsigned frames = 0, width = 0, height = 0, depth = 0;
        std::unique_ptr<BufferApi::I_Buffer> head(
            BufferApi::GetImportInformation(path, frames, width, height, depth, true));
    });
    Guarded([&] { std::unique_ptr<BufferApi::I_Buffer> buffer(BufferApi::ImportBuffer(path, nullptr)); });
}

std::vector<Bytes> SeedsBufferImport()
{
    Scratch scratch;
    std::vector<Bytes> seeds;
    const std::string path = scratch.Path("seed.im7");
    for (const auto& buffer : SmallBuffers())
        for (int packType : {0, 2, 3}) {
            auto options = RTE::Parameter::CreateTree();
            options->Add(RTE::Parameter::CreateInteger(QStringLiteral("PackType"), packType));
            BufferApi::ExportBuffer(buffer.get(), path, options);
            seeds.push_back(ReadFile(path));
        }
    return seeds;
}

} // namespace SetApiFuzz
