// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/image/write/motion_video.h"

#include "platform/isobmff/box.h"

#include <algorithm>
#include <array>
#include <optional>

namespace clipheave::platform {

namespace {

constexpr std::uint64_t kMostMovieBox = 64u << 20, kMostTypeBox = 1024;

/// Boxes of the top level; anything else behind a video belongs to the photo's own trailer.
bool belongsToVideo(std::uint32_t type) {
    static constexpr std::array kTypes{fourCc("ftyp"), fourCc("moov"), fourCc("mdat"),
                                       fourCc("free"), fourCc("skip"), fourCc("wide"),
                                       fourCc("uuid"), fourCc("meta"), fourCc("moof"),
                                       fourCc("mfra"), fourCc("sidx"), fourCc("styp")};
    return std::find(kTypes.begin(), kTypes.end(), type) != kTypes.end();
}

template <class Visit>
std::uint64_t walkVideo(FileReader& reader, std::uint64_t begin, std::uint64_t end,
                        const Visit& visit) {
    HeaderReader headers(reader);
    FileBoxWalker walker(headers, begin, end);
    std::uint64_t at = begin;
    while (const auto box = walker.next()) {
        const bool isFirst = box->offset == begin;
        if (!belongsToVideo(box->type) || isFirst != (box->type == fourCc("ftyp")) ||
            (isFirst && box->size > kMostTypeBox))
            break;
        visit(*box);
        at = box->end();
    }
    return at;
}

} // namespace

std::uint64_t endOfMotionVideo(FileReader& reader, std::uint64_t begin, std::uint64_t end) {
    return walkVideo(reader, begin, end, [](const Box&) {});
}

VideoPlace placeOfMotionVideo(FileReader& reader, std::uint64_t begin, std::uint64_t end) {
    std::optional<Box> movie;
    walkVideo(reader, begin, end, [&](const Box& box) {
        if (box.type == fourCc("moov"))
            movie = box;
    });
    if (!movie || movie->cut || movie->size > kMostMovieBox)
        return VideoPlace::Unknown;
    const auto bytes = reader.read(movie->offset, movie->size);
    if (!bytes)
        return VideoPlace::Unknown;
    // The boxes and the key that hold one, and the tracks of positions of camera makers: as names
    // they do not stand in a movie box by chance.
    static const std::array kSigns{QByteArray("\xA9xyz"), QByteArray("loci"),
                                   QByteArray("location.ISO6709"), QByteArray("camm"),
                                   QByteArray("gpmd")};
    return std::any_of(kSigns.begin(), kSigns.end(),
                       [&](const QByteArray& sign) { return bytes->contains(sign); })
               ? VideoPlace::There
               : VideoPlace::None;
}

} // namespace clipheave::platform
