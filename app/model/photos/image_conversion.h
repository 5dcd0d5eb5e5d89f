// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/image.h"

#include <QImage>

namespace tessary {

// Shares the decoded pixels instead of copying them; the QImage keeps them alive.
QImage toQImage(const dravik::Image& image);

} // namespace tessary
