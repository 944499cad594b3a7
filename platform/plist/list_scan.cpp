// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/plist/list_scan.h"

#include "platform/plist/messages.h"
#include "platform/plist/property_list.h"

#include <QXmlStreamReader>

#include <algorithm>
#include <optional>
#include <vector>

namespace clipheave::platform {

namespace {

/// Of all values, each reference counted; a value of libplist takes about 64 bytes besides its own.
constexpr std::uint64_t kMostContent = 64u << 20;
constexpr std::uint64_t kBytesOfValue = 64;

tl::unexpected<Error> refusal(ErrorCode code, const Message& reason) {
    return failure(code, kReadPropertyList, {}, reason);
}
tl::unexpected<Error> noList() {
    return refusal(ErrorCode::InvalidData, kNoPropertyList);
}
tl::unexpected<Error> tooDeep() {
    return refusal(ErrorCode::LimitExceeded,
                   Message(kPropertyListTooDeep, {QString::number(kMostPropertyListLevels)}));
}
tl::unexpected<Error> tooLarge() {
    return refusal(ErrorCode::LimitExceeded, kPropertyListTooLarge);
}

/// Counts what a walk through the elements enters.
class XmlLevels {
public:
    Result<void> enter(QStringView name) {
        ++m_elements;
        ++m_open;
        if (isContainer(name))
            ++m_containers;
        // Below "plist" the innermost container has values.
        if (m_containers > kMostPropertyListLevels || m_open > kMostPropertyListLevels + 2)
            return tooDeep();
        if (m_elements > kMostContent / kBytesOfValue)
            return tooLarge();
        return {};
    }
    void leave(QStringView name) {
        --m_open;
        if (isContainer(name))
            --m_containers;
    }

private:
    static bool isContainer(QStringView name) { return name == u"array" || name == u"dict"; }

    std::uint64_t m_elements = 0;
    int m_open = 0, m_containers = 0;
};

/// The end of a binary list: how it is laid out.
struct Trailer {
    std::uint64_t offsetBytes, referenceBytes, objects, root, offsetTable;
};
constexpr std::uint64_t kTrailerBytes = 32;
constexpr std::uint64_t kHeaderBytes = 8; ///< "bplist00"

std::optional<std::uint64_t> bigEndian(ByteView bytes, std::uint64_t at, std::uint64_t length) {
    if (length == 0 || length > 8 || !bytes.has(at, length))
        return std::nullopt;
    std::uint64_t value = 0;
    for (std::uint64_t i = 0; i < length; ++i)
        value = value << 8 | *bytes.u8(at + i);
    return value;
}

std::optional<Trailer> trailerOf(ByteView bytes) {
    if (bytes.size() < kHeaderBytes + kTrailerBytes)
        return std::nullopt;
    const std::uint64_t at = bytes.size() - kTrailerBytes;
    const Trailer trailer{*bytes.u8(at + 6), *bytes.u8(at + 7), *bytes.be64(at + 8),
                          *bytes.be64(at + 16), *bytes.be64(at + 24)};
    const bool fits = trailer.offsetBytes >= 1 && trailer.offsetBytes <= 8 &&
                      trailer.referenceBytes >= 1 && trailer.referenceBytes <= 8 &&
                      trailer.objects <= at / trailer.offsetBytes && trailer.offsetTable <= at &&
                      trailer.objects * trailer.offsetBytes <= at - trailer.offsetTable;
    return fits && trailer.root < trailer.objects ? std::optional(trailer) : std::nullopt;
}

/// Walks through the objects of a binary list, each once.
class BinaryWalk {
public:
    BinaryWalk(ByteView bytes, const Trailer& trailer)
        : m_bytes(bytes), m_trailer(trailer), m_extents(trailer.objects) {}

    Result<void> check() {
        if (auto walked = walk(m_trailer.root, 0); !walked)
            return walked;
        return m_extents[m_trailer.root].content > kMostContent ? tooLarge() : Result<void>();
    }

private:
    enum class State : std::uint8_t { New, Entered, Known };
    /// How far an object reaches with all that it holds.
    struct Extent {
        std::uint64_t content = kBytesOfValue; ///< bytes, with a copy for each reference
        int levels = 0;                        ///< containers within each other, itself included
        State state = State::New;
    };
    struct Object {
        bool isContainer = false;
        std::uint64_t references = 0; ///< of a container
        std::uint64_t start = 0;      ///< of its payload
        std::uint64_t bytes = 0;      ///< of a scalar's payload
    };

