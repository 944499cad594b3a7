// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/asset/container_sniffer.h"

#include "platform/foundation/paths.h"
#include "platform/media/asset/asf_streams.h"

#include <algorithm>
#include <array>

namespace clipheave::platform {

namespace {

constexpr std::uint64_t kHeadBytes = 4096; ///< holds the stream headers of Ogg
constexpr std::uint64_t kId3HeaderBytes = 10;
constexpr int kMostId3Tags = 4;

struct Signature {
    QByteArrayView bytes;
    Container container;
};

template <std::size_t N> constexpr QByteArrayView signatureBytes(const char (&text)[N]) {
    return {text, static_cast<qsizetype>(N - 1)};
}

constexpr char kAsf[] = "\x30\x26\xB2\x75\x8E\x66\xCF\x11";

// Source: the description of each format. TS and MPEG audio, which have no fixed bytes, are below.
const std::array kSignatures{
    Signature{signatureBytes("fLaC"), Container::Flac},
    Signature{signatureBytes("caff"), Container::Caf},
    Signature{signatureBytes(".snd"), Container::Au},
    Signature{signatureBytes("OggS"), Container::Tagged},
    Signature{signatureBytes(kAsf), Container::Tagged},
    Signature{signatureBytes("MAC "), Container::Tagged},
    Signature{signatureBytes("wvpk"), Container::Tagged},
    Signature{signatureBytes("MPCK"), Container::Tagged},
    Signature{signatureBytes("MP+"), Container::Tagged},
    Signature{signatureBytes("TTA1"), Container::Tagged},
    Signature{signatureBytes("TTA2"), Container::Tagged},
    Signature{signatureBytes("DSD "), Container::Tagged},
    Signature{signatureBytes("APETAGEX"), Container::MpegAudio},
    Signature{signatureBytes("FRM8"), Container::Other},             // DSDIFF
    Signature{signatureBytes("tBaK"), Container::Other},             // TAK
    Signature{signatureBytes("\x1A\x45\xDF\xA3"), Container::Other}, // Matroska
    Signature{signatureBytes("\x00\x00\x01\xBA"), Container::Other}, // MPEG program stream
    Signature{signatureBytes("\x00\x00\x01\xB3"), Container::Other}, // MPEG video
    Signature{signatureBytes("FLV\x01"), Container::Other},
    Signature{signatureBytes("\x06\x0E\x2B\x34"), Container::Other}, // MXF
    Signature{signatureBytes(".RMF"), Container::Other},
    Signature{signatureBytes("#!AMR"), Container::Other},
    Signature{signatureBytes("\x0B\x77"), Container::Other},         // AC-3
    Signature{signatureBytes("\x7F\xFE\x80\x01"), Container::Other}, // DTS
};

/// Types of boxes that stand first in ISO base media files; files older than `ftyp` begin with
/// another one.
Container sniffIsobmff(ByteView head) {
    static constexpr std::array<const char*, 9> kFirstBoxes{"moov", "mdat", "wide", "free", "skip",
                                                            "pnot", "moof", "sidx", "uuid"};
    const QByteArrayView type = head.sub(4, 4).bytes();
    if (type == QByteArrayView("ftyp") || type == QByteArrayView("styp"))
        return head.sub(8, 4).bytes() == QByteArrayView("qt  ") ? Container::QuickTime
                                                                : Container::Mp4;
    const bool known = std::any_of(kFirstBoxes.begin(), kFirstBoxes.end(),
                                   [&](const char* name) { return type == QByteArrayView(name); });
    return known ? Container::QuickTime : Container::Unknown;
}

/// Formats made of chunks: the form type at offset 8 decides.
Container sniffChunks(ByteView head) {
    const QByteArrayView group = head.sub(0, 4).bytes();
    const QByteArrayView form = head.sub(8, 4).bytes();
    const bool riff = group == QByteArrayView("RIFF") || group == QByteArrayView("RF64") ||
                      group == QByteArrayView("BW64");
    if (riff)
        return form == QByteArrayView("WAVE") ? Container::Wave : Container::Other;
    if (group == QByteArrayView("FORM") &&
        (form == QByteArrayView("AIFF") || form == QByteArrayView("AIFC")))
        return Container::Aiff;
    return Container::Unknown;
}

/// Frame headers: eleven set bits, then version, layer, bit rate and sampling rate, each with a
/// forbidden value. Layer 0 is the ADTS form of AAC.
Container sniffFrameSync(ByteView head) {
    const auto header = head.be32(0);
    if (!header || (*header >> 21) != 0x7FF)
        return Container::Unknown;
    const unsigned version = *header >> 19 & 3, layer = *header >> 17 & 3;
    const unsigned bitRate = *header >> 12 & 15, samplingRate = *header >> 10 & 3;
    if (layer == 0)
        return (*header >> 20 & 1) != 0 ? Container::Other : Container::Unknown;
    if (version == 1 || bitRate == 15 || samplingRate == 3)
        return Container::Unknown;
    return Container::MpegAudio;
}

/// Looks for the sync byte of three packets in a row; those of M2TS have four more bytes in front.
bool isTransportStream(ByteView head) {
    const auto syncs = [&](std::uint64_t first, std::uint64_t step) {
        return head.u8(first) == 0x47 && head.u8(first + step) == 0x47 &&
               head.u8(first + 2 * step) == 0x47;
    };
    return syncs(0, 188) || syncs(4, 192);
}

/// Returns the size of the ID3v2 tag at the start, header and footer included; 0 when there is
/// none. Source: ID3 tag version 2.4.0, main structure, 3.1 (sizes of 7 bits a byte).
std::uint64_t id3TagBytes(ByteView head) {
    if (!head.startsWith("ID3") || !head.has(0, kId3HeaderBytes) || *head.u8(3) == 0xFF)
        return 0;
    std::uint64_t size = 0;
    for (std::uint64_t i = 6; i < kId3HeaderBytes; ++i) {
        if (*head.u8(i) > 0x7F)
            return 0;
        size = size << 7 | *head.u8(i);
    }
    const bool footer = (*head.u8(5) & 0x10) != 0;
    return kId3HeaderBytes + size + (footer ? kId3HeaderBytes : 0);
}

bool isOggVideo(ByteView head) {
    const QByteArrayView bytes = head.bytes();
    return bytes.indexOf(signatureBytes("\x80theora")) >= 0 ||
           bytes.indexOf(signatureBytes("BBCD\0")) >= 0 ||
           bytes.indexOf(signatureBytes("OVP80")) >= 0;
}

bool isNamedMpegAudio(const QString& path) {
    const QString extension = pathExtension(path).toLower();
    return extension == QLatin1String("mp3") || extension == QLatin1String("mp2") ||
           extension == QLatin1String("mp1");
}

} // namespace

Container sniffContainer(ByteView head) {
    if (const std::uint64_t tag = id3TagBytes(head); tag != 0) {
        const Container behind = sniffContainer(head.sub(tag));
        return behind == Container::Unknown ? Container::MpegAudio : behind;
    }
    for (const Signature& signature : kSignatures)
        if (head.startsWith(signature.bytes))
            return signature.container;
    if (const Container found = sniffIsobmff(head); found != Container::Unknown)
        return found;
    if (const Container found = sniffChunks(head); found != Container::Unknown)
        return found;
    if (isTransportStream(head))
        return Container::Other;
    return sniffFrameSync(head);
}

SniffedFile sniffFile(FileReader& reader) {
    SniffedFile sniffed;
    std::uint64_t offset = 0;
    for (int tags = 0; tags < kMostId3Tags; ++tags) {
        const std::uint64_t tag = id3TagBytes(reader.viewUpTo(offset, kId3HeaderBytes));
        if (tag == 0)
            break;
        sniffed.hasId3Prefix = true;
        offset += tag;
    }
    const ByteView head = reader.viewUpTo(offset, kHeadBytes);
    sniffed.container = sniffContainer(head);
    if (head.startsWith("OggS"))
        sniffed.hasVideo = isOggVideo(head);
    if (head.startsWith(signatureBytes(kAsf))) {
        const AsfStreams streams = asfStreams(reader, offset);
        sniffed.hasVideo = streams.video;
        sniffed.hasAudio = streams.audio;
    }
    // MPEG audio may begin with padding or with the rest of a frame; only then does the name count.
    if (sniffed.container == Container::Unknown &&
        (sniffed.hasId3Prefix || isNamedMpegAudio(reader.path())))
        sniffed.container = Container::MpegAudio;
    return sniffed;
}

} // namespace clipheave::platform
