// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/activity/activity_parts.h"
#include "app/widgets/button_look.h"
#include "app/widgets/image_button.h"
#include "app/widgets/parts.h"
#include "app/windows/about_window.h"
#include "app/windows/open_panel.h"
#include "app/windows/preferences_window.h"
#include "app/windows/stamp_preview.h"
#include "tests/testkit/testkit.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QColorDialog>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>
#include <QTreeView>

namespace clipheave::app {
namespace {

media::Preferences firstStartPreferences() {
    media::Preferences preferences;
    preferences.storagelocation = u"/home/mira/Videos/com.Tarvolin.clipheave"_s;
    preferences.currentFontname = u"Lucida Grande"_s;
    preferences.currentFontSize = 14;
    preferences.fontLabel = u"Lucida Grande 24"_s;
    preferences.position = u"lower left corner"_s;
    preferences.dateFormat = u"MM/DD/YYYY HH:MM"_s;
    return preferences;
}

TEST(PreferencesWindow, ShowsWhatIsStoredAndNothingElse) {
    PreferencesWindow window(nullptr);
    media::Preferences stored = firstStartPreferences();
    window.show(stored, Qt::white);
    EXPECT_EQ(window.size(), QSize(680, 536));
    EXPECT_EQ(window.findChild<QLineEdit*>(u"storagePathlab"_s)->text(), stored.storagelocation);
    EXPECT_EQ(window.fontLabel(), u"Lucida Grande 24");
    EXPECT_EQ(window.position(), QString()) << "the stored default is no title of the list";
    EXPECT_EQ(window.dateFormat(), u"MM/DD/YYYY HH:MM");
    EXPECT_EQ(window.preview()->stampText(), u"06/14/2025 21:36:20");

    stored.position = u"Upper right corner"_s;
    stored.dateFormat = u"YYYY-MM-DD"_s;
    window.show(stored, Qt::red);
    EXPECT_EQ(window.position(), u"Upper right corner");
    EXPECT_EQ(window.dateFormat(), QString());
    EXPECT_EQ(window.fontColor(), QColor(Qt::red));
    EXPECT_EQ(window.preview()->stampText(), u"2025:06:14 21:36:20");

    auto* format = window.findChild<QComboBox*>(u"dateFormatBtn"_s);
    EXPECT_EQ(format->count(), 3);
    format->setCurrentIndex(1);
    EXPECT_EQ(window.preview()->stampText(), u"14/06/2025 21:36:20");
    window.setStampFont(u"Sans"_s, 30);
    EXPECT_EQ(window.fontLabel(), u"Sans 30");
}

/// The frame of what differs between two images of one size.
QRect differenceOf(const QImage& a, const QImage& b) {
    QRect frame;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            if (a.pixel(x, y) != b.pixel(x, y))
                frame |= QRect(x, y, 1, 1);
    return frame;
}

TEST(StampPreview, StampsItsLandscapeAsPhotosAre) {
    StampPreview preview;
    preview.setStampColor(Qt::transparent);
    const QImage bare = preview.grab().toImage();
    preview.setStampColor(Qt::red);
    for (const int size : {14, 60}) { // the larger one is shrunk with its photo
        preview.setStampFont(u"DejaVu Sans"_s, size);
        preview.setStamp(u"Upper right corner"_s, u"DD/MM/YYYY HH:MM"_s);
        const QRect upper = differenceOf(bare, preview.grab().toImage());
        preview.setStamp(u"Lower left corner"_s, u"DD/MM/YYYY HH:MM"_s);
        const QRect lower = differenceOf(bare, preview.grab().toImage());
        EXPECT_GT(upper.width(), 120) << "whole, and readable";
        EXPECT_LE(std::abs(upper.width() - lower.width()), 1);
        EXPECT_LT(upper.bottom(), lower.top());
        EXPECT_GT(upper.left(), lower.left());
        EXPECT_LT(upper.right(), preview.width() - 4);
    }
}

TEST(PreferencesWindow, ReportsItsButtonsAndKeys) {
    PreferencesWindow window(nullptr);
    window.show(firstStartPreferences(), Qt::white);
    QSignalSpy saved(&window, &PreferencesWindow::save);
    QSignalSpy cancelled(&window, &PreferencesWindow::cancel);
    QSignalSpy folder(&window, &PreferencesWindow::changeStoreLocation);
    QSignalSpy font(&window, &PreferencesWindow::showFontPanel);
    QSignalSpy color(&window, &PreferencesWindow::showColorPanel);
    QSignalSpy appearance(&window, &PreferencesWindow::appearanceChosen);
    const auto press = [&window](const char* name) {
        QTest::mouseClick(window.findChild<QAbstractButton*>(QLatin1String(name)), Qt::LeftButton);
    };
    window.present();
    ASSERT_TRUE(window.isVisible());
    EXPECT_FALSE(window.isModal());
    press("ChangeStoreLocation");
    press("showFontPanelBtn");
    EXPECT_EQ(folder.count(), 1);
    EXPECT_EQ(font.count(), 1);
    QTest::mouseClick(window.findChild<Segment*>()->part(2), Qt::LeftButton);
    ASSERT_EQ(appearance.count(), 1);
    EXPECT_EQ(appearance[0][0].toInt(), static_cast<int>(Appearance::Light));

    auto* field = window.findChild<QLineEdit*>(u"storagePathlab"_s);
    field->setText(u"/other"_s);
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(saved.count(), 1);
    EXPECT_EQ(window.storagePath(), u"/other");
    EXPECT_TRUE(window.isVisible()) << "closing is the controller's";
    press("ResetPreferenceSetting");
    EXPECT_EQ(saved.count(), 2);
    QTest::keyClick(field, Qt::Key_Escape);
    EXPECT_EQ(cancelled.count(), 1);
    EXPECT_FALSE(window.isVisible());
    window.present();
    press("CancelPreferenceSetting");
    EXPECT_EQ(cancelled.count(), 2);
    window.present();
    press("windowCloseBtn");
    EXPECT_EQ(cancelled.count(), 3);

    window.present();
    press("fontColorwell");
    EXPECT_EQ(color.count(), 1);
    window.setStampColor(Qt::yellow);
    EXPECT_EQ(window.fontColor(), QColor(Qt::yellow));
}

TEST(AboutWindow, IsThereOnce) {
    QWidget parent;
    AboutWindow::present(&parent);
    AboutWindow::present(&parent);
    const auto windows = parent.findChildren<AboutWindow*>();
    ASSERT_EQ(windows.size(), 1);
    EXPECT_TRUE(windows[0]->isVisible());
    EXPECT_TRUE(windows[0]
                    ->findChild<ToneLabel*>(u"versionLabel"_s)
                    ->text()
                    .contains(QStringLiteral(CLIPHEAVE_VERSION)));
    windows[0]->reject();
    AboutWindow::present(&parent);
    EXPECT_TRUE(windows[0]->isVisible());
}

class OpenPanelTest : public testing::Test {
protected:
    OpenPanelTest() {
        parent.resize(900, 600);
        parent.show();
        folder.write("clips/inside.mp4", "x");
        folder.write("a.mp4", "x");
        folder.write("b.mp4", "x");
    }

