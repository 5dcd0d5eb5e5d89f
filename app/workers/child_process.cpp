#include "child_process.h"

#include "dravik/error.h"

#include <QCoreApplication>
#include <QProcess>
#include <QStringList>
#include <algorithm>
#include <atomic>
#include <csignal>
#include <mutex>
#include <sys/types.h>
#include <thread>
#include <unistd.h>

namespace tessary {

namespace {

using Clock = std::chrono::steady_clock;

std::atomic<bool> stopping = false;

// The pool threads that run programs are joined when the application object goes away, after
// aboutToQuit: stopping the programs then keeps quitting quick.
void stopOnQuit() {
    static std::once_flag connected;
    std::call_once(connected, [] {
        if (QCoreApplication* application = QCoreApplication::instance())
            QObject::connect(application, &QCoreApplication::aboutToQuit, application,
                             [] { stopping = true; });
    });
}

bool running(const QProcess& process) {
    return process.state() != QProcess::NotRunning;
}

int milliseconds(std::chrono::milliseconds duration) {
    return static_cast<int>(std::max<std::chrono::milliseconds::rep>(duration.count(), 0));
}

// SIGTERM to the group, the grace, then SIGKILL to the group. The program itself may stop at
// once while something it started ignores the request: the grace is the group's, not the
// program's.
void stopGroup(QProcess& process, pid_t group, const ChildLimits& limits) {
    if (group <= 0) { // never kill(0, ...): that is our own group
        process.kill();
        process.waitForFinished(-1);
        return;
    }
    ::kill(-group, SIGTERM);
    const Clock::time_point graceEnd = Clock::now() + limits.grace;
    process.waitForFinished(milliseconds(limits.grace));
    const auto step = std::min(limits.poll, std::chrono::milliseconds(10));
    while (Clock::now() < graceEnd && ::kill(-group, 0) == 0)
        std::this_thread::sleep_for(step);
    ::kill(-group, SIGKILL);
    process.waitForFinished(-1);
}

} // namespace

void setChildrenStopping(bool on) {
    stopping = on;
}

ChildExit runChild(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                   int logFd, const ChildLimits& limits) {
    stopOnQuit();
    QStringList list;
    for (const std::string& argument : arguments)
        list << QString::fromStdString(argument);

    QProcess process;
    process.setProgram(QString::fromStdString(program.string()));
    process.setArguments(list);
    // Nothing passes through pipes: the child writes straight into the log.
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.setStandardInputFile(QProcess::nullDevice());
    // Runs in the child between fork and exec: only async-signal-safe calls.
    process.setChildProcessModifier([logFd] {
        ::setsid();
        ::dup2(logFd, STDOUT_FILENO);
        ::dup2(logFd, STDERR_FILENO);
    });
    if (stopping)
        throw dravik::DravikError("The batch program \u201c" + program.filename().string() +
                                  "\u201d was not started because Tessary is quitting.");
    process.start();
    if (!process.waitForStarted(-1))
        throw dravik::DravikError(
            "The batch program \u201c" + program.filename().string() +
            "\u201d could not be started: " + process.errorString().toStdString() + ".");

    // The program leads its own session, so its process id is its group's id.
    const auto group = static_cast<pid_t>(process.processId());
    const Clock::time_point deadline = Clock::now() + limits.timeout;
    while (running(process) && Clock::now() < deadline && !stopping)
        process.waitForFinished(milliseconds(limits.poll));
    if (running(process)) {
        stopGroup(process, group, limits);
        return {.timedOut = true};
    }
    if (process.exitStatus() == QProcess::CrashExit)
        return {.crashed = true};
    return {.status = process.exitCode()};
}

} // namespace tessary
