// SPDX-License-Identifier: Apache-2.0
#include "session_open_floor.h"

// clang-format off
#include <cstdio>
#include <jpeglib.h>
// clang-format on
#include <cmath>
#include <fstream>
#include <iterator>
#include <openssl/evp.h>
#include <stdexcept>

namespace tessary::bench {

namespace {

std::vector<std::uint8_t> decodePanel(const std::vector<std::uint8_t>& bytes,
                                      const dravik::PixelRect& panel) {
    jpeg_decompress_struct cinfo{};
    jpeg_error_mgr errors{};
    cinfo.err = jpeg_std_error(&errors); // exits on error: good enough for a reference run
    jpeg_create_decompress(&cinfo);
    jpeg_mem_src(&cinfo, bytes.data(), bytes.size());
    jpeg_read_header(&cinfo, TRUE);
    cinfo.out_color_space = JCS_EXT_RGB;
    jpeg_start_decompress(&cinfo);
    const auto x = static_cast<JDIMENSION>(std::floor(panel.x));
    const auto y = static_cast<JDIMENSION>(std::floor(panel.y));
    JDIMENSION left = x;
    JDIMENSION width = static_cast<JDIMENSION>(std::ceil(panel.maxX())) - x;
    const JDIMENSION height = static_cast<JDIMENSION>(std::ceil(panel.maxY())) - y;
    jpeg_crop_scanline(&cinfo, &left, &width);
    jpeg_skip_scanlines(&cinfo, y);
    const std::size_t stride = static_cast<std::size_t>(cinfo.output_width) * 3;
    std::vector<std::uint8_t> pixels(stride * height);
    for (JDIMENSION row = 0; row < height;) {
        JSAMPROW rows[8];
        const JDIMENSION want = std::min<JDIMENSION>(8, height - row);
        for (JDIMENSION i = 0; i < want; ++i)
            rows[i] = pixels.data() + (row + i) * stride;
        row += jpeg_read_scanlines(&cinfo, rows, want);
    }
    jpeg_abort_decompress(&cinfo);
    jpeg_destroy_decompress(&cinfo);
    return pixels;
}

} // namespace

std::vector<std::vector<std::uint8_t>> decodeOnOneCore(const std::vector<FloorPhoto>& photos) {
    std::vector<std::vector<std::uint8_t>> panels;
    for (const FloorPhoto& photo : photos) {
        std::ifstream in(photo.file, std::ios::binary | std::ios::ate);
        std::vector<std::uint8_t> bytes(static_cast<std::size_t>(in.tellg()));
        in.seekg(0);
        in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        if (!in)
            throw std::runtime_error("cannot read " + photo.file.string());
        unsigned char digest[EVP_MAX_MD_SIZE];
        unsigned int length = 0;
        EVP_Digest(bytes.data(), bytes.size(), digest, &length, EVP_sha256(), nullptr);
        panels.push_back(decodePanel(bytes, photo.panel));
    }
    return panels;
}

std::uint64_t hashOnOneCore(const std::vector<std::filesystem::path>& files) {
    std::vector<char> buffer(1 << 20);
    std::uint64_t seen = 0;
    EVP_MD_CTX* context = EVP_MD_CTX_new();
    for (const std::filesystem::path& file : files) {
        std::ifstream in(file, std::ios::binary);
        if (!in)
            throw std::runtime_error("cannot read " + file.string());
        EVP_DigestInit_ex(context, EVP_sha256(), nullptr);
        while (in.read(buffer.data(), static_cast<std::streamsize>(buffer.size())) ||
               in.gcount() > 0)
            EVP_DigestUpdate(context, buffer.data(), static_cast<std::size_t>(in.gcount()));
        unsigned char digest[EVP_MAX_MD_SIZE];
        unsigned int length = 0;
        EVP_DigestFinal_ex(context, digest, &length);
        seen ^= digest[0];
    }
    EVP_MD_CTX_free(context);
    return seen;
}

} // namespace tessary::bench
