// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/mpeg/mpeg_tags.h"

#include "platform/formats/mpeg/id3_tag.h"
#include "platform/formats/mpeg/mpeg_header.h"
#include "platform/foundation/file_manager.h"

#include <array>

namespace clipheave::platform {

namespace {

constexpr int kMostTags = 64; // on either side; files that tools have tagged again and again
constexpr int kMostFramesWalked = 1 << 16;
constexpr std::uint64_t kId3HeadSize = 10;
constexpr std::uint64_t kId3v1TagSize = 128, kId3v1EnhancedSize = 227;
constexpr std::uint64_t kApeBlockSize = 32;
constexpr std::uint64_t kLyrics3v1Largest = 5100 + 20;
constexpr std::uint32_t kApeHasHeader = 0x80000000, kApeIsHeader = 0x20000000;
constexpr std::uint32_t kMostApeItemsWalked = 1 << 16;

tl::unexpected<Error> unsafeTag(const FileReader& reader, const char16_t* why) {
    return failure(ErrorCode::InvalidData, QStringLiteral("find the tags"), reader.path(),
                   QString::fromUtf16(why));
}

bool isFrameId(ByteView id) {
    for (std::uint64_t i = 0; i < id.size(); ++i) {
        const std::uint8_t c = *id.u8(i);
        if (!(c >= 'A' && c <= 'Z') && !(c >= '0' && c <= '9'))
            return false;
    }
    return !id.empty();
}

std::uint64_t frameBodySize(ByteView head, int version) {
    if (version == 2)
        return head.be32(2).value_or(0) & 0xFFFFFF;
    const std::uint32_t size = head.be32(4).value_or(0);
    if (version == 3 || (size & 0x80808080) != 0) // some writers of v2.4 use plain numbers
        return size;
    return (size & 0x7F) | (size >> 8 & 0x7F) << 7 | (size >> 16 & 0x7F) << 14 |
           (size >> 24 & 0x7F) << 21;
}

/// Where the frames of a tag end as far as they can be followed.
std::uint64_t endOfFrames(const ByteRange& tag, int version) {
    const std::uint64_t idSize = version == 2 ? 3 : 4;
    const std::uint64_t headSize = version == 2 ? 6 : 10;
    std::uint64_t at = kId3HeadSize;
    for (int i = 0; i < kMostFramesWalked && tag.size() - at >= headSize; ++i) {
        const ByteView head = tag.view(at, headSize);
        const std::uint64_t size = frameBodySize(head, version);
        if (!isFrameId(head.sub(0, idSize)) || size > tag.size() - at - headSize)
            break;
        at += headSize + size;
    }
    return at;
}

/// A size that was written wrong, or a file cut inside its tag and joined again: what stands behind
/// the frames is not padding but audio.
bool coversAudio(FileReader& reader, std::uint64_t start, const Id3Header& header) {
    const ByteRange tag(reader, start, header.totalSize);
    return readMpegStream(tag.sub(endOfFrames(tag, header.version))).has_value();
}

/// Bytes of the tag that begins at `at`; 0 when none does.
Result<std::uint64_t> leadingTagSize(FileReader& reader, std::uint64_t at) {
    const ByteView head = reader.viewUpTo(at, kApeBlockSize);
    const std::uint64_t left = reader.size() - std::min(at, reader.size());
    if (head.startsWith("ID3")) {
        const auto header = parseId3Header(head);
        if (!header)
            return unsafeTag(reader, u"the tag at the start is damaged");
        if (header->totalSize > left)
            return unsafeTag(reader, u"the tag at the start is larger than the file");
        if (coversAudio(reader, at, *header))
            return unsafeTag(reader, u"the tag at the start reaches into the sound");
        return header->totalSize;
    }
    const bool isApe = head.startsWith("APETAGEX") && head.size() == kApeBlockSize &&
                       (*head.le32(20) & kApeIsHeader) != 0;
    if (!isApe)
        return 0;
    const std::uint64_t size = kApeBlockSize + *head.le32(12);
    if (size > left)
        return unsafeTag(reader, u"the APE tag at the start is larger than the file");
    return size;
}

bool startsWithAt(FileReader& reader, std::uint64_t at, QByteArrayView text) {
    return reader.viewUpTo(at, static_cast<std::uint64_t>(text.size())).startsWith(text);
}

/// Bytes of an ID3v1 tag with its enhanced block before `end`.
std::uint64_t id3v1Bytes(FileReader& reader, std::uint64_t from, std::uint64_t end) {
    if (end - from < kId3v1TagSize || !startsWithAt(reader, end - kId3v1TagSize, "TAG"))
        return 0;
    const std::uint64_t both = kId3v1TagSize + kId3v1EnhancedSize;
    return end - from >= both && startsWithAt(reader, end - both, "TAG+") ? both : kId3v1TagSize;
}

/// The items of an APE tag without a header fill it exactly.
bool apeItemsFill(FileReader& reader, std::uint64_t at, std::uint64_t end, std::uint32_t count) {
    for (std::uint32_t i = 0; i < std::min(count, kMostApeItemsWalked) && at < end; ++i) {
        const ByteView head = reader.viewUpTo(at, std::min<std::uint64_t>(end - at, 8 + 256));
        const auto size = head.le32(0);
        const qsizetype keyLength = head.sub(8).bytes().indexOf('\0');
        if (!size || keyLength < 1)
            return false;
        at += 9 + static_cast<std::uint64_t>(keyLength) + *size;
    }
    return at == end;
}

/// APE tag versions 1000 and 2000: items, then a footer; in version 2000 usually a header too.
std::uint64_t apeBytes(FileReader& reader, std::uint64_t from, std::uint64_t end) {
    if (end - from < kApeBlockSize)
        return 0;
    const ByteView footer = reader.viewUpTo(end - kApeBlockSize, kApeBlockSize);
    if (!footer.startsWith("APETAGEX") || (footer.le32(20).value_or(0) & kApeIsHeader) != 0)
        return 0;
    const std::uint64_t size = *footer.le32(12);
    const std::uint32_t count = *footer.le32(16);
    const std::uint64_t header = (*footer.le32(20) & kApeHasHeader) != 0 ? kApeBlockSize : 0;
    if (size < kApeBlockSize || size + header > end - from)
        return 0;
    if (header != 0)
        return startsWithAt(reader, end - size - header, "APETAGEX") ? size + header : 0;
    return apeItemsFill(reader, end - size, end - kApeBlockSize, count) ? size : 0;
}

/// Lyrics3: "LYRICSBEGIN" … six digits of size, "LYRICS200"; before that "LYRICSEND" alone.
std::uint64_t lyrics3Bytes(FileReader& reader, std::uint64_t from, std::uint64_t end) {
    if (end - from < 20)
        return 0;
    const ByteView tail = reader.viewUpTo(end - 15, 15);
    if (tail.sub(6).startsWith("LYRICS200")) {
        bool isNumber = false;
        const qulonglong size = tail.sub(0, 6).bytes().toByteArray().toULongLong(&isNumber);
        const bool fits = isNumber && size + 15 <= end - from;
        return fits && startsWithAt(reader, end - 15 - size, "LYRICSBEGIN") ? size + 15 : 0;
    }
    if (!tail.sub(6).startsWith("LYRICSEND"))
        return 0;
    const std::uint64_t reach = std::min(end - from, kLyrics3v1Largest);
    const qsizetype at =
        reader.viewUpTo(end - reach, reach).bytes().lastIndexOf(QByteArrayView("LYRICSBEGIN"));
    return at < 0 ? 0 : reach - static_cast<std::uint64_t>(at);
}

/// An ID3v2.4 tag at the end, found by its footer.
std::uint64_t appendedId3Bytes(FileReader& reader, std::uint64_t from, std::uint64_t end) {
    if (end - from < 2 * kId3HeadSize)
        return 0;
    const ByteView footer = reader.viewUpTo(end - kId3HeadSize, kId3HeadSize);
    const auto header = footer.startsWith("3DI") ? parseId3Header(footer) : std::nullopt;
    const std::uint64_t size = header ? 2 * kId3HeadSize + header->bodySize : 0;
    return size != 0 && size <= end - from && startsWithAt(reader, end - size, "ID3") ? size : 0;
}

/// MusicMatch (up to version 3.1): a header of 256 bytes that may be missing, image, version
/// block of 256 bytes, a data block of one of four sizes, five offsets, a footer of 48 bytes.
std::uint64_t musicMatchBytes(FileReader& reader, std::uint64_t from, std::uint64_t end) {
    constexpr std::uint64_t kFooter = 48, kOffsets = 20, kBlock = 256;
    constexpr std::array<std::uint64_t, 4> kDataSizes{7868, 7936, 8004, 8132};
    constexpr QByteArrayView kSync("18273645");
    if (end - from < kFooter + kOffsets || !startsWithAt(reader, end - kFooter, "Brava Software "))
        return 0;
    const ByteView offsets = reader.viewUpTo(end - kFooter - kOffsets, kOffsets);
    const std::uint64_t image = offsets.le32(0).value_or(0);
    const std::uint64_t versionBlock = offsets.le32(12).value_or(0);
    const std::uint64_t before = versionBlock - std::min(image, versionBlock);
    for (const std::uint64_t data : kDataSizes) {
        const std::uint64_t behind = kFooter + kOffsets + data + kBlock;
        if (behind + before > end - from || !startsWithAt(reader, end - behind, kSync))
            continue;
        const std::uint64_t size = behind + before;
        const bool hasHeader =
            size + kBlock <= end - from && startsWithAt(reader, end - size - kBlock, kSync);
        return hasHeader ? size + kBlock : size;
    }
    return 0;
}

std::uint64_t trailingTagBytes(FileReader& reader, std::uint64_t from, std::uint64_t end) {
    for (const auto& bytesOf :
         {&id3v1Bytes, &apeBytes, &lyrics3Bytes, &appendedId3Bytes, &musicMatchBytes})
        if (const std::uint64_t bytes = bytesOf(reader, from, end))
            return bytes;
    return 0;
}

} // namespace

Result<MpegAudio> findMpegAudio(FileReader& reader) {
    MpegAudio audio;
    for (int i = 0; i < kMostTags; ++i) {
        const auto size = leadingTagSize(reader, audio.start);
        if (!size)
            return tl::unexpected(size.error());
        if (*size == 0)
            break;
        audio.start += *size;
    }
    audio.end = reader.size();
    for (int i = 0; i < kMostTags && audio.end > audio.start; ++i) {
        const std::uint64_t bytes = trailingTagBytes(reader, audio.start, audio.end);
        if (bytes == 0)
            break;
        audio.end -= bytes;
    }
    if (!readMpegStream(ByteRange(reader, audio.start, audio.end - audio.start)))
        return unsafeTag(reader, u"no frame of MPEG audio was found");
    return audio;
}

Result<void> replaceMpegTags(const QString& source, const QString& target, const QByteArray& tag,
                             const std::function<bool(double)>& progress) {
    auto reader = FileReader::open(source);
    if (!reader)
        return tl::unexpected(reader.error());
    const auto audio = findMpegAudio(*reader);
    if (!audio)
        return tl::unexpected(audio.error());
    const std::uint64_t length = audio->end - audio->start;
    auto file = AtomicFile::create(target, static_cast<std::uint64_t>(tag.size()) + length);
    if (!file)
        return tl::unexpected(file.error());
    file->copyExtendedAttributes(reader->fd());
    if (auto written = file->write(tag); !written)
        return written;
    const auto report = [&](std::uint64_t done) {
        return !progress || progress(static_cast<double>(done) / static_cast<double>(length));
    };
    if (auto copied = file->copyFrom(reader->fd(), audio->start, length, report); !copied)
        return copied;
    return file->commit();
}

} // namespace clipheave::platform
