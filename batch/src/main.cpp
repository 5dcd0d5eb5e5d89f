#include "batch_run.h"
#include "worker_location.h"

#include <csignal>

int main(int argc, char** argv) {
    // A worker that dies must surface as a failed write, not kill us.
    std::signal(SIGPIPE, SIG_IGN);
    std::vector<std::string> arguments(argv + 1, argv + argc);
    return dravik::batch::runBatch(
        arguments, [] { return dravik::batch::installedWorker(dravik::batch::programFolder()); });
}
