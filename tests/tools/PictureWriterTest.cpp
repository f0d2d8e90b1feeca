// Pictures as other programs read them: TIFF keeps type and bits, PNG holds the windowed grey, and
// a failed export leaves no file behind and an earlier file untouched.

#include "PictureWriter.h"
#include "Windowing.h"

#include <RTE/Exception.h>

#include <support/TestSupport.h>

#include <gtest/gtest.h>
#include <png.h>
#include <tiffio.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using SetApiTool::S_PlaneView;

S_PlaneView View(BufferApi::E_DataType type, unsigned width, unsigned height, const void* data,
                 const unsigned char* mask = nullptr)
{
    S_PlaneView view;
    view.type = type;
    view.width = width;
    view.height = height;
    view.data = data;
    view.mask = mask;
    return view;
}

struct S_Tiff {
    std::uint32_t width = 0, height = 0;
    std::uint16_t bits = 0, format = 0, samples = 0, photometric = 0;
    std::vector<unsigned char> bytes;
};

S_Tiff ReadTiff(const std::string& path)
{
    S_Tiff result;
    std::unique_ptr<TIFF, void (*)(TIFF*)> tiff(TIFFOpen(path.c_str(), "r"), TIFFClose);
    if (!tiff) {
        ADD_FAILURE() << "libtiff cannot open " << path;
        return result;
    }
    TIFFGetField(tiff.get(), TIFFTAG_IMAGEWIDTH, &result.width);
    TIFFGetField(tiff.get(), TIFFTAG_IMAGELENGTH, &result.height);
    TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_BITSPERSAMPLE, &result.bits);
    TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_SAMPLEFORMAT, &result.format);
    TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_SAMPLESPERPIXEL, &result.samples);
    TIFFGetField(tiff.get(), TIFFTAG_PHOTOMETRIC, &result.photometric);
    const tmsize_t line = TIFFScanlineSize(tiff.get());
    result.bytes.resize(std::size_t(line) * result.height);
    for (std::uint32_t y = 0; y < result.height; ++y)
        if (TIFFReadScanline(tiff.get(), result.bytes.data() + std::size_t(y) * line, y, 0) < 0)
            ADD_FAILURE() << "libtiff cannot read row " << y << " of " << path;
    return result;
}

template <typename T>
std::vector<unsigned char> BytesOf(const std::vector<T>& values)
{
    std::vector<unsigned char> bytes(values.size() * sizeof(T));
    std::memcpy(bytes.data(), values.data(), bytes.size());
    return bytes;
}

template <typename T>
void ExpectTiffRoundTrip(BufferApi::E_DataType type, std::uint16_t bits, std::uint16_t format, std::vector<T> values)
{
    TestSupport::TempDir dir;
    const std::string path = dir / "plane.tif";
    SetApiTool::WritePicture(View(type, 3, 2, values.data()), path);
    const S_Tiff tiff = ReadTiff(path);
    EXPECT_EQ(tiff.width, 3u);
    EXPECT_EQ(tiff.height, 2u);
    EXPECT_EQ(tiff.samples, 1);
    EXPECT_EQ(tiff.bits, bits);
    EXPECT_EQ(tiff.format, format);
    EXPECT_EQ(tiff.photometric, PHOTOMETRIC_MINISBLACK);
    EXPECT_EQ(tiff.bytes, BytesOf(values)) << "type " << type;
}

TEST(TiffExport, KeepsElementTypeAndEveryBit)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    ExpectTiffRoundTrip<std::uint8_t>(BufferApi::DATATYPE_BYTE, 8, SAMPLEFORMAT_UINT, {0, 1, 2, 127, 128, 255});
    ExpectTiffRoundTrip<std::uint16_t>(BufferApi::DATATYPE_WORD, 16, SAMPLEFORMAT_UINT, {0, 1, 4095, 4096, 65534, 65535});
    ExpectTiffRoundTrip<std::int32_t>(BufferApi::DATATYPE_INT32, 32, SAMPLEFORMAT_INT,
                                      {std::numeric_limits<std::int32_t>::min(), -1, 0, 1, 7,
                                       std::numeric_limits<std::int32_t>::max()});
    ExpectTiffRoundTrip<std::uint32_t>(BufferApi::DATATYPE_UINT32, 32, SAMPLEFORMAT_UINT, {0, 1, 2, 3, 0x80000000u, 0xffffffffu});
    ExpectTiffRoundTrip<float>(BufferApi::DATATYPE_FLOAT, 32, SAMPLEFORMAT_IEEEFP,
                               {-1.5f, 0.0f, nan, std::numeric_limits<float>::infinity(), 1e-42f, 3.25f});
    ExpectTiffRoundTrip<double>(BufferApi::DATATYPE_DOUBLE, 64, SAMPLEFORMAT_IEEEFP,
                                {-1.0 / 3.0, 0.0, -0.0, 1e300, std::numeric_limits<double>::denorm_min(), 2.5});
}

TEST(TiffExport, ColourBecomesEightBitRgb)
{
    TestSupport::TempDir dir;
    const std::vector<std::uint32_t> rgb = {0x00102030, 0x00ff8000};
    SetApiTool::WritePicture(View(BufferApi::DATATYPE_RGB, 2, 1, rgb.data()), dir / "colour.tiff");
    const S_Tiff tiff = ReadTiff(dir / "colour.tiff");
    EXPECT_EQ(tiff.samples, 3);
    EXPECT_EQ(tiff.bits, 8);
    EXPECT_EQ(tiff.photometric, PHOTOMETRIC_RGB);
    EXPECT_EQ(tiff.bytes, (std::vector<unsigned char>{0x10, 0x20, 0x30, 0xff, 0x80, 0x00}));
}

