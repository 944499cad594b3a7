// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/decode/disposable_frame.h"

#include <span>

namespace clipheave::platform {

namespace {

using Bytes = std::span<const std::uint8_t>;
constexpr std::size_t kNoPosition = SIZE_MAX;

/// Position after the next start code 00 00 01 from `from` on.
std::size_t afterStartCode(Bytes bytes, std::size_t from) {
    for (std::size_t i = from; i + 3 < bytes.size(); ++i)
        if (bytes[i] == 0 && bytes[i + 1] == 0 && bytes[i + 2] == 1)
            return i + 3;
    return kNoPosition;
}

/// Calls `visit` with the bytes from each unit's header to the end; stops when it returns false.
template <class Visit> bool eachUnit(Bytes bytes, std::size_t lengthSize, Visit visit) {
    if (lengthSize == 0) {
        for (std::size_t at = afterStartCode(bytes, 0); at != kNoPosition;
             at = afterStartCode(bytes, at))
            if (!visit(bytes.subspan(at)))
                return false;
        return true;
    }
    while (bytes.size() > lengthSize) {
        std::size_t length = 0;
        for (std::size_t i = 0; i < lengthSize; ++i)
            length = length << 8 | bytes[i];
        bytes = bytes.subspan(lengthSize);
        if (length == 0 || length > bytes.size() || !visit(bytes))
            return false;
        bytes = bytes.subspan(length);
    }
    return bytes.empty();
}

/// ISO/IEC 14496-10, 7.4.1: nal_ref_idc 0 says that the slice is not a reference.
bool isDisposableAvc(Bytes packet, Bytes extra) {
    constexpr int kSlice = 1, kSei = 6, kDelimiter = 9, kFiller = 12;
    const bool hasLengths = extra.size() > 4 && extra[0] == 1;
    const std::size_t lengthSize = hasLengths ? (extra[4] & 3u) + 1u : 0u;
    bool hasSlice = false;
    const bool allDisposable = eachUnit(packet, lengthSize, [&](Bytes unit) {
        const int type = unit[0] & 31;
        const bool isSlice = type == kSlice && (unit[0] & 0x60) == 0;
        hasSlice = hasSlice || isSlice;
        return isSlice || type == kSei || type == kDelimiter || type == kFiller;
    });
    return allDisposable && hasSlice;
}

/// ISO/IEC 23008-2, 7.4.2.2: the even types below 16 are not references in their temporal layer; of
/// the highest layer, in none. ISO/IEC 14496-15, 8.3.3: the record has the number of layers.
bool isDisposableHevc(Bytes packet, Bytes extra) {
    constexpr std::size_t kFixedRecord = 22;
    constexpr int kLastTrailing = 15, kDelimiter = 35, kFiller = 38, kPrefixSei = 39,
                  kSuffixSei = 40;
    if (extra.size() < kFixedRecord || extra[0] != 1)
        return false;
    const int layers = extra[21] >> 3 & 7;
    const std::size_t lengthSize = (extra[21] & 3u) + 1u;
    bool hasSlice = false;
    const bool allDisposable = eachUnit(packet, lengthSize, [&](Bytes unit) {
        if (unit.size() < 2)
            return false;
        const int type = unit[0] >> 1 & 63;
        const int layer = unit[1] & 7; // counted from 1
        const bool isSlice =
            type <= kLastTrailing && type % 2 == 0 && layers != 0 && layer == layers;
        hasSlice = hasSlice || isSlice;
        return isSlice || type == kDelimiter || type == kFiller || type == kPrefixSei ||
               type == kSuffixSei;
    });
    return allDisposable && hasSlice;
}

/// ISO/IEC 13818-2, 6.3.9: a B-frame is never a reference. Other headers in the packet stay.
bool isDisposableMpeg2(Bytes packet) {
    constexpr int kFrame = 0x00, kFirstHeader = 0xB3, kExtension = 0xB5, kBothWays = 3;
    bool hasFrame = false;
    const bool allDisposable = eachUnit(packet, 0, [&](Bytes unit) {
        if (unit[0] >= kFirstHeader)
            return unit[0] == kExtension;
        if (unit[0] != kFrame)
            return true;
        hasFrame = unit.size() > 2 && (unit[2] >> 3 & 7) == kBothWays;
        return hasFrame;
    });
    return allDisposable && hasFrame;
}

} // namespace

bool isDisposableFrame(const AVPacket& packet, const AVCodecParameters& video) {
    if (packet.data == nullptr || packet.size <= 0 || (packet.flags & AV_PKT_FLAG_KEY) != 0)
        return false;
    const Bytes bytes(packet.data, static_cast<std::size_t>(packet.size));
    const Bytes extra(video.extradata, video.extradata == nullptr || video.extradata_size <= 0
                                           ? 0
                                           : static_cast<std::size_t>(video.extradata_size));
    switch (video.codec_id) {
    case AV_CODEC_ID_H264:
        return isDisposableAvc(bytes, extra);
    case AV_CODEC_ID_HEVC:
        return isDisposableHevc(bytes, extra);
    case AV_CODEC_ID_MPEG1VIDEO:
    case AV_CODEC_ID_MPEG2VIDEO:
        return isDisposableMpeg2(bytes);
    default:
        return false;
    }
}

} // namespace clipheave::platform
