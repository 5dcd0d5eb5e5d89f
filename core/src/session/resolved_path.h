// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>

namespace dravik {

// The absolute path with every link of its existing part followed, so that two spellings of one
// file compare equal; lexically normalised when the system cannot say.
inline std::filesystem::path resolvedPath(const std::filesystem::path& path) {
    std::error_code error;
    std::filesystem::path canonical =
        std::filesystem::weakly_canonical(std::filesystem::absolute(path, error), error);
    return error ? path.lexically_normal() : canonical;
}

} // namespace dravik
