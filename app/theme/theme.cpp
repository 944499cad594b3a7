// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/theme/theme.h"

#include "app/theme/font_features.h"
#include "app/theme/theme_resources.h"
#include "app/theme/theme_style.h"

#include <QApplication>
#include <QFile>
#include <QFontDatabase>
#include <QPalette>
#include <QScreen>
#include <QTimer>
#include <QWindow>

#include <algorithm>
#include <array>
#include <utility>

namespace clipheave::app {
namespace {

constexpr double kDesignFontPx = 13;
constexpr double kLargestFontScale = 2;
/// A system font up to this much above the design's is taken as the design's.
constexpr double kFontTolerance = 1.04;

struct NamedToken {
    const char* name;
    Token token;
};

// Longer names first where one begins with another ("@accentHover" before "@accent").
constexpr std::array kTokenNames{
    NamedToken{"bg0", Token::bg0},
    NamedToken{"bg1", Token::bg1},
    NamedToken{"bg2", Token::bg2},
    NamedToken{"bg3", Token::bg3},
    NamedToken{"bg4", Token::bg4},
    NamedToken{"line1", Token::line1},
    NamedToken{"line2", Token::line2},
    NamedToken{"line3", Token::line3},
    NamedToken{"text1", Token::text1},
    NamedToken{"text2", Token::text2},
    NamedToken{"text3", Token::text3},
    NamedToken{"accentHover", Token::accentHover},
    NamedToken{"accentPress", Token::accentPress},
    NamedToken{"accentText", Token::accentText},
    NamedToken{"accent", Token::accent},
    NamedToken{"onAccent", Token::onAccent},
    NamedToken{"selLine", Token::selLine},
    NamedToken{"sel", Token::sel},
    NamedToken{"ok", Token::ok},
    NamedToken{"warn", Token::warn},
    NamedToken{"badBg", Token::badBg},
    NamedToken{"bad", Token::bad},
};

QPalette paletteOf(const Theme& theme) {
    using Role = std::pair<QPalette::ColorRole, Token>;
    static constexpr std::array kRoles{
        Role{QPalette::Window, Token::bg0},
        Role{QPalette::Base, Token::bg1},
        Role{QPalette::AlternateBase, Token::bg2},
        Role{QPalette::Button, Token::bg3},
        Role{QPalette::Midlight, Token::bg4},
        Role{QPalette::Light, Token::bg4},
        Role{QPalette::Mid, Token::line1},
        Role{QPalette::Dark, Token::line2},
        Role{QPalette::Shadow, Token::line3},
        Role{QPalette::Text, Token::text1},
        Role{QPalette::WindowText, Token::text1},
        Role{QPalette::ButtonText, Token::text1},
        Role{QPalette::PlaceholderText, Token::text3},
        Role{QPalette::BrightText, Token::bad},
        Role{QPalette::Highlight, Token::accent},
        Role{QPalette::HighlightedText, Token::onAccent},
        Role{QPalette::Link, Token::accentText},
        Role{QPalette::LinkVisited, Token::accentText},
        Role{QPalette::ToolTipBase, Token::bg2},
        Role{QPalette::ToolTipText, Token::text1},
    };
    QPalette palette;
    for (const auto& [role, token] : kRoles)
        palette.setColor(role, theme.color(token));
    for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, theme.color(Token::text3));
    return palette;
}

} // namespace

Theme& Theme::instance() {
    static Theme theme;
    return theme;
}

Theme::Theme() {
    initThemeResources();
    readSystemFont();
}

Theme::~Theme() = default;

void Theme::readSystemFont() {
    const QFont system = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    const QScreen* screen = QGuiApplication::primaryScreen();
    const double dpi = screen != nullptr ? screen->logicalDotsPerInchY() : 96;
    const double px = system.pixelSize() > 0 ? system.pixelSize() : system.pointSizeF() * dpi / 72;
    const double scale = px / kDesignFontPx;
    m_scale = scale <= kFontTolerance ? 1 : std::min(scale, kLargestFontScale);
    const QString inter = QStringLiteral("Inter");
    m_family = QFontDatabase::hasFamily(inter) ? inter : system.family();
}

QFont Theme::font(FontRole role) const {
    struct Shape {
        double px;
        QFont::Weight weight;
    };
    // In the order of FontRole.
    static constexpr std::array kShapes{
        Shape{20, QFont::DemiBold}, Shape{14, QFont::DemiBold}, Shape{13, QFont::Normal},
        Shape{13, QFont::Medium},   Shape{13, QFont::DemiBold}, Shape{12, QFont::Normal},
        Shape{12.5, QFont::Normal}, Shape{11, QFont::Normal},   Shape{12, QFont::DemiBold},
        Shape{11.5, QFont::Normal},
    };
    const Shape& shape = kShapes[static_cast<std::size_t>(role)];
    QFont font = role == FontRole::Log ? QFontDatabase::systemFont(QFontDatabase::FixedFont)
                                       : QFont(m_family);
    // In points, which may be fractions: 12.5 px is a size of its own.
    const QScreen* screen = QGuiApplication::primaryScreen();
    const double dpi = screen != nullptr ? screen->logicalDotsPerInchY() : 96;
    font.setPointSizeF(shape.px * m_scale * 72 / dpi);
    font.setWeight(shape.weight);
    alignDigits(font);
    return font;
}

QColor Theme::color(Token token) const {
    return colorOf(token, m_dark);
}

QColor Theme::color(Token token, double opacity) const {
    QColor result = color(token);
    result.setAlphaF(static_cast<float>(result.alphaF() * std::clamp(opacity, 0.0, 1.0)));
    return result;
}

QString Theme::styleSheet() const {
    QFile file(QStringLiteral(":/theme/window.qss"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QString sheet = QString::fromUtf8(file.readAll());
    for (const auto& [name, token] : kTokenNames)
        sheet.replace(QLatin1Char('@') + QLatin1String(name), color(token).name());
    return sheet;
}

bool Theme::systemIsDark() {
    // An empty palette brings the desktop's own back for as long as it is read.
    const QPalette ours = QApplication::palette();
    QApplication::setPalette(QPalette());
    const bool dark = QApplication::palette().color(QPalette::Window).lightness() <
                      QApplication::palette().color(QPalette::WindowText).lightness();
    QApplication::setPalette(ours);
    return dark;
}

void Theme::apply(Appearance appearance) {
    if (m_applying)
        return;
    m_applying = true;
    if (!m_installed)
        install();
    m_appearance = appearance;
    m_dark = appearance == Appearance::Dark || (appearance == Appearance::System && systemIsDark());
    QApplication::setPalette(paletteOf(*this));
    QApplication::setFont(font(FontRole::Body));
    QApplication::setFont(font(FontRole::Field), "QComboBox");
    QApplication::setFont(font(FontRole::Body), "QMenu");
    qApp->setStyleSheet(styleSheet());
    m_applying = false;
    Q_EMIT changed();
}

void Theme::install() {
    m_installed = true;
    QApplication::setStyle(new ThemeStyle);
    qApp->installEventFilter(this);
}

bool Theme::eventFilter(QObject* watched, QEvent* event) {
    // The desktop's colours changed: windows are notified, with or without a new palette of ours.
    if (event->type() == QEvent::ThemeChange && m_appearance == Appearance::System && !m_applying &&
        qobject_cast<QWindow*>(watched) != nullptr)
        QTimer::singleShot(0, this, [this] {
            if (systemIsDark() != m_dark)
                apply(Appearance::System);
        });
    return QObject::eventFilter(watched, event);
}

} // namespace clipheave::app
