// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QStringList>
#include <optional>

namespace tessary {

// Answers --help and --version on stdout, before anything needs a display or touches the user's
// data folder: the exit status when one of them was asked, nothing otherwise.
std::optional<int> answerInformationOptions(int argc, char** argv);

// The arguments TessaryApp takes (the program, then "manifest results" when given), read from
// those Qt left once it took its own (-platform, -style…). Nothing after an unknown option,
// which is reported on stderr.
std::optional<QStringList> sessionArguments(const QStringList& arguments);

} // namespace tessary
