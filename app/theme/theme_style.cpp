// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/theme/theme_style.h"

#include "app/theme/theme.h"

#include <QComboBox>
#include <QMenu>
#include <QPainter>
#include <QStyleFactory>
#include <QStyleOption>

#include <algorithm>

namespace clipheave::app {
namespace {

constexpr int kIndicatorSide = 16;
constexpr int kPopupHeight = 28;
constexpr int kArrowSide = 12;
constexpr int kMenuWidth = 224; ///< at least

bool hasFocusRing(const QStyleOption& option) {
    return option.state.testFlag(QStyle::State_HasFocus) &&
           option.state.testFlag(QStyle::State_KeyboardFocusChange);
}

void drawArrow(QPainter& painter, const QRect& rect, const QString& name, bool enabled) {
    const Theme& theme = Theme::instance();
    const int side = std::min({kArrowSide, rect.width(), rect.height()});
    const QRect target(rect.center() - QPoint(side / 2 - 1, side / 2 - 1), QSize(side, side));
    painter.drawPixmap(target,
                       themePixmap(name, side, theme.color(enabled ? Token::text2 : Token::text3),
                                   painter.device()->devicePixelRatioF()));
}

QPen indicatorPen(const QStyleOption& option) {
    const Theme& theme = Theme::instance();
    const bool on =
        option.state.testFlag(QStyle::State_On) || option.state.testFlag(QStyle::State_NoChange);
    return {theme.color(on || hasFocusRing(option) ? Token::accent : Token::line3), 1.5};
}

/// The mark of a check box or radio button; with the focus it makes room for a ring around it,
/// because its fill may be the accent itself.
QRectF markWithRing(QPainter& painter, const QStyleOption& option, double radius) {
    const QRectF mark = QRectF(option.rect).adjusted(0.75, 0.75, -0.75, -0.75);
    if (!hasFocusRing(option))
        return mark;
    painter.setPen(QPen(Theme::instance().color(Token::accent), 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(option.rect).adjusted(1, 1, -1, -1), radius, radius);
    return mark.adjusted(2.5, 2.5, -2.5, -2.5);
}

void drawCheckBox(QPainter& painter, const QStyleOption& option) {
    const Theme& theme = Theme::instance();
    const bool on = option.state.testFlag(QStyle::State_On);
    const bool partly = option.state.testFlag(QStyle::State_NoChange);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(option.state.testFlag(QStyle::State_Enabled) ? 1 : 0.5);
    const QRectF box = markWithRing(painter, option, 5);
    painter.setPen(indicatorPen(option));
    painter.setBrush(theme.color(on || partly ? Token::accent : Token::bg3));
    painter.drawRoundedRect(box, box.width() / 4, box.width() / 4);
    if (on || partly) {
        const QRect mark(option.rect.center() - QPoint(5, 5), QSize(12, 12));
        painter.drawPixmap(
            mark, themePixmap(on ? QStringLiteral("check") : QStringLiteral("remove"), 12,
                              theme.color(Token::onAccent), painter.device()->devicePixelRatioF()));
    }
    painter.restore();
}

void drawRadioButton(QPainter& painter, const QStyleOption& option) {
    const Theme& theme = Theme::instance();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(option.state.testFlag(QStyle::State_Enabled) ? 1 : 0.5);
    const QRectF circle = markWithRing(painter, option, option.rect.width() / 2.0);
    painter.setPen(indicatorPen(option));
    painter.setBrush(theme.color(Token::bg3));
    painter.drawEllipse(circle);
    if (option.state.testFlag(QStyle::State_On)) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme.color(Token::accent));
        painter.drawEllipse(circle.center(), circle.width() / 3.6, circle.width() / 3.6);
    }
    painter.restore();
}

void drawPopup(QPainter& painter, const QStyleOptionComboBox& option) {
    const Theme& theme = Theme::instance();
    const bool enabled = option.state.testFlag(QStyle::State_Enabled);
    const bool focused = option.state.testFlag(QStyle::State_HasFocus);
    const bool hovered = enabled && option.state.testFlag(QStyle::State_MouseOver);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(enabled ? 1 : 0.5);
    painter.setBrush(enabled ? theme.color(Token::bg3) : QColor(Qt::transparent));
    painter.setPen(focused ? QPen(theme.color(Token::accent), 2)
                           : QPen(theme.color(hovered ? Token::line3 : Token::line2), 1));
    const double inset = focused ? 1 : 0.5;
    painter.drawRoundedRect(QRectF(option.rect).adjusted(inset, inset, -inset, -inset), 5, 5);
    const QRect arrow(option.rect.right() - 20, option.rect.center().y() - 7, 16, 16);
    painter.drawPixmap(arrow, themePixmap(QStringLiteral("updown"), 16, theme.color(Token::text2),
                                          painter.device()->devicePixelRatioF()));
    painter.restore();
}

QString arrowName(QStyle::PrimitiveElement element) {
    switch (element) {
    case QStyle::PE_IndicatorArrowDown:
    case QStyle::PE_IndicatorSpinDown:
        return QStringLiteral("chevron-down");
    case QStyle::PE_IndicatorArrowUp:
    case QStyle::PE_IndicatorSpinUp:
        return QStringLiteral("chevron-up");
    case QStyle::PE_IndicatorArrowLeft:
        return QStringLiteral("chevron-left");
    case QStyle::PE_IndicatorArrowRight:
        return QStringLiteral("chevron-right");
    default:
        return {};
    }
}

} // namespace

ThemeStyle::ThemeStyle() : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))) {
}

