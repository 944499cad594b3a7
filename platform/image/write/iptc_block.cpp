// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/write/iptc_block.h"

#include "platform/foundation/byte_view.h"
#include "platform/image/messages.h"
#include "platform/image/write/photo_plan.h"

#include <QCryptographicHash>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace clipheave::platform {

namespace {

constexpr char kMarker = 0x1C;
constexpr std::uint8_t kEnvelope = 1, kApplication = 2, kCodedCharacterSet = 90;
constexpr qsizetype kMostShort = 0x7FFF;
const QByteArray kUtf8 = QByteArrayLiteral("\x1B%G"); // ISO 2022 for UTF-8

struct DataSet {
    std::uint8_t record = 0, number = 0;
    QByteArray value;
};

QByteArray bytes16(qsizetype value) {
    QByteArray bytes(2, '\0');
    qToBigEndian(static_cast<quint16>(value), bytes.data());
    return bytes;
}
QByteArray bytes32(qsizetype value) {
    QByteArray bytes(4, '\0');
    qToBigEndian(static_cast<quint32>(value), bytes.data());
    return bytes;
}

/// Returns the data sets, and what stands behind the last as `rest`: padding.
Result<std::vector<DataSet>> parsed(const QByteArray& block) {
    std::vector<DataSet> sets;
    const ByteView bytes(block);
    std::uint64_t at = 0;
    while (bytes.u8(at) == static_cast<std::uint8_t>(kMarker)) {
        const auto record = bytes.u8(at + 1), number = bytes.u8(at + 2);
        const auto length = bytes.be16(at + 3);
        std::uint64_t size = length.value_or(0), head = 5;
        if (length && (*length & 0x8000U) != 0) { // the length of a length
            const unsigned digits = *length & 0x7FFFU;
            const auto wide = bytes.be32(at + 5);
            if (digits != 4 || !wide)
                return failure(ErrorCode::InvalidData, kReadPhotoTags, {}, kIptcUnreadable);
            size = *wide;
            head = 9;
        }
        if (!length || !bytes.has(at + head, size))
            return failure(ErrorCode::InvalidData, kReadPhotoTags, {}, kIptcUnreadable);
        sets.push_back({*record, *number, bytes.sub(at + head, size).toByteArray()});
        at += head + size;
    }
    for (; at < bytes.size(); ++at)
        if (bytes.u8(at) != 0)
            return failure(ErrorCode::InvalidData, kReadPhotoTags, {}, kIptcUnreadable);
    return sets;
}

QByteArray rendered(const std::vector<DataSet>& sets) {
    QByteArray block;
    for (const DataSet& set : sets) {
        block += kMarker;
        block += static_cast<char>(set.record);
        block += static_cast<char>(set.number);
        block += set.value.size() <= kMostShort ? bytes16(set.value.size())
                                                : bytes16(0x8004) + bytes32(set.value.size());
        block += set.value;
    }
    return block;
}

bool isPlain(const QByteArray& text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<uchar>(c) < 0x80; });
}

bool saysUtf8(const std::vector<DataSet>& sets) {
    return std::any_of(sets.begin(), sets.end(), [](const DataSet& set) {
        return set.record == kEnvelope && set.number == kCodedCharacterSet && set.value == kUtf8;
    });
}

/// All texts become UTF-8, and the block says so.
void becomeUtf8(std::vector<DataSet>& sets) {
    for (DataSet& set : sets)
        if (set.record == kApplication && !isPlain(set.value) &&
            !QByteArrayView(set.value).isValidUtf8())
            set.value = QString::fromLatin1(set.value).toUtf8();
    sets.erase(std::remove_if(sets.begin(), sets.end(),
                              [](const DataSet& set) {
                                  return set.record == kEnvelope &&
                                         set.number == kCodedCharacterSet;
                              }),
               sets.end());
    const auto behind = std::find_if(sets.begin(), sets.end(), [](const DataSet& set) {
        return set.record > kEnvelope || set.number > kCodedCharacterSet;
    });
    sets.insert(behind, {kEnvelope, kCodedCharacterSet, kUtf8});
}

