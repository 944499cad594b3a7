// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/drop_tip.h"

#include "app/list/dropped_paths.h"
#include "app/theme/theme.h"
#include "app/widgets/button_look.h"
#include "app/widgets/token_label.h"

#include <QDragEnterEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

namespace clipheave::app {

namespace {

/// Three images fanned out behind a plus, as an invitation.
class TipImage : public QWidget {
public:
    explicit TipImage(QWidget* parent) : QWidget(parent) { setFixedSize(180, 104); }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const Theme& theme = Theme::instance();
        paintCard(painter, QPointF(44, 48), -9, "film", theme.color(Token::kVideo));
        paintCard(painter, QPointF(136, 48), 9, "music", theme.color(Token::kAudio));
        paintCard(painter, QPointF(90, 36), 0, "image", theme.color(Token::kPhoto));
        painter.resetTransform();
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme.color(Token::accent));
        painter.drawEllipse(QPointF(90, 86), 15, 15);
        painter.drawPixmap(QPoint(82, 78),
                           themePixmap(QStringLiteral("add"), 16, theme.color(Token::onAccent),
                                       devicePixelRatioF()));
    }

private:
    void paintCard(QPainter& painter, QPointF centre, double angle, const char* icon,
                   const QColor& hue) {
        const Theme& theme = Theme::instance();
        painter.resetTransform();
        painter.translate(centre);
        painter.rotate(angle);
        painter.setPen(QPen(theme.color(Token::line2), 1));
        painter.setBrush(theme.color(Token::bg3));
        painter.drawRoundedRect(QRectF(-41, -29, 82, 58), 6, 6);
        painter.drawPixmap(QPoint(-12, -12),
                           themePixmap(QLatin1String(icon), 24, hue, devicePixelRatioF()));
    }
};

QLabel* centredLabel(const QString& text, FontRole role, Token token, QWidget* parent) {
    auto* label = new TokenLabel(text, role, token, parent);
    label->setAlignment(Qt::AlignCenter);
    return label;
}

} // namespace

DropTip::DropTip(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("leftTipView"));
    setAccessibleName(tr("Drop your files here"));
    setAcceptDrops(true);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(32, 32, 32, 32);
    layout->addStretch();
    layout->addWidget(new TipImage(this), 0, Qt::AlignHCenter);
    layout->addSpacing(20);
    layout->addWidget(
        centredLabel(tr("Drop your files here"), FontRole::EmptyTitle, Token::text1, this));
    layout->addSpacing(4);
    layout->addWidget(centredLabel(tr("Videos, audio files or whole folders"), FontRole::Body,
                                   Token::text2, this));
    layout->addSpacing(20);
    layout->addLayout(makeButtons());
    layout->addSpacing(24);
    QLabel* note =
        centredLabel(tr("Edits and exports are written as new files to the storage folder."),
                     FontRole::Cell, Token::text3, this);
    note->setWordWrap(true);
    layout->addWidget(note);
    layout->addStretch();
}

QLayout* DropTip::makeButtons() {
    auto* add = new Button(ButtonKind::Primary, tr("Add Files or Folders…"),
                           QStringLiteral("add-files"), this);
    auto* device =
        new Button(ButtonKind::Plain, tr("From a Device…"), QStringLiteral("camera"), this);
    connect(add, &Button::clicked, this, &DropTip::addRequested);
    connect(device, &Button::clicked, this, &DropTip::deviceRequested);
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(0);
    buttons->addStretch();
    buttons->addWidget(add);
    buttons->addSpacing(8);
    buttons->addWidget(device);
    buttons->addStretch();
    return buttons;
}

void DropTip::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Theme& theme = Theme::instance();
    painter.fillRect(rect(), theme.color(Token::bg1));
    QPen pen(theme.color(m_dragging ? Token::accent : Token::line3), m_dragging ? 2 : 1);
    pen.setStyle(Qt::CustomDashLine);
    pen.setDashPattern({3, 3});
    painter.setPen(pen);
    painter.setBrush(m_dragging ? theme.color(Token::sel, 0.35) : QColor(Qt::transparent));
    painter.drawRoundedRect(QRectF(rect()).adjusted(16.5, 16.5, -16.5, -16.5), 12, 12);
}

void DropTip::dragEnterEvent(QDragEnterEvent* event) {
    const QStringList paths = app::droppedPaths(event->mimeData());
    if (!takesDrop(paths) && !takesPhotoDrop(paths))
        return;
    m_dragging = true;
    update();
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void DropTip::dragLeaveEvent(QDragLeaveEvent*) {
    m_dragging = false;
    update();
}

void DropTip::dropEvent(QDropEvent* event) {
    m_dragging = false;
    update();
    m_paths = app::droppedPaths(event->mimeData());
    event->setDropAction(Qt::CopyAction);
    event->accept();
    if (takesDrop(m_paths))
        Q_EMIT pathsDropped(m_paths);
    else
        Q_EMIT photosDropped(m_paths);
}

} // namespace clipheave::app
