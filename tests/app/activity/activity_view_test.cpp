// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/activity/activity_bar.h"
#include "app/activity/activity_model.h"
#include "app/activity/activity_panel.h"
#include "app/activity/activity_parts.h"
#include "app/activity/job_details.h"
#include "app/activity/job_table.h"
#include "app/activity/log_view.h"
#include "app/widgets/button_look.h"
#include "app/widgets/image_button.h"
#include "app/widgets/parts.h"
#include "tests/testkit/testkit.h"

#include <QLineEdit>
#include <QListView>
#include <QProxyStyle>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

namespace clipheave::app {
namespace {

/// Bar and panel as in the window, with a field above that has the focus.
class ActivityViews : public testing::Test {
protected:
    ActivityViews() {
        Theme::instance().apply(Appearance::Dark);
        auto* column = new QVBoxLayout(&window);
        field = new QLineEdit(&window);
        bar = new ActivityBar(model, &window);
        panel = new ActivityPanel(model, &window);
        column->addWidget(field);
        column->addStretch(1);
        column->addWidget(bar);
        column->addWidget(panel);
        QObject::connect(bar, &ActivityBar::toggled, panel, &ActivityPanel::toggle);
        QObject::connect(panel, &ActivityPanel::openChanged, bar, &ActivityBar::setOpen);
        window.resize(1440, 700);
        window.show();
        window.activateWindow();
        field->setFocus();
    }

    template <typename T> T* part(const char* name) {
        return window.findChild<T*>(QLatin1String(name));
    }
    void settle() {
        QTest::qWait(2 * 1000 / ActivityModel::kRefreshesPerSecond + ActivityPanel::kSlideTime);
    }
    QString chip(const char* name) {
        const auto* found = part<Chip>(name);
        return found->isVisible() ? found->text() : QString();
    }
    QStringList rows() {
        const auto* table = panel->findChild<JobTable*>();
        QStringList titles;
        for (int row = 0; row < table->model()->rowCount(); ++row)
            titles += table->model()->index(row, ActivityModel::TaskColumn).data().toString();
        return titles;
    }
    QString logText(const char* name) {
        auto* view = part<LogView>(name);
        view->selectAll();
        return view->textOf(view->selectionModel()->selectedIndexes());
    }
    int extractAudio() {
        const int job = model.beginJob(u"Extract audio"_s, 2);
        model.fileFinished(
            job, {u"/in/surf.mp4"_s, {u"/out/surf.m4a"_s}, FileState::Done, u"4.71 MB"_s});
        model.fileFinished(
            job,
            {u"/in/mist.mkv"_s, {}, FileState::Failed, u"extract: /in/mist.mkv: no audio track"_s});
        model.addLog(u"Export failed: no audio track"_s, {}, true, job);
        model.endJob(job);
        return job;
    }

