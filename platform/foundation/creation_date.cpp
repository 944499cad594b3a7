// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/creation_date.h"

#include "platform/foundation/byte_view.h"

#include <QtEndian>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <linux/magic.h>

// Linux cannot set a birth time. Where a creation date can be kept instead:
//   system.ntfs_crtime          ntfs-3g: the real one, 64-bit number in the machine's order
//   user.smb3/cifs.creationtime the kernel's SMB client: the real one on the server, little endian
//   user.clipheave.crtime       ours, "2021-03-04T05:06:07.123456789Z"
//   user.DOSATTRIB              the Samba server keeps here what its clients see
// The foreign ones count 100 ns from 1601-01-01.
namespace clipheave::platform {
namespace {

constexpr const char* kOwnAttribute = "user.clipheave.crtime";
constexpr const char* kSambaAttribute = "user.DOSATTRIB";
constexpr const char* kNtfsAttribute = "system.ntfs_crtime";
constexpr std::array kSmbAttributes{"user.smb3.creationtime", "user.cifs.creationtime"};

constexpr std::int64_t kTicksPerSecond = 10'000'000;
constexpr std::int64_t kSecondsFrom1601 = 11'644'473'600;
constexpr std::int64_t kMaxTextSecond = 253'402'300'799; // the end of the year 9999
constexpr std::int64_t kMinTextSecond = -62'135'596'800; // the start of the year 1

std::optional<timespec> fromTicks(std::uint64_t ticks) {
    if (ticks == 0 || ticks > INT64_MAX) // never set, or "leave as it is"
        return std::nullopt;
    timespec time{};
    const auto count = static_cast<std::int64_t>(ticks);
    time.tv_sec = count / kTicksPerSecond - kSecondsFrom1601;
    time.tv_nsec = count % kTicksPerSecond * 100;
    return time;
}

/// Nothing before 1601.
std::optional<std::uint64_t> toTicks(const timespec& time) {
    const std::int64_t seconds = time.tv_sec + kSecondsFrom1601;
    if (seconds <= 0 || seconds > INT64_MAX / kTicksPerSecond - 1)
        return std::nullopt;
    return static_cast<std::uint64_t>(seconds * kTicksPerSecond + time.tv_nsec / 100);
}

std::optional<int> fixedNumber(QByteArrayView text, qsizetype at, qsizetype digits) {
    int value = 0;
    for (qsizetype i = at; i < at + digits; ++i) {
        if (text[i] < '0' || text[i] > '9')
            return std::nullopt;
        value = value * 10 + (text[i] - '0');
    }
    return value;
}

std::optional<timespec> fromRfc3339(QByteArrayView text) {
    constexpr qsizetype kSecondsEnd = 19;
    if (text.size() <= kSecondsEnd || !text.endsWith('Z') || text[4] != '-' || text[7] != '-' ||
        text[10] != 'T' || text[13] != ':' || text[16] != ':')
        return std::nullopt;
    const auto year = fixedNumber(text, 0, 4), month = fixedNumber(text, 5, 2),
               day = fixedNumber(text, 8, 2), hour = fixedNumber(text, 11, 2),
               minute = fixedNumber(text, 14, 2), second = fixedNumber(text, 17, 2);
    if (!year || !month || !day || !hour || !minute || !second ||
        !QDate::isValid(*year, *month, *day) || *hour > 23 || *minute > 59 || *second > 60)
        return std::nullopt;
    timespec time{};
    const qsizetype fraction = text.size() - 1 - kSecondsEnd;
    if (fraction > 0) {
        const auto value = fraction > 1 && fraction <= 10 && text[kSecondsEnd] == '.'
                               ? fixedNumber(text, kSecondsEnd + 1, fraction - 1)
                               : std::nullopt;
        if (!value)
            return std::nullopt;
        time.tv_nsec = *value;
        for (qsizetype digits = fraction - 1; digits < 9; ++digits)
            time.tv_nsec *= 10;
    }
    std::tm fields{};
    fields.tm_year = *year - 1900;
    fields.tm_mon = *month - 1;
    fields.tm_mday = *day;
    fields.tm_hour = *hour;
    fields.tm_min = *minute;
    fields.tm_sec = *second;
    time.tv_sec = ::timegm(&fields);
    return time;
}

QByteArray toRfc3339(const timespec& time) {
    std::tm fields{};
    if (time.tv_sec < kMinTextSecond || time.tv_sec > kMaxTextSecond ||
        !::gmtime_r(&time.tv_sec, &fields))
        return {};
    std::array<char, 40> text{};
    const std::size_t length =
        std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &fields);
    // strftime does not fill up a year below 1000.
    return QByteArray(text.data(), static_cast<qsizetype>(length)).rightJustified(19, '0') + '.' +
           QByteArray::number(qint64{time.tv_nsec}).rightJustified(9, '0') + 'Z';
}

/// Where the Samba server's record holds flags and creation time: a text with its end mark, the
/// version twice (to even and fourfold offsets), then the fields of that version.
struct SambaRecord {
    std::uint64_t flagsAt, createTimeAt;
};
constexpr std::uint32_t kSambaHasCreateTime = 0x10;

std::optional<SambaRecord> findInSambaRecord(const QByteArray& record) {
    const qsizetype textEnd = record.indexOf('\0');
    if (textEnd < 0)
        return std::nullopt;
    const ByteView bytes(record);
    const auto versionAt = static_cast<std::uint64_t>((textEnd + 2) / 2 * 2);
    const auto version = bytes.le16(versionAt);
    if (!version || bytes.le16(versionAt + 2) != version)
        return std::nullopt;
    const std::uint64_t flagsAt = (versionAt + 4 + 3) / 4 * 4;
    // Behind flags and attributes: version 3 has three sizes, 4 another time, 5 nothing.
    const std::uint64_t skipped = *version == 3 ? 28 : *version == 4 ? 16 : *version == 5 ? 8 : 0;
    if (skipped == 0 || !bytes.has(flagsAt + skipped, 8))
        return std::nullopt;
    return SambaRecord{flagsAt, flagsAt + skipped};
}

std::optional<timespec> fromSambaRecord(const QByteArray& record) {
    const auto found = findInSambaRecord(record);
    const ByteView bytes(record);
    if (!found || (*bytes.le32(found->flagsAt) & kSambaHasCreateTime) == 0)
        return std::nullopt;
    return fromTicks(*bytes.le64(found->createTimeAt));
}

/// The file system's own attribute, null without one. Neither is listed, so the type of the file
/// system must say where to look.
const char* nativeAttribute(const FileReference& file, QByteArray& value) {
    constexpr std::uint32_t kSmbMagics[] = {0xFF534D42, 0xFE534D42, SMB_SUPER_MAGIC};
    const std::uint32_t type = file.fileSystemType();
    if (type == FUSE_SUPER_MAGIC) {
        value = file.attribute(kNtfsAttribute);
        return value.size() == 8 ? kNtfsAttribute : nullptr;
    }
    for (const std::uint32_t magic : kSmbMagics) {
        for (const char* attribute : kSmbAttributes) {
            if (type == magic && (value = file.attribute(attribute)).size() == 8)
                return attribute;
        }
    }
    return nullptr;
}

void patchSambaRecord(const FileReference& file, const timespec& date) {
    QByteArray record = file.attribute(kSambaAttribute);
    const auto found = findInSambaRecord(record);
    const auto ticks = toTicks(date);
    if (!found || !ticks)
        return;
    const std::uint32_t flags = *ByteView(record).le32(found->flagsAt) | kSambaHasCreateTime;
    qToLittleEndian(flags, record.data() + found->flagsAt);
    qToLittleEndian(*ticks, record.data() + found->createTimeAt);
    // Ours has been stored already and is read first; the server's view of it is an extra.
    file.setAttribute(kSambaAttribute, record);
}

} // namespace

