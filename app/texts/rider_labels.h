// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace tessary {

// Rider labels of every comparison text.
namespace RiderLabels {
inline constexpr char rider[] = "Rider";
inline constexpr char reference[] = "Reference rider";
} // namespace RiderLabels

} // namespace tessary
