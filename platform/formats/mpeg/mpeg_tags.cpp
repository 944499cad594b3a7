// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/mpeg/mpeg_tags.h"

#include "platform/formats/messages.h"
#include "platform/formats/mpeg/ape_tag.h"
#include "platform/formats/mpeg/id3_frames.h"
#include "platform/formats/mpeg/id3_header.h"
#include "platform/formats/mpeg/mpeg_header.h"
#include "platform/formats/mpeg/tag_footers.h"
#include "platform/foundation/unchanged_files.h"

#include <array>

namespace clipheave::platform {

namespace {

constexpr int kMostTags = 64; // on either side; files that tools have tagged again and again
constexpr int kMostFramesWalked = 1 << 16;
constexpr std::uint64_t kLyrics3v1Largest = 5100 + 20;
constexpr std::uint32_t kMostApeItemsWalked = 1 << 16;

tl::unexpected<Error> unsafeTag(const FileReader& reader, MessageCode why) {
    return failure(ErrorCode::InvalidData, kFindTags, reader.path(), why);
}

/// Returns where the frames of a tag end as far as they can be followed.
std::uint64_t endOfFrames(const ByteRange& tag, int version) {
    const ByteRange frames = tag.sub(Id3Header::kSize);
    std::uint64_t at = 0;
    for (int i = 0; i < kMostFramesWalked; ++i) {
        const auto frame = id3FrameHeaderAt(frames, at, version);
        if (!frame || frame->bodySize > frames.size() - at - frame->headerSize)
            break;
        at += frame->headerSize + frame->bodySize;
    }
    return Id3Header::kSize + at;
}

/// A size that was written wrong, or a file cut inside its tag and joined again: what stands behind
/// the frames is not padding but audio.
bool coversAudio(FileReader& reader, std::uint64_t start, const Id3Header& header) {
    const ByteRange tag(reader, start, header.totalSize);
    return readMpegStream(tag.sub(endOfFrames(tag, header.version))).has_value();
}

Result<std::uint64_t> leadingId3Size(FileReader& reader, std::uint64_t at) {
    const auto header = id3HeaderAt(reader, at);
    if (!header)
        return unsafeTag(reader, kLeadingTagDamaged);
    if (header->totalSize > reader.size() - at)
        return unsafeTag(reader, kLeadingTagBeyondFile);
    if (coversAudio(reader, at, *header))
        return unsafeTag(reader, kLeadingTagCoversAudio);
    return header->totalSize;
}

/// Returns the bytes of the tag that begins at `at`; 0 when none does.
Result<std::uint64_t> leadingTagSize(FileReader& reader, std::uint64_t at) {
    const ByteView head = reader.viewUpTo(at, ApeTagEdge::kSize);
    if (head.startsWith("ID3"))
        return leadingId3Size(reader, at);
    const auto ape = parseApeTagEdge(head);
    if (!ape || !ape->isHeader)
        return 0;
    const std::uint64_t size = ApeTagEdge::kSize + ape->tagSize;
    if (size > reader.size() - at)
        return unsafeTag(reader, kApeTagBeyondFile);
    return size;
}

bool startsWithAt(FileReader& reader, std::uint64_t at, QByteArrayView text) {
    return reader.viewUpTo(at, static_cast<std::uint64_t>(text.size())).startsWith(text);
}

/// Bytes of an ID3v1 tag with its enhanced block before `end`.
std::uint64_t id3v1Bytes(FileReader& reader, std::uint64_t from, std::uint64_t end) {
    if (end - from < kId3v1Size || !startsWithAt(reader, end - kId3v1Size, "TAG"))
        return 0;
    const std::uint64_t both = kId3v1Size + kId3v1EnhancedSize;
    return end - from >= both && startsWithAt(reader, end - both, "TAG+") ? both : kId3v1Size;
}

/// The items of an APE tag without a header fill it exactly.
bool apeItemsFill(const ByteRange& items, std::uint32_t count) {
    std::uint64_t at = 0;
    for (std::uint32_t i = 0; i < std::min(count, kMostApeItemsWalked) && at < items.size(); ++i) {
        const auto item = parseApeItemHeader(items.view(at, ApeItemHeader::kLargest));
        if (!item)
            return false;
        at += item->size() + item->valueSize;
    }
    return at == items.size();
}

/// APE tag versions 1000 and 2000: items, then a footer; in version 2000 usually a header too.
std::uint64_t apeBytes(FileReader& reader, std::uint64_t from, std::uint64_t end) {
    constexpr std::uint64_t kEdge = ApeTagEdge::kSize;
    if (end - from < kEdge)
        return 0;
    const auto footer = parseApeTagEdge(reader.viewUpTo(end - kEdge, kEdge));
    if (!footer || footer->isHeader)
        return 0;
    const std::uint64_t size = footer->tagSize;
    const std::uint64_t header = footer->hasHeader ? kEdge : 0;
    if (size < kEdge || size + header > end - from)
        return 0;
    if (footer->hasHeader)
        return startsWithAt(reader, end - size - header, "APETAGEX") ? size + header : 0;
    return apeItemsFill(ByteRange(reader, end - size, size - kEdge), footer->itemCount) ? size : 0;
}

/// Lyrics3 of version 2.00, and the one before it, which "LYRICSEND" alone ends.
std::uint64_t lyrics3Bytes(FileReader& reader, std::uint64_t from, std::uint64_t end) {
    constexpr QByteArrayView kBegin("LYRICSBEGIN");
    if (end - from < 20)
        return 0;
    const ByteView tail = reader.viewUpTo(end - kLyrics3FooterSize, kLyrics3FooterSize);
    const bool isOld = tail.sub(6).startsWith("LYRICSEND");
    if (const auto size = lyrics3TagSize(tail))
        return *size <= end - from && startsWithAt(reader, end - *size, kBegin) ? *size : 0;
    if (!isOld)
        return 0;
    const std::uint64_t reach = std::min(end - from, kLyrics3v1Largest);
    const qsizetype at = reader.viewUpTo(end - reach, reach).bytes().lastIndexOf(kBegin);
    return at < 0 ? 0 : reach - static_cast<std::uint64_t>(at);
}

/// An ID3v2.4 tag at the end, found by its footer.
std::uint64_t appendedId3Bytes(FileReader& reader, std::uint64_t from, std::uint64_t end) {
    if (end - from < 2 * Id3Header::kSize)
        return 0;
    const auto size = appendedId3TagSize(reader.viewUpTo(end - Id3Header::kSize, Id3Header::kSize));
    return size && *size <= end - from && startsWithAt(reader, end - *size, "ID3") ? *size : 0;
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

std::uint64_t startOfTrailingTags(FileReader& reader, std::uint64_t from) {
    std::uint64_t end = reader.size();
    for (int i = 0; i < kMostTags && end > from; ++i) {
        const std::uint64_t bytes = trailingTagBytes(reader, from, end);
        if (bytes == 0)
            break;
        end -= bytes;
    }
    return end;
}

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
    audio.end = startOfTrailingTags(reader, audio.start);
    const auto stream = readMpegStream(ByteRange(reader, audio.start, audio.end - audio.start));
    if (!stream)
        return unsafeTag(reader, kNoMpegFrame);
    // A tag behind bytes that are no audio, such as zeros before it.
    if (reader.viewUpTo(audio.start, stream->offset).bytes().contains("ID3"))
        audio.start += stream->offset;
    return audio;
}

Result<void> replaceMpegTags(const QString& source, const QString& target, const QByteArray& tag,
                             const std::function<bool(double)>& progress,
                             AtomicFile::Attributes attributes) {
    auto reader = FileReader::open(source);
    if (!reader)
        return tl::unexpected(reader.error());
    const UnchangedFiles unchanged(*reader);
    const auto audio = findMpegAudio(*reader);
    if (!audio)
        return tl::unexpected(audio.error());
    const std::uint64_t length = audio->end - audio->start;
    auto file = AtomicFile::create(target, static_cast<std::uint64_t>(tag.size()) + length);
    if (!file)
        return tl::unexpected(file.error());
    file->copyExtendedAttributes(reader->fd(), attributes);
    file->takePermissionsOf(FileReference::ofDescriptor(reader->fd()));
    if (auto written = file->write(tag); !written)
        return written;
    const auto report = [&](std::uint64_t done) {
        return !progress || progress(static_cast<double>(done) / static_cast<double>(length));
    };
    if (auto copied = file->copyFrom(reader->fd(), audio->start, length, report); !copied)
        return copied;
    if (auto same = unchanged.check(); !same)
        return same;
    return file->commit();
}

} // namespace clipheave::platform
