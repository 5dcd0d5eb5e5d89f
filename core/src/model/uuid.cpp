// SPDX-License-Identifier: Apache-2.0
#include "dravik/uuid.h"

#include <algorithm>

namespace dravik {

namespace {

int hexValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

std::string format(const std::array<std::uint8_t, 16>& bytes, const char* digits) {
    std::string text;
    text.reserve(36);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            text += '-';
        text += digits[bytes[i] >> 4];
        text += digits[bytes[i] & 15];
    }
    return text;
}

} // namespace

std::optional<Uuid> Uuid::parse(std::string_view text) {
    if (text.size() == 38 && text.front() == '{' && text.back() == '}')
        text = text.substr(1, 36);
    if (text.size() != 36)
        return std::nullopt;
    std::array<std::uint8_t, 16> bytes{};
    std::size_t byte = 0;
    for (std::size_t i = 0; i < text.size();) {
        if (i == 8 || i == 13 || i == 18 || i == 23) {
            if (text[i] != '-')
                return std::nullopt;
            ++i;
            continue;
        }
        int high = hexValue(text[i]);
        int low = hexValue(text[i + 1]);
        if (high < 0 || low < 0)
            return std::nullopt;
        bytes[byte++] = static_cast<std::uint8_t>(high * 16 + low);
        i += 2;
    }
    return Uuid(bytes);
}

std::string Uuid::text() const {
    return format(bytes_, "0123456789abcdef");
}

std::string Uuid::upperText() const {
    return format(bytes_, "0123456789ABCDEF");
}

bool Uuid::isNil() const {
    return std::all_of(bytes_.begin(), bytes_.end(), [](std::uint8_t b) { return b == 0; });
}

} // namespace dravik
