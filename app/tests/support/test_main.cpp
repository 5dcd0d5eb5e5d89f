// SPDX-License-Identifier: Apache-2.0
#include "model_fixture.h"

#include <QApplication>
#include <cstring>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--generate-sessions") == 0) {
        tessary::test::regenerateSessions();
        return 0;
    }
    // Test discovery runs this binary without the test's environment.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
