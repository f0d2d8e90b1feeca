#include "Commands.h"
#include "PictureWriter.h"

#include <SetApi/factory/C_SetFactory.h>
#include <SetApi/set/C_SetUtilities.h>

#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Frame.h>

#include <RTE/Exception.h>

#include <iostream>

namespace SetApiTool {

int RunExport(const std::string& setPath, unsigned index, const std::string& picturePath, unsigned frameNumber)
{
    // Tell an unknown format before any data is read.
    PictureFormatOf(picturePath);

    SetApi::C_SetFactory& factory = SetApi::C_SetFactory::Instance();
    const std::string name = SetApi::C_SetUtilities::PrepareSetName(setPath);
    if (!factory.Exists(name))
        RTE_THROW_MSG(RTE::Exception, "'" << setPath << "' is no set: there is no file '" << name << ".set'");
    const std::shared_ptr<SetApi::I_Set> set = factory.Open(name);
    if (!set->IsOpen())
        RTE_THROW_MSG(RTE::Exception, "'" << setPath << "' is no set that this library can open");

    unsigned count = 0, first = 0, last = 0;
    set->GetInfo(count, first, last);
    if (count == 0)
        RTE_THROW_MSG(RTE::Exception, "'" << setPath << "' has no buffers");
    if (index < first || index > last)
        RTE_THROW_MSG(RTE::Exception, "'" << setPath << "' has no buffer " << index << ": its indices are " << first
                                          << ".." << last);

    const std::unique_ptr<BufferApi::I_Buffer> buffer = set->LoadBuffer(index);
    if (!buffer)
        RTE_THROW_MSG(RTE::Exception, "buffer " << index << " of '" << setPath << "' could not be read");
    const unsigned frames = buffer->GetNumberOfFrames();
    if (frameNumber >= frames)
        RTE_THROW_MSG(RTE::Exception, "buffer " << index << " of '" << setPath << "' has no frame " << frameNumber
                                                << ": it has " << frames << (frames == 1 ? " frame" : " frames"));
    const BufferApi::I_Frame& frame = *buffer->GetFrame(frameNumber);
    const S_PlaneView view = ViewOfFirstPlane(frame);
    WritePicture(view, picturePath);

    std::cout << "Wrote frame " << frameNumber << " (\"" << frame.GetName() << "\", " << view.width << " x "
              << view.height << ", " << DataTypeName(view.type) << (frame.GetDepth() > 1 ? ", plane 0" : "")
              << ") of buffer " << index << " to '" << picturePath << "'.\n";
    return 0;
}

} // namespace SetApiTool
