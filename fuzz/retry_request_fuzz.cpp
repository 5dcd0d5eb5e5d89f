// SPDX-License-Identifier: Apache-2.0
#include "dravik/detection.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::checkDecoder(
        data, size,
        [](std::string_view text) { return dravik::RetryRequest::decode(text, "request.json"); },
        [](const auto& value) { return value.encode(); });
    return 0;
}
