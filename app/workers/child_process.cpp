// SPDX-License-Identifier: Apache-2.0
#include "child_process.h"

#include "capped_log.h"
#include "dravik/error.h"
#include "dravik/file_io.h"

#include <QCoreApplication>
#include <QProcess>
#include <QStringList>
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
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

[[noreturn]] void failStart(const std::filesystem::path& program, const std::string& reason) {
    throw dravik::DravikError("The batch program \u201c" + program.filename().string() +
                              "\u201d could not be started: " + reason + ".");
}

// A pipe for the program's output: close-on-exec, so that no other program started meanwhile
// inherits its writing end and keeps it open, and roomy, so that bursts wait less for the reader.
std::pair<dravik::FileDescriptor, dravik::FileDescriptor>
outputPipe(const std::filesystem::path& program) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        failStart(program, std::strerror(errno));
    dravik::FileDescriptor reader(ends[0]);
    dravik::FileDescriptor writer(ends[1]);
    ::fcntl(reader.get(), F_SETFL, O_NONBLOCK);
    ::fcntl(writer.get(), F_SETPIPE_SZ, 1 << 20); // best effort: the default 64 KiB also works
    return {std::move(reader), std::move(writer)};
}

} // namespace

void setChildrenStopping(bool on) {
    stopping = on;
}

ChildExit runChild(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                   int logFd, const ChildLimits& limits,
                   const std::function<void(std::string_view line)>& onLine) {
    stopOnQuit();
    QStringList list;
    for (const std::string& argument : arguments)
        list << QString::fromStdString(argument);

    if (stopping)
        throw dravik::DravikError("The batch program \u201c" + program.filename().string() +
                                  "\u201d was not started because Tessary is quitting.");
    auto [output, input] = outputPipe(program);

    QProcess process;
    process.setProgram(QString::fromStdString(program.string()));
    process.setArguments(list);
    // Qt makes no pipes of its own: the child's output and errors are the writing end of ours.
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.setStandardInputFile(QProcess::nullDevice());
    // Runs in the child between fork and exec: only async-signal-safe calls.
    process.setChildProcessModifier([writer = input.get()] {
        ::setsid();
        ::dup2(writer, STDOUT_FILENO);
        ::dup2(writer, STDERR_FILENO);
    });
    process.start();
    if (!process.waitForStarted(-1))
        failStart(program, process.errorString().toStdString());
    input = dravik::FileDescriptor(); // the child holds it now; the end of output is its exit

    // The program leads its own session, so its process id is its group's id.
    const auto group = static_cast<pid_t>(process.processId());
    CappedLog log(logFd, limits.logBytes, onLine);
    bool open = true;
    const Clock::time_point deadline = Clock::now() + limits.timeout;
    while (running(process) && Clock::now() < deadline && !stopping) {
        const auto wait = std::min(
            limits.poll, std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()));
        if (open)
            open = log.take(output.get(), wait);
        else
            process.waitForFinished(milliseconds(wait));
        process.waitForFinished(0); // notices an exit without waiting
    }
    if (running(process)) {
        stopGroup(process, group, limits);
        log.take(output.get(), std::chrono::milliseconds(0));
        return {.timedOut = true};
    }
    // What the program wrote just before it ended; something it left running may write on, but
    // is not waited for.
    if (open)
        log.take(output.get(), std::chrono::milliseconds(0));
    if (process.exitStatus() == QProcess::CrashExit)
        return {.crashed = true};
    return {.status = process.exitCode()};
}

} // namespace tessary
