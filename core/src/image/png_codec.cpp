// SPDX-License-Identifier: Apache-2.0
#include "image/png_codec.h"

#include "dravik/error.h"
#include "image/exif_orientation.h"
#include "image/pixel_buffer.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <png.h>
#include <vector>

namespace dravik::png {

namespace {

// libpng reports failures by jumping back to the setjmp of the function that made the call;
// those functions hold only trivially destructible locals so that the jump skips no destructor.
struct Source {
    const std::uint8_t* data = nullptr;
    std::size_t size = 0;
    std::size_t offset = 0;
};

void readBytes(png_structp png, png_bytep out, png_size_t count) {
    auto* source = static_cast<Source*>(png_get_io_ptr(png));
    if (count > source->size - source->offset)
        png_error(png, "truncated");
    std::memcpy(out, source->data + source->offset, count);
    source->offset += count;
}

[[noreturn]] void onError(png_structp png, png_const_charp) {
    png_longjmp(png, 1);
}
void onWarning(png_structp, png_const_charp) {}

struct Decoder {
    Source source;
    png_structp png = nullptr;
    png_infop info = nullptr;

    Decoder(const std::uint8_t* data, std::size_t size) : source{data, size, 0} {
        png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, onError, onWarning);
        if (png)
            info = png_create_info_struct(png);
        if (!png || !info)
            throw std::bad_alloc();
        png_set_read_fn(png, &source, readBytes);
    }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;
    ~Decoder() { png_destroy_read_struct(&png, &info, nullptr); }
};

bool readInfo(Decoder& d) {
    if (setjmp(png_jmpbuf(d.png)))
        return false;
    png_read_info(d.png, d.info);
    return true;
}

struct Layout {
    std::size_t rowBytes = 0;
    int channels = 0;
    int passes = 1;
};

bool startRegion(Decoder& d, Layout& layout) {
    if (setjmp(png_jmpbuf(d.png)))
        return false;
    png_read_info(d.png, d.info);
    png_set_expand(d.png);
    png_set_scale_16(d.png);
    png_set_gray_to_rgb(d.png);
    layout.passes = png_set_interlace_handling(d.png);
    png_read_update_info(d.png, d.info);
    layout.rowBytes = png_get_rowbytes(d.png, d.info);
    layout.channels = png_get_channels(d.png, d.info);
    return true;
}

void toRgb(const std::uint8_t* row, const PixelBox& box, int channels, std::uint8_t* out) {
    if (channels == 3) {
        std::memcpy(out, row + static_cast<std::size_t>(box.x) * 3,
                    static_cast<std::size_t>(box.width) * 3);
        return;
    }
    const std::uint8_t* in = row + static_cast<std::size_t>(box.x) * 4;
    for (int i = 0; i < box.width; ++i, in += 4, out += 3) {
        const int alpha = in[3];
        for (int c = 0; c < 3; ++c)
            out[c] = static_cast<std::uint8_t>((in[c] * alpha + 255 * (255 - alpha) + 127) / 255);
    }
}

// Takes the box's rows, top to bottom, and keeps them as RGB at 1/denominator of their size:
// each kept pixel is the mean of the (up to) denominator × denominator pixels it stands for.
class RowSink {
  public:
    RowSink(const PixelBox& box, int channels, int denominator, std::uint8_t* out,
            std::size_t outStride)
        : box_(box), channels_(channels), denominator_(denominator), out_(out),
          outStride_(outStride), outWidth_((box.width + denominator - 1) / denominator) {
        if (denominator_ > 1) {
            rgb_.resize(static_cast<std::size_t>(box.width) * 3);
            sums_.resize(static_cast<std::size_t>(outWidth_) * 3);
        }
    }

    void add(const std::uint8_t* pngRow) {
        if (denominator_ == 1) {
            toRgb(pngRow, box_, channels_, out_ + static_cast<std::size_t>(row_++) * outStride_);
            return;
        }
        toRgb(pngRow, box_, channels_, rgb_.data());
        for (int x = 0; x < box_.width; ++x)
            for (int c = 0; c < 3; ++c)
                sums_[static_cast<std::size_t>(x / denominator_) * 3 + c] += rgb_[x * 3 + c];
        if (++row_ % denominator_ == 0 || row_ == box_.height)
            flush();
    }

