// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/audio_facts.h"
#include "platform/formats/format_readers.h"
#include "platform/formats/messages.h"
#include "platform/formats/mpeg/id3_contents.h"
#include "platform/formats/tag_text.h"

#include <cmath>

namespace clipheave::platform {
namespace {

constexpr int kMostAiffChunks = 10000;
constexpr int kMostOtherChunks = 100;
constexpr std::uint64_t kLongestAiffText = 64u << 10;

struct AiffFile {
    int channels = 0;
    std::uint32_t frames = 0;
    int bits = 0;
    double sampleRate = 0;
    QByteArray compression; ///< empty in an AIFF file
    std::optional<std::uint64_t> audioBytes;
    InfoDictionary info;
    Id3Contents id3;
    QList<AVMetadataItem> others; ///< chunks that no other container has
    Message problem;
};

/// IEEE 754 extended: sign and 15 bits exponent, 64 bits with the leading one.
double extendedFloat(ByteView bytes) {
    const int exponent = bytes.be16(0).value_or(0) & 0x7FFF;
    const auto mantissa = static_cast<double>(bytes.be64(2).value_or(0));
    return std::ldexp(mantissa, exponent - 16383 - 63);
}

void readAiffCommon(AiffFile& aiff, ByteView body) {
    aiff.channels = body.be16(0).value_or(0);
    aiff.frames = body.be32(2).value_or(0);
    aiff.bits = body.be16(6).value_or(0);
    aiff.sampleRate = extendedFloat(body.sub(8, 10));
    aiff.compression = body.sub(18, 4).toByteArray();
}

/// COMT: count, then time, marker and length of each; the first text is the one.
QByteArray firstAiffComment(const ByteRange& body) {
    const auto length = body.view(8, 2).be16(0);
    return length ? body.view(10, *length).toByteArray() : QByteArray();
}

void addAiffText(AiffFile& aiff, const char* key, const QByteArray& bytes) {
    addMissingInfo(aiff.info, {{QString::fromLatin1(key), textOfMacFile(bytes)}});
}

bool isAiffFiller(const QByteArray& id) {
    return id == "FVER" || id == "FLLR" || id == "CHAN" || id == "PEAK" || id == "JUNK" ||
           id.trimmed().isEmpty();
}

void readAiffChunk(AiffFile& aiff, const QByteArray& id, const ByteRange& body) {
    const auto text = [&body] { return body.load(kLongestAiffText).value_or(QByteArray()); };
    if (id == "COMM")
        readAiffCommon(aiff, body.view(0, 22));
    else if (id == "SSND")
        aiff.audioBytes = body.size() > 8 ? body.size() - 8 : 0;
    else if (id == "NAME")
        addAiffText(aiff, "title", text());
    else if (id == "AUTH")
        addAiffText(aiff, "artist", text());
    else if (id == "(c) ")
        addAiffText(aiff, "copyright", text());
    else if (id == "ANNO")
        addAiffText(aiff, "comments", text());
    else if (id == "COMT")
        addAiffText(aiff, "comments", firstAiffComment(body));
    else if ((id == "ID3 " || id == "id3 ") && aiff.id3.tagSize == 0)
        aiff.id3 = readId3(body);
    else if (!isAiffFiller(id) && aiff.others.size() < kMostOtherChunks)
        aiff.others.append(chunkItem(QStringLiteral("aiff"), id.trimmed(), body));
}

AiffFile walkAiff(FileReader& reader) {
    AiffFile aiff;
    std::uint64_t at = 12;
    for (int i = 0; i < kMostAiffChunks && at + 8 <= reader.size(); ++i) {
        const ByteView head = reader.viewUpTo(at, 8);
        const QByteArray id = head.sub(0, 4).toByteArray();
        const std::uint64_t size = head.be32(4).value_or(0);
        if (size > reader.size() - at - 8)
            aiff.problem = kEndsInsideChunk;
        readAiffChunk(aiff, id, ByteRange(reader, at + 8, size));
        at += 8 + size + size % 2;
    }
    return aiff;
}

/// Samples in one of the units that the header counts, for codecs that count packets.
int samplesInAiffFrame(const QByteArray& compression) {
    if (compression == "ima4")
        return 64;
    if (compression == "MAC3" || compression == "MAC6")
        return 6;
    return compression == "GSM " || compression == "Qclp" ? 160 : 1;
}

bool isPcmAiff(const QByteArray& compression) {
    return compression.isEmpty() || compression == "NONE" || compression == "sowt" ||
           compression == "twos" || compression.toLower() == "fl32" ||
           compression.toLower() == "fl64" || compression == "in24" || compression == "in32";
}

void setAiffAudio(MediaFacts& facts, const AiffFile& aiff) {
    AudioFacts audio;
    const bool pcm = isPcmAiff(aiff.compression);
    audio.codec = pcm ? QStringLiteral("lpcm") : QString::fromLatin1(aiff.compression).trimmed();
    audio.channels = aiff.channels;
    audio.sampleRate = aiff.sampleRate;
    const double samples = static_cast<double>(aiff.frames) * samplesInAiffFrame(aiff.compression);
    if (aiff.sampleRate > 0)
        audio.durationSeconds = samples / aiff.sampleRate;
    const int storedBits = (aiff.bits + 7) / 8 * 8; // of a sample, in whole bytes
    if (pcm)
        audio.bitRate = aiff.sampleRate * aiff.channels * storedBits;
    else if (audio.durationSeconds > 0)
        audio.bitRate =
            static_cast<double>(aiff.audioBytes.value_or(0)) * 8 / audio.durationSeconds;
    setAudio(facts, audio);
}

} // namespace

Result<MediaFacts> readAiff(FileReader& reader) {
    const ByteView head = reader.viewUpTo(0, 12);
    const ByteView form = head.sub(8);
    if (!head.startsWith("FORM") || !(form.startsWith("AIFF") || form.startsWith("AIFC")))
        return failure(ErrorCode::InvalidData, kReadAiff, reader.path(), kSignatureMissing);
    AiffFile aiff = walkAiff(reader);
    MediaFacts facts;
    facts.container = Container::Aiff;
    facts.problem = aiff.problem;
    if (aiff.sampleRate > 0)
        setAiffAudio(facts, aiff);
    else if (facts.problem.isEmpty())
        facts.problem = kNoAiffCommonChunk;
    facts.id3TagSize = aiff.id3.tagSize;
    // Only the file's own texts are AIFF items: what the ID3 tag says stands after them as it is.
    facts.metadata = infoItems(aiff.info) + aiff.others + aiff.id3.items;
    facts.infoDictionary = std::move(aiff.info);
    addMissingInfo(facts.infoDictionary, infoFromId3(aiff.id3.items));
    facts.albumArtwork = artworkOf(reader, aiff.id3.items);
    return facts;
}

} // namespace clipheave::platform