    QFileDialog* open(OpenPanel::Mode mode) {
        OpenPanel::open(&parent, u"Please select videos or auidos to import."_s, mode, settings,
                        [this](const QStringList& paths) { chosen += paths; });
        auto* panel = parent.findChild<QFileDialog*>(u"openPanel"_s);
        panel->setDirectory(folder.path());
        return panel;
    }
    /// Selects names in the list once it has read the folder.
    void select(QFileDialog* panel, const QStringList& names) {
        auto* view = panel->findChild<QTreeView*>(u"treeView"_s);
        const auto find = [&](const QString& name) {
            return view->model()->match(view->model()->index(0, 0, view->rootIndex()),
                                        Qt::DisplayRole, name, 1, Qt::MatchExactly);
        };
        for (const QString& name : names) {
            ASSERT_TRUE(QTest::qWaitFor([&] { return !find(name).isEmpty(); }, 5000));
            view->selectionModel()->select(find(name).first(),
                                           QItemSelectionModel::Select | QItemSelectionModel::Rows);
        }
    }
    QPushButton* openButton(QFileDialog* panel) {
        return panel->findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Open);
    }
    [[nodiscard]] QStringList paths(const QStringList& names) const {
        QStringList all;
        for (const QString& name : names)
            all += folder.path(name);
        return all;
    }

