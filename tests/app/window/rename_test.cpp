// SPDX-License-Identifier: GPL-3.0-or-later
// The rename window by real input events, and what its job leaves on the disk.
#include "app/widgets/button_look.h"
#include "app/widgets/image_button.h"
#include "app/windows/rename_preview.h"
#include "app/windows/rename_window.h"
#include "app/windows/template_field.h"
#include "tests/app/window/window_fixture.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QMenu>
#include <QRadioButton>

namespace {

using namespace clipheave;
using namespace clipheave::app;

class RenameTest : public WindowFixture {
protected:
    void SetUp() override {
        qputenv("XDG_STATE_HOME", dir.path("state").toUtf8());
        WindowFixture::SetUp();
        waitFor(*window());
    }
    void TearDown() override {
        controller = nullptr;
        qunsetenv("XDG_STATE_HOME");
    }

    void selectThree() {
        importThree(u"in/"_s);
        window()->selectAll();
    }
    /// A window above another counts as active with it; keys go to the one that the application
    /// names.
    static void waitFor(const QWidget& window) {
        ASSERT_TRUE(QTest::qWaitFor([&window] { return QApplication::activeWindow() == &window; }));
    }
    void open() {
        window()->activateWindow(); // no window manager does it here
        waitFor(*window());
        controller->performCommand(u"ShowRenameWindowAction"_s);
        waitFor(dialog());
    }
    RenameWindow& dialog() { return *controller->renameWindow(); }
    const RenameControls& controls() { return dialog().controls(); }
    /// What the table says will be where.
    QStringList targets() {
        QCoreApplication::processEvents();
        QStringList all;
        for (const batch::RenameMove& move : dialog().preview()->previewModel()->plan())
            all.append(move.stays ? move.source : move.target);
        return all;
    }
    QString in(const char* name) { return dir.path(u"in/"_s + QLatin1String(name)); }
    QStringList imported() {
        QStringList all;
        for (const auto& item : controller->localPhotoItemArray())
            all.append(item->fileName);
        return all;
    }
    const ActivityJob& renamed(const std::function<void()>& act) {
        untilEnd(&AppDelegate::renameFinished, act);
        return newestJob();
    }
    /// Presses Return in the window and waits for the job.
    void finish() {
        renamed([] { QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return); });
    }
    void undo() {
        auto* menu = child<QMenu>("editMenu");
        Q_EMIT menu->aboutToShow();
        auto* action = menu->findChild<QAction*>(u"undoRename"_s);
        ASSERT_TRUE(action->isEnabled());
        renamed([action] { action->trigger(); });
    }
};

TEST_F(RenameTest, OpensForACustomTextWhateverWasChosenBefore) {
    selectThree();
    QTest::mousePress(child<ImageButton>("videoRenameBtn"), Qt::LeftButton);
    waitFor(dialog());
    EXPECT_EQ(dialog().windowTitle(), u"Rename");
    EXPECT_FALSE(dialog().isModal());
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
    EXPECT_EQ(dialog().findChild<QLabel*>(u"windowSubtitle"_s)->text(),
              u"3 files, renamed where they are");
    for (const QWidget* control : dialog().findChildren<QWidget*>()) {
        const bool stop = (control->focusPolicy() & Qt::TabFocus) != 0 && control->isVisible();
        EXPECT_FALSE(stop && control->accessibleName().isEmpty() &&
                     control->property("text").toString().isEmpty())
            << control->metaObject()->className() << control->objectName();
    }

    QTest::mouseClick(controls().metaFileNameBtn, Qt::LeftButton, {}, {8, 10});
    EXPECT_TRUE(controls().filenameFormatstrlab->isEnabled() &&
                !controls().customNamelab->isEnabled());
    EXPECT_FALSE(controls().renameDateFormatBtn->isEnabled()) << "no camera date to lay out yet";
    controls().seqNumBtn->click();
    QTest::keyClick(controls().addTagsButton, Qt::Key_Up); // "Camera Date", beside the resting item
    EXPECT_TRUE(controls().renameDateFormatBtn->isEnabled());
    controls().renameDateFormatBtn->setCurrentIndex(3);
    QTest::keyClick(&dialog(), Qt::Key_Escape);
    EXPECT_FALSE(dialog().isVisible());
    EXPECT_EQ(controls().filenameFormatstrlab->text(), u"{Existing File Name}");
    window()->selectRow(2);
    open();
    EXPECT_TRUE(isCustom());
    EXPECT_EQ(controls().customNamelab->text(), u"a");
    EXPECT_EQ(controls().saveBtn->text(), u"Rename 1 File");
}

