// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/fact_lines.h"

#include "platform/foundation/dates.h"

namespace clipheave::media {

namespace {

FactLine fact(const char16_t* label, const QString& value) {
    return {QString::fromUtf16(label), value.isEmpty() ? QString() : value};
}

} // namespace

QList<FactLine> audioFacts(const IKImageItem& item) {
    const QString modified =
        platform::formatDate(item.fileModifyDate, platform::DatePattern::Colon);
    return {fact(u"File Name: ", item.fileName),    fact(u"Kind: ", item.fileType),
            fact(u"Duration: ", item.fileduratStr), fact(u"File Size: ", item.fileSize),
            fact(u"Bitrate: ", item.fileBitRate),   fact(u"Sample Rate: ", item.fileSampleRate),
            fact(u"Channels: ", item.fileChannels), fact(u"Modified Date: ", modified),
            fact(u"Location: ", item.filePath)};
}

QList<FactLine> videoFacts(const IKImageItem& item) {
    const bool sized = item.filePixWidth > 0 && item.filepixHeigh > 0;
    const QString dimensions =
        sized ? QStringLiteral("%1 x %2").arg(item.filePixWidth).arg(item.filepixHeigh) : QString();
    return {fact(u"File Name: ", item.fileName),
            fact(u"Kind: ", item.fileType),
            fact(u"File Dimensions: ", dimensions),
            fact(u"Duration: ", item.fileduratStr),
            fact(u"File Size: ", item.fileSize),
            fact(u"Bitrate: ", item.fileBitRate),
            fact(u"Sample Rate: ", item.fileSampleRate),
            fact(u"Channels: ", item.fileChannels),
            fact(u"Record Date: ", item.shootDateStr),
            fact(u"Created Date: ", item.fileCreateDateStr),
            fact(u"Location: ", item.filePath)};
}

} // namespace clipheave::media
