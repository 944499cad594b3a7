// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/read/item_texts.h"

#include "platform/isobmff/box.h"

#include <QLocale>

#include <array>
#include <string_view>

// Texts and languages as QuickTime and ISO files store them.
namespace clipheave::platform {

namespace {

// Mac OS Roman, the bytes 80 to FF. Source: the Unicode Consortium's ROMAN.TXT.
constexpr std::u16string_view kMacRomanUpper =
    u"\u00C4\u00C5\u00C7\u00C9\u00D1\u00D6\u00DC\u00E1\u00E0\u00E2\u00E4\u00E3\u00E5\u00E7\u00E9"
    u"\u00E8\u00EA\u00EB\u00ED\u00EC\u00EE\u00EF\u00F1\u00F3\u00F2\u00F4\u00F6\u00F5\u00FA\u00F9"
    u"\u00FB\u00FC\u2020\u00B0\u00A2\u00A3\u00A7\u2022\u00B6\u00DF\u00AE\u00A9\u2122\u00B4\u00A8"
    u"\u2260\u00C6\u00D8\u221E\u00B1\u2264\u2265\u00A5\u00B5\u2202\u2211\u220F\u03C0\u222B\u00AA"
    u"\u00BA\u03A9\u00E6\u00F8\u00BF\u00A1\u00AC\u221A\u0192\u2248\u2206\u00AB\u00BB\u2026\u00A0"
    u"\u00C0\u00C3\u00D5\u0152\u0153\u2013\u2014\u201C\u201D\u2018\u2019\u00F7\u25CA\u00FF\u0178"
    u"\u2044\u20AC\u2039\u203A\uFB01\uFB02\u2021\u00B7\u201A\u201E\u2030\u00C2\u00CA\u00C1\u00CB"
    u"\u00C8\u00CD\u00CE\u00CF\u00CC\u00D3\u00D4\uF8FF\u00D2\u00DA\u00DB\u00D9\u0131\u02C6\u02DC"
    u"\u00AF\u02D8\u02D9\u02DA\u00B8\u02DD\u02DB\u02C7";
static_assert(kMacRomanUpper.size() == 128);

// The Macintosh language codes from 0. Source: QuickTime File Format, "Language Code Values".
constexpr std::array<const char*, 34> kMacLanguages{
    "en", "fr", "de", "it", "nl", "sv", "es", "da",      "pt", "no",     "he", "ja",
    "ar", "fi", "el", "is", "mt", "tr", "hr", "zh-Hant", "ur", "hi",     "th", "ko",
    "lt", "pl", "hu", "et", "lv", "se", "fo", "fa",      "ru", "zh-Hans"};

ByteView untilNul(ByteView bytes) {
    const qsizetype end = bytes.bytes().indexOf('\0');
    return end < 0 ? bytes : bytes.sub(0, static_cast<std::uint64_t>(end));
}

} // namespace

QString decodeUtf16(ByteView bytes) {
    bool little = false;
    std::uint64_t at = 0;
    if (bytes.be16(0) == 0xFEFF || bytes.be16(0) == 0xFFFE) {
        little = bytes.be16(0) == 0xFFFE;
        at = 2;
    }
    QString text;
    text.reserve(static_cast<qsizetype>(bytes.size() / 2));
    for (; at + 1 < bytes.size(); at += 2) {
        const std::uint16_t unit = little ? *bytes.le16(at) : *bytes.be16(at);
        if (unit == 0)
            break;
        text += QChar(unit);
    }
    return text;
}

QString decodeUnicode(ByteView bytes) {
    if (bytes.be16(0) == 0xFEFF || bytes.be16(0) == 0xFFFE)
        return decodeUtf16(bytes);
    // Bytes that are not UTF-8 (a text cut in the middle of a letter) show as U+FFFD.
    return QString::fromUtf8(untilNul(bytes).bytes());
}

QString decodeMacRoman(ByteView bytes) {
    bytes = untilNul(bytes);
    QString text(static_cast<qsizetype>(bytes.size()), Qt::Uninitialized);
    for (std::uint64_t i = 0; i < bytes.size(); ++i) {
        const std::uint8_t byte = bytes.data()[i];
        text[static_cast<qsizetype>(i)] =
            byte < 0x80 ? QChar(char16_t{byte}) : QChar(kMacRomanUpper[byte - 0x80u]);
    }
    return text;
}

QString languageTag(std::uint16_t code) {
    if (code == kMacLanguageUnspecified)
        return {};
    if (code < kMacLanguageEnd)
        return code < kMacLanguages.size() ? QString::fromLatin1(kMacLanguages[code]) : QString();
    QString three = unpackLanguage(code);
    if (three.isEmpty() || three == QLatin1String("und"))
        return three;
    if (three == QLatin1String("eng"))
        return QStringLiteral("en");
    // BCP-47 wants the two letters where there are any.
    const QString two = QLocale::languageToCode(QLocale::codeToLanguage(three));
    return two.isEmpty() ? three : two;
}

} // namespace clipheave::platform
