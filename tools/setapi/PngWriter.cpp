#include "PngWriter.h"
#include "Windowing.h"

#include <RTE/Exception.h>

#include <png.h>

#include <csetjmp>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

namespace SetApiTool {

namespace {

// libpng reports errors by longjmp. Everything between setjmp and the jump is plain C data, so that
// the jump skips no destructor: the C++ objects live in the caller.
struct S_PngJob {
    png_structp png = nullptr;
    png_infop info = nullptr;
    std::FILE* file = nullptr;
    png_bytep* rows = nullptr;
    png_uint_32 width = 0;
    png_uint_32 height = 0;
    int colourType = PNG_COLOR_TYPE_GRAY;
    char error[256] = {};
};

void OnPngError(png_structp png, png_const_charp message)
{
    auto* job = static_cast<S_PngJob*>(png_get_error_ptr(png));
    std::snprintf(job->error, sizeof job->error, "%s", message ? message : "unknown PNG error");
    png_longjmp(png, 1);
}

void OnPngWarning(png_structp, png_const_charp) {}

// Returns false with job.error set on failure. Destroys the libpng structures in every case.
bool RunPngJob(S_PngJob& job)
{
    job.png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &job, OnPngError, OnPngWarning);
    if (!job.png) {
        std::snprintf(job.error, sizeof job.error, "out of memory");
        return false;
    }
    job.info = png_create_info_struct(job.png);
    if (!job.info) {
        png_destroy_write_struct(&job.png, nullptr);
        std::snprintf(job.error, sizeof job.error, "out of memory");
        return false;
    }
    if (setjmp(png_jmpbuf(job.png))) {
        png_destroy_write_struct(&job.png, &job.info);
        return false;
    }
    png_init_io(job.png, job.file);
    png_set_IHDR(job.png, job.info, job.width, job.height, 8, job.colourType, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(job.png, job.info);
    png_write_image(job.png, job.rows);
    png_write_end(job.png, nullptr);
    png_destroy_write_struct(&job.png, &job.info);
    return true;
}

} // namespace

void WritePng(const S_PlaneView& view, const std::string& path)
{
    RTE_VERIFY(view.data != nullptr && view.width > 0 && view.height > 0, "PNG export of an empty plane.");
    const bool colour = view.type == BufferApi::DATATYPE_RGB;
    const std::size_t count = std::size_t(view.width) * view.height;

    std::vector<unsigned char> pixels;
    if (colour) {
        pixels.resize(count * 3);
        for (std::size_t i = 0; i < count; ++i) {
            std::uint32_t rgb;
            std::memcpy(&rgb, static_cast<const unsigned char*>(view.data) + i * sizeof rgb, sizeof rgb);
            if (view.mask && view.mask[i] == 0)
                rgb = 0;
            pixels[3 * i] = static_cast<unsigned char>(rgb >> 16);
            pixels[3 * i + 1] = static_cast<unsigned char>(rgb >> 8);
            pixels[3 * i + 2] = static_cast<unsigned char>(rgb);
        }
    } else {
        pixels = WindowToGrey8(view);
    }
    const std::size_t rowBytes = std::size_t(view.width) * (colour ? 3 : 1);
    std::vector<png_bytep> rows(view.height);
    for (unsigned y = 0; y < view.height; ++y)
        rows[y] = pixels.data() + y * rowBytes;

    S_PngJob job;
    job.width = view.width;
    job.height = view.height;
    job.colourType = colour ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_GRAY;
    job.rows = rows.data();
    job.file = std::fopen(path.c_str(), "wb");
    if (!job.file)
        RTE_THROW_MSG(RTE::FileWriteError, "cannot open '" << path << "' for writing");
    const bool written = RunPngJob(job);
    const bool closed = std::fclose(job.file) == 0;
    if (!written)
        RTE_THROW_MSG(RTE::FileWriteError, "cannot write PNG '" << path << "': " << job.error);
    if (!closed)
        RTE_THROW_MSG(RTE::FileWriteError, "cannot write PNG '" << path << "': the file could not be completed");
}

} // namespace SetApiTool
