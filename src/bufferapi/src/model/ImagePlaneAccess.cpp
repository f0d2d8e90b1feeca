#include <BufferApi/ImagePlaneAccess.h>

#include <BufferApi/I_Component.h>
#include <BufferApi/I_Frame.h>
#include <BufferApi/I_PlaneBase.h>

#include <RTE/Exception.h>

namespace BufferApi {

C_ImagePlaneAccess::C_ImagePlaneAccess(const I_Frame* frame, unsigned plane) : m_plane(nullptr)
{
    RTE_VERIFY(frame != nullptr, "Cannot access a plane of a null frame");
    const I_Component* component = nullptr;
    if (frame->GetKind() == E_FrameKind::Image)
        component = frame->GetComponent(I_FrameImage::COMPONENT_PIXEL);
    else if (frame->GetComponentCount() > 0)
        component = frame->GetComponentAt(0);
    if (component == nullptr)
        RTE_THROW_MSG(RTE::VerificationFailed, "Frame '" << frame->GetName() << "' has no pixel component");
    if (plane >= component->GetPlaneCount())
        RTE_THROW_MSG(RTE::VerificationFailed, "Plane " << plane << " of frame '" << frame->GetName()
                                                        << "' out of range (depth " << component->GetPlaneCount() << ")");
    m_plane = component->GetPlane(plane);
    if (!m_plane->HasData())
        RTE_THROW_MSG(RTE::VerificationFailed, "Plane " << plane << " of frame '" << frame->GetName() << "' has no memory");
}

unsigned C_ImagePlaneAccess::GetWidth() const
{
    return m_plane->GetWidth();
}

unsigned C_ImagePlaneAccess::GetHeight() const
{
    return m_plane->GetHeight();
}

E_DataType C_ImagePlaneAccess::GetDataType() const
{
    return m_plane->GetDataType();
}

const void* C_ImagePlaneAccess::GetData() const
{
    return m_plane->GetData();
}

double C_ImagePlaneAccess::GetValue(unsigned x, unsigned y) const
{
    const std::size_t index = std::size_t(y) * m_plane->GetWidth() + x;
    const void* data = m_plane->GetData();
    switch (m_plane->GetDataType()) {
    case DATATYPE_BYTE: return static_cast<const unsigned char*>(data)[index];
    case DATATYPE_RGB:
    case DATATYPE_UINT32: return static_cast<const unsigned int*>(data)[index];
    case DATATYPE_DOUBLE: return static_cast<const double*>(data)[index];
    case DATATYPE_FLOAT: return static_cast<const float*>(data)[index];
    case DATATYPE_INT32: return static_cast<const int*>(data)[index];
    case DATATYPE_WORD: return static_cast<const unsigned short*>(data)[index];
    default: break;
    }
    RTE_THROW_MSG(RTE::VerificationFailed, "Unknown element type " << int(m_plane->GetDataType()) << " of a plane");
}

} // namespace BufferApi
