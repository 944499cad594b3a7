// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/formats/flac/flac_foreign_tag.h"

#include "platform/formats/audio_facts.h"
#include "platform/formats/flac/flac_blocks.h"
#include "platform/formats/flac/flac_picture.h"
#include "platform/formats/flac/vorbis_comment.h"
#include "platform/formats/mpeg/hidden_tags.h"
#include "platform/formats/mpeg/id3_contents.h"
#include "platform/formats/mpeg/trailing_tags.h"

#include <algorithm>

namespace clipheave::platform {
namespace {

constexpr qsizetype kMostBytesMoved = 1 << 20;
constexpr QLatin1String kTotal("/total"); ///< behind TRCK and TPOS: the part behind the slash
constexpr QLatin1String kUserText("id3/TXXX%3A");
constexpr QLatin1String kImage("id3/APIC");

/// A frame and its comment. The further names are what the reader takes for the same fact.
struct FrameComment {
    QLatin1String identifier;
    std::initializer_list<const char*> names;
};
const FrameComment kFrameComments[] = {
    {QLatin1String("id3/TIT1"), {"GROUPING"}},
    {QLatin1String("id3/TIT2"), {"TITLE"}},
    {QLatin1String("id3/TIT3"), {"SUBTITLE"}},
    {QLatin1String("id3/TALB"), {"ALBUM"}},
    {QLatin1String("id3/TPE1"), {"ARTIST"}},
    {QLatin1String("id3/TPE2"), {"ALBUMARTIST"}},
    {QLatin1String("id3/TPE3"), {"CONDUCTOR"}},
    {QLatin1String("id3/TPE4"), {"REMIXER"}},
    {QLatin1String("id3/TCOM"), {"COMPOSER"}},
    {QLatin1String("id3/TEXT"), {"LYRICIST"}},
    {QLatin1String("id3/USLT"), {"LYRICS"}},
    {QLatin1String("id3/TRCK"), {"TRACKNUMBER", "TRACK NUMBER", "TRACK"}},
    {QLatin1String("id3/TRCK/total"), {"TRACKTOTAL", "TOTALTRACKS"}},
    {QLatin1String("id3/TPOS"), {"DISCNUMBER"}},
    {QLatin1String("id3/TPOS/total"), {"DISCTOTAL", "TOTALDISCS"}},
    {QLatin1String("id3/TCON"), {"GENRE"}},
    {QLatin1String("id3/TYER"), {"YEAR"}},
    {QLatin1String("id3/TRDA"), {"DATE", "RECORDED DATE"}},
    {QLatin1String("id3/TDRC"), {"DATE", "RECORDED DATE"}},
    {QLatin1String("id3/COMM"), {"COMMENT", "COMMENTS", "DESCRIPTION"}},
    {QLatin1String("id3/TCOP"), {"COPYRIGHT"}},
    {QLatin1String("id3/TPUB"), {"PUBLISHER"}},
    {QLatin1String("id3/TSRC"), {"ISRC"}},
    {QLatin1String("id3/TBPM"), {"BPM"}},
    {QLatin1String("id3/TCMP"), {"COMPILATION"}},
    {QLatin1String("id3/TENC"), {"ENCODED-BY"}},
    {QLatin1String("id3/TDOR"), {"ORIGINALDATE"}},
    {QLatin1String("id3/TORY"), {"ORIGINALYEAR"}},
    {QLatin1String("id3/TMED"), {"MEDIA"}},
    {QLatin1String("id3/TMOO"), {"MOOD"}},
    {QLatin1String("id3/TLAN"), {"LANGUAGE"}},
    {QLatin1String("id3/TSST"), {"DISCSUBTITLE"}},
    {QLatin1String("id3/TSOP"), {"ARTISTSORT"}},
    {QLatin1String("id3/TSOA"), {"ALBUMSORT"}},
    {QLatin1String("id3/TSOT"), {"TITLESORT"}},
    {QLatin1String("id3/TSO2"), {"ALBUMARTISTSORT"}},
    {QLatin1String("id3/TSOC"), {"COMPOSERSORT"}},
};

/// Names are ASCII from the space to "}" without "=" (xiph.org, Ogg Vorbis I comment field).
bool isCommentName(const QByteArray& name) {
    return !name.isEmpty() && std::all_of(name.begin(), name.end(), [](char letter) {
        return letter >= ' ' && letter <= '}' && letter != '=';
    });
}

QByteArrayList commentNames(const QString& identifier) {
    if (identifier.startsWith(kUserText)) {
        const QByteArray name =
            QByteArray::fromPercentEncoding(identifier.mid(kUserText.size()).toLatin1()).toUpper();
        return isCommentName(name) ? QByteArrayList{name} : QByteArrayList();
    }
    for (const FrameComment& row : kFrameComments)
        if (identifier == row.identifier)
            return {row.names.begin(), row.names.end()};
    return {};
}

/// Whether one of the names is there, and whether one of its texts is this one or begins with it:
/// ID3v1 cuts its texts, a year is the beginning of a date.
struct Presence {
    bool isThere = false, isSame = false;
};
Presence presenceOf(const QByteArrayList& entries, const QByteArrayList& names,
                    const QByteArray& text) {
    Presence presence;
    for (const QByteArray& name : names)
        for (const QByteArray& entry : entries)
            if (isCommentNamed(entry, name)) {
                presence.isThere = true;
                presence.isSame |= entry.sliced(name.size() + 1).startsWith(text);
            }
    return presence;
}

/// Moves texts into comments as far as they are not there.
struct CommentTaker {
    const QByteArrayList& present;
    QByteArrayList taken;
    qsizetype room = kMostBytesMoved;

