// SPDX-License-Identifier: Apache-2.0
#include "photo_check.h"

#include "dravik/error.h"

namespace dravik::batch {

std::string photoLabel(const std::filesystem::path& photo) {
    return "\u201c" + photo.filename().string() + "\u201d";
}

ImageInput loadCheckedPhoto(const std::filesystem::path& photo, const std::string& expectedHash) {
    ImageInput input = ImageInput::load(photo);
    if (input.sourceHash() != expectedHash)
        throw DravikError("The photo " + photoLabel(photo) +
                          " has changed since it was added to the session: its content hash "
                          "no longer matches.");
    return input;
}

} // namespace dravik::batch
