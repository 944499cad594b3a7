// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/item_texts.h"

#include "platform/foundation/dates.h"
#include "platform/foundation/log.h"
#include "platform/foundation/text.h"

#include <QStringList>

#include <algorithm>

namespace clipheave::media {

namespace {

constexpr qsizetype kDateParts = 6;

bool isSign(QChar c) {
    return c == u'+' || c == u'-';
}

void setShootDate(IKImageItem& item, const QString& text, const QDateTime& date) {
    item.shootDateStr = text;
    item.shootDate = date;
}

/// "2019-05-04 10:11:12-0700" as "2019-05-04 10:11:12"; null when it has fewer than six parts.
QString rebuiltDateText(const QString& text, SecondsCut cut) {
    QString dashed = text;
    dashed.replace(u' ', u'-').replace(u':', u'-');
    QStringList parts = dashed.split(u'-');
    if (parts.size() < kDateParts)
        return {};
    if (cut == SecondsCut::TwoDigits && parts[5].size() >= 3)
        parts[5].truncate(2);
    return QStringLiteral("%1-%2-%3 %4:%5:%6")
        .arg(parts[0], parts[1], parts[2], parts[3], parts[4], parts[5]);
}

/// How many numbers of a position the record has: as many as its text has signs.
int positionSigns(const IKImageItem& item) {
    return static_cast<int>(!item.latitudeFormat.isEmpty()) +
           static_cast<int>(!item.longtitudeFormat.isEmpty()) +
           static_cast<int>(!item.AtitudeFormat.isEmpty());
}

void forgetPosition(IKImageItem& item) {
    item.latitudeFormat.clear();
    item.longtitudeFormat.clear();
    item.AtitudeFormat.clear();
    item.filelatitude = item.filelongtitude = item.fileAtitude = 0;
}

} // namespace

void applyLocationText(IKImageItem& item, QStringView location) {
    const auto given =
        std::min<qsizetype>(3, std::count_if(location.begin(), location.end(), isSign));
    if (given == 0 || given < positionSigns(item))
        return;
    forgetPosition(item);
    QStringList numbers;
    qsizetype start = 0;
    int signs = 0;
    for (qsizetype i = 0; i < location.size() && signs < 3; ++i) {
        if (!isSign(location[i]))
            continue;
        const QStringView number = location.sliced(start, i - start);
        ++signs;
        if (signs == 1) {
            item.latitudeFormat = location[i];
        } else if (signs == 2) {
            item.filelatitude = platform::doubleValue(number);
            item.longtitudeFormat = location[i];
        } else {
            item.filelongtitude = platform::doubleValue(number);
            item.AtitudeFormat = location[i];
            item.fileAtitude = platform::doubleValue(location.sliced(i + 1));
        }
        if (signs > 1)
            numbers.append(number.toString());
        start = i + 1;
    }
    if (signs > 0 && platform::logs(platform::LogLevel::Trace))
        platform::log(platform::LogLevel::Trace,
                      QStringLiteral("theStrArry==%1").arg(numbers.join(u",")), item.filePath);
}

bool hasLongitude(const IKImageItem& item) {
    // A photo has its position from numbers: 0 is one, and the altitude may be missing.
    const bool isFromText = item.fileType != u"Image";
    return !item.longtitudeFormat.isEmpty() &&
           !(isFromText && item.AtitudeFormat.isEmpty() && item.filelongtitude == 0);
}

void applyShootDateText(IKImageItem& item, const QString& value, SecondsCut cut) {
    QString text = value;
    text.replace(u'T', u' ');
    const qsizetype plus = text.indexOf(u'+');
    if (plus >= 0)
        text.truncate(plus);
    item.shootDateStr = text;
    if (const auto date = platform::parseDateText(text)) {
        item.shootDate = *date;
        return;
    }
    if (plus >= 0)
        return;
    const QString rebuilt = rebuiltDateText(text, cut);
    if (const auto date = platform::parseDate(rebuilt, platform::DatePattern::Dash))
        setShootDate(item, rebuilt, *date);
}

QString createdDateText(const QDateTime& date) {
    if (!date.isValid())
        return {};
    const QString text = platform::formatDate(date, platform::DatePattern::Colon);
    return text.isEmpty() ? platform::formatDate(date, platform::DatePattern::Dash) : text;
}

} // namespace clipheave::media