    ActivityModel model;
    QWidget window;
    QLineEdit* field;
    ActivityBar* bar;
    ActivityPanel* panel;
};

TEST_F(ActivityViews, BarSaysWhatRunsAndHowManyDid) {
    EXPECT_EQ(bar->statusText(), u"Nothing running");
    EXPECT_FALSE(part<BusyIndicator>("jobProgressor")->isVisible());
    EXPECT_EQ(chip("doneChip"), QString());
    bar->setListSummary(u"19 items, 28.74 GB"_s);
    EXPECT_EQ(part<ToneLabel>("listTotal")->text(), u"19 items, 28.74 GB");

    extractAudio();
    model.endJob(model.beginJob(u"Import"_s));
    const int job = model.beginJob(u"Convert to MP4"_s, 6);
    for (int i = 0; i < 3; ++i)
        model.fileFinished(job, {u"/in/a.mov"_s, {}, FileState::Done, {}});
    settle();
    EXPECT_EQ(bar->statusText(), u"Convert to MP4, 3 of 6 files");
    EXPECT_TRUE(part<BusyIndicator>("jobProgressor")->isSpinning());
    model.setExportsAlone(job);
    settle();
    EXPECT_FALSE(part<BusyIndicator>("jobProgressor")->isSpinning()) << "it is the worker's";
    EXPECT_EQ(part<ThinProgress>("jobProgress")->value(), 500);
    EXPECT_EQ(chip("runningChip"), u"1 running");
    EXPECT_EQ(chip("failedChip"), u"1 failed");
    EXPECT_EQ(chip("doneChip"), u"1 done");

    bar->showMessage(u"Not available yet"_s);
    EXPECT_EQ(bar->statusText(), u"Not available yet");
    model.endJob(job);
    settle();
    EXPECT_EQ(bar->statusText(), u"Nothing running");
    EXPECT_FALSE(part<BusyIndicator>("jobProgressor")->isSpinning());
    bar->setBusyVisible(true);
    EXPECT_TRUE(part<BusyIndicator>("jobProgressor")->isSpinning());
}

TEST_F(ActivityViews, NamesTheEndOfAJobForScreenReaders) {
    EXPECT_EQ(bar->accessibleName(), u"Activity");
    extractAudio();
    EXPECT_EQ(bar->accessibleName(), u"Activity. Extract audio: 1 done, 1 failed");
}

TEST_F(ActivityViews, OpensOnceOnAFailureAndLeavesTheFocus) {
    extractAudio();
    settle();
    EXPECT_TRUE(panel->isOpen());
    EXPECT_EQ(panel->height(), ActivityPanel::kHeight);
    EXPECT_TRUE(field->hasFocus());
    EXPECT_EQ(panel->chosenJob(), model.jobs().front().id);

    QTest::mouseClick(bar, Qt::LeftButton, {}, QPoint(600, 16));
    settle();
    EXPECT_FALSE(panel->isOpen());
    EXPECT_FALSE(panel->isVisible());
    EXPECT_EQ(part<Button>("activityArrow")->accessibleName(), u"Show Activity");

    const int job = model.beginJob(u"Save changes"_s, 3);
    const ActivityFile failed{u"/in/b.mov"_s, {}, FileState::Failed, {}};
    model.fileFinished(job, failed);
    EXPECT_TRUE(panel->isOpen()) << "another run";
    bar->toggle();
    model.fileFinished(job, failed);
    EXPECT_FALSE(panel->isOpen()) << "closed by the user: it stays so";
}

TEST_F(ActivityViews, NothingMovesWhenTheDesktopAsksForStillness) {
    struct StillStyle : QProxyStyle {
        int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                      QStyleHintReturn* data) const override {
            return hint == SH_Widget_Animation_Duration
                       ? 0
                       : QProxyStyle::styleHint(hint, option, widget, data);
        }
    } still;
    for (QWidget* widget :
         {static_cast<QWidget*>(panel), part<QWidget>("jobProgressor"), part<QWidget>("jobTable")})
        widget->setStyle(&still);
    model.beginJob(u"Import"_s);
    bar->toggle();
    EXPECT_EQ(panel->height(), ActivityPanel::kHeight) << "at once";
    bar->setBusyVisible(true);
    EXPECT_TRUE(part<BusyIndicator>("jobProgressor")->isVisible());
    EXPECT_FALSE(part<BusyIndicator>("jobProgressor")->isSpinning());
    EXPECT_FALSE(part<JobTable>("jobTable")->spins());
    EXPECT_TRUE(part<JobTable>("jobTable")->isTicking()) << "the running times go on";
    for (QWidget* widget : window.findChildren<QWidget*>())
        widget->setStyle(nullptr);
}

TEST_F(ActivityViews, SegmentsFilterTheTasks) {
    extractAudio();
    model.endJob(model.beginJob(u"Import"_s));
    const int job = model.beginJob(u"Save changes"_s, 2);
    settle();
    auto* segment = part<Segment>("activitySegment");
    EXPECT_EQ(segment->part(0)->text(), u"All 3");
    EXPECT_EQ(segment->part(1)->text(), u"Running 1");
    EXPECT_EQ(segment->part(2)->text(), u"Failed 1");
    EXPECT_EQ(rows(), (QStringList{u"Save changes"_s, u"Import"_s, u"Extract audio"_s}));
    QTest::mouseClick(segment->part(1), Qt::LeftButton);
    EXPECT_EQ(rows(), QStringList{u"Save changes"_s});
    EXPECT_TRUE(panel->findChild<JobTable*>()->isTicking());
    model.endJob(job);
    settle();
    EXPECT_TRUE(rows().isEmpty());
    EXPECT_FALSE(panel->findChild<JobTable*>()->isTicking());
    QTest::mouseClick(segment->part(2), Qt::LeftButton);
    EXPECT_EQ(rows(), QStringList{u"Extract audio"_s});

    model.addLog(u"urls==/in"_s, u"/in/c.mov"_s);
    QTest::mouseClick(segment->part(3), Qt::LeftButton);
    EXPECT_EQ(panel->shown(), ActivityPanel::Log);
    const QString log = logText("activityLog");
    EXPECT_TRUE(log.contains("Export failed: no audio track\n"_L1));
    EXPECT_TRUE(log.endsWith("  urls==/in  /in/c.mov"_L1));
    EXPECT_EQ(part<LogView>("activityLog")->model()->rowCount(), 2);
    model.addLog(u"one more"_s);
    settle();
    EXPECT_EQ(part<LogView>("activityLog")->model()->rowCount(), 3);

    QTest::mouseClick(segment->part(0), Qt::LeftButton);
    QTest::mouseClick(part<Button>("clearFinishedBtn"), Qt::LeftButton);
    EXPECT_TRUE(rows().isEmpty());
    EXPECT_EQ(panel->chosenJob(), 0);
}

TEST_F(ActivityViews, DetailsShowFilesWithReasonsAndActOnThem) {
    const int job = extractAudio();
    settle();
    auto* list = part<QListView>("jobFiles");
    const auto* files = list->model();
    ASSERT_EQ(files->rowCount(), 2);
    EXPECT_EQ(files->index(0, 0).data().toString(), u"surf.m4a");
    EXPECT_EQ(files->index(0, 0).data(JobFiles::NoteRole).toString(), u"4.71 MB");
    EXPECT_EQ(files->index(1, 0).data().toString(), u"mist.mkv");
    EXPECT_EQ(files->index(1, 0).data(JobFiles::NoteRole).toString(), u"extract: no audio track")
        << "the row says the file already";
    EXPECT_EQ(part<ToneLabel>("jobResult")->text(), u"1 done, 1 failed");
    EXPECT_TRUE(logText("jobLog").endsWith("Export failed: no audio track"_L1));

    QSignalSpy revealed(panel, &ActivityPanel::revealRequested);
    QTest::mouseClick(part<Button>("revealJobBtn"), Qt::LeftButton);
    ASSERT_EQ(revealed.count(), 1);
    EXPECT_EQ(revealed[0][0].toStringList(), QStringList{u"/out/surf.m4a"_s});
    list->setCurrentIndex(files->index(1, 0));
    QTest::mouseClick(part<Button>("revealJobBtn"), Qt::LeftButton);
    EXPECT_EQ(revealed[1][0].toStringList(), QStringList{u"/in/mist.mkv"_s});

    QSignalSpy retried(&model, &ActivityModel::retryRequested);
    EXPECT_FALSE(part<Button>("cancelJobBtn")->isVisible());
    QTest::mouseClick(part<Button>("retryJobBtn"), Qt::LeftButton);
    ASSERT_EQ(retried.count(), 1);
    EXPECT_EQ(retried[0][0].toInt(), job);

    const int running = model.beginJob(u"Save changes"_s, 2);
    model.setCanCancel(running, true);
    panel->chooseJob(running);
    settle();
    QSignalSpy cancelled(&model, &ActivityModel::cancelRequested);
    EXPECT_EQ(part<ToneLabel>("jobResult")->text(), u"0 of 2 files");
    EXPECT_FALSE(part<Button>("retryJobBtn")->isVisible());
    QTest::mouseClick(part<Button>("cancelJobBtn"), Qt::LeftButton);
    ASSERT_EQ(cancelled.count(), 1);
    EXPECT_EQ(cancelled[0][0].toInt(), running);
    EXPECT_EQ(files->rowCount(), 0);
    model.fileFinished(running, {u"/in/d.mov"_s, {}, FileState::Done, {}});
    settle();
    EXPECT_EQ(files->rowCount(), 1);
}

TEST_F(ActivityViews, DetailsShowHowFarEachExportIs) {
    const int job = model.beginJob(u"Convert to MP4"_s, 4);
    bar->toggle();
    const auto* files = part<QListView>("jobFiles")->model();
    const auto shown = [&] {
        settle();
        QStringList rows;
        for (int row = 0; row < files->rowCount(); ++row)
            rows += files->index(row, 0).data().toString() + u' ' +
                    files->index(row, 0).data(JobFiles::NoteRole).toString();
        return rows.join(u", ");
    };
    const QString a = u"/in/a.mov"_s, b = u"/in/b.mov"_s;
    model.setRunning(job, {{a, 0.1}, {b, 0.2}});
    EXPECT_EQ(shown(), u"a.mov 10%, b.mov 20%");
    EXPECT_FALSE(files->index(0, 0).flags().testFlag(Qt::ItemIsSelectable));
    model.fileFinished(job, {a, {u"/out/a.mp4"_s}, FileState::Done, {}});
    model.setRunning(job, {{b, 0.6}});
    EXPECT_EQ(shown(), u"b.mov 60%, a.mp4 ");
    part<QListView>("jobFiles")->setCurrentIndex(files->index(1, 0));
    model.fileFinished(job, {b, {}, FileState::Failed, u"no video"_s});
    EXPECT_EQ(shown(), u"a.mp4 , b.mov no video");
    EXPECT_EQ(part<QListView>("jobFiles")->currentIndex().row(), 0) << "the same file as before";
    model.clearFinished();
    model.endJob(job);
    model.clearFinished();
    EXPECT_EQ(shown(), QString());
}

TEST(LogLines, FollowsALogThatLosesItsOldestLines) {
    std::deque<ActivityLogLine> log;
    LogLines lines([&log] { return &log; });
    const auto add = [&log](int from, int to) {
        for (int i = from; i < to; ++i)
            log.push_back({QDateTime::currentDateTime(), QString::number(i), {}, false});
    };
    add(0, 10);
    lines.refresh(10, 1);
    EXPECT_EQ(lines.rowCount(), 10);
    QSignalSpy resets(&lines, &LogLines::modelReset);
    QSignalSpy removed(&lines, &LogLines::rowsRemoved);
    add(10, 14);
    log.erase(log.begin(), log.begin() + 3);
    lines.refresh(14, 1);
    EXPECT_EQ(lines.rowCount(), 11);
    EXPECT_EQ(removed.count(), 1);
    EXPECT_EQ(resets.count(), 0) << "a selection must survive";
    EXPECT_EQ(lines.index(0).data().toString(), u"3");
    EXPECT_EQ(lines.index(10).data().toString(), u"13");
    log.clear();
    add(50, 60);
    lines.refresh(60, 1); // nothing of the old ones is left
    EXPECT_EQ(lines.rowCount(), 10);
    EXPECT_EQ(lines.index(0).data().toString(), u"50");
    lines.refresh(10, 2);
    EXPECT_EQ(resets.count(), 1) << "another log";
}

/// Everything on the window is painted this often while 400 files a second come in.
TEST_F(ActivityViews, RepaintsRarelyUnderLoad) {
    struct Paints : QObject {
        int count = 0;
        bool eventFilter(QObject*, QEvent* event) override {
            count += event->type() == QEvent::Paint ? 1 : 0;
            return false;
        }
    } paints;
    const int job = model.beginJob(u"Import"_s);
    bar->toggle();
    settle();
    part<ToneLabel>("jobStatuslab")->installEventFilter(&paints);
    QElapsedTimer clock;
    clock.start();
    int files = 0;
    while (clock.elapsed() < 1000) {
        model.fileFinished(job, {u"/in/a.mov"_s, {}, FileState::Done, {}});
        ++files;
        QTest::qWait(2);
    }
    EXPECT_GT(files, 100);
    EXPECT_GT(paints.count, 3);
    EXPECT_LE(paints.count, ActivityModel::kRefreshesPerSecond + 2);
}

} // namespace
} // namespace clipheave::app