struct S_Png {
    unsigned width = 0, height = 0;
    png_uint_32 format = 0;
    std::vector<unsigned char> pixels;
};

S_Png ReadPng(const std::string& path, png_uint_32 format)
{
    S_Png result;
    png_image image;
    std::memset(&image, 0, sizeof image);
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, path.c_str())) {
        ADD_FAILURE() << "libpng cannot read " << path << ": " << image.message;
        return result;
    }
    result.width = image.width;
    result.height = image.height;
    result.format = image.format;
    image.format = format;
    result.pixels.resize(PNG_IMAGE_SIZE(image));
    if (!png_image_finish_read(&image, nullptr, result.pixels.data(), 0, nullptr))
        ADD_FAILURE() << "libpng cannot decode " << path << ": " << image.message;
    return result;
}

TEST(PngExport, HoldsTheWindowedGreyOfTheValidPixels)
{
    TestSupport::TempDir dir;
    const std::vector<std::uint16_t> words = {100, 300, 200, 60000, 150, 250};
    const std::vector<unsigned char> mask = {1, 1, 1, 0, 1, 1};
    const S_PlaneView view = View(BufferApi::DATATYPE_WORD, 3, 2, words.data(), mask.data());
    SetApiTool::WritePicture(view, dir / "grey.PNG");

    const S_Png png = ReadPng(dir / "grey.PNG", PNG_FORMAT_GRAY);
    EXPECT_EQ(png.width, 3u);
    EXPECT_EQ(png.height, 2u);
    EXPECT_EQ(png.format, PNG_FORMAT_GRAY) << "an 8-bit grey file without alpha";
    EXPECT_EQ(png.pixels, SetApiTool::WindowToGrey8(view));
    EXPECT_EQ(png.pixels, (std::vector<unsigned char>{0, 255, 128, 0, 64, 191}));
}

TEST(PngExport, ColourStaysColourAndMaskedPixelsAreBlack)
{
    TestSupport::TempDir dir;
    const std::vector<std::uint32_t> rgb = {0x00102030, 0x00ff8000};
    const std::vector<unsigned char> mask = {1, 0};
    SetApiTool::WritePicture(View(BufferApi::DATATYPE_RGB, 2, 1, rgb.data(), mask.data()), dir / "colour.png");
    const S_Png png = ReadPng(dir / "colour.png", PNG_FORMAT_RGB);
    EXPECT_EQ(png.format, PNG_FORMAT_RGB);
    EXPECT_EQ(png.pixels, (std::vector<unsigned char>{0x10, 0x20, 0x30, 0, 0, 0}));
}

std::vector<std::string> Listing(const std::string& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::string Content(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

TEST(PictureExport, FormatFollowsTheExtensionInAnyCase)
{
    TestSupport::LogCapture quiet;
    EXPECT_EQ(SetApiTool::PictureFormatOf("a/b.PnG"), SetApiTool::E_PictureFormat::Png);
    EXPECT_EQ(SetApiTool::PictureFormatOf("b.tif"), SetApiTool::E_PictureFormat::Tiff);
    EXPECT_EQ(SetApiTool::PictureFormatOf("b.Tiff"), SetApiTool::E_PictureFormat::Tiff);
    for (const char* path : {"b.jpg", "b", "png", "b.png.bak", "b.", ".png/x"})
        EXPECT_THROW(SetApiTool::PictureFormatOf(path), RTE::Exception) << path;
}

TEST(PictureExport, FailureLeavesNoFileAndAnEarlierFileUntouched)
{
    TestSupport::LogCapture quiet;
    TestSupport::TempDir dir;
    const std::vector<std::uint16_t> words = {1, 2};
    const S_PlaneView good = View(BufferApi::DATATYPE_WORD, 2, 1, words.data());
    // An element type no writer knows fails after the temporary file is made.
    const S_PlaneView bad = View(BufferApi::DATATYPE_UNKNOWN, 2, 1, words.data());

    for (const char* name : {"old.png", "old.tif"}) {
        { std::ofstream(dir / name, std::ios::binary) << "earlier"; }
        EXPECT_THROW(SetApiTool::WritePicture(bad, dir / name), RTE::Exception) << name;
        EXPECT_EQ(Content(dir / name), "earlier") << name;
    }
    EXPECT_THROW(SetApiTool::WritePicture(bad, dir / "new.tif"), RTE::Exception);
    EXPECT_EQ(Listing(dir.path()), (std::vector<std::string>{"old.png", "old.tif"})) << "no temporary or new file stays";

    // Success replaces the earlier file.
    SetApiTool::WritePicture(good, dir / "old.tif");
    EXPECT_EQ(ReadTiff(dir / "old.tif").bytes, BytesOf(words));
    EXPECT_EQ(Listing(dir.path()), (std::vector<std::string>{"old.png", "old.tif"}));
}

TEST(PictureExport, UnwritableTargetsAreNamedInTheMessage)
{
    TestSupport::LogCapture quiet;
    TestSupport::TempDir dir;
    const std::vector<std::uint8_t> bytes = {1};
    const S_PlaneView view = View(BufferApi::DATATYPE_BYTE, 1, 1, bytes.data());

    const std::string missing = dir / "missing/a.png";
    EXPECT_EQ(TestSupport::MessageOf([&] { SetApiTool::WritePicture(view, missing); }),
              "cannot write '" + missing + "': there is no folder '" + dir / "missing" + "'");
    fs::create_directory(dir / "folder.tif");
    EXPECT_EQ(TestSupport::MessageOf([&] { SetApiTool::WritePicture(view, dir / "folder.tif"); }),
              "cannot write '" + dir / "folder.tif" + "': it is a folder");
    EXPECT_EQ(Listing(dir.path()), std::vector<std::string>{"folder.tif"});
}

} // namespace
