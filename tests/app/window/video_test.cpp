// SPDX-License-Identifier: GPL-3.0-or-later
// Video jobs from the menus of the window.
#include "app/windows/command_tables.h"
#include "tests/app/window/window_fixture.h"
#include "tests/testkit/media.h"

#include <QDir>
#include <QMenu>

#include <algorithm>

namespace {

using namespace clipheave;
using namespace clipheave::app;

class VideoJobsTest : public WindowFixture {
protected:
    QString clip(const char* name, int seconds = 1) {
        QString path = dir.path(name);
        const QByteArray length = QByteArray::number(seconds);
        testkit::ffmpeg("-f lavfi -i testsrc2=size=96x64:rate=10:duration=" + length +
                            " -f lavfi -i sine=440:duration=" + length +
                            " -c:v libx264 -c:a aac -metadata title=Tide",
                        {path});
        return path;
    }
    void importAndSelect(const QStringList& paths) {
        import(paths);
        window()->selectRow(0);
        window()->selectAll();
    }
    /// Triggers the entry of a pop-up menu, sub-menus included, by its title.
    void choose(const char* menuName, const char* title) {
        const QMenu* menu = window()->menu(QLatin1String(menuName));
        for (QAction* action : menu->findChildren<QAction*>())
            if (action->text() == QLatin1String(title) && !action->menu())
                return action->trigger();
        ADD_FAILURE() << "no entry " << title;
    }
    const ActivityJob& runToEnd(const char* menuName, const char* title) {
        return saved([&] { choose(menuName, title); });
    }
};

TEST_F(VideoJobsTest, EveryMenuEntryDoesItsJobOverTheSelection) {
    choose("videoEditMenu", "Merge");
    EXPECT_EQ(desktop->alerts, QStringList{u"No Item has been selected"_s});
    importAndSelect({clip("a.mp4"), clip("b.mov"), dir.write("c.mp4", "text")});
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
        QDir(dir.path("out")).removeRecursively();
        const ActivityJob& job = runToEnd(wanted.menu, wanted.title);
        EXPECT_EQ(job.title, QLatin1String(wanted.activity));
        EXPECT_EQ(job.failed, 1) << "the text that is no video";
        EXPECT_EQ(job.finished, 3);
        EXPECT_EQ(filesOut().size(), wanted.outputs) << filesOut().join(u' ');
        // Of a merge not every file became one.
        const bool merges = job.title == u"Merge";
        EXPECT_EQ(job.result, merges ? u"2 done, 1 failed"_s : u"2 written, 1 failed"_s);
        EXPECT_EQ(merges, std::any_of(job.log.begin(), job.log.end(), [](const auto& line) {
                      return line.text == u"Merging completed!";
                  }));
    }
}

TEST_F(VideoJobsTest, AFailedFileHasItsReasonAndIsTriedAgain) {
    const QString broken = dir.write("late.mp4", "not yet a video");
    importAndSelect({broken});
    const int first = runToEnd("videoEditMenu", "right (clockwise) by 180 degrees").id;
    EXPECT_FALSE(controller->activity()->job(first)->files.front().note.isEmpty());
    ASSERT_TRUE(QFile::remove(broken));
    clip("late.mp4");
    tryAgain(first, &AppDelegate::saveFinished);
    EXPECT_EQ(newestJob().title, u"Rotate right (clockwise) by 180 degrees");
    EXPECT_EQ(filesOut(), QStringList{u"late.mp4"_s});
}

TEST_F(VideoJobsTest, WhatIsNoVideoIsNamedAndNothingIsWrittenForIt) {
    const QString web = dir.path("web.webm");
    ASSERT_TRUE(QFile::copy(clip("a.mp4"), web));
    untilEnd(&AppDelegate::importFinished, // the photo browser takes any file
             [&] { controller->importPhotoPaths({web}); });
    importAndSelect({dir.path("a.mp4"), web});
    const ActivityJob& import = newestJob();
    EXPECT_EQ(import.result, u"1 added, 1 skipped");
    EXPECT_EQ(import.files.front().state, FileState::Skipped);
    for (const auto& [menu, title] : {std::pair("videoCompressMenu", "Low video quality"),
                                      {"VideoConvertMenu", "Convert to MP4"},
                                      {"videoExtractMenu", "Extract Audio"}}) {
        QDir(dir.path("out")).removeRecursively();
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
    const ActivityJob& job = saved([this] {
        choose("videoEditMenu", "right (clockwise) by 90 degrees");
        QTest::qWait(100);
        Q_EMIT controller->activity()->cancelRequested(newestJob().id);
    });
    EXPECT_GT(job.cancelled, 0);
    EXPECT_EQ(filesOut().size(), 3 - job.cancelled);
}

} // namespace
