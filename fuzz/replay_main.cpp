// SPDX-License-Identifier: Apache-2.0
// Replays a harness over its seed corpus in the normal build, where libFuzzer is not linked.
// Files named "valid-*" must decode, so that the seeds stay useful as the formats evolve.

#include "fuzz_support.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fs = std::filesystem;

int main(int argc, char** argv) {
    std::vector<fs::path> inputs;
    for (int i = 1; i < argc; ++i) {
        if (fs::is_directory(argv[i])) {
            for (const auto& entry : fs::directory_iterator(argv[i]))
                if (entry.is_regular_file())
                    inputs.push_back(entry.path());
        } else {
            inputs.emplace_back(argv[i]);
        }
    }
    std::sort(inputs.begin(), inputs.end());
    if (inputs.empty()) {
        std::fprintf(stderr, "No inputs to replay.\n");
        return 1;
    }
    int decoded = 0;
    int failures = 0;
    for (const auto& input : inputs) {
        std::ifstream in(input, std::ios::binary);
        if (!in) {
            std::fprintf(stderr, "Cannot read %s\n", input.c_str());
            ++failures;
            continue;
        }
        const std::string bytes{std::istreambuf_iterator<char>(in), {}};
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
        decoded += fuzzing::lastInputDecoded ? 1 : 0;
        if (input.filename().string().starts_with("valid-") && !fuzzing::lastInputDecoded) {
            std::fprintf(stderr, "%s should decode but was refused: %s\n", input.c_str(),
                         fuzzing::lastRefusal.c_str());
            ++failures;
        }
    }
    std::printf("Replayed %zu inputs: %d decoded, %zu refused, %d failures.\n", inputs.size(),
                decoded, inputs.size() - static_cast<std::size_t>(decoded), failures);
    return failures == 0 ? 0 : 1;
}
