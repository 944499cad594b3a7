// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/media_kind.h"

#include "platform/foundation/paths.h"
#include "platform/foundation/text.h"

#include <QByteArray>

#include <charconv>
#include <cstdio>
#include <iterator>
#include <string_view>

namespace clipheave::media {

namespace {

// The order of a table is its index order.
constexpr std::string_view kRawPhotoExtensions[] = {"DNG", "CR2", "MOS", "3FR", "RW2",
                                                    "RAW", "MRW", "RAF", "ORF"};

// Deliberate: "CDR" and "DCR" each stand twice; the second of each is never returned.
constexpr std::string_view kDragPhotoExtensions[] = {
    "HEIC", "HEIF", "3DM",     "3DMF", "3DS", "3FR",  "ABM", "AFX",  "AI",           "ANI",  "ART",
    "ARW",  "BLD",  "BLEND",   "BMP",  "BOO", "BR5",  "CDR", "CDR",  "CDT",          "CGM",  "CIFF",
    "CLP",  "CMX",  "CONT",    "CPT",  "CR2", "CRW",  "CUR", "CVX",  "DCM",          "DCR",  "DCR",
    "DIB",  "DNG",  "DRW",     "DS4",  "DSC", "DT2",  "DWF", "DWG",  "EMF",          "EMZ",  "ERF",
    "FH8",  "FLC",  "FOV",     "FPF",  "FPX", "FUJI", "FXG", "GIF",  "HDP",          "HPI",  "ICNS",
    "ICO",  "IDML", "IFF",     "IMG",  "INX", "IPX",  "ISD", "ITC2", "IV",           "JP2",  "JPEG",
    "JPG",  "JPX",  "K25",     "KDC",  "LBM", "MA",   "MAX", "MB",   "MDI",          "MDL",  "MDX",
    "MINO", "MNG",  "MOS",     "MRW",  "MSP", "NCR",  "NEF", "OBJ",  "ORF",          "PAL",  "PAT",
    "PBM",  "PCS",  "PCT",     "PCX",  "PEF", "PGM",  "PIC", "PICT", "PICTCLIPPING", "PNG",  "PPM",
    "PSD",  "PSP",  "PSPIMGE", "PTX",  "PXN", "QXD",  "RAF", "RAS",  "RAW",          "RELS", "RGB",
    "RLE",  "RTD",  "RW2",     "SCT",  "SHP", "SKF",  "SKP", "SR2",  "SRF",          "STP",  "SVG",
    "SVGZ", "TEX",  "TGA",     "THM",  "TIF", "TIFF", "VWX", "WB1",  "WBC",          "WBD",  "WBMP",
    "WBZ",  "WEBP", "WMF",     "WP",   "WPG", "X3F",  "XBM", "XCF",  "XPM",          "XPS"};

constexpr std::string_view kVideoExtensions[] = {
    "HEVC", "3G2",   "3GP",   "ANM",      "ASF",    "ASX",    "AVI", "AVS", "CLK", "CPI",
    "DIVX", "DMSM",  "DREAM", "DVDMEDIA", "DVM",    "DVR-MS", "DXR", "F4V", "FBR", "FLA",
    "FLV",  "HDMOV", "M2P",   "M2TS",     "M4P",    "M4V",    "MKV", "MOD", "MOI", "MOV",
    "MP4",  "MPE",   "MPEG",  "MPG",      "MXF",    "OGM",    "PSH", "QT",  "QTM", "RCPROJECT",
    "RM",   "RMVB",  "SCM",   "SMIL",     "SMJPEG", "SRT",    "STX", "SWF", "TIX", "TS",
    "VOB",  "VRO",   "WMV",   "WTV",      "XVID",   "YUV"};

constexpr std::string_view kAudioExtensions[] = {
    "OPUS", "AMR", "RAM", "RFL",  "RMI",  "RNS", "RPS",  "SIB", "SND",  "VPM", "WAV",
    "WMA",  "AA3", "AAC", "AC3",  "AFC",  "AIF", "AIFF", "AM",  "AT3",  "AU",  "AUD",
    "CAF",  "CDA", "CPF", "DMSA", "DMSE", "DSS", "EMP",  "EMX", "FLAC", "KPI", "M3D",
    "M4A",  "M4B", "M4R", "MID",  "MIDI", "MP3", "OGG",  "OMF", "PTF"};

constexpr std::size_t kSizeBuffer = 100; // bytes, by contract with the callers
constexpr float kUnit = 1000.0F;

constexpr char upperAscii(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool equalsIgnoringAsciiCase(std::string_view extension, std::string_view entry) {
    if (extension.size() != entry.size())
        return false;
    for (std::size_t i = 0; i < entry.size(); ++i)
        if (upperAscii(extension[i]) != entry[i])
            return false;
    return true;
}

template <std::size_t N> int indexIn(const std::string_view (&table)[N], const char* extension) {
    if (!extension)
        return -1;
    for (std::size_t i = 0; i < N; ++i)
        if (equalsIgnoringAsciiCase(extension, table[i]))
            return static_cast<int>(i);
    return -1;
}

QByteArray extensionOf(const QString& path) {
    return platform::pathExtension(path).toUtf8();
}

} // namespace

int MediaKind::GetImageType(const char* extension) {
    return indexIn(kRawPhotoExtensions, extension);
}
int MediaKind::GetDragImageType(const char* extension) {
    return indexIn(kDragPhotoExtensions, extension);
}
int MediaKind::GetAudioType(const char* extension) {
    return indexIn(kAudioExtensions, extension);
}
int MediaKind::GetViedoType(const char* extension) {
    return indexIn(kVideoExtensions, extension);
}

bool MediaKind::isAudio(const QString& path) {
    return GetAudioType(extensionOf(path).constData()) >= 0;
}
bool MediaKind::isVideo(const QString& path) {
    return GetViedoType(extensionOf(path).constData()) >= 0;
}
bool MediaKind::isPhoto(const QString& path) {
    return GetDragImageType(extensionOf(path).constData()) >= 0;
}

char* MediaKind::size_to_unit_out_buffer(std::uint64_t size, char* buffer) {
    if (size <= 999) {
        std::snprintf(buffer, kSizeBuffer, "%d bytes", static_cast<int>(size));
        return buffer;
    }
    struct Step {
        std::uint64_t below;
        const char* unit;
    };
    static constexpr Step kSteps[] = {
        {1'000'000, "KB"}, {1'000'000'000, "MB"}, {1'000'000'000'000, "GB"}, {UINT64_MAX, "TB"}};
    float value = static_cast<float>(size);
    for (const Step& step : kSteps) {
        value = value / kUnit;
        if (size < step.below || step.below == UINT64_MAX) {
            // "%.2f" with a "." in every locale. QByteArray::number() rounds the shortest decimals
            // instead of the value: 1.125 up.
            char number[kSizeBuffer] = {};
            std::to_chars(number, number + kSizeBuffer - 1, value, std::chars_format::fixed, 2);
            std::snprintf(buffer, kSizeBuffer, "%.90s %s", number, step.unit);
            break;
        }
    }
    return buffer;
}

QString MediaKind::sizeText(std::uint64_t size) {
    char buffer[kSizeBuffer];
    return QString::fromLatin1(size_to_unit_out_buffer(size, buffer));
}

std::uint64_t MediaKind::sizeFormString(const QString& text) {
    if (text.isEmpty())
        return 0;
    const double number = platform::doubleValue(QStringView(text).chopped(1));
    double factor = 1e12;
    switch (text.back().unicode()) {
    case u'B':
        factor = 1;
        break;
    case u'K':
        factor = 1e3;
        break;
    case u'M':
        factor = 1e6;
        break;
    case u'G':
        factor = 1e9;
        break;
    default:
        break;
    }
    const double bytes = number * factor;
    if (!(bytes > 0))
        return 0;
    return bytes >= 0x1p64 ? UINT64_MAX : static_cast<std::uint64_t>(bytes);
}

QString MediaKind::getMediaDuration(std::int32_t seconds) {
    const int hours = seconds / 3600;
    const int rest = seconds - 3600 * hours;
    const int minutes = rest / 60;
    const int left = rest - 60 * minutes;
    if (seconds >= 3600)
        return QStringLiteral("%1h:%2m:%3s").arg(hours).arg(minutes).arg(left);
    if (rest >= 60)
        return QStringLiteral("%1m:%2s").arg(minutes).arg(left);
    return QStringLiteral("%1s").arg(left);
}

} // namespace clipheave::media