std::optional<timespec> storedCreationDate(const FileReference& file) {
    QByteArray value;
    if (nativeAttribute(file, value)) {
        if (const auto date = fromTicks(qFromLittleEndian<std::uint64_t>(value.constData())))
            return date;
    }
    const QByteArrayList names = file.attributeNames();
    if (names.contains(kOwnAttribute)) {
        if (const auto date = fromRfc3339(file.attribute(kOwnAttribute)))
            return date;
    }
    return names.contains(kSambaAttribute) ? fromSambaRecord(file.attribute(kSambaAttribute))
                                           : std::nullopt;
}

timespec creationDate(const FileReference& file, const struct statx& status) {
    if (const auto stored = storedCreationDate(file))
        return *stored;
    timespec time{};
    // Some file systems claim a birth time and give 1970.
    const bool born = (status.stx_mask & STATX_BTIME) && status.stx_btime.tv_sec != 0;
    const statx_timestamp& stamp = born ? status.stx_btime : status.stx_mtime;
    time.tv_sec = stamp.tv_sec;
    time.tv_nsec = stamp.tv_nsec;
    return time;
}

bool bearsOwnCreationDate(const FileReference& file) {
    return file.attributeNames().contains(kOwnAttribute);
}

int storeCreationDate(const FileReference& file, const timespec& date) {
    QByteArray value;
    if (const char* attribute = nativeAttribute(file, value)) {
        const auto ticks = toTicks(date);
        if (!ticks)
            return EINVAL;
        qToLittleEndian(*ticks, value.data());
        return file.setAttribute(attribute, value);
    }
    const QByteArray text = toRfc3339(date);
    if (text.isEmpty())
        return EINVAL;
    if (const int error = file.setAttribute(kOwnAttribute, text))
        return error;
    if (file.attributeNames().contains(kSambaAttribute))
        patchSambaRecord(file, date);
    return 0;
}

} // namespace clipheave::platform