/// Where a data set stands, its first new value stands; a new one goes behind smaller numbers.
void replace(std::vector<DataSet>& sets, std::uint8_t number, const QStringList& texts) {
    const auto isOld = [number](const DataSet& set) {
        return set.record == kApplication && set.number == number;
    };
    auto at = std::find_if(sets.begin(), sets.end(), isOld);
    if (at == sets.end())
        at = std::find_if(sets.begin(), sets.end(), [number](const DataSet& set) {
            return set.record > kApplication || (set.record == kApplication && set.number > number);
        });
    auto place = at - sets.begin();
    sets.erase(std::remove_if(sets.begin(), sets.end(), isOld), sets.end());
    for (const QString& text : texts)
        sets.insert(sets.begin() + place++, {kApplication, number, text.toUtf8()});
}

const DataSet* find(const std::vector<DataSet>& sets, std::uint8_t number) {
    const auto found = std::find_if(sets.begin(), sets.end(), [number](const DataSet& set) {
        return set.record == kApplication && set.number == number;
    });
    return found != sets.end() ? &*found : nullptr;
}
bool has(const std::vector<DataSet>& sets, std::uint8_t number) {
    return find(sets, number) != nullptr;
}

/// Returns the zone of "HHMMSS+HHMM": tags have none, so the photographer's stays.
QString zoneOf(const DataSet& time) {
    const qsizetype at = std::max(time.value.indexOf('+'), time.value.indexOf('-'));
    return at < 0 ? QString() : QString::fromLatin1(time.value.mid(at, 5));
}

/// Returns the changes, and those of data sets that are there and repeat a changed tag.
IptcChanges withRepeatedTags(const PhotoChange& change, const std::vector<DataSet>& sets) {
    static constexpr std::pair<QLatin1String, std::uint8_t> kRepeated[] = {
        {QLatin1String("Artist"), std::uint8_t{80}},
        {QLatin1String("ImageDescription"), std::uint8_t{120}},
        {QLatin1String("Copyright"), std::uint8_t{116}},
    };
    struct Moment {
        QLatin1String tag;
        std::uint8_t date, time;
    };
    static constexpr Moment kMoments[] = {{QLatin1String("DateTimeOriginal"), 55, 60},
                                          {QLatin1String("DateTimeDigitized"), 62, 63}};
    IptcChanges changes = change.iptc;
    for (const AskedTag& asked : change.image)
        for (const auto& [name, number] : kRepeated)
            if (asked.name == name && has(sets, number)) {
                const QString text = asked.value.toString();
                changes.emplace(number, text.isEmpty() ? QStringList() : QStringList{text});
            }
    for (const AskedTag& asked : change.exif)
        for (const auto& [tag, day, clock] : kMoments) {
            if (asked.name != tag)
                continue;
            const QString digits = asked.value.toString().remove(u':').remove(u' ').remove(u'-');
            const bool isDate = digits.size() == 14;
            if (has(sets, day))
                changes.emplace(day, isDate ? QStringList{digits.first(8)} : QStringList());
            if (const DataSet* time = find(sets, clock))
                changes.emplace(clock, isDate ? QStringList{digits.sliced(8) + zoneOf(*time)}
                                              : QStringList());
        }
    return changes;
}

bool needsUtf8(const IptcChanges& changes) {
    for (const auto& [number, texts] : changes)
        for (const QString& text : texts)
            if (!isPlain(text.toUtf8()))
                return true;
    return false;
}

/// One image resource with its header and padding.
struct Resource {
    std::uint16_t id = 0;
    QByteArray head; ///< signature, id, name
    QByteArray data;
};

constexpr std::uint16_t kIptcResource = 0x0404, kIptcDigest = 0x0425, kExifResource = 0x0422,
                        kMoreExifResource = 0x0423, kXmpResource = 0x0424,
                        kVersionResource = 0x0421;

