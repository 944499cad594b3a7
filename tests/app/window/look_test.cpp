// SPDX-License-Identifier: GPL-3.0-or-later
// Parts of the window that must fit whatever its width, and what its menus show.
#include "app/grab_states.h"
#include "app/widgets/image_button.h"
#include "app/widgets/parts.h"
#include "app/windows/list_head.h"
#include "tests/app/window/window_fixture.h"

#include <QImage>
#include <QLabel>
#include <QMenu>
#include <QSet>

#include <algorithm>

namespace {

using namespace clipheave;
using namespace clipheave::app;

TEST(ListHead, KeepsTheWarningWhereBothDoNotFit) {
    Theme::instance().apply(Appearance::Dark);
    ListHead head(nullptr);
    head.resize(1200, head.height());
    head.show();
    const auto* summary = head.findChild<QLabel*>(u"listSummary"_s);
    const auto* note = head.findChild<QLabel*>(u"sortedNote"_s);
    const QString text = u"3 selected of 19, 5m:33s, 3.53 GB"_s;
    head.setSummary(text, false);
    EXPECT_EQ(summary->text(), text);
    EXPECT_TRUE(summary->isVisible() && !note->isVisible());
    head.setSummary(text, true);
    EXPECT_TRUE(summary->isVisible() && note->isVisible());
    head.resize(480, head.height());
    QCoreApplication::processEvents();
    EXPECT_TRUE(!summary->isVisible() && note->isVisible());
    const auto* remove = head.findChild<ImageButton*>(u"removeMediaFileBtn"_s);
    EXPECT_LE(remove->geometry().right(), 480);
    EXPECT_LT(note->geometry().right(), remove->geometry().left());
    head.setSummary(text, false);
    EXPECT_TRUE(summary->isVisible() && !note->isVisible());
}

using LookOfWindow = WindowFixture;

TEST_F(LookOfWindow, MenusShowImagesAndKeysAndAKeyActsOnce) {
    const QMenu* popUp = window()->menu(u"videoEditMenu"_s);
    for (const QAction* action : popUp->actions())
        EXPECT_TRUE(action->isSeparator() || !action->icon().isNull()) << action->text();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window()));
    QSignalSpy asked(window(), &MainWindow::commandRequested);
    EXPECT_TRUE(std::ranges::any_of(
        popUp->actions(), [](const QAction* action) { return !action->shortcut().isEmpty(); }));
    // Shown by the pop-up as well; only the menu bar's entry acts.
    QTest::keyClick(window(), Qt::Key_T, Qt::ControlModifier);
    ASSERT_EQ(asked.count(), 1);
    EXPECT_EQ(asked.at(0).at(0).toString(), u"ClickShowAddWaterMarktoVideoFileAction");

    for (const QSize size : {QSize(1100, 680), QSize(1440, 900)}) {
        window()->resize(size);
        QCoreApplication::processEvents();
        int right = 0;
        for (const char* name :
             {"videoRenameBtn", "datesBtn", "extractMetaBtn", "videoConvertBtn", "videoCompressBtn",
              "videoEditBtn", "videoWaterMarkBtn", "videoExtractBtn", "storageChip"}) {
            const auto* part = window()->findChild<QWidget*>(QLatin1String(name));
            const int left = part->mapTo(window(), QPoint()).x();
            EXPECT_GE(left, right) << name << " at " << size.width();
            EXPECT_GE(part->width(), part->minimumSizeHint().width()) << name;
            right = left + part->width();
        }
        EXPECT_LE(right, size.width());
    }
}

TEST(Look, EveryStateOfAControlLooksDifferent) {
    for (const Appearance appearance : {Appearance::Dark, Appearance::Light}) {
        Theme::instance().apply(appearance);
        const QImage sheet = grabStates().toImage();
        // The first four rows are buttons: normal, hover, pressed, focus and disabled beside one
        // another.
        for (int row = 0; row < 4; ++row) {
            QSet<QByteArray> seen;
            for (int column = 0; column < 5; ++column) {
                const QImage cell = sheet.copy(24 + column * 170, 56 + row * 64, 170, 62)
                                        .convertToFormat(QImage::Format_RGB32);
                seen.insert(QByteArray(reinterpret_cast<const char*>(cell.constBits()),
                                       cell.sizeInBytes()));
            }
            EXPECT_EQ(seen.size(), 5) << row << (appearance == Appearance::Dark ? " dark" : "");
        }
    }
}

} // namespace