  private:
    void flush() {
        const int band = (row_ - 1) % denominator_ + 1; // rows in this band
        std::uint8_t* out = out_ + static_cast<std::size_t>((row_ - 1) / denominator_) * outStride_;
        for (int u = 0; u < outWidth_; ++u) {
            const int columns = std::min(denominator_, box_.width - u * denominator_);
            const auto count = static_cast<std::uint32_t>(band * columns);
            for (int c = 0; c < 3; ++c) {
                std::uint32_t& sum = sums_[static_cast<std::size_t>(u) * 3 + c];
                out[u * 3 + c] = static_cast<std::uint8_t>((sum + count / 2) / count);
                sum = 0;
            }
        }
    }

    PixelBox box_;
    int channels_;
    int denominator_;
    std::uint8_t* out_;
    std::size_t outStride_;
    int outWidth_;
    int row_ = 0;
    std::vector<std::uint8_t> rgb_;
    std::vector<std::uint32_t> sums_;
};

// Sequential files stream through one row; interlaced ones need the box's rows at full width
// (`rows`), since every pass adds pixels to them.
bool readRegion(Decoder& d, const PixelBox& box, const Layout& layout, std::uint8_t* scratch,
                std::uint8_t* rows, RowSink* sink) {
    if (setjmp(png_jmpbuf(d.png)))
        return false;
    const int end = box.y + box.height;
    if (layout.passes == 1) {
        for (int y = 0; y < end; ++y) {
            png_read_row(d.png, scratch, nullptr);
            if (y >= box.y)
                sink->add(scratch);
        }
        return true;
    }
    const auto height = static_cast<int>(png_get_image_height(d.png, d.info));
    for (int pass = 0; pass < layout.passes; ++pass) {
        for (int y = 0; y < height; ++y)
            png_read_row(d.png,
                         y >= box.y && y < end ? rows + (y - box.y) * layout.rowBytes : scratch,
                         nullptr);
    }
    for (int y = 0; y < box.height; ++y)
        sink->add(rows + y * layout.rowBytes);
    return true;
}

[[noreturn]] void fail(const std::string& fileName) {
    throw DravikError(fileName + " is damaged or truncated and cannot be decoded.");
}

} // namespace

bool matches(const std::uint8_t* data, std::size_t size) {
    return size >= 8 && png_sig_cmp(data, 0, 8) == 0;
}

Header readHeader(const std::uint8_t* data, std::size_t size, const std::string& fileName) {
    Decoder d(data, size);
    if (!readInfo(d))
        fail(fileName);
    Header header;
    header.size = {static_cast<int>(png_get_image_width(d.png, d.info)),
                   static_cast<int>(png_get_image_height(d.png, d.info))};
    header.alpha = (png_get_color_type(d.png, d.info) & PNG_COLOR_MASK_ALPHA) != 0 ||
                   png_get_valid(d.png, d.info, PNG_INFO_tRNS) != 0;
    png_uint_32 exifSize = 0;
    png_bytep exif = nullptr;
    if (png_get_eXIf_1(d.png, d.info, &exifSize, &exif) != 0 && exif)
        header.orientation = exifOrientationOfTiff(exif, exifSize);
    return header;
}

Image decodeRegion(const std::uint8_t* data, std::size_t size, const PixelBox& box,
                   const std::string& fileName, int denominator) {
    Decoder d(data, size);
    Layout layout;
    if (!startRegion(d, layout))
        fail(fileName);
    std::vector<std::uint8_t> scratch(layout.rowBytes);
    std::vector<std::uint8_t> rows;
    if (layout.passes > 1)
        rows.resize(layout.rowBytes * box.height);
    const int width = (box.width + denominator - 1) / denominator;
    const int height = (box.height + denominator - 1) / denominator;
    const std::size_t stride = static_cast<std::size_t>(width) * 3;
    auto pixels = newPixelBuffer(stride * height);
    RowSink sink(box, layout.channels, denominator, pixels->data(), stride);
    if (!readRegion(d, box, layout, scratch.data(), rows.data(), &sink))
        fail(fileName);
    return Image{width, height, stride, std::move(pixels)};
}

} // namespace dravik::png
