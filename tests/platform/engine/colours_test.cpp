// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/model/cv_pixel_buffer.h"
#include "tests/platform/engine/export_fixture.h"

namespace clipheave::platform {

namespace {

/// Red, green and blue of a pixel, each 0 to 255.
struct Rgb {
    int red = -1, green = -1, blue = -1;

    static Rgb of(std::uint32_t pixel) {
        return {static_cast<int>(pixel >> 16 & 0xFF), static_cast<int>(pixel >> 8 & 0xFF),
                static_cast<int>(pixel & 0xFF)};
    }
    [[nodiscard]] bool isNear(const Rgb& other) const {
        constexpr int kRounding = 6; // of an encoder and of two scalers
        return std::abs(red - other.red) <= kRounding &&
               std::abs(green - other.green) <= kRounding &&
               std::abs(blue - other.blue) <= kRounding;
    }
};

std::ostream& operator<<(std::ostream& out, const Rgb& colour) {
    return out << colour.red << ' ' << colour.green << ' ' << colour.blue;
}

Rgb middleOf(const Result<RawFrame>& frame) {
    if (!frame)
        return {};
    const auto* pixels = reinterpret_cast<const std::uint32_t*>(frame->rgb32.constData());
    return Rgb::of(pixels[std::ptrdiff_t{frame->height / 2} * frame->width + frame->width / 2]);
}

class Colours : public ExportTest {
protected:
    /// A second of one colour given as Y, Cb and Cr of 8 bits.
    [[nodiscard]] QString flat(const char* size, const char* options = "") const {
        QString path = m_dir.path("flat.mp4");
        testkit::ffmpeg(QByteArray("-f lavfi -i nullsrc=s=") + size +
                            ":d=1:r=5,format=yuv420p,geq=lum=90:cb=100:cr=190 "
                            "-c:v libx264 -crf 4 " +
                            options,
                        {path});
        return path;
    }
    [[nodiscard]] Rgb thumbnail(const QString& path) const {
        return middleOf(m_engine->keyframeAt(path, 0, 64));
    }
    /// As frames are extracted, and scaled as for a GIF.
    [[nodiscard]] Rgb extracted(const QString& path, std::optional<QSize> size = {}) const {
        const auto frames = m_engine->openFrames(path, size);
        return frames ? middleOf((*frames)->frameAt(kCMTimeZero)) : Rgb{};
    }
    [[nodiscard]] Rgb read(const QString& path) const {
        const auto reader = m_engine->openFrameReader(path, 0, {});
        const auto sample = reader ? (*reader)->next() : tl::unexpected(reader.error());
        if (!sample || sample->imageBuffer == nullptr)
            return {};
        const CVPixelBuffer& buffer = *sample->imageBuffer;
        const auto* row =
            buffer.baseAddress() + std::ptrdiff_t{buffer.height() / 2} * buffer.bytesPerRow();
        return Rgb::of(reinterpret_cast<const std::uint32_t*>(row)[buffer.width() / 2]);
    }
};

} // namespace

TEST_F(Colours, OfUntaggedVideoAreTheSameEverywhere) {
    const struct {
        const char* size;
        QSize exported; ///< empty: as it is
        bool isHd;
        const char* tag; ///< where the other matrix would be taken for it
    } cases[] = {{"1024x600", {}, true, "unknown"},
                 {"1920x1080", {}, true, "unknown"},
                 {"640x480", {}, false, "unknown"},
                 {"1024x600", {568, 332}, true, "bt709"},
                 {"640x480", {1280, 960}, false, "smpte170m"}};
    const Rgb hd{197, 59, 27}, standard{185, 47, 30}; // BT.709 and BT.601 of 90, 100, 190
    for (const auto& [size, exported, isHd, tag] : cases) {
        const QString path = flat(size);
        const Rgb thumb = thumbnail(path);
        EXPECT_TRUE(thumb.isNear(isHd ? hd : standard)) << size << ": " << thumb;
        EXPECT_TRUE(extracted(path).isNear(thumb)) << size << ": " << extracted(path);
        EXPECT_TRUE(extracted(path, QSize(80, 60)).isNear(thumb)) << size;
        EXPECT_TRUE(read(path).isNear(thumb)) << size << ": " << read(path);
        ExportPlan plan;
        plan.video.emplace().segments = {segment(path, 0, 1)};
        plan.video->size = exported;
        ASSERT_TRUE(run(plan)) << size;
        EXPECT_TRUE(extracted(m_out).isNear(thumb)) << size << ": " << extracted(m_out);
        EXPECT_EQ(ffprobe(m_out, "v", "stream=color_space"), tag) << size;
    }
}

TEST_F(Colours, OfHdrVideoAreMappedByOneRule) {
    const QString hdr = flat("320x180", "-vf setparams=color_primaries=bt2020:"
                                        "color_trc=smpte2084:colorspace=bt2020nc");
    const Rgb thumb = thumbnail(hdr);
    EXPECT_TRUE(extracted(hdr).isNear(thumb)) << extracted(hdr) << ", " << thumb;
    EXPECT_TRUE(read(hdr).isNear(thumb)) << read(hdr) << ", " << thumb;
    const QString sdr = make("sdr.mp4", "-an -c:v libx264", "color=gray:d=1:s=320x180:r=5");
    ExportPlan plan;
    plan.video.emplace().segments = {segment(hdr, 0, 1), segment(sdr, 0, 1, 1)};
    ASSERT_TRUE(run(plan)) << "segments of both kinds";
    EXPECT_TRUE(extracted(m_out).isNear(thumb)) << extracted(m_out) << ", " << thumb;
}

} // namespace clipheave::platform
