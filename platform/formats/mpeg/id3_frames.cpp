// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/mpeg/id3_frames.h"

#include "platform/formats/mpeg/id3_header.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace clipheave::platform {
namespace {

// Real tags have some dozens of frames; this bounds the work on a tag of tiny ones.
constexpr std::size_t kMostId3Frames = 2000;
// A tag that is unsynchronised as a whole has to be undone in memory.
constexpr std::uint64_t kLargestUnsynchronisedTag = 16u << 20;
constexpr std::uint64_t kLargestTransformedFrame = 16u << 20;
// zlib grows a byte a thousand times at most: this bounds what comes out, whatever the frame says.
constexpr std::uint64_t kLargestCompressedFrame = 24u << 10;

struct OldFrameId {
    char old[4];
    char now[5];
};

/// ID3v2.2.0 section 4 against ID3v2.3.0 section 4. CRM has no successor.
constexpr std::array kOldFrameIds{
    OldFrameId{"BUF", "RBUF"}, OldFrameId{"CNT", "PCNT"}, OldFrameId{"COM", "COMM"},
    OldFrameId{"CRA", "AENC"}, OldFrameId{"EQU", "EQUA"}, OldFrameId{"ETC", "ETCO"},
    OldFrameId{"GEO", "GEOB"}, OldFrameId{"GP1", "GRP1"}, OldFrameId{"IPL", "IPLS"},
    OldFrameId{"LNK", "LINK"}, OldFrameId{"MCI", "MCDI"}, OldFrameId{"MLL", "MLLT"},
    OldFrameId{"MVI", "MVIN"}, OldFrameId{"MVN", "MVNM"}, OldFrameId{"PCS", "PCST"},
    OldFrameId{"PIC", "APIC"}, OldFrameId{"POP", "POPM"}, OldFrameId{"REV", "RVRB"},
    OldFrameId{"RVA", "RVAD"}, OldFrameId{"SLT", "SYLT"}, OldFrameId{"STC", "SYTC"},
    OldFrameId{"TAL", "TALB"}, OldFrameId{"TBP", "TBPM"}, OldFrameId{"TCM", "TCOM"},
    OldFrameId{"TCO", "TCON"}, OldFrameId{"TCP", "TCMP"}, OldFrameId{"TCR", "TCOP"},
    OldFrameId{"TDA", "TDAT"}, OldFrameId{"TDY", "TDLY"}, OldFrameId{"TEN", "TENC"},
    OldFrameId{"TFT", "TFLT"}, OldFrameId{"TIM", "TIME"}, OldFrameId{"TKE", "TKEY"},
    OldFrameId{"TLA", "TLAN"}, OldFrameId{"TLE", "TLEN"}, OldFrameId{"TMT", "TMED"},
    OldFrameId{"TOA", "TOPE"}, OldFrameId{"TOF", "TOFN"}, OldFrameId{"TOL", "TOLY"},
    OldFrameId{"TOR", "TORY"}, OldFrameId{"TOT", "TOAL"}, OldFrameId{"TP1", "TPE1"},
    OldFrameId{"TP2", "TPE2"}, OldFrameId{"TP3", "TPE3"}, OldFrameId{"TP4", "TPE4"},
    OldFrameId{"TPA", "TPOS"}, OldFrameId{"TPB", "TPUB"}, OldFrameId{"TRC", "TSRC"},
    OldFrameId{"TRD", "TRDA"}, OldFrameId{"TRK", "TRCK"}, OldFrameId{"TS2", "TSO2"},
    OldFrameId{"TSA", "TSOA"}, OldFrameId{"TSC", "TSOC"}, OldFrameId{"TSI", "TSIZ"},
    OldFrameId{"TSP", "TSOP"}, OldFrameId{"TSS", "TSSE"}, OldFrameId{"TST", "TSOT"},
    OldFrameId{"TT1", "TIT1"}, OldFrameId{"TT2", "TIT2"}, OldFrameId{"TT3", "TIT3"},
    OldFrameId{"TXT", "TEXT"}, OldFrameId{"TXX", "TXXX"}, OldFrameId{"TYE", "TYER"},
    OldFrameId{"UFI", "UFID"}, OldFrameId{"ULT", "USLT"}, OldFrameId{"WAF", "WOAF"},
    OldFrameId{"WAR", "WOAR"}, OldFrameId{"WAS", "WOAS"}, OldFrameId{"WCM", "WCOM"},
    OldFrameId{"WCP", "WCOP"}, OldFrameId{"WPB", "WPUB"}, OldFrameId{"WXX", "WXXX"},
};

QByteArray modernFrameId(QByteArrayView old) {
    const auto* found = std::find_if(kOldFrameIds.begin(), kOldFrameIds.end(), [old](auto& row) {
        return std::memcmp(row.old, old.data(), 3) == 0;
    });
    return found == kOldFrameIds.end() ? QByteArray() : QByteArray(found->now, 4);
}

bool isFrameIdText(QByteArrayView id) {
    return !id.isEmpty() && std::all_of(id.begin(), id.end(), [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    });
}

/// ID3v2.4.0 structure, section 6.1: drops the zero after each FF.
QByteArray withoutUnsynchronisation(const QByteArray& bytes) {
    QByteArray out(bytes.size(), Qt::Uninitialized);
    qsizetype to = 0;
    for (qsizetype from = 0; from < bytes.size(); ++from) {
        out[to++] = bytes[from];
        if (bytes[from] == '\xFF' && from + 1 < bytes.size() && bytes[from + 1] == '\0')
            ++from;
    }
    out.truncate(to);
    return out;
}

/// Some writers set the flag without doing the work: what still holds a sync mark was not changed.
bool looksUnsynchronised(const QByteArray& bytes) {
    for (qsizetype i = 0; i + 1 < bytes.size(); ++i) {
        if (bytes[i] == '\xFF' && static_cast<unsigned char>(bytes[i + 1]) >= 0xE0)
            return false;
    }
    return true;
}

/// What stands at `at` can follow a frame: another frame, padding or the end.
bool isFrameBorder(const ByteRange& frames, std::uint64_t at) {
    if (at >= frames.size())
        return at == frames.size();
    const ByteView next = frames.view(at, 4);
    return next.u8(0) == 0 || (next.size() == 4 && isFrameIdText(next.bytes()));
}

/// v2.4 sizes are 4 x 7 bits, but some programs wrote plain numbers: taken as such when only that
/// leads to a border between frames.
std::uint64_t frameSize24(const ByteRange& frames, std::uint64_t at, std::uint32_t raw) {
    if (raw < 0x80)
        return raw;
    if (raw & 0x80808080)
        return raw;
    const std::uint64_t body = at + 10;
    const std::uint64_t safe = numberOfSyncSafe(raw);
    const bool plain = !isFrameBorder(frames, body + safe) && isFrameBorder(frames, body + raw);
    return plain ? raw : safe;
}

std::optional<Id3FrameHeader> frameHeader22(const ByteRange& frames, std::uint64_t at) {
    const ByteView bytes = frames.view(at, 6);
    if (bytes.size() < 6 || !isFrameIdText(bytes.sub(0, 3).bytes()))
        return std::nullopt;
    Id3FrameHeader header;
    header.id = modernFrameId(bytes.bytes());
    header.headerSize = 6;
    header.bodySize = *bytes.be32(2) & 0xFFFFFF;
    return header;
}

std::optional<Id3FrameHeader> frameHeader23(const ByteRange& frames, std::uint64_t at,
                                            int version) {
    const ByteView bytes = frames.view(at, 10);
    if (bytes.size() < 10)
        return std::nullopt;
    Id3FrameHeader header;
    const QByteArrayView id = bytes.sub(0, 4).bytes();
    const bool old = id[3] == '\0' || id[3] == ' '; // v2.2 id in a later tag, an old writer's slip
    if (!isFrameIdText(old ? id.first(3) : id))
        return std::nullopt;
    header.id = old ? modernFrameId(id) : id.toByteArray();
    const std::uint32_t raw = *bytes.be32(4);
    const int flags = *bytes.u8(9);
    header.headerSize = 10;
    if (version == 3) {
        header.bodySize = raw;
        header.compressed = header.hasLength = flags & 0x80;
        header.encrypted = flags & 0x40;
        header.grouped = flags & 0x20;
        return header;
    }
    header.bodySize = frameSize24(frames, at, raw); // borrows anew: `bytes` is gone after this
    header.grouped = flags & 0x40;
    header.compressed = flags & 0x08;
    header.encrypted = flags & 0x04;
    header.unsynchronised = flags & 0x02;
    header.hasLength = flags & 0x01;
    return header;
}

/// The body with grouping byte, length, unsynchronisation and compression taken away.
std::optional<ByteRange> plainBody(const Id3FrameHeader& header, ByteRange body, int version) {
    if (header.encrypted)
        return std::nullopt;
    std::uint32_t length = 0;
    const std::uint64_t extra = (header.hasLength ? 4u : 0u) + (header.grouped ? 1u : 0u);
    if (header.hasLength) // v2.3: the length comes first; v2.4: the group comes first
        length = body.view(version == 4 && header.grouped ? 1 : 0, 4).be32(0).value_or(0);
    body = body.sub(extra);
    if (header.unsynchronised) {
        const auto raw = body.load(kLargestTransformedFrame);
        if (!raw)
            return std::nullopt;
        if (raw->contains('\xFF') && looksUnsynchronised(*raw))
            body = ByteRange(withoutUnsynchronisation(*raw));
    }
    if (!header.compressed)
        return body;
    const auto packed = body.load(kLargestCompressedFrame);
    const std::uint32_t expected = std::min<std::uint32_t>(
        version == 4 ? numberOfSyncSafe(length) : length, kLargestTransformedFrame);
    if (!packed || packed->isEmpty())
        return std::nullopt;
    QByteArray prefixed(4, '\0'); // the length that qUncompress begins with
    for (int i = 0; i < 4; ++i)
        prefixed[i] = static_cast<char>(expected >> (24 - 8 * i) & 0xFF);
    QByteArray plain = qUncompress(prefixed + *packed);
    return plain.isEmpty() ? std::nullopt : std::optional(ByteRange(std::move(plain)));
}

/// Bytes of the extended header; 0 when the flag is set but a frame stands there, as in real files.
std::uint64_t extendedHeaderSize(const ByteRange& body, int version) {
    const ByteView head = body.view(0, 6);
    if (head.size() < 6 || isFrameIdText(head.sub(0, 4).bytes()))
        return 0;
    return version == 3 ? std::uint64_t{*head.be32(0)} + 4 : numberOfSyncSafe(*head.be32(0));
}

} // namespace

