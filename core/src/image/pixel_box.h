// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace dravik {

// A whole-pixel rectangle [x, x + width) × [y, y + height).
struct PixelBox {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    bool operator==(const PixelBox&) const = default;
};

} // namespace dravik
