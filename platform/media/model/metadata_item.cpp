// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/model/metadata_item.h"

#include "platform/foundation/text.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace clipheave::platform {

namespace {

struct CommonRow {
    std::u16string_view identifier;
    std::u16string_view common;
};

// Deliberate: itsk/%A9mak is the record company, so it gives no make.
constexpr std::array kCommonRows{
    CommonRow{u"id3/APIC", u"artwork"},
    CommonRow{u"id3/TALB", u"albumName"},
    CommonRow{u"id3/TCOM", u"creator"},
    CommonRow{u"id3/TCON", u"type"},
    CommonRow{u"id3/TCOP", u"copyrights"},
    CommonRow{u"id3/TEXT", u"author"},
    CommonRow{u"id3/TIT1", u"subject"},
    CommonRow{u"id3/TIT2", u"title"},
    CommonRow{u"id3/TIT3", u"description"},
    CommonRow{u"id3/TOPE", u"contributor"},
    CommonRow{u"id3/TPE1", u"artist"},
    CommonRow{u"id3/TPUB", u"publisher"},
    CommonRow{u"itsk/%A9ART", u"artist"},
    CommonRow{u"itsk/%A9alb", u"albumName"},
    CommonRow{u"itsk/%A9aut", u"author"},
    CommonRow{u"itsk/%A9day", u"creationDate"},
    CommonRow{u"itsk/%A9des", u"description"},
    CommonRow{u"itsk/%A9gen", u"type"},
    CommonRow{u"itsk/%A9nam", u"title"},
    CommonRow{u"itsk/%A9pub", u"publisher"},
    CommonRow{u"itsk/%A9wrt", u"creator"},
    CommonRow{u"itsk/covr", u"artwork"},
    CommonRow{u"itsk/cprt", u"copyrights"},
    CommonRow{u"itsk/desc", u"description"},
    CommonRow{u"itsk/gnre", u"type"},
    CommonRow{u"mdta/com.apple.quicktime.album", u"albumName"},
    CommonRow{u"mdta/com.apple.quicktime.artist", u"artist"},
    CommonRow{u"mdta/com.apple.quicktime.artwork", u"artwork"},
    CommonRow{u"mdta/com.apple.quicktime.author", u"author"},
    CommonRow{u"mdta/com.apple.quicktime.copyright", u"copyrights"},
    CommonRow{u"mdta/com.apple.quicktime.creationdate", u"creationDate"},
    CommonRow{u"mdta/com.apple.quicktime.description", u"description"},
    CommonRow{u"mdta/com.apple.quicktime.genre", u"type"},
    CommonRow{u"mdta/com.apple.quicktime.location.ISO6709", u"location"},
    CommonRow{u"mdta/com.apple.quicktime.make", u"make"},
    CommonRow{u"mdta/com.apple.quicktime.model", u"model"},
    CommonRow{u"mdta/com.apple.quicktime.publisher", u"publisher"},
    CommonRow{u"mdta/com.apple.quicktime.software", u"software"},
    CommonRow{u"mdta/com.apple.quicktime.title", u"title"},
    CommonRow{u"udta/%A9ART", u"artist"},
    CommonRow{u"udta/%A9alb", u"albumName"},
    CommonRow{u"udta/%A9aut", u"author"},
    CommonRow{u"udta/%A9cpy", u"copyrights"},
    CommonRow{u"udta/%A9day", u"creationDate"},
    CommonRow{u"udta/%A9des", u"description"},
    CommonRow{u"udta/%A9gen", u"type"},
    CommonRow{u"udta/%A9mak", u"make"},
    CommonRow{u"udta/%A9mod", u"model"},
    CommonRow{u"udta/%A9nam", u"title"},
    CommonRow{u"udta/%A9pub", u"publisher"},
    CommonRow{u"udta/%A9swr", u"software"},
    CommonRow{u"udta/%A9xyz", u"location"},
    CommonRow{u"uiso/%A9mak", u"make"},
    CommonRow{u"uiso/%A9mod", u"model"},
    CommonRow{u"uiso/albm", u"albumName"},
    CommonRow{u"uiso/auth", u"author"},
    CommonRow{u"uiso/cprt", u"copyrights"},
    CommonRow{u"uiso/date", u"creationDate"},
    CommonRow{u"uiso/dscp", u"description"},
    CommonRow{u"uiso/gnre", u"type"},
    CommonRow{u"uiso/loci", u"location"},
    CommonRow{u"uiso/manu", u"make"},
    CommonRow{u"uiso/modl", u"model"},
    CommonRow{u"uiso/perf", u"artist"},
    CommonRow{u"uiso/swre", u"software"},
    CommonRow{u"uiso/thmb", u"artwork"},
    CommonRow{u"uiso/titl", u"title"},
};

constexpr bool rowsAreSorted() {
    return std::is_sorted(
        kCommonRows.begin(), kCommonRows.end(),
        [](const CommonRow& a, const CommonRow& b) { return a.identifier < b.identifier; });
}
static_assert(rowsAreSorted());

bool isFourCodeSpace(const QString& keySpace) {
    return keySpace == QLatin1String("itsk") || keySpace == QLatin1String("udta") ||
           keySpace == QLatin1String("uiso") || keySpace == QLatin1String("org.id3");
}

/// The bytes that the identifier escapes: a four-character code is four Latin-1 bytes, everything
/// else UTF-8, the © always its one byte.
QByteArray keyBytes(const QString& keySpace, const QString& key) {
    const bool isCode = key.size() == 4 && isFourCodeSpace(keySpace);
    const bool latin1 =
        isCode && std::all_of(key.begin(), key.end(), [](QChar c) { return c.unicode() < 0x100; });
    QByteArray bytes = latin1 ? key.toLatin1() : key.toUtf8();
    if (isCode && bytes.startsWith('@'))
        bytes[0] = '\xA9';
    if (!latin1)
        bytes.replace("\xC2\xA9", "\xA9");
    return bytes;
}

QString pairText(const QByteArray& bytes) {
    const ByteView view(bytes);
    const int number = view.be16(2).value_or(0);
    const int total = view.be16(4).value_or(0);
    if (number == 0 && total == 0)
        return {};
    const QString text = QString::number(number);
    return total > 0 ? text + QLatin1Char('/') + QString::number(total) : text;
}

} // namespace

