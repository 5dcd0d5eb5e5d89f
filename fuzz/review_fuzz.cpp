// SPDX-License-Identifier: Apache-2.0
#include "dravik/store.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::checkDecoder(
        data, size,
        [](std::string_view text) {
            return dravik::ReviewStore::decode(text, "joint-review-000000000000.json");
        },
        [](const auto& value) { return dravik::ReviewStore::encode(value); });
    return 0;
}
