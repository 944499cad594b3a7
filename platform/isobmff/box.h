// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_reader.h"

#include <QString>

#include <cstdint>
#include <initializer_list>
#include <optional>

// Boxes ("atoms") of ISO base media and QuickTime files. Source: ISO/IEC 14496-12 section 4.2 and
// the QuickTime File Format's chapter on atoms. Nothing here recurses: a parser goes down by making
// a walker of a box's payload, so the depth is that of the parser's own knowledge.
namespace clipheave::platform {

/// A four-character code as the big-endian number that a file holds; bytes as in the literal, so
/// fourCc("\xA9nam") is ©nam.
constexpr std::uint32_t fourCc(const char (&code)[5]) {
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i)
        value = value << 8 | static_cast<std::uint8_t>(code[i]);
    return value;
}
/// Byte by byte as Latin-1, so A9 becomes U+00A9.
[[nodiscard]] QString fourCcText(std::uint32_t code);

/// Boxes that one walk returns at most; a walk that meets more ends with a problem.
inline constexpr std::uint64_t kMaxBoxesPerWalk = 1u << 16;

/// One box. Offsets count from the start of the file, or from the `base` a walker was given.
struct Box {
    std::uint32_t type = 0;
    std::uint64_t offset = 0; ///< of the header
    std::uint32_t headerSize =
        8;                  ///< 8, or 16 with a 64-bit size; the id of a "uuid" box is payload
    std::uint64_t size = 0; ///< header included, cut at the end of the parent
    bool cut = false;       ///< the box announces more bytes than its parent has
    bool toEnd = false;     ///< the size field is 0: the box reaches to the end of its parent

    [[nodiscard]] std::uint64_t payloadOffset() const { return offset + headerSize; }
    [[nodiscard]] std::uint64_t payloadSize() const { return size - headerSize; }
    [[nodiscard]] std::uint64_t end() const { return offset + size; }
};

/// The header in `head` (16 bytes, or what is left of the parent) of a box with `available` bytes
/// from its start to the end of its parent. Nothing when these bytes cannot begin a box.
[[nodiscard]] std::optional<Box> parseBoxHeader(ByteView head, std::uint64_t offset,
                                                std::uint64_t available);

/// The boxes that stand one after the other in `bytes`.
class BoxWalker {
public:
    /// `base` is added to the offsets; bytes are borrowed.
    explicit BoxWalker(ByteView bytes, std::uint64_t base = 0) : m_bytes(bytes), m_base(base) {}

    /// The next box; nothing at the end or where the bytes make no sense. The 32-bit zero that ends
    /// a QuickTime user data list, and zeros after it, are an end without problem.
    [[nodiscard]] std::optional<Box> next();
    /// The bytes behind the header, and the box with its header, of a box from next().
    [[nodiscard]] ByteView payload(const Box& box) const {
        return m_bytes.sub(box.payloadOffset() - m_base, box.payloadSize());
    }
    [[nodiscard]] ByteView whole(const Box& box) const {
        return m_bytes.sub(box.offset - m_base, box.size);
    }
    /// Why the walk is incomplete; null when all is well so far.
    [[nodiscard]] const Message& problem() const { return m_problem; }

private:
    ByteView m_bytes;
    std::uint64_t m_base = 0;
    std::uint64_t m_position = 0;
    std::uint64_t m_count = 0;
    Message m_problem;
};

/// Headers of a file that lie far apart, fetched by few and small reads: one window for the start
/// of the file, one for the first jump (the movie header at the end), then `kStep` bytes at a time.
/// Not to be used alternately with the reader it stands on.
class HeaderReader {
public:
    static constexpr std::uint64_t kStep = 8u << 10;
    static constexpr std::uint64_t kMaxView = 1u << 20;
    /// No honest file needs more; a hostile one must not make us read all of it.
    static constexpr std::uint64_t kMaxFetched = 32u << 20;

    enum class Home { File, Memory };

    explicit HeaderReader(FileReader& reader, Home home = Home::File)
        : m_reader(reader), m_home(home), m_fetchedBefore(reader.bytesFetched()) {}

    [[nodiscard]] std::uint64_t size() const { return m_reader.size(); }
    [[nodiscard]] const QString& path() const { return m_reader.path(); }
    /// Returns whether bytes must be taken now: no slice of path() would give them later.
    [[nodiscard]] bool isInMemory() const { return m_home == Home::Memory; }
    /// Returns a copy of bytes of any number, empty when the file is shorter.
    [[nodiscard]] QByteArray copy(std::uint64_t offset, std::uint64_t length);
    /// `length` bytes at `offset`, borrowed until the next call; empty when the file is shorter,
    /// the length is over kMaxView or kMaxFetched is reached.
    [[nodiscard]] ByteView view(std::uint64_t offset, std::uint64_t length);
    /// The same, cut at the end of the file and at kMaxView.
    [[nodiscard]] ByteView viewUpTo(std::uint64_t offset, std::uint64_t length);

private:
    [[nodiscard]] bool fetch(std::uint64_t offset, std::uint64_t length);

    FileReader& m_reader;
    Home m_home;
    std::uint64_t m_fetchedBefore;
    int m_windowsUsed = 0;
    std::uint64_t m_offset = 0; ///< of m_bytes in the file
    ByteView m_bytes;           ///< the reader's window or m_buffer
    QByteArray m_buffer;
};

/// The boxes that stand one after the other in a range of a file. Reads headers only.
class FileBoxWalker {
public:
    /// The whole file.
    explicit FileBoxWalker(HeaderReader& reader, std::uint64_t maxBoxes = kMaxBoxesPerWalk)
        : FileBoxWalker(reader, 0, reader.size(), maxBoxes) {}
    /// The range [begin, end), for the children of a box; cut at the end of the file.
    FileBoxWalker(HeaderReader& reader, std::uint64_t begin, std::uint64_t end,
                  std::uint64_t maxBoxes = kMaxBoxesPerWalk);

    [[nodiscard]] std::optional<Box> next();
    [[nodiscard]] const Message& problem() const { return m_problem; }

private:
    HeaderReader& m_reader;
    std::uint64_t m_position = 0;
    std::uint64_t m_end = 0;
    std::uint64_t m_left = 0;
    Message m_problem;
};

/// The payload of the first box found by going down `path` from the boxes in `bytes`; empty when
/// there is none. For a "meta" in the path see metaChildrenOffset().
[[nodiscard]] ByteView findPayload(ByteView bytes, std::initializer_list<std::uint32_t> path);

/// Where the children of a "meta" payload begin: 0 for the plain box of QuickTime, 4 for the
/// FullBox of ISO base media, whose version and flags are zero.
[[nodiscard]] std::uint64_t metaChildrenOffset(ByteView payload);

/// The packed language of "mdhd" and of the 3GPP boxes: three letters less 0x60 in 5 bits each.
/// Empty when the number is not such a code.
[[nodiscard]] QString unpackLanguage(std::uint16_t packed);

} // namespace clipheave::platform
