// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/about_window.h"

#include "app/activity/activity_parts.h"
#include "app/theme/theme.h"

#include <QGridLayout>
#include <QPainter>
#include <QPointer>
#include <QVBoxLayout>

namespace clipheave::app {

namespace {

constexpr QSize kAboutSize(420, 384);
constexpr int kAboutMark = 64;

class AboutMark : public QWidget {
public:
    explicit AboutMark(QWidget* parent) : QWidget(parent) { setFixedSize(kAboutMark, kAboutMark); }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        themeIcon(QStringLiteral("mark")).paint(&painter, rect());
    }
};

struct UsedLibrary {
    const char* name;
    const char* purpose;
};

constexpr UsedLibrary kUsedLibraries[] = {
    {"Qt", QT_TRANSLATE_NOOP("clipheave::app::AboutWindow", "window, files, processes")},
    {"FFmpeg",
     QT_TRANSLATE_NOOP("clipheave::app::AboutWindow", "reading, decoding and encoding media")},
    {"mpv", QT_TRANSLATE_NOOP("clipheave::app::AboutWindow", "player")},
    {"TagLib", QT_TRANSLATE_NOOP("clipheave::app::AboutWindow", "audio tags")},
    {"Exiv2", QT_TRANSLATE_NOOP("clipheave::app::AboutWindow", "photo metadata")},
    {"CLI11, tl::expected", QT_TRANSLATE_NOOP("clipheave::app::AboutWindow", "building blocks")},
};

ToneLabel* aboutText(const QString& text, FontRole role, Token token, QWidget* parent) {
    auto* label = new ToneLabel(role, token, parent);
    label->setText(text);
    return label;
}

QGridLayout* libraryGrid(QWidget* parent) {
    auto* grid = new QGridLayout;
    grid->setHorizontalSpacing(16);
    grid->setVerticalSpacing(6);
    int row = 0;
    for (const UsedLibrary& library : kUsedLibraries) {
        const QString name = QLatin1String(library.name);
        const QString purpose = AboutWindow::tr(library.purpose);
        grid->addWidget(aboutText(name, FontRole::Cell, Token::text1, parent), row, 0);
        grid->addWidget(aboutText(purpose, FontRole::Cell, Token::text3, parent), row++, 1);
    }
    grid->setColumnStretch(1, 1);
    return grid;
}

} // namespace

AboutWindow::AboutWindow(QWidget* parent) : OwnWindow(tr("About ClipHeave"), parent) {
    setObjectName(QStringLiteral("aboutWindow"));
    setFixedSize(kAboutSize);
    auto* column = new QVBoxLayout(body());
    column->setContentsMargins(24, 24, 24, 20);
    column->setSpacing(0);
    auto* mark = new AboutMark(body());
    column->addWidget(mark, 0, Qt::AlignHCenter);
    column->addSpacing(12);
    const auto add = [&](const QString& text, FontRole role, Token token, const QString& name) {
        ToneLabel* label = aboutText(text, role, token, body());
        label->setObjectName(name);
        column->addWidget(label, 0, Qt::AlignHCenter);
    };
    add(QStringLiteral("ClipHeave"), FontRole::EmptyTitle, Token::text1, {});
    column->addSpacing(4);
    add(tr("Version %1").arg(QStringLiteral(CLIPHEAVE_VERSION)), FontRole::Body, Token::text2,
        QStringLiteral("versionLabel"));
    column->addSpacing(12);
    add(tr("Free software under the GNU General Public License,"), FontRole::Cell, Token::text2,
        {});
    add(tr("version 3 or later; without any warranty"), FontRole::Cell, Token::text2, {});
    column->addSpacing(16);
    column->addLayout(libraryGrid(body()));
    column->addStretch(1);
}

void AboutWindow::present(QWidget* parent) {
    static QPointer<AboutWindow> window;
    if (window && window->isVisible())
        return;
    if (!window)
        window = new AboutWindow(parent);
    window->show();
}

} // namespace clipheave::app
