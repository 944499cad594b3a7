// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/date_plan.h"

#include "batch/date_arithmetic.h"
#include "batch/date_from_name.h"
#include "batch/messages.h"
#include "media/media_kind.h"
#include "platform/foundation/date_detector.h"
#include "platform/foundation/dates.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/paths.h"
#include "platform/foundation/text.h"

#include <QHash>

#include <array>
#include <cstddef>
#include <memory>
#include <utility>

namespace clipheave::batch {

using namespace platform;
using media::MediaKind;

namespace {

constexpr std::array<std::int64_t, 3> kUnitSeconds = {1, 60, 3600};

std::int64_t stepSeconds(const DateRequest& request) {
    const qsizetype unit = addDateUnitTitles().indexOf(request.AddDateUnitBtn);
    if (!request.AddDateNumBtn || unit < 0)
        return 0;
    return intValue(request.AddDateNumlab) * kUnitSeconds[static_cast<std::size_t>(unit)];
}

/// The dates of a request for one file after the other.
class OneDate {
public:
    explicit OneDate(const DateRequest& request)
        : m_date(parseDateText(request.mutSetDatelab).value_or(QDateTime())),
          m_step(stepSeconds(request)) {}
    QDateTime next() {
        constexpr std::int64_t kMilliseconds = 1000;
        return m_date.addMSecs(m_step * kMilliseconds * m_count++);
    }

private:
    QDateTime m_date;
    std::int64_t m_step, m_count = 0;
};

/// How every date of a request is moved.
class Shift {
public:
    explicit Shift(const DateRequest& request)
        : m_adds(request.AddTimeBtn), m_amounts{intValue(request.yearVaulab),
                                                intValue(request.monthVaulab),
                                                intValue(request.dayVaulab),
                                                intValue(request.hourVaulab),
                                                intValue(request.minuVaulab),
                                                intValue(request.secVaulab)} {}
    [[nodiscard]] QString textOf(const QDateTime& date) const {
        return m_adds ? AddTimeIntwithDate(date, m_amounts) : SubTimeIntwithDate(date, m_amounts);
    }

private:
    bool m_adds;
    DateAmounts m_amounts;
};

bool takesCameraDate(const media::IKImageItem& item) {
    return MediaKind::isAudio(item.filePath) || MediaKind::isVideo(item.filePath);
}

bool isMedia(const media::IKImageItem& item) {
    return takesCameraDate(item) || MediaKind::isPhoto(item.filePath);
}

/// The camera date, else the creation date of the file, in universal time; null when it has none.
QString currentDate(const media::IKImageItem& item, const FileDatesOf& fileDates) {
    if (!item.shootDateStr.isNull())
        return item.shootDateStr;
    const auto file = fileDates(item.filePath);
    return file && file->creation ? dateDescription(*file->creation).section(u' ', 0, 1)
                                  : QString();
}

void shiftCameraDate(DateLine& line, const Shift& shift) {
    auto date = parseDateText(line.now);
    if (!date)
        date = detectedDate(line.now);
    line.after = date ? shift.textOf(*date) : line.now;
    if (!date)
        line.note = DateNote::NoDate;
    else if (!isCalendarDate(line.after))
        line.note = DateNote::NoCalendarDate;
}

/// The shifted date; nothing, with the note, for one that no calendar has.
std::optional<QDateTime> shifted(const QDateTime& date, const Shift& shift, FileDateLine& line) {
    const auto moved = parseDateText(shift.textOf(date));
    if (!moved)
        line.note = DateNote::NoCalendarDate;
    return moved;
}

QString localText(const std::optional<QDateTime>& date) {
    return date ? formatDate(*date, DatePattern::Colon) : QString();
}

/// One text for both dates where they are the same.
QString bothTexts(const QString& creation, const QString& modification) {
    return creation == modification ? creation : creation + QStringLiteral(" / ") + modification;
}

void planFileDate(FileDateLine& line, const jobs::OutputDates& file, const Shift& shift) {
    const auto move = [&](const std::optional<QDateTime>& date) {
        return date ? shifted(*date, shift, line) : std::nullopt;
    };
    line.dates = {move(file.creation), move(file.modification)};
    line.after = bothTexts(file.creation ? shift.textOf(*file.creation) : QString(),
                           file.modification ? shift.textOf(*file.modification) : QString());
}

} // namespace

const QStringList& addDateUnitTitles() {
    static const QStringList titles = {QStringLiteral("Second"), QStringLiteral("Minute"),
                                       QStringLiteral("Hour")};
    return titles;
}

bool setsOneDate(const DateRequest& request) {
    constexpr qsizetype kShortest = 5;
    return request.mutSetDatelab.size() >= kShortest;
}

bool isUsable(const DateRequest& request) {
    return !setsOneDate(request) || CheckDateFormatWithDateString(request.mutSetDatelab);
}

Message dateNoteMessage(DateNote note) {
    switch (note) {
    case DateNote::None:
        break;
    case DateNote::KindSkipped:
        return kNotForThisKind;
    case DateNote::NoDate:
        return kNoDateInText;
    case DateNote::NoCalendarDate:
        return kNoCalendarDate;
    case DateNote::Missing:
        return kFileMissing;
    case DateNote::NoNameDate:
        return kNoDateInName;
    case DateNote::NoCameraDate:
        return kCameraDateMissing;
    }
    return {};
}

FileDatesOf fileDatesOnDisk() {
    const auto known = std::make_shared<QHash<QString, std::optional<jobs::OutputDates>>>();
    return [known](const QString& path) {
        const auto found = known->constFind(path);
        if (found != known->constEnd())
            return *found;
        const auto attributes = NSFileManager::defaultManager().attributesOfItemAtPath(path);
        std::optional<jobs::OutputDates> dates;
        if (attributes)
            dates = {attributes->NSFileCreationDate, attributes->NSFileModificationDate};
        return *known->insert(path, dates);
    };
}

std::vector<DateLine> planCameraDates(const DateRequest& request,
                                      const std::vector<media::ItemPointer>& items,
                                      const FileDatesOf& fileDates) {
    OneDate one(request);
    const Shift shift(request);
    const bool isOne = setsOneDate(request);
    std::vector<DateLine> lines;
    lines.reserve(items.size());
    for (const auto& item : items) {
        DateLine line{item->filePath, currentDate(*item, fileDates), {}};
        if (!takesCameraDate(*item))
            line.note = DateNote::KindSkipped;
        else if (isOne)
            line.after = tagTextOf(one.next());
        else if (line.now.isNull())
            line.note = DateNote::Missing;
        else
            shiftCameraDate(line, shift);
        lines.push_back(std::move(line));
    }
    return lines;
}

std::vector<FileDateLine> planFileDates(const DateRequest& request,
                                        const std::vector<media::ItemPointer>& items,
                                        const FileDatesOf& fileDates) {
    OneDate one(request);
    const Shift shift(request);
    const bool isOne = setsOneDate(request);
    std::vector<FileDateLine> lines;
    lines.reserve(items.size());
    for (const auto& item : items) {
        FileDateLine line;
        line.source = item->filePath;
        const auto file = fileDates(item->filePath);
        if (file)
            line.now = bothTexts(localText(file->creation), localText(file->modification));
        if (!file) {
            line.note = DateNote::Missing;
        } else if (isOne) {
            const QDateTime date = one.next();
            line.dates = {date, date};
            line.after = localText(date);
        } else {
            planFileDate(line, *file, shift);
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

std::vector<FileDateLine> planCopiedFileDates(const std::vector<media::ItemPointer>& items,
                                              const FileDatesOf& fileDates, bool toModification) {
    std::vector<FileDateLine> lines;
    for (const auto& item : items) {
        FileDateLine& line = lines.emplace_back();
        line.source = item->filePath;
        const auto file = fileDates(item->filePath);
        if (!file) {
            line.note = DateNote::Missing;
            continue;
        }
        const auto& copied = toModification ? file->creation : file->modification;
        (toModification ? line.dates.modification : line.dates.creation) = copied;
        line.now = localText(toModification ? file->modification : file->creation);
        line.after = localText(copied);
    }
    return lines;
}

std::vector<FileDateLine> planCameraToFileDates(const std::vector<media::ItemPointer>& items,
                                                const FileDatesOf& fileDates) {
    std::vector<FileDateLine> lines;
    for (const auto& item : items) {
        FileDateLine& line = lines.emplace_back();
        line.source = item->filePath;
        const auto file = fileDates(item->filePath);
        const auto date = parseDateText(item->shootDateStr);
        if (file)
            line.now = localText(file->creation);
        line.note = !file             ? DateNote::Missing
                    : !isMedia(*item) ? DateNote::KindSkipped
                    : !date           ? DateNote::NoCameraDate
                                      : DateNote::None;
        if (line.note != DateNote::None)
            continue;
        line.dates.creation = date;
        line.after = localText(date);
    }
    return lines;
}

std::vector<DateLine> planFileToCameraDates(const std::vector<media::ItemPointer>& items,
                                            const FileDatesOf& fileDates) {
    std::vector<DateLine> lines;
    for (const auto& item : items) {
        DateLine& line = lines.emplace_back(DateLine{item->filePath, item->shootDateStr, {}});
        const auto file = fileDates(item->filePath);
        line.note = !isMedia(*item) ? DateNote::KindSkipped
                    : !file         ? DateNote::Missing
                                    : DateNote::None;
        if (line.note == DateNote::None)
            line.after = localText(file->creation);
    }
    return lines;
}

std::vector<DateLine> planNamesToComments(const std::vector<media::ItemPointer>& items) {
    std::vector<DateLine> lines;
    lines.reserve(items.size());
    for (const auto& item : items) {
        DateLine& line = lines.emplace_back(DateLine{item->filePath, {}, {}});
        if (MediaKind::isPhoto(item->filePath))
            line.after = deletingPathExtension(lastPathComponent(item->filePath));
        else
            line.note = DateNote::KindSkipped;
    }
    return lines;
}

std::vector<DateLine> planDatesFromNames(const std::vector<media::ItemPointer>& items) {
    std::vector<DateLine> lines;
    lines.reserve(items.size());
    for (const auto& item : items) {
        DateLine& line = lines.emplace_back(DateLine{item->filePath, item->shootDateStr, {}});
        const bool isVideo = MediaKind::isVideo(item->filePath);
        if (isVideo)
            line.after = dateFromFileName(item->fileName);
        if (line.after.isNull())
            line.note = isVideo ? DateNote::NoNameDate : DateNote::KindSkipped;
    }
    return lines;
}

} // namespace clipheave::batch
