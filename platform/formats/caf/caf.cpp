// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/audio_facts.h"
#include "platform/formats/byte_range.h"
#include "platform/formats/format_readers.h"
#include "platform/formats/messages.h"
#include "platform/formats/tag_text.h"

#include <bit>

namespace clipheave::platform {
namespace {

constexpr int kMostCafChunks = 10000;
constexpr std::uint64_t kLargestCafInfo = 1u << 20;
constexpr std::uint32_t kMostCafTexts = 1000;
constexpr std::uint64_t kCafSizeToTheEnd = UINT64_MAX; // -1

struct CafFile {
    double sampleRate = 0;
    QString codec;
    std::uint32_t bytesPerPacket = 0;
    std::uint32_t framesPerPacket = 0;
    int channels = 0;
    std::uint32_t bits = 0;
    std::uint64_t dataSize = 0;
    std::uint64_t validFrames = 0;
    QList<NamedTag> texts;
    Message problem;
};

void readCafDescription(CafFile& caf, ByteView body) {
    caf.sampleRate = std::bit_cast<double>(body.be64(0).value_or(0));
    caf.codec = QString::fromLatin1(body.sub(8, 4).bytes()).trimmed();
    caf.bytesPerPacket = body.be32(16).value_or(0);
    caf.framesPerPacket = body.be32(20).value_or(0);
    caf.channels = static_cast<int>(std::min<std::uint32_t>(body.be32(24).value_or(0), 0xFFFF));
    caf.bits = body.be32(28).value_or(0);
}

/// Key NUL value NUL, UTF-8.
void readCafInfo(CafFile& caf, const ByteRange& body) {
    const auto bytes = body.load(kLargestCafInfo);
    const std::uint32_t count = std::min(body.view(0, 4).be32(0).value_or(0), kMostCafTexts);
    ByteView rest = bytes ? ByteView(*bytes).sub(4) : ByteView();
    for (std::uint32_t i = 0; i < count && !rest.empty(); ++i) {
        const QString key = takeId3Text(Id3Encoding::Utf8, rest);
        const QString value = takeId3Text(Id3Encoding::Utf8, rest);
        if (!key.isEmpty() && !value.isEmpty())
            caf.texts.append({key, value});
    }
}

CafFile walkCaf(FileReader& reader) {
    CafFile caf;
    std::uint64_t at = 8;
    for (int i = 0; i < kMostCafChunks && at + 12 <= reader.size(); ++i) {
        const ByteView head = reader.viewUpTo(at, 12);
        const QByteArray id = head.sub(0, 4).toByteArray();
        std::uint64_t size = head.be64(4).value_or(0);
        const std::uint64_t left = reader.size() - at - 12;
        if (id == "data" && size == kCafSizeToTheEnd)
            size = left;
        if (size > left)
            caf.problem = kEndsInsideChunk;
        const ByteRange body(reader, at + 12, size);
        if (id == "desc")
            readCafDescription(caf, body.view(0, 32));
        else if (id == "data") // an edit count stands first
            caf.dataSize = body.size() > 4 ? body.size() - 4 : 0;
        else if (id == "pakt")
            caf.validFrames = body.view(0, 24).be64(8).value_or(0);
        else if (id == "info" && caf.texts.isEmpty())
            readCafInfo(caf, body);
        if (size > left)
            break;
        at += 12 + size;
    }
    return caf;
}

void setCafAudio(MediaFacts& facts, const CafFile& caf) {
    AudioFacts audio;
    audio.codec = caf.codec;
    audio.sampleRate = caf.sampleRate;
    audio.channels = caf.channels;
    const auto bytes = static_cast<double>(caf.dataSize);
    double frames = static_cast<double>(caf.validFrames);
    if (caf.bytesPerPacket > 0 && caf.framesPerPacket > 0 && caf.validFrames == 0)
        frames = bytes / caf.bytesPerPacket * caf.framesPerPacket;
    if (caf.sampleRate > 0)
        audio.durationSeconds = frames / caf.sampleRate;
    if (audio.durationSeconds > 0)
        audio.bitRate = bytes * 8 / audio.durationSeconds;
    setAudio(facts, audio);
}

} // namespace

Result<MediaFacts> readCaf(FileReader& reader) {
    if (!reader.viewUpTo(0, 8).startsWith("caff"))
        return failure(ErrorCode::InvalidData, kReadCaf, reader.path(), kSignatureMissing);
    const CafFile caf = walkCaf(reader);
    MediaFacts facts;
    facts.container = Container::Caf;
    facts.problem = caf.problem;
    if (caf.sampleRate > 0)
        setCafAudio(facts, caf);
    else if (facts.problem.isEmpty())
        facts.problem = kNoCafDescription;
    facts.infoDictionary = infoFromTags(caf.texts);
    addYearOfDate(facts.infoDictionary);
    facts.metadata = infoItems(facts.infoDictionary) + itemsBesideInfo(caf.texts);
    return facts;
}

} // namespace clipheave::platform
