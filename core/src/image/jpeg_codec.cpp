// SPDX-License-Identifier: Apache-2.0
#include "image/jpeg_codec.h"

#include "image/pixel_buffer.h"

// clang-format off
#include <cstdio> // jpeglib.h needs FILE and size_t first
#include <jpeglib.h>
#include <jerror.h>
// clang-format on

#include "dravik/error.h"
#include "image/exif_orientation.h"

#include <algorithm>
#include <csetjmp>
#include <cstring>
#include <memory>
#include <vector>

namespace dravik::jpeg {

namespace {

// Progressive files with absurd scan counts take minutes to decode; real ones have about ten.
constexpr int maxScans = 500;

// libjpeg reports failures through error_exit, which must not return; it jumps back to the
// setjmp of the function that made the call. Those functions hold only trivially destructible
// locals so that the jump skips no destructor.
struct ErrorManager {
    jpeg_error_mgr base{};
    std::jmp_buf jump{};
    int code = 0;
};

[[noreturn]] void errorExit(j_common_ptr cinfo) {
    auto* errors = reinterpret_cast<ErrorManager*>(cinfo->err);
    errors->code = cinfo->err->msg_code;
    std::longjmp(errors->jump, 1);
}

void emitMessage(j_common_ptr cinfo, int level) {
    if (level >= 0)
        return; // trace messages
    switch (cinfo->err->msg_code) {
    case JWRN_JPEG_EOF:
    case JWRN_HIT_MARKER:
    case JWRN_HUFF_BAD_CODE:
    case JWRN_ARITH_BAD_CODE:
    case JWRN_MUST_RESYNC:
        errorExit(cinfo); // missing or damaged image data would show up as grey blocks
    default:
        break; // e.g. extraneous bytes before a marker, common in camera files and harmless
    }
}

void watchScans(j_common_ptr cinfo) {
    auto* decompress = reinterpret_cast<j_decompress_ptr>(cinfo);
    if (decompress->input_scan_number > maxScans) {
        cinfo->err->msg_code = JERR_UNKNOWN_MARKER;
        errorExit(cinfo);
    }
}

struct Decoder {
    jpeg_decompress_struct cinfo{};
    ErrorManager errors;
    jpeg_progress_mgr progress{};
    bool created = false;

