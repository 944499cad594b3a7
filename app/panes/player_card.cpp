// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/player_card.h"

#include "app/panes/player_view.h"

#include <QKeyEvent>
#include <QVBoxLayout>

namespace clipheave::app {

PlayerCard::PlayerCard(TransportBar::Form form, QWidget* parent)
    : QWidget(parent), m_stage(new QWidget(this)), m_player(new PlayerView(m_stage)),
      m_transport(new TransportBar(m_player->player(), form, m_stage)) {
    auto* card = new QVBoxLayout(this);
    card->setContentsMargins(0, 0, 0, 0);
    card->addWidget(m_stage);
    auto* column = new QVBoxLayout(m_stage);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_player, 1);
    column->addWidget(m_transport);
    m_player->setVisible(form == TransportBar::Form::Video);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    m_stage->installEventFilter(this);
    connect(m_transport, &TransportBar::fullScreenRequested, this, &PlayerCard::toggleFullScreen);
}

PlayerCard::~PlayerCard() {
    m_stage->removeEventFilter(this);
}

void PlayerCard::setCardWidth(int width) {
    m_width = width;
    setFixedWidth(width);
    if (!m_player->isHidden() && !isFullScreen())
        m_player->setFixedHeight(m_player->heightForWidth(width));
}

bool PlayerCard::isFullScreen() const {
    return m_stage->isWindow();
}

void PlayerCard::toggleFullScreen() {
    if (isFullScreen())
        return leaveFullScreen();
    // The card keeps its place while its content is away.
    setMinimumHeight(height());
    m_player->setMinimumHeight(0);
    m_player->setMaximumHeight(QWIDGETSIZE_MAX);
    m_player->setCorners(PlayerView::Corners::None);
    m_stage->setWindowFlag(Qt::Window, true);
    m_stage->showFullScreen();
    m_player->setFocus();
}

void PlayerCard::leaveFullScreen() {
    m_stage->setWindowFlag(Qt::Window, false);
    m_stage->setWindowState(Qt::WindowNoState);
    m_stage->show();
    setMinimumHeight(0);
    m_player->setCorners(PlayerView::Corners::Top);
    setCardWidth(m_width);
    m_player->setFocus();
}

bool PlayerCard::eventFilter(QObject* watched, QEvent* event) {
    if (watched != m_stage || !isFullScreen())
        return QWidget::eventFilter(watched, event);
    const bool escape = event->type() == QEvent::KeyPress &&
                        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape;
    if (!escape && event->type() != QEvent::Close)
        return QWidget::eventFilter(watched, event);
    // Closing the player's window brings it back: it is a part of this one.
    event->ignore();
    leaveFullScreen();
    return true;
}

} // namespace clipheave::app
