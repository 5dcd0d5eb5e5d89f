// SPDX-License-Identifier: Apache-2.0
#pragma once

class QAbstractScrollArea;
class QColor;

namespace tessary {

// Gives the area's scroll bars a flat look without arrow buttons: a groove and a handle, each one
// solid rectangle. The platform style paints a tall bar with gradients and lines that Qt's
// painter hands out to helper threads span by span, and the bars repaint at every zoom step.
void useFlatScrollBars(QAbstractScrollArea& area, const QColor& groove);

} // namespace tessary
