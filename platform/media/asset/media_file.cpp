// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/asset/media_file.h"

#include "platform/formats/format_readers.h"
#include "platform/foundation/paths.h"
#include "platform/isobmff/read/isobmff_reader.h"
#include "platform/media/asset/container_sniffer.h"
#include "platform/media/model/media_engine.h"

namespace clipheave::platform {

namespace {

using FactsReader = Result<MediaFacts> (*)(FileReader&);

/// Returns our reader of the container; null for what the tag library or the engine reads.
FactsReader ownReader(Container container) {
    switch (container) {
    case Container::QuickTime:
    case Container::Mp4:
        return readIsobmff;
    case Container::MpegAudio:
        return readMpegAudio;
    case Container::Flac:
        return readFlac;
    case Container::Wave:
        return readWave;
    case Container::Aiff:
        return readAiff;
    case Container::Caf:
        return readCaf;
    case Container::Au:
        return readAu;
    case Container::Unknown:
    case Container::Tagged:
    case Container::Other:
        break;
    }
    return nullptr;
}

Result<MediaFacts> askEngine(FileReader& reader) {
    const Result<MediaEngine*> engine = mediaEngine();
    if (!engine)
        return tl::unexpected(engine.error());
    return (*engine)->probe(reader);
}

/// Returns `facts` with the tags of `tagged` where it has at least as many.
MediaFacts withRicherTags(MediaFacts facts, const Result<MediaFacts>& tagged) {
    if (tagged && tagged->metadata.size() >= facts.metadata.size() && !tagged->metadata.isEmpty())
        facts.metadata = tagged->metadata;
    return facts;
}

/// Drops what the tag library takes for the properties of audio where there is a video, or none.
Result<MediaFacts> withTagsAlone(Result<MediaFacts> tagged) {
    if (!tagged)
        return tagged;
    MediaFacts facts;
    facts.container = tagged->container;
    facts.metadata = tagged->metadata;
    facts.albumArtwork = tagged->albumArtwork;
    facts.problem = tagged->problem;
    return facts;
}

/// The tag library knows tags best but no video and not every duration: the engine is asked for
/// what is missing.
Result<MediaFacts> readByTagLibrary(FileReader& reader, const SniffedFile& sniffed) {
    const bool audioAlone = sniffed.hasAudio && !sniffed.hasVideo;
    Result<MediaFacts> tagged = readTagged(reader);
    if (!audioAlone)
        tagged = withTagsAlone(std::move(tagged));
    if (tagged && tagged->durationSeconds > 0)
        return tagged;
    Result<MediaFacts> probed = askEngine(reader);
    if (!probed)
        return tagged ? tagged : probed;
    MediaFacts facts = withRicherTags(std::move(*probed), tagged);
    facts.container = sniffed.hasVideo ? Container::Other : Container::Tagged;
    return facts;
}

/// Returns the reason alone: whoever shows the problem names path and operation.
Message problemOf(Error reason) {
    reason.path.clear();
    return reason.detail.isOurs() ? reason.detail : Message(reason.text());
}

Result<MediaFacts> readByEngine(FileReader& reader, const SniffedFile& sniffed) {
    Result<MediaFacts> probed = askEngine(reader);
    if (!sniffed.hasId3Prefix)
        return probed;
    // An ID3 tag before AAC, Ogg or the like: its frames are those of the MPEG audio reader.
    Result<MediaFacts> tagged = readMpegAudio(reader);
    if (probed)
        return withRicherTags(std::move(*probed), tagged);
    if (!tagged || tagged->metadata.isEmpty())
        return probed;
    tagged->problem = problemOf(probed.error());
    return tagged;
}

Result<MediaFacts> readContainer(FileReader& reader, const SniffedFile& sniffed) {
    if (sniffed.container == Container::Tagged && !sniffed.hasId3Prefix)
        return readByTagLibrary(reader, sniffed);
    const bool readable = !sniffed.hasId3Prefix || sniffed.container == Container::MpegAudio ||
                          sniffed.container == Container::Flac;
    const FactsReader own = readable ? ownReader(sniffed.container) : nullptr;
    if (!own)
        return readByEngine(reader, sniffed);
    Result<MediaFacts> facts = own(reader);
    if (facts) {
        if (facts->container == Container::Unknown)
            facts->container = sniffed.container;
        return facts;
    }
    // The file may only look like this container: the engine may still read it. When it cannot, the
    // first error is the better one.
    Result<MediaFacts> probed = askEngine(reader);
    return probed ? probed : facts;
}

MediaFacts factsOf(FileReader& reader) {
    const SniffedFile sniffed = sniffFile(reader);
    Result<MediaFacts> facts = readContainer(reader, sniffed);
    if (facts)
        return std::move(*facts);
    MediaFacts none;
    none.problem = problemOf(facts.error());
    return none;
}

} // namespace

Result<std::shared_ptr<const MediaFile>> MediaFile::open(const QString& path) {
    Result<FileReader> reader = FileReader::open(path);
    if (!reader)
        return tl::unexpected(reader.error());
    const auto attributes =
        NSFileManager::defaultManager().attributesOfOpenFile(reader->fd(), path);
    if (!attributes)
        return tl::unexpected(attributes.error());
    auto file = std::make_shared<MediaFile>();
    file->m_path = path;
    file->m_attributes = *attributes;
    file->m_facts = factsOf(*reader);
    return file;
}

} // namespace clipheave::platform
