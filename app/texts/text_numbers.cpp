// SPDX-License-Identifier: Apache-2.0
#include "text_numbers.h"

#include <cstdio>

namespace tessary::texts {

namespace {

std::string formatted(const char* format, double value) {
    std::string text(std::snprintf(nullptr, 0, format, value), '\0');
    std::snprintf(text.data(), text.size() + 1, format, value);
    return text;
}

} // namespace

std::string signedWhole(double value) {
    return formatted("%+.0f", value);
}

std::string whole(double value) {
    return formatted("%.0f", value);
}

} // namespace tessary::texts
