// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/player_view.h"

#include "app/theme/theme.h"
#include "app/widgets/button_look.h"
#include "platform/player/mpv_player.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>

namespace clipheave::app {

using platform::MpvPlayer;

namespace {

constexpr double kPlayerRadius = 8;
constexpr double kJumpSeconds = 5;

/// The outline of a card of which only some corners may be round; others lie below the edge.
QPainterPath playerOutline(const QSize& size, PlayerView::Corners corners) {
    QRectF rect = QRectF(QPointF(), QSizeF(size)).adjusted(0.5, 0.5, -0.5, -0.5);
    QPainterPath path;
    if (corners == PlayerView::Corners::None) {
        path.addRect(QRectF(QPointF(), QSizeF(size)));
        return path;
    }
    if (corners == PlayerView::Corners::Top)
        rect.setBottom(rect.bottom() + 2 * kPlayerRadius);
    path.addRoundedRect(rect, kPlayerRadius, kPlayerRadius);
    return path;
}

} // namespace

PlayerView::PlayerView(QWidget* parent) : QWidget(parent), m_player(new MpvPlayer(this)) {
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(tr("Player"));
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    connect(m_player, &MpvPlayer::frameReady, this, qOverload<>(&QWidget::update));
    connect(m_player, &MpvPlayer::failed, this, [this](const QString& reason) {
        m_failure = reason;
        setAccessibleDescription(reason);
        update();
    });
    connect(&Theme::instance(), &Theme::changed, this, qOverload<>(&QWidget::update));
}

PlayerView::~PlayerView() = default;

void PlayerView::setFile(const QString& path) {
    m_failure.clear();
    setAccessibleDescription({});
    m_player->open(path);
    update();
}

void PlayerView::clear() {
    m_failure.clear();
    setAccessibleDescription({});
    m_player->close();
    update();
}

void PlayerView::setCorners(Corners corners) {
    m_corners = corners;
    update();
}

QRectF PlayerView::imageRect() const {
    const QSizeF fitted = QSizeF(m_player->videoSize()).scaled(size(), Qt::KeepAspectRatio);
    return {QPointF((width() - fitted.width()) / 2, (height() - fitted.height()) / 2), fitted};
}

void PlayerView::paintContent(QPainter& painter) {
    if (!m_failure.isEmpty()) {
        // Deliberate: the colours of the dark theme in both, as the well is dark in both.
        painter.setPen(Theme::colorOf(Token::text3, true));
        painter.setFont(Theme::instance().font(FontRole::Cell));
        painter.drawText(rect().adjusted(16, 16, -16, -16), Qt::AlignCenter | Qt::TextWordWrap,
                         m_failure);
        return;
    }
    if (m_player->videoSize().isEmpty())
        return;
    const QRectF target = imageRect();
    const QSize pixels = (target.size() * devicePixelRatioF()).toSize().expandedTo({1, 1});
    const QImage frame = m_player->render(pixels);
    if (!frame.isNull())
        painter.drawImage(target, frame);
}

void PlayerView::paintEvent(QPaintEvent*) {
    const Theme& theme = Theme::instance();
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    const QPainterPath outline = playerOutline(size(), m_corners);
    painter.fillPath(outline, theme.color(Token::well));
    painter.setClipPath(outline);
    paintContent(painter);
    painter.setClipping(false);
    painter.setBrush(Qt::NoBrush);
    if (m_corners != Corners::None) {
        painter.setPen(theme.color(Token::line1));
        painter.drawPath(outline);
    }
    if (m_focusRing && hasFocus()) {
        painter.setPen(QPen(Theme::colorOf(Token::accent, true), 2));
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), kPlayerRadius,
                                kPlayerRadius);
    }
}

void PlayerView::keyPressEvent(QKeyEvent* event) {
    if (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))
        return QWidget::keyPressEvent(event);
    switch (event->key()) {
    case Qt::Key_Space:
        if (!event->isAutoRepeat())
            m_player->setPaused(!m_player->isPaused());
        return;
    case Qt::Key_Comma:
        return m_player->stepBackward();
    case Qt::Key_Period:
        return m_player->stepForward();
    case Qt::Key_Left:
        return m_player->seek(m_player->position() - kJumpSeconds);
    case Qt::Key_Right:
        return m_player->seek(m_player->position() + kJumpSeconds);
    default:
        QWidget::keyPressEvent(event);
    }
}

void PlayerView::focusInEvent(QFocusEvent* event) {
    m_focusRing = showsFocusRing(event->reason());
    QWidget::focusInEvent(event);
}

void PlayerView::focusOutEvent(QFocusEvent* event) {
    m_focusRing = false;
    QWidget::focusOutEvent(event);
}

} // namespace clipheave::app
