// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/commands/surroundings.h"

#include "app/widgets/alert_box.h"
#include "platform/workspace/ns_workspace.h"

#include <QFileDialog>

#include <utility>

namespace clipheave::app {

namespace {

class ShownAlerts : public Alerts {
public:
    int ask(QWidget* parent, const QString& message, const QString& informative,
            const QStringList& buttons) override {
        return AlertBox::run(parent, message, informative, buttons);
    }
};

class ShownChooser : public FileChooser {
public:
    void chooseMedia(QWidget* parent, const QString& message, OpenPanel::Mode mode,
                     std::function<void(const QStringList&)> chosen) override {
        OpenPanel::open(parent, message, mode, std::move(chosen));
    }
    void chooseFolder(QWidget* parent, const QString& current,
                      std::function<void(const QString&)> chosen) override {
        auto* panel = new QFileDialog(parent);
        panel->setAttribute(Qt::WA_DeleteOnClose);
        panel->setFileMode(QFileDialog::Directory);
        panel->setOption(QFileDialog::ShowDirsOnly);
        panel->setDirectory(current);
        QObject::connect(panel, &QFileDialog::fileSelected, parent, std::move(chosen));
        panel->open();
    }
};

class DesktopWorkspace : public Workspace {
public:
    void selectFiles(const QStringList& paths) override {
        platform::NSWorkspace::sharedWorkspace().selectFiles(paths);
    }
    bool openUrl(const QUrl& url) override {
        return platform::NSWorkspace::sharedWorkspace().openURL(url);
    }
};

} // namespace

Surroundings desktopSurroundings(std::unique_ptr<platform::NSUserDefaults> defaults) {
    return {.defaults = std::move(defaults),
            .alerts = std::make_shared<ShownAlerts>(),
            .fileChooser = std::make_shared<ShownChooser>(),
            .workspace = std::make_shared<DesktopWorkspace>(),
            .clock = [] { return QDateTime::currentDateTime(); }};
}

} // namespace clipheave::app