void ThemeStyle::polish(QWidget* widget) {
    QProxyStyle::polish(widget);
    if (qobject_cast<QMenu*>(widget) != nullptr ||
        widget->inherits("QComboBoxPrivateContainer")) { // rounded corners need a clear background
        widget->setAttribute(Qt::WA_TranslucentBackground);
        widget->setWindowFlag(Qt::FramelessWindowHint);
        widget->setWindowFlag(Qt::NoDropShadowWindowHint);
        if (qobject_cast<QMenu*>(widget) != nullptr)
            widget->setMinimumWidth(kMenuWidth);
    }
    if (qobject_cast<QComboBox*>(widget) != nullptr)
        widget->setAttribute(Qt::WA_Hover);
}

void ThemeStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                               QPainter* painter, const QWidget* widget) const {
    if (element == PE_IndicatorCheckBox || element == PE_IndicatorItemViewItemCheck)
        return drawCheckBox(*painter, *option);
    if (element == PE_IndicatorRadioButton)
        return drawRadioButton(*painter, *option);
    if (element == PE_FrameFocusRect)
        return; // rings are drawn by the controls themselves
    if (element == PE_PanelMenu)
        return drawMenuPanel(*painter, option->rect);
    if (element == PE_FrameMenu)
        return;
    if (const QString name = arrowName(element); !name.isEmpty())
        return drawArrow(*painter, option->rect, name, option->state.testFlag(State_Enabled));
    if (element == PE_IndicatorHeaderArrow) {
        const auto* header = qstyleoption_cast<const QStyleOptionHeader*>(option);
        // Deliberate: the arrow points the way the values grow downwards, as in file managers.
        const bool up = header != nullptr && header->sortIndicator == QStyleOptionHeader::SortUp;
        return drawArrow(*painter, option->rect,
                         up ? QStringLiteral("chevron-up") : QStringLiteral("chevron-down"), true);
    }
    QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void ThemeStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                             const QWidget* widget) const {
    const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    if (element == CE_MenuItem && item != nullptr)
        return drawMenuItem(*painter, *item);
    if (element == CE_MenuEmptyArea)
        return;
    const auto* box = qstyleoption_cast<const QStyleOptionComboBox*>(option);
    if (element != CE_ComboBoxLabel || box == nullptr || box->editable)
        return QProxyStyle::drawControl(element, option, painter, widget);
    const QRect text = box->rect.adjusted(8, 0, -24, 0);
    painter->save();
    painter->setOpacity(box->state.testFlag(State_Enabled) ? 1 : 0.5);
    painter->setPen(Theme::instance().color(Token::text1));
    painter->drawText(text, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
                      box->fontMetrics.elidedText(box->currentText, Qt::ElideRight, text.width()));
    painter->restore();
}

void ThemeStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                    QPainter* painter, const QWidget* widget) const {
    const auto* box = qstyleoption_cast<const QStyleOptionComboBox*>(option);
    if (control == CC_ComboBox && box != nullptr)
        return drawPopup(*painter, *box);
    QProxyStyle::drawComplexControl(control, option, painter, widget);
}

QRect ThemeStyle::subControlRect(ComplexControl control, const QStyleOptionComplex* option,
                                 SubControl subControl, const QWidget* widget) const {
    if (control == CC_ComboBox && subControl == SC_ComboBoxEditField)
        return option->rect.adjusted(8, 1, -24, -1);
    if (control == CC_ComboBox && subControl == SC_ComboBoxArrow)
        return {option->rect.right() - 23, option->rect.top(), 24, option->rect.height()};
    if (control == CC_ComboBox && subControl == SC_ComboBoxListBoxPopup)
        return option->rect.adjusted(0, 0, 0, 0);
    return QProxyStyle::subControlRect(control, option, subControl, widget);
}

QSize ThemeStyle::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                                   const QWidget* widget) const {
    const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    if (type == CT_MenuItem && item != nullptr)
        return menuItemSize(*item, size);
    if (type == CT_ComboBox)
        return {size.width() + 34, std::max(kPopupHeight, size.height() + 8)};
    return QProxyStyle::sizeFromContents(type, option, size, widget);
}

int ThemeStyle::pixelMetric(PixelMetric metric, const QStyleOption* option,
                            const QWidget* widget) const {
    switch (metric) {
    case PM_IndicatorWidth:
    case PM_IndicatorHeight:
    case PM_ExclusiveIndicatorWidth:
    case PM_ExclusiveIndicatorHeight:
    case PM_SmallIconSize:
    case PM_ButtonIconSize:
        return kIndicatorSide;
    case PM_CheckBoxLabelSpacing:
    case PM_RadioButtonLabelSpacing:
        return 8;
    case PM_MenuPanelWidth:
        return 1;
    case PM_MenuHMargin:
    case PM_MenuVMargin:
        return 4;
    case PM_SubMenuOverlap:
        return -2;
    case PM_HeaderMarkSize:
        return kArrowSide;
    case PM_ButtonShiftHorizontal:
    case PM_ButtonShiftVertical:
        return 0;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int ThemeStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                          QStyleHintReturn* data) const {
    switch (hint) {
    case SH_ComboBox_Popup:
        return 0; // a list below the field, not a menu over it
    case SH_DialogButtonBox_ButtonsHaveIcons:
    case SH_UnderlineShortcut: // Alt and a letter open a menu without lines under all titles
        return 0;
    case SH_ScrollBar_LeftClickAbsolutePosition:
        return 1;
    case SH_Slider_AbsoluteSetButtons:
        return static_cast<int>(Qt::LeftButton);
    default:
        return QProxyStyle::styleHint(hint, option, widget, data);
    }
}

} // namespace clipheave::app
