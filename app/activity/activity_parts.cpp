// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/activity/activity_parts.h"

#include <QElapsedTimer>
#include <QPainter>
#include <QStyle>

#include <algorithm>

namespace clipheave::app {

namespace {

constexpr int kStateSide = 16;
constexpr double kUnknownOpacity = 0.45;
constexpr int kSteps = 1000; // of a progress bar

/// Returns degrees, at any moment the same for every spinner.
double spinnerAngle() {
    static const QElapsedTimer clock = [] {
        QElapsedTimer started;
        started.start();
        return started;
    }();
    return static_cast<double>(clock.elapsed() % BusyIndicator::kRotation) * 360 /
           BusyIndicator::kRotation;
}

bool spins(const StateLook& look) {
    return look.image == QLatin1String("spinner");
}

} // namespace

bool animationsEnabled(const QWidget* widget) {
    return widget->style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, widget) > 0;
}

void allowLowButton(QWidget* button) {
    button->setStyleSheet(QStringLiteral("QPushButton, QPushButton:focus { min-height: 0; }"));
}

StateLook lookOf(const ActivityJob& job) {
    if (job.skippedAll())
        return {QStringLiteral("skip"), Token::text3};
    switch (job.state) {
    case JobState::Running:
        return {QStringLiteral("spinner"), Token::accentText};
    case JobState::Done:
        return {QStringLiteral("check-circle"), Token::ok};
    case JobState::Failed:
        return {QStringLiteral("fail"), Token::bad};
    case JobState::Cancelled:
        break;
    }
    return {QStringLiteral("remove"), Token::text3};
}

StateLook lookOf(FileState state) {
    switch (state) {
    case FileState::Waiting:
        return {QStringLiteral("queued"), Token::text3};
    case FileState::Running:
        return {QStringLiteral("spinner"), Token::accentText};
    case FileState::Done:
        return {QStringLiteral("check"), Token::ok};
    case FileState::Failed:
        return {QStringLiteral("fail"), Token::bad};
    case FileState::Skipped:
        return {QStringLiteral("skip"), Token::text3};
    case FileState::Cancelled:
        break;
    }
    return {QStringLiteral("remove"), Token::text3};
}

Token progressToken(const ActivityJob& job) {
    if (job.state == JobState::Failed)
        return Token::bad;
    return job.state == JobState::Done && !job.skippedAll() ? Token::ok : Token::accent;
}

void paintState(QPainter& painter, const QRect& rect, const StateLook& look, bool still) {
    const double ratio = painter.device()->devicePixelRatioF();
    const QPixmap pixmap =
        themePixmap(look.image, kStateSide, Theme::instance().color(look.token), ratio);
    const QRectF target(-kStateSide / 2.0, -kStateSide / 2.0, kStateSide, kStateSide);
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    // Whole pixels: an image between them is blurred.
    const QPoint corner(rect.left() + (rect.width() - kStateSide) / 2,
                        rect.top() + (rect.height() - kStateSide) / 2);
    painter.translate(corner + QPoint(kStateSide / 2, kStateSide / 2));
    if (spins(look) && !still)
        painter.rotate(spinnerAngle());
    painter.drawPixmap(target, pixmap, QRectF(pixmap.rect()));
    painter.restore();
}

void paintProgress(QPainter& painter, const QRectF& bar, double fraction, Token token) {
    const Theme& theme = Theme::instance();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const double radius = bar.height() / 2;
    painter.setBrush(theme.color(Token::bg4));
    painter.drawRoundedRect(bar, radius, radius);
    QRectF done = bar;
    if (fraction < 0)
        painter.setOpacity(kUnknownOpacity);
    else
        done.setWidth(bar.width() * std::min(1.0, fraction));
    painter.setBrush(theme.color(token));
    if (done.width() > 0)
        painter.drawRoundedRect(done, std::min(radius, done.width() / 2), radius);
    painter.restore();
}

ToneLabel::ToneLabel(FontRole role, Token token, QWidget* parent)
    : QLabel(parent), m_role(role), m_token(token) {
    setTextFormat(Qt::PlainText);
    setFont(Theme::instance().font(role));
    connect(&Theme::instance(), &Theme::changed, this, [this] {
        setFont(Theme::instance().font(m_role));
        update();
    });
}

void ToneLabel::setToken(Token token) {
    if (m_token == token)
        return;
    m_token = token;
    update();
}

QSize ToneLabel::sizeHint() const {
    return {fontMetrics().horizontalAdvance(text()) + 1, fontMetrics().height()};
}

QSize ToneLabel::minimumSizeHint() const {
    return {std::min(sizeHint().width(), 32), sizeHint().height()};
}

void ToneLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(Theme::instance().color(m_token));
    painter.drawText(rect(), static_cast<int>(Qt::AlignVCenter | (alignment() & Qt::AlignRight)),
                     fontMetrics().elidedText(text(), Qt::ElideRight, width()));
}

BusyIndicator::BusyIndicator(QWidget* parent) : QWidget(parent) {
    setFixedSize(kStateSide, kStateSide);
    m_timer.setInterval(kInterval);
    connect(&m_timer, &QTimer::timeout, this, [this] { update(); });
}

void BusyIndicator::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintState(painter, rect(), {QStringLiteral("spinner"), Token::accentText},
               !m_timer.isActive());
}

void BusyIndicator::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (animationsEnabled(this))
        m_timer.start();
}

void BusyIndicator::hideEvent(QHideEvent* event) {
    m_timer.stop();
    QWidget::hideEvent(event);
}

ThinProgress::ThinProgress(QWidget* parent) : QProgressBar(parent) {
    setTextVisible(false);
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    setRange(0, kSteps);
}

void ThinProgress::setFraction(double fraction) {
    if (fraction < 0) {
        setRange(0, 0);
        return;
    }
    setRange(0, kSteps);
    setValue(static_cast<int>(std::min(1.0, fraction) * kSteps));
}

void ThinProgress::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const bool unknown = maximum() == minimum();
    paintProgress(painter, rect(), unknown ? -1 : static_cast<double>(value()) / kSteps,
                  Token::accent);
}

} // namespace clipheave::app
