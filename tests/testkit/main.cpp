// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/testkit/testkit.h"

#include <QCoreApplication>

int main(int argc, char** argv) {
    const testkit::Surroundings surroundings;
    const QCoreApplication application(argc, argv);
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
