// SPDX-License-Identifier: GPL-3.0-or-later
// The window as a user works with it, by real input events on an offscreen screen.
#include "app/jobs/job_board.h"
#include "app/list/media_table_view.h"
#include "app/list/photo_grid.h"
#include "app/panes/detail_pane.h"
#include "app/widgets/image_button.h"
#include "app/windows/preferences_window.h"
#include "media/media_import.h"
#include "platform/foundation/log.h"
#include "tests/app/window/window_fixture.h"
#include "tests/testkit/media.h"

#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QSet>
#include <QSettings>

#include <thread>

namespace {

using namespace clipheave;
using namespace clipheave::app;

using testkit::movie;

class WindowTest : public WindowFixture {};

QStringList list(std::initializer_list<const char*> texts) {
    QStringList all;
    for (const char* text : texts)
        all.append(QLatin1String(text));
    return all;
}

TEST_F(WindowTest, TypingATitleAndPressingSaveWritesANewFile) {
    importThree();
    window()->selectRow(1);
    ASSERT_EQ(child<QLineEdit>("mediaTitle")->text(), u"c");
    type("mediaTitle", u"Typed"_s);
    EXPECT_TRUE(controller->changeFlags().basicInfoChange);
    EXPECT_FALSE(controller->changeFlags().cameraInfoChange);
    const QByteArray before = testkit::TempDir::read(dir.path("c.mp4"));
    const ActivityJob& job = saved(
        [this] { QTest::mouseClick(child<ImageButton>("SaveMediaChangesBtn"), Qt::LeftButton); });
    EXPECT_TRUE(output(u"c.mp4"_s).contains("Typed"));
    EXPECT_EQ(testkit::TempDir::read(dir.path("c.mp4")), before);
    EXPECT_EQ(job.state, JobState::Done);
    ASSERT_EQ(job.files.size(), 1u);
    EXPECT_EQ(job.files.front().outputs, QStringList{dir.path("out/c.mp4")});
}

TEST_F(WindowTest, TryAgainWritesWhatWasAskedForThen) {
    importThree();
    window()->selectRow(1);
    type("mediaTitle", u"Asked for"_s);
    ASSERT_TRUE(QDir(dir.path("out")).removeRecursively());
    const QString out = dir.write("out", "a file where the folder should be");
    const int failed = saved().id;
    ASSERT_EQ(controller->activity()->job(failed)->failed, 1);
    EXPECT_EQ(controller->board()->keptJobs(), 1u);
    ASSERT_TRUE(QFile::remove(out));
    type("mediaTitle", u"Typed later"_s);
    tryAgain(failed, &AppDelegate::saveFinished);
    EXPECT_TRUE(output(u"c.mp4"_s).contains("Asked for"));
    EXPECT_FALSE(output(u"c.mp4"_s).contains("Typed later"));
    controller->activity()->clearFinished();
    EXPECT_EQ(controller->board()->keptJobs(), 0u);
}

TEST_F(WindowTest, SaveWritesThePaneIntoEveryVideoAndNamesTheOneThatFails) {
    QStringList paths;
    for (const char* name : {"one", "two"})
        paths.append(dir.write(QLatin1String(name) + u".mp4"_s, movie(name)));
    paths.append(dir.write("cut.mp4", movie("cut").left(60)));
    import(paths);
    window()->selectRow(0);
    window()->selectAll();
    for (const char* field : {"mediaArtist", "mediaCopyright", "mediaModel"}) {
        child<QLineEdit>(field)->setFocus();
        QTest::keyClicks(child<QLineEdit>(field), u"Typed "_s + QLatin1String(field));
    }
    const ActivityJob& job = saved();
    for (const char* name : {"one", "two"}) {
        const QByteArray written = output(QLatin1String(name) + u".mp4"_s);
        for (const char* field : {"mediaArtist", "mediaCopyright", "mediaModel"})
            EXPECT_TRUE(written.contains(QByteArray("Typed ") + field)) << name << field;
        EXPECT_TRUE(written.contains(name)) << "its own title stays";
    }
    EXPECT_EQ(output(u"cut.mp4"_s), movie("cut").left(60)) << "copied as it is";
    EXPECT_EQ(job.succeeded(), 2);
    EXPECT_EQ(job.failed, 1);
    EXPECT_TRUE(job.canRetry);
    for (const ActivityFile& file : job.files)
        EXPECT_EQ(file.state == FileState::Failed,
                  file.source.endsWith(u"cut.mp4"_s) && !file.note.isEmpty());
}

TEST_F(WindowTest, WhatIsClearedOfAnImportedFolderGoesIntoItsLikeness) {
    dir.write("lib/a/x.mp4", movie("x"));
    import({dir.path("lib")});
    EXPECT_EQ(saved([this] { controller->RemoveAllMediaFileAction(); }).files.front().outputs,
              QStringList{dir.path("out/lib/a/x.mp4")});
}

TEST_F(WindowTest, SaveWritesAudioFilesFromTheirPaneAndVideosFromTheirs) {
    testkit::ffmpeg("-f lavfi -i sine -t 0.3 -metadata title=Own", {dir.path("a.mp3")});
    import({dir.path("a.mp3"), dir.write("v.mp4", movie("v"))});
    const auto titleOf = [&](const char* name) {
        media::MediaImport written;
        written.importMediaItemsThreader({dir.path(u"out/"_s + QLatin1String(name))});
        return written.localPhotoItemArray().empty()
                   ? u"no file"_s
                   : written.localPhotoItemArray().front()->fileTitle;
    };
    window()->selectRow(1); // the video's pane
    window()->selectAll();
    saved();
    EXPECT_EQ(titleOf("a.mp3"), u"Own")
        << "not the empty texts of a pane that shows something else";
    window()->selectRow(0);
    type("titlelab", u"Typed"_s);
    saved();
    EXPECT_EQ(titleOf("a.mp3"), u"Typed");
}

TEST_F(WindowTest, CancelEndsTheRestOfARunAndLeavesNoPartOfAFile) {
    QStringList paths;
    for (int i = 0; i < 300; ++i)
        paths.append(dir.write(u"in/%1.mp4"_s.arg(i), movie("x")));
    import(paths);
    window()->selectRow(0);
    window()->selectAll();
    const ActivityJob& job = saved([this] {
        controller->performCommand(u"CopyvideofilenametoTitleAction"_s);
        Q_EMIT controller->activity()->cancelRequested(newestJob().id);
    });
    EXPECT_EQ(job.state, JobState::Cancelled);
    EXPECT_GT(job.cancelled, 0);
    EXPECT_EQ(job.cancelled + job.succeeded(), 300);
    EXPECT_EQ(testkit::namesIn(dir.path("out")).size(), job.succeeded());
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
    EXPECT_TRUE(window()->detailPane()->footNote().contains(u"b.mp4"_s)) << "what Save will take";
    // Row 0 of the list is row 0 of the import order for a command: b.mp4.
    controller->RemoveMediaFileAction();
    EXPECT_EQ(names(), list({"c.mp4", "a.mp4"}));
    EXPECT_TRUE(child<QLabel>("sortedNote")->isHidden());
    EXPECT_TRUE(child<QLineEdit>("mediaTitle")->text().isEmpty());
}

TEST_F(WindowTest, ImportAppendsAndReportsTroubles) {
    importThree();
    window()->selectRow(2);
    import({dir.write("broken.mov", "no movie"), dir.path("gone.mp4")});
    EXPECT_EQ(names(), list({"b.mp4", "c.mp4", "a.mp4", "broken.mov"}));
    EXPECT_EQ(window()->currentRow(), 2);
    const ActivityJob& job = newestJob();
    EXPECT_EQ(job.state, JobState::Failed);
    EXPECT_EQ(job.files.size(), 2u);
}

TEST_F(WindowTest, TryAgainReadsTheFailedFilesOfAnImport) {
    const QString mended = dir.write("mended.mp4", "no movie");
    import({mended, dir.path("gone.mp4")});
    const int job = newestJob().id;
    EXPECT_EQ(names(), list({"mended.mp4"}));
    dir.write("mended.mp4", movie("m"));
    tryAgain(job, &AppDelegate::importFinished);
    EXPECT_EQ(names(), list({"mended.mp4"}));
    EXPECT_EQ(controller->localPhotoItemArray().front()->fileTitle, u"m");
}

TEST_F(WindowTest, RemovingMetadataWritesACopyAndTheLogNamesTheMenuTitle) {
    importThree();
    window()->selectAll();
    const ActivityJob& job =
        saved([this] { controller->performCommand(u"RemoveSelectedMediaFileAction"_s); });
    EXPECT_EQ(job.succeeded(), 3);
    for (const QString& name : list({"a.mp4", "b.mp4", "c.mp4"})) {
        EXPECT_FALSE(output(name).isEmpty());
        EXPECT_FALSE(output(name).contains(QByteArray("\xA9") + "nam"));
    }
    controller->performCommand(u"OpenDeviceAction"_s, u"Open Device"_s);
    EXPECT_EQ(controller->activity()->log().back().text, u"Open Device: not available yet");
}

TEST_F(WindowTest, TheLogTakesLinesOfEveryLayerAndThread) {
    const std::size_t before = controller->activity()->log().size();
    std::thread([] { platform::log(platform::LogLevel::Warning, u"odd"_s, u"/x"_s); }).join();
    QCoreApplication::processEvents();
    ASSERT_EQ(controller->activity()->log().size(), before + 1);
    EXPECT_TRUE(controller->activity()->log().back().isError);
}

TEST_F(WindowTest, TheWindowKeepsItsLookForTheNextStart) {
    window()->table()->setUserColumnWidths({0, 0, 0, 150, 0, 0, 0});
    controller->appearanceLight();
    controller = nullptr;
    const QSettings settings(dir.path("window.conf"), QSettings::IniFormat);
    EXPECT_EQ(settings.value(u"appearance"_s).toInt(), 2);
    SetUp();
    EXPECT_EQ(window()->table()->userColumnWidths().value(3), 150);
}

TEST_F(WindowTest, ThePhotoGridTakesDropsAndTheDeleteKey) {
    importThree();
    window()->showPhotos();
    dir.write("in/d.mp4", movie("d"));
    untilEnd(&AppDelegate::importFinished,
             [this] { Q_EMIT window()->photoGrid()->pathsDropped({dir.path("in")}); });
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
    desktop->chosenPaths = {dir.write("a.mp4", movie("a"))};
    untilEnd(&AppDelegate::importFinished,
             [this] { controller->OpenComputerFoldertoImportAction(); });
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
    child<QLineEdit>("mediaLongtitude")->setText(u"12.25"_s);
    child<QLineEdit>("mediaLatitude")->setText(u"-33.5"_s);
    controller->control_textShouldBeginEditing(u"mediaAatitude"_s);
    EXPECT_FALSE(controller->changeFlags().gpsInfoChange) << "the altitude sets no flag";
    EXPECT_TRUE(controller->control_textShouldBeginEditing(u"mediaLatitude"_s));
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
    EXPECT_EQ(preferences->storagePath(), dir.path("out"));
    preferences->setStoragePath(dir.path("else"));
    controller->CancelPreferenceSetting();
    EXPECT_EQ(controller->storagelocation(), dir.path("out"));
    controller->ShowPreferenceSetting();
    preferences->setStoragePath(dir.path("else"));
    controller->ResetPreferenceSetting();
    EXPECT_EQ(controller->storagelocation(), dir.path("else"));
    const platform::NSUserDefaults stored(dir.path("prefs.conf"));
    EXPECT_EQ(stored.stringForKey(u"Postion"_s), u"lower left corner")
        << "nothing was chosen in the pop-up";
    controller->ShowPreferenceSetting();
    preferences->findChild<QComboBox*>(u"postionBtn"_s)->setCurrentIndex(1);
    controller->changeFont(QFont(u"DejaVu Serif"_s, 21));
    controller->ResetPreferenceSetting();
    const platform::NSUserDefaults again(dir.path("prefs.conf"));
    EXPECT_EQ(again.stringForKey(u"Postion"_s), u"Upper right corner");
    EXPECT_EQ(again.stringForKey(u"fontName"_s), u"DejaVu Serif");
    EXPECT_EQ(again.integerForKey(u"fontsize"_s), 21);
    EXPECT_TRUE(QDir(dir.path("else")).exists());
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
    EXPECT_TRUE(unnamed.isEmpty()) << unnamed.join(u", ");
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
