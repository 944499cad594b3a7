// SPDX-License-Identifier: GPL-3.0-or-later
// The first start and the values it leaves, as the window shows and stores them.
#include "app/AppDelegate.h"
#include "app/windows/main_window.h"
#include "app/windows/preferences_window.h"
#include "media/preferences.h"
#include "tests/app/window/fake_desktop.h"

#include <QAbstractButton>
#include <QColorDialog>
#include <QComboBox>
#include <QFontDialog>

#include <utility>

namespace {

using namespace clipheave;
using namespace clipheave::app;

class PreferencesTest : public testing::Test {
protected:
    void SetUp() override { qputenv("HOME", dir.path().toUtf8()); }
    void TearDown() override {
        controller = nullptr;
        qputenv("HOME", home);
    }
    void start() {
        controller = nullptr;
        controller = std::make_unique<AppDelegate>(surroundingsOf(desktop, dir));
        controller->awakeFromNib();
        controller->applicationDidFinishLaunching();
    }
    platform::NSUserDefaults stored() const {
        return platform::NSUserDefaults(dir.path("prefs.conf"));
    }

    testkit::TempDir dir;
    const QByteArray home = qgetenv("HOME");
    std::shared_ptr<FakeDesktop> desktop = std::make_shared<FakeDesktop>();
    std::unique_ptr<AppDelegate> controller;
};

TEST_F(PreferencesTest, TheFirstStartStoresItsValuesAndShowsTheProductPageOnce) {
    start();
    const std::pair<const char16_t*, const char16_t*> kFirst[] = {
        {u"fontName", u"Lucida Grande"},
        {u"Postion", u"lower left corner"},
        {u"Dateformat", u"MM/DD/YYYY HH:MM"},
    };
    for (const auto& [key, value] : kFirst)
        EXPECT_EQ(stored().stringForKey(QString::fromUtf16(key)), QString::fromUtf16(value));
    EXPECT_EQ(stored().stringForKey(u"storagePath"_s), media::defaultStorageLocation());
    EXPECT_FALSE(stored().contains(u"fontsize"_s));
    EXPECT_EQ(controller->preferences().currentFontname, u"Lucida Grande");
    EXPECT_EQ(controller->preferences().currentFontSize, 14);
    const PreferencesWindow& window = *controller->preferencesWindow();
    EXPECT_EQ(window.fontLabel(), u"Lucida Grande 24");
    EXPECT_EQ(window.fontColor(), QColor(Qt::white));
    EXPECT_EQ(window.dateFormat(), u"MM/DD/YYYY HH:MM");
    EXPECT_EQ(window.position(), u"") << "the stored text is none of the titles";
    EXPECT_EQ(desktop->opened, QList<QUrl>{QUrl(u"https://clipheave.example/"_s)});
    start();
    EXPECT_EQ(desktop->opened.size(), 1);
}

TEST_F(PreferencesTest, MissingKeysChooseTheFirstTitles) {
    ASSERT_TRUE(stored().setObject_forKey(dir.path("out"), u"storagePath"_s));
    start();
    const PreferencesWindow& window = *controller->preferencesWindow();
    EXPECT_EQ(window.position(), u"Lower left corner");
    EXPECT_EQ(window.dateFormat(), u"MM/DD/YYYY HH:MM");
    EXPECT_EQ(window.fontLabel(), u"Lucida Grande 24");
    EXPECT_FALSE(stored().contains(u"Dateformat"_s));
}

TEST_F(PreferencesTest, TheFontPanelBeginsWithItsFixedFontAndTheFolderComesFromTheChooser) {
    start();
    controller->ShowFontPanelAction();
    ASSERT_EQ(desktop->fontPanels.size(), 1);
    EXPECT_EQ(desktop->fontPanels[0].pointSize(), 14);
    EXPECT_EQ(desktop->fontPanels[0].family(), u"Lucida Grande");
    const QString before = controller->preferencesWindow()->storagePath();
    controller->ChangeStoreLocation();
    EXPECT_EQ(controller->preferencesWindow()->storagePath(), before) << "cancelled";
    desktop->chosenPaths = QStringList{u"/else"_s};
    controller->ChangeStoreLocation();
    EXPECT_EQ(controller->preferencesWindow()->storagePath(), u"/else");
}

TEST_F(PreferencesTest, ThePanelsOfTheDesktopReportWhatIsChosen) {
    start();
    QWidget parent;
    const Surroundings real = desktopSurroundings(nullptr, nullptr);
    QList<QFont> fonts;
    for (const int size : {14, 20}) // the second time it only comes to the front
        real.stylePanels->showFontPanel(&parent, QFont(u"Sans"_s, size),
                                        [&fonts](const QFont& font) { fonts.append(font); });
    const auto panels = parent.findChildren<QFontDialog*>();
    ASSERT_EQ(panels.size(), 1);
    EXPECT_EQ(panels[0]->currentFont().pointSize(), 14);
    panels[0]->setCurrentFont(QFont(u"Sans"_s, 30));
    ASSERT_FALSE(fonts.isEmpty());
    EXPECT_EQ(fonts.last().pointSize(), 30);

    auto* well = controller->preferencesWindow()->findChild<QAbstractButton*>(u"fontColorwell"_s);
    well->click();
    EXPECT_EQ(controller->preferencesWindow()->fontColor(), QColor(Qt::white)) << "cancelled";
    desktop->chosenColor = Qt::green;
    well->click();
    EXPECT_EQ(controller->preferencesWindow()->fontColor(), QColor(Qt::green));
    QColor chosen;
    real.stylePanels->chooseColor(&parent, Qt::white,
                                  [&chosen](const QColor& color) { chosen = color; });
    auto* colors = parent.findChild<QColorDialog*>();
    ASSERT_NE(colors, nullptr);
    EXPECT_EQ(colors->currentColor(), QColor(Qt::white));
    colors->setCurrentColor(Qt::yellow);
    colors->accept();
    EXPECT_EQ(chosen, QColor(Qt::yellow));
}

} // namespace
