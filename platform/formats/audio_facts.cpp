// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/audio_facts.h"

#include <QSet>

#include <algorithm>
#include <cmath>

namespace clipheave::platform {
namespace {

constexpr double kLongestAudio = 100.0 * 366 * 86400;
constexpr double kHighestSampleRate = 1e7;
constexpr double kHighestBitRate = 1e10;
constexpr int kMostChannels = 1024;

double plausible(double value, double highest) {
    return std::isfinite(value) && value > 0 && value <= highest ? value : 0;
}

struct InfoKey {
    QLatin1String source;
    QLatin1String key;
};

// Where two rows have one key, the first that is there counts.
constexpr InfoKey kTagInfoKeys[] = {
    {QLatin1String("title"), QLatin1String("title")},
    {QLatin1String("artist"), QLatin1String("artist")},
    {QLatin1String("album"), QLatin1String("album")},
    {QLatin1String("tracknumber"), QLatin1String("track number")},
    {QLatin1String("track number"), QLatin1String("track number")},
    {QLatin1String("track"), QLatin1String("track number")},
    {QLatin1String("year"), QLatin1String("year")},
    {QLatin1String("recorded date"), QLatin1String("recorded date")},
    {QLatin1String("date"), QLatin1String("recorded date")},
    {QLatin1String("comments"), QLatin1String("comments")},
    {QLatin1String("comment"), QLatin1String("comments")},
    {QLatin1String("description"), QLatin1String("comments")},
    {QLatin1String("copyright"), QLatin1String("copyright")},
    {QLatin1String("composer"), QLatin1String("composer")},
    {QLatin1String("lyricist"), QLatin1String("lyricist")},
    {QLatin1String("subtitle"), QLatin1String("subtitle")},
    {QLatin1String("genre"), QLatin1String("genre")},
    {QLatin1String("isrc"), QLatin1String("ISRC")},
};

constexpr InfoKey kId3InfoKeys[] = {
    {QLatin1String("id3/TIT2"), QLatin1String("title")},
    {QLatin1String("id3/TPE1"), QLatin1String("artist")},
    {QLatin1String("id3/TALB"), QLatin1String("album")},
    {QLatin1String("id3/TRCK"), QLatin1String("track number")},
    {QLatin1String("id3/TYER"), QLatin1String("year")},
    {QLatin1String("id3/TRDA"), QLatin1String("recorded date")},
    {QLatin1String("id3/COMM"), QLatin1String("comments")},
    {QLatin1String("id3/TCOP"), QLatin1String("copyright")},
    {QLatin1String("id3/TCOM"), QLatin1String("composer")},
    {QLatin1String("id3/TEXT"), QLatin1String("lyricist")},
    {QLatin1String("id3/TIT3"), QLatin1String("subtitle")},
    {QLatin1String("id3/TCON"), QLatin1String("genre")},
    {QLatin1String("id3/TSRC"), QLatin1String("ISRC")},
};

} // namespace

void setAudio(MediaFacts& facts, const AudioFacts& audio) {
    AVAssetTrack track;
    track.trackID = 1;
    track.mediaType = QStringLiteral("soun");
    track.codec = audio.codec;
    track.durationSeconds = plausible(audio.durationSeconds, kLongestAudio);
    track.sampleRate = plausible(audio.sampleRate, kHighestSampleRate);
    track.bitRate = plausible(audio.bitRate, kHighestBitRate);
    track.channels = audio.channels > 0 && audio.channels <= kMostChannels ? audio.channels : 0;
    track.enabled = true;
    facts.durationSeconds = track.durationSeconds;
    facts.audioBitRate = track.bitRate = std::round(track.bitRate);
    facts.audioSampleRate = track.sampleRate;
    facts.audioChannels = track.channels;
    facts.tracks.push_back(std::move(track));
}

InfoDictionary infoFromTags(const QList<NamedTag>& tags) {
    InfoDictionary info;
    for (const InfoKey& row : kTagInfoKeys) {
        const QString text = info.contains(row.key) ? QString() : tagText(tags, row.source);
        if (text.isEmpty())
            continue;
        const bool isTrack = row.key == QLatin1String("track number");
        info.insert(row.key, isTrack ? trackText(tags, text) : text);
    }
    return info;
}

QList<AVMetadataItem> itemsBesideInfo(const QList<NamedTag>& tags) {
    QList<NamedTag> others;
    for (const NamedTag& tag : tags)
        if (std::none_of(std::begin(kTagInfoKeys), std::end(kTagInfoKeys), [&](const auto& row) {
                return tag.name.compare(row.source, Qt::CaseInsensitive) == 0;
            }))
            others.append(tag);
    return itemsFromTags(others);
}

InfoDictionary infoFromId3(const QList<AVMetadataItem>& items) {
    InfoDictionary info;
    QString date;
    for (const AVMetadataItem& item : items) {
        for (const InfoKey& row : kId3InfoKeys) {
            if (item.identifier == row.source)
                info.insert(row.key, item.stringValue());
        }
        if (item.identifier == QLatin1String("id3/TDRC"))
            date = item.stringValue();
    }
    addMissingInfo(info, {{QStringLiteral("year"), yearText(date)}});
    return info;
}

void addYearOfDate(InfoDictionary& info) {
    const QString date = info.value(QStringLiteral("recorded date"));
    addMissingInfo(info, {{QStringLiteral("year"), yearText(date)}});
    if (date.size() <= 4)
        info.remove(QStringLiteral("recorded date"));
}

void addMissingInfo(InfoDictionary& info, const InfoDictionary& more) {
    for (auto it = more.cbegin(); it != more.cend(); ++it) {
        if (!it.value().isEmpty() && info.value(it.key()).isEmpty())
            info.insert(it.key(), it.value());
    }
}

void addMissingItems(QList<AVMetadataItem>& items, const QList<AVMetadataItem>& more) {
    QSet<QString> present;
    for (const AVMetadataItem& item : items)
        present.insert(item.identifier);
    QList<AVMetadataItem> added;
    for (const AVMetadataItem& item : more) {
        // The two forms of a year are one fact.
        const bool given =
            present.contains(item.identifier) || (item.identifier == QLatin1String("id3/TYER") &&
                                                  present.contains(QStringLiteral("id3/TDRC")));
        if (!given)
            added.append(item);
    }
    items = added + items;
}

AVMetadataItem chunkItem(const QString& keySpace, const QByteArray& id, const ByteRange& body) {
    const QString key = QString::fromLatin1(id);
    return AVMetadataItem::make(keySpace, key, metadataIdentifier(keySpace, key), body.value());
}

QList<AVMetadataItem> infoItems(const InfoDictionary& info) {
    QList<AVMetadataItem> items;
    for (auto it = info.cbegin(); it != info.cend(); ++it) {
        const QString key = QStringLiteral("info-") + it.key();
        const QString keySpace = QStringLiteral("caaf");
        items.append(
            AVMetadataItem::make(keySpace, key, metadataIdentifier(keySpace, key), it.value()));
    }
    return items;
}

} // namespace clipheave::platform