TEST_F(RenameTest, TagsGoToEitherEndAndTheTableFollows) {
    selectThree();
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
    QTest::keyClicks(c.filenameFormatstrlab, u"Cut {Title}"_s);
    c.seqNumBtn->click();
    EXPECT_EQ(targets(),
              (QStringList{in("Cut b000001.mp4"), in("Cut c000002.mp4"), in("Cut a000003.mp4")}));
    const media::ItemPointer held = controller->localPhotoItemArray()[0];
    const QSignalSpy changes(controller->mediaController(), &QAbstractItemModel::dataChanged);
    finish();
    EXPECT_EQ(held->fileName, u"b.mp4") << "who holds an item keeps it as it was";
    EXPECT_FALSE(changes.isEmpty()) << "views and assistive technology hear of it";
    EXPECT_EQ(controller->mediaController()->index(0, 0).data().toString(), u"Cut b000001.mp4");
    EXPECT_EQ(window()->selectedRows(), QList<int>({0, 1, 2}));
    EXPECT_EQ(dir.files("in"),
              (QStringList{u"Cut a000003.mp4"_s, u"Cut b000001.mp4"_s, u"Cut c000002.mp4"_s}));
    EXPECT_EQ(imported(),
              (QStringList{u"Cut b000001.mp4"_s, u"Cut c000002.mp4"_s, u"Cut a000003.mp4"_s}));
    EXPECT_EQ(controller->localPhotoItemArray()[0]->filePath, in("b.mp4")) << "never changed";
    EXPECT_TRUE(c.keepFileNameBtn->isChecked());
    EXPECT_EQ(c.filenameFormatstrlab->text(), u"{Existing File Name}");
    undo();
    EXPECT_EQ(dir.files("in"), (QStringList{u"a.mp4"_s, u"b.mp4"_s, u"c.mp4"_s}));
    EXPECT_EQ(imported(), (QStringList{u"b.mp4"_s, u"c.mp4"_s, u"a.mp4"_s}));
    EXPECT_EQ(newestJob().title, u"Undo rename");
    EXPECT_EQ(newestJob().succeeded(), 3);
}

TEST_F(RenameTest, WhatTheTableShowsIsWhatHappensWhereNamesExist) {
    selectThree();
    open();
    QTest::keyClicks(QApplication::focusWidget(), u"a"_s); // over the selected text
    const QStringList shown = targets();
    EXPECT_EQ(shown, (QStringList{in("a 2.mp4"), in("a 3.mp4"), in("a 4.mp4")}));
    EXPECT_EQ(dialog().preview()->previewModel()->index(0, 2).data(), u"name exists"_s);
    finish();
    for (const auto& [name, path] : {std::pair("b", shown[0]), {"c", shown[1]}, {"a", shown[2]}})
        EXPECT_EQ(testkit::TempDir::read(path), testkit::movie(name));
    EXPECT_EQ(dir.files("in").size(), 3);
    EXPECT_EQ(imported().first(), u"b.mp4") << "a custom text leaves the list as it is";
    const ActivityJob& job = newestJob();
    EXPECT_EQ(job.files[0].outputs, QStringList{shown[0]});
    EXPECT_EQ(job.succeeded(), 3);
    undo();

    // With tags, a name that exists leads into the storage folder; the table says so.
    open();
    controls().metaFileNameBtn->click();
    EXPECT_EQ(targets(), (QStringList{dir.path("out/b 1.mp4"), dir.path("out/c 2.mp4"),
                                      dir.path("out/a 3.mp4")}));
    EXPECT_EQ(dialog().preview()->previewModel()->index(1, 1).data(Qt::AccessibleTextRole),
              u"c 2.mp4, to the storage folder"_s);
    EXPECT_TRUE(dialog().findChild<QLabel*>(u"windowSubtitle"_s)->text().contains(u"moved to"_s));
    finish();
    EXPECT_EQ(dir.files("out"), (QStringList{u"a 3.mp4"_s, u"b 1.mp4"_s, u"c 2.mp4"_s}));
    EXPECT_TRUE(dir.files("in").isEmpty());
}

