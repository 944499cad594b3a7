// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/widgets/button_look.h"

#include <QFocusEvent>
#include <QFontMetrics>
#include <QPainter>
#include <QStyle>

#include <algorithm>

namespace clipheave::app {
namespace {

constexpr int kImageSide = 16;
constexpr int kToolImageSide = 20;
constexpr int kCaretSide = 12;
constexpr int kImageGap = 6;
constexpr double kDisabledOpacity = 0.7;
constexpr double kDisabledToolOpacity = 0.4;

struct ButtonMeasures {
    int height;
    int padding; ///< at each side
    FontRole font;
    double radius;
};

ButtonMeasures measuresOf(ButtonKind kind) {
    switch (kind) {
    case ButtonKind::Tool:
        return {48, 8, FontRole::Caption, 6};
    case ButtonKind::Small:
        return {28, 10, FontRole::Cell, 6};
    case ButtonKind::Primary:
        return {32, 14, FontRole::BodyStrong, 6};
    case ButtonKind::Icon:
        return {28, 0, FontRole::Body, 6};
    case ButtonKind::Segment:
        return {30, 12, FontRole::BodyMedium, 6};
    case ButtonKind::SmallSegment:
        return {24, 10, FontRole::Cell, 6};
    case ButtonKind::Window:
    case ButtonKind::WindowClose:
        return {36, 0, FontRole::Body, 0};
    default:
        return {32, 14, FontRole::BodyMedium, 6};
    }
}

bool isSegment(ButtonKind kind) {
    return kind == ButtonKind::Segment || kind == ButtonKind::SmallSegment;
}

struct ButtonColours {
    QColor fill, outline, text;
};

QColor clear() {
    return Qt::transparent;
}

/// Buttons that show no surface of their own until they are used.
ButtonColours quietColours(const ButtonLook& look) {
    const Theme& theme = Theme::instance();
    ButtonColours colours{clear(), clear(), theme.color(look.imageToken)};
    switch (look.kind) {
    case ButtonKind::Tool:
        colours.text = theme.color(look.pressed || look.chosen ? Token::text1 : Token::text2);
        if (look.pressed || look.chosen) {
            colours.fill = theme.color(theme.isDark() ? Token::bg4 : Token::bg1);
            colours.outline = theme.isDark() ? clear() : theme.color(Token::line2);
        } else if (look.hovered) {
            colours.fill = theme.color(Token::bg3);
        }
        return colours;
    case ButtonKind::WindowClose:
        if (look.hovered || look.pressed) {
            colours.fill = Theme::colorOf(Token::bad, false);
            colours.text = Theme::colorOf(Token::onAccent, false);
        }
        return colours;
    case ButtonKind::Segment:
    case ButtonKind::SmallSegment:
        colours.text = theme.color(look.chosen || look.hovered ? Token::text1 : Token::text2);
        if (look.chosen) {
            colours.fill = theme.color(theme.isDark() ? Token::bg4 : Token::bg1);
            colours.outline = theme.color(Token::line2);
        }
        return colours;
    default:
        if (look.pressed || look.chosen)
            colours.fill = theme.color(Token::bg4);
        else if (look.hovered)
            colours.fill = theme.color(Token::bg3);
        if (look.hovered || look.pressed || look.chosen)
            colours.text =
                look.imageToken == Token::text2 ? theme.color(Token::text1) : colours.text;
        return colours;
    }
}

ButtonColours solidColours(const ButtonLook& look) {
    const Theme& theme = Theme::instance();
    if (!look.enabled)
        return {theme.color(Token::bg2), theme.color(Token::line1),
                theme.color(Token::text3, kDisabledOpacity)};
    if (look.kind == ButtonKind::Primary) {
        const Token fill = look.pressed   ? Token::accentPress
                           : look.hovered ? Token::accentHover
                                          : Token::accent;
        return {theme.color(fill), clear(), theme.color(Token::onAccent)};
    }
    const Token text = look.kind == ButtonKind::Danger ? Token::bad : Token::text1;
    if (look.pressed || look.chosen)
        return {theme.color(Token::line1), theme.color(Token::line3), theme.color(text)};
    return {theme.color(look.hovered ? Token::bg4 : Token::bg3), theme.color(Token::line2),
            theme.color(text)};
}

bool isQuiet(ButtonKind kind) {
    return kind == ButtonKind::Tool || kind == ButtonKind::Icon || kind == ButtonKind::Flat ||
           kind == ButtonKind::Window || kind == ButtonKind::WindowClose || isSegment(kind);
}

void drawImage(QPainter& painter, const QString& name, const QPoint& corner, int side,
               const QColor& color) {
    const QPixmap pixmap = themePixmap(name, side, color, painter.device()->devicePixelRatioF());
    painter.drawPixmap(QRect(corner, QSize(side, side)), pixmap);
}

void drawSurface(QPainter& painter, const QRect& rect, const ButtonLook& look,
                 const ButtonColours& colours) {
    const double radius = measuresOf(look.kind).radius;
    QRectF surface = rect;
    if (look.ring && look.kind == ButtonKind::Primary)
        surface.adjust(3, 3, -3, -3); // a gap, or the ring would vanish in the fill
    painter.setPen(colours.outline.alpha() == 0 ? QPen(Qt::NoPen) : QPen(colours.outline, 1));
    painter.setBrush(colours.fill);
    if (colours.outline.alpha() != 0)
        surface.adjust(0.5, 0.5, -0.5, -0.5);
    painter.drawRoundedRect(surface, radius, radius);
    if (!look.ring)
        return;
    painter.setPen(QPen(Theme::instance().color(Token::accent), 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(rect).adjusted(1, 1, -1, -1), radius, radius);
}

void drawTool(QPainter& painter, const QRect& rect, const ButtonLook& look, const QColor& text) {
    const QFont font = Theme::instance().font(FontRole::Caption);
    const QFontMetrics metrics(font);
    drawImage(painter, look.image, {rect.center().x() - kToolImageSide / 2 + 1, rect.top() + 5},
              kToolImageSide, Theme::instance().color(Token::text1));
    const int caret = look.caret ? kCaretSide + 1 : 0;
    const QString label = metrics.elidedText(look.text, Qt::ElideRight, rect.width() - caret - 2);
    const int width = metrics.horizontalAdvance(label);
    const int whole = width + caret;
    const int left = rect.left() + (rect.width() - whole) / 2;
    const QRect line(left, rect.top() + 28, width + 2, 16);
    painter.setFont(font);
    painter.setPen(text);
    painter.drawText(line, Qt::AlignVCenter | Qt::AlignLeft, label);
    if (look.caret)
        drawImage(painter, QStringLiteral("chevron-down"), {left + width + 3, line.top() + 2},
                  kCaretSide, text);
}

int rowWidth(const ButtonLook& look, const QFontMetrics& metrics) {
    int width = look.text.isEmpty() ? 0 : metrics.horizontalAdvance(look.text);
    if (!look.image.isEmpty())
        width += kImageSide + (look.text.isEmpty() ? 0 : kImageGap) - (look.text.isEmpty() ? 0 : 2);
    if (look.caret)
        width += kImageGap + kImageSide - 4;
    return width;
}

void drawRow(QPainter& painter, const QRect& rect, const ButtonLook& look, const QColor& color) {
    const QFont font = Theme::instance().font(measuresOf(look.kind).font);
    const QFontMetrics metrics(font);
    const int whole = rowWidth(look, metrics);
    const int middle = rect.top() + (rect.height() - kImageSide) / 2;
    int x = rect.left() + (rect.width() - whole) / 2;
    if (!look.image.isEmpty()) {
        const int left = look.text.isEmpty() && !look.caret ? x : x - 1;
        drawImage(painter, look.image, {left, middle}, kImageSide, color);
        x += kImageSide + kImageGap - 2;
    }
    painter.setFont(font);
    painter.setPen(color);
    const int width = metrics.horizontalAdvance(look.text);
    painter.drawText(QRect(x, rect.top(), width + 2, rect.height()),
                     Qt::AlignVCenter | Qt::AlignLeft, look.text);
    if (look.caret)
        drawImage(painter, QStringLiteral("chevron-down"),
                  {x + width + (look.text.isEmpty() ? 0 : kImageGap), middle}, kImageSide, color);
}

} // namespace

bool showsFocusRing(Qt::FocusReason reason) {
    return reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
           reason == Qt::ShortcutFocusReason;
}

QSize buttonSize(const ButtonLook& look) {
    const ButtonMeasures measures = measuresOf(look.kind);
    const QFontMetrics metrics(Theme::instance().font(measures.font));
    switch (look.kind) {
    case ButtonKind::Window:
    case ButtonKind::WindowClose:
        return {44, 36};
    case ButtonKind::Icon:
        return {28 + (look.caret ? kCaretSide : 0), 28};
    case ButtonKind::Tool: {
        const int text = metrics.horizontalAdvance(look.text) + (look.caret ? kCaretSide + 1 : 0);
        return {std::max(68, text + 2 * measures.padding), measures.height};
    }
    default:
        return {rowWidth(look, metrics) + 2 * measures.padding,
                std::max(measures.height, metrics.height() + 8)};
    }
}

void paintButton(QPainter& painter, const QRect& rect, const ButtonLook& look) {
    const bool quiet = isQuiet(look.kind);
    const ButtonColours colours = quiet ? quietColours(look) : solidColours(look);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    if (quiet && !look.enabled)
        painter.setOpacity(kDisabledToolOpacity);
    drawSurface(painter, rect, look, colours);
    if (look.kind == ButtonKind::Tool)
        drawTool(painter, rect, look, colours.text);
    else
        drawRow(painter, rect, look, colours.text);
    painter.restore();
}

Button::Button(ButtonKind kind, const QString& label, const QString& image, QWidget* parent)
    : QPushButton(label, parent), m_kind(kind), m_image(image) {
    setAccessibleName(label.trimmed());
    setAttribute(Qt::WA_Hover);
    setAutoDefault(false);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    connect(&Theme::instance(), &Theme::changed, this, [this] { update(); });
}

void Button::setImage(const QString& image) {
    m_image = image;
    updateGeometry();
    update();
}

ButtonLook Button::look() const {
    return {.kind = m_kind,
            .text = text(),
            .image = m_image,
            .caret = menu() != nullptr,
            .hovered = underMouse() && isEnabled(),
            .pressed = isDown(),
            .chosen = isChecked(),
            .enabled = isEnabled(),
            .ring = m_focusRing && hasFocus()};
}

QSize Button::sizeHint() const {
    return buttonSize(look());
}

void Button::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paintButton(painter, rect(), look());
}

void Button::focusInEvent(QFocusEvent* event) {
    m_focusRing = showsFocusRing(event->reason());
    QPushButton::focusInEvent(event);
}

void Button::focusOutEvent(QFocusEvent* event) {
    m_focusRing = false;
    QPushButton::focusOutEvent(event);
}

} // namespace clipheave::app
