// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/error.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

namespace fuzzing {

// What the last input did, for the replay's check that "valid-" seeds still decode.
inline bool lastInputDecoded = false;
inline std::string lastRefusal;

// Feeds hostile bytes to `decode`. Only a DravikError may come out of it; whatever decodes must
// encode and decode back to an equal value. Any other outcome aborts (noexcept turns a stray
// exception into std::terminate at the throw), which the fuzzer reports as a crash.
template <class Decode, class Encode>
void checkDecoder(const std::uint8_t* data, std::size_t size, Decode decode,
                  Encode encode) noexcept {
    lastInputDecoded = false;
    lastRefusal.clear();
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    std::optional<decltype(decode(text))> value;
    try {
        value.emplace(decode(text));
    } catch (const dravik::DravikError& refusal) {
        lastRefusal = refusal.what();
        return;
    }
    lastInputDecoded = true;
    const std::string encoded = encode(*value);
    if (!(decode(encoded) == *value)) {
        std::fprintf(stderr, "The value changed on its way through encode and decode:\n%s\n",
                     encoded.c_str());
        std::abort();
    }
}

} // namespace fuzzing
