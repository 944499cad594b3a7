// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/engine/io/chapters.h"

#include "platform/engine/io/file_input.h"
#include "platform/engine/messages.h"

#include <algorithm>
#include <limits>

namespace clipheave::platform {

namespace {

constexpr AVRational kStartTimeBase{1, 1'000'000};
constexpr unsigned kMostChapters = 1 << 16; ///< more than a book has; a lying file may claim more

/// Returns `time` less `start` (in microseconds); kNoTimestamp when that overflows.
std::int64_t fromStart(std::int64_t time, std::int64_t start, AVRational timeBase) {
    if (time == kNoTimestamp)
        return time;
    std::int64_t left = 0;
    const std::int64_t shift = av_rescale_q(start, kStartTimeBase, timeBase);
    return __builtin_sub_overflow(time, shift, &left) ? kNoTimestamp : left;
}

/// Returns the duration in `timeBase`, the largest number where it is not known.
std::int64_t endOf(const AVFormatContext& source, AVRational timeBase) {
    const bool known =
        source.duration > 0 && source.duration_estimation_method != AVFMT_DURATION_FROM_BITRATE;
    return known ? av_rescale_q(source.duration, kStartTimeBase, timeBase)
                 : std::numeric_limits<std::int64_t>::max();
}

} // namespace

Notes copyChapters(const AVFormatContext& source, AVFormatContext& target) {
    int beyond = 0;
    for (unsigned i = 0; i < std::min(source.nb_chapters, kMostChapters); ++i) {
        const AVChapter& chapter = *source.chapters[i];
        const AVRational base = chapter.time_base;
        const std::int64_t start = fromStart(chapter.start, startMicroseconds(source), base);
        const std::int64_t end = fromStart(chapter.end, startMicroseconds(source), base);
        // No time at all is the smallest number.
        if (base.num <= 0 || base.den <= 0 || start == kNoTimestamp || end <= 0 || end < start)
            continue;
        // Players, and this program, take the end of a chapter for that of the file.
        const std::int64_t most = endOf(source, base);
        if (start >= most) {
            ++beyond;
            continue;
        }
        auto* copy = static_cast<AVChapter*>(av_mallocz(sizeof(AVChapter)));
        if (copy == nullptr)
            return {};
        copy->id = chapter.id;
        copy->time_base = base;
        copy->start = std::max<std::int64_t>(start, 0);
        copy->end = std::min(end, most);
        av_dict_copy(&copy->metadata, chapter.metadata, 0);
        av_dynarray_add(&target.chapters, reinterpret_cast<int*>(&target.nb_chapters), copy);
    }
    return beyond > 0 ? Notes{Message(kChaptersBeyondEnd, {QString::number(beyond)})} : Notes();
}

void copyChaptersOfFile(const QString& path, double seconds, AVFormatContext& target) {
    Result<FileReader> reader = FileReader::open(path);
    if (!reader)
        return;
    const auto input = FileInput::open(*reader, InputLimits());
    if (!input)
        return;
    copyChapters(*(*input)->context(), target);
    while (target.nb_chapters > 0) {
        AVChapter* last = target.chapters[target.nb_chapters - 1];
        const double length = av_q2d(last->time_base);
        if (static_cast<double>(last->start) * length < seconds) {
            last->end = std::min(last->end, static_cast<std::int64_t>(seconds / length));
            return;
        }
        av_dict_free(&last->metadata);
        av_freep(&target.chapters[--target.nb_chapters]);
    }
}

} // namespace clipheave::platform
