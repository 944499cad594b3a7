// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/audio_facts.h"
#include "platform/formats/flac/flac_blocks.h"
#include "platform/formats/flac/flac_foreign_tag.h"
#include "platform/formats/flac/flac_picture.h"
#include "platform/formats/flac/vorbis_comment.h"
#include "platform/formats/format_readers.h"
#include "platform/formats/messages.h"
#include "platform/formats/mpeg/id3_contents.h"

namespace clipheave::platform {
namespace {

struct FlacHeaders {
    ByteRange streamInfo{QByteArray()};
    QList<NamedTag> tags;
    std::optional<FlacPicture> cover;
    std::uint64_t audioStart = 0;
    Message problem;
};

/// The first front cover, else the first image.
void considerCover(FlacHeaders& headers, const ByteRange& body) {
    const auto image = parseFlacPicture(body);
    const bool better = image && (!headers.cover || (image->type == FlacPicture::kFrontCover &&
                                                     headers.cover->type != image->type));
    if (better)
        headers.cover = image;
}

FlacHeaders readFlacHeaders(FileReader& reader, std::uint64_t at) {
    FlacHeaders headers;
    const FlacBlocksEnd end = visitFlacBlocks(reader, at, [&](const FlacBlock& block) {
        const ByteRange body = block.body(reader);
        if (block.type == FlacBlockType::StreamInfo && headers.streamInfo.size() == 0)
            headers.streamInfo = body;
        else if (block.type == FlacBlockType::VorbisComment && headers.tags.isEmpty())
            headers.tags = tagsOfVorbisComment(body);
        else if (block.type == FlacBlockType::Picture)
            considerCover(headers, body);
    });
    headers.audioStart = end.offset;
    if (end.reason == FlacBlocksEnd::Reason::Damaged)
        headers.problem = kFlacBlockDamaged;
    return headers;
}

void setFlacAudio(MediaFacts& facts, const FlacHeaders& headers, std::uint64_t audioBytes) {
    const auto packed = headers.streamInfo.view(0, 34).be64(10);
    if (!packed) {
        facts.problem = kNoFlacStreamInfo;
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
    const auto start = findFlacSignature(reader);
    if (!start)
        return failure(ErrorCode::InvalidData, kReadFlac, reader.path(), kSignatureMissing);
    const FlacHeaders headers = readFlacHeaders(reader, *start + 4);
    const auto foreign = flacForeignItems(reader, *start, headers.audioStart);
    facts.problem = headers.problem;
    setFlacAudio(facts, headers, reader.size() - headers.audioStart);
    facts.id3TagSize = readId3(ByteRange(reader, 0, *start)).tagSize;
    facts.infoDictionary = infoFromTags(headers.tags);
    addMissingInfo(facts.infoDictionary, infoFromId3(foreign));
    facts.metadata = itemsFromTags(headers.tags);
    if (headers.cover)
        facts.metadata.append(
            AVMetadataItem::make(QStringLiteral("org.id3"), QStringLiteral("APIC"),
                                 QStringLiteral("id3/APIC"), headers.cover->data.value()));
    addMissingItems(facts.metadata, foreign);
    facts.albumArtwork = artworkOf(reader, facts.metadata);
    return facts;
}

} // namespace clipheave::platform
