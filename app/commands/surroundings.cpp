// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/commands/surroundings.h"

#include "app/AppDelegate.h"
#include "app/widgets/alert_box.h"
#include "platform/workspace/ns_workspace.h"

#include <QClipboard>
#include <QColorDialog>
#include <QFileDialog>
#include <QFontDialog>
#include <QGuiApplication>
#include <QPointer>
#include <QSettings>

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
    explicit ShownChooser(std::shared_ptr<QSettings> settings) : m_settings(std::move(settings)) {}

    void chooseMedia(QWidget* parent, const QString& message, OpenPanel::Mode mode,
                     std::function<void(const QStringList&)> chosen) override {
        OpenPanel::open(parent, message, mode, *m_settings, std::move(chosen));
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
    void chooseImage(QWidget* parent, std::function<void(const QString&)> chosen) override {
        auto* panel = new QFileDialog(parent, AppDelegate::tr("Artwork"));
        panel->setAttribute(Qt::WA_DeleteOnClose);
        panel->setFileMode(QFileDialog::ExistingFile);
        panel->setNameFilter(
            AppDelegate::tr("Images (*.jpg *.jpeg *.png *.gif *.bmp *.tif *.tiff *.webp)"));
        QObject::connect(panel, &QFileDialog::fileSelected, parent, std::move(chosen));
        panel->open();
    }

private:
    std::shared_ptr<QSettings> m_settings; ///< remembers the last folder
};

class ShownStylePanels : public StylePanels {
public:
    void showFontPanel(QWidget* parent, const QFont& first,
                       std::function<void(const QFont&)> changed) override {
        if (!m_fontPanel) {
            m_fontPanel = new QFontDialog(first, parent);
            m_fontPanel->setAttribute(Qt::WA_DeleteOnClose);
            m_fontPanel->setOption(QFontDialog::NoButtons);
            QObject::connect(m_fontPanel, &QFontDialog::currentFontChanged, parent,
                             std::move(changed));
        }
        m_fontPanel->show();
        m_fontPanel->raise();
        m_fontPanel->activateWindow();
    }
    void chooseColor(QWidget* parent, const QColor& current,
                     std::function<void(const QColor&)> chosen) override {
        auto* panel = new QColorDialog(current, parent);
        panel->setAttribute(Qt::WA_DeleteOnClose);
        QObject::connect(panel, &QColorDialog::colorSelected, parent, std::move(chosen));
        panel->open();
    }

private:
    QPointer<QFontDialog> m_fontPanel; ///< null while it is closed
};

class SystemPasteboard : public Pasteboard {
public:
    void setText(const QString& text) override { QGuiApplication::clipboard()->setText(text); }
    [[nodiscard]] const QMimeData* contents() const override {
        return QGuiApplication::clipboard()->mimeData();
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

Surroundings desktopSurroundings(std::unique_ptr<platform::NSUserDefaults> defaults,
                                 std::shared_ptr<QSettings> windowSettings) {
    return {.defaults = std::move(defaults),
            .alerts = std::make_shared<ShownAlerts>(),
            .fileChooser = std::make_shared<ShownChooser>(windowSettings),
            .stylePanels = std::make_shared<ShownStylePanels>(),
            .pasteboard = std::make_shared<SystemPasteboard>(),
            .workspace = std::make_shared<DesktopWorkspace>(),
            .windowSettings = std::move(windowSettings),
            .clock = [] { return QDateTime::currentDateTime(); }};
}

} // namespace clipheave::app
