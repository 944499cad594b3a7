// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/media_kind.h"

#include "tests/testkit/testkit.h"

#include <clocale>
#include <utility>

namespace {

using clipheave::media::MediaKind;

TEST(MediaKind, LooksUpTheWholeExtensionWithoutRegardToCase) {
    EXPECT_GE(MediaKind::GetAudioType("mp3"), 0);
    EXPECT_EQ(MediaKind::GetAudioType("Mp3"), MediaKind::GetAudioType("MP3"));
    EXPECT_EQ(MediaKind::GetAudioType("mp3 "), -1);
    EXPECT_EQ(MediaKind::GetAudioType("mp"), -1);
    EXPECT_EQ(MediaKind::GetAudioType(""), -1);
    EXPECT_EQ(MediaKind::GetAudioType(nullptr), -1);
    EXPECT_EQ(MediaKind::GetAudioType("OPUS"), 0);
    EXPECT_EQ(MediaKind::GetAudioType("ptf"), 41);
    EXPECT_EQ(MediaKind::GetViedoType("hevc"), 0);
    EXPECT_EQ(MediaKind::GetViedoType("yuv"), 55);
    EXPECT_EQ(MediaKind::GetImageType("orf"), 8);
    EXPECT_EQ(MediaKind::GetDragImageType("xps"), 141);
}

TEST(MediaKind, HoldsEveryExtensionAtItsIndex) {
    const std::pair<int (*)(const char*), const char*> tables[] = {
        {&MediaKind::GetImageType, "DNG CR2 MOS 3FR RW2 RAW MRW RAF ORF"},
        {&MediaKind::GetDragImageType,
         "HEIC HEIF 3DM 3DMF 3DS 3FR ABM AFX AI ANI ART ARW BLD BLEND BMP BOO BR5 CDR "
         "CDR CDT CGM CIFF CLP CMX CONT CPT CR2 CRW CUR CVX DCM DCR DCR DIB DNG DRW DS4 "
         "DSC DT2 DWF DWG EMF EMZ ERF FH8 FLC FOV FPF FPX FUJI FXG GIF HDP HPI ICNS ICO "
         "IDML IFF IMG INX IPX ISD ITC2 IV JP2 JPEG JPG JPX K25 KDC LBM MA MAX MB MDI "
         "MDL MDX MINO MNG MOS MRW MSP NCR NEF OBJ ORF PAL PAT PBM PCS PCT PCX PEF PGM "
         "PIC PICT PICTCLIPPING PNG PPM PSD PSP PSPIMGE PTX PXN QXD RAF RAS RAW RELS "
         "RGB RLE RTD RW2 SCT SHP SKF SKP SR2 SRF STP SVG SVGZ TEX TGA THM TIF TIFF VWX "
         "WB1 WBC WBD WBMP WBZ WEBP WMF WP WPG X3F XBM XCF XPM XPS"},
        {&MediaKind::GetViedoType,
         "HEVC 3G2 3GP ANM ASF ASX AVI AVS CLK CPI DIVX DMSM DREAM DVDMEDIA DVM DVR-MS "
         "DXR F4V FBR FLA FLV HDMOV M2P M2TS M4P M4V MKV MOD MOI MOV MP4 MPE MPEG MPG "
         "MXF OGM PSH QT QTM RCPROJECT RM RMVB SCM SMIL SMJPEG SRT STX SWF TIX TS VOB "
         "VRO WMV WTV XVID YUV"},
        {&MediaKind::GetAudioType,
         "OPUS AMR RAM RFL RMI RNS RPS SIB SND VPM WAV WMA AA3 AAC AC3 AFC AIF AIFF AM "
         "AT3 AU AUD CAF CDA CPF DMSA DMSE DSS EMP EMX FLAC KPI M3D M4A M4B M4R MID "
         "MIDI MP3 OGG OMF PTF"}};
    for (const auto& [indexOf, extensions] : tables) {
        const QList<QByteArray> names = QByteArray(extensions).split(' ');
        for (qsizetype i = 0; i < names.size(); ++i)
            EXPECT_EQ(indexOf(names[i].constData()), names.indexOf(names[i])) << names[i].data();
    }
}

TEST(MediaKind, ReturnsTheFirstOfTwinEntries) {
    EXPECT_EQ(MediaKind::GetDragImageType("cdr"), 17);
    EXPECT_EQ(MediaKind::GetDragImageType("dcr"), 31);
}

TEST(MediaKind, AssignsDoubtfulExtensionsToTheirKinds) {
    for (const char* video : {"ts", "srt", "dvr-ms"})
        EXPECT_GE(MediaKind::GetViedoType(video), 0) << video;
    for (const char* audio : {"au", "mid", "m4r"})
        EXPECT_GE(MediaKind::GetAudioType(audio), 0) << audio;
    EXPECT_GE(MediaKind::GetDragImageType("heic"), 0);
    EXPECT_EQ(MediaKind::GetImageType("heic"), -1);
    EXPECT_GE(MediaKind::GetImageType("dng"), 0);
    EXPECT_TRUE(MediaKind::isAudio(u"/a.mp4/b.WAV"_s));
    EXPECT_FALSE(MediaKind::isVideo(u"/a.mp4/b"_s));
}

TEST(MediaKind, WritesSizesInSinglePrecisionDecimalUnits) {
    const std::pair<std::uint64_t, const char*> rows[] = {{0, "0 bytes"},
                                                          {999, "999 bytes"},
                                                          {1000, "1.00 KB"},
                                                          {1125, "1.12 KB"}, // halves to even
                                                          {999'999, "1000.00 KB"},
                                                          {1'000'000, "1.00 MB"},
                                                          {12'345'678, "12.35 MB"},
                                                          {1'000'000'000, "1.00 GB"},
                                                          {1'000'000'000'000, "1.00 TB"},
                                                          {UINT64_MAX, "18446744.00 TB"}};
    std::setlocale(LC_ALL, "de_DE.UTF-8"); // the decimal sign stays a point
    for (const auto& [size, text] : rows) {
        char buffer[100];
        EXPECT_STREQ(MediaKind::size_to_unit_out_buffer(size, buffer), text);
    }
    std::setlocale(LC_ALL, "C");
}

TEST(MediaKind, ReadsSizesByTheirLastCharacter) {
    const std::pair<const char*, std::uint64_t> rows[] = {{"1.5K", 1500},
                                                          {"2M", 2'000'000},
                                                          {"3G", 3'000'000'000},
                                                          {"1T", 1'000'000'000'000},
                                                          {"", 0},
                                                          {"12.35 MB", 12},
                                                          {"12.50 M", 12'500'000},
                                                          {"-1K", 0},
                                                          {"800 bytes", 800'000'000'000'000}};
    for (const auto& [text, size] : rows)
        EXPECT_EQ(MediaKind::sizeFormString(QString::fromLatin1(text)), size) << text;
}

TEST(MediaKind, WritesDurationsInWholeUnits) {
    const std::pair<int, const char*> rows[] = {{0, "0s"},          {59, "59s"},
                                                {60, "1m:0s"},      {3599, "59m:59s"},
                                                {3600, "1h:0m:0s"}, {3725, "1h:2m:5s"}};
    for (const auto& [seconds, text] : rows)
        EXPECT_EQ(MediaKind::getMediaDuration(seconds), QLatin1String(text));
}

} // namespace
