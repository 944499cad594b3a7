// SPDX-License-Identifier: GPL-3.0-or-later
// The window as a user works with it, by real input events on an offscreen screen.
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/jobs/job_board.h"
#include "app/list/media_list_model.h"
#include "app/list/media_table_view.h"
#include "app/list/photo_grid.h"
#include "app/panes/detail_pane.h"
#include "app/theme/theme.h"
#include "app/widgets/image_button.h"
#include "app/windows/main_window.h"
#include "app/windows/preferences_window.h"
#include "media/media_import.h"
#include "media/video_pane.h"
#include "platform/foundation/log.h"
#include "tests/app/window/fake_desktop.h"
#include "tests/testkit/media.h"

#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QSet>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>

#include <stdexcept>
#include <string>
#include <thread>

namespace {

using namespace clipheave;
using namespace clipheave::app;

using testkit::movie;

class WindowTest : public testing::Test {
protected:
    void SetUp() override {
        Theme::instance().apply(Appearance::Dark);
        Surroundings surroundings = surroundingsOf(desktop, dir);
        const auto& defaults = surroundings.defaults;
        ASSERT_TRUE(defaults->setObject_forKey(dir.path(QStringLiteral("out")),
                                               QStringLiteral("storagePath")));
        ASSERT_TRUE(defaults->setObject_forKey(QStringLiteral("lower left corner"),
                                               QStringLiteral("Postion")));
        controller = std::make_unique<AppDelegate>(std::move(surroundings));
        controller->awakeFromNib();
        controller->applicationDidFinishLaunching();
    }

