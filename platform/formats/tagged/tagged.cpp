// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/audio_facts.h"
#include "platform/formats/format_readers.h"
#include "platform/formats/messages.h"
#include "platform/formats/mpeg/id3_contents.h"
#include "platform/formats/mpeg/id3_header.h"
#include "platform/formats/mpeg/trailing_tags.h"
#include "platform/formats/tagged/taglib_stream.h"

#include <apefile.h>
#include <asffile.h>
#include <flacpicture.h>
#include <mpcfile.h>
#include <oggflacfile.h>
#include <opusfile.h>
#include <speexfile.h>
#include <trueaudiofile.h>
#include <vorbisfile.h>
#include <wavpackfile.h>

#include <exception>
#include <memory>
#include <vector>

namespace clipheave::platform {
namespace {

constexpr std::uint64_t kOggHead = 512;

QString qt(const TagLib::String& text) {
    return QString::fromStdString(text.to8Bit(true)).trimmed();
}

QByteArray qt(const TagLib::ByteVector& bytes) {
    return {bytes.data(), static_cast<qsizetype>(bytes.size())};
}

void appendImage(QList<AVMetadataItem>& items, const TagLib::ByteVector& bytes) {
    if (!bytes.isEmpty())
        items.append(AVMetadataItem::make(QStringLiteral("org.id3"), QStringLiteral("APIC"),
                                          QStringLiteral("id3/APIC"), qt(bytes)));
}

void setTaggedAudio(MediaFacts& facts, const QString& codec, const TagLib::AudioProperties* from) {
    if (!from)
        return;
    setAudio(facts, {codec, from->lengthInMilliseconds() / 1000.0, from->bitrate() * 1000.0,
                     static_cast<double>(from->sampleRate()), from->channels()});
}

/// The comments of an Ogg stream. Its images are text in base 64 and were decoded by the library;
/// the front cover goes last, where a reader of "the" image finds it.
void addXiphComment(MediaFacts& facts, TagLib::Ogg::XiphComment* comment) {
    if (!comment)
        return;
    QList<NamedTag> tags;
    for (const auto& [name, values] : comment->fieldListMap()) {
        for (const TagLib::String& value : values)
            tags.append({qt(name), qt(value)});
    }
    facts.metadata = itemsFromTags(tags);
    const TagLib::FLAC::Picture* cover = nullptr;
    for (const TagLib::FLAC::Picture* image : comment->pictureList()) {
        if (!cover || (image->type() == TagLib::FLAC::Picture::FrontCover &&
                       cover->type() != TagLib::FLAC::Picture::FrontCover))
            cover = image;
    }
    for (const TagLib::FLAC::Picture* image : comment->pictureList())
        if (image != cover)
            appendImage(facts.metadata, image->data());
    if (cover)
        appendImage(facts.metadata, cover->data());
}

template <class File> MediaFacts oggFacts(TagLibStream& stream, const QString& codec) {
    MediaFacts facts;
    File file(&stream);
    setTaggedAudio(facts, codec, file.audioProperties());
    addXiphComment(facts, dynamic_cast<TagLib::Ogg::XiphComment*>(file.tag()));
    return facts;
}

/// The identification header stands in the first page, after 27 bytes and the segment table.
std::optional<MediaFacts> readOgg(FileReader& reader, TagLibStream& stream) {
    const QByteArray head = reader.viewUpTo(0, kOggHead).toByteArray();
    if (head.contains("\x01vorbis"))
        return oggFacts<TagLib::Ogg::Vorbis::File>(stream, QStringLiteral("vorbis"));
    if (head.contains("OpusHead"))
        return oggFacts<TagLib::Ogg::Opus::File>(stream, QStringLiteral("opus"));
    if (head.contains("Speex   "))
        return oggFacts<TagLib::Ogg::Speex::File>(stream, QStringLiteral("speex"));
    if (head.contains("\x7F"
                      "FLAC"))
        return oggFacts<TagLib::Ogg::FLAC::File>(stream, QStringLiteral("flac"));
    return std::nullopt;
}

MediaFacts readAsf(TagLibStream& stream) {
    MediaFacts facts;
    TagLib::ASF::File file(&stream);
    setTaggedAudio(facts, QStringLiteral("wma"), file.audioProperties());
    const TagLib::ASF::Tag* tag = file.tag();
    if (!tag)
        return facts;
    QList<NamedTag> tags{{QStringLiteral("title"), qt(tag->title())},
                         {QStringLiteral("author"), qt(tag->artist())},
                         {QStringLiteral("copyright"), qt(tag->copyright())},
                         {QStringLiteral("comment"), qt(tag->comment())}};
    std::vector<TagLib::ByteVector> images;
    std::size_t cover = 0;
    bool isFront = false;
    for (const auto& [name, attributes] : tag->attributeListMap()) {
        for (const TagLib::ASF::Attribute& attribute : attributes) {
            if (attribute.type() == TagLib::ASF::Attribute::UnicodeType)
                tags.append({qt(name), qt(attribute.toString())});
            else if (attribute.type() == TagLib::ASF::Attribute::DWordType)
                tags.append({qt(name), QString::number(attribute.toUInt())});
            const TagLib::ASF::Picture image = attribute.toPicture();
            const bool front = image.type() == TagLib::ASF::Picture::FrontCover;
            if (!image.isValid())
                continue;
            if (front && !isFront)
                cover = images.size();
            isFront |= front;
            images.push_back(image.picture());
        }
    }
    facts.metadata = itemsFromTags(tags);
    // The cover goes last, as above.
    for (std::size_t i = 0; i < images.size(); ++i)
        if (i != cover)
            appendImage(facts.metadata, images[i]);
    if (!images.empty())
        appendImage(facts.metadata, images[cover]);
    return facts;
}

/// DSF: 28 bytes of "DSD " chunk with the place of an ID3v2 tag at 20, then the format chunk.
MediaFacts readDsf(FileReader& reader) {
    MediaFacts facts;
    const ByteView head = reader.viewUpTo(0, 80);
    AudioFacts audio;
    audio.codec = QStringLiteral("dsd");
    audio.channels = static_cast<int>(std::min<std::uint32_t>(head.le32(52).value_or(0), 0xFFFF));
    audio.sampleRate = head.le32(56).value_or(0);
    if (audio.sampleRate > 0)
        audio.durationSeconds = static_cast<double>(head.le64(64).value_or(0)) / audio.sampleRate;
    audio.bitRate = audio.sampleRate * audio.channels;
    setAudio(facts, audio);
    const std::uint64_t tag = head.le64(20).value_or(0);
    if (tag != 0) {
        const Id3Contents id3 = readId3(ByteRange(reader, tag, UINT64_MAX));
        facts.metadata = id3.items;
        facts.id3TagSize = id3.tagSize;
    }
    return facts;
}

/// Audio from the library, tags from our own readers: they keep the years apart and leave images
/// in the file.
template <class File>
MediaFacts apeTaggedFacts(FileReader& reader, TagLibStream& stream, const QString& codec) {
    MediaFacts facts;
    const File file(&stream);
    setTaggedAudio(facts, codec, file.audioProperties());
    std::uint64_t start = 0;
    Id3Contents id3;
    if (const auto header = id3HeaderAt(reader, 0)) {
        start = header->totalSize;
        id3 = readId3(ByteRange(reader, 0, start));
    }
    facts.id3TagSize = id3.tagSize;
    // Deliberate: in these formats APE tags are the native ones, an ID3 tag only fills gaps.
    addTrailingTags(readTrailingTags(reader, start), facts);
    addMissingItems(facts.metadata, id3.items);
    return facts;
}

std::optional<MediaFacts> readBySignature(FileReader& reader, TagLibStream& stream) {
    const auto tag = id3HeaderAt(reader, 0);
    const std::uint64_t start = tag ? tag->totalSize : 0;
    const QByteArray head = reader.viewUpTo(start, 16).toByteArray();
    if (head.startsWith("MAC "))
        return apeTaggedFacts<TagLib::APE::File>(reader, stream, QStringLiteral("ape"));
    if (head.startsWith("wvpk"))
        return apeTaggedFacts<TagLib::WavPack::File>(reader, stream, QStringLiteral("wavpack"));
    if (head.startsWith("MPCK") || head.startsWith("MP+"))
        return apeTaggedFacts<TagLib::MPC::File>(reader, stream, QStringLiteral("musepack"));
    if (head.startsWith("TTA"))
        return apeTaggedFacts<TagLib::TrueAudio::File>(reader, stream, QStringLiteral("tta"));
    if (tag) // the library wants the others at the start of the file
        return std::nullopt;
    if (head.startsWith("OggS"))
        return readOgg(reader, stream);
    if (head.startsWith("\x30\x26\xB2\x75\x8E\x66\xCF\x11"))
        return readAsf(stream);
    if (head.startsWith("DSD "))
        return readDsf(reader);
    return std::nullopt;
}

} // namespace

Result<MediaFacts> readTagged(FileReader& reader) {
    const MessageCode operation = kReadTags;
    try {
        TagLibStream stream(reader);
        std::optional<MediaFacts> facts = readBySignature(reader, stream);
        if (!facts)
            return failure(ErrorCode::NotSupported, operation, reader.path());
        if (facts->tracks.empty() && facts->metadata.isEmpty())
            return failure(ErrorCode::InvalidData, operation, reader.path());
        facts->container = Container::Tagged;
        facts->albumArtwork = artworkOf(reader, facts->metadata);
        if (facts->durationSeconds == 0)
            facts->problem = kDurationUnknown;
        return std::move(*facts);
    } catch (const std::exception& error) {
        return failure(ErrorCode::InvalidData, operation, reader.path(),
                       QString::fromLocal8Bit(error.what()));
    }
}

} // namespace clipheave::platform
