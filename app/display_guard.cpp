// SPDX-License-Identifier: Apache-2.0
#include "display_guard.h"

#include <QString>
#include <QStringList>
#include <QtGlobal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

namespace tessary {

namespace {

QtMessageHandler previousHandler = nullptr;
QStringList heldMessages;

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

std::string noDisplaySentence() {
    const std::string platform = environment("QT_QPA_PLATFORM");
    if (!platform.empty())
        return "Tessary cannot open its window because the Qt platform \u201c" + platform +
               "\u201d could not be started.";
    std::string display = environment("WAYLAND_DISPLAY");
    if (display.empty())
        display = environment("DISPLAY");
    if (display.empty())
        return "Tessary cannot open its window because no display is available; start it from a "
               "desktop session.";
    return "Tessary cannot open its window because the display \u201c" + display +
           "\u201d could not be opened.";
}

void holdOrExit(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (type == QtFatalMsg && message.contains("platform plugin")) {
        std::fprintf(stderr, "%s\n", noDisplaySentence().c_str());
        std::_Exit(1);
    }
    if (type == QtFatalMsg) {
        // Any other fatal error is Qt's own business: say everything, then let Qt abort.
        for (const QString& held : heldMessages)
            std::fprintf(stderr, "%s\n", qPrintable(held));
        previousHandler(type, context, message);
        return;
    }
    heldMessages << qFormatLogMessage(type, context, message);
}

} // namespace

DisplayFailureGuard::DisplayFailureGuard() {
    previousHandler = qInstallMessageHandler(holdOrExit);
}

DisplayFailureGuard::~DisplayFailureGuard() {
    qInstallMessageHandler(previousHandler);
    for (const QString& held : std::exchange(heldMessages, {}))
        std::fprintf(stderr, "%s\n", qPrintable(held));
}

} // namespace tessary