    MainWindow* window() { return controller->mainWindow(); }
    template <class T> T* child(const char* name) {
        T* found = window()->findChild<T*>(QLatin1String(name));
        if (!found)
            throw std::runtime_error(std::string("no control ") + name); // ends the one test
        return found;
    }
    void import(const QStringList& paths) {
        QSignalSpy done(controller.get(), &AppDelegate::importFinished);
        controller->importPaths(paths);
        EXPECT_TRUE(done.wait(10'000));
    }
    void importThree() {
        QStringList paths;
        for (const char* name : {"b", "c", "a"})
            paths.append(dir.write(QLatin1String(name) + QStringLiteral(".mp4"), movie(name)));
        import(paths);
    }
    QStringList names() {
        QStringList all;
        for (const auto& item : controller->mediaController()->content())
            all.append(item->fileName);
        return all;
    }

    testkit::TempDir dir;
    std::shared_ptr<FakeDesktop> desktop = std::make_shared<FakeDesktop>();
    std::unique_ptr<AppDelegate> controller;
};

QStringList list(std::initializer_list<const char*> texts) {
    QStringList all;
    for (const char* text : texts)
        all.append(QLatin1String(text));
    return all;
}

TEST_F(WindowTest, TypingATitleAndPressingSaveWritesANewFile) {
    importThree();
    window()->selectRow(1);
    auto* title = child<QLineEdit>("mediaTitle");
    ASSERT_EQ(title->text(), u"c");
    title->setFocus();
    title->selectAll();
    QTest::keyClicks(title, QStringLiteral("Typed"));
    EXPECT_TRUE(controller->changeFlags().basicInfoChange);
    EXPECT_FALSE(controller->changeFlags().cameraInfoChange);
    const QByteArray before = testkit::TempDir::read(dir.path(QStringLiteral("c.mp4")));
    QSignalSpy saved(controller.get(), &AppDelegate::saveFinished);
    QTest::mouseClick(child<ImageButton>("SaveMediaChangesBtn"), Qt::LeftButton);
    ASSERT_TRUE(saved.wait(10'000));
    const QByteArray written = testkit::TempDir::read(dir.path(QStringLiteral("out/c.mp4")));
    EXPECT_TRUE(written.contains("Typed"));
    EXPECT_EQ(testkit::TempDir::read(dir.path(QStringLiteral("c.mp4"))), before);
    const ActivityJob& job = controller->activity()->jobs().front();
    EXPECT_EQ(job.state, JobState::Done);
    ASSERT_EQ(job.files.size(), 1u);
    EXPECT_EQ(job.files.front().outputs, QStringList{dir.path(QStringLiteral("out/c.mp4"))});
}

TEST_F(WindowTest, TryAgainWritesWhatWasAskedForThen) {
    importThree();
    window()->selectRow(1);
    auto* title = child<QLineEdit>("mediaTitle");
    const auto type = [title](const QString& text) {
        title->setFocus();
        title->selectAll();
        QTest::keyClicks(title, text);
    };
    type(QStringLiteral("Asked for"));
    ASSERT_TRUE(QDir(dir.path(QStringLiteral("out"))).removeRecursively());
    const QString out = dir.write(QStringLiteral("out"), "a file where the folder should be");
    QSignalSpy saved(controller.get(), &AppDelegate::saveFinished);
    controller->SaveMeidaFileChangesAction();
    ASSERT_TRUE(saved.wait(10'000));
    const int failed = controller->activity()->jobs().front().id;
    ASSERT_EQ(controller->activity()->job(failed)->failed, 1);
    EXPECT_EQ(controller->board()->keptJobs(), 1u);
    ASSERT_TRUE(QFile::remove(out));
    type(QStringLiteral("Typed later"));
    Q_EMIT controller->activity()->retryRequested(failed);
    ASSERT_TRUE(saved.wait(10'000));
    const QByteArray written = testkit::TempDir::read(dir.path(QStringLiteral("out/c.mp4")));
    EXPECT_TRUE(written.contains("Asked for"));
    EXPECT_FALSE(written.contains("Typed later"));
    controller->activity()->clearFinished();
    EXPECT_EQ(controller->board()->keptJobs(), 0u);
}

TEST_F(WindowTest, SaveWritesThePaneIntoEveryVideoAndTellsTheOneThatFails) {
    QStringList paths;
    for (const char* name : {"one", "two"})
        paths.append(dir.write(QLatin1String(name) + QStringLiteral(".mp4"), movie(name)));
    paths.append(dir.write(QStringLiteral("cut.mp4"), movie("cut").left(60)));
    import(paths);
    window()->selectRow(0);
    window()->selectAll();
    for (const char* field : {"mediaArtist", "mediaCopyright", "mediaModel"}) {
        child<QLineEdit>(field)->setFocus();
        QTest::keyClicks(child<QLineEdit>(field), QStringLiteral("Typed ") + QLatin1String(field));
    }
    QSignalSpy saved(controller.get(), &AppDelegate::saveFinished);
    controller->SaveMeidaFileChangesAction();
    ASSERT_TRUE(saved.wait(10'000));
    for (const char* name : {"one", "two"}) {
        const QByteArray written =
            testkit::TempDir::read(dir.path(QStringLiteral("out/%1.mp4").arg(QLatin1String(name))));
        for (const char* field : {"mediaArtist", "mediaCopyright", "mediaModel"})
            EXPECT_TRUE(written.contains(QByteArray("Typed ") + field)) << name << field;
        EXPECT_TRUE(written.contains(name)) << "its own title stays";
    }
    EXPECT_EQ(testkit::TempDir::read(dir.path(QStringLiteral("out/cut.mp4"))),
              movie("cut").left(60))
        << "copied as it is";
    const ActivityJob& job = controller->activity()->jobs().front();
    EXPECT_EQ(job.succeeded(), 2);
    EXPECT_EQ(job.failed, 1);
    EXPECT_TRUE(job.canRetry);
    for (const ActivityFile& file : job.files)
        EXPECT_EQ(file.state == FileState::Failed,
                  file.source.endsWith(u"cut.mp4"_qs) && !file.note.isEmpty());
}

TEST_F(WindowTest, WhatIsClearedOfAnImportedFolderGoesIntoItsLikeness) {
    dir.write(QStringLiteral("lib/a/x.mp4"), movie("x"));
    import({dir.path(QStringLiteral("lib"))});
    QSignalSpy saved(controller.get(), &AppDelegate::saveFinished);
    controller->RemoveAllMediaFileAction();
    ASSERT_TRUE(saved.wait(10'000));
    EXPECT_EQ(controller->activity()->jobs().front().files.front().outputs,
              QStringList{dir.path(QStringLiteral("out/lib/a/x.mp4"))});
}

TEST_F(WindowTest, SaveWritesAudioFilesFromTheirPaneAndVideosFromTheirs) {
    testkit::ffmpeg("-f lavfi -i sine -t 0.3 -metadata title=Own", {dir.path(u"a.mp3"_qs)});
    import({dir.path(QStringLiteral("a.mp3")), dir.write(QStringLiteral("v.mp4"), movie("v"))});
    const auto titleOf = [&](const char* name) {
        media::MediaImport written;
        written.importMediaItemsThreader({dir.path(QStringLiteral("out/") + QLatin1String(name))});
        return written.localPhotoItemArray().empty()
                   ? QStringLiteral("no file")
                   : written.localPhotoItemArray().front()->fileTitle;
    };
    const auto saveAll = [&] {
        QSignalSpy saved(controller.get(), &AppDelegate::saveFinished);
        controller->SaveMeidaFileChangesAction();
        ASSERT_TRUE(saved.wait(10'000));
    };
    window()->selectRow(1); // the video's pane
    window()->selectAll();
    saveAll();
    EXPECT_EQ(titleOf("a.mp3"), u"Own")
        << "not the empty texts of a pane that shows something else";
    window()->selectRow(0);
    auto* title = child<QLineEdit>("titlelab");
    title->setFocus();
    title->selectAll();
    QTest::keyClicks(title, QStringLiteral("Typed"));
    saveAll();
    EXPECT_EQ(titleOf("a.mp3"), u"Typed");
}

TEST_F(WindowTest, CancelEndsTheRestOfARunAndLeavesNoPartOfAFile) {
    QStringList paths;
    for (int i = 0; i < 300; ++i)
        paths.append(dir.write(QStringLiteral("in/%1.mp4").arg(i), movie("x")));
    import(paths);
    window()->selectRow(0);
    window()->selectAll();
    QSignalSpy saved(controller.get(), &AppDelegate::saveFinished);
    controller->performCommand(QStringLiteral("CopyvideofilenametoTitleAction"));
    Q_EMIT controller->activity()->cancelRequested(controller->activity()->jobs().front().id);
    ASSERT_TRUE(saved.wait(20'000));
    const ActivityJob& job = controller->activity()->jobs().front();
    EXPECT_EQ(job.state, JobState::Cancelled);
    EXPECT_GT(job.cancelled, 0);
    EXPECT_EQ(job.cancelled + job.succeeded(), 300);
    EXPECT_EQ(QDir(dir.path(QStringLiteral("out")))
                  .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)
                  .size(),
              job.succeeded());
}

TEST_F(WindowTest, SortingKeepsImportOrderForJobsAndRemovalRestoresIt) {
    importThree();
    controller->tableView_didClickTableColumn(0);
    const QStringList once = names();
    controller->tableView_didClickTableColumn(0);
    const QStringList twice = names();
    // The direction flags live as long as the process: one of the two runs is Z to A, the other A
    // to Z.
    const QStringList up = list({"a.mp4", "b.mp4", "c.mp4"}),
                      down = list({"c.mp4", "b.mp4", "a.mp4"});
    EXPECT_TRUE((once == up && twice == down) || (once == down && twice == up));
    EXPECT_EQ(window()->currentRow(), 0);
    EXPECT_FALSE(child<QLabel>("sortedNote")->isHidden());
    EXPECT_TRUE(window()->detailPane()->footNote().contains(u"b.mp4"_qs)) << "what Save will take";
    // Row 0 of the list is row 0 of the import order for a command: b.mp4.
    controller->RemoveMediaFileAction();
    EXPECT_EQ(names(), list({"c.mp4", "a.mp4"}));
    EXPECT_TRUE(child<QLabel>("sortedNote")->isHidden());
    EXPECT_TRUE(child<QLineEdit>("mediaTitle")->text().isEmpty());
}

TEST_F(WindowTest, ImportAppendsAndTellsTroubles) {
    importThree();
    window()->selectRow(2);
    import({dir.write(QStringLiteral("broken.mov"), "no movie"),
            dir.path(QStringLiteral("gone.mp4"))});
    EXPECT_EQ(names(), list({"b.mp4", "c.mp4", "a.mp4", "broken.mov"}));
    EXPECT_EQ(window()->currentRow(), 2);
    const ActivityJob& job = controller->activity()->jobs().front();
    EXPECT_EQ(job.state, JobState::Failed);
    EXPECT_EQ(job.files.size(), 2u);
}

TEST_F(WindowTest, TryAgainReadsTheFailedFilesOfAnImport) {
    const QString mended = dir.write(QStringLiteral("mended.mp4"), "no movie");
    import({mended, dir.path(QStringLiteral("gone.mp4"))});
    const int job = controller->activity()->jobs().front().id;
    EXPECT_EQ(names(), list({"mended.mp4"}));
    dir.write(QStringLiteral("mended.mp4"), movie("m"));
    QSignalSpy done(controller.get(), &AppDelegate::importFinished);
    Q_EMIT controller->activity()->retryRequested(job);
    ASSERT_TRUE(done.wait(10'000));
    EXPECT_EQ(names(), list({"mended.mp4"}));
    EXPECT_EQ(controller->localPhotoItemArray().front()->fileTitle, u"m");
}

TEST_F(WindowTest, RemovingMetadataWritesACopyAndTheMenuTellsItsTitle) {
    importThree();
    window()->selectAll();
    QSignalSpy saved(controller.get(), &AppDelegate::saveFinished);
    controller->performCommand(QStringLiteral("RemoveSelectedMediaFileAction"));
    ASSERT_TRUE(saved.wait(10'000));
    EXPECT_EQ(controller->activity()->jobs().front().succeeded(), 3);
    for (const char* name : {"a", "b", "c"}) {
        const QByteArray cleared =
            testkit::TempDir::read(dir.path(QStringLiteral("out/%1.mp4").arg(QLatin1String(name))));
        EXPECT_FALSE(cleared.isEmpty());
        EXPECT_FALSE(cleared.contains("\xA9"
                                      "nam"));
    }
    controller->performCommand(QStringLiteral("OpenDeviceAction"), QStringLiteral("Open Device"));
    EXPECT_EQ(controller->activity()->log().back().text, u"Open Device: not available yet");
}

TEST_F(WindowTest, TheLogTakesLinesOfEveryLayerAndThread) {
    const std::size_t before = controller->activity()->log().size();
    std::thread([] {
        platform::log(platform::LogLevel::Warning, QStringLiteral("odd"), u"/x"_qs);
    }).join();
    QCoreApplication::processEvents();
    ASSERT_EQ(controller->activity()->log().size(), before + 1);
    EXPECT_TRUE(controller->activity()->log().back().isError);
}

TEST_F(WindowTest, TheWindowKeepsItsLookForTheNextStart) {
    window()->table()->setUserColumnWidths({0, 0, 0, 150, 0, 0, 0});
    controller->appearanceLight();
    controller = nullptr;
    const QSettings settings(dir.path(QStringLiteral("window.conf")), QSettings::IniFormat);
    EXPECT_EQ(settings.value(QStringLiteral("appearance")).toInt(), 2);
    SetUp();
    EXPECT_EQ(window()->table()->userColumnWidths().value(3), 150);
}

TEST_F(WindowTest, ThePhotoGridTakesDropsAndTheDeleteKey) {
    importThree();
    window()->showPhotos();
    QSignalSpy done(controller.get(), &AppDelegate::importFinished);
    dir.write(QStringLiteral("in/d.mp4"), movie("d"));
    Q_EMIT window()->photoGrid()->pathsDropped({dir.path(QStringLiteral("in"))});
    ASSERT_TRUE(done.wait(10'000));
    EXPECT_EQ(names(), list({"b.mp4", "c.mp4", "a.mp4", "d.mp4"}));
    window()->selectAll();
    EXPECT_EQ(window()->selectedRows(), (QList<int>{0, 1, 2, 3}));
    window()->selectRow(1);
    QTest::keyClick(window()->photoGrid(), Qt::Key_Delete);
    EXPECT_EQ(names(), list({"b.mp4", "a.mp4", "d.mp4"}));
}

TEST_F(WindowTest, AddingAsksForPathsAndTakesWhatIsChosen) {
    controller->AddMediaFileAction();
    EXPECT_FALSE(controller->isImporting()) << "cancelled";
    desktop->chosenPaths = {dir.write(QStringLiteral("a.mp4"), movie("a"))};
    QSignalSpy done(controller.get(), &AppDelegate::importFinished);
    controller->OpenComputerFoldertoImportAction();
    ASSERT_TRUE(done.wait(10'000));
    EXPECT_EQ(names(), list({"a.mp4"}));
    EXPECT_EQ(desktop->mediaChoosers, (QList{OpenPanel::FilesAndFolders, OpenPanel::FilesOnly}));
    window()->selectRow(0);
    controller->revealCurrentItem();
    EXPECT_EQ(desktop->revealed, desktop->chosenPaths);
    desktop->opensUrls = false;
    controller->openCurrentItem();
    EXPECT_TRUE(controller->activity()->log().back().isError) << "no program opens it";
}

TEST_F(WindowTest, EditingAPositionKeepsWhereItWas) {
    importThree();
    window()->selectRow(0);
    child<QLineEdit>("mediaLongtitude")->setText(QStringLiteral("12.25"));
    child<QLineEdit>("mediaLatitude")->setText(QStringLiteral("-33.5"));
    controller->control_textShouldBeginEditing(QStringLiteral("mediaAatitude"));
    EXPECT_FALSE(controller->changeFlags().gpsInfoChange) << "the altitude sets no flag";
    EXPECT_TRUE(controller->control_textShouldBeginEditing(QStringLiteral("mediaLatitude")));
    EXPECT_TRUE(controller->changeFlags().gpsInfoChange);
    EXPECT_EQ(controller->currentCoords(), QPointF(-33.5, 12.25));
}

TEST_F(WindowTest, AnEmptySelectionGetsTheFixedAlert) {
    controller->SaveMeidaFileChangesAction();
    EXPECT_EQ(desktop->alerts, list({"No Item has been selected"}));
}

TEST_F(WindowTest, TheTwoWaysToCloseAskAndDoNotAsk) {
    desktop->alertAnswer = 1;
    QSignalSpy quits(qApp, &QCoreApplication::aboutToQuit);
    controller->CloseTheMainWindow();
    EXPECT_EQ(desktop->alerts, list({"Are you sure you want to Exit ?"}));
    QTest::mousePress(child<ImageButton>("closeBtn"), Qt::LeftButton);
    EXPECT_EQ(desktop->alerts.size(), 2);
    EXPECT_TRUE(controller->windowShouldClose());
    EXPECT_EQ(desktop->alerts.size(), 2);
}

TEST_F(WindowTest, PreferencesTakeTheFolderOnSaveOnly) {
    controller->ShowPreferenceSetting();
    PreferencesWindow* preferences = controller->preferencesWindow();
    EXPECT_EQ(preferences->storagePath(), dir.path(QStringLiteral("out")));
    preferences->setStoragePath(dir.path(QStringLiteral("else")));
    controller->CancelPreferenceSetting();
    EXPECT_EQ(controller->storagelocation(), dir.path(QStringLiteral("out")));
    controller->ShowPreferenceSetting();
    preferences->setStoragePath(dir.path(QStringLiteral("else")));
    controller->ResetPreferenceSetting();
    EXPECT_EQ(controller->storagelocation(), dir.path(QStringLiteral("else")));
    const platform::NSUserDefaults stored(dir.path(QStringLiteral("prefs.conf")));
    EXPECT_EQ(stored.stringForKey(QStringLiteral("Postion")), u"lower left corner")
        << "nothing was chosen in the pop-up";
    controller->ShowPreferenceSetting();
    preferences->findChild<QComboBox*>(QStringLiteral("postionBtn"))->setCurrentIndex(1);
    controller->changeFont(QFont(QStringLiteral("DejaVu Serif"), 21));
    controller->ResetPreferenceSetting();
    const platform::NSUserDefaults again(dir.path(QStringLiteral("prefs.conf")));
    EXPECT_EQ(again.stringForKey(QStringLiteral("Postion")), u"Upper right corner");
    EXPECT_EQ(again.stringForKey(QStringLiteral("fontName")), u"DejaVu Serif");
    EXPECT_EQ(again.integerForKey(QStringLiteral("fontsize")), 21);
    EXPECT_TRUE(QDir(dir.path(QStringLiteral("else"))).exists());
    EXPECT_TRUE(preferences->isHidden());
}

/// Names of what can be pressed or typed into.
void collectUnnamed(QAccessibleInterface* node, QStringList& unnamed) {
    static const QSet<QAccessible::Role> kControls{
        QAccessible::PushButton, QAccessible::EditableText, QAccessible::ButtonMenu,
        QAccessible::Table, QAccessible::MenuItem};
    const bool control = kControls.contains(node->role()) && !node->state().invisible;
    if (control && node->text(QAccessible::Name).isEmpty() && node->object())
        unnamed.append(QLatin1String(node->object()->metaObject()->className()) + u' ' +
                       node->object()->objectName());
    for (int i = 0; i < node->childCount(); ++i)
        if (QAccessibleInterface* child = node->child(i))
            collectUnnamed(child, unnamed);
}

TEST_F(WindowTest, EveryControlHasANameForAssistiveTechnology) {
    importThree();
    window()->selectRow(0);
    QStringList unnamed;
    collectUnnamed(QAccessible::queryAccessibleInterface(window()), unnamed);
    EXPECT_TRUE(unnamed.isEmpty()) << unnamed.join(u", ").toStdString();
}

TEST_F(WindowTest, F6GoesRoundTheBandsBothWays) {
    importThree();
    window()->selectRow(0);
    window()->activateWindow();
    child<QWidget>("importPhotobtn")->setFocus();
    const auto press = [&](Qt::KeyboardModifiers modifiers) {
        QTest::keyClick(window(), Qt::Key_F6, modifiers);
        return QApplication::focusWidget();
    };
    QList<QWidget*> stops;
    for (int i = 0; i < 4; ++i)
        stops.append(press(Qt::NoModifier));
    EXPECT_EQ(stops[0], window()->table());
    EXPECT_TRUE(window()->detailPane()->isAncestorOf(stops[1]));
    EXPECT_EQ(QSet<QWidget*>(stops.begin(), stops.end()).size(), 4);
    EXPECT_EQ(press(Qt::ShiftModifier), stops[2]);
    EXPECT_EQ(press(Qt::ShiftModifier), stops[1]);
}

TEST_F(WindowTest, TabWalksTheFieldsOfThePaneInOrder) {
    importThree();
    window()->selectRow(0);
    window()->activateWindow();
    child<QLineEdit>("mediaTitle")->setFocus();
    QStringList visited;
    for (int i = 0; i < 14; ++i) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        if (qobject_cast<QLineEdit*>(QApplication::focusWidget()))
            visited.append(QApplication::focusWidget()->objectName());
    }
    EXPECT_EQ(visited.mid(0, 11),
              list({"mediaAlumArtis", "mediaArtist", "mediaMake", "mediaModel", "mediaProducer",
                    "mediaReleaseYear", "mediaCopyright", "mediakeywords", "mediaSoftware",
                    "mediaShootDate", "mediaCreatedDate"}));
}

} // namespace
