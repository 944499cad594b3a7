// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/media/export/quicktime_codecs.h"

#include <algorithm>
#include <array>

namespace clipheave::platform {

namespace {

struct QuickTimeCodec {
    std::u16string_view code;
    const char* name;
};
constexpr std::array kQuickTimeCodecs{
    QuickTimeCodec{u"sowt", "PCM"},         QuickTimeCodec{u"twos", "PCM"},
    QuickTimeCodec{u"raw ", "raw"},         QuickTimeCodec{u"NONE", "raw"},
    QuickTimeCodec{u"lpcm", "PCM"},         QuickTimeCodec{u"in24", "PCM"},
    QuickTimeCodec{u"in32", "PCM"},         QuickTimeCodec{u"fl32", "PCM"},
    QuickTimeCodec{u"fl64", "PCM"},         QuickTimeCodec{u"ulaw", "PCM"},
    QuickTimeCodec{u"alaw", "PCM"},         QuickTimeCodec{u"ima4", "IMA ADPCM"},
    QuickTimeCodec{u"MAC3", "MACE"},        QuickTimeCodec{u"MAC6", "MACE"},
    QuickTimeCodec{u"QDMC", "QDesign"},     QuickTimeCodec{u"QDM2", "QDesign"},
    QuickTimeCodec{u"Qclp", "QCELP"},       QuickTimeCodec{u"apch", "ProRes"},
    QuickTimeCodec{u"apcn", "ProRes"},      QuickTimeCodec{u"apcs", "ProRes"},
    QuickTimeCodec{u"apco", "ProRes"},      QuickTimeCodec{u"ap4h", "ProRes"},
    QuickTimeCodec{u"ap4x", "ProRes"},      QuickTimeCodec{u"aprn", "ProRes RAW"},
    QuickTimeCodec{u"aprh", "ProRes RAW"},  QuickTimeCodec{u"AVdn", "DNxHD"},
    QuickTimeCodec{u"AVdh", "DNxHR"},       QuickTimeCodec{u"CFHD", "CineForm"},
    QuickTimeCodec{u"SVQ1", "Sorenson"},    QuickTimeCodec{u"SVQ3", "Sorenson"},
    QuickTimeCodec{u"cvid", "Cinepak"},     QuickTimeCodec{u"rle ", "Animation"},
    QuickTimeCodec{u"rpza", "Apple Video"}, QuickTimeCodec{u"smc ", "Apple Graphics"},
    QuickTimeCodec{u"8BPS", "Planar RGB"},  QuickTimeCodec{u"png ", "PNG"},
    QuickTimeCodec{u"jpeg", "Motion JPEG"}, QuickTimeCodec{u"mjpa", "Motion JPEG"},
    QuickTimeCodec{u"mjpb", "Motion JPEG"}, QuickTimeCodec{u"dvc ", "DV"},
    QuickTimeCodec{u"dvcp", "DV"},          QuickTimeCodec{u"dvpp", "DV"},
    QuickTimeCodec{u"dv5n", "DV"},          QuickTimeCodec{u"dv5p", "DV"},
    QuickTimeCodec{u"2vuy", "2vuy"},        QuickTimeCodec{u"yuv2", "yuv2"},
    QuickTimeCodec{u"v210", "v210"},        QuickTimeCodec{u"icod", "Apple Intermediate"},
};

} // namespace

QStringList codecsOfQuickTimeAlone(const std::vector<AVAssetTrack>& tracks) {
    QStringList names;
    for (const AVAssetTrack& track : tracks) {
        const auto row = std::find_if(
            kQuickTimeCodecs.begin(), kQuickTimeCodecs.end(),
            [&track](const QuickTimeCodec& one) { return track.codec == QStringView(one.code); });
        if (row == kQuickTimeCodecs.end() || track.isAttachedPicture)
            continue;
        const QString name = QString::fromLatin1(row->name);
        if (!names.contains(name))
            names.append(name);
    }
    return names;
}

} // namespace clipheave::platform
