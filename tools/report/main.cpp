// SPDX-License-Identifier: Apache-2.0
// tessary-report: the coaching report of a session's saved review, as a PDF, without a window.
#include "coaching_report.h"
#include "command_line.h"
#include "dravik/error.h"
#include "exporting/report_source.h"

#include <QGuiApplication>
#include <cstdio>
#include <exception>
#include <iostream>
#include <optional>
#include <string>

using namespace tessary;

namespace {

constexpr const char* usage =
    "Usage: tessary-report MANIFEST RESULTS [--pair ID | --frame ID] -o FILE.pdf\n"
    "       tessary-report --help | --version\n";

constexpr const char* help =
    "\n"
    "Writes the coaching report of a session's saved review as a PDF: for each pair, its photos\n"
    "with the reviewed joints and the wheel-lean lines, the coaching drafts, the measurements\n"
    "behind them and every limitation the window states. A pair with a reference rider is\n"
    "compared; a rider alone gets the page of their photo. Paper is Letter where the locale\n"
    "measures in inches, A4 elsewhere. No display is needed.\n"
    "\n"
    "  -o, --output FILE.pdf      the file to write (never a file of the session)\n"
    "      --pair ID              only this pair\n"
    "      --frame ID             only this photo (\"PAIR/RIDER\"), as Single mode shows it\n"
    "  -h, --help                 this text\n"
    "  -V, --version              the version\n";

// Qt's own notes (such as a missing XDG_RUNTIME_DIR, common where there is no desktop session)
// say nothing about the report; only its errors are passed on.
void qtErrorsOnly(QtMsgType type, const QMessageLogContext&, const QString& message) {
    if (type == QtCriticalMsg || type == QtFatalMsg)
        std::cerr << message.toStdString() << "\n";
}

} // namespace

int main(int argc, char** argv) {
    enum { pairOption = 256, frameOption };
    std::optional<std::string> pairID;
    std::optional<std::string> frameID;
    tessary::CommandLine line("tessary-report", usage, help);
    if (auto status = line.parse(argc, argv,
                                 {{"pair", required_argument, nullptr, pairOption},
                                  {"frame", required_argument, nullptr, frameOption}},
                                 [&](int option, const char* value) {
                                     (option == pairOption ? pairID : frameID) = value;
                                 }))
        return *status;
    const std::string& output = line.output();
    if (argc - optind != 2)
        return line.usageError("Name the session's MANIFEST and RESULTS.");
    if (output.empty())
        return line.usageError("Name the file to write with -o FILE.pdf.");
    if (pairID && frameID)
        return line.usageError("Choose a pair or a photo, not both.");

    // Fonts and painting need a GUI application, never a display.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler(qtErrorsOnly);
    int qtArgc = 1;
    QGuiApplication application(qtArgc, argv);
    try {
        const ReportSession session = ReportSession::read(argv[optind], argv[optind + 1]);
        const std::size_t pages = writeCoachingReport(
            session, reportSubjects(*session.document, pairID, frameID), output);
        std::cout << "Wrote \u201c" << output << "\u201d: " << pages
                  << (pages == 1 ? " page" : " pages") << " of review revision "
                  << session.document->revision() << ".\n";
        return 0;
    } catch (const dravik::DravikError& error) {
        std::cerr << error.what() << "\n";
        return 1;
    } catch (const std::exception& error) {
        std::cerr << "The report could not be written: " << error.what() << "\n";
        return 1;
    }
}
