#include "codec/ChunkCodec.h"

#include "codec/PlaneFilter.h"

// For ZSTD_c_literalCompressionMode; only stable-ABI functions are called.
#define ZSTD_STATIC_LINKING_ONLY
#include <zlib.h>
#include <zstd.h>
#include <zstd_errors.h>

#include <cstring>
#include <new>

namespace BufferApi::Private {

namespace {

constexpr int kZlibLevel = 1;

// A fast zstd level: the match finder skips ahead quickly where nothing repeats, which on filtered
// camera data is most of it. Huffman coding of the literals is forced on (zstd turns it off at
// negative levels), which is where the ratio on such data comes from.
constexpr int kZstdLevel = -5;

bool EnsureScratch(std::unique_ptr<std::uint8_t[]>& scratch, std::size_t& have, std::size_t need) noexcept
{
    if (have >= need)
        return true;
    scratch.reset(new (std::nothrow) std::uint8_t[need]);
    have = scratch ? need : 0;
    return scratch != nullptr;
}

} // namespace

ChunkPacker::ChunkPacker(PlaneCodec codec, unsigned elementSize) noexcept
    : m_codec(codec)
    , m_elementSize(elementSize)
{
}

ChunkPacker::~ChunkPacker()
{
    ZSTD_freeCCtx(m_context);
}

std::size_t ChunkPacker::Pack(const std::uint8_t* raw, std::size_t rawBytes, std::uint8_t* out, const char*& error) noexcept
{
    const std::size_t packed =
        m_codec == PlaneCodec::Zlib ? PackZlib(raw, rawBytes, out, error) : PackFast(raw, rawBytes, out, error);
    if (error)
        return 0;
    if (packed == 0 || packed >= rawBytes) {
        std::memcpy(out, raw, rawBytes);
        return rawBytes;
    }
    return packed;
}

// Both return 0 when the packed chunk would not fit into rawBytes: the chunk is then stored.
std::size_t ChunkPacker::PackZlib(const std::uint8_t* raw, std::size_t rawBytes, std::uint8_t* out, const char*& error) noexcept
{
    uLongf packed = static_cast<uLongf>(rawBytes);
    const int result = compress2(out, &packed, raw, static_cast<uLong>(rawBytes), kZlibLevel);
    if (result == Z_BUF_ERROR)
        return 0;
    if (result != Z_OK) {
        error = result == Z_MEM_ERROR ? "out of memory in zlib" : "zlib failed";
        return 0;
    }
    return packed;
}

std::size_t ChunkPacker::PackFast(const std::uint8_t* raw, std::size_t rawBytes, std::uint8_t* out, const char*& error) noexcept
{
    if (!m_context) {
        m_context = ZSTD_createCCtx();
        if (!m_context || ZSTD_isError(ZSTD_CCtx_setParameter(m_context, ZSTD_c_compressionLevel, kZstdLevel))) {
            error = "cannot make a zstd context";
            return 0;
        }
        // Without it the output is only larger, never wrong; an older zstd may not know it.
        ZSTD_CCtx_setParameter(m_context, ZSTD_c_literalCompressionMode, ZSTD_ps_enable);
    }
    if (!EnsureScratch(m_scratch, m_scratchBytes, rawBytes)) {
        error = "out of memory for the chunk filter";
        return 0;
    }
    FilterPlane(raw, rawBytes / m_elementSize, m_elementSize, m_scratch.get());
    const std::size_t packed = ZSTD_compress2(m_context, out, rawBytes, m_scratch.get(), rawBytes);
    if (!ZSTD_isError(packed))
        return packed;
    if (ZSTD_getErrorCode(packed) == ZSTD_error_dstSize_tooSmall)
        return 0;
    error = "zstd failed";
    return 0;
}

ChunkUnpacker::ChunkUnpacker(PlaneCodec codec, unsigned elementSize) noexcept
    : m_codec(codec)
    , m_elementSize(elementSize)
{
}

ChunkUnpacker::~ChunkUnpacker()
{
    ZSTD_freeDCtx(m_context);
}

const char* ChunkUnpacker::Unpack(const std::uint8_t* src, std::size_t packedBytes, std::uint8_t* dst, std::size_t rawBytes) noexcept
{
    if (packedBytes == rawBytes) {
        std::memcpy(dst, src, rawBytes);
        return nullptr;
    }
    return m_codec == PlaneCodec::Zlib ? UnpackZlib(src, packedBytes, dst, rawBytes)
                                       : UnpackFast(src, packedBytes, dst, rawBytes);
}

const char* ChunkUnpacker::UnpackZlib(const std::uint8_t* src, std::size_t packedBytes, std::uint8_t* dst, std::size_t rawBytes) noexcept
{
    uLongf produced = static_cast<uLongf>(rawBytes);
    uLong consumed = static_cast<uLong>(packedBytes);
    const int result = uncompress2(dst, &produced, src, &consumed);
    if (result == Z_MEM_ERROR)
        return "out of memory in zlib";
    if (result != Z_OK)
        return "corrupt zlib stream";
    if (produced != rawBytes)
        return "zlib stream shorter than the chunk";
    if (consumed != packedBytes)
        return "bytes after the zlib stream";
    return nullptr;
}

const char* ChunkUnpacker::UnpackFast(const std::uint8_t* src, std::size_t packedBytes, std::uint8_t* dst, std::size_t rawBytes) noexcept
{
    if (ZSTD_findFrameCompressedSize(src, packedBytes) != packedBytes)
        return "not exactly one zstd frame";
    if (ZSTD_getFrameContentSize(src, packedBytes) != rawBytes)
        return "zstd frame of another size than the chunk";
    if (!m_context && !(m_context = ZSTD_createDCtx()))
        return "cannot make a zstd context";
    if (!EnsureScratch(m_scratch, m_scratchBytes, rawBytes))
        return "out of memory for the chunk filter";
    const std::size_t produced = ZSTD_decompressDCtx(m_context, m_scratch.get(), rawBytes, src, packedBytes);
    if (ZSTD_isError(produced))
        return "corrupt zstd frame";
    if (produced != rawBytes)
        return "zstd frame shorter than the chunk";
    UnfilterPlane(m_scratch.get(), rawBytes / m_elementSize, m_elementSize, dst);
    return nullptr;
}

} // namespace BufferApi::Private
