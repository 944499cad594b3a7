// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/list/media_list_model.h"
#include "app/theme/theme.h"
#include "app/windows/main_window.h"
#include "app/words/words.h"
#include "tests/app/window/fake_desktop.h"

#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

namespace clipheave::app {

/// The application as after its start, with its preferences and its storage folder "out" in a
/// folder of its own, and what a user does in it.
class WindowFixture : public testing::Test {
protected:
    using Signal = void (AppDelegate::*)();

    void SetUp() override {
        Theme::instance().apply(Appearance::Dark);
        Surroundings surroundings = surroundingsOf(desktop, dir);
        const auto& defaults = surroundings.defaults;
        ASSERT_TRUE(defaults->setObject_forKey(dir.path("out"), u"storagePath"_s));
        ASSERT_TRUE(defaults->setObject_forKey(u"lower left corner"_s, u"Postion"_s));
        installWords();
        controller = std::make_unique<AppDelegate>(std::move(surroundings));
        controller->awakeFromNib();
        controller->applicationDidFinishLaunching();
    }

    MainWindow* window() const { return controller->mainWindow(); }
    template <class T> T* child(const char* name) const {
        T* found = window()->findChild<T*>(QLatin1String(name));
        if (!found)
            throw std::runtime_error(std::string("no control ") + name); // ends the one test
        return found;
    }
    const ActivityJob& newestJob() const { return controller->activity()->jobs().front(); }

    /// Does something and waits until the controller says that it has ended.
    void untilEnd(Signal ended, const std::function<void()>& act) const {
        QSignalSpy done(controller.get(), ended);
        act();
        ASSERT_TRUE(done.wait(60'000));
    }
    const ActivityJob& saved(const std::function<void()>& act) const {
        untilEnd(&AppDelegate::saveFinished, act);
        return newestJob();
    }
    const ActivityJob& saved() const {
        return saved([this] { controller->SaveMeidaFileChangesAction(); });
    }
    void tryAgain(int job, Signal ended) const {
        untilEnd(ended, [&] { Q_EMIT controller->activity()->retryRequested(job); });
    }
    void import(const QStringList& paths) const {
        untilEnd(&AppDelegate::importFinished, [&] { controller->importPaths(paths); });
    }
    /// Imports "b.mp4", "c.mp4" and "a.mp4" of a folder, each with its name as its title.
    void importThree(const QString& folder = {}) const {
        QStringList paths;
        for (const char* name : {"b", "c", "a"})
            paths.append(dir.write(folder + QLatin1String(name) + u".mp4"_s, testkit::movie(name)));
        import(paths);
    }
    /// Types over what the field holds.
    void type(const char* field, const QString& text) const {
        auto* edit = child<QLineEdit>(field);
        edit->setFocus();
        edit->selectAll();
        QTest::keyClicks(edit, text);
    }
    /// The names in the list, as it is sorted.
    QStringList names() const {
        QStringList all;
        for (const auto& item : controller->mediaController()->content())
            all.append(item->fileName);
        return all;
    }
    QStringList filesOut() const { return dir.files("out"); }
    QByteArray output(const QString& name) const {
        return testkit::TempDir::read(dir.path(u"out/"_s + name));
    }

    testkit::TempDir dir;
    std::shared_ptr<FakeDesktop> desktop = std::make_shared<FakeDesktop>();
    std::unique_ptr<AppDelegate> controller;
};

} // namespace clipheave::app
