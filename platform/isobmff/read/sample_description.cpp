// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/read/sample_description.h"

#include "platform/isobmff/box.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

// Sources: ISO/IEC 14496-12 section 8.5.2 and QuickTime File Format, "Audio Sample Descriptions";
// 14496-1 for `esds`, 14496-3 for its AudioSpecificConfig; ETSI TS 102 366 annex F for `dac3`.
namespace clipheave::platform {

namespace {

constexpr std::uint64_t kEntryOffset = 8; // version, flags and count of stsd
constexpr double kMaxSampleRate = 1e7;
constexpr int kMaxChannels = 256;

/// Bits of an AudioSpecificConfig, most significant first.
class BitReader {
public:
    explicit BitReader(ByteView bytes) : m_bytes(bytes) {}
    [[nodiscard]] std::uint64_t left() const { return m_bytes.size() * 8 - m_at; }
    [[nodiscard]] std::uint32_t peek(unsigned count) const {
        std::uint32_t value = 0;
        for (unsigned i = 0; i < count; ++i) {
            const std::uint64_t at = m_at + i;
            const unsigned byte = m_bytes.u8(at / 8).value_or(0);
            value = value << 1 | (byte >> (7 - at % 8) & 1u);
        }
        return value;
    }
    std::uint32_t take(unsigned count) {
        const std::uint32_t value = peek(count);
        m_at = std::min(m_at + count, m_bytes.size() * 8);
        return value;
    }

private:
    ByteView m_bytes;
    std::uint64_t m_at = 0;
};

constexpr std::array kAacRates{96000, 88200, 64000, 48000, 44100, 32000, 24000,
                               22050, 16000, 12000, 11025, 8000,  7350};
constexpr std::array kAacChannels{0, 1, 2, 3, 4, 5, 6, 8};

std::uint32_t aacObjectType(BitReader& bits) {
    const std::uint32_t type = bits.take(5);
    return type == 31 ? 32 + bits.take(6) : type;
}

double aacRate(BitReader& bits) {
    const std::uint32_t index = bits.take(4);
    if (index == 15)
        return bits.take(24);
    return index < kAacRates.size() ? kAacRates[index] : 0;
}

struct AudioFormat {
    double sampleRate = 0;
    int channels = 0;
};

AudioFormat parseAudioSpecificConfig(ByteView config) {
    constexpr std::uint32_t kSbr = 5, kPs = 29, kSyncExtension = 0x2B7;
    BitReader bits(config);
    AudioFormat format;
    std::uint32_t type = aacObjectType(bits);
    format.sampleRate = aacRate(bits);
    const std::uint32_t channels = bits.take(4);
    format.channels = channels < kAacChannels.size() ? kAacChannels[channels] : 0;
    if (type == kSbr || type == kPs) {
        // The second rate is that of the output; parametric stereo makes two channels of one.
        if (type == kPs)
            format.channels = 2;
        format.sampleRate = aacRate(bits);
        return format;
    }
    // An older decoder skips this announcement of spectral band replication.
    while (bits.left() > 15) {
        if (bits.peek(11) != kSyncExtension) {
            bits.take(1);
            continue;
        }
        bits.take(11);
        if (aacObjectType(bits) == kSbr && bits.take(1) == 1)
            format.sampleRate = aacRate(bits);
        break;
    }
    return format;
}

/// A descriptor of ISO/IEC 14496-1: tag, length in up to four bytes of seven bits, body.
struct Descriptor {
    std::uint8_t tag = 0;
    ByteView body;
};
Descriptor descriptorAt(ByteView bytes, std::uint64_t at) {
    Descriptor result;
    result.tag = bytes.u8(at++).value_or(0);
    std::uint32_t length = 0;
    for (int i = 0; i < 4; ++i) {
        const std::uint8_t byte = bytes.u8(at++).value_or(0);
        length = length << 7 | (byte & 0x7Fu);
        if ((byte & 0x80u) == 0)
            break;
    }
    result.body = bytes.sub(at, length);
    return result;
}

bool isAac(unsigned objectType) {
    return objectType == 0x40 || (objectType >= 0x66 && objectType <= 0x68);
}

/// Returns the code of what stands under "mp4a", which is not AAC alone: the codec's own code where
/// it has one, else "mp4a" with the object type, as RFC 6381 writes it. Source: the registration
/// authority of MP4; Vorbis has a user type that several writers agree on.
QString codecOfObjectType(unsigned objectType) {
    switch (objectType) {
    case 0x69:
    case 0x6B:
        return QStringLiteral(".mp3");
    case 0xA0:
        return QStringLiteral("sevc");
    case 0xA1:
        return QStringLiteral("ssmv");
    case 0xA5:
        return QStringLiteral("ac-3");
    case 0xA6:
        return QStringLiteral("ec-3");
    case 0xAD:
        return QStringLiteral("Opus");
    case 0xDD:
        return QStringLiteral("vorbis");
    case 0xE1:
        return QStringLiteral("sqcp");
    default:
        break;
    }
    const QString aac = QStringLiteral("mp4a");
    return isAac(objectType) || objectType == 0
               ? aac
               : aac + u'.' + QString::number(objectType, 16).rightJustified(2, u'0').toUpper();
}

void applyElementaryStream(AVAssetTrack& track, ByteView esds) {
    constexpr std::uint8_t kStream = 3, kDecoderConfig = 4, kSpecificInfo = 5;
    Descriptor descriptor = descriptorAt(esds, 4);
    if (descriptor.tag == kStream) {
        const unsigned flags = descriptor.body.u8(2).value_or(0);
        std::uint64_t at = 3;
        at += flags & 0x80u ? 2 : 0;
        at += flags & 0x40u ? 1u + descriptor.body.u8(at).value_or(0) : 0;
        at += flags & 0x20u ? 2 : 0;
        descriptor = descriptorAt(descriptor.body, at);
    }
    if (descriptor.tag != kDecoderConfig)
        return;
    constexpr std::uint64_t kDecoderConfigSize = 13;
    track.bitRate = descriptor.body.be32(9).value_or(0);
    const unsigned objectType = descriptor.body.u8(0).value_or(0);
    const Descriptor info = descriptorAt(descriptor.body, kDecoderConfigSize);
    if (track.mediaType != QLatin1String("soun"))
        return;
    if (track.codec == QLatin1String("mp4a"))
        track.codec = codecOfObjectType(objectType);
    if (!isAac(objectType) || info.tag != kSpecificInfo)
        return;
    const AudioFormat format = parseAudioSpecificConfig(info.body);
    if (format.sampleRate > 0)
        track.sampleRate = format.sampleRate;
    if (format.channels > 0)
        track.channels = format.channels;
}

/// Channels of AC-3 by its codec mode, the low frequencies apart.
constexpr std::array kAc3Channels{2, 1, 2, 3, 3, 4, 4, 5};

void applyAc3(AVAssetTrack& track, ByteView bytes, bool enhanced) {
    constexpr std::array kAc3Rates{48000, 44100, 32000};
    BitReader bits(bytes);
    if (enhanced)
        bits.take(16); // data rate, number of sub-streams
    const std::uint32_t rate = bits.take(2);
    bits.take(5); // identification
    if (enhanced)
        bits.take(2); // reserved, associated service
    bits.take(3);
    const std::uint32_t mode = bits.take(3);
    const int low = static_cast<int>(bits.take(1));
    if (bytes.size() < 3)
        return;
    track.channels = kAc3Channels[mode] + low;
    if (rate < kAc3Rates.size())
        track.sampleRate = kAc3Rates[rate];
}

void applyAlac(AVAssetTrack& track, ByteView cookie) {
    if (!cookie.has(0, 28))
        return;
    track.channels = *cookie.u8(13);
    track.bitRate = *cookie.be32(20);
    track.sampleRate = *cookie.be32(24);
}

void applyFlac(AVAssetTrack& track, ByteView bytes) {
    constexpr std::uint64_t kRate = 18; // full box head 4, block head 4, ten bytes of sizes
    const auto packed = bytes.be32(kRate);
    if (!packed)
        return;
    track.sampleRate = *packed >> 12;
    track.channels = static_cast<int>((*packed >> 9 & 7) + 1);
}

/// A pixel aspect ratio beyond this is damage.
constexpr double kMostAspect = 16;

void setPixelAspect(AVAssetTrack& track, double width, double height) {
    if (width > 0 && height > 0 && width / height < kMostAspect && height / width < kMostAspect)
        track.pixelAspect = width / height;
}

void applyChild(AVAssetTrack& track, std::uint32_t type, ByteView payload) {
    switch (type) {
    case fourCc("pasp"):
        return setPixelAspect(track, payload.be32(0).value_or(0), payload.be32(4).value_or(0));
    case fourCc("esds"):
        return applyElementaryStream(track, payload);
    case fourCc("alac"):
        return applyAlac(track, payload);
    case fourCc("dfLa"):
        return applyFlac(track, payload);
    case fourCc("dac3"):
        return applyAc3(track, payload, false);
    case fourCc("dec3"):
        return applyAc3(track, payload, true);
    case fourCc("dOps"):
        track.channels = payload.u8(1).value_or(0);
        track.sampleRate = 48000; // whatever the input had
        return;
    case fourCc("btrt"):
        if (track.bitRate <= 0)
            track.bitRate = payload.be32(8).value_or(0);
        return;
    case fourCc("srat"):
        track.sampleRate = payload.be32(4).value_or(0);
        return;
    case fourCc("sinf"): // protected: the codec behind the protection
        if (const auto codec = findPayload(payload, {fourCc("frma")}).be32(0))
            track.codec = fourCcText(*codec);
        return;
    default:
        return;
    }
}

void applyChildren(AVAssetTrack& track, ByteView children) {
    BoxWalker walker(children);
    while (const auto box = walker.next()) {
        if (box->type != fourCc("wave")) {
            applyChild(track, box->type, walker.payload(*box));
            continue;
        }
        // QuickTime hides the same boxes one level down.
        BoxWalker inner(walker.payload(*box));
        while (const auto child = inner.next())
            applyChild(track, child->type, inner.payload(*child));
    }
}

void readVisual(AVAssetTrack& track, ByteView entry) {
    constexpr std::uint64_t kVisualHead = 86;
    const QSize stored(entry.be16(32).value_or(0), entry.be16(34).value_or(0));
    const QSize shown = track.naturalSize; // as the track's header has it
    if (!stored.isEmpty())
        track.naturalSize = stored;
    if (!stored.isEmpty() && !shown.isEmpty())
        setPixelAspect(track, static_cast<double>(shown.width()) * stored.height(),
                       static_cast<double>(shown.height()) * stored.width());
    applyChildren(track, entry.sub(kVisualHead));
}

int uncompressedBits(std::uint32_t codec, int describedBits) {
    switch (codec) {
    case fourCc("ulaw"):
    case fourCc("alaw"):
        return 8;
    case fourCc("in24"):
        return 24;
    case fourCc("in32"):
    case fourCc("fl32"):
        return 32;
    case fourCc("fl64"):
        return 64;
    case fourCc("raw "):
    case fourCc("NONE"):
    case fourCc("twos"):
    case fourCc("sowt"):
    case fourCc("lpcm"):
        return describedBits;
    default:
        return 0;
    }
}

/// Where the boxes behind an audio file description begin; reads the plain fields on the way.
std::uint64_t readAudioFields(AVAssetTrack& track, ByteView entry, bool longForms) {
    constexpr std::uint64_t kAudioHead = 36, kVersion1More = 16;
    const int version = longForms ? entry.be16(16).value_or(0) : 0;
    track.channels = entry.be16(24).value_or(0);
    track.sampleRate = entry.be32(32).value_or(0) / 65536.0;
    int bits = entry.be16(26).value_or(0);
    std::uint64_t head = kAudioHead;
    if (version == 2 && entry.has(0, 60)) {
        track.sampleRate = std::bit_cast<double>(*entry.be64(40));
        track.channels = static_cast<int>(std::min<std::uint32_t>(*entry.be32(48), INT32_MAX));
        bits = static_cast<int>(std::min<std::uint32_t>(*entry.be32(56), 64));
        head = *entry.be32(36); // the description's own size
    } else if (version == 1) {
        head += kVersion1More;
        const double samples = entry.be32(36).value_or(0);
        const double bytes = entry.be32(44).value_or(0);
        if (samples > 0 && bytes > 0)
            track.bitRate = std::floor(track.sampleRate / samples * bytes * 8);
    }
    if (const int size = uncompressedBits(entry.be32(4).value_or(0), bits); size > 0)
        track.bitRate = track.sampleRate * track.channels * size;
    return head;
}

void readAudio(AVAssetTrack& track, ByteView entry, bool longForms) {
    applyChildren(track, entry.sub(readAudioFields(track, entry, longForms)));
    // What the codec fixes, the description often leaves out or gets wrong.
    if (track.codec == QLatin1String("samr") || track.codec == QLatin1String("sawb")) {
        track.channels = 1;
        track.sampleRate = track.codec == QLatin1String("samr") ? 8000 : 16000;
    }
    if (!std::isfinite(track.sampleRate) || track.sampleRate < 0 ||
        track.sampleRate > kMaxSampleRate)
        track.sampleRate = 0;
    if (track.channels < 0 || track.channels > kMaxChannels)
        track.channels = 0;
}

} // namespace

void readSampleDescription(AVAssetTrack& track, ByteView stsd, bool quickTime) {
    const ByteView entries = stsd.sub(kEntryOffset);
    const auto box = parseBoxHeader(entries, 0, entries.size());
    if (!box)
        return;
    track.codec = fourCcText(box->type);
    const ByteView entry = entries.sub(0, box->size);
    // A version 1 of the whole box announces the short entry with further fields of its own.
    const bool longForms = quickTime || stsd.u8(0) == 0;
    if (track.mediaType == QLatin1String("vide"))
        readVisual(track, entry);
    else if (track.mediaType == QLatin1String("soun"))
        readAudio(track, entry, longForms);
}

} // namespace clipheave::platform
