// SPDX-License-Identifier: Apache-2.0
#include "dravik/lean_analysis.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::checkDecoder(
        data, size,
        [](std::string_view text) {
            return dravik::decodeLeanProposals(text, "lean-proposals.json");
        },
        [](const auto& value) { return dravik::encodeLeanProposals(value); });
    return 0;
}
