// SPDX-License-Identifier: Apache-2.0
#include "jpeg_writer.h"

#include <cstdio>
#include <cstdlib>
#include <jpeglib.h>
#include <memory>
#include <stdexcept>

namespace tessary::samplegen {

namespace {

[[noreturn]] void fail(j_common_ptr info) {
    char text[JMSG_LENGTH_MAX];
    (*info->err->format_message)(info, text);
    throw std::runtime_error(std::string("JPEG encoding failed: ") + text);
}

} // namespace

std::vector<std::uint8_t> encodeJpeg(const std::vector<std::uint8_t>& rgb, int width, int height,
                                     int quality) {
    jpeg_compress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    errors.error_exit = fail;
    jpeg_create_compress(&info);
    unsigned char* buffer = nullptr;
    unsigned long size = 0;
    const std::unique_ptr<jpeg_compress_struct, void (*)(jpeg_compress_struct*)> guard(
        &info, [](jpeg_compress_struct* i) { jpeg_destroy_compress(i); });
    const std::unique_ptr<unsigned char*, void (*)(unsigned char**)> bufferGuard(
        &buffer, [](unsigned char** b) { std::free(*b); });

    jpeg_mem_dest(&info, &buffer, &size);
    info.image_width = static_cast<JDIMENSION>(width);
    info.image_height = static_cast<JDIMENSION>(height);
    info.input_components = 3;
    info.in_color_space = JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, quality, TRUE);
    info.optimize_coding = TRUE;
    jpeg_start_compress(&info, TRUE);
    const std::size_t stride = static_cast<std::size_t>(width) * 3;
    while (info.next_scanline < info.image_height) {
        auto* row = const_cast<JSAMPLE*>(rgb.data() + info.next_scanline * stride);
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    return {buffer, buffer + size};
}

} // namespace tessary::samplegen