Result<std::vector<Resource>> parsedResources(const QByteArray& bytes) {
    std::vector<Resource> resources;
    const ByteView view(bytes);
    std::uint64_t at = 0;
    while (view.has(at, 12)) {
        const auto id = view.be16(at + 4);
        const std::uint64_t name = (view.u8(at + 6).value_or(0) + 2u) & ~1u;
        const auto size = view.be32(at + 6 + name);
        const std::uint64_t data = at + 6 + name + 4;
        if (!size || !view.has(data, *size))
            return failure(ErrorCode::InvalidData, kReadPhotoTags, {}, kIptcUnreadable);
        resources.push_back(
            {*id, view.sub(at, 6 + name).toByteArray(), view.sub(data, *size).toByteArray()});
        at = data + *size + *size % 2;
    }
    for (; at < view.size(); ++at)
        if (view.u8(at) != 0)
            return failure(ErrorCode::InvalidData, kReadPhotoTags, {}, kIptcUnreadable);
    return resources;
}

QByteArray renderedResources(const std::vector<Resource>& resources) {
    QByteArray bytes;
    for (const Resource& resource : resources) {
        bytes += resource.head + bytes32(resource.data.size()) + resource.data;
        if (resource.data.size() % 2 != 0)
            bytes += '\0';
    }
    return bytes;
}

/// Resources without which the image is not what it was: resolution, colours, halftones, states of
/// layers, colour tables, transparency, profile, aspect ratio. The others are texts, names,
/// thumbnails, addresses, printers and histories.
bool belongsToImage(std::uint16_t id) {
    static constexpr std::array<std::uint16_t, 16> kIds{
        0x03ED, 0x03EF, 0x03F1, 0x03F3, 0x03F5, 0x0400, 0x0402, 0x040F,
        0x0410, 0x0411, 0x0412, 0x0416, 0x0417, 0x0428, 0x0430, 0x0435};
    return std::find(kIds.begin(), kIds.end(), id) != kIds.end();
}

Result<QByteArray> changedExifResource(const QByteArray& block, const PhotoChange& change) {
    auto changed = changedTiffBlock(block, change);
    if (!changed && (change.dropsEverything || (change.dropsExif && change.dropsGps)))
        return QByteArray(); // what cannot be read goes whole
    return changed;
}

/// The resources of one file while they change.
class ResourceChange {
public:
    ResourceChange(const PhotoChange& change, ResourceBlocks adds, Notes& notes)
        : m_change(change), m_adds(adds), m_notes(notes) {}

    /// The checksum is that of another block, or stays.
    ResourceChange& countingElsewhere(const std::optional<QByteArray>& block) {
        m_countsOwn = false;
        m_counted = block;
        return *this;
    }

    Result<QByteArray> run(std::vector<Resource> resources) {
        for (Resource& resource : resources)
            if (auto done = take(std::move(resource)); !done)
                return tl::unexpected(done.error());
        if (auto done = addMissing(); !done)
            return tl::unexpected(done.error());
        renewDigest();
        return renderedResources(m_kept);
    }

private:
    Result<void> take(Resource resource) {
        if (resource.id == kExifResource && m_change.changesTags()) {
            m_hasExif = true;
            return put(std::move(resource), [this](const QByteArray& block) {
                return changedExifResource(block, m_change);
            });
        }
        if (resource.id == kMoreExifResource && m_change.removesBlocks())
            return {};
        if (resource.id == kIptcResource && m_change.touchesIptc()) {
            const bool isRepeated = std::exchange(m_hasIptc, true);
            return isRepeated ? Result<void>()
                              : put(std::move(resource), [this](const QByteArray& block) {
                                    return changedIptc(block, m_change);
                                });
        }
        if (resource.id == kXmpResource)
            return put(std::move(resource), [this](const QByteArray& packet) {
                return Result<QByteArray>(changedXmpOrNote(packet, m_change, m_notes));
            });
        const bool tellsOfLayers = // whether the layers stand in the file joined as well
            resource.id == kVersionResource && m_adds == ResourceBlocks::IptcAndExif;
        if (!m_change.dropsEverything || belongsToImage(resource.id) || tellsOfLayers)
            m_kept.push_back(std::move(resource));
        return {};
    }

