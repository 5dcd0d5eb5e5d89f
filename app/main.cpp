#include "environment/bundle.h"
#include "environment/sample_copy.h"
#include "shell/tessary_app.h"

#include <QApplication>
#include <QIcon>
#include <cstdio>

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationName("Tessary");
    // Wayland and the desktop match the window to its launcher by this name.
    QApplication::setDesktopFileName("org.tessary.Tessary");

    const tessary::Bundle bundle = tessary::Bundle::fromApplication();
    QApplication::setWindowIcon(
        QIcon(QString::fromStdString(bundle.resourcePath("tessary.png").string())));
    if (auto problem = tessary::provideSampleSession(bundle))
        std::fprintf(stderr, "%s\n", problem->c_str());

    tessary::TessaryApp app(bundle, QApplication::arguments());
    app.show();
    return QApplication::exec();
}