    /// Returns whether the text stands in the comments now.
    bool take(const QString& identifier, const QByteArray& text) {
        const QByteArrayList names = commentNames(identifier);
        if (names.isEmpty() || text.isEmpty())
            return false;
        const Presence presence = presenceOf(present + taken, names, text);
        if (!presence.isThere && text.size() <= room) {
            room -= text.size();
            taken.append(names.first() + '=' + text);
            return true;
        }
        // "2/10" is two comments where the number stands alone.
        const qsizetype slash = presence.isSame ? -1 : text.indexOf('/');
        if (slash > 0 && !commentNames(identifier + kTotal).isEmpty())
            return presenceOf(present + taken, names, text.first(slash)).isSame &&
                   take(identifier + kTotal, text.sliced(slash + 1));
        return presence.isSame;
    }
};

} // namespace

QList<AVMetadataItem> flacForeignItems(FileReader& reader, std::uint64_t front,
                                       std::uint64_t audioStart) {
    MediaFacts behind;
    addTrailingTags(readTrailingTags(reader, audioStart), behind);
    QList<AVMetadataItem> items = readId3(ByteRange(reader, 0, front)).items;
    addMissingItems(items, behind.metadata);
    return items;
}

FlacForeignTag readFlacForeignTag(FileReader& reader, const QList<AVMetadataItem>& items,
                                  const QByteArrayList& present, bool hasPicture) {
    FlacForeignTag foreign;
    CommentTaker taker{present, {}};
    int images = 0;
    for (const AVMetadataItem& item : items) {
        if (item.identifier == kImage)
            ++images;
        else if (!taker.take(item.identifier, item.stringValue().toUtf8()) && !isEncoderNote(item))
            foreign.notCarried.append(itemName(item));
    }
    // The year that was shown may have come from a date.
    taker.take(QStringLiteral("id3/TYER"),
               infoFromId3(items).value(QStringLiteral("year")).toUtf8());
    foreign.comments = taker.taken;
    if (images > 0 && !hasPicture)
        foreign.cover = artworkOf(reader, items);
    if (static_cast<std::uint64_t>(renderFlacFrontCover(foreign.cover).size()) >
        FlacBlock::kLargestBody)
        foreign.cover = {};
    if (images > (foreign.cover.isNull() ? 0 : 1))
        foreign.notCarried.append(QStringLiteral("APIC"));
    foreign.notCarried += hiddenMpegTags(reader);
    foreign.notCarried.removeDuplicates();
    return foreign;
}

} // namespace clipheave::platform
