// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/export/quicktime_codecs.h"

#include <algorithm>
#include <array>

namespace clipheave::platform {

namespace {

struct QuickTimeCoding {
    std::u16string_view code;
    const char* name;
};
constexpr std::array kQuickTimeCodings{
    QuickTimeCoding{u"sowt", "PCM"},         QuickTimeCoding{u"twos", "PCM"},
    QuickTimeCoding{u"raw ", "raw data"},    QuickTimeCoding{u"NONE", "raw data"},
    QuickTimeCoding{u"lpcm", "PCM"},         QuickTimeCoding{u"in24", "PCM"},
    QuickTimeCoding{u"in32", "PCM"},         QuickTimeCoding{u"fl32", "PCM"},
    QuickTimeCoding{u"fl64", "PCM"},         QuickTimeCoding{u"ulaw", "PCM"},
    QuickTimeCoding{u"alaw", "PCM"},         QuickTimeCoding{u"ima4", "IMA ADPCM"},
    QuickTimeCoding{u"MAC3", "MACE"},        QuickTimeCoding{u"MAC6", "MACE"},
    QuickTimeCoding{u"QDMC", "QDesign"},     QuickTimeCoding{u"QDM2", "QDesign"},
    QuickTimeCoding{u"Qclp", "QCELP"},       QuickTimeCoding{u"apch", "ProRes"},
    QuickTimeCoding{u"apcn", "ProRes"},      QuickTimeCoding{u"apcs", "ProRes"},
    QuickTimeCoding{u"apco", "ProRes"},      QuickTimeCoding{u"ap4h", "ProRes"},
    QuickTimeCoding{u"ap4x", "ProRes"},      QuickTimeCoding{u"aprn", "ProRes RAW"},
    QuickTimeCoding{u"aprh", "ProRes RAW"},  QuickTimeCoding{u"AVdn", "DNxHD"},
    QuickTimeCoding{u"AVdh", "DNxHR"},       QuickTimeCoding{u"CFHD", "CineForm"},
    QuickTimeCoding{u"SVQ1", "Sorenson"},    QuickTimeCoding{u"SVQ3", "Sorenson"},
    QuickTimeCoding{u"cvid", "Cinepak"},     QuickTimeCoding{u"rle ", "Animation"},
    QuickTimeCoding{u"rpza", "Apple Video"}, QuickTimeCoding{u"smc ", "Apple Graphics"},
    QuickTimeCoding{u"8BPS", "Planar RGB"},  QuickTimeCoding{u"png ", "PNG"},
    QuickTimeCoding{u"jpeg", "Motion JPEG"}, QuickTimeCoding{u"mjpa", "Motion JPEG"},
    QuickTimeCoding{u"mjpb", "Motion JPEG"}, QuickTimeCoding{u"dvc ", "DV"},
    QuickTimeCoding{u"dvcp", "DV"},          QuickTimeCoding{u"dvpp", "DV"},
    QuickTimeCoding{u"dv5n", "DV"},          QuickTimeCoding{u"dv5p", "DV"},
    QuickTimeCoding{u"2vuy", "raw data"},    QuickTimeCoding{u"yuv2", "raw data"},
    QuickTimeCoding{u"v210", "raw data"},    QuickTimeCoding{u"icod", "Apple Intermediate"},
};

} // namespace

QStringList codingsOfQuickTimeAlone(const std::vector<AVAssetTrack>& tracks) {
    QStringList names;
    for (const AVAssetTrack& track : tracks) {
        const auto coding = std::find_if(
            kQuickTimeCodings.begin(), kQuickTimeCodings.end(),
            [&track](const QuickTimeCoding& one) { return track.codec == QStringView(one.code); });
        if (coding == kQuickTimeCodings.end() || track.isAttachedPicture)
            continue;
        const QString name = QString::fromLatin1(coding->name);
        if (!names.contains(name))
            names.append(name);
    }
    return names;
}

} // namespace clipheave::platform