TEST_F(RenameTest, AFileThatIsGoneStaysWithItsReasonAndCanBeTriedAgain) {
    selectThree();
    QFile::remove(in("c.mp4"));
    open();
    QTest::keyClicks(QApplication::focusWidget(), u"Trip"_s);
    controls().checkStartNumber->click();
    EXPECT_EQ(targets(), (QStringList{in("Trip000001.mp4"), in("c.mp4"), in("Trip000003.mp4")}));
    finish();
    const int first = newestJob().id;
    const ActivityJob* job = controller->activity()->job(first);
    EXPECT_EQ(job->state, JobState::Failed);
    EXPECT_EQ(job->files[1].state, FileState::Failed);
    EXPECT_EQ(job->files[1].note, u"file missing");
    dir.write("in/c.mp4", testkit::movie("c"));
    tryAgain(first, &AppDelegate::renameFinished);
    EXPECT_EQ(dir.files("in"),
              (QStringList{u"Trip000001.mp4"_s, u"Trip000002.mp4"_s, u"Trip000003.mp4"_s}));
}

TEST_F(RenameTest, NothingToRenameIsLogged) {
    controller->SaveChangesRenameWindowAction(); // no local files in the list
    EXPECT_TRUE(controller->activity()->jobs().empty());
    selectThree();
    open();
    controls().keepCurrentFileNameBtn->click();
    EXPECT_EQ(targets(), (QStringList{in("b.mp4"), in("c.mp4"), in("a.mp4")}));
    EXPECT_FALSE(controls().saveBtn->isEnabled());
    EXPECT_FALSE(controls().customNamelab->isEnabled());
    QTest::keyClick(&dialog(), Qt::Key_Return);
    EXPECT_TRUE(dialog().isVisible());
    window()->deselect();
    controls().customerFileNameBtn->click();
    EXPECT_FALSE(controls().saveBtn->isEnabled());
    EXPECT_TRUE(targets().isEmpty());
    EXPECT_EQ(controls().customNamelab->text(), QString());
    controls().keepFileNameBtn->setChecked(false);
    renamed([this] { controller->SaveChangesRenameWindowAction(); });
    EXPECT_FALSE(dialog().isVisible());
    EXPECT_TRUE(controls().keepFileNameBtn->isChecked());
    EXPECT_EQ(controller->activity()->log().back().text, u"Rename: no file is selected");
    EXPECT_EQ(dir.files("in").size(), 3);
}

TEST_F(RenameTest, CancelLeavesTheRestUnderTheirNames) {
    QStringList paths;
    for (int i = 0; i < 300; ++i)
        paths.append(dir.write(u"in/%1.mp4"_s.arg(i), testkit::movie("x")));
    import(paths);
    window()->selectAll();
    open();
    QTest::keyClicks(QApplication::focusWidget(), u"Trip"_s);
    controls().checkStartNumber->click();
    const ActivityJob& job = renamed([this] {
        QTest::mouseClick(controls().saveBtn, Qt::LeftButton);
        Q_EMIT controller->activity()->cancelRequested(newestJob().id);
    });
    EXPECT_EQ(job.state, JobState::Cancelled);
    EXPECT_EQ(job.cancelled + job.succeeded(), 300);
    EXPECT_EQ(dir.files("in").size(), 300);
    EXPECT_EQ(dir.files("in").filter(u"Trip"_s).size(), job.succeeded());
}

TEST(RenameWindow, MakesOnePlanForManyKeysOfOneMoment) {
    RenameWindow window(nullptr);
    std::vector<media::ItemPointer> items;
    for (int i = 0; i < 2'000; ++i) {
        auto item = std::make_shared<media::IKImageItem>();
        item->fileName = u"clip %1.mp4"_s.arg(i);
        item->filePath = u"/nowhere/"_s + item->fileName;
        items.push_back(item);
    }
    window.present();
    window.controls().customerFileNameBtn->click();
    window.controls().checkStartNumber->click();
    window.setItems(items, u"/nowhere/out"_s);
    QCoreApplication::processEvents();
    const int before = window.planCount();
    for (int i = 0; i < 10; ++i)
        QTest::keyClicks(window.controls().customNamelab, u"word"_s);
    QCoreApplication::processEvents();
    EXPECT_EQ(window.planCount(), before + 1);
    const auto& plan = window.preview()->previewModel()->plan();
    ASSERT_EQ(plan.size(), 2'000u);
    EXPECT_EQ(plan.back().newFileName, u"word"_s.repeated(10) + u"002000.mp4"_s);
}

} // namespace
