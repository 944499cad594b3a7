// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QFont>
#include <QIcon>
#include <QObject>
#include <QPixmap>
#include <QString>

namespace clipheave::app {

/// The colours of the window. Nothing outside this folder names a colour in any other way.
enum class Token {
    bg0,   ///< window, title bar, tool bar, activity bar
    bg1,   ///< panes, list, dialog foot
    bg2,   ///< windows, sheets, menus, pane foot
    bg3,   ///< fields, buttons, hover on rows
    bg4,   ///< hover on buttons, pressed tools, chosen segment
    well,  ///< behind images and players: dark in both themes
    line1, ///< separators
    line2, ///< outlines of fields and buttons
    line3, ///< outlines of check boxes, radio buttons, sliders
    text1, ///< main text
    text2, ///< labels, cells
    text3, ///< hints, placeholders
    name,  ///< file names in the list
    accent,
    accentHover,
    accentPress,
    onAccent,   ///< text on accent fills
    accentText, ///< accent as text
    sel,        ///< selected rows and tiles
    selLine,    ///< outline of changed fields
    kVideo,
    kAudio,
    kPhoto,
    ok,
    warn,
    bad,
    badBg,
    mapSea,
    mapLand,
    mapLine,
    mapGrid,
    scrim, ///< translucent, over the window below sheets
};

enum class Appearance { System, Dark, Light };

/// Sizes are logical px at a system font of 13 px; they grow with a larger system font.
enum class FontRole {
    EmptyTitle, ///< 20, semi-bold
    AlertTitle, ///< 14, semi-bold
    Body,       ///< 13
    BodyMedium, ///< 13, medium: buttons
    BodyStrong, ///< 13, semi-bold: primary buttons, heads
    Cell,       ///< 12: table cells, facts, field labels
    Field,      ///< 12.5
    Caption,    ///< 11: tool labels, notes
    Section,    ///< 12, semi-bold: section headings
    Log,        ///< 11.5, the fixed-pitch system font
};

/// The look of the whole application: palette, style, style sheet, fonts. GUI thread only; needs a
/// QApplication.
class Theme : public QObject {
    Q_OBJECT
public:
    static Theme& instance();
    ~Theme() override;

    /// Sets style, palette, font and style sheet of the application. `System` follows the desktop,
    /// also when it changes later.
    void apply(Appearance appearance);
    [[nodiscard]] Appearance appearance() const { return m_appearance; }
    [[nodiscard]] bool isDark() const { return m_dark; }

    [[nodiscard]] QColor color(Token token) const;
    /// The colour with its opacity multiplied by `opacity` (0 to 1).
    [[nodiscard]] QColor color(Token token, double opacity) const;
    [[nodiscard]] QFont font(FontRole role) const;
    /// Scale of the system font: 1 at 13 px and below, at most 2.
    [[nodiscard]] double fontScale() const { return m_scale; }
    /// A width of the design, in px at a system font of 13 px, for the system font as it is.
    [[nodiscard]] int scaled(int width) const { return qRound(width * m_scale); }
    /// The style sheet of the current colours.
    [[nodiscard]] QString styleSheet() const;

    /// The colour that a token has in one of the themes, whichever is applied.
    [[nodiscard]] static QColor colorOf(Token token, bool dark);

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    /// New colours are in force: widgets drop the images that they have cached.
    void changed();

private:
    Theme();
    [[nodiscard]] static bool systemIsDark();
    void readSystemFont();
    void install();

    Appearance m_appearance = Appearance::Dark;
    bool m_dark = true;
    bool m_applying = false;
    bool m_installed = false;
    double m_scale = 1;
    QString m_family; ///< empty: the desktop's own
};

/// An icon of resources/icons by its name ("compress") or by one of the controller's image names
/// ("compressbtn.png", "artworkimage"). Drawn in the token's colour, text3 when disabled, onAccent
/// when selected; follows theme changes by itself and is sharp at any device pixel ratio. Null for
/// an unknown name.
[[nodiscard]] QIcon themeIcon(const QString& name, Token token = Token::text1);

/// The same as an image of `side` logical px.
[[nodiscard]] QPixmap themePixmap(const QString& name, int side, const QColor& color,
                                  double devicePixelRatio);

/// Resource path of an icon or image name; empty for an unknown one.
[[nodiscard]] QString themeImagePath(const QString& name);

} // namespace clipheave::app