    template <class Change> Result<void> put(Resource resource, const Change& change) {
        auto changed = change(resource.data);
        if (!changed)
            return tl::unexpected(changed.error());
        m_changesIptc =
            m_changesIptc || (resource.id == kIptcResource && *changed != resource.data);
        resource.data = std::move(*changed);
        if (!resource.data.isEmpty())
            m_kept.push_back(std::move(resource));
        return {};
    }

    Result<void> addMissing() {
        const auto head = [](std::uint16_t id) {
            return QByteArrayLiteral("8BIM") + bytes16(id) + bytes16(0);
        };
        if (m_adds != ResourceBlocks::None && !m_hasIptc && !m_change.iptc.empty()) {
            if (auto done =
                    put({kIptcResource, head(kIptcResource), {}},
                        [this](const QByteArray& none) { return changedIptc(none, m_change); });
                !done)
                return done;
        }
        if (m_adds != ResourceBlocks::IptcAndExif || m_hasExif || !m_change.setsTags())
            return {};
        return put({kExifResource, head(kExifResource), {}},
                   [this](const QByteArray& none) { return changedTiffBlock(none, m_change); });
    }

    [[nodiscard]] QByteArray ownBlock() const {
        for (const Resource& resource : m_kept)
            if (resource.id == kIptcResource)
                return resource.data;
        return {};
    }

    /// The checksum by which programs see whether IPTC or XMP was changed last.
    void renewDigest() {
        if (m_countsOwn && m_changesIptc)
            m_counted = ownBlock();
        if (!m_counted)
            return;
        for (auto at = m_kept.begin(); at != m_kept.end();) {
            if (at->id == kIptcDigest && m_counted->isEmpty()) {
                at = m_kept.erase(at);
                continue;
            }
            if (at->id == kIptcDigest)
                at->data = QCryptographicHash::hash(*m_counted, QCryptographicHash::Md5);
            ++at;
        }
    }

    const PhotoChange& m_change;
    ResourceBlocks m_adds;
    Notes& m_notes;
    std::vector<Resource> m_kept;
    std::optional<QByteArray> m_counted; ///< the block of the new checksum; nothing: it stays
    bool m_countsOwn = true;
    bool m_hasExif = false, m_hasIptc = false, m_changesIptc = false;
};

} // namespace

Result<QByteArray> changedIptc(const QByteArray& block, const PhotoChange& change) {
    if (change.dropsIptc || change.dropsEverything)
        return QByteArray();
    auto sets = parsed(block);
    if (!sets)
        return tl::unexpected(sets.error());
    const IptcChanges changes = withRepeatedTags(change, *sets);
    if (changes.empty())
        return block;
    // Without the sign that texts are UTF-8 readers take them for one of many encodings.
    if (needsUtf8(changes) && !saysUtf8(*sets))
        becomeUtf8(*sets);
    for (const auto& [number, texts] : changes)
        replace(*sets, number, texts);
    const bool anyText = std::any_of(sets->begin(), sets->end(), [](const DataSet& set) {
        return set.record == kApplication && set.number != 0;
    });
    return anyText ? rendered(*sets) : QByteArray();
}

Result<QByteArray> changedImageResources(const QByteArray& bytes, const PhotoChange& change,
                                         ResourceBlocks adds, Notes& notes) {
    auto resources = parsedResources(bytes);
    if (!resources)
        return tl::unexpected(resources.error());
    return ResourceChange(change, adds, notes).run(std::move(*resources));
}

Result<QByteArray> changedImageResourcesBeside(const std::optional<QByteArray>& changed,
                                               const QByteArray& bytes, const PhotoChange& change,
                                               Notes& notes) {
    auto resources = parsedResources(bytes);
    if (!resources)
        return tl::unexpected(resources.error());
    return ResourceChange(change, ResourceBlocks::None, notes)
        .countingElsewhere(changed)
        .run(std::move(*resources));
}

} // namespace clipheave::platform
