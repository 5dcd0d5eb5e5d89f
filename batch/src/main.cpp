// SPDX-License-Identifier: Apache-2.0
#include "batch_run.h"
#include "tessary/version.h"
#include "worker_location.h"

#include <csignal>
#include <cstdio>
#include <getopt.h>

namespace {

constexpr const char* help = R"(Usage: dravik-batch redetect REQUEST RESULT
       dravik-batch feasibility MANIFEST OUTPUT
Finds the 19 joints of motorcycle riders in photos (JPEG or PNG) for Tessary, which runs it.

  redetect REQUEST RESULT      detect again on the crop a retry request names
  feasibility MANIFEST OUTPUT  detect every rider photo of a session into a results file

Options:
  -h, --help     show this help and exit
      --version  show the version and exit

Exit status: 0 done; 1 failed, with the reason on stderr; 2 (feasibility only) done, but some
photos need attention; 64 wrong arguments.
)";

} // namespace

int main(int argc, char** argv) {
    static const option options[] = {{"help", no_argument, nullptr, 'h'},
                                     {"version", no_argument, nullptr, 'V'},
                                     {nullptr, 0, nullptr, 0}};
    // "+": options end at the sub-command, whose arguments are never reordered.
    for (int option; (option = getopt_long(argc, argv, "+h", options, nullptr)) != -1;) {
        if (option == 'h') {
            std::fputs(help, stdout);
            return dravik::batch::success;
        }
        if (option == 'V') {
            std::printf("dravik-batch %s\n", tessary::version);
            return dravik::batch::success;
        }
        std::fputs("See \u201cdravik-batch --help\u201d.\n", stderr);
        return dravik::batch::usage;
    }
    // A worker that dies must surface as a failed write, not kill us.
    std::signal(SIGPIPE, SIG_IGN);
    std::vector<std::string> arguments(argv + optind, argv + argc);
    return dravik::batch::runBatch(
        arguments, [] { return dravik::batch::installedWorker(dravik::batch::programFolder()); });
}
