// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/theme/theme.h"
#include "tests/testkit/testkit.h"

#include <QApplication>
#include <QDirIterator>
#include <QImage>
#include <QPalette>
#include <QSignalSpy>

#include <algorithm>
#include <cmath>
#include <vector>

namespace clipheave::app {
namespace {

double luminance(const QColor& color) {
    const auto linear = [](double value) {
        return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

double contrast(const QColor& one, const QColor& other) {
    const auto [dark, light] = std::minmax({luminance(one), luminance(other)});
    return (light + 0.05) / (dark + 0.05);
}

QColor middleOf(const QPixmap& pixmap) {
    const QImage image = pixmap.toImage();
    return image.pixelColor(image.width() / 2, image.height() / 2);
}

/// The strongest colour of an icon: what its strokes are drawn in.
QColor inkOf(const QPixmap& pixmap) {
    const QImage image = pixmap.toImage();
    QColor ink = Qt::transparent;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (image.pixelColor(x, y).alpha() > ink.alpha())
                ink = image.pixelColor(x, y);
    return ink;
}

TEST(Theme, TextAndMarksCanBeReadInBothThemes) {
    struct Pair {
        Token front, back;
        double least;
    };
    constexpr double kText = 4.5;
    constexpr double kMark = 3;
    std::vector<Pair> pairs;
    for (const Token back : {Token::bg0, Token::bg1, Token::bg2, Token::bg3}) {
        for (const Token text : {Token::text1, Token::text2, Token::text3, Token::accentText,
                                 Token::ok, Token::warn, Token::bad})
            pairs.push_back({text, back, kText});
        for (const Token mark :
             {Token::accent, Token::line3, Token::kVideo, Token::kAudio, Token::kPhoto})
            pairs.push_back({mark, back, kMark});
    }
    for (const Token fill : {Token::accent, Token::accentHover, Token::accentPress})
        pairs.push_back({Token::onAccent, fill, kText});
    pairs.insert(pairs.end(), {{Token::text1, Token::bg4, kText},
                               {Token::text1, Token::sel, kText},
                               {Token::text2, Token::sel, kText},
                               {Token::name, Token::sel, kText},
                               {Token::name, Token::bg1, kText},
                               {Token::bad, Token::badBg, kText},
                               {Token::bad, Token::mapLand, kMark}});
    for (const bool dark : {true, false})
        for (const Pair& pair : pairs)
            EXPECT_GE(contrast(Theme::colorOf(pair.front, dark), Theme::colorOf(pair.back, dark)),
                      pair.least - 0.005)
                << "tokens " << static_cast<int>(pair.front) << " on "
                << static_cast<int>(pair.back) << (dark ? ", dark" : ", light");
}

TEST(Theme, ApplyGivesTheApplicationItsColours) {
    Theme& theme = Theme::instance();
    const QSignalSpy changed(&theme, &Theme::changed);
    theme.apply(Appearance::Light);
    EXPECT_FALSE(theme.isDark());
    EXPECT_EQ(QApplication::palette().color(QPalette::Window).name(), u"#e3e7ea");
    theme.apply(Appearance::Dark);
    EXPECT_TRUE(theme.isDark());
    EXPECT_EQ(changed.count(), 2);
    EXPECT_EQ(QApplication::palette().color(QPalette::Window).name(), u"#121518");
    EXPECT_EQ(QApplication::palette().color(QPalette::PlaceholderText).name(), u"#939eaa");
    EXPECT_EQ(QApplication::palette().color(QPalette::Disabled, QPalette::Text).name(), u"#939eaa");
    EXPECT_EQ(theme.color(Token::scrim), QColor(6, 8, 10, 158));
    // The offscreen desktop is a light one; looking at it leaves our own colours alone afterwards.
    theme.apply(Appearance::System);
    EXPECT_FALSE(theme.isDark());
    EXPECT_EQ(QApplication::palette().color(QPalette::Base).name(), u"#f8f9fa");
    theme.apply(Appearance::Dark);
}

TEST(Theme, StyleSheetHasNoPlaceholderLeft) {
    const QString sheet = Theme::instance().styleSheet();
    EXPECT_GT(sheet.size(), 1000);
    EXPECT_FALSE(sheet.contains(u'@')) << sheet.mid(sheet.indexOf(u'@'), 20);
    EXPECT_TRUE(sheet.contains("#43cdbd"_L1));
}

TEST(Theme, FontsFollowTheScale) {
    const Theme& theme = Theme::instance();
    const double body = theme.font(FontRole::Body).pointSizeF();
    EXPECT_NEAR(theme.font(FontRole::EmptyTitle).pointSizeF() / body, 20.0 / 13, 0.001);
    EXPECT_NEAR(theme.font(FontRole::Field).pointSizeF() / body, 12.5 / 13, 0.001);
    EXPECT_EQ(theme.font(FontRole::Section).weight(), QFont::DemiBold);
    EXPECT_GE(theme.fontScale(), 1);
}

TEST(ThemeIcon, EveryImageNameOfTheControllerIsThere) {
    const QString names =
        u"Close_Down.png Close_Nom.png Min_Nom.png Resize_Nom.png applydown.png backdown.png "
        u"bgroud.png blackground.png bottomwindow.png cameraphotodown.png cameraphotonom.png "
        u"compressbtn.png convertbtn.png delete.png deletemetadata.png downloadphoto.png "
        u"editbtn.png editdown.png editexifnom.png editimageview.png editnom.png editphotometa.png "
        u"extractbtn.png extractmetadown.png extractmetanom.png importphototoedit.png "
        u"localphotodown.png localphotonom.png mainwindow.png opendevice.png renamebtn.png "
        u"savechanges.png templatedown.png titlebargreen.png titlebarred.png titlebarreddown.png "
        u"titlebaryellow.png watermarkbtn.png artworkimage"_s;
    for (const QString& name : names.split(u' ')) {
        const QIcon icon = themeIcon(name);
        EXPECT_FALSE(icon.isNull()) << name;
        EXPECT_EQ(inkOf(icon.pixmap(20)).alpha(), 255) << name;
    }
    EXPECT_TRUE(themeIcon(u"nosuch.png"_s).isNull());
    EXPECT_TRUE(themeIcon({}).isNull());
}

TEST(ThemeIcon, EveryIconDrawsInTheColourOfItsToken) {
    Theme& theme = Theme::instance();
    QDirIterator icons(u":/icons"_s);
    int count = 0;
    while (icons.hasNext()) {
        icons.next();
        const QString name = icons.fileInfo().completeBaseName();
        ++count;
        if (name == "mark"_L1) // the only one with colours of its own
            continue;
        EXPECT_EQ(inkOf(themeIcon(name, Token::accent).pixmap(48)), theme.color(Token::accent))
            << name;
    }
    EXPECT_EQ(count, 83);
}

TEST(ThemeIcon, FollowsModeThemeAndPixelRatio) {
    Theme& theme = Theme::instance();
    const QIcon icon = themeIcon(u"surface"_s, Token::kPhoto);
    for (const Appearance appearance : {Appearance::Light, Appearance::Dark}) {
        theme.apply(appearance);
        EXPECT_EQ(middleOf(icon.pixmap(16)), theme.color(Token::kPhoto));
        EXPECT_EQ(middleOf(icon.pixmap(16, QIcon::Disabled)), theme.color(Token::text3));
        EXPECT_EQ(middleOf(icon.pixmap(16, QIcon::Selected)), theme.color(Token::onAccent));
    }
    const QPixmap sharp = icon.pixmap(QSize(16, 16), 2.0);
    EXPECT_EQ(sharp.size(), QSize(32, 32));
    EXPECT_EQ(sharp.devicePixelRatio(), 2.0);
}

} // namespace
} // namespace clipheave::app
