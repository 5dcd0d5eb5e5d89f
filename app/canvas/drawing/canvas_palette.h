// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QColor>

// The canvas's colours, one constant each, so markers, lines and texts agree.
namespace tessary::palette {

inline const QColor orange{255, 149, 0};
inline const QColor cyan{50, 173, 230};
inline const QColor green{52, 199, 89};
inline const QColor yellow{255, 204, 0};
inline const QColor white{255, 255, 255};
inline const QColor black{0, 0, 0};

inline QColor withAlpha(QColor colour, double alpha) {
    colour.setAlphaF(static_cast<float>(alpha));
    return colour;
}

} // namespace tessary::palette
