// SPDX-License-Identifier: Apache-2.0
#include "generated_photos.h"

#include "samplegen.h"

#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>

namespace tessary::bench {

std::filesystem::path generatedPhotos(const std::filesystem::path& folder, int distinct,
                                      double megapixels) {
    const std::filesystem::path source = folder / "generated";
    const std::filesystem::path stamp = source / "bench-options.txt";
    char options[96];
    std::snprintf(options, sizeof options, "%d photos, %g MP, seed 1\n", distinct, megapixels);
    std::ifstream previous(stamp);
    std::string line;
    if (std::getline(previous, line) && line + "\n" == options)
        return source;
    std::filesystem::remove_all(source);
    const auto start = std::chrono::steady_clock::now();
    samplegen::Options generate;
    generate.photos = distinct;
    generate.megapixels = megapixels;
    samplegen::writeSession(source, generate);
    std::ofstream(stamp) << options;
    std::printf("Generated %d photos of %g MP in %.1f s\n", distinct, megapixels,
                std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    return source;
}

} // namespace tessary::bench
