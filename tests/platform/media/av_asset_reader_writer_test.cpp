// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/asset/av_asset_image_generator.h"
#include "platform/media/asset/av_asset_reader.h"
#include "platform/media/asset/av_asset_writer.h"
#include "platform/media/export/av_asset_export_session.h"
#include "tests/platform/engine/export_fixture.h"
#include "tests/testkit/tiny_disk.h"

#include <QDir>

#include <chrono>
#include <cstdlib>
#include <future>

namespace clipheave::platform {

namespace {

using namespace std::chrono_literals;
using WriterStatus = AVAssetWriterStatus;
using ReaderStatus = AVAssetReaderStatus;

QString text(const char16_t* constant) {
    return QString::fromUtf16(constant);
}

/// A video that is being read.
struct Reading {
    std::unique_ptr<AVAssetReader> reader;
    std::shared_ptr<AVAssetReaderTrackOutput> output;
    AVAssetTrack track;

    explicit Reading(const QString& path) {
        const auto asset = AVURLAsset::assetWithPath(path);
        if (!asset)
            return;
        for (const AVAssetTrack& each : asset->tracks())
            if (each.mediaType == QStringView(u"vide") && track.mediaType.isEmpty())
                track = each;
        reader = AVAssetReader::initWithAsset(*asset).value();
        output = AVAssetReaderTrackOutput::assetReaderTrackOutputWithTrack(
            track, {{text(kCVPixelBufferPixelFormatTypeKey), kCVPixelFormatType_32BGRA}});
        if (reader->addOutput(output))
            static_cast<void>(reader->startReading());
    }
    std::vector<CMSampleBuffer> rest() const {
        std::vector<CMSampleBuffer> all;
        while (auto sample = output->copyNextSampleBuffer())
            all.push_back(std::move(*sample));
        return all;
    }
};

/// A video that is being written.
struct Writing {
    std::unique_ptr<AVAssetWriter> writer;
    std::shared_ptr<AVAssetWriterInput> input;

