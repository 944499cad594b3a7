// SPDX-License-Identifier: GPL-3.0-or-later
// The rename window by real input events, and what its job leaves on the disk.
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/list/media_list_model.h"
#include "app/theme/theme.h"
#include "app/widgets/button_look.h"
#include "app/widgets/image_button.h"
#include "app/windows/main_window.h"
#include "app/windows/rename_preview.h"
#include "app/windows/rename_window.h"
#include "app/windows/template_field.h"
#include "tests/app/window/started_controller.h"
#include "tests/testkit/testkit.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QMenu>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTest>

namespace {

using namespace clipheave;
using namespace clipheave::app;

class RenameTest : public testing::Test {
protected:
    void SetUp() override {
        qputenv("XDG_STATE_HOME", dir.path(QStringLiteral("state")).toUtf8());
        Theme::instance().apply(Appearance::Dark);
        controller = startedController(dir);
        ASSERT_NE(controller, nullptr);
        waitFor(*controller->mainWindow());
    }
    void TearDown() override {
        controller = nullptr;
        qunsetenv("XDG_STATE_HOME");
    }

    void import(const QStringList& paths) {
        QSignalSpy done(controller.get(), &AppDelegate::importFinished);
        controller->importPaths(paths);
        ASSERT_TRUE(done.wait(20'000));
    }
    void importThree() {
        QStringList paths;
        for (const char* name : {"b", "c", "a"})
            paths.append(dir.write(u"in/%1.mp4"_qs.arg(QLatin1String(name)), testkit::movie(name)));
        import(paths);
        controller->mainWindow()->selectAll();
    }
    /// A window above another counts as active with it; the keys go to the one that the application
    /// says.
    static void waitFor(const QWidget& window) {
        ASSERT_TRUE(QTest::qWaitFor([&window] { return QApplication::activeWindow() == &window; }));
    }
    void open() {
        controller->mainWindow()->activateWindow(); // no window manager does it here
        waitFor(*controller->mainWindow());
        controller->performCommand(QStringLiteral("ShowRenameWindowAction"));
        waitFor(window());
    }
    RenameWindow& window() { return *controller->renameWindow(); }
    const RenameControls& controls() { return window().controls(); }
    /// What the table says will be where.
    QStringList targets() {
        QCoreApplication::processEvents();
        QStringList all;
        for (const batch::RenameMove& move : window().preview()->previewModel()->plan())
            all.append(move.stays ? move.source : move.target);
        return all;
    }
    QString in(const char* name) { return dir.path(u"in/"_qs + QLatin1String(name)); }
    QStringList onDisk(const char* folder) {
        return QDir(dir.path(QLatin1String(folder))).entryList(QDir::Files, QDir::Name);
    }
    QStringList names() {
        QStringList all;
        for (const auto& item : controller->localPhotoItemArray())
            all.append(item->fileName);
        return all;
    }
    /// Presses Return in the window and waits for the job.
    void finish() {
        QSignalSpy done(controller.get(), &AppDelegate::renameFinished);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        ASSERT_TRUE(done.wait(20'000));
    }
    void undo() {
        auto* menu = controller->mainWindow()->findChild<QMenu*>(u"editMenu"_qs);
        Q_EMIT menu->aboutToShow();
        auto* action = menu->findChild<QAction*>(u"undoRename"_qs);
        ASSERT_TRUE(action->isEnabled());
        QSignalSpy done(controller.get(), &AppDelegate::renameFinished);
        action->trigger();
        ASSERT_TRUE(done.wait(20'000));
    }

    testkit::TempDir dir;
    std::unique_ptr<AppDelegate> controller;
};

TEST_F(RenameTest, OpensForACustomTextWhateverWasChosenBefore) {
    importThree();
    QTest::mousePress(controller->mainWindow()->findChild<ImageButton*>(u"videoRenameBtn"_qs),
                      Qt::LeftButton);
    waitFor(window());
    EXPECT_EQ(window().windowTitle(), u"Rename");
    EXPECT_FALSE(window().isModal());
    const auto isCustom = [&] {
        const RenameControls& c = controls();
        return c.customerFileNameBtn->isChecked() && c.customNamelab->isEnabled() &&
               c.checkStartNumber->isEnabled() && !c.addTagsButton->isEnabled() &&
               !c.tagpostionButton->isEnabled() && !c.filenameFormatstrlab->isEnabled() &&
               !c.keepFileNameBtn->isEnabled() && !c.replaceInvaidStrBtn->isEnabled() &&
               !c.seqNumBtn->isEnabled() && !c.seqNumBtn->isChecked() &&
               !c.renameDateFormatBtn->isEnabled() && c.renameDateFormatBtn->currentIndex() == 0;
    };
    EXPECT_TRUE(isCustom());
    EXPECT_FALSE(controls().AddSuffixStrBtn->isVisible());
    EXPECT_EQ(controls().customNamelab->text(), u"b");
    EXPECT_EQ(QApplication::focusWidget(), controls().customNamelab);
    EXPECT_EQ(controls().saveBtn->text(), u"Rename 3 Files");
    EXPECT_EQ(window().findChild<QLabel*>(u"windowSubtitle"_qs)->text(),
              u"3 files, renamed where they are");
    for (const QWidget* control : window().findChildren<QWidget*>()) {
        const bool stop = (control->focusPolicy() & Qt::TabFocus) != 0 && control->isVisible();
        EXPECT_FALSE(stop && control->accessibleName().isEmpty() &&
                     control->property("text").toString().isEmpty())
            << control->metaObject()->className() << control->objectName().toStdString();
    }

    QTest::mouseClick(controls().metaFileNameBtn, Qt::LeftButton, {}, {8, 10});
    EXPECT_TRUE(controls().filenameFormatstrlab->isEnabled() &&
                !controls().customNamelab->isEnabled());
    EXPECT_FALSE(controls().renameDateFormatBtn->isEnabled()) << "no camera date to lay out yet";
    controls().seqNumBtn->click();
    QTest::keyClick(controls().addTagsButton, Qt::Key_Up); // "Camera Date", beside the resting item
    EXPECT_TRUE(controls().renameDateFormatBtn->isEnabled());
    controls().renameDateFormatBtn->setCurrentIndex(3);
    QTest::keyClick(&window(), Qt::Key_Escape);
    EXPECT_FALSE(window().isVisible());
    EXPECT_EQ(controls().filenameFormatstrlab->text(), u"{Existing File Name}");
    controller->mainWindow()->selectRow(2);
    open();
    EXPECT_TRUE(isCustom());
    EXPECT_EQ(controls().customNamelab->text(), u"a");
    EXPECT_EQ(controls().saveBtn->text(), u"Rename 1 File");
}

TEST_F(RenameTest, TagsGoToEitherEndAndTheTableFollows) {
    importThree();
    open();
    controls().metaFileNameBtn->click();
    const RenameControls& c = controls();
    QTest::keyClick(c.addTagsButton, Qt::Key_Home);
    QTest::keyClick(c.tagpostionButton, Qt::Key_End);
    QTest::keyClick(c.addTagsButton, Qt::Key_Up);
    EXPECT_EQ(c.filenameFormatstrlab->text(), u"{Title} {Existing File Name} {Camera Date}");
    EXPECT_EQ(c.addTagsButton->currentText(), u"Insert media metadata tag(s)");
    c.keepFileNameBtn->click();
    EXPECT_EQ(c.filenameFormatstrlab->text(), QString());
    c.filenameFormatstrlab->setFocus();
    QTest::keyClicks(c.filenameFormatstrlab, u"Cut {Title}"_qs);
    c.seqNumBtn->click();
    EXPECT_EQ(targets(),
              (QStringList{in("Cut b000001.mp4"), in("Cut c000002.mp4"), in("Cut a000003.mp4")}));
    const media::ItemPointer held = controller->localPhotoItemArray()[0];
    const QSignalSpy changes(controller->mediaController(), &QAbstractItemModel::dataChanged);
    finish();
    EXPECT_EQ(held->fileName, u"b.mp4") << "who holds an item keeps it as it was";
    EXPECT_FALSE(changes.isEmpty()) << "views and assistive technology hear of it";
    EXPECT_EQ(controller->mediaController()->index(0, 0).data().toString(), u"Cut b000001.mp4");
    EXPECT_EQ(controller->mainWindow()->selectedRows(), QList<int>({0, 1, 2}));
    EXPECT_EQ(onDisk("in"),
              (QStringList{u"Cut a000003.mp4"_qs, u"Cut b000001.mp4"_qs, u"Cut c000002.mp4"_qs}));
    EXPECT_EQ(names(),
              (QStringList{u"Cut b000001.mp4"_qs, u"Cut c000002.mp4"_qs, u"Cut a000003.mp4"_qs}));
    EXPECT_EQ(controller->localPhotoItemArray()[0]->filePath, in("b.mp4")) << "never changed";
    EXPECT_TRUE(c.keepFileNameBtn->isChecked());
    EXPECT_EQ(c.filenameFormatstrlab->text(), u"{Existing File Name}");
    undo();
    EXPECT_EQ(onDisk("in"), (QStringList{u"a.mp4"_qs, u"b.mp4"_qs, u"c.mp4"_qs}));
    EXPECT_EQ(names(), (QStringList{u"b.mp4"_qs, u"c.mp4"_qs, u"a.mp4"_qs}));
    EXPECT_EQ(controller->activity()->jobs().front().title, u"Undo rename");
    EXPECT_EQ(controller->activity()->jobs().front().succeeded(), 3);
}

TEST_F(RenameTest, WhatTheTableShowsIsWhatHappensWhereNamesExist) {
    importThree();
    open();
    QTest::keyClicks(QApplication::focusWidget(), u"a"_qs); // over the selected text
    const QStringList shown = targets();
    EXPECT_EQ(shown, (QStringList{in("a 2.mp4"), in("a 3.mp4"), in("a 4.mp4")}));
    EXPECT_EQ(window().preview()->previewModel()->index(0, 2).data(), u"name exists"_qs);
    finish();
    for (const auto& [name, path] : {std::pair("b", shown[0]), {"c", shown[1]}, {"a", shown[2]}})
        EXPECT_EQ(testkit::TempDir::read(path), testkit::movie(name));
    EXPECT_EQ(onDisk("in").size(), 3);
    EXPECT_EQ(names().first(), u"b.mp4") << "a custom text leaves the list as it is";
    const ActivityJob& job = controller->activity()->jobs().front();
    EXPECT_EQ(job.files[0].outputs, QStringList{shown[0]});
    EXPECT_EQ(job.succeeded(), 3);
    undo();

    // With tags, a name that exists leads into the storage folder; the table says so.
    open();
    controls().metaFileNameBtn->click();
    EXPECT_EQ(targets(), (QStringList{dir.path(u"out/b 1.mp4"_qs), dir.path(u"out/c 2.mp4"_qs),
                                      dir.path(u"out/a 3.mp4"_qs)}));
    EXPECT_EQ(window().preview()->previewModel()->index(1, 1).data(Qt::AccessibleTextRole),
              u"c 2.mp4, to the storage folder"_qs);
    EXPECT_TRUE(window().findChild<QLabel*>(u"windowSubtitle"_qs)->text().contains(u"moved to"_qs));
    finish();
    EXPECT_EQ(onDisk("out"), (QStringList{u"a 3.mp4"_qs, u"b 1.mp4"_qs, u"c 2.mp4"_qs}));
    EXPECT_TRUE(onDisk("in").isEmpty());
}

TEST_F(RenameTest, AFileThatIsGoneStaysWithItsReasonAndCanBeTriedAgain) {
    importThree();
    QFile::remove(in("c.mp4"));
    open();
    QTest::keyClicks(QApplication::focusWidget(), u"Trip"_qs);
    controls().checkStartNumber->click();
    EXPECT_EQ(targets(), (QStringList{in("Trip000001.mp4"), in("c.mp4"), in("Trip000003.mp4")}));
    finish();
    const int first = controller->activity()->jobs().front().id;
    const ActivityJob* job = controller->activity()->job(first);
    EXPECT_EQ(job->state, JobState::Failed);
    EXPECT_EQ(job->files[1].state, FileState::Failed);
    EXPECT_EQ(job->files[1].note, u"file missing");
    dir.write(u"in/c.mp4"_qs, testkit::movie("c"));
    QSignalSpy done(controller.get(), &AppDelegate::renameFinished);
    Q_EMIT controller->activity()->retryRequested(first);
    ASSERT_TRUE(done.wait(20'000));
    EXPECT_EQ(onDisk("in"),
              (QStringList{u"Trip000001.mp4"_qs, u"Trip000002.mp4"_qs, u"Trip000003.mp4"_qs}));
}

TEST_F(RenameTest, NothingToRenameIsTold) {
    controller->SaveChangesRenameWindowAction(); // no local files in the list
    EXPECT_TRUE(controller->activity()->jobs().empty());
    importThree();
    open();
    controls().keepCurrentFileNameBtn->click();
    EXPECT_EQ(targets(), (QStringList{in("b.mp4"), in("c.mp4"), in("a.mp4")}));
    EXPECT_FALSE(controls().saveBtn->isEnabled());
    EXPECT_FALSE(controls().customNamelab->isEnabled());
    QTest::keyClick(&window(), Qt::Key_Return);
    EXPECT_TRUE(window().isVisible());
    controller->mainWindow()->deselect();
    controls().customerFileNameBtn->click();
    EXPECT_FALSE(controls().saveBtn->isEnabled());
    EXPECT_TRUE(targets().isEmpty());
    EXPECT_EQ(controls().customNamelab->text(), QString());
    controls().keepFileNameBtn->setChecked(false);
    QSignalSpy done(controller.get(), &AppDelegate::renameFinished);
    controller->SaveChangesRenameWindowAction();
    ASSERT_TRUE(done.wait(20'000));
    EXPECT_FALSE(window().isVisible());
    EXPECT_TRUE(controls().keepFileNameBtn->isChecked());
    EXPECT_EQ(controller->activity()->log().back().text, u"Rename: no file is selected");
    EXPECT_EQ(onDisk("in").size(), 3);
}

TEST_F(RenameTest, CancelLeavesTheRestUnderTheirNames) {
    QStringList paths;
    for (int i = 0; i < 300; ++i)
        paths.append(dir.write(u"in/%1.mp4"_qs.arg(i), testkit::movie("x")));
    import(paths);
    controller->mainWindow()->selectAll();
    open();
    QTest::keyClicks(QApplication::focusWidget(), u"Trip"_qs);
    controls().checkStartNumber->click();
    QSignalSpy done(controller.get(), &AppDelegate::renameFinished);
    QTest::mouseClick(controls().saveBtn, Qt::LeftButton);
    Q_EMIT controller->activity()->cancelRequested(controller->activity()->jobs().front().id);
    ASSERT_TRUE(done.wait(20'000));
    const ActivityJob& job = controller->activity()->jobs().front();
    EXPECT_EQ(job.state, JobState::Cancelled);
    EXPECT_EQ(job.cancelled + job.succeeded(), 300);
    EXPECT_EQ(onDisk("in").size(), 300);
    EXPECT_EQ(onDisk("in").filter(u"Trip"_qs).size(), job.succeeded());
}

TEST(RenameWindow, MakesOnePlanForManyKeysOfOneMoment) {
    RenameWindow window(nullptr);
    std::vector<media::ItemPointer> items;
    for (int i = 0; i < 2'000; ++i) {
        auto item = std::make_shared<media::IKImageItem>();
        item->fileName = u"clip %1.mp4"_qs.arg(i);
        item->filePath = u"/nowhere/"_qs + item->fileName;
        items.push_back(item);
    }
    window.present();
    window.controls().customerFileNameBtn->click();
    window.controls().checkStartNumber->click();
    window.setItems(items, u"/nowhere/out"_qs);
    QCoreApplication::processEvents();
    const int before = window.planCount();
    for (int i = 0; i < 10; ++i)
        QTest::keyClicks(window.controls().customNamelab, u"word"_qs);
    QCoreApplication::processEvents();
    EXPECT_EQ(window.planCount(), before + 1);
    const auto& plan = window.preview()->previewModel()->plan();
    ASSERT_EQ(plan.size(), 2'000u);
    EXPECT_EQ(plan.back().newFileName, u"word"_qs.repeated(10) + u"002000.mp4"_qs);
}

} // namespace
