#pragma once
// Packing and unpacking of one chunk of a plane, by zlib or by the fast pack. One packer or
// unpacker per thread: each owns its compression context and scratch, made on first use. Nothing
// here throws (they run inside parallel loops); failures come back as a static text.

#include "codec/PlaneCodec.h"

#include <cstddef>
#include <cstdint>
#include <memory>

typedef struct ZSTD_CCtx_s ZSTD_CCtx;
typedef struct ZSTD_DCtx_s ZSTD_DCtx;

namespace BufferApi::Private {

class ChunkPacker {
public:
    ChunkPacker(PlaneCodec codec, unsigned elementSize) noexcept;
    ~ChunkPacker();
    ChunkPacker(const ChunkPacker&) = delete;
    ChunkPacker& operator=(const ChunkPacker&) = delete;

    // Packs rawBytes at raw into out, which has room for rawBytes. Returns the packed size; when
    // packing would not make the chunk smaller it is stored, and the result equals rawBytes.
    // Returns 0 and sets error on failure.
    std::size_t Pack(const std::uint8_t* raw, std::size_t rawBytes, std::uint8_t* out, const char*& error) noexcept;

private:
    std::size_t PackZlib(const std::uint8_t* raw, std::size_t rawBytes, std::uint8_t* out, const char*& error) noexcept;
    std::size_t PackFast(const std::uint8_t* raw, std::size_t rawBytes, std::uint8_t* out, const char*& error) noexcept;

    PlaneCodec m_codec;
    unsigned m_elementSize;
    ZSTD_CCtx* m_context = nullptr;
    std::unique_ptr<std::uint8_t[]> m_scratch;
    std::size_t m_scratchBytes = 0;
};

class ChunkUnpacker {
public:
    ChunkUnpacker(PlaneCodec codec, unsigned elementSize) noexcept;
    ~ChunkUnpacker();
    ChunkUnpacker(const ChunkUnpacker&) = delete;
    ChunkUnpacker& operator=(const ChunkUnpacker&) = delete;

    // Unpacks packedBytes at src into exactly rawBytes at dst (packedBytes <= rawBytes; equal
    // means stored). Returns null on success, else what is wrong with the chunk.
    const char* Unpack(const std::uint8_t* src, std::size_t packedBytes, std::uint8_t* dst, std::size_t rawBytes) noexcept;

private:
    const char* UnpackZlib(const std::uint8_t* src, std::size_t packedBytes, std::uint8_t* dst, std::size_t rawBytes) noexcept;
    const char* UnpackFast(const std::uint8_t* src, std::size_t packedBytes, std::uint8_t* dst, std::size_t rawBytes) noexcept;

    PlaneCodec m_codec;
    unsigned m_elementSize;
    ZSTD_DCtx* m_context = nullptr;
    std::unique_ptr<std::uint8_t[]> m_scratch;
    std::size_t m_scratchBytes = 0;
};

} // namespace BufferApi::Private
