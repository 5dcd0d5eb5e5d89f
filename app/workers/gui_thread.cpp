// SPDX-License-Identifier: Apache-2.0
#include "gui_thread.h"

#include <QCoreApplication>
#include <QThreadPool>

namespace tessary {

void onGuiThread(std::function<void()> work) {
    if (QCoreApplication* application = QCoreApplication::instance())
        QMetaObject::invokeMethod(application, std::move(work), Qt::QueuedConnection);
}

namespace {

// Jobs of their own threads: a detection runs for minutes, and the global pool's threads are
// where the painter splits a large fill; with one of them taken, the window waits on the other.
QThreadPool& backgroundPool() {
    static QThreadPool pool;
    static const bool drained = [] {
        qAddPostRoutine([] { pool.waitForDone(); });
        return true;
    }();
    (void)drained;
    return pool;
}

} // namespace

void inBackground(std::function<void()> work) {
    backgroundPool().start(std::move(work));
}

} // namespace tessary
