// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/testkit/testkit.h"

#include <QCoreApplication>

int main(int argc, char** argv) {
    // Fixed surroundings, also when a test is started by hand.
    if (!qEnvironmentVariableIsSet("TZ"))
        qputenv("TZ", "UTC");
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const testkit::OwnUserFolders folders;
    const QCoreApplication application(argc, argv);
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
