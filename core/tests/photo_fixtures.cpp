// SPDX-License-Identifier: Apache-2.0
#include "photo_fixtures.h"

// clang-format off
#include <cstdio>
#include <cstdlib>
#include <jpeglib.h>
// clang-format on
#include <png.h>
#include <utility>

namespace photo_fixtures {

Picture Picture::filled(int width, int height, const std::function<Rgb(int x, int y)>& colour) {
    Picture picture{width, height, std::vector<std::uint8_t>(std::size_t(width) * height * 3)};
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            picture.set(x, y, colour(x, y));
    return picture;
}

Rgb Picture::at(int x, int y) const {
    const std::uint8_t* p = &rgb[(std::size_t(y) * width + x) * 3];
    return {p[0], p[1], p[2]};
}

void Picture::set(int x, int y, Rgb colour) {
    std::uint8_t* p = &rgb[(std::size_t(y) * width + x) * 3];
    p[0] = colour.r, p[1] = colour.g, p[2] = colour.b;
}

// An APP1 payload holding only an orientation tag.
static std::vector<std::uint8_t> exifSegment(int orientation, bool bigEndian) {
    // "Exif" and the TIFF header, IFD0 right after it with one SHORT entry (tag 0x0112), then no
    // next IFD.
    const auto o = std::uint8_t(orientation);
    if (bigEndian)
        return {'E',  'x',  'i', 'f', 0, 0, 'M', 'M', 0, 42, 0, 0, 0, 8, 0, 1,
                0x01, 0x12, 0,   3,   0, 0, 0,   1,   0, o,  0, 0, 0, 0, 0, 0};
    return {'E',  'x',  'i', 'f', 0, 0, 'I', 'I', 42, 0, 8, 0, 0, 0, 1, 0,
            0x12, 0x01, 3,   0,   1, 0, 0,   0,   o,  0, 0, 0, 0, 0, 0, 0};
}

namespace {

std::vector<std::uint8_t> compress(int width, int height, const std::uint8_t* samples,
                                   J_COLOR_SPACE space, int components,
                                   const JpegOptions& options) {
    jpeg_compress_struct cinfo{};
    jpeg_error_mgr errors{};
    cinfo.err = jpeg_std_error(&errors);
    jpeg_create_compress(&cinfo);
    unsigned char* buffer = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&cinfo, &buffer, &size);
    cinfo.image_width = JDIMENSION(width);
    cinfo.image_height = JDIMENSION(height);
    cinfo.input_components = components;
    cinfo.in_color_space = space;
    jpeg_set_defaults(&cinfo); // CMYK gets the Adobe marker
    jpeg_set_quality(&cinfo, options.quality, TRUE);
    if (space == JCS_RGB) {
        const int sampling = options.fullChroma ? 1 : 2;
        cinfo.comp_info[0].h_samp_factor = sampling;
        cinfo.comp_info[0].v_samp_factor = sampling;
    }
    if (options.progressive)
        jpeg_simple_progression(&cinfo);
    jpeg_start_compress(&cinfo, TRUE);
    if (options.orientation != 0) {
        const auto app1 = exifSegment(options.orientation, options.bigEndianExif);
        jpeg_write_marker(&cinfo, JPEG_APP0 + 1, app1.data(), unsigned(app1.size()));
    }
    while (cinfo.next_scanline < cinfo.image_height) {
        JSAMPROW row = const_cast<std::uint8_t*>(
            &samples[std::size_t(cinfo.next_scanline) * width * components]);
        jpeg_write_scanlines(&cinfo, &row, 1);
    }
    jpeg_finish_compress(&cinfo);
    jpeg_destroy_compress(&cinfo);
    std::vector<std::uint8_t> bytes(buffer, buffer + size);
    std::free(buffer);
    return bytes;
}

} // namespace

std::vector<std::uint8_t> encodeJpeg(const Picture& picture, const JpegOptions& options) {
    return compress(picture.width, picture.height, picture.rgb.data(), JCS_RGB, 3, options);
}

std::vector<std::uint8_t> encodeCmykJpeg(int width, int height,
                                         const std::vector<std::uint8_t>& cmyk) {
    return compress(width, height, cmyk.data(), JCS_CMYK, 4, {});
}

Picture storedFor(const Picture& displayed, int orientation) {
    // Where displayed (x, y) is kept, written out case by case from the EXIF definitions.
    const int w = displayed.width, h = displayed.height;
    const bool turned = orientation >= 5;
    Picture stored{turned ? h : w, turned ? w : h, {}};
    stored.rgb.resize(displayed.rgb.size());
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            const int fx = w - 1 - x, fy = h - 1 - y;
            const std::pair<int, int> places[] = {{x, y}, {x, y},  {fx, y},  {fx, fy}, {x, fy},
                                                  {y, x}, {y, fx}, {fy, fx}, {fy, x}};
            const auto [u, v] = places[orientation >= 1 && orientation <= 8 ? orientation : 0];
            stored.set(u, v, displayed.at(x, y));
        }
    }
    return stored;
}

std::vector<std::uint8_t> encodePng(int width, int height, const std::vector<std::uint8_t>& samples,
                                    const PngOptions& options, const std::vector<Rgb>& palette,
                                    const std::vector<std::uint8_t>& transparency) {
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    std::vector<std::uint8_t> out;
    png_set_write_fn(
        png, &out,
        [](png_structp p, png_bytep data, png_size_t size) {
            auto* target = static_cast<std::vector<std::uint8_t>*>(png_get_io_ptr(p));
            target->insert(target->end(), data, data + size);
        },
        nullptr);
    png_set_IHDR(png, info, png_uint_32(width), png_uint_32(height), options.bitDepth,
                 options.colourType, options.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    std::vector<png_color> colours;
    for (const Rgb& c : palette)
        colours.push_back({c.r, c.g, c.b});
    if (!colours.empty())
        png_set_PLTE(png, info, colours.data(), int(colours.size()));
    if (!transparency.empty())
        png_set_tRNS(png, info, transparency.data(), int(transparency.size()), nullptr);
    std::vector<std::uint8_t> exif;
    if (options.orientation != 0) {
        exif = exifSegment(options.orientation, false);
        exif.erase(exif.begin(), exif.begin() + 6); // eXIf holds the TIFF part only
        png_set_eXIf_1(png, info, png_uint_32(exif.size()), exif.data());
    }
    png_write_info(png, info);
    const std::size_t rowBytes = samples.size() / std::size_t(height);
    std::vector<png_bytep> rows(static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y)
        rows[std::size_t(y)] = const_cast<png_bytep>(&samples[std::size_t(y) * rowBytes]);
    png_write_image(png, rows.data());
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return out;
}

} // namespace photo_fixtures
