// SPDX-License-Identifier: Apache-2.0
#pragma once

class QMainWindow;

namespace tessary {

// Help ▸ About Tessary: the version, the detector it runs, and the licences it ships under.
void addHelpMenu(QMainWindow& window);

} // namespace tessary
