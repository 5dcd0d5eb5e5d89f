// SPDX-License-Identifier: Apache-2.0
#include "workers_support.h"

#include <QImage>
#include <fstream>
#include <sstream>

namespace tessary::test {

void installFakeBatch(const fs::path& bundleRoot, const std::string& mode,
                      const std::map<std::string, std::string>& environment) {
    const fs::path program = Bundle(bundleRoot).batchProgram();
    fs::create_directories(program.parent_path());
    // A script that execs keeps its process id, so the fake is the child the app started.
    std::ofstream script(program, std::ios::trunc);
    script << "#!/bin/sh\nexport FAKE_BATCH_MODE='" << mode << "'\n";
    for (const auto& [name, value] : environment)
        script << "export " << name << "='" << value << "'\n";
    script << "exec '" << TESSARY_FAKE_BATCH << "' \"$@\"\n";
    script.close();
    fs::permissions(program, fs::perms::owner_all | fs::perms::group_exec | fs::perms::others_exec,
                    fs::perm_options::replace);
}

bool contains(const fs::path& file, const std::string& text) {
    return readText(file).find(text) != std::string::npos;
}

std::vector<pid_t> livingMembers(pid_t group) {
    std::vector<pid_t> members;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator("/proc", ignored)) {
        const std::string name = entry.path().filename().string();
        // The command name in parentheses may hold blanks: fields count from its end.
        const std::string stat = readText(entry.path() / "stat");
        const auto close = stat.rfind(')');
        if (name.find_first_not_of("0123456789") != std::string::npos || close == std::string::npos)
            continue;
        std::istringstream fields(stat.substr(close + 1));
        char state = 0;
        pid_t parent = 0;
        pid_t memberGroup = 0;
        if (fields >> state >> parent >> memberGroup && memberGroup == group && state != 'Z')
            members.push_back(static_cast<pid_t>(std::stol(name)));
    }
    return members;
}

void writePhoto(const fs::path& file, int seed) {
    QImage image(48 + seed % 7, 32, QImage::Format_RGB888);
    image.fill(QColor::fromHsv((seed * 37) % 360, 200, 200));
    image.setPixelColor(seed % 32, seed % 32, Qt::white);
    fs::create_directories(file.parent_path());
    image.save(QString::fromStdString(file.string()), "PNG");
}

} // namespace tessary::test
