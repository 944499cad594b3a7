// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/testkit/testkit.h"

#include <QApplication>

#include <clocale>

int main(int argc, char** argv) {
    const testkit::Surroundings surroundings;
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    const QApplication application(argc, argv);
    std::setlocale(LC_NUMERIC, "C"); // the player asks for it
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
