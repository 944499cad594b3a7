// SPDX-License-Identifier: GPL-3.0-or-later
// Video jobs from the menus of the window.
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/windows/command_tables.h"
#include "app/windows/main_window.h"
#include "tests/app/window/started_controller.h"
#include "tests/testkit/media.h"

#include <QApplication>
#include <QDir>
#include <QImage>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>

namespace {

using namespace clipheave;
using namespace clipheave::app;

class VideoJobsTest : public testing::Test {
protected:
    void SetUp() override {
        controller = startedController(dir, desktop);
        ASSERT_NE(controller, nullptr);
    }

    QString clip(const char* name, int seconds = 1) {
        const QString path = dir.path(QLatin1String(name));
        const QByteArray length = QByteArray::number(seconds);
        testkit::ffmpeg("-f lavfi -i testsrc2=size=96x64:rate=10:duration=" + length +
                            " -f lavfi -i sine=440:duration=" + length +
                            " -c:v libx264 -c:a aac -metadata title=Tide",
                        {path});
        return path;
    }
    void importAndSelect(const QStringList& paths) {
        QSignalSpy done(controller.get(), &AppDelegate::importFinished);
        controller->importPaths(paths);
        ASSERT_TRUE(done.wait(10'000));
        controller->mainWindow()->selectRow(0);
        controller->mainWindow()->selectAll();
    }
    /// Triggers the entry of a pop-up menu, sub-menus included, by its title.
    void choose(const char* menuName, const char* title) {
        const QMenu* menu = controller->mainWindow()->menu(QLatin1String(menuName));
        for (QAction* action : menu->findChildren<QAction*>())
            if (action->text() == QLatin1String(title) && !action->menu())
                return action->trigger();
        ADD_FAILURE() << "no entry " << title;
    }
    const ActivityJob& runToEnd(const char* menuName, const char* title) {
        QSignalSpy done(controller.get(), &AppDelegate::saveFinished);
        choose(menuName, title);
        EXPECT_TRUE(done.wait(60'000));
        return controller->activity()->jobs().front();
    }
    QStringList filesOut() const {
        return QDir(dir.path(QStringLiteral("out")))
            .entryList(QDir::Files | QDir::Hidden, QDir::Name);
    }

    testkit::TempDir dir;
    std::shared_ptr<FakeDesktop> desktop = std::make_shared<FakeDesktop>();
    std::unique_ptr<AppDelegate> controller;
};

TEST_F(VideoJobsTest, EveryMenuEntryDoesItsJobOverTheSelection) {
    choose("videoEditMenu", "Merge");
    EXPECT_EQ(desktop->alerts, QStringList{QStringLiteral("No Item has been selected")});
    importAndSelect({clip("a.mp4"), clip("b.mov"), dir.write(QStringLiteral("c.mp4"), "text")});
    struct Case {
        const char* menu;
        const char* title;
        const char* activity;
        int outputs;
    };
    constexpr Case kCases[] = {
        {"videoEditMenu", "right (clockwise) by 90 degrees",
         "Rotate right (clockwise) by 90 degrees", 2},
        {"videoCompressMenu", "Low video quality", "Compress, Low video quality", 2},
        {"VideoConvertMenu", "Convert to M4V", "Convert to M4V", 2},
        {"VideoConvertMenu", "Convert to GIF", "Convert to GIF", 2},
        {"videoExtractMenu", "Extract Audio", "Extract audio", 2},
        {"videoExtractMenu", "1 pic per second", "Extract images, 1 pic per second", 2},
        {"videoEditMenu", "Remove Sound", "Remove sound", 2},
        {"videoEditMenu", "Merge", "Merge", 1},
        {"videoEditMenu", "8X", "Speed up 8X", 2},
    };
    for (const Case& wanted : kCases) {
        SCOPED_TRACE(wanted.title);
        QDir(dir.path(QStringLiteral("out"))).removeRecursively();
        const ActivityJob& job = runToEnd(wanted.menu, wanted.title);
        EXPECT_EQ(job.title, QLatin1String(wanted.activity));
        EXPECT_EQ(job.failed, 1) << "the text that is no film";
        EXPECT_EQ(job.finished, 3);
        EXPECT_EQ(filesOut().size(), wanted.outputs) << filesOut().join(u' ').toStdString();
        // Of a merge not every file became one.
        const bool merges = job.title == u"Merge";
        EXPECT_EQ(job.result, merges ? u"2 done, 1 failed"_qs : u"2 written, 1 failed"_qs);
        EXPECT_EQ(merges, std::any_of(job.log.begin(), job.log.end(), [](const auto& line) {
                      return line.text == u"Merging completed!";
                  }));
    }
}

TEST_F(VideoJobsTest, AFailedFileTellsItsReasonAndIsTriedAgain) {
    const QString broken = dir.write(QStringLiteral("late.mp4"), "not yet a film");
    importAndSelect({broken});
    const int first = runToEnd("videoEditMenu", "right (clockwise) by 180 degrees").id;
    EXPECT_FALSE(controller->activity()->job(first)->files.front().note.isEmpty());
    ASSERT_TRUE(QFile::remove(broken));
    clip("late.mp4");
    QSignalSpy done(controller.get(), &AppDelegate::saveFinished);
    Q_EMIT controller->activity()->retryRequested(first);
    ASSERT_TRUE(done.wait(60'000));
    EXPECT_EQ(controller->activity()->jobs().front().title,
              u"Rotate right (clockwise) by 180 degrees");
    EXPECT_EQ(filesOut(), QStringList{QStringLiteral("late.mp4")});
}

TEST_F(VideoJobsTest, WhatIsNoVideoIsNamedAndNothingIsWrittenForIt) {
    const QString web = dir.path(QStringLiteral("web.webm"));
    ASSERT_TRUE(QFile::copy(clip("a.mp4"), web));
    QSignalSpy browsed(controller.get(), &AppDelegate::importFinished);
    controller->importPhotoPaths({web}); // the photo browser takes any file
    ASSERT_TRUE(browsed.wait(10'000));
    importAndSelect({dir.path(QStringLiteral("a.mp4")), web});
    const ActivityJob& import = controller->activity()->jobs().front();
    EXPECT_EQ(import.result, u"1 added, 1 skipped");
    EXPECT_EQ(import.files.front().state, FileState::Skipped);
    for (const auto& [menu, title] : {std::pair("videoCompressMenu", "Low video quality"),
                                      std::pair("VideoConvertMenu", "Convert to MP4"),
                                      std::pair("videoExtractMenu", "Extract Audio")}) {
        QDir(dir.path(QStringLiteral("out"))).removeRecursively();
        const ActivityJob& job = runToEnd(menu, title);
        EXPECT_EQ(job.skipped, 1) << title;
        EXPECT_EQ(job.failed, 0) << title;
        const ActivityFile& file = job.files.front();
        EXPECT_EQ(file.note, u"\".webm\" is none of the known kinds of video") << title;
        EXPECT_EQ(filesOut().size(), 1) << title;
    }
    EXPECT_TRUE(desktop->alerts.isEmpty());
}

TEST_F(VideoJobsTest, CancelEndsTheExportsAndLeavesNoFile) {
    importAndSelect({clip("a.mp4", 60), clip("b.mov", 60), clip("c.m4v", 60)});
    QSignalSpy done(controller.get(), &AppDelegate::saveFinished);
    choose("videoEditMenu", "right (clockwise) by 90 degrees");
    const int job = controller->activity()->jobs().front().id;
    QTest::qWait(100);
    Q_EMIT controller->activity()->cancelRequested(job);
    ASSERT_TRUE(done.wait(60'000));
    EXPECT_GT(controller->activity()->job(job)->cancelled, 0);
    EXPECT_EQ(filesOut().size(), 3 - controller->activity()->job(job)->cancelled);
}

} // namespace
