// SPDX-License-Identifier: Apache-2.0
#include "shell/help_menu.h"

#include "tessary/version.h"

#include <QAction>
#include <QMainWindow>
#include <QMenuBar>
#include <QMessageBox>

namespace tessary {

using namespace Qt::StringLiterals;

void addHelpMenu(QMainWindow& window) {
    QMenu* menu = window.menuBar()->addMenu(u"&Help"_s);
    QAction* about = menu->addAction(u"&About Tessary"_s);
    about->setMenuRole(QAction::AboutRole);
    QObject::connect(about, &QAction::triggered, &window, [&window] {
        const QString release = QString::fromLatin1(tessary::version);
        QMessageBox::about(
            &window, u"About Tessary"_s,
            u"<h3>Tessary "_s + release +
                u"</h3><p>Joint review of still photographs of motorcycle riders in a corner."
                u"</p><p>Pose detector: dravik-batch "_s +
                release +
                u", with the MoveNet pose models and the NanoDet object detector.</p>"
                u"<p>Tessary is licensed under the Apache License 2.0. It uses Qt "_s +
                QString::fromLatin1(qVersion()) +
                u" (LGPL 3.0), nlohmann/json (MIT), libjpeg-turbo (IJG and BSD-3-Clause), "
                u"libpng (libpng licence), libexif (LGPL 2.1), OpenSSL (Apache License 2.0), "
                u"TensorFlow.js and the models (Apache License 2.0). The full notices are in "
                u"/usr/share/doc/tessary/copyright.</p>"_s);
    });
}

} // namespace tessary
