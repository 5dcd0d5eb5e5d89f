// SPDX-License-Identifier: Apache-2.0
#include "command_line.h"

#include "tessary/version.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <cstdio>

namespace tessary {

namespace {

struct Parser {
    QCommandLineParser parser;
    QCommandLineOption help{{"h", "help"}, "Show this help and exit."};
    QCommandLineOption version{{"v", "version"}, "Show the version and exit."};

    Parser() {
        // Qt prints the description as it is, so it is wrapped here.
        parser.setApplicationDescription(
            "Review the detected joints and wheel lean of motorcycle riders in corner "
            "photographs.\n"
            "\n"
            "With a session manifest and its detection results, that session opens. Without\n"
            "them, the bundled sample session opens, and photo folders in the data folder are\n"
            "analysed and listed as sessions. Photos are JPEG or PNG; HEIC and camera raw files\n"
            "are not read.");
        // Qt's own options are single-dash words (-platform, -reverse); never read them as
        // bundles of short options such as -v.
        parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
        parser.addOption(help);
        parser.addOption(version);
        // The two arguments go together, so the usage line brackets them as one.
        parser.addPositionalArgument("manifest", "The session manifest (session.json).",
                                     "[manifest");
        parser.addPositionalArgument("results", "The detector's results for it (results.json).",
                                     "results]");
    }
};

QStringList toStrings(int argc, char** argv) {
    QStringList strings;
    for (int i = 0; i < argc; ++i)
        strings << QString::fromLocal8Bit(argv[i]);
    return strings;
}

} // namespace

std::optional<int> answerInformationOptions(int argc, char** argv) {
    Parser command;
    // Options Qt still has to take count as unknown here; only help and version matter yet.
    command.parser.parse(toStrings(argc, argv));
    if (command.parser.isSet(command.help)) {
        // The usage line names the program as it was started, which needs an application.
        const QCoreApplication application(argc, argv);
        std::fputs(qPrintable(command.parser.helpText()), stdout);
        return 0;
    }
    if (command.parser.isSet(command.version)) {
        std::printf("tessary %s\n", version);
        return 0;
    }
    return std::nullopt;
}

std::optional<QStringList> sessionArguments(const QStringList& arguments) {
    Parser command;
    if (!command.parser.parse(arguments)) {
        std::fprintf(stderr, "tessary: %s\n", qPrintable(command.parser.errorText()));
        return std::nullopt;
    }
    return QStringList{arguments.value(0)} + command.parser.positionalArguments();
}

} // namespace tessary