    Writing(const QString& path, QSize size, const char16_t* type = AVFileTypeQuickTimeMovie)
        : writer(AVAssetWriter::initWithURL(path, text(type)).value()),
          input(AVAssetWriterInput::assetWriterInputWithMediaType(
              text(AVMediaTypeVideo), {{text(AVVideoCodecKey), text(AVVideoCodecTypeH264)},
                                       {text(AVVideoWidthKey), size.width()},
                                       {text(AVVideoHeightKey), size.height()}})) {
        EXPECT_TRUE(writer->addInput(input));
    }
    bool begin(CMTime start = kCMTimeZero) const {
        const bool begun = writer->startWriting();
        writer->startSessionAtSourceTime(start);
        return begun;
    }
    /// As a job does it; false when it fails.
    bool append(const CMSampleBuffer& sample) const {
        while (!input->isReadyForMoreMediaData())
            std::this_thread::sleep_for(2ms);
        return input->appendSampleBuffer(sample);
    }
    WriterStatus finish() const {
        std::promise<void> done;
        writer->finishWritingWithCompletionHandler([&done] { done.set_value(); });
        if (done.get_future().wait_for(60s) != std::future_status::ready)
            ADD_FAILURE() << "the handler was not called";
        return writer->status();
    }
    std::string why() const { return writer->error().text().toStdString(); }
};

/// Noise, which makes large files, at `frame` / 25 s.
CMSampleBuffer noise(QSize size, int frame) {
    auto buffer = CVPixelBuffer::create(size).value();
    unsigned value = static_cast<unsigned>(frame) * 7919U + 1;
    for (int i = 0; i < buffer->bytesPerRow() * buffer->height(); ++i)
        buffer->baseAddress()[i] = static_cast<std::uint8_t>((value = value * 1664525U + 1) >> 24);
    return {buffer, CMTimeMake(frame, 25), CMTimeMake(1, 25)};
}

std::array<int, 3> redGreenBlue(const CVPixelBuffer& buffer, int x, int y) {
    const std::uint8_t* pixel = buffer.baseAddress() + buffer.bytesPerRow() * y + x * 4;
    return {pixel[2], pixel[1], pixel[0]};
}

class ReaderWriterTest : public ExportTest {
protected:
    [[nodiscard]] QString path(const char* name) const { return m_dir.path(name); }
    /// All frames of one video into another.
    static void copyFrames(const QString& source, const Writing& to) {
        const Reading from(source);
        ASSERT_TRUE(from.reader);
        ASSERT_TRUE(to.begin()) << to.why();
        while (const auto sample = from.output->copyNextSampleBuffer())
            ASSERT_TRUE(to.append(*sample)) << to.why();
        EXPECT_EQ(from.reader->status(), ReaderStatus::Completed) << from.reader->error().text();
        to.input->markAsFinished();
        EXPECT_EQ(to.finish(), WriterStatus::Completed) << to.why();
    }
    [[nodiscard]] static QList<QByteArray> frameTimes(const QString& video) {
        QList<QByteArray> times = ffprobe(video, "v", "frame=pts_time").split('\n');
        times.removeAll({});
        for (QByteArray& time : times)
            time = time.left(8); // side data leaves a comma
        return times;
    }
    /// When the last frame ends, in milliseconds.
    [[nodiscard]] static int endOf(const QString& video) {
        // Releases of ffprobe differ on whether the file's duration counts from its first frame.
        const QList<QByteArray> track =
            ffprobe(video, "v", "stream=start_time,duration").split(',');
        return qRound(1000 * (track.value(0).toDouble() + track.value(1).toDouble()));
    }
    /// What a filter before the comparison must do for the output's matrix.
    static constexpr const char* kToBt709 = "scale=in_color_matrix=bt601:out_color_matrix=bt709";
};

} // namespace

TEST_F(ReaderWriterTest, KeepsEveryFrameAndItsTime) {
    // Of 25 frames a second some are left out: frames of one, two and seven times 40 ms.
    const char* uneven = "-vf select=lt(n\\,20)+not(mod(n\\,2))*lt(n\\,40)+not(mod(n\\,7)) "
                         "-vsync vfr -c:v libx264 -an -metadata "
                         "creation_time=2011-12-13T14:15:16Z";
    const struct {
        const char *source, *options, *target;
        const char16_t* type;
        const char* brand;
        int end;
    } videos[] = {{"a.mov", uneven, "a out.mov", AVFileTypeQuickTimeMovie, "qt", 2840},
                  {"b.mp4", uneven, "b.mov.mp4", AVFileTypeMPEG4, "isom", 2840},
                  {"c.mkv", "-c:v mpeg4 -q:v 2 -bf 2", "c.m4v", AVFileTypeAppleM4V, "M4V", 3003}};
    for (const auto& video : videos) {
        const QString source = make(video.source, video.options), target = path(video.target);
        const Writing to(target, {192, 128}, video.type);
        to.writer->setHeaderDatesOf(source);
        copyFrames(source, to);
        EXPECT_EQ(frameTimes(target), frameTimes(source)) << video.source;
        EXPECT_EQ(endOf(target), video.end) << video.source;
        EXPECT_GT(likeness(target, source, kToBt709), 0.98) << video.source;
        const QByteArray facts = ffprobe(target, "v",
                                         "stream=codec_tag_string,color_range,color_space,color_"
                                         "transfer,color_primaries:format_tags=major_brand,"
                                         "creation_time");
        EXPECT_TRUE(facts.startsWith("avc1,tv,bt709,bt709,bt709")) << facts.constData();
        EXPECT_TRUE(facts.contains(video.brand)) << facts.constData();
        EXPECT_EQ(facts.contains("2011-12-13T14:15:16"), video.options == uneven);
    }
}

TEST_F(ReaderWriterTest, LeavesOutWhatAnEditListHides) {
    const QString source = path("cut.mov"), target = path("out.mov");
    testkit::ffmpeg("-ss 0.5 -i % -c copy", {make("whole.mov", "-c:v libx264 -g 50 -an"), source});
    copyFrames(source, Writing(target, {192, 128}));
    EXPECT_EQ(frameTimes(target), frameTimes(source));
    EXPECT_EQ(frameTimes(target).size(), 62);
    EXPECT_GT(likeness(target, source, kToBt709), 0.98);
}

TEST_F(ReaderWriterTest, CutsAtTheSessionsStartAndKeepsALateBeginning) {
    const struct {
        CMTime start;
        const char* first;
        int count;
    } sessions[] = {{CMTimeMake(1, 25), "0.000000", 9}, // the first frame ends there
                    {CMTimeMake(-1, 5), "0.200000", 10},
                    {CMTimeMake(1, 50), "0.000000", 10}}; // in its middle
    for (const auto& session : sessions) {
        const QString target = path("cut.mov");
        const Writing to(target, {64, 64});
        ASSERT_TRUE(to.begin(session.start));
        for (int i = 0; i < 10; ++i) {
            CMSampleBuffer sample = noise({64, 64}, i);
            sample.duration = i == 9 ? CMTimeMake(3, 5) : CMTime{0, 0};
            ASSERT_TRUE(to.append(sample)) << to.why();
        }
        ASSERT_EQ(to.finish(), WriterStatus::Completed) << to.why();
        const QList<QByteArray> times = frameTimes(target);
        EXPECT_EQ(times.size(), session.count);
        EXPECT_TRUE(times.front().startsWith(session.first)) << times.front().constData();
        EXPECT_EQ(endOf(target), qRound(1000 * times.back().toDouble()) + 600);
    }
}

TEST_F(ReaderWriterTest, ReadsAndWritesTheColoursThatAreMeant) {
    const std::array<std::array<int, 3>, 6> colours{
        {{255, 0, 0}, {0, 255, 0}, {0, 0, 255}, {255, 255, 0}, {32, 192, 64}, {200, 100, 220}}};
    const char* patches = "color=0xFF0000:s=32x64:d=1:r=5[a];color=0x00FF00:s=32x64:d=1:r=5[b];"
                          "color=0x0000FF:s=32x64:d=1:r=5[c];color=0xFFFF00:s=32x64:d=1:r=5[d];"
                          "color=0x20C040:s=32x64:d=1:r=5[e];color=0xC864DC:s=32x64:d=1:r=5[f];"
                          "[a][b][c][d][e][f]hstack=6";
    const char* videos[] = {
        "-vf format=rgb24,scale=out_color_matrix=bt601:out_range=tv,format=yuv420p -colorspace "
        "smpte170m -color_range tv -c:v libx264 -crf 1",
        "-vf format=rgb24,scale=out_color_matrix=bt709:out_range=tv,format=yuv420p -colorspace "
        "bt709 -color_range tv -c:v libx264 -crf 1",
        "-vf format=rgb24,scale=out_color_matrix=bt709:out_range=pc,format=yuvj420p -pix_fmt "
        "yuvj420p -colorspace bt709 -color_range pc -c:v libx264 -crf 1",
        "-vf format=rgb24,scale=out_color_matrix=bt709:out_range=tv,format=yuv422p10le -pix_fmt "
        "yuv422p10le -colorspace bt709 -color_range tv -c:v libx264 -crf 1",
        "-vf format=rgb24,scale=out_color_matrix=bt2020:out_range=tv,format=yuv420p10le -pix_fmt "
        "yuv420p10le -colorspace bt2020nc -color_range tv -c:v libx264 -crf 1",
        "-pix_fmt gbrp -c:v ffv1",
        "-pix_fmt bgra -c:v png"};
    for (const char* options : videos) {
        const QString source = make("colours.mkv", options, patches), target = path("out.mov");
        copyFrames(source, Writing(target, {192, 64}));
        const auto first = Reading(source).output->copyNextSampleBuffer();
        ASSERT_TRUE(first) << options;
        const QByteArray again = testkit::ffmpeg(
            "-i % -frames:v 1 -vf scale=in_color_matrix=bt709,format=rgb24 -f rawvideo -",
            {target});
        ASSERT_EQ(again.size(), 192 * 64 * 3);
        for (std::size_t i = 0; i < colours.size(); ++i) {
            const int x = static_cast<int>(i) * 32 + 16;
            const auto read = redGreenBlue(*first->imageBuffer, x, 32);
            for (std::size_t c = 0; c < 3; ++c) {
                const auto at = (32 * 192 + x) * 3 + static_cast<int>(c);
                const int written = static_cast<std::uint8_t>(again[at]);
                EXPECT_LE(std::abs(read[c] - colours[i][c]), 4) << options << " patch " << i;
                EXPECT_LE(std::abs(written - colours[i][c]), 6) << options << " patch " << i;
            }
            EXPECT_EQ(first->imageBuffer->baseAddress()[x * 4 + 3], 255) << options;
        }
    }
}

TEST_F(ReaderWriterTest, ShowsWhatTheImageGeneratorShows) {
    // Colours that are not halved: images interpolate those, frames to be encoded again repeat
    // them.
    const char* videos[] = {
        "-vf setparams=color_trc=smpte2084:color_primaries=bt2020:colorspace=bt2020nc "
        "-pix_fmt yuv444p10le -c:v libx264",
        "-vf setparams=color_trc=arib-std-b67:color_primaries=bt2020:colorspace=bt2020nc "
        "-pix_fmt yuv444p10le -c:v libx264",
        "-vf crop=191:127:exact=1 -pix_fmt yuv444p -c:v libx264"};
    for (const char* options : videos) {
        const QString source = make("s.mkv", options);
        const auto samples = Reading(source).rest();
        ASSERT_EQ(samples.size(), 75u) << options;
        auto generator =
            AVAssetImageGenerator::initWithAsset(AVURLAsset::assetWithPath(source).value());
        for (const std::size_t i : {0U, 31U, 74U}) {
            const auto image =
                generator.copyCGImageAtTime(samples[i].presentationTimeStamp).value();
            const CVPixelBuffer& buffer = *samples[i].imageBuffer;
            ASSERT_EQ(buffer.size(), QSize(image.width, image.height));
            for (int y = 0; y < image.height; ++y)
                ASSERT_EQ(QByteArrayView(image.rgb32).sliced(y * image.width * 4, image.width * 4),
                          QByteArrayView(buffer.baseAddress() + y * buffer.bytesPerRow(),
                                         image.width * 4))
                    << options << " frame " << i << " row " << y;
        }
    }
}

TEST_F(ReaderWriterTest, KeepsTheDisplayMatrixAndThePixelAspectRatio) {
    const QString source = make("rotated.mov", "-vf crop=191:127:exact=1,setsar=4/3 "
                                               "-pix_fmt yuv444p -c:v libx264 -an"),
                  target = path("out.mov");
    testkit::rotateClockwise(source, 90);
    const Writing to(target, {191, 127});
    to.input->setTransform(Reading(source).track.preferredTransform);
    copyFrames(source, to);
    EXPECT_EQ(ffprobe(target, "v",
                      "stream=width,height,sample_aspect_ratio:stream_side_data="
                      "rotation")
                  .split(',')
                  .mid(0, 4),
              QList<QByteArray>({"190", "126", "4:3", "-90"}));
    EXPECT_GT(
        likeness(target, source,
                 "crop=190:126:0:0:exact=1,scale=in_color_matrix=bt601:out_color_matrix=bt709"),
        0.98);
    // Fitted where the video has another size: with bars.
    copyFrames(source, Writing(target, {128, 96}));
    EXPECT_GT(likeness(target, source,
                       "scale=128:64:in_color_matrix=bt601:out_color_matrix=bt709,pad=128:96:0:16"),
              0.98);
}

TEST_F(ReaderWriterTest, DeinterlacesFields) {
    const QString source = make("fields.mov",
                                "-vf interlace -flags +ildct+ilme -top 1 -c:v mpeg2video -q:v 1",
                                "testsrc2=d=3:s=192x128:r=50"),
                  target = path("out.mov");
    copyFrames(source, Writing(target, {192, 128}));
    EXPECT_EQ(frameTimes(target), frameTimes(source));
    EXPECT_GT(likeness(target, source,
                       "bwdif=mode=send_frame:deint=interlaced,scale=in_color_matrix=bt601:out_"
                       "color_matrix=bt709"),
              0.98);
}

TEST_F(ReaderWriterTest, ReadsPastDamageAndReportsWhatCannotBeRead) {
    const QString whole = make("whole.mp4", "-c:v libx264 -g 10 -an");
    QByteArray bytes = testkit::TempDir::read(whole);
    const qsizetype payload = bytes.indexOf("mdat") + 4, end = bytes.lastIndexOf("moov") - 4;
    QByteArray damaged = bytes;
    damaged.replace(payload + (end - payload) / 3, 3000, QByteArray(3000, '\x5a'));
    const Reading past(m_dir.write("damaged.mp4", damaged));
    const std::size_t count = past.rest().size();
    EXPECT_EQ(past.reader->status(), ReaderStatus::Completed);
    EXPECT_GT(count, 30u);
    EXPECT_LE(count, 75u);
    EXPECT_THAT(past.reader->notes(), testing::ElementsAre(testing::Property(
                                          &Message::code, MessageCode{"damaged-video-packets"})));

    QByteArray nothing = bytes;
    nothing.replace(payload, end - payload, QByteArray(end - payload, '\0'));
    const Reading none(m_dir.write("nothing.mp4", nothing));
    EXPECT_TRUE(none.rest().empty());
    EXPECT_EQ(none.reader->status(), ReaderStatus::Failed);
    EXPECT_EQ(none.reader->error().code, ErrorCode::InvalidData);
    EXPECT_FALSE(none.reader->startReading()) << "a reader reads once";

    const QString audio = make("audio.m4a", "-vn -c:a aac");
    const Reading deaf(audio);
    EXPECT_FALSE(deaf.output->copyNextSampleBuffer());
    EXPECT_EQ(
        deaf.reader
            ->addOutput(AVAssetReaderTrackOutput::assetReaderTrackOutputWithTrack(
                deaf.track, {{text(kCVPixelBufferPixelFormatTypeKey), kCVPixelFormatType_32BGRA}}))
            .error()
            .code,
        ErrorCode::InvalidArgument);
    EXPECT_FALSE(deaf.reader->startReading());
    EXPECT_FALSE(AVURLAsset::assetWithPath(m_dir.write("t.mp4", "no video at all")));

    const auto asset = AVURLAsset::assetWithPath(whole).value();
    ASSERT_TRUE(QFile::remove(whole));
    EXPECT_EQ(AVAssetReader::initWithAsset(asset).error().code, ErrorCode::NotFound);
}

TEST_F(ReaderWriterTest, EndsWhereverItIsDropped) {
    const QString source = make("long.mp4", "-c:v libx264", "testsrc2=d=20:s=320x240:r=25");
    for (const int taken : {0, 1, 5}) {
        Reading reading(source);
        std::optional<CMSampleBuffer> sample;
        for (int i = 0; i < taken; ++i)
            sample = reading.output->copyNextSampleBuffer();
        reading.reader.reset();
        EXPECT_FALSE(reading.output->copyNextSampleBuffer());
        EXPECT_TRUE(!sample || sample->imageBuffer->baseAddress()[3] == 255)
            << "it outlives its reader";
    }
    const Reading reading(source);
    std::thread canceller([&] {
        std::this_thread::sleep_for(30ms);
        reading.reader->cancelReading();
    });
    EXPECT_LT(reading.rest().size(), 500u);
    canceller.join();
    EXPECT_EQ(reading.reader->status(), ReaderStatus::Cancelled);
    EXPECT_FALSE(reading.reader->startReading());
}

TEST_F(ReaderWriterTest, LeavesNothingUnlessItIsFinished) {
    const QString folder = path("storage"), target = folder + u"/video.mov"_s;
    QDir().mkpath(folder);
    m_dir.write("storage/video.mov", "an older one");
    for (int way = 0; way < 6; ++way) {
        auto to = std::make_unique<Writing>(target, QSize(64, 64));
        ASSERT_TRUE(way == 0 || to->begin());
        for (int i = 0; way > 1 && i < 100; ++i)
            ASSERT_TRUE(to->append(noise({64, 64}, i)));
        EXPECT_EQ(testkit::namesIn(folder).size(), way > 0 ? 2 : 1);
        if (way == 3)
            to->input.reset();
        if (way == 4)
            to->writer->cancelWriting();
        EXPECT_TRUE(way != 5 || !to->append(noise({64, 64}, 5))) << "a failure";
        if (way >= 4) {
            EXPECT_EQ(testkit::namesIn(folder).size(), 1) << way;
            EXPECT_EQ(to->finish(), way == 4 ? WriterStatus::Cancelled : WriterStatus::Failed);
        }
        const auto input = way == 2 ? to->input : nullptr;
        to.reset();
        EXPECT_TRUE(input == nullptr || !input->appendSampleBuffer(noise({64, 64}, 200)));
        EXPECT_EQ(testkit::namesIn(folder), QStringList{u"video.mov"_s}) << way;
        EXPECT_EQ(testkit::TempDir::read(target), "an older one") << way;
    }
    // Dropped while it is being finished, by its owner and by the handler itself.
    for (const bool byHandler : {false, true}) {
        auto to = std::make_shared<Writing>(target, QSize(64, 64));
        ASSERT_TRUE(to->begin());
        for (int i = 0; i < 50; ++i)
            ASSERT_TRUE(to->append(noise({64, 64}, i)));
        std::promise<void> done;
        AVAssetWriter& writer = *to->writer;
        writer.finishWritingWithCompletionHandler(
            [&done, held = byHandler ? to : nullptr] { done.set_value(); });
        to.reset();
        ASSERT_EQ(done.get_future().wait_for(30s), std::future_status::ready);
        EXPECT_EQ(ffprobe(target, "v", "stream=nb_frames"), "50");
        EXPECT_EQ(testkit::namesIn(folder).size(), 1);
        QFile::remove(target);
    }
}

TEST_F(ReaderWriterTest, ReportsAFullDiskAndAMissingFolder) {
    const QString small = path("small"), target = small + u"/video.mov"_s;
    QDir().mkpath(small);
    const Writing away(target, {64, 64});
    ASSERT_TRUE(away.begin());
    ASSERT_TRUE(away.append(noise({64, 64}, 0)));
    QDir(small).removeRecursively();
    EXPECT_EQ(away.finish(), WriterStatus::Failed);
    EXPECT_EQ(away.writer->error().code, ErrorCode::NotFound) << away.why();
    EXPECT_EQ(away.writer->error().path, target);
    const Writing nowhere(target, {64, 64});
    EXPECT_FALSE(nowhere.begin());
    EXPECT_EQ(nowhere.writer->error().code, ErrorCode::NotFound) << nowhere.why();

    const testkit::TinyDisk disk(small, "size=256k");
    SKIP_WITHOUT_DISK(disk);
    for (const bool waits : {true, false}) { // for it to be noticed while it goes on
        const Writing to(target, {320, 240});
        ASSERT_TRUE(to.begin());
        bool going = true;
        for (int i = 0; going && i < (waits ? 5000 : 40); ++i)
            going = to.append(noise({320, 240}, i));
        EXPECT_EQ(going, !waits) << "it was noticed at the end only, or too early";
        EXPECT_TRUE(!waits || to.writer->status() == WriterStatus::Failed);
        EXPECT_EQ(to.finish(), WriterStatus::Failed);
        EXPECT_EQ(to.writer->error().code, ErrorCode::NoSpace) << to.why();
        EXPECT_EQ(to.writer->error().path, target);
        EXPECT_TRUE(testkit::namesIn(small).isEmpty());
    }
}

TEST_F(ReaderWriterTest, RefusesWhatIsOutOfOrder) {
    const QString target = path("video.mov");
    const CMSampleBuffer sample = noise({64, 64}, 3);
    const Writing to(target, {64, 64});
    EXPECT_FALSE(to.input->isReadyForMoreMediaData());
    EXPECT_FALSE(to.input->appendSampleBuffer(sample)) << "before the start";
    EXPECT_EQ(to.finish(), WriterStatus::Unknown);
    EXPECT_FALSE(to.writer->addInput(to.input)) << "twice";
    ASSERT_TRUE(to.writer->startWriting());
    EXPECT_FALSE(to.writer->startWriting());
    EXPECT_FALSE(to.input->appendSampleBuffer(sample)) << "before the session";
    to.writer->startSessionAtSourceTime(kCMTimeZero);
    EXPECT_TRUE(to.append(sample));
    to.input->markAsFinished();
    EXPECT_FALSE(to.input->appendSampleBuffer(noise({64, 64}, 4))) << "after the end";
    EXPECT_EQ(to.finish(), WriterStatus::Completed) << to.why();
    EXPECT_EQ(ffprobe(target, "v", "stream=nb_frames"), "1");
    EXPECT_EQ(to.finish(), WriterStatus::Completed) << "once more does nothing";

    CMSampleBuffer untimed = noise({64, 64}, 4), empty = untimed;
    untimed.presentationTimeStamp = {0, 0};
    empty.imageBuffer.reset();
    const CMSampleBuffer bad[] = {sample, noise({64, 64}, 2), noise({62, 64}, 4), untimed, empty};
    for (const CMSampleBuffer& second : bad) {
        const Writing each(path("bad.mov"), {64, 64});
        ASSERT_TRUE(each.begin());
        ASSERT_TRUE(each.append(sample));
        EXPECT_FALSE(each.append(second));
        EXPECT_EQ(each.writer->status(), WriterStatus::Failed);
        EXPECT_EQ(each.writer->error().code, ErrorCode::InvalidArgument) << each.why();
    }
    const Writing blank(path("bad.mov"), {64, 64});
    ASSERT_TRUE(blank.begin());
    EXPECT_EQ(blank.finish(), WriterStatus::Failed) << "a video has a frame";
    EXPECT_FALSE(QFile::exists(path("bad.mov")));

    EXPECT_FALSE(AVAssetWriter::initWithURL(target, text(AVFileTypeAppleM4A)));
    EXPECT_FALSE(AVAssetWriter::initWithURL({}, text(AVFileTypeMPEG4)));
    const auto input = [](const char16_t* type, const char16_t* codec, int side) {
        return AVAssetWriterInput::assetWriterInputWithMediaType(
            text(type), {{text(AVVideoCodecKey), text(codec)},
                         {text(AVVideoWidthKey), side},
                         {text(AVVideoHeightKey), 64}});
    };
    const auto writer = AVAssetWriter::initWithURL(target, text(AVFileTypeMPEG4)).value();
    EXPECT_FALSE(writer->addInput(input(AVMediaTypeAudio, AVVideoCodecTypeH264, 64)));
    EXPECT_FALSE(writer->addInput(input(AVMediaTypeVideo, u"hvc1", 64)));
    EXPECT_FALSE(writer->addInput(input(AVMediaTypeVideo, AVVideoCodecTypeH264, 1)));
    EXPECT_FALSE(writer->addInput(input(AVMediaTypeVideo, AVVideoCodecTypeH264, 20000)));
    EXPECT_FALSE(writer->startWriting());
    EXPECT_FALSE(CVPixelBuffer::create({30000, 1}));
    EXPECT_FALSE(CVPixelBuffer::create({16384, 16384}));
}

TEST_F(ReaderWriterTest, KeepsFewFramesWaiting) {
    const Writing to(path("video.mov"), {1280, 720});
    ASSERT_TRUE(to.begin());
    CMSampleBuffer sample = noise({1280, 720}, 0);
    const std::weak_ptr<CVPixelBuffer> image = sample.imageBuffer;
    int accepted = 0;
    while (to.input->isReadyForMoreMediaData() && accepted < 400) {
        ASSERT_TRUE(to.input->appendSampleBuffer(sample));
        sample.presentationTimeStamp.value = ++accepted;
    }
    EXPECT_LT(accepted, 400) << "frames are taken faster than they can be encoded";
    EXPECT_FALSE(to.input->appendSampleBuffer(sample)) << "a full queue refuses";
    EXPECT_EQ(to.writer->status(), WriterStatus::Writing);
    to.writer->cancelWriting();
    sample = {};
    EXPECT_TRUE(image.expired());

    CVPixelBufferPool pool({64, 64}, 1);
    auto first = pool.createPixelBuffer().value(), second = pool.createPixelBuffer().value();
    const std::uint8_t* memory = first->baseAddress();
    EXPECT_NE(memory, second->baseAddress());
    first.reset();
    EXPECT_EQ(pool.createPixelBuffer().value()->baseAddress(), memory);
}

} // namespace clipheave::platform
