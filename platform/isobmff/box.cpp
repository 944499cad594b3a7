// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/box.h"

#include "platform/isobmff/messages.h"

#include <algorithm>

namespace clipheave::platform {

namespace {

constexpr std::uint64_t kShortHeader = 8;
constexpr std::uint64_t kLongHeader = 16;
constexpr int kWholeWindows = 2;
constexpr std::uint64_t kFetchAlignment = 4096;

bool onlyZeros(ByteView bytes) {
    return std::all_of(bytes.data(), bytes.data() + bytes.size(),
                       [](std::uint8_t byte) { return byte == 0; });
}

Message badBoxProblem(std::uint64_t offset) {
    return {kNotABox, {QString::number(offset)}};
}

Message cutBoxProblem(const Box& box) {
    return {kBoxBeyondEnd, {fourCcText(box.type), QString::number(box.offset)}};
}

} // namespace

QString fourCcText(std::uint32_t code) {
    const char bytes[4] = {static_cast<char>(code >> 24), static_cast<char>(code >> 16),
                           static_cast<char>(code >> 8), static_cast<char>(code)};
    return QString::fromLatin1(bytes, 4);
}

std::optional<Box> parseBoxHeader(ByteView head, std::uint64_t offset, std::uint64_t available) {
    const auto shortSize = head.be32(0);
    const auto type = head.be32(4);
    if (!shortSize || !type || available < kShortHeader)
        return std::nullopt;
    Box box;
    box.type = *type;
    box.offset = offset;
    box.size = *shortSize;
    if (*shortSize == 0) {
        box.toEnd = true;
        box.size = available;
    } else if (*shortSize == 1) {
        const auto longSize = head.be64(kShortHeader);
        if (!longSize || available < kLongHeader)
            return std::nullopt;
        box.size = *longSize;
        box.headerSize = kLongHeader;
    }
    if (box.size < box.headerSize)
        return std::nullopt;
    box.cut = box.size > available;
    box.size = std::min(box.size, available);
    return box;
}

std::optional<Box> BoxWalker::next() {
    const ByteView rest = m_bytes.sub(m_position);
    if (rest.empty())
        return std::nullopt;
    const bool terminator = rest.be32(0).value_or(0) == 0 && rest.be32(4).value_or(0) == 0;
    if (terminator && onlyZeros(rest.sub(0, kShortHeader)))
        return std::nullopt;
    const auto box = parseBoxHeader(rest, m_base + m_position, rest.size());
    if (!box || ++m_count > kMaxBoxesPerWalk) {
        m_problem = box ? Message(kTooManyBoxes) : badBoxProblem(m_base + m_position);
        m_position = m_bytes.size();
        return std::nullopt;
    }
    if (box->cut)
        m_problem = cutBoxProblem(*box);
    m_position += box->size;
    return box;
}

bool HeaderReader::fetch(std::uint64_t offset, std::uint64_t length) {
    if (m_reader.bytesFetched() - m_fetchedBefore > kMaxFetched)
        return false;
    if (m_windowsUsed < kWholeWindows && length <= FileReader::kWindow) {
        ++m_windowsUsed;
        const std::uint64_t start = offset - offset % kFetchAlignment;
        const bool fits = length <= FileReader::kWindow - (offset - start);
        m_offset = fits ? start : offset;
        m_bytes = m_reader.viewUpTo(m_offset, FileReader::kWindow);
        return true;
    }
    const std::uint64_t wanted = std::min(std::max(length, kStep), m_reader.size() - offset);
    Result<QByteArray> bytes = m_reader.read(offset, wanted);
    m_buffer = bytes ? std::move(*bytes) : QByteArray();
    m_offset = offset;
    m_bytes = m_buffer;
    return bytes.has_value();
}

ByteView HeaderReader::view(std::uint64_t offset, std::uint64_t length) {
    if (length > kMaxView || offset > m_reader.size() || length > m_reader.size() - offset)
        return {};
    const auto held = [&] { return offset >= m_offset && m_bytes.has(offset - m_offset, length); };
    if (!held() && !(fetch(offset, length) && held()))
        return {};
    return m_bytes.sub(offset - m_offset, length);
}

QByteArray HeaderReader::copy(std::uint64_t offset, std::uint64_t length) {
    m_bytes = {}; // the window may move
    return m_reader.read(offset, length).value_or(QByteArray());
}

ByteView HeaderReader::viewUpTo(std::uint64_t offset, std::uint64_t length) {
    if (offset >= m_reader.size())
        return {};
    return view(offset, std::min({length, m_reader.size() - offset, kMaxView}));
}

FileBoxWalker::FileBoxWalker(HeaderReader& reader, std::uint64_t begin, std::uint64_t end,
                             std::uint64_t maxBoxes)
    : m_reader(reader), m_position(begin), m_end(std::min(end, reader.size())), m_left(maxBoxes) {
}

std::optional<Box> FileBoxWalker::next() {
    if (m_position >= m_end)
        return std::nullopt;
    const std::uint64_t available = m_end - m_position;
    const ByteView head = m_reader.viewUpTo(m_position, std::min(available, kLongHeader));
    if (head.size() >= 4 && onlyZeros(head.sub(0, kShortHeader)))
        return std::nullopt;
    const auto box = parseBoxHeader(head, m_position, available);
    if (!box || m_left == 0) {
        m_problem = box ? Message(kTooManyBoxes) : badBoxProblem(m_position);
        m_position = m_end;
        return std::nullopt;
    }
    --m_left;
    if (box->cut)
        m_problem = cutBoxProblem(*box);
    m_position = box->end();
    return box;
}

ByteView findPayload(ByteView bytes, std::initializer_list<std::uint32_t> path) {
    for (const std::uint32_t type : path) {
        BoxWalker walker(bytes);
        std::optional<Box> box = walker.next();
        while (box && box->type != type)
            box = walker.next();
        if (!box)
            return {};
        bytes = walker.payload(*box);
    }
    return bytes;
}

std::uint64_t metaChildrenOffset(ByteView payload) {
    constexpr std::uint32_t kSmallestBox = 8;
    const bool plain =
        payload.be32(4) == fourCc("hdlr") || payload.be32(0).value_or(0) >= kSmallestBox;
    return plain ? 0 : 4;
}

QString unpackLanguage(std::uint16_t packed) {
    QString text;
    for (const int shift : {10, 5, 0}) {
        const int letter = packed >> shift & 0x1F;
        if (letter < 1 || letter > 26)
            return {};
        text += QLatin1Char(static_cast<char>(0x60 + letter));
    }
    return text;
}

} // namespace clipheave::platform