    Decoder() = default;
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;
    ~Decoder() {
        if (created)
            jpeg_destroy_decompress(&cinfo);
    }
};

bool start(Decoder& d, const std::uint8_t* data, std::size_t size, bool keepExif) {
    d.cinfo.err = jpeg_std_error(&d.errors.base);
    d.errors.base.error_exit = errorExit;
    d.errors.base.emit_message = emitMessage;
    if (setjmp(d.errors.jump))
        return false;
    jpeg_create_decompress(&d.cinfo);
    d.created = true;
    d.progress.progress_monitor = watchScans;
    d.cinfo.progress = &d.progress;
    jpeg_mem_src(&d.cinfo, data, static_cast<unsigned long>(size));
    if (keepExif)
        jpeg_save_markers(&d.cinfo, JPEG_APP0 + 1, 0xffff);
    jpeg_read_header(&d.cinfo, TRUE);
    return true;
}

bool adobeCmyk(const jpeg_decompress_struct& cinfo) {
    return cinfo.jpeg_color_space == JCS_CMYK || cinfo.jpeg_color_space == JCS_YCCK;
}

// Starts decompression cropped to the columns of `box`; `left` gets the first decoded column.
bool startRegion(Decoder& d, const PixelBox& box, int denominator, JDIMENSION& left) {
    if (setjmp(d.errors.jump))
        return false;
    d.cinfo.out_color_space = adobeCmyk(d.cinfo) ? JCS_CMYK : JCS_EXT_RGB;
    d.cinfo.scale_num = 1;
    d.cinfo.scale_denom = static_cast<unsigned int>(denominator);
    jpeg_start_decompress(&d.cinfo);
    left = 0;
    const auto width = static_cast<int>(d.cinfo.output_width);
    // The box was computed from the header's size; the decoder's scaled size must agree.
    if (box.x + box.width > width || box.y + box.height > static_cast<int>(d.cinfo.output_height))
        return false;
    if (box.x > 0 || box.width < width) {
        // One column of margin on each side: smooth chroma upsampling treats the crop's edges
        // as the photo's, which would change the edge pixels.
        left = static_cast<JDIMENSION>(std::max(0, box.x - 1));
        JDIMENSION cropWidth =
            static_cast<JDIMENSION>(std::min(width, box.x + box.width + 1)) - left;
        jpeg_crop_scanline(&d.cinfo, &left, &cropWidth);
    }
    return true;
}

// Adobe files store 255 for no ink ("inverted"); others store the amount of ink.
void cmykToRgb(const std::uint8_t* cmyk, std::uint8_t* rgb, int count, bool inverted) {
    for (int i = 0; i < count; ++i, cmyk += 4, rgb += 3) {
        const int lightLeftByBlack = inverted ? cmyk[3] : 255 - cmyk[3];
        for (int c = 0; c < 3; ++c) {
            const int light = inverted ? cmyk[c] : 255 - cmyk[c];
            rgb[c] = static_cast<std::uint8_t>((light * lightLeftByBlack + 127) / 255);
        }
    }
}

// Where the decoded rows go. RGB rows are decoded in place: the columns left of the box are
// written into the end of the row above, so that `stride` is the decoded width and no pixel is
// copied; only the first row, which has no row above, goes through `scratch`. CMYK rows all go
// through `scratch` for conversion.
struct Target {
    std::uint8_t* out = nullptr;
    std::size_t stride = 0;
    std::uint8_t* scratch = nullptr;
    std::size_t scratchStride = 0;
};

constexpr int rowsAtOnce = 8;

bool readRegion(Decoder& d, const PixelBox& box, JDIMENSION left, const Target& target) {
    if (setjmp(d.errors.jump))
        return false;
    if (box.y > 0)
        jpeg_skip_scanlines(&d.cinfo, static_cast<JDIMENSION>(box.y));
    const bool cmyk = d.cinfo.out_color_space == JCS_CMYK;
    const bool inverted = d.cinfo.saw_Adobe_marker;
    const std::size_t skip = (static_cast<std::size_t>(box.x) - left) * (cmyk ? 4 : 3);
    JSAMPROW rows[rowsAtOnce];
    int done = 0;
    while (done < box.height) {
        const int want = std::min(rowsAtOnce, box.height - done);
        for (int i = 0; i < want; ++i) {
            const int row = done + i;
            const bool viaScratch = cmyk || (row == 0 && skip > 0);
            rows[i] = viaScratch ? target.scratch + i * target.scratchStride
                                 : target.out + row * target.stride - skip;
        }
        const int got =
            static_cast<int>(jpeg_read_scanlines(&d.cinfo, rows, static_cast<JDIMENSION>(want)));
        if (got <= 0) {
            d.cinfo.err->msg_code = JWRN_JPEG_EOF;
            errorExit(reinterpret_cast<j_common_ptr>(&d.cinfo));
        }
        for (int i = 0; i < got; ++i) {
            const int row = done + i;
            if (cmyk)
                cmykToRgb(rows[i] + skip, target.out + row * target.stride, box.width, inverted);
            else if (row == 0 && skip > 0)
                std::memcpy(target.out, rows[i] + skip, target.stride - skip);
        }
        done += got;
    }
    return true;
}

[[noreturn]] void fail(const ErrorManager& errors, const std::string& fileName) {
    switch (errors.code) {
    case JERR_BAD_PRECISION:
    case JERR_CONVERSION_NOTIMPL:
    case JERR_NOT_COMPILED:
        throw DravikError(fileName + " uses a kind of JPEG that cannot be decoded.");
    default:
        throw DravikError(fileName + " is damaged or truncated and cannot be decoded.");
    }
}

} // namespace

bool matches(const std::uint8_t* data, std::size_t size) {
    return size >= 3 && data[0] == 0xff && data[1] == 0xd8 && data[2] == 0xff;
}

Header readHeader(const std::uint8_t* data, std::size_t size, const std::string& fileName) {
    Decoder d;
    if (!start(d, data, size, true))
        fail(d.errors, fileName);
    Header header;
    header.size = {static_cast<int>(d.cinfo.image_width), static_cast<int>(d.cinfo.image_height)};
    header.components = d.cinfo.num_components;
    for (jpeg_saved_marker_ptr marker = d.cinfo.marker_list; marker; marker = marker->next) {
        if (marker->marker == JPEG_APP0 + 1) {
            header.orientation = exifOrientation(marker->data, marker->data_length);
            if (header.orientation != 1)
                break;
        }
    }
    return header;
}

Image decodeRegion(const std::uint8_t* data, std::size_t size, const PixelBox& box,
                   const std::string& fileName, int denominator) {
    Decoder d;
    JDIMENSION left = 0;
    if (!start(d, data, size, false) || !startRegion(d, box, denominator, left))
        fail(d.errors, fileName);
    const bool cmyk = d.cinfo.out_color_space == JCS_CMYK;
    const std::size_t scratchStride =
        static_cast<std::size_t>(d.cinfo.output_width) * d.cinfo.output_components;
    const std::size_t stride = cmyk ? static_cast<std::size_t>(box.width) * 3 : scratchStride;
    auto pixels = newPixelBuffer(stride * box.height);
    std::vector<std::uint8_t> scratch(scratchStride * (cmyk ? rowsAtOnce : 1));
    if (!readRegion(d, box, left, {pixels->data(), stride, scratch.data(), scratchStride}))
        fail(d.errors, fileName);
    return Image{box.width, box.height, stride, std::move(pixels)};
}

} // namespace dravik::jpeg
