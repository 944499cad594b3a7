// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/audio_facts.h"
#include "platform/formats/format_readers.h"
#include "platform/formats/messages.h"
#include "platform/formats/mpeg/id3_contents.h"
#include "platform/formats/mpeg/id3_header.h"
#include "platform/formats/mpeg/mpeg_header.h"
#include "platform/formats/mpeg/trailing_tags.h"

namespace clipheave::platform {
namespace {

/// The first tag of the file counts; `end` is where the last one in a row ends.
struct LeadingTags {
    Id3Contents id3;
    std::uint64_t end = 0;
    bool found = false;
};

LeadingTags readLeadingTags(FileReader& reader) {
    LeadingTags tags;
    tags.end = visitLeadingId3(reader, [&tags](const ByteRange& tag) {
        if (!tags.found)
            tags.id3 = readId3(tag);
        tags.found = true;
    });
    return tags;
}

/// Formats that real files carry behind an ID3 tag.
std::optional<Result<MediaFacts>> readBehindTag(FileReader& reader, std::uint64_t at) {
    const ByteView head = reader.viewUpTo(at, 4);
    if (head.startsWith("fLaC"))
        return readFlac(reader);
    for (const char* mark : {"OggS", "TTA1", "MAC ", "MP+", "MPCK", "wvpk"}) {
        if (head.startsWith(mark))
            return readTagged(reader);
    }
    return std::nullopt;
}

/// AAC with ADTS headers (ISO/IEC 13818-7, 6.2), AC-3, DTS and containers: other readers take
/// those.
bool isOtherAudio(ByteView head) {
    const auto mark = head.be16(0).value_or(0);
    if ((mark & 0xFFF6) == 0xFFF0 || mark == 0x0B77 || mark == 0x7FFE)
        return true;
    for (const char* name : {"OggS", "RIFF", "FORM", "caff", "tBaK", "fLaC", "TTA", "#!AMR"}) {
        if (head.startsWith(name))
            return true;
    }
    return false;
}

QString mpegCodecName(const MpegFrameHeader& header) {
    return QStringLiteral("mp%1").arg(header.layer);
}

} // namespace

Result<MediaFacts> readMpegAudio(FileReader& reader) {
    LeadingTags leading = readLeadingTags(reader);
    if (leading.found && leading.end < reader.size()) {
        if (auto other = readBehindTag(reader, leading.end); other && *other)
            return std::move(*other);
    }
    MediaFacts facts;
    facts.container = Container::MpegAudio;
    facts.id3TagSize = leading.id3.tagSize;
    // Before the tags at the end, while the window still holds the start of the file.
    const ByteRange audio(reader, leading.end, UINT64_MAX);
    const bool other = isOtherAudio(audio.view(0, 8));
    auto stream = other ? std::nullopt : readMpegStream(audio);
    const std::uint64_t start = reader.size() - audio.size();
    const TrailingTags trailing = readTrailingTags(reader, stream ? start + stream->offset : start);
    if (stream)
        setAudioSize(*stream, trailing.audioEnd - start);
    if (stream) {
        setAudio(facts, {mpegCodecName(stream->header), stream->durationSeconds, stream->bitRate,
                         static_cast<double>(stream->header.sampleRate), stream->header.channels});
    } else if (other) {
        facts.container = Container::Other;
    } else {
        facts.problem = kNoMpegFrame;
    }
    facts.metadata = std::move(leading.id3.items);
    addTrailingTags(trailing, facts);
    if (!stream && !leading.found && facts.metadata.isEmpty())
        return failure(ErrorCode::InvalidData, kReadMpegAudio, reader.path(), kNoMpegFrameAndNoTag);
    return facts;
}

} // namespace clipheave::platform
