#pragma once
// Conversions between buffers and the image objects.
//
// From buffers: the functions taking an rvalue take the frame or buffer over; they copy the pixels
// out, so the argument may be dropped afterwards. An image gets the pixels of one plane, the frame's
// x, y and intensity scales, the frame's attributes, the scalar fields of that plane and, when
// asked, the plane's mask (without one, or when not asked, all pixels are valid). A frame without
// plane memory, a plane out of range or a buffer frame that is no image frame raise
// RTE::VerificationFailed; RGB frames and unknown element types raise RTE::Exception.
//
// To buffers: one image frame per image or volume, of the pixel type's element type, with the
// image's x, y and intensity scales, an identity z scale, the attributes on the frame (replacing
// names already there) and the scalar fields as typed scalars. With `withMask` the frame gets a mask
// component holding the images' masks; without, none. An image of a pixel type the buffers cannot
// hold raises RTE::Exception.

#include <DataObjects/ImageBufferVariant.h>
#include <DataObjects/ImageData.h>
#include <DataObjects/ImageVolumeVariant.h>
#include <DataObjects/ScalarFields.h>

#include <BufferApi/I_Buffer.h>
#include <BufferApi/I_Frame.h>

#include <memory>

namespace DataObjects {

DATAOBJECTS_API std::unique_ptr<ImageVariant> GetImage(BufferApi::I_FrameImage&& frame, unsigned plane, bool withMask);
DATAOBJECTS_API std::unique_ptr<ImageDataVariant> GetImageData(BufferApi::I_FrameImage&& frame, unsigned plane);
DATAOBJECTS_API std::unique_ptr<ImageVolumeVariant> GetImageVolume(BufferApi::I_Buffer&& buffer, unsigned frame,
                                                                   bool withMask);
// Every frame as a volume, and the buffer's global attributes.
DATAOBJECTS_API std::unique_ptr<ImageBufferVariant> GetImageBuffer(BufferApi::I_Buffer&& buffer, bool withMask);

// The typed scalars of one plane of the frame, bound to it (see ScalarFields).
DATAOBJECTS_API ScalarFields GetScalarFields(BufferApi::I_Frame& frame, unsigned plane);

// One buffer of one frame.
DATAOBJECTS_API std::unique_ptr<BufferApi::I_Buffer> CreateBufferFromImage(const ImageVariant& image, bool withMask);
DATAOBJECTS_API std::unique_ptr<BufferApi::I_Buffer> CreateBufferFromImage(ImageVariant&& image, bool withMask);
// Pixels only: no mask, identity scales, no attributes.
DATAOBJECTS_API std::unique_ptr<BufferApi::I_Buffer> CreateBufferFromImageData(const ImageDataVariant& data);
DATAOBJECTS_API std::unique_ptr<BufferApi::I_Buffer> CreateBufferFromImageData(ImageDataVariant&& data);
// One frame of the volume's depth; scales and attributes of plane 0, masks and scalar fields per plane.
// An empty volume raises RTE::VerificationFailed.
DATAOBJECTS_API std::unique_ptr<BufferApi::I_Buffer> CreateBufferFromImageVolume(const ImageVolumeVariant& volume,
                                                                                 bool withMask);
DATAOBJECTS_API std::unique_ptr<BufferApi::I_Buffer> CreateBufferFromImageVolume(ImageVolumeVariant&& volume,
                                                                                 bool withMask);
// One frame per volume, and the global attributes on the buffer.
DATAOBJECTS_API std::unique_ptr<BufferApi::I_Buffer> CreateBufferFromImageBuffer(const ImageBufferVariant& buffer,
                                                                                 bool withMask);
DATAOBJECTS_API std::unique_ptr<BufferApi::I_Buffer> CreateBufferFromImageBuffer(ImageBufferVariant&& buffer,
                                                                                 bool withMask);

DATAOBJECTS_API std::unique_ptr<BufferApi::I_FrameImage> CreateFrameFromImage(const ImageVariant& image, bool withMask);
DATAOBJECTS_API std::unique_ptr<BufferApi::I_FrameImage> CreateFrameFromImage(ImageVariant&& image, bool withMask);
DATAOBJECTS_API std::unique_ptr<BufferApi::I_FrameImage> CreateFrameFromImageData(const ImageDataVariant& data);

} // namespace DataObjects
