// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/image.h"

#include <filesystem>
#include <string>

namespace dravik::batch {

// “name.jpg”: how messages name a photo.
std::string photoLabel(const std::filesystem::path& photo);

// Reads the photo and refuses it when its content is not the one the caller hashed.
ImageInput loadCheckedPhoto(const std::filesystem::path& photo, const std::string& expectedHash);

} // namespace dravik::batch