    /// Returns the object's kind and size; nothing when it reaches out of the list.
    [[nodiscard]] std::optional<Object> objectAt(std::uint64_t index) const {
        const auto at = bigEndian(m_bytes, m_trailer.offsetTable + index * m_trailer.offsetBytes,
                                  m_trailer.offsetBytes);
        const auto marker = at ? m_bytes.u8(*at) : std::nullopt;
        if (!marker)
            return std::nullopt;
        const unsigned kind = *marker >> 4;
        std::uint64_t count = *marker & 0x0F, start = *at + 1;
        if (kind < 4) // single values, integers, reals, dates
            return Object{false, 0, start, std::uint64_t{1} << (count & 7)};
        if (count == 0x0F && kind != 8) {
            const auto size = m_bytes.u8(start);
            if (!size || *size >> 4 != 1)
                return std::nullopt;
            const std::uint64_t length = std::uint64_t{1} << (*size & 0x0F);
            const auto stated = bigEndian(m_bytes, start + 1, length);
            if (!stated)
                return std::nullopt;
            count = *stated;
            start += 1 + length;
        }
        return sized(kind, count, start);
    }
    /// `count` is of bytes, of characters, of items or of pairs.
    [[nodiscard]] std::optional<Object> sized(unsigned kind, std::uint64_t count,
                                              std::uint64_t start) const {
        constexpr unsigned kUtf16 = 6, kArray = 10, kDictionary = 13;
        const bool isContainer = kind >= kArray;
        const std::uint64_t parts = kind == kDictionary || kind == kUtf16 ? 2 : 1;
        const std::uint64_t unit = isContainer ? m_trailer.referenceBytes : 1;
        if (start > m_bytes.size() || count > (m_bytes.size() - start) / (parts * unit))
            return std::nullopt;
        if (isContainer)
            return Object{true, count * parts, start, 0};
        return Object{false, 0, start, count * parts};
    }

    /// `above`: containers around the object.
    Result<void> walk(std::uint64_t index, int above) {
        if (index >= m_trailer.objects)
            return noList();
        Extent& extent = m_extents[index];
        if (extent.state == State::Entered)
            return refusal(ErrorCode::InvalidData, kPropertyListHoldsItself);
        if (extent.state == State::Known)
            return above + extent.levels > kMostPropertyListLevels ? tooDeep() : Result<void>();
        const auto object = objectAt(index);
        if (!object)
            return noList();
        extent.state = State::Entered;
        extent.content += object->bytes;
        if (object->isContainer)
            if (auto walked = walkInto(*object, extent, above + 1); !walked)
                return walked;
        extent.state = State::Known;
        return {};
    }
    Result<void> walkInto(const Object& container, Extent& extent, int level) {
        if (level > kMostPropertyListLevels)
            return tooDeep();
        extent.levels = 1;
        for (std::uint64_t i = 0; i < container.references; ++i) {
            const auto child = bigEndian(m_bytes, container.start + i * m_trailer.referenceBytes,
                                         m_trailer.referenceBytes);
            if (!child)
                return noList();
            if (auto walked = walk(*child, level); !walked)
                return walked;
            extent.levels = std::max(extent.levels, 1 + m_extents[*child].levels);
            extent.content = std::min(extent.content + m_extents[*child].content, kMostContent + 1);
        }
        return {};
    }

    const ByteView m_bytes;
    const Trailer m_trailer;
    std::vector<Extent> m_extents;
};

} // namespace

Result<void> checkXmlList(const QString& text) {
    QXmlStreamReader reader(text);
    XmlLevels levels;
    while (!reader.atEnd()) {
        const auto token = reader.readNext();
        if (token == QXmlStreamReader::DTD && reader.text().contains(u'['))
            return refusal(ErrorCode::InvalidData, kPropertyListDeclares);
        if (token == QXmlStreamReader::EndElement)
            levels.leave(reader.qualifiedName());
        if (token == QXmlStreamReader::StartElement)
            if (auto entered = levels.enter(reader.qualifiedName()); !entered)
                return entered;
    }
    return reader.hasError() ? noList() : Result<void>();
}

Result<void> checkBinaryList(ByteView bytes) {
    const auto trailer = trailerOf(bytes);
    return trailer ? BinaryWalk(bytes, *trailer).check() : noList();
}

} // namespace clipheave::platform
