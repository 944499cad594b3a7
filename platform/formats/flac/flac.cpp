// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/audio_facts.h"
#include "platform/formats/flac/vorbis_comment.h"
#include "platform/formats/format_readers.h"
#include "platform/formats/mpeg/id3_tag.h"
#include "platform/formats/mpeg/legacy_tags.h"

namespace clipheave::platform {
namespace {

constexpr int kMostFlacBlocks = 4096;
constexpr std::uint32_t kFlacFrontCover = 3;

enum FlacBlock : int { kStreamInfo = 0, kVorbisComment = 4, kPicture = 6, kInvalidBlock = 127 };

struct FlacBlocks {
    ByteRange streamInfo{QByteArray()};
    QList<NamedTag> tags;
    std::optional<FlacPicture> image;
    std::uint64_t audioStart = 0;
    QString problem;
};

/// RFC 9639, section 8: one byte type (top bit: the last), three bytes of size.
FlacBlocks readFlacBlocks(FileReader& reader, std::uint64_t at) {
    FlacBlocks blocks;
    for (int i = 0; i < kMostFlacBlocks; ++i) {
        const auto head = reader.viewUpTo(at, 4).be32(0);
        const std::uint64_t size = head ? *head & 0xFFFFFF : 0;
        const int type = head ? static_cast<int>(*head >> 24 & 0x7F) : kInvalidBlock;
        if (type == kInvalidBlock || size > reader.size() - at - 4) {
            blocks.problem = QStringLiteral("a metadata block of the FLAC file is damaged");
            break;
        }
        const ByteRange body(reader, at + 4, size);
        at += 4 + size;
        if (type == kStreamInfo && blocks.streamInfo.size() == 0)
            blocks.streamInfo = body;
        else if (type == kVorbisComment && blocks.tags.isEmpty())
            blocks.tags = parseVorbisComment(body);
        else if (type == kPicture) {
            const auto image = parseFlacPicture(body);
            const bool better = image && (!blocks.image || (image->type == kFlacFrontCover &&
                                                            blocks.image->type != kFlacFrontCover));
            if (better)
                blocks.image = image;
        }
        if (*head >> 31)
            break;
    }
    blocks.audioStart = at;
    return blocks;
}

void setFlacAudio(MediaFacts& facts, const FlacBlocks& blocks, std::uint64_t audioBytes) {
    const auto packed = blocks.streamInfo.view(0, 34).be64(10);
    if (!packed) {
        facts.problem = QStringLiteral("the FLAC file has no stream information");
        return;
    }
    // 20 bits rate, 3 channels - 1, 5 bits a sample - 1, 36 samples.
    AudioFacts audio;
    audio.codec = QStringLiteral("flac");
    audio.sampleRate = static_cast<double>(*packed >> 44);
    audio.channels = static_cast<int>(*packed >> 41 & 7) + 1;
    const auto samples = static_cast<double>(*packed & 0xFFFFFFFFF);
    if (audio.sampleRate > 0)
        audio.durationSeconds = samples / audio.sampleRate;
    if (audio.durationSeconds > 0)
        audio.bitRate = static_cast<double>(audioBytes) * 8 / audio.durationSeconds;
    setAudio(facts, audio);
}

} // namespace

Result<MediaFacts> readFlac(FileReader& reader) {
    MediaFacts facts;
    facts.container = Container::Flac;
    std::uint64_t start = 0;
    Id3Contents id3;
    if (const auto header = parseId3Header(reader.viewUpTo(0, 10))) {
        id3 = readId3(ByteRange(reader, 0, header->totalSize));
        start = header->totalSize;
    }
    if (!reader.viewUpTo(start, 4).startsWith("fLaC"))
        return failure(ErrorCode::InvalidData, QStringLiteral("read FLAC"), reader.path(),
                       QStringLiteral("the signature is missing"));
    const FlacBlocks blocks = readFlacBlocks(reader, start + 4);
    facts.problem = blocks.problem;
    setFlacAudio(facts, blocks, reader.size() - blocks.audioStart);
    facts.id3TagSize = id3.tagSize;
    facts.infoDictionary = infoFromTags(blocks.tags);
    addMissingInfo(facts.infoDictionary, infoFromId3(id3.items));
    facts.metadata = itemsFromTags(blocks.tags);
    if (blocks.image)
        facts.metadata.append(
            AVMetadataItem::make(QStringLiteral("org.id3"), QStringLiteral("APIC"),
                                 QStringLiteral("id3/APIC"), blocks.image->data.value()));
    addMissingItems(facts.metadata, id3.items);
    facts.albumArtwork = artworkOf(reader, facts.metadata);
    return facts;
}

} // namespace clipheave::platform
