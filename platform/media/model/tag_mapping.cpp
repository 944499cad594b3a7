// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/model/tag_mapping.h"

#include <algorithm>

namespace clipheave::platform {
namespace {

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
    const auto firstOf = [](const QString& text) { return text.section(kValueSeparator, 0, 0); };
    QString number = firstOf(numbers);
    if (number.contains(u'/'))
        return number;
    for (const char* name : {"tracktotal", "totaltracks"}) {
        const QString total = tagText(tags, QLatin1String(name));
        if (!total.isEmpty())
            return number + u'/' + firstOf(total);
    }
    return number;
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
    return items;
}

} // namespace clipheave::platform
