// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/theme/theme.h"
#include "app/theme/theme_style.h"

#include <QPainter>
#include <QStyleOption>

#include <algorithm>

namespace clipheave::app {
namespace {

constexpr int kMenuItemHeight = 28;
constexpr int kMenuHeadHeight = 22; ///< a separator with a text
constexpr int kMenuSeparatorHeight = 9;
constexpr int kMenuPadding = 10;
constexpr int kMenuImage = 16;
constexpr int kMenuGap = 10;
constexpr int kMenuKeyGap = 24;

bool hasImageColumn(const QStyleOptionMenuItem& item) {
    return item.maxIconWidth > 0 || item.menuHasCheckableItems;
}

int menuTextLeft(const QStyleOptionMenuItem& item) {
    return kMenuPadding + (hasImageColumn(item) ? kMenuImage + kMenuGap : 0);
}

void drawMenuImage(QPainter& painter, const QStyleOptionMenuItem& item, const QRect& target,
                   const QColor& color, bool active) {
    const double ratio = painter.device()->devicePixelRatioF();
    if (item.checkType != QStyleOptionMenuItem::NotCheckable) {
        if (item.checked)
            painter.drawPixmap(target,
                               themePixmap(QStringLiteral("check"), kMenuImage, color, ratio));
        return;
    }
    const bool enabled = item.state.testFlag(QStyle::State_Enabled);
    const QIcon::Mode mode = !enabled ? QIcon::Disabled : active ? QIcon::Selected : QIcon::Normal;
    if (!item.icon.isNull())
        painter.drawPixmap(target, item.icon.pixmap(target.size(), ratio, mode));
}

void drawMenuSeparator(QPainter& painter, const QStyleOptionMenuItem& item) {
    const Theme& theme = Theme::instance();
    if (item.text.isEmpty()) {
        const QRect line(item.rect.left() + 8, item.rect.center().y(), item.rect.width() - 16, 1);
        painter.fillRect(line, theme.color(Token::line1));
        return;
    }
    painter.setFont(theme.font(FontRole::Caption));
    painter.setPen(theme.color(Token::text3));
    painter.drawText(item.rect.adjusted(kMenuPadding, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft,
                     item.text);
}

} // namespace

void drawMenuPanel(QPainter& painter, const QRect& rect) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Theme::instance().color(Token::line2));
    painter.setBrush(Theme::instance().color(Token::bg2));
    painter.drawRoundedRect(QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5), 8, 8);
    painter.restore();
}

void drawMenuItem(QPainter& painter, const QStyleOptionMenuItem& item) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    if (item.menuItemType == QStyleOptionMenuItem::Separator) {
        drawMenuSeparator(painter, item);
        painter.restore();
        return;
    }
    const Theme& theme = Theme::instance();
    const bool enabled = item.state.testFlag(QStyle::State_Enabled);
    const bool active = enabled && item.state.testFlag(QStyle::State_Selected);
    if (active) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme.color(Token::accent));
        painter.drawRoundedRect(item.rect, 5, 5);
    }
    const QColor text = theme.color(active    ? Token::onAccent
                                    : enabled ? Token::text1
                                              : Token::text3);
    const QColor quiet = theme.color(active ? Token::onAccent : Token::text3);
    const int middle = item.rect.top() + (item.rect.height() - kMenuImage) / 2;
    drawMenuImage(painter, item, {item.rect.left() + kMenuPadding, middle, kMenuImage, kMenuImage},
                  active ? text : theme.color(Token::text2), active);
    const QRect line = item.rect.adjusted(menuTextLeft(item), 0, -kMenuPadding, 0);
    const QStringList parts = item.text.split(QLatin1Char('\t'));
    painter.setFont(item.font);
    painter.setPen(text);
    painter.drawText(line,
                     Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine | Qt::TextShowMnemonic,
                     parts.first());
    if (item.menuItemType == QStyleOptionMenuItem::SubMenu) {
        const QRect arrow(line.right() - kMenuImage + 3, middle, kMenuImage, kMenuImage);
        painter.drawPixmap(arrow, themePixmap(QStringLiteral("chevron-right"), kMenuImage, quiet,
                                              painter.device()->devicePixelRatioF()));
    } else if (parts.size() > 1) {
        painter.setFont(theme.font(FontRole::Cell));
        painter.setPen(quiet);
        painter.drawText(line, Qt::AlignVCenter | Qt::AlignRight | Qt::TextSingleLine, parts.at(1));
    }
    painter.restore();
}

QSize menuItemSize(const QStyleOptionMenuItem& item, const QSize& label) {
    if (item.menuItemType == QStyleOptionMenuItem::Separator)
        return {label.width(), item.text.isEmpty() ? kMenuSeparatorHeight : kMenuHeadHeight};
    const QStringList parts = item.text.split(QLatin1Char('\t'));
    int width = menuTextLeft(item) + kMenuPadding +
                QFontMetrics(item.font)
                    .size(Qt::TextSingleLine | Qt::TextShowMnemonic, parts.first())
                    .width();
    if (item.menuItemType == QStyleOptionMenuItem::SubMenu)
        width += kMenuKeyGap + kMenuImage;
    else if (parts.size() > 1)
        width +=
            kMenuKeyGap +
            QFontMetrics(Theme::instance().font(FontRole::Cell)).horizontalAdvance(parts.at(1));
    return {width, std::max(kMenuItemHeight, item.fontMetrics.height() + 8)};
}

} // namespace clipheave::app
