#pragma once

#include <QString>
#include <string_view>

namespace tessary {

// Rider labels of every comparison text.
namespace RiderLabels {
inline constexpr char rider[] = "Rider";
inline constexpr char reference[] = "Reference rider";
} // namespace RiderLabels

inline QString qText(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

// printf's rounding, so that −0.4 reads "-0" and the sign never disappears.
inline QString signedWhole(double value) {
    return QString::asprintf("%+.0f", value);
}
inline QString whole(double value) {
    return QString::asprintf("%.0f", value);
}
inline QString zoomText(double zoom) {
    return QString::asprintf("%.1f×", zoom);
}

} // namespace tessary
