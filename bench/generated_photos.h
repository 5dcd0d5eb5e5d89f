// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>

namespace tessary::bench {

// A session of `distinct` generated photos of `megapixels` MP in `folder`/generated, made once and
// kept between runs while the options stay the same (generating 24 MP photos is slow). Returns
// that folder.
std::filesystem::path generatedPhotos(const std::filesystem::path& folder, int distinct,
                                      double megapixels);

} // namespace tessary::bench
