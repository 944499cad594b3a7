// SPDX-License-Identifier: GPL-3.0-or-later
#include "fuzz/audio_file_input.h"
#include "platform/formats/flac/flac_tags.h"
#include "platform/formats/mpeg/id3_tag_builder.h"
#include "platform/formats/mpeg/mpeg_tags.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdlib>

using namespace clipheave::platform;

namespace {

/// A file that was written must have the audio of its source behind the new tag, and nothing else.
void retag(const QString& source, const QString& target, const MpegAudio& audio) {
    static const QByteArray tag = *renderId3Tag({{ID3FID_TITLE_, QStringLiteral("x")}}, "II*");
    if (!replaceMpegTags(source, target, tag, {}))
        std::abort();
    auto written = FileReader::open(target);
    const auto again = written ? findMpegAudio(*written) : tl::unexpected(written.error());
    if (!again || again->end - again->start != audio.end - audio.start ||
        written->size() != static_cast<std::uint64_t>(tag.size()) + again->end - again->start)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const QTemporaryDir folder(QStringLiteral("/dev/shm/mpeg-tags-fuzz-XXXXXX"));
    const QString target = folder.filePath(QStringLiteral("target"));
    withAudioInput(data, size, [&](FileReader& reader) {
        if (const auto audio = findMpegAudio(reader)) {
            if (audio->start >= audio->end || audio->end > reader.size())
                std::abort();
            retag(reader.path(), target, *audio);
        }
        const FlacTagChanges changes{{{QStringLiteral("title"), QStringLiteral("x")}}, {}};
        if (rewriteFlacTags(reader.path(), target, changes, {})) {
            if (!rewriteFlacTags(target, target + u'2', changes, {}))
                std::abort();
        }
    });
    return 0;
}
