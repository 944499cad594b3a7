// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/model/tag_mapping.h"

#include <QHash>

#include <algorithm>

namespace clipheave::platform {
namespace {

/// What programs note for themselves, in lower case; a name that ends in "*" stands for all that
/// begin so. Sources: libavformat, the WMA encoder, writers of CAF, FLV and MXF, mkvmerge.
constexpr const char* kProgramNotes[] = {
    "application_platform",
    "approximate duration in seconds",
    "audiocodecid",
    "audiodatarate",
    "audiodelay",
    "audiosamplerate",
    "audiosamplesize",
    "audiosize",
    "canseektoend",
    "com.apple.quicktime.*",
    "channel configuration",
    "channel layout",
    "compatible_brands",
    "coverart*",
    "creation_time",
    "datasize",
    "deviceconformancetemplate",
    "disctotal",
    "duration",
    "encoder",
    "encoder_options",
    "encoding application",
    "endtime",
    "filesize",
    "framerate",
    "generation_uid",
    "handler_name",
    "hasaudio",
    "hascuepoints",
    "haskeyframes",
    "hasmetadata",
    "hasvideo",
    "isvbr",
    "lastkeyframe*",
    "lasttimestamp",
    "major_brand",
    "material_package_umid",
    "metadata_block_picture",
    "metadatacreator",
    "minor_version",
    "nominal bit rate",
    "operational_pattern_ul",
    "source encoder",
    "starttime",
    "stereo",
    "toolkit_version",
    "totaldiscs",
    "totalframes",
    "totaltracks",
    "tracktotal",
    "uid",
    "vendor_id",
    "videocodecid",
    "videodatarate",
    "videosize",
    "waveformatextensible_channel_mask",
    "wm/encodingsettings",
    "wm/encodingtime",
    "wm/mediaclass*",
    "wmfsdk*",
    "_statistics_*",
};

bool isProgramNote(const QString& name) {
    return std::any_of(std::begin(kProgramNotes), std::end(kProgramNotes), [&](const char* row) {
        const QLatin1String known(row);
        if (!known.endsWith(QLatin1Char('*')))
            return name.compare(known, Qt::CaseInsensitive) == 0;
        return name.startsWith(known.chopped(1), Qt::CaseInsensitive);
    });
}

/// Returns whether an item has the text of the tags of this name. Where two names stand for one
/// identifier, the text of the second may be another.
bool isTaken(const QString& name, const QList<NamedTag>& tags, const QList<AVMetadataItem>& items) {
    return std::any_of(std::begin(kTagMappings), std::end(kTagMappings), [&](const auto& row) {
        if (name != row.name)
            return false;
        const auto item = std::find_if(items.begin(), items.end(), [&](const auto& known) {
            return known.identifier == row.identifier;
        });
        return item != items.end() &&
               (row.rule != TagRule::Text || item->stringValue() == tagText(tags, row.name));
    });
}

/// What stands in none of the items, an item a name.
QList<AVMetadataItem> userTexts(const QList<NamedTag>& tags, const QList<AVMetadataItem>& items) {
    QList<AVMetadataItem> texts;
    QHash<QString, qsizetype> places; // by name; -1: none
    for (const NamedTag& tag : tags) {
        if (tag.name.isEmpty() || tag.value.isEmpty())
            continue;
        const QString name = tag.name.toLower();
        const auto place = places.constFind(name);
        if (place == places.cend()) {
            const bool isOurs = !isProgramNote(name) && !isTaken(name, tags, items);
            places.insert(name, isOurs ? texts.size() : -1);
            if (isOurs)
                texts.append(userTextItem(tag.name, tag.value));
        } else if (*place >= 0 && texts[*place].stringValue() != tag.value) {
            texts[*place].value = texts[*place].stringValue() + kValueSeparator + tag.value;
        }
    }
    return texts;
}

/// "n", or "n/m" when one of the names gives the total.
QString withTotal(const QList<NamedTag>& tags, const QString& numbers,
                  std::initializer_list<const char*> names) {
    const auto firstOf = [](const QString& text) { return text.section(kValueSeparator, 0, 0); };
    const QString number = firstOf(numbers);
    if (number.contains(u'/'))
        return number;
    for (const char* name : names) {
        const QString total = tagText(tags, QLatin1String(name));
        if (!total.isEmpty())
            return number + u'/' + firstOf(total);
    }
    return number;
}

QString mappedText(const QList<NamedTag>& tags, const TagMapping& row) {
    QString text = tagText(tags, row.name);
    if (text.isEmpty())
        return {};
    switch (row.rule) {
    case TagRule::Text:
        return text;
    case TagRule::Year:
        return yearText(text);
    case TagRule::FullDate: {
        const bool full = text.size() >= 10 && yearText(text.left(4)).size() == 4 &&
                          text[4] == u'-' && text[5].isDigit() && text[7] == u'-' &&
                          text[8].isDigit();
        return full ? text : QString();
    }
    case TagRule::Track:
        return trackText(tags, text);
    case TagRule::Disc:
        return discText(tags, text);
    }
    return {};
}

} // namespace

QString tagText(const QList<NamedTag>& tags, QLatin1String name) {
    QString joined;
    for (const NamedTag& tag : tags) {
        // Most names differ in length already, and this is asked for every row and tag.
        if (tag.name.size() != name.size() || tag.name.compare(name, Qt::CaseInsensitive) != 0 ||
            tag.value.isEmpty() || tag.value == joined)
            continue;
        if (!joined.isEmpty())
            joined += kValueSeparator;
        joined += tag.value;
    }
    return joined;
}

QString trackText(const QList<NamedTag>& tags, const QString& numbers) {
    return withTotal(tags, numbers, {"tracktotal", "totaltracks"});
}

QString discText(const QList<NamedTag>& tags, const QString& numbers) {
    return withTotal(tags, numbers, {"disctotal", "totaldiscs"});
}

QString yearText(const QString& date) {
    int digits = 0;
    for (qsizetype i = 0; i < date.size(); ++i) {
        digits = date[i] >= u'0' && date[i] <= u'9' ? digits + 1 : 0;
        if (digits == 4)
            return date.mid(i - 3, 4);
    }
    return {};
}

AVMetadataItem itemOf(QLatin1String identifier, const QString& text) {
    const qsizetype slash = identifier.indexOf(u'/');
    const QLatin1String prefix = identifier.left(slash);
    const QString keySpace =
        prefix == QLatin1String("id3") ? QStringLiteral("org.id3") : QString(prefix);
    return AVMetadataItem::make(keySpace, QString(identifier.mid(slash + 1)), QString(identifier),
                                text);
}

AVMetadataItem userTextItem(const QString& name, const QString& text) {
    const QString keySpace = QStringLiteral("org.id3");
    const QString identifier = metadataIdentifier(keySpace, QStringLiteral("TXXX:") + name);
    return AVMetadataItem::make(keySpace, QStringLiteral("TXXX"), identifier, text);
}

QList<AVMetadataItem> itemsFromTags(const QList<NamedTag>& tags) {
    QList<AVMetadataItem> items;
    for (const TagMapping& row : kTagMappings) {
        const bool given = std::any_of(items.cbegin(), items.cend(), [&row](const auto& item) {
            return item.identifier == row.identifier;
        });
        const QString text = given ? QString() : mappedText(tags, row);
        if (!text.isEmpty())
            items.append(itemOf(row.identifier, text));
    }
    return items + userTexts(tags, items);
}

} // namespace clipheave::platform
