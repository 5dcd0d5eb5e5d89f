// SPDX-License-Identifier: Apache-2.0
#include "command_line.h"
#include "display_guard.h"
#include "environment/bundle.h"
#include "environment/sample_copy.h"
#include "shell/tessary_app.h"
#include "tessary/version.h"

#include <QApplication>
#include <QIcon>
#include <cstdio>
#include <optional>

int main(int argc, char** argv) {
    if (const auto status = tessary::answerInformationOptions(argc, argv))
        return *status;
    std::optional<QApplication> application;
    {
        const tessary::DisplayFailureGuard guard;
        application.emplace(argc, argv);
    }
    const auto arguments = tessary::sessionArguments(QApplication::arguments());
    if (!arguments)
        return 64;
    QApplication::setApplicationName("Tessary");
    QApplication::setApplicationVersion(tessary::version);
    // Wayland and the desktop match the window to its launcher by this name.
    QApplication::setDesktopFileName("org.tessary.Tessary");

    const tessary::Bundle bundle = tessary::Bundle::fromApplication();
    QApplication::setWindowIcon(
        QIcon(QString::fromStdString(bundle.resourcePath("tessary.png").string())));
    if (auto problem = tessary::provideSampleSession(bundle))
        std::fprintf(stderr, "%s\n", problem->c_str());

    tessary::TessaryApp app(bundle, *arguments);
    app.show();
    return QApplication::exec();
}
