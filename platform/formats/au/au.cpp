// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/audio_facts.h"
#include "platform/formats/format_readers.h"
#include "platform/formats/messages.h"
#include "platform/formats/tag_text.h"

#include <algorithm>

namespace clipheave::platform {
namespace {

constexpr std::uint32_t kAuHeaderSize = 24;
constexpr std::uint64_t kLongestAnnotation = 64u << 10;
constexpr std::uint32_t kUnknownAuSize = 0xFFFFFFFF;

/// Bits of one sample; 0 for an encoding that is not known.
int auSampleBits(std::uint32_t encoding) {
    switch (encoding) {
    case 1:  // mu-law
    case 27: // A-law
    case 2:
        return 8;
    case 3:
        return 16;
    case 4:
        return 24;
    case 5:
    case 6: // float
        return 32;
    case 7: // double
        return 64;
    case 23: // G.721
        return 4;
    default:
        return 0;
    }
}

QString auCodecName(std::uint32_t encoding) {
    if (encoding == 1)
        return QStringLiteral("ulaw");
    if (encoding == 27)
        return QStringLiteral("alaw");
    return encoding >= 2 && encoding <= 7 ? QStringLiteral("lpcm")
                                          : QStringLiteral("au-%1").arg(encoding);
}

/// Lines "Name=text" as FFmpeg writes them; anything else is a comment as a whole.
QList<NamedTag> annotationTags(const QString& annotation) {
    QList<NamedTag> tags;
    const QStringList lines = annotation.split(u'\n', Qt::SkipEmptyParts);
    for (const QString& line : lines) {
        const qsizetype equals = line.indexOf(u'=');
        if (equals <= 0)
            return {{QStringLiteral("comments"), annotation}};
        tags.append({line.left(equals).trimmed(), line.mid(equals + 1).trimmed()});
    }
    return tags;
}

void setAuAudio(MediaFacts& facts, ByteView head, std::uint64_t available) {
    const std::uint32_t announced = head.be32(8).value_or(kUnknownAuSize);
    const std::uint32_t encoding = head.be32(12).value_or(0);
    AudioFacts audio;
    audio.codec = auCodecName(encoding);
    audio.sampleRate = head.be32(16).value_or(0);
    audio.channels = static_cast<int>(std::min<std::uint32_t>(head.be32(20).value_or(0), 0xFFFF));
    audio.bitRate = audio.sampleRate * audio.channels * auSampleBits(encoding);
    const bool known = announced != kUnknownAuSize && announced != 0 && announced <= available;
    if (audio.bitRate > 0)
        audio.durationSeconds =
            static_cast<double>(known ? announced : available) * 8 / audio.bitRate;
    if (announced != kUnknownAuSize && announced > available)
        facts.problem = kEndsInsideAudio;
    setAudio(facts, audio);
}

} // namespace

Result<MediaFacts> readAu(FileReader& reader) {
    const QByteArray bytes = reader.viewUpTo(0, kAuHeaderSize).toByteArray();
    const ByteView head(bytes);
    if (!head.startsWith(".snd") || head.size() < kAuHeaderSize)
        return failure(ErrorCode::InvalidData, kReadAu, reader.path(), kSignatureMissing);
    MediaFacts facts;
    facts.container = Container::Au;
    const std::uint64_t start = std::max(*head.be32(4), kAuHeaderSize);
    setAuAudio(facts, head, reader.size() - std::min(start, reader.size()));
    const ByteView annotation =
        reader.viewUpTo(kAuHeaderSize, std::min(start - kAuHeaderSize, kLongestAnnotation));
    const QList<NamedTag> tags = annotationTags(textOfUnknownEncoding(annotation.bytes()));
    facts.infoDictionary = infoFromTags(tags);
    addYearOfDate(facts.infoDictionary);
    facts.metadata = infoItems(facts.infoDictionary) + itemsBesideInfo(tags);
    return facts;
}

} // namespace clipheave::platform
