// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/image.h"
#include "dravik/review.h"

#include <QImage>
#include <QSizeF>

namespace tessary {

// Photos are printed at no more than this: enough for paper, never the camera's full size.
inline constexpr double printDpi = 300;

// A frame's photo as printed: the part shown, decoded no larger than print resolution needs.
struct PrintedPhoto {
    QImage image;
    dravik::PixelRect shows; // the source pixels the image covers
};

// `region` is what to show in source pixels (the framing region, else the panel), `printed` its
// size on paper in points. Decodes at the smallest DCT scale that still covers print resolution.
PrintedPhoto printedPhoto(const dravik::ReviewFrame& frame, const dravik::VerifiedPhoto& photo,
                          const dravik::PixelRect& region, const QSizeF& printed);

} // namespace tessary
