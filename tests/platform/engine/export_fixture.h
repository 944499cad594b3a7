// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/engine/messages.h"
#include "platform/foundation/file_reader.h"
#include "platform/media/model/media_engine.h"
#include "tests/platform/engine/engine_fixture.h"

#include <cmath>

namespace clipheave::platform {

/// Matches a note or reason with this code.
inline auto says(MessageCode code) {
    return testing::Property(&Message::code, code);
}

/// Videos made by another program, exports of them by the engine, and that program's judgement.
class ExportTest : public EngineTest {
protected:
    /// Three seconds of video and a tone; `options` as on the command line.
    [[nodiscard]] QString make(const char* name, const char* options,
                               const char* frame = "testsrc2=d=3:s=192x128:r=25",
                               const char* audio = "sine=d=3:r=44100") const {
        QString path = m_dir.path(name);
        const QByteArray inputs = QByteArray("-f lavfi -i ") + frame + " -f lavfi -i " + audio;
        testkit::ffmpeg(inputs + " -pix_fmt yuv420p " + options, {path});
        return path;
    }
    [[nodiscard]] static QByteArray ffprobe(const QString& path, const char* stream,
                                            const char* entries) {
        QByteArray text = testkit::ffprobe(QByteArray("-of csv=p=0 -select_streams ") + stream +
                                               " -show_entries " + entries,
                                           path)
                              .trimmed();
        // Empty side data leaves commas and lines behind.
        text.replace(",\n", "\n").replace("\n\n", "\n");
        while (text.endsWith(','))
            text.chop(1);
        return text;
    }
    /// Likeness of the frames of `output` and those of `source` behind `filter`, 0 to 1; frame by
    /// frame in order.
    [[nodiscard]] static double likeness(const QString& output, const QString& source,
                                         const char* filter) {
        const QByteArray graph = QByteArray("[0:v]format=yuv420p,settb=1/25,setpts=N[a];[1:v]") +
                                 filter +
                                 ",format=yuv420p,settb=1/25,setpts=N[b];[a][b]ssim=shortest=1";
        const auto judged = testkit::run(
            u"ffmpeg"_s, {u"-noautorotate"_s, u"-i"_s, output, u"-noautorotate"_s, u"-i"_s, source,
                          u"-lavfi"_s, QString::fromLatin1(graph), u"-f"_s, u"null"_s, u"-"_s});
        const qsizetype at = judged.err.lastIndexOf("All:");
        return at < 0 ? -1 : judged.err.mid(at + 4, 6).toDouble();
    }
    /// Mono samples of the audio at 8000 Hz, as a player would give them: what an encoder needs to
    /// get going lies before the time 0.
    [[nodiscard]] static std::vector<float> samples(const QString& path) {
        const QByteArray got =
            testkit::ffmpeg("-copyts -i % -vn -af atrim=start=0 -ac 1 -ar 8000 -f f32le -", {path});
        std::vector<float> values(static_cast<std::size_t>(got.size()) / sizeof(float));
        std::memcpy(values.data(), got.constData(), values.size() * sizeof(float));
        return values;
    }
    /// Correlation of two audio tracks, 1 for the same; a millisecond of shift is allowed, which is
    /// as fine as the timestamps of some containers are.
    [[nodiscard]] static double correlation(const std::vector<float>& a,
                                            const std::vector<float>& b) {
        double best = -1;
        for (std::ptrdiff_t lag = -8; lag <= 8; ++lag) {
            const auto from = static_cast<std::size_t>(std::max<std::ptrdiff_t>(lag, 0));
            const auto to = static_cast<std::size_t>(std::max<std::ptrdiff_t>(-lag, 0));
            double ab = 0, aa = 0, bb = 0;
            for (std::size_t i = 0; i + from < a.size() && i + to < b.size(); ++i) {
                const double x = double(a[i + from]), y = double(b[i + to]);
                ab += x * y;
                aa += x * x;
                bb += y * y;
            }
            best = std::max(best, aa > 0 && bb > 0 ? ab / std::sqrt(aa * bb) : 0);
        }
        return best;
    }

    [[nodiscard]] static ExportSegment segment(const QString& path, double from, double to,
                                               double at = 0, double speed = 1) {
        const CMTime length = CMTimeMakeWithSeconds(to - from, 90000);
        return {
            path,
            0,
            {CMTimeMakeWithSeconds(from, 90000), length},
            {CMTimeMakeWithSeconds(at, 90000), CMTimeMakeWithSeconds((to - from) / speed, 90000)}};
    }
    /// Video and audio of a whole file, encoded.
    [[nodiscard]] static ExportPlan planFor(const QString& path, double seconds = 3) {
        ExportPlan plan;
        plan.video.emplace().segments = {segment(path, 0, seconds)};
        plan.audio.emplace().segments = {segment(path, 0, seconds)};
        return plan;
    }
    [[nodiscard]] Result<Notes> run(const ExportPlan& plan, const char* name = "out.mp4") {
        m_out = m_dir.path(name);
        return m_engine->runExport(plan, m_out, {}, m_progress);
    }
    /// The same, to succeed; returns the notes.
    Notes exported(const ExportPlan& plan, const char* name = "out.mp4") {
        const auto done = run(plan, name);
        EXPECT_TRUE(done) << done.error().text();
        return done.value_or(Notes());
    }

    QString m_out;
    std::function<bool(double)> m_progress;
};

} // namespace clipheave::platform
