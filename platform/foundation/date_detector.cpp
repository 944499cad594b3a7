// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/date_detector.h"

#include "platform/foundation/dates.h"

#include <QRegularExpression>

namespace clipheave::platform {

namespace {

/// What a shape says of its captures; all shapes name them alike.
QRegularExpression shape(const char* date) {
    constexpr const char* kTime =
        R"((?:[ T](?<hour>[01]?\d|2[0-3])(?<colon>[:.])(?<minute>[0-5]\d)(?:\k<colon>(?<second>[0-5]\d))?(?!\d))?)";
    return QRegularExpression(
        QStringLiteral(R"((?<!\d)%1(?!\d)%2)").arg(QLatin1String(date), QLatin1String(kTime)),
        QRegularExpression::CaseInsensitiveOption);
}

constexpr const char* kMonthName =
    R"((?<name>jan|feb|mar|apr|may|jun|jul|aug|sep|oct|nov|dec)(?:uary|ruary|ch|il|e|y|ust|t|tember|ober|ember)?)";

QRegularExpression namedShape(const char* form) {
    return shape(QString::fromLatin1(form).arg(QLatin1String(kMonthName)).toLatin1().constData());
}

int monthOf(const QRegularExpressionMatch& match) {
    const QString name = match.captured(u"name").toLower();
    static const QString kNames = QStringLiteral("janfebmaraprmayjunjulaugsepoctnovdec");
    return name.isEmpty() ? match.captured(u"month").toInt()
                          : static_cast<int>(kNames.indexOf(name)) / 3 + 1;
}

std::optional<QDateTime> dateOf(const QRegularExpressionMatch& match) {
    const QString clock =
        match.captured(u"hour").isEmpty()
            ? QStringLiteral("12:00:00")
            : QStringLiteral("%1:%2:%3")
                  .arg(match.captured(u"hour"), match.captured(u"minute"),
                       match.captured(u"second").isEmpty() ? QStringLiteral("00")
                                                           : match.captured(u"second"));
    return parseDate(QStringLiteral("%1:%2:%3 %4")
                         .arg(match.captured(u"year"))
                         .arg(monthOf(match))
                         .arg(match.captured(u"day").toInt(), 2, 10, QLatin1Char('0'))
                         .arg(clock),
                     DatePattern::Colon);
}

bool writesDayFirst(const QLocale& locale) {
    const QString format = locale.dateFormat(QLocale::ShortFormat);
    return format.indexOf(u'd') < format.indexOf(u'M');
}

} // namespace

std::optional<QDateTime> detectedDate(QStringView text, const QLocale& locale) {
    static const QRegularExpression yearFirst =
        shape(R"((?<year>\d{4})(?<mark>[-:/.])(?<month>\d{1,2})\k<mark>(?<day>\d{1,2}))");
    static const QRegularExpression dayFirst =
        shape(R"((?<day>\d{1,2})/(?<month>\d{1,2})/(?<year>\d{4}))");
    static const QRegularExpression monthFirst =
        shape(R"((?<month>\d{1,2})/(?<day>\d{1,2})/(?<year>\d{4}))");
    static const QRegularExpression dayAndName =
        namedShape(R"((?<day>\d{1,2}) %1\.? (?<year>\d{4}))");
    static const QRegularExpression nameAndDay =
        namedShape(R"(\b%1\.? (?<day>\d{1,2}),? (?<year>\d{4}))");
    const QString searched = text.toString();
    std::optional<QDateTime> first;
    qsizetype start = searched.size();
    for (const QRegularExpression* each :
         {&yearFirst, writesDayFirst(locale) ? &dayFirst : &monthFirst, &dayAndName, &nameAndDay}) {
        auto matches = each->globalMatch(searched);
        while (matches.hasNext()) {
            const auto match = matches.next();
            if (match.capturedStart() >= start)
                break;
            if (const auto date = dateOf(match)) {
                first = date;
                start = match.capturedStart();
                break;
            }
        }
    }
    return first;
}

} // namespace clipheave::platform
