// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/rename_template.h"

#include "batch/rename_plan.h"
#include "media/fields.h"
#include "platform/foundation/paths.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace clipheave::batch {
namespace {

using media::IKImageItem;

constexpr QLatin1String kRestingTag("Insert media metadata tag(s)");
constexpr QLatin1String kRestingDateFormat("Please Choose Date format");
constexpr QLatin1String kCameraDateWord("Camera Date");
constexpr qsizetype kShortestDate = 4;

QString dimensionsText(const IKImageItem& item) {
    if (item.filePixWidth <= 0)
        return {};
    return QStringLiteral("%1 x %2").arg(item.filePixWidth).arg(item.filepixHeigh);
}

QString existingName(const IKImageItem& item) {
    return platform::deletingPathExtension(item.fileName);
}

/// A tag word and its value: a field or what a function makes of the item. Neither for the camera
/// date, which needs more than the item.
struct TagWord {
    QLatin1String word;
    QString IKImageItem::*field = nullptr;
    QString (*text)(const IKImageItem&) = nullptr;
};
consteval TagWord tagWordOf(std::string_view field) {
    return {QLatin1String(media::fieldNamed(field).tagWord), media::fieldNamed(field).record};
}

/// Deliberate: the order is that of the replacement, and a value put in earlier is searched by the
/// later words.
constexpr std::array kTagWords = {
    tagWordOf("title"),
    tagWordOf("artist"),
    tagWordOf("description"),
    tagWordOf("copyright"),
    TagWord{QLatin1String("Dimensions"), nullptr, &dimensionsText},
    tagWordOf("keywords"),
    tagWordOf("make"),
    tagWordOf("model"),
    TagWord{kCameraDateWord},
    TagWord{QLatin1String("Existing File Name"), nullptr, &existingName},
};

/// A date layout: the order of year, month and day, and the separators.
struct DateLayout {
    QLatin1String title;
    std::array<qsizetype, 3> order; ///< of year, month, day
    const char* dateSeparator;
    const char* timeSeparator; ///< null: no time; ":" leaves the time as it stands
};
constexpr std::array kDateLayouts = {
    DateLayout{QLatin1String("MM:DD:YYYY HH:MM:ss"), {1, 2, 0}, ":", ":"},
    DateLayout{QLatin1String("DD:MM:YYYY HH:MM:ss"), {2, 1, 0}, ":", ":"},
    DateLayout{QLatin1String("YYYY:MM:DD HH:MM:ss"), {0, 1, 2}, ":", ":"},
    DateLayout{QLatin1String("YYYY_MM_DD HH.MM.ss"), {0, 1, 2}, "_", "."},
    DateLayout{QLatin1String("MM_DD_YYYY HH.MM.ss"), {1, 2, 0}, "_", "."},
    DateLayout{QLatin1String("DD_MM_YYYY HH.MM.ss"), {2, 1, 0}, "_", "."},
    DateLayout{QLatin1String("YYYY_MM_DD"), {0, 1, 2}, "_", nullptr},
    DateLayout{QLatin1String("YYYYMMDD HHMMss"), {0, 1, 2}, "", ""},
    DateLayout{QLatin1String("MMDDYYYY HHMMss"), {1, 2, 0}, "", ""},
    DateLayout{QLatin1String("DDMMYYYY HHMMss"), {2, 1, 0}, "", ""},
};

QString laidOut(const DateLayout& layout, const QStringList& date, const QString& time) {
    const QLatin1String between(layout.dateSeparator);
    QString text =
        date[layout.order[0]] + between + date[layout.order[1]] + between + date[layout.order[2]];
    if (!layout.timeSeparator)
        return text;
    const QStringList parts = time.split(u':');
    return text + u' ' +
           (parts.size() == 3 ? parts.join(QLatin1String(layout.timeSeparator)) : time);
}

QString dateSource(const IKImageItem& item, const CreationDateText& creationDateText) {
    QString date = item.shootDateStr.isNull() ? item.fileCreateDateStr : item.shootDateStr;
    return date.size() < kShortestDate ? creationDateText(item.filePath) : date;
}

bool isRemoved(QChar c) {
    return c == u'{' || c == u'}' || c == u',' || c == u'(' || c == u')' || c == u'/';
}

/// One bit for each Latin capital in the text. The first letter shows already that most words are
/// absent, which saves much of the time that a plan takes.
std::uint32_t bitOfCapital(QChar c) {
    return c >= u'A' && c <= u'Z' ? 1u << (c.unicode() - u'A') : 0;
}
std::uint32_t capitalsIn(QStringView text) {
    std::uint32_t capitals = 0;
    for (const QChar c : text)
        capitals |= bitOfCapital(c);
    return capitals;
}

} // namespace

