// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/theme/theme.h"

#include <array>

namespace clipheave::app {
namespace {

struct TokenColours {
    QRgb dark, light;
};

constexpr QRgb opaque(QRgb rgb) {
    return 0xFF000000U | rgb;
}

// In the order of Token.
constexpr std::array<TokenColours, static_cast<std::size_t>(Token::scrim) + 1> kTokenColours{{
    {opaque(0x121518), opaque(0xE3E7EA)}, // bg0
    {opaque(0x181C20), opaque(0xF8F9FA)}, // bg1
    {opaque(0x1F2429), opaque(0xEFF2F4)}, // bg2
    {opaque(0x272D33), opaque(0xFFFFFF)}, // bg3
    {opaque(0x323A42), opaque(0xDCE2E7)}, // bg4
    {opaque(0x0B0D0F), opaque(0x0B0D0F)}, // well
    {opaque(0x2A3037), opaque(0xD7DDE2)}, // line1
    {opaque(0x3A434C), opaque(0xBCC5CE)}, // line2
    {opaque(0x76818D), opaque(0x74808C)}, // line3
    {opaque(0xEDF0F3), opaque(0x14191E)}, // text1
    {opaque(0xB4BDC7), opaque(0x47525D)}, // text2
    {opaque(0x939EAA), opaque(0x566370)}, // text3
    {opaque(0xFFFFFF), opaque(0x14191E)}, // name
    {opaque(0x43CDBD), opaque(0x0A7A70)}, // accent
    {opaque(0x5FDACB), opaque(0x096D64)}, // accentHover
    {opaque(0x2FB5A6), opaque(0x075951)}, // accentPress
    {opaque(0x06231F), opaque(0xFFFFFF)}, // onAccent
    {opaque(0x5AD6C7), opaque(0x086F66)}, // accentText
    {opaque(0x1B3F40), opaque(0xCDECE8)}, // sel
    {opaque(0x2C6A67), opaque(0x86CCC4)}, // selLine
    {opaque(0x8DB2FF), opaque(0x2C5FD0)}, // kVideo
    {opaque(0xEF9CC8), opaque(0xAC2A74)}, // kAudio
    {opaque(0xF0BC6C), opaque(0x8F5300)}, // kPhoto
    {opaque(0x66D39A), opaque(0x17713F)}, // ok
    {opaque(0xF3C363), opaque(0x7E5200)}, // warn
    {opaque(0xFF857B), opaque(0xBE2E28)}, // bad
    {opaque(0x3A2324), opaque(0xFBE3E1)}, // badBg
    {opaque(0x152A3A), opaque(0xC9DEEA)}, // mapSea
    {opaque(0x353E42), opaque(0xEDEBE2)}, // mapLand
    {opaque(0x5B7384), opaque(0x8FA9B8)}, // mapLine
    {opaque(0x2B465A), opaque(0xB2CCDA)}, // mapGrid
    {0x9E06080AU, 0x6B202830U},           // scrim: 62 % and 42 %
}};

} // namespace

QColor Theme::colorOf(Token token, bool dark) {
    const auto& colours = kTokenColours[static_cast<std::size_t>(token)];
    return QColor::fromRgba(dark ? colours.dark : colours.light);
}

} // namespace clipheave::app
