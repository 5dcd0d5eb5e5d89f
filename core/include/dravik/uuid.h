// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace dravik {

// Identity of a session or canvas generation. The library only compares them; callers make them.
class Uuid {
  public:
    Uuid() = default; // the nil UUID
    explicit Uuid(const std::array<std::uint8_t, 16>& bytes) : bytes_(bytes) {}

    // Accepts the 8-4-4-4-12 hexadecimal form, either case, with or without braces.
    static std::optional<Uuid> parse(std::string_view text);

    std::string text() const;      // lower-case 8-4-4-4-12
    std::string upperText() const; // upper-case 8-4-4-4-12
    bool isNil() const;
    const std::array<std::uint8_t, 16>& bytes() const { return bytes_; }
    bool operator==(const Uuid&) const = default;

  private:
    std::array<std::uint8_t, 16> bytes_{};
};

} // namespace dravik
