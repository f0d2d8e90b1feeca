#pragma once
// Buffer files: one buffer per file, in the library's buffer file format (docs/formats/buffer-file.md).
// The same format serves every extension; sets name image buffers "*.im7" and vector buffers "*.vc7".

#include <BufferApi/Export.h>

#include <boost/shared_ptr.hpp>

#include <string>

namespace RTE { namespace Parameter { class C_Tree; } }

namespace BufferApi {

class I_Buffer;

// Writes the buffer as one file at `path`. The integer option "PackType" (see BufferPackType_t;
// absent means 0) selects how planes are packed. The integer option "DirectIo" (absent means 0),
// when not 0, writes the file with RTE::WriteMode::Direct: around the page cache, plane blocks
// straight from plane memory, and durable on disk before it is renamed into place (the rename
// itself is durable after RTE::FileSystem::SyncFolder); the value 2 does the same but leaves the
// file's durability too to that SyncFolder, for a writer of many files that syncs them all at once.
// The bytes are the same as without it. The
// file appears complete or not at all: it is
// written beside the target under a temporary name and renamed over it at the end, so that an
// earlier file of that name survives a failed write. Raises RTE::FileWriteError when the file
// cannot be written (full disk, no access) and RTE::VerificationFailed for a null buffer.
BUFFERAPI_API void ExportBuffer(const I_Buffer* buffer, const std::string& path,
                                boost::shared_ptr<RTE::Parameter::C_Tree> options);

// Reads one file and returns a new buffer owned by the caller, or null when no file is at `path`.
// A file that is not a buffer file, is truncated or corrupt, or has a newer major version raises
// RTE::Exception with a text that names the file. `options` may be null; none are read today.
BUFFERAPI_API I_Buffer* ImportBuffer(const std::string& path, boost::shared_ptr<RTE::Parameter::C_Tree> options);

// Reads only the head of the file: fills the frame count and width, height and depth of frame 0,
// and returns a head buffer (frames with shape, components and scales but without plane memory),
// with the attributes of buffer and frames only when `withAttributes`. The caller owns it.
// Failures as for ImportBuffer; a missing file raises RTE::Exception too.
BUFFERAPI_API I_Buffer* GetImportInformation(const std::string& path, unsigned& frameCount, unsigned& width,
                                             unsigned& height, unsigned& depth, bool withAttributes);

} // namespace BufferApi
