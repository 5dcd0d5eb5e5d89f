// SPDX-License-Identifier: Apache-2.0
#include "dravik/launch_config.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::checkDecoder(
        data, size,
        [](std::string_view text) {
            return dravik::decodeDataDirectory(text, "data-directory.txt");
        },
        [](const std::optional<std::string>& folder) { return folder.value_or("") + "\n"; });
    return 0;
}