    QWidget parent;
    testkit::TempDir folder;
    QSettings settings{folder.path("window.conf"), QSettings::IniFormat};
    QList<QStringList> chosen;
};

TEST_F(OpenPanelTest, AWholePathThatIsTypedIsTakenOnceAndAlone) {
    QFileDialog* panel = open(OpenPanel::FilesAndFolders);
    select(panel, {u"b.mp4"_s}); // left over from the completion of the typed text
    auto* name = panel->findChild<QLineEdit*>(u"fileNameEdit"_s);
    name->setFocus();
    name->selectAll();
    QTest::keyClicks(name, folder.path("clips") + u'/');
    QTest::keyClick(name, Qt::Key_Return);
    static_cast<QDialog*>(panel)->accept(); // the other way that Return takes
    ASSERT_EQ(chosen.size(), 1);
    EXPECT_EQ(chosen.front(), paths({u"clips"_s}));
}

TEST_F(OpenPanelTest, TakesFilesAndFoldersTogether) {
    QFileDialog* panel = open(OpenPanel::FilesAndFolders);
    EXPECT_TRUE(panel->isVisible()) << "and open() came back";
    EXPECT_EQ(panel->windowModality(), Qt::WindowModal);
    EXPECT_EQ(panel->findChild<ToneLabel*>(u"openPanelMessage"_s)->text(),
              u"Please select videos or auidos to import.");
    EXPECT_NE(parent.findChild<Scrim*>(), nullptr);
    select(panel, {u"clips"_s, u"b.mp4"_s});
    openButton(panel)->click();
    ASSERT_EQ(chosen.size(), 1);
    EXPECT_THAT(chosen[0], testing::UnorderedElementsAreArray(paths({u"clips"_s, u"b.mp4"_s})));
    EXPECT_EQ(parent.findChild<Scrim*>(), nullptr);

    QTest::qWait(0); // the closed panel is deleted
    panel = open(OpenPanel::FilesAndFolders);
    select(panel, {u"clips"_s});
    EXPECT_TRUE(openButton(panel)->isEnabled()) << "a folder alone will do";
    openButton(panel)->click();
    ASSERT_EQ(chosen.size(), 2);
    EXPECT_EQ(chosen[1], paths({u"clips"_s}));
}

TEST_F(OpenPanelTest, RemembersTheFolderAndIgnoresACancelledPanel) {
    QFileDialog* panel = open(OpenPanel::FilesOnly);
    select(panel, {u"a.mp4"_s, u"b.mp4"_s});
    openButton(panel)->click();
    ASSERT_EQ(chosen.size(), 1);
    EXPECT_THAT(chosen[0], testing::UnorderedElementsAreArray(paths({u"a.mp4"_s, u"b.mp4"_s})));
    QTest::qWait(0);
    OpenPanel::open(&parent, {}, OpenPanel::FilesOnly, settings,
                    [this](const QStringList& paths) { chosen += paths; });
    panel = parent.findChild<QFileDialog*>(u"openPanel"_s);
    EXPECT_EQ(panel->directory().absolutePath(), folder.path());
    select(panel, {u"a.mp4"_s});
    panel->reject();
    QTest::qWait(0);
    panel = open(OpenPanel::FilesOnly);
    select(panel, {u"clips"_s});
    openButton(panel)->click();
    EXPECT_EQ(chosen.size(), 1) << "a folder is no file";
    panel->reject();
    EXPECT_EQ(parent.findChild<Scrim*>(), nullptr);
}

} // namespace
} // namespace clipheave::app
