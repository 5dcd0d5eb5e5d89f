// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>

namespace tessary {

// Queues `work` for the GUI thread's event loop, from any thread. The application object
// carries it, since it outlives every model; once the application is shutting down the work is
// dropped.
void onGuiThread(std::function<void()> work);

// Runs `work` on a pool thread; the application waits for it when it shuts down.
void inBackground(std::function<void()> work);

} // namespace tessary