const QStringList& addTagsTitles() {
    static const QStringList titles = [] {
        QStringList list;
        for (const TagWord& tag : kTagWords)
            if (tag.text != &existingName)
                list.append(tag.word);
        return list << kRestingTag;
    }();
    return titles;
}

const QStringList& tagPositionTitles() {
    static const QStringList titles{QStringLiteral("the beginning of filename"),
                                    QStringLiteral("the end of filename")};
    return titles;
}

const QStringList& renameDateFormatTitles() {
    static const QStringList titles = [] {
        QStringList list{kRestingDateFormat};
        for (const DateLayout& layout : kDateLayouts)
            list.append(layout.title);
        return list;
    }();
    return titles;
}

QString insertPhotoTag(const QString& filenameTemplate, const QString& tagTitle, bool atBeginning) {
    if (tagTitle == kRestingTag || !addTagsTitles().contains(tagTitle))
        return filenameTemplate;
    const QString tag = u'{' + tagTitle + u'}';
    return atBeginning ? tag + u' ' + filenameTemplate : filenameTemplate + u' ' + tag;
}

std::vector<TagWordSpan> tagWordSpans(const QString& filenameTemplate) {
    std::vector<TagWordSpan> spans;
    for (const TagWord& tag : kTagWords) {
        const qsizetype length = tag.word.size();
        for (qsizetype at = filenameTemplate.indexOf(tag.word); at >= 0;
             at = filenameTemplate.indexOf(tag.word, at + length)) {
            const qsizetype end = at + length;
            const bool inBraces = at > 0 && filenameTemplate[at - 1] == u'{' &&
                                  end < filenameTemplate.size() && filenameTemplate[end] == u'}';
            spans.push_back({static_cast<int>(inBraces ? at - 1 : at),
                             static_cast<int>(inBraces ? length + 2 : length)});
        }
    }
    std::sort(spans.begin(), spans.end(),
              [](const TagWordSpan& a, const TagWordSpan& b) { return a.start < b.start; });
    return spans;
}

QString cameraDateText(const IKImageItem& item, const QString& dateFormat,
                       const CreationDateText& creationDateText) {
    const QString source = dateSource(item, creationDateText);
    if (dateFormat == kRestingDateFormat)
        return source.isNull() ? QStringLiteral("") : source;
    const QStringList parts = source.split(u' ');
    if (parts.size() < 2)
        return source.isNull() ? QStringLiteral("") : source;
    QStringList date = parts[0].split(u':');
    if (date.size() < 2)
        date = parts[0].split(u'-');
    if (date.size() != 3)
        return parts[0] + u' ' + parts[1];
    for (const DateLayout& layout : kDateLayouts)
        if (dateFormat == layout.title)
            return laidOut(layout, date, parts[1]);
    return {};
}

QString nameFromTemplate(const QString& filenameTemplate, const IKImageItem& item,
                         const QString& dateFormat, const CreationDateText& creationDateText) {
    QString name = filenameTemplate;
    std::uint32_t capitals = capitalsIn(name);
    for (const TagWord& tag : kTagWords) {
        const bool mayBeThere = (capitals & bitOfCapital(QChar(tag.word.front()))) != 0;
        if (!mayBeThere || !name.contains(tag.word))
            continue;
        QString value;
        if (tag.word == kCameraDateWord)
            value = cameraDateText(item, dateFormat, creationDateText);
        else
            value = tag.field ? item.*tag.field : tag.text(item);
        // An unknown layout leaves the word.
        if (tag.word == kCameraDateWord && value.isNull())
            continue;
        name.replace(tag.word, value);
        capitals = capitalsIn(name);
    }
    name.removeIf(&isRemoved);
    return name;
}

QString paddedNumber(int number) {
    return QString::number(number).rightJustified(6, u'0');
}

} // namespace clipheave::batch
