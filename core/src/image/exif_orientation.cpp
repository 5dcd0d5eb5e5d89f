// SPDX-License-Identifier: Apache-2.0
#include "image/exif_orientation.h"

#include <cstring>
#include <libexif/exif-data.h>
#include <memory>
#include <vector>

namespace dravik {

namespace {

constexpr unsigned char exifPrefix[6] = {'E', 'x', 'i', 'f', 0, 0};

struct ExifDataFree {
    void operator()(ExifData* data) const { exif_data_unref(data); }
};

} // namespace

int exifOrientation(const std::uint8_t* app1, std::size_t size) {
    if (size <= sizeof exifPrefix || std::memcmp(app1, exifPrefix, sizeof exifPrefix) != 0)
        return 1;
    std::unique_ptr<ExifData, ExifDataFree> data(exif_data_new());
    if (!data)
        return 1;
    // Read the tags as stored: "fixing" them would add default entries.
    exif_data_unset_option(data.get(), EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
    exif_data_load_data(data.get(), app1, static_cast<unsigned int>(size));
    ExifEntry* entry = exif_content_get_entry(data->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
    if (!entry || entry->format != EXIF_FORMAT_SHORT || entry->components < 1 || !entry->data ||
        entry->size < 2)
        return 1;
    const int value = exif_get_short(entry->data, exif_data_get_byte_order(data.get()));
    return value >= 1 && value <= 8 ? value : 1;
}

int exifOrientationOfTiff(const std::uint8_t* tiff, std::size_t size) {
    std::vector<std::uint8_t> app1(sizeof exifPrefix + size);
    std::memcpy(app1.data(), exifPrefix, sizeof exifPrefix);
    if (size > 0)
        std::memcpy(app1.data() + sizeof exifPrefix, tiff, size);
    return exifOrientation(app1.data(), app1.size());
}

} // namespace dravik
