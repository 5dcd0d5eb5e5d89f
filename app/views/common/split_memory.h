// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

class QSplitter;

namespace tessary {

// Gives `splitter` the sizes the reviewer last dragged a splitter of the same `key` to in this
// run, if any, and remembers every later drag, so that a rebuilt view keeps the reviewer's split.
// Returns whether sizes were restored.
bool keepSplit(QSplitter* splitter, const QString& key);

} // namespace tessary
