// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/sheet.h"

#include "app/theme/theme.h"
#include "app/widgets/parts.h"

#include <QEvent>
#include <QLineEdit>
#include <QMouseEvent>

#include <algorithm>

namespace clipheave::app {

namespace {

constexpr int kTitleBar = 36, kTools = 60, kActivity = 32; // px
constexpr int kMostBelowTools = 60, kBesideSheet = 16;     // px

} // namespace

Sheet::Sheet(const QString& title, QSize size, QWidget* parent)
    : OwnWindow(title, parent), m_size(size) {
}

void Sheet::setFirstField(QLineEdit* field) {
    m_firstField = field;
}

void Sheet::open() {
    place();
    OwnWindow::open();
    if (!m_firstField)
        return;
    m_firstField->setFocus(Qt::TabFocusReason);
    m_firstField->selectAll();
}

/// Below the tools where there is room; else over them, but never over the title bar.
void Sheet::place() {
    if (!parentWidget())
        return;
    const Theme& theme = Theme::instance();
    const QRect window = parentWidget()->window()->geometry();
    setFixedSize(std::min(theme.scaled(m_size.width()), window.width() - 2 * kBesideSheet),
                 std::min(theme.scaled(m_size.height()), window.height() - kTitleBar));
    const int room = window.height() - kTitleBar - kTools - kActivity - height();
    const int top = room >= 0 ? kTitleBar + kTools + std::min(kMostBelowTools, room / 2)
                              : std::max(kTitleBar, (window.height() - height()) / 2);
    move(window.left() + (window.width() - width()) / 2, window.top() + top);
}

bool Sheet::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize || event->type() == QEvent::Move)
        place();
    return OwnWindow::eventFilter(watched, event);
}

void Sheet::showEvent(QShowEvent* event) {
    QDialog::showEvent(event); // not where OwnWindow was left
    if (event->spontaneous() || !parentWidget())
        return;
    m_scrim = new Scrim(parentWidget()->window(), kTitleBar);
    parentWidget()->window()->installEventFilter(this);
}

void Sheet::hideEvent(QHideEvent* event) {
    OwnWindow::hideEvent(event);
    if (event->spontaneous()) // minimised
        return;
    delete m_scrim;
    if (parentWidget())
        parentWidget()->window()->removeEventFilter(this);
}

void Sheet::mousePressEvent(QMouseEvent* event) {
    QDialog::mousePressEvent(event);
}

} // namespace clipheave::app
