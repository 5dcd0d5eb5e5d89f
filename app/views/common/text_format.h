// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "rider_labels.h"
#include "text_numbers.h"

#include <QString>
#include <string>
#include <string_view>

namespace tessary {

inline QString qText(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

inline QString signedWhole(double value) {
    return qText(texts::signedWhole(value));
}
inline QString whole(double value) {
    return qText(texts::whole(value));
}
inline QString zoomText(double zoom) {
    return QString::asprintf("%.1f×", zoom);
}

} // namespace tessary