std::optional<Id3FrameHeader> id3FrameHeaderAt(const ByteRange& frames, std::uint64_t at,
                                               int version) {
    return version == 2 ? frameHeader22(frames, at) : frameHeader23(frames, at, version);
}

std::vector<Id3Frame> readId3Frames(const ByteRange& range, QByteArrayList* unread) {
    std::vector<Id3Frame> frames;
    const auto header = parseId3Header(range.view(0, Id3Header::kSize));
    if (!header || header->version < 2 || header->version > 4 || header->compressed)
        return frames;
    ByteRange body = range.sub(Id3Header::kSize, header->bodySize);
    if (header->unsynchronised && header->version < 4) {
        const auto raw = body.load(kLargestUnsynchronisedTag);
        if (!raw)
            return frames;
        body = ByteRange(withoutUnsynchronisation(*raw));
    }
    std::uint64_t at = header->extended ? extendedHeaderSize(body, header->version) : 0;
    while (at < body.size() && frames.size() < kMostId3Frames) {
        auto frame = id3FrameHeaderAt(body, at, header->version);
        // A size beyond the tag: what the tag still holds counts, and nothing after it.
        if (!frame)
            break;
        frame->unsynchronised |= header->version == 4 && header->unsynchronised;
        const ByteRange raw = body.sub(at + frame->headerSize, frame->bodySize);
        const auto plain =
            frame->id.isEmpty() ? std::nullopt : plainBody(*frame, raw, header->version);
        if (plain && plain->size() > 0)
            frames.push_back({frame->id, *plain});
        else if (unread != nullptr && !plain && !frame->id.isEmpty() && frame->bodySize > 0)
            unread->append(frame->id);
        at += frame->headerSize + frame->bodySize;
    }
    return frames;
}

} // namespace clipheave::platform
