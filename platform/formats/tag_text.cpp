// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/tag_text.h"

#include <QUtf8StringView>

namespace clipheave::platform {
namespace {

// 0x80 to 0x9F of Windows-1252; the undefined five keep their control code.
constexpr char16_t kWindows1252High[] =
    u"\u20AC\u0081\u201A\u0192\u201E\u2026\u2020\u2021\u02C6\u2030\u0160\u2039\u0152\u008D\u017D"
    u"\u008F\u0090\u2018\u2019\u201C\u201D\u2022\u2013\u2014\u02DC\u2122\u0161\u203A\u0153\u009D"
    u"\u017E\u0178";

// 0x80 to 0xFF of MacRoman.
constexpr char16_t kMacRomanHigh[] = u"ÄÅÇÉÑÖÜáàâäãåçéèêëíìîïñóòôöõúùûü†°¢£§•¶ß®©™´¨≠ÆØ∞±≤≥¥µ∂∑∏π∫ª"
                                     u"ºΩæø¿¡¬√ƒ≈∆«»…\u00A0ÀÃÕŒœ–—“”‘’÷◊ÿŸ⁄"
                                     u"€‹›ﬁﬂ‡·‚„‰ÂÊÁËÈÍÎÏÌÓÔ\uF8FFÒÚÛÙıˆ˜¯˘˙˚¸˝˛ˇ";
static_assert(std::size(kMacRomanHigh) == 128 + 1 && std::size(kWindows1252High) == 32 + 1);

QByteArrayView upToNul(QByteArrayView bytes) {
    const qsizetype end = bytes.indexOf('\0');
    return end < 0 ? bytes : bytes.first(end);
}

QString decodeUtf16(ByteView bytes, bool bigEndian) {
    QString text(static_cast<qsizetype>(bytes.size() / 2), Qt::Uninitialized);
    for (qsizetype i = 0; i < text.size(); ++i) {
        const auto at = static_cast<std::uint64_t>(i) * 2;
        text[i] = QChar((bigEndian ? bytes.be16(at) : bytes.le16(at)).value_or(0));
    }
    return text;
}

/// Without a mark the order is guessed from the first letter: one of the first 256 has a zero byte.
QString decodeMarkedUtf16(ByteView bytes) {
    const auto mark = bytes.be16(0);
    if (mark == 0xFFFE)
        return decodeUtf16(bytes.sub(2), false);
    if (mark == 0xFEFF)
        return decodeUtf16(bytes.sub(2), true);
    return decodeUtf16(bytes, bytes.u8(0) == 0 && bytes.u8(1) != 0);
}

bool isWide(Id3Encoding encoding) {
    return encoding == Id3Encoding::Utf16 || encoding == Id3Encoding::Utf16BigEndian;
}

std::uint64_t terminator(ByteView bytes, bool wide) {
    if (!wide) {
        const qsizetype at = bytes.bytes().indexOf('\0');
        return at < 0 ? bytes.size() : static_cast<std::uint64_t>(at);
    }
    for (std::uint64_t at = 0; at + 1 < bytes.size(); at += 2) {
        if (bytes.be16(at) == 0)
            return at;
    }
    return bytes.size();
}

} // namespace

QString textOfUnknownEncoding(QByteArrayView bytes) {
    bytes = upToNul(bytes);
    if (QUtf8StringView(bytes.data(), bytes.size()).isValidUtf8())
        return QString::fromUtf8(bytes).trimmed();
    QString text = QString::fromLatin1(bytes);
    for (QChar& c : text) {
        if (c.unicode() >= 0x80 && c.unicode() < 0xA0)
            c = kWindows1252High[c.unicode() - 0x80];
    }
    return text.trimmed();
}

QString textOfMacFile(QByteArrayView bytes) {
    bytes = upToNul(bytes);
    if (QUtf8StringView(bytes.data(), bytes.size()).isValidUtf8())
        return QString::fromUtf8(bytes).trimmed();
    QString text = QString::fromLatin1(bytes);
    for (QChar& c : text) {
        if (c.unicode() >= 0x80)
            c = kMacRomanHigh[c.unicode() - 0x80];
    }
    return text.trimmed();
}

QString takeId3Text(Id3Encoding encoding, ByteView& bytes) {
    const bool wide = isWide(encoding);
    const std::uint64_t end = terminator(bytes, wide);
    const ByteView own = bytes.sub(0, end);
    bytes = bytes.sub(end + (wide ? 2 : 1));
    switch (encoding) {
    case Id3Encoding::Utf16:
        return decodeMarkedUtf16(own);
    case Id3Encoding::Utf16BigEndian:
        return own.be16(0) == 0xFEFF ? decodeUtf16(own.sub(2), true) : decodeUtf16(own, true);
    case Id3Encoding::Utf8:
        return QString::fromUtf8(own.bytes());
    case Id3Encoding::Latin1:
        break;
    }
    return QString::fromLatin1(own.bytes());
}

QStringList id3Texts(Id3Encoding encoding, ByteView bytes) {
    QStringList texts;
    while (!bytes.empty()) {
        QString text = takeId3Text(encoding, bytes);
        if (!text.isEmpty())
            texts.append(std::move(text));
    }
    return texts;
}

} // namespace clipheave::platform