Result<QByteArray> SourceBox::load() const {
    if (const auto* slice = std::get_if<FileSlice>(&bytes))
        return slice->load();
    return std::get<QByteArray>(bytes);
}

std::uint64_t SourceBox::size() const {
    if (const auto* slice = std::get_if<FileSlice>(&bytes))
        return slice->length;
    return static_cast<std::uint64_t>(std::get<QByteArray>(bytes).size());
}

AVMetadataItem AVMetadataItem::make(QString keySpace, QString key, QString identifier,
                                    Value value) {
    AVMetadataItem item;
    item.keySpace = std::move(keySpace);
    item.key = std::move(key);
    item.identifier = std::move(identifier);
    item.value = std::move(value);
    return item;
}

QString AVMetadataItem::stringValue() const {
    if (const auto* text = std::get_if<QString>(&value))
        return *text;
    if (const auto* number = std::get_if<double>(&value))
        return describeNumber(*number);
    const auto* bytes = std::get_if<QByteArray>(&value);
    if (!bytes)
        return {};
    const qsizetype length = bytes->endsWith('\0') ? bytes->size() - 1 : bytes->size();
    // A NUL inside is valid UTF-8, but stands in numbers and records only.
    if (!bytes->isValidUtf8() || bytes->left(length).contains('\0'))
        return {};
    return length == 0 ? QStringLiteral("") : QString::fromUtf8(bytes->constData(), length);
}

QByteArray AVMetadataItem::dataValue() const {
    if (const auto* bytes = std::get_if<QByteArray>(&value))
        return *bytes;
    if (const auto* text = std::get_if<QString>(&value))
        return text->toUtf8();
    if (const auto* slice = std::get_if<FileSlice>(&value))
        return slice->load().value_or(QByteArray());
    return {};
}

QString AVMetadataItem::effectiveIdentifier() const {
    return identifier.isEmpty() ? metadataIdentifier(keySpace, key) : identifier;
}

QString AVMetadataItem::commonIdentifier() const {
    QString own = effectiveIdentifier();
    if (own.startsWith(QLatin1String("common/")))
        return own;
    const QStringView view(own);
    const std::u16string_view wanted(view.utf16(), static_cast<std::size_t>(view.size()));
    const auto* row = std::lower_bound(
        kCommonRows.begin(), kCommonRows.end(), wanted,
        [](const CommonRow& a, std::u16string_view b) { return a.identifier < b; });
    if (row == kCommonRows.end() || row->identifier != wanted)
        return {};
    return QStringLiteral("common/") + QStringView(row->common).toString();
}

QString itemName(const AVMetadataItem& item) {
    const QByteArray name = item.effectiveIdentifier().toLatin1();
    return QString::fromUtf8(QByteArray::fromPercentEncoding(name.mid(name.indexOf('/') + 1)));
}

bool isEncoderNote(const AVMetadataItem& item) {
    const QString identifier = item.effectiveIdentifier();
    return identifier == u"id3/TSSE" || identifier == u"id3/TLEN" ||
           identifier == u"id3/COMM%3AiTunSMPB";
}

QString metadataIdentifier(const QString& keySpace, const QString& key) {
    const QString prefix = keySpace == QLatin1String("org.id3") ? QStringLiteral("id3")
                           : keySpace == QLatin1String("comn")  ? QStringLiteral("common")
                                                                : keySpace;
    const QByteArray escaped = keyBytes(keySpace, key).toPercentEncoding();
    return prefix + QLatin1Char('/') + QString::fromLatin1(escaped);
}

QString trackNumberText(const AVMetadataItem& item) {
    const auto* bytes = std::get_if<QByteArray>(&item.value);
    // Text never begins with a NUL, the pair always does.
    const bool isPair = bytes && bytes->size() >= 4 && bytes->startsWith('\0');
    return isPair ? pairText(*bytes) : item.stringValue();
}

} // namespace clipheave::platform
