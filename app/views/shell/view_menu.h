// SPDX-License-Identifier: Apache-2.0
#pragma once

class QMainWindow;

namespace tessary {

class ReviewerModel;
class ReviewerView;

// The View menu: the photo tools' keyboard habits. Zoom acts on the active photo; Page Down and
// Page Up (or Ctrl + Down and Ctrl + Up) step through the photos, or the pairs in Compare, from
// anywhere in the window.
void addViewMenu(QMainWindow& window, ReviewerView& view, ReviewerModel& model);

} // namespace tessary
