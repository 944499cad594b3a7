// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/date_from_name.h"

#include "batch/date_arithmetic.h"
#include "platform/foundation/date_detector.h"
#include "platform/foundation/dates.h"
#include "platform/foundation/log.h"
#include "platform/foundation/paths.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <optional>

namespace clipheave::batch {

using namespace platform;

namespace {

constexpr qsizetype kYear = 4, kDay = 8, kClock = 6, kDayAndClock = 14;

bool isDigit(QChar character) {
    return character >= u'0' && character <= u'9';
}

bool isNumber(const QString& piece, qsizetype digits) {
    return piece.size() == digits && std::all_of(piece.begin(), piece.end(), &isDigit);
}

/// The characters that count, without one at each end that is no digit.
QString essence(const QString& name) {
    QString kept;
    for (const QChar character : name)
        if (isDigit(character) || QStringView(u"_ .-").contains(character))
            kept += character;
    if (kept.size() > 1) {
        if (!isDigit(kept.front()))
            kept.remove(0, 1);
        if (!kept.isEmpty() && !isDigit(kept.back()))
            kept.chop(1);
    }
    return kept;
}

/// Null for a day that no calendar has, and for years before photographs and after our time.
QString dayText(const QString& year, const QString& month, const QString& day) {
    constexpr int kFirstYear = 1800, kLastYear = 2999;
    const bool isDay = isNumber(year, kYear) && isNumber(month, 2) && isNumber(day, 2) &&
                       year.toInt() >= kFirstYear && year.toInt() <= kLastYear &&
                       QDate::isValid(year.toInt(), month.toInt(), day.toInt());
    return isDay ? QStringLiteral("%1:%2:%3").arg(year, month, day) : QString();
}

/// Null for a time that no clock shows.
QString clockText(const QString& hour, const QString& minute, const QString& second) {
    const bool isClock = isNumber(hour, 2) && isNumber(minute, 2) && isNumber(second, 2) &&
                         QTime::isValid(hour.toInt(), minute.toInt(), second.toInt());
    return isClock ? QStringLiteral("%1:%2:%3").arg(hour, minute, second) : QString();
}

/// Returns the parts of a piece that is itself divided by "-" or ".".
QStringList parts(const QString& piece) {
    static const QRegularExpression marks(QStringLiteral("[-.]"));
    return piece.split(marks);
}

/// "10-20-30", "10.20.30", "10-20": a piece that is divided itself.
QString dividedClock(const QString& piece) {
    const QStringList divided = parts(piece);
    if (divided.size() >= 3 && std::all_of(divided.begin(), divided.begin() + 3,
                                           [](const QString& part) { return part.size() >= 2; }))
        return clockText(divided[0].last(2), divided[1].last(2), divided[2].first(2));
    return divided.size() == 2
               ? clockText(divided[0].last(std::min<qsizetype>(divided[0].size(), 2)),
                           divided[1].first(std::min<qsizetype>(divided[1].size(), 2)),
                           QStringLiteral("00"))
               : QString();
}

/// The clock time that begins at this piece; null when there is none.
QString clockAt(const QStringList& pieces, qsizetype at) {
    const QString piece = pieces.value(at);
    if (piece.size() >= kClock && isNumber(piece.first(kClock), kClock))
        return clockText(piece.first(2), piece.sliced(2, 2), piece.sliced(4, 2));
    if (const QString clock = dividedClock(piece); !clock.isNull())
        return clock;
    return clockText(
        piece, pieces.value(at + 1),
        pieces.value(at + 2).first(std::min<qsizetype>(pieces.value(at + 2).size(), 2)));
}

/// A day and the piece after it.
struct Day {
    QString text;
    qsizetype next = 0;
};

/// The day that begins at this piece.
std::optional<Day> dayAt(const QStringList& pieces, qsizetype at) {
    const QString &piece = pieces[at], second = pieces.value(at + 1), third = pieces.value(at + 2);
    const auto found = [](const QString& text, qsizetype next) {
        return text.isNull() ? std::nullopt : std::optional(Day{text, next});
    };
    if (isNumber(piece, kDay))
        return found(dayText(piece.first(4), piece.sliced(4, 2), piece.last(2)), at + 1);
    if (isNumber(piece, kYear) && isNumber(second, 4))
        return found(dayText(piece, second.first(2), second.last(2)), at + 2);
    if (isNumber(piece, kYear))
        return found(dayText(piece, second, third), at + 3);
    const QStringList divided = parts(piece);
    return divided.size() == 3 ? found(dayText(divided[0], divided[1], divided[2]), at + 1)
                               : std::nullopt;
}

/// "20150601123045" in one piece.
QString dayAndClock(const QString& piece) {
    if (!isNumber(piece, kDayAndClock))
        return {};
    const QString day = dayText(piece.first(4), piece.sliced(4, 2), piece.sliced(6, 2));
    const QString clock = clockText(piece.sliced(8, 2), piece.sliced(10, 2), piece.last(2));
    return day.isNull() || clock.isNull() ? QString() : day + u' ' + clock;
}

QString dateInPieces(const QStringList& pieces) {
    for (qsizetype at = 0; at < pieces.size(); ++at) {
        if (const QString both = dayAndClock(pieces[at]); !both.isNull())
            return both;
        const auto day = dayAt(pieces, at);
        if (!day)
            continue;
        const QString clock = clockAt(pieces, day->next);
        return day->text + u' ' + (clock.isNull() ? QStringLiteral("00:00:00") : clock);
    }
    return {};
}

/// Null when there are fewer than two pieces, or no date in them.
QString dateBetween(const QString& kept, const QRegularExpression& separators) {
    const QStringList pieces = kept.split(separators, Qt::SkipEmptyParts);
    return pieces.size() < 2 ? QString() : dateInPieces(pieces);
}

/// The pieces at the first separator that occurs count; those at all of them where they hold no
/// date.
QString dateInShapes(const QString& kept) {
    static const QRegularExpression underscores(QStringLiteral("_")), blanks(QStringLiteral(" ")),
        dashes(QStringLiteral("-")), all(QStringLiteral("[_ -]"));
    for (const QRegularExpression* first : {&underscores, &blanks, &dashes})
        if (kept.contains(*first)) {
            const QString date = dateBetween(kept, *first);
            return date.isNull() ? dateBetween(kept, all) : date;
        }
    return {};
}

} // namespace

QString dateFromFileName(const QString& fileName) {
    const QString name = deletingPathExtension(fileName);
    if (const QString date = dateInShapes(essence(name)); !date.isNull())
        return date;
    const auto detected = detectedDate(name);
    if (!detected)
        return {};
    log(LogLevel::Trace, QStringLiteral("detectedDate==%1").arg(dateDescription(*detected)));
    return tagTextOf(*detected);
}

} // namespace clipheave::batch
