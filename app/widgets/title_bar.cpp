// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/widgets/title_bar.h"

#include "app/theme/theme.h"
#include "app/widgets/image_button.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QMouseEvent>
#include <QPainter>
#include <QWindow>

#include <algorithm>

namespace clipheave::app {
namespace {

constexpr int kMarkLeft = 12;
constexpr int kMarkSide = 20;

} // namespace

TitleBar::TitleBar(QWidget* parent) : QWidget(parent) {
    setFixedHeight(kHeight);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(kMarkLeft + kMarkSide + 8, 0, 0, 0);
    row->setSpacing(0);
    m_menuBar = new QMenuBar;
    m_menuBar->setNativeMenuBar(false);
    m_menuBar->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    row->addWidget(m_menuBar, 0, Qt::AlignVCenter);
    row->addStretch(1);
    m_minimise = new ImageButton(ButtonKind::Window, tr("Minimise"), QStringLiteral("Min_Nom.png"));
    m_resize = new ImageButton(ButtonKind::Window, tr("Resize"), QStringLiteral("Resize_Nom.png"));
    m_close =
        new ImageButton(ButtonKind::WindowClose, tr("Close"), QStringLiteral("Close_Nom.png"));
    m_close->setPressNotification(QStringLiteral("MyClosebuttonMouseDown"));
    for (ImageButton* button : {m_minimise, m_resize, m_close})
        row->addWidget(button);
    m_name = new QLabel(this);
    m_name->setAttribute(Qt::WA_TransparentForMouseEvents);
    connect(m_minimise, &QAbstractButton::clicked, this, [this] { window()->showMinimized(); });
    connect(m_resize, &QAbstractButton::clicked, this, &TitleBar::toggleMaximised);
    const auto dress = [this] {
        m_name->setFont(Theme::instance().font(FontRole::Section));
        QPalette palette;
        palette.setColor(QPalette::WindowText, Theme::instance().color(Token::text2));
        m_name->setPalette(palette);
        m_menuBar->setFont(Theme::instance().font(FontRole::Body));
        placeName();
        update();
    };
    connect(&Theme::instance(), &Theme::changed, this, dress);
    dress();
}

void TitleBar::setName(const QString& name) {
    m_name->setText(name);
    placeName();
}

QString TitleBar::name() const {
    return m_name->text();
}

void TitleBar::placeName() {
    m_name->adjustSize();
    const int left = (width() - m_name->width()) / 2;
    m_name->move(left, (kHeight - m_name->height()) / 2);
    // In a narrow window the menus push the name out.
    m_name->setVisible(left > m_menuBar->geometry().right() + 8);
}

void TitleBar::toggleMaximised() {
    if (window()->isMaximized() || window()->isFullScreen())
        window()->showNormal();
    else
        window()->showMaximized();
}

void TitleBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), Theme::instance().color(Token::bg0));
    const QRect mark(kMarkLeft, (kHeight - kMarkSide) / 2, kMarkSide, kMarkSide);
    painter.drawPixmap(
        mark, themePixmap(QStringLiteral("mark"), kMarkSide, Qt::black, devicePixelRatioF()));
}

void TitleBar::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    placeName();
}

void TitleBar::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        m_pressed = event->position().toPoint();
}

void TitleBar::mouseMoveEvent(QMouseEvent* event) {
    // Not at the press: the window manager would take the second click of a double click.
    if (!m_pressed || (event->position().toPoint() - *m_pressed).manhattanLength() <
                          QApplication::startDragDistance())
        return;
    m_pressed.reset();
    if (QWindow* handle = window()->windowHandle())
        handle->startSystemMove();
}

void TitleBar::mouseReleaseEvent(QMouseEvent*) {
    m_pressed.reset();
}

void TitleBar::mouseDoubleClickEvent(QMouseEvent* event) {
    m_pressed.reset();
    if (event->button() == Qt::LeftButton)
        toggleMaximised();
}

} // namespace clipheave::app
