// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/audio_facts.h"
#include "platform/formats/format_readers.h"
#include "platform/formats/messages.h"
#include "platform/formats/mpeg/id3_contents.h"
#include "platform/formats/tag_text.h"

#include <algorithm>

namespace clipheave::platform {
namespace {

constexpr int kMostRiffChunks = 10000;
constexpr int kMostInfoTexts = 500;
constexpr int kMostOtherChunks = 100;
constexpr std::uint64_t kLongestInfoText = 64u << 10;
constexpr std::uint32_t kSizeInDs64 = 0xFFFFFFFF;
constexpr std::uint16_t kExtensibleFormat = 0xFFFE;

struct InfoChunkKey {
    char id[5];
    QLatin1String key;
};

// Where two ids have one key, the first row that the file has counts.
constexpr InfoChunkKey kInfoChunkKeys[] = {
    {"INAM", QLatin1String("title")},        {"IART", QLatin1String("artist")},
    {"IPRD", QLatin1String("album")},        {"IPRT", QLatin1String("track number")},
    {"ITRK", QLatin1String("track number")}, {"ICRD", QLatin1String("recorded date")},
    {"ICMT", QLatin1String("comments")},     {"ICOP", QLatin1String("copyright")},
    {"IMUS", QLatin1String("composer")},     {"IWRI", QLatin1String("lyricist")},
    {"ISBJ", QLatin1String("subtitle")},     {"IGNR", QLatin1String("genre")},
    {"ISRC", QLatin1String("ISRC")},
};

struct WaveFile {
    std::uint16_t format = 0;
    std::uint16_t channels = 0;
    std::uint32_t sampleRate = 0;
    std::uint32_t byteRate = 0;
    std::uint16_t blockAlign = 0;
    std::uint32_t factSamples = 0;
    std::optional<std::uint64_t> ds64Data;
    std::optional<std::uint64_t> dataSize; ///< what is really there
    QList<NamedTag> texts;                 ///< under their four letters
    QString recorded;                      ///< of the broadcast extension
    Id3Contents id3;
    QList<AVMetadataItem> others; ///< chunks that no other container has
    Message problem;
};

void readFormat(WaveFile& wave, ByteView body) {
    wave.format = body.le16(0).value_or(0);
    wave.channels = body.le16(2).value_or(0);
    wave.sampleRate = body.le32(4).value_or(0);
    wave.byteRate = body.le32(8).value_or(0);
    wave.blockAlign = body.le16(12).value_or(0);
    // The sub-format's first two bytes are the format that the extension stands for.
    if (wave.format == kExtensibleFormat)
        wave.format = body.le16(24).value_or(wave.format);
}

/// LIST of type INFO: id, size little-endian, text ending in NUL, padded to even.
void readInfoList(WaveFile& wave, const ByteRange& list) {
    std::uint64_t at = 4;
    while (at < list.size() && wave.texts.size() < kMostInfoTexts) {
        const ByteView head = list.view(at, 8);
        const auto size = head.le32(4);
        if (!size)
            return;
        const QString id = QString::fromLatin1(head.sub(0, 4).bytes());
        if (const auto bytes = list.sub(at + 8, *size).load(kLongestInfoText))
            wave.texts.append({id, textOfUnknownEncoding(*bytes)});
        at += 8 + std::uint64_t{*size};
        // Some writers leave the padding out: an id never begins with NUL.
        if (*size % 2 != 0 && list.view(at, 1).u8(0).value_or(0) == 0)
            ++at;
    }
}

/// EBU Tech 3285: origination date and time at 320, "yyyy-mm-dd" and "hh:mm:ss", any separators.
void readBroadcastExtension(WaveFile& wave, ByteView body) {
    const QString date = textOfUnknownEncoding(body.sub(320, 10).bytes());
    const QString time = textOfUnknownEncoding(body.sub(330, 8).bytes());
    if (date.size() != 10 || yearText(date).isEmpty() || date.startsWith(QLatin1String("0000")))
        return;
    QString dashed = date;
    dashed[4] = dashed[7] = u'-';
    wave.recorded = dashed;
    if (time.size() == 8 && time[0].isDigit()) {
        QString colons = time;
        colons[2] = colons[5] = u':';
        wave.recorded += u' ' + colons;
    }
}

/// What only a WAVE file holds: bext, iXML, cue and the like, "adtl" for a list of that type.
void addOther(WaveFile& wave, QByteArrayView id, const ByteRange& body) {
    const QByteArray list = id == "LIST" ? body.view(0, 4).toByteArray() : QByteArray();
    const QByteArray name = (list.isEmpty() ? id.toByteArray() : list).trimmed();
    const bool isFiller = name.compare("junk", Qt::CaseInsensitive) == 0 || name == "PAD" ||
                          name == "FLLR" || name == "PEAK" || name == "levl" || name == "minf" ||
                          name == "elm1" || name == "regn" || name == "umid" || name == "DGDA";
    if (!isFiller && !name.isEmpty() && wave.others.size() < kMostOtherChunks)
        wave.others.append(chunkItem(QStringLiteral("wave"), name, body));
}

void readWaveChunk(WaveFile& wave, QByteArrayView id, const ByteRange& body) {
    if (id == "fmt ")
        readFormat(wave, body.view(0, 40));
    else if (id == "fact")
        wave.factSamples = body.view(0, 4).le32(0).value_or(0);
    else if (id == "ds64")
        wave.ds64Data = body.view(0, 16).le64(8);
    else if (id == "LIST" && body.view(0, 4).startsWith("INFO"))
        readInfoList(wave, body);
    else if ((id == "id3 " || id == "ID3 ") && wave.id3.tagSize == 0)
        wave.id3 = readId3(body);
    else
        addOther(wave, id, body);
    if (id == "bext")
        readBroadcastExtension(wave, body.view(0, 338));
}

bool isChunkId(ByteView bytes) {
    const QByteArrayView id = bytes.bytes();
    return std::all_of(id.begin(), id.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

WaveFile walkWave(FileReader& reader) {
    WaveFile wave;
    std::uint64_t at = 12;
    for (int i = 0; i < kMostRiffChunks && at + 8 <= reader.size(); ++i) {
        const ByteView head = reader.viewUpTo(at, 8);
        const QByteArray id = head.sub(0, 4).toByteArray();
        std::uint64_t size = head.le32(4).value_or(0);
        const std::uint64_t left = reader.size() - at - 8;
        const bool isData = id == "data" && !wave.dataSize;
        if (isData && size == kSizeInDs64)
            size = wave.ds64Data.value_or(left);
        // A recorder that was switched off leaves 0: the audio then goes on to the end.
        if (isData && size == 0 && !isChunkId(reader.viewUpTo(at + 8, 4)))
            size = left;
        if (size > left)
            wave.problem = kEndsInsideChunk;
        if (isData)
            wave.dataSize = std::min(size, left);
        else
            readWaveChunk(wave, id, ByteRange(reader, at + 8, size));
        if (size > left)
            break;
        at += 8 + size + size % 2;
    }
    return wave;
}

QString waveCodecName(std::uint16_t format) {
    switch (format) {
    case 1:
        return QStringLiteral("lpcm");
    case 2:
        return QStringLiteral("adpcm_ms");
    case 3:
        return QStringLiteral("lpcm_float");
    case 6:
        return QStringLiteral("alaw");
    case 7:
        return QStringLiteral("ulaw");
    case 0x11:
        return QStringLiteral("adpcm_ima_wav");
    case 0x31:
        return QStringLiteral("gsm_ms");
    case 0x55:
        return QStringLiteral("mp3");
    default:
        return QStringLiteral("0x%1").arg(format, 4, 16, QLatin1Char('0'));
    }
}

void setWaveAudio(MediaFacts& facts, const WaveFile& wave) {
    AudioFacts audio;
    audio.codec = waveCodecName(wave.format);
    audio.channels = wave.channels;
    audio.sampleRate = wave.sampleRate;
    audio.bitRate = static_cast<double>(wave.byteRate) * 8;
    const bool pcm = wave.format == 1 || wave.format == 3 || wave.format == 6 || wave.format == 7;
    const auto bytes = static_cast<double>(wave.dataSize.value_or(0));
    if (pcm && wave.blockAlign > 0 && wave.sampleRate > 0)
        audio.durationSeconds = bytes / wave.blockAlign / wave.sampleRate;
    else if (wave.factSamples > 0 && wave.sampleRate > 0)
        audio.durationSeconds = static_cast<double>(wave.factSamples) / wave.sampleRate;
    else if (wave.byteRate > 0)
        audio.durationSeconds = bytes / wave.byteRate;
    setAudio(facts, audio);
}

/// The texts that the info dictionary has no key for, by the names of tag_mapping.h where there is
/// one. The program's name is no text of the user.
QList<NamedTag> otherTexts(const WaveFile& wave) {
    constexpr InfoChunkKey kNames[] = {
        {"ITCH", QLatin1String("encodedby")}, {"IENG", QLatin1String("ENGINEER")},
        {"IKEY", QLatin1String("keywords")},  {"IMED", QLatin1String("MEDIA")},
        {"ILNG", QLatin1String("LANGUAGE")},  {"IPRO", QLatin1String("producer")}};
    QList<NamedTag> others;
    for (const NamedTag& text : wave.texts) {
        const auto isText = [&](const InfoChunkKey& row) {
            return text.name == QLatin1String(row.id);
        };
        if (text.name == u"ISFT" ||
            std::any_of(std::begin(kInfoChunkKeys), std::end(kInfoChunkKeys), isText))
            continue;
        const auto* named = std::find_if(std::begin(kNames), std::end(kNames), isText);
        others.append({named == std::end(kNames) ? text.name : QString(named->key), text.value});
    }
    return others;
}

InfoDictionary waveInfo(const WaveFile& wave) {
    InfoDictionary info;
    for (const InfoChunkKey& row : kInfoChunkKeys)
        addMissingInfo(info, {{row.key, tagText(wave.texts, QLatin1String(row.id))}});
    // The year comes from the date of recording.
    addMissingInfo(
        info, {{QStringLiteral("year"), yearText(info.value(QStringLiteral("recorded date")))}});
    addMissingInfo(info, {{QStringLiteral("recorded date"), wave.recorded}});
    addMissingInfo(info, infoFromId3(wave.id3.items));
    return info;
}

} // namespace

Result<MediaFacts> readWave(FileReader& reader) {
    const ByteView head = reader.viewUpTo(0, 12);
    const bool riff = head.startsWith("RIFF") || head.startsWith("RF64") || head.startsWith("BW64");
    if (!riff || !head.sub(8).startsWith("WAVE"))
        return failure(ErrorCode::InvalidData, kReadWave, reader.path(), kSignatureMissing);
    const WaveFile wave = walkWave(reader);
    MediaFacts facts;
    facts.container = Container::Wave;
    facts.problem = wave.problem;
    if (wave.sampleRate > 0)
        setWaveAudio(facts, wave);
    else
        facts.problem = kNoWaveFormatChunk;
    facts.id3TagSize = wave.id3.tagSize;
    facts.infoDictionary = waveInfo(wave);
    facts.metadata = infoItems(facts.infoDictionary) + itemsFromTags(otherTexts(wave)) +
                     wave.others + wave.id3.items;
    facts.albumArtwork = artworkOf(reader, wave.id3.items);
    return facts;
}

} // namespace clipheave::platform
