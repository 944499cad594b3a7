// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/index/md_item.h"

#include "platform/foundation/paths.h"
#include "platform/foundation/text.h"
#include "platform/media/model/tag_mapping.h"

#include <array>
#include <cmath>

namespace clipheave::platform {

namespace {

using Attribute = std::optional<QVariant>;

Attribute positive(double value) {
    return value > 0 ? Attribute(value) : std::nullopt;
}
Attribute positive(int value) {
    return value > 0 ? Attribute(value) : std::nullopt;
}
Attribute textUnlessEmpty(const QString& text) {
    return text.isEmpty() ? std::nullopt : Attribute(text);
}

/// The text of the first item that one of the identifiers names, in the order of these.
template <std::size_t N>
QString firstText(const MediaFacts& facts, const std::array<QLatin1String, N>& identifiers) {
    for (const QLatin1String& identifier : identifiers)
        for (const AVMetadataItem& item : facts.metadata)
            if (item.effectiveIdentifier() == identifier)
                if (QString text = item.stringValue(); !text.isEmpty())
                    return text;
    return {};
}

QString albumOf(const MediaFacts& facts) {
    static constexpr std::array kAlbums{
        QLatin1String("itsk/%A9alb"),     QLatin1String("id3/TALB"),
        QLatin1String("caaf/info-album"), QLatin1String("uiso/albm"),
        QLatin1String("udta/%A9alb"),     QLatin1String("mdta/com.apple.quicktime.album"),
    };
    const QString text = firstText(facts, kAlbums);
    return text.isEmpty() ? facts.infoDictionary.value(QStringLiteral("album")) : text;
}

Attribute yearOf(const MediaFacts& facts) {
    static constexpr std::array kYears{
        QLatin1String("id3/TYER"),    QLatin1String("id3/TDRC"),  QLatin1String("id3/TDRL"),
        QLatin1String("itsk/%A9day"), QLatin1String("uiso/yrrc"), QLatin1String("caaf/info-year"),
        QLatin1String("udta/%A9day"),
    };
    QString text = firstText(facts, kYears);
    if (text.isEmpty())
        text = facts.infoDictionary.value(QStringLiteral("year"));
    return positive(intValue(yearText(text)));
}

Attribute dateOf(const MediaFile& file) {
    const QDateTime& embedded = file.facts().contentCreationDate;
    const QDateTime date = embedded.isValid() ? embedded : file.attributes().NSFileCreationDate;
    return date.isValid() ? Attribute(date) : std::nullopt;
}

struct AttributeRow {
    const char16_t* name;
    Attribute (*read)(const MediaFile&);
};

constexpr std::array kAttributes{
    AttributeRow{kMDItemDurationSeconds,
                 [](const MediaFile& f) { return positive(f.facts().durationSeconds); }},
    AttributeRow{kMDItemKind,
                 [](const MediaFile& f) {
                     return textUnlessEmpty(kindTextForFile(f.path(), f.facts().container));
                 }},
    // Whole bits: decimals of an average rate mean nothing.
    AttributeRow{kMDItemAudioBitRate,
                 [](const MediaFile& f) { return positive(std::round(f.facts().audioBitRate)); }},
    AttributeRow{kMDItemAudioSampleRate,
                 [](const MediaFile& f) { return positive(f.facts().audioSampleRate); }},
    AttributeRow{kMDItemAudioChannelCount,
                 [](const MediaFile& f) { return positive(f.facts().audioChannels); }},
    AttributeRow{kMDItemPixelHeight,
                 [](const MediaFile& f) { return positive(f.facts().pixelSize.height()); }},
    AttributeRow{kMDItemPixelWidth,
                 [](const MediaFile& f) { return positive(f.facts().pixelSize.width()); }},
    AttributeRow{kMDItemDisplayName,
                 [](const MediaFile& f) { return textUnlessEmpty(lastPathComponent(f.path())); }},
    AttributeRow{kMDItemFSSize,
                 [](const MediaFile& f) {
                     return Attribute(static_cast<qulonglong>(f.attributes().NSFileSize));
                 }},
    AttributeRow{kMDItemAlbum,
                 [](const MediaFile& f) { return textUnlessEmpty(albumOf(f.facts())); }},
    AttributeRow{kMDItemRecordingYear, [](const MediaFile& f) { return yearOf(f.facts()); }},
    AttributeRow{kMDItemContentCreationDate, &dateOf},
};

} // namespace

MDItem MDItem::create(std::shared_ptr<const MediaFile> file) {
    return MDItem(std::move(file));
}

std::optional<QVariant> MDItem::copyAttribute(QStringView name) const {
    for (const AttributeRow& row : kAttributes)
        if (name == QStringView(row.name))
            return m_file ? row.read(*m_file) : std::nullopt;
    return std::nullopt;
}

} // namespace clipheave::platform
