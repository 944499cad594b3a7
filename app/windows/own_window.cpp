// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/own_window.h"

#include "app/activity/activity_parts.h"
#include "app/theme/theme.h"
#include "app/widgets/button_look.h"

#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QVBoxLayout>
#include <QWindow>

#include <algorithm>

namespace clipheave::app {

namespace {

constexpr double kCorner = 10;
constexpr int kBelowTools = 104; // px: title bar, tool bar and a gap

} // namespace

OwnWindow::OwnWindow(const QString& title, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint), m_body(new QWidget(this)) {
    setAttribute(Qt::WA_TranslucentBackground);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    auto* head = new QHBoxLayout;
    head->setContentsMargins(16, 0, 6, 0);
    m_title = new ToneLabel(FontRole::BodyStrong, Token::text1, this);
    m_title->setFixedHeight(kHeadHeight);
    m_title->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
    setTitle(title);
    m_subtitle = new ToneLabel(FontRole::Cell, Token::text3, this);
    m_subtitle->setObjectName(QStringLiteral("windowSubtitle"));
    m_subtitle->setFixedHeight(kHeadHeight);
    auto* close = new Button(ButtonKind::Icon, {}, QStringLiteral("close"), this);
    close->setObjectName(QStringLiteral("windowCloseBtn"));
    close->setAccessibleName(tr("Close"));
    close->setToolTip(tr("Close (Esc)"));
    allowLowButton(close);
    close->setFixedWidth(32);
    connect(close, &Button::clicked, this, &QDialog::reject);
    head->setSpacing(8);
    head->addWidget(m_title);
    head->addWidget(m_subtitle, 1);
    head->addWidget(close);
    column->addLayout(head);
    column->addWidget(m_body, 1);
    connect(&Theme::instance(), &Theme::changed, this, [this] { update(); });
}

void OwnWindow::setTitle(const QString& title) {
    m_title->setText(title);
    m_title->updateGeometry();
    setWindowTitle(title);
    setAccessibleName(title);
}

void OwnWindow::setSubtitle(const QString& text) {
    m_subtitle->setText(text);
    setAccessibleDescription(text);
}

QHBoxLayout* OwnWindow::foot() {
    if (!m_foot) {
        m_foot = new QWidget(this);
        m_foot->setFixedHeight(kFootHeight);
        auto* row = new QHBoxLayout(m_foot);
        row->setContentsMargins(16, 0, 16, 0);
        row->setSpacing(8);
        row->addStretch(1);
        layout()->addWidget(m_foot);
    }
    return static_cast<QHBoxLayout*>(m_foot->layout());
}

void OwnWindow::paintEvent(QPaintEvent*) {
    const Theme& theme = Theme::instance();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF outline = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    QPainterPath surface;
    surface.addRoundedRect(outline, kCorner, kCorner);
    painter.fillPath(surface, theme.color(Token::bg2));
    painter.save();
    painter.setClipPath(surface);
    painter.fillRect(QRect(0, kHeadHeight - 1, width(), 1), theme.color(Token::line1));
    if (m_foot) {
        painter.fillRect(m_foot->geometry(), theme.color(Token::bg1));
        painter.fillRect(QRect(0, m_foot->y(), width(), 1), theme.color(Token::line1));
    }
    painter.restore();
    painter.setPen(theme.color(Token::line2));
    painter.drawPath(surface);
}

void OwnWindow::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (m_placed || !parentWidget())
        return;
    m_placed = true; // afterwards it stays where the user has put it
    const QRect window = parentWidget()->window()->geometry();
    const int below = std::min(kBelowTools, std::max(0, (window.height() - height()) / 2));
    move(window.left() + (window.width() - width()) / 2, window.top() + below);
}

void OwnWindow::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && event->position().y() < kHeadHeight && windowHandle())
        windowHandle()->startSystemMove();
    else
        QDialog::mousePressEvent(event);
}

} // namespace clipheave::app
