// SPDX-License-Identifier: Apache-2.0
#include "gui_thread.h"

#include <QCoreApplication>
#include <QThreadPool>

namespace tessary {

void onGuiThread(std::function<void()> work) {
    if (QCoreApplication* application = QCoreApplication::instance())
        QMetaObject::invokeMethod(application, std::move(work), Qt::QueuedConnection);
}

void inBackground(std::function<void()> work) {
    QThreadPool::globalInstance()->start(std::move(work));
}

} // namespace tessary
