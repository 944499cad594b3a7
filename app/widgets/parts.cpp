// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/widgets/parts.h"

#include "app/widgets/button_look.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace clipheave::app {
namespace {

constexpr int kHeadingHeight = 32;
constexpr int kHeadingGap = 8;
constexpr int kDotSide = 6;
constexpr int kChipHeight = 20;
constexpr int kChipPadding = 8;
constexpr int kChipImage = 12;
constexpr int kChipGap = 5;
constexpr int kSeparatorWidth = 17, kLeastSeparator = 7;

void updateOnThemeChange(QWidget* widget) {
    QObject::connect(&Theme::instance(), &Theme::changed, widget, [widget] {
        widget->updateGeometry();
        widget->update();
    });
}

int textWidth(FontRole role, const QString& text) {
    return QFontMetrics(Theme::instance().font(role)).horizontalAdvance(text);
}

void drawPart(QPainter& painter, const QRect& rect, FontRole role, Token token,
              const QString& text) {
    painter.setFont(Theme::instance().font(role));
    painter.setPen(Theme::instance().color(token));
    painter.drawText(rect, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine, text);
}

struct ChipColours {
    Token fill, text;
};

ChipColours chipColours(Chip::Kind kind) {
    switch (kind) {
    case Chip::Kind::Bad:
        return {Token::badBg, Token::bad};
    case Chip::Kind::Running:
        return {Token::sel, Token::text1};
    default:
        return {Token::bg3, Token::text2};
    }
}

QString chipImage(Chip::Kind kind) {
    switch (kind) {
    case Chip::Kind::Bad:
        return QStringLiteral("fail");
    case Chip::Kind::Ok:
        return QStringLiteral("check");
    default:
        return {};
    }
}

} // namespace

SectionHeading::SectionHeading(const QString& title, QWidget* parent)
    : QWidget(parent), m_title(title) {
    setAccessibleName(title);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    updateOnThemeChange(this);
}

void SectionHeading::setNote(const QString& note) {
    m_note = note;
    setAccessibleDescription(note);
    update();
}

QSize SectionHeading::sizeHint() const {
    return {textWidth(FontRole::Section, m_title) + 120, kHeadingHeight};
}

void SectionHeading::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QRect rest = rect();
    drawPart(painter, rest, FontRole::Section, Token::text1, m_title);
    rest.setLeft(textWidth(FontRole::Section, m_title) + kHeadingGap);
    if (!m_note.isEmpty()) {
        const int width = textWidth(FontRole::Cell, m_note);
        drawPart(painter, rest.adjusted(rest.width() - width, 0, 2, 0), FontRole::Cell,
                 Token::text3, m_note);
        painter.setPen(Qt::NoPen);
        painter.setBrush(Theme::instance().color(Token::accent));
        painter.drawEllipse(QRectF(rest.right() - width - kDotSide - 5,
                                   height() / 2.0 - kDotSide / 2.0, kDotSide, kDotSide));
        rest.setRight(rest.right() - width - kDotSide - 6 - kHeadingGap);
    }
    if (rest.width() > 0)
        painter.fillRect(QRect(rest.left(), height() / 2, rest.width(), 1),
                         Theme::instance().color(Token::line1));
}

Card::Card(QWidget* parent) : QFrame(parent) {
    setContentsMargins(0, 0, 0, 0);
    updateOnThemeChange(this);
}

void Card::setChosen(bool chosen) {
    m_chosen = chosen;
    update();
}

void Card::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Theme& theme = Theme::instance();
    const double width = m_chosen ? 2 : 1;
    painter.setPen(QPen(theme.color(m_chosen ? Token::accent : Token::line1), width));
    painter.setBrush(theme.color(Token::bg1));
    painter.drawRoundedRect(QRectF(rect()).adjusted(width / 2, width / 2, -width / 2, -width / 2),
                            8, 8);
}

Chip::Chip(Kind kind, const QString& text, QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    updateOnThemeChange(this);
    set(kind, text);
}

void Chip::set(Kind kind, const QString& text, const QString& image) {
    m_kind = kind;
    m_text = text;
    m_image = image.isEmpty() ? chipImage(kind) : image;
    setAccessibleName(text);
    updateGeometry();
    update();
}

QSize Chip::sizeHint() const {
    QFont font = Theme::instance().font(FontRole::Caption);
    font.setWeight(QFont::Medium);
    const int image = m_image.isEmpty() ? 0 : kChipImage + kChipGap;
    return {QFontMetrics(font).horizontalAdvance(m_text) + 1 + image + 2 * kChipPadding,
            kChipHeight};
}

void Chip::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Theme& theme = Theme::instance();
    const ChipColours colours = chipColours(m_kind);
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.color(colours.fill));
    painter.drawRoundedRect(rect(), kChipHeight / 2.0, kChipHeight / 2.0);
    int x = kChipPadding;
    if (!m_image.isEmpty()) {
        painter.drawPixmap(
            QRect(x, (height() - kChipImage) / 2, kChipImage, kChipImage),
            themePixmap(m_image, kChipImage, theme.color(colours.text), devicePixelRatioF()));
        x += kChipImage + kChipGap;
    }
    QFont font = theme.font(FontRole::Caption);
    font.setWeight(QFont::Medium);
    painter.setFont(font);
    painter.setPen(theme.color(colours.text));
    painter.drawText(rect().adjusted(x, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft, m_text);
}

ToolBand::ToolBand(QWidget* parent) : QWidget(parent) {
    setFixedHeight(kHeight);
    m_layout = new QHBoxLayout(this);
    m_layout->setContentsMargins(12, 0, 12, 1);
    m_layout->setSpacing(4);
    updateOnThemeChange(this);
}

void ToolBand::add(QWidget* widget) {
    m_layout->addWidget(widget, 0, Qt::AlignVCenter);
}

void ToolBand::addSeparator() {
    auto* line = new ToolSeparator;
    m_layout->addWidget(line, 0, Qt::AlignVCenter);
}

void ToolBand::addStretch() {
    m_layout->addStretch(1);
}

void ToolBand::addGap(int width) {
    m_layout->addSpacing(width);
}

void ToolBand::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), Theme::instance().color(Token::bg0));
    painter.fillRect(QRect(0, height() - 1, width(), 1), Theme::instance().color(Token::line1));
}

ToolSeparator::ToolSeparator(QWidget* parent) : QWidget(parent) {
    setFixedHeight(32);
    setMinimumWidth(kLeastSeparator);
    setMaximumWidth(kSeparatorWidth);
    updateOnThemeChange(this);
}

void ToolSeparator::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(QRect(width() / 2, 0, 1, height()), Theme::instance().color(Token::line1));
}

Scrim::Scrim(QWidget* window, int top) : QWidget(window), m_top(top) {
    window->installEventFilter(this);
    updateOnThemeChange(this);
    cover();
    show();
    raise();
}

void Scrim::cover() {
    setGeometry(parentWidget()->rect().adjusted(0, m_top, 0, 0));
}

bool Scrim::eventFilter(QObject* watched, QEvent* event) {
    if (watched == parent() && event->type() == QEvent::Resize)
        cover();
    return QWidget::eventFilter(watched, event);
}

void Scrim::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), Theme::instance().color(Token::scrim));
}

void Scrim::mousePressEvent(QMouseEvent* event) {
    event->accept();
}

} // namespace clipheave::app
