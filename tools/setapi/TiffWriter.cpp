#include "TiffWriter.h"

#include <RTE/Exception.h>

#include <tiffio.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace SetApiTool {

namespace {

// libtiff reports through process-wide handlers. This tool's handler keeps the last message of the
// calling thread instead of printing it, so that a failure reaches the user as one line.
thread_local std::string t_lastTiffError;

void OnTiffError(const char* module, const char* format, va_list arguments)
{
    char text[512];
    std::vsnprintf(text, sizeof text, format, arguments);
    t_lastTiffError = module ? std::string(module) + ": " + text : std::string(text);
}

void InstallHandlers()
{
    static std::once_flag once;
    std::call_once(once, [] {
        TIFFSetErrorHandler(OnTiffError);
        TIFFSetWarningHandler(nullptr);
    });
}

struct S_Layout {
    std::uint16_t bitsPerSample;
    std::uint16_t sampleFormat;
    std::uint16_t samplesPerPixel;
};

S_Layout LayoutOf(BufferApi::E_DataType type)
{
    switch (type) {
    case BufferApi::DATATYPE_BYTE: return {8, SAMPLEFORMAT_UINT, 1};
    case BufferApi::DATATYPE_WORD: return {16, SAMPLEFORMAT_UINT, 1};
    case BufferApi::DATATYPE_UINT32: return {32, SAMPLEFORMAT_UINT, 1};
    case BufferApi::DATATYPE_INT32: return {32, SAMPLEFORMAT_INT, 1};
    case BufferApi::DATATYPE_FLOAT: return {32, SAMPLEFORMAT_IEEEFP, 1};
    case BufferApi::DATATYPE_DOUBLE: return {64, SAMPLEFORMAT_IEEEFP, 1};
    case BufferApi::DATATYPE_RGB: return {8, SAMPLEFORMAT_UINT, 3};
    case BufferApi::DATATYPE_UNKNOWN: break;
    }
    RTE_THROW_MSG(RTE::VerificationFailed, "TIFF export of unknown element type " << int(type) << '.');
}

struct TiffCloser {
    void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};

[[noreturn]] void Fail(const std::string& path)
{
    const std::string reason = t_lastTiffError.empty() ? std::string("unknown TIFF error") : t_lastTiffError;
    RTE_THROW_MSG(RTE::FileWriteError, "cannot write TIFF '" << path << "': " << reason);
}

} // namespace

void WriteTiff(const S_PlaneView& view, const std::string& path)
{
    RTE_VERIFY(view.data != nullptr && view.width > 0 && view.height > 0, "TIFF export of an empty plane.");
    const S_Layout layout = LayoutOf(view.type);
    InstallHandlers();
    t_lastTiffError.clear();

    // Classic TIFF holds up to 4 GiB; a larger plane goes to BigTIFF.
    const std::uint64_t bytes = std::uint64_t(view.width) * view.height * layout.samplesPerPixel
                                * (layout.bitsPerSample / 8);
    const char* mode = bytes > (std::uint64_t(1) << 31) ? "w8" : "w";
    std::unique_ptr<TIFF, TiffCloser> tiff(TIFFOpen(path.c_str(), mode));
    if (!tiff)
        Fail(path);

    TIFF* t = tiff.get();
    TIFFSetField(t, TIFFTAG_IMAGEWIDTH, std::uint32_t(view.width));
    TIFFSetField(t, TIFFTAG_IMAGELENGTH, std::uint32_t(view.height));
    TIFFSetField(t, TIFFTAG_BITSPERSAMPLE, layout.bitsPerSample);
    TIFFSetField(t, TIFFTAG_SAMPLESPERPIXEL, layout.samplesPerPixel);
    TIFFSetField(t, TIFFTAG_SAMPLEFORMAT, layout.sampleFormat);
    TIFFSetField(t, TIFFTAG_PHOTOMETRIC, layout.samplesPerPixel == 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
    TIFFSetField(t, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(t, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    TIFFSetField(t, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    TIFFSetField(t, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(t, 0));

    const std::size_t rowBytes = std::size_t(view.width) * layout.samplesPerPixel * (layout.bitsPerSample / 8);
    std::vector<unsigned char> row(rowBytes);
    const auto* source = static_cast<const unsigned char*>(view.data);
    for (unsigned y = 0; y < view.height; ++y) {
        if (view.type == BufferApi::DATATYPE_RGB) {
            for (unsigned x = 0; x < view.width; ++x) {
                std::uint32_t rgb;
                std::memcpy(&rgb, source + (std::size_t(y) * view.width + x) * sizeof rgb, sizeof rgb);
                row[3 * x] = static_cast<unsigned char>(rgb >> 16);
                row[3 * x + 1] = static_cast<unsigned char>(rgb >> 8);
                row[3 * x + 2] = static_cast<unsigned char>(rgb);
            }
        } else {
            std::memcpy(row.data(), source + std::size_t(y) * rowBytes, rowBytes);
        }
        if (TIFFWriteScanline(t, row.data(), y, 0) < 0)
            Fail(path);
    }
    // Closing writes the directory; a failure there (a full disk) must not pass as success.
    if (!TIFFFlush(t))
        Fail(path);
}

} // namespace SetApiTool
