// SPDX-License-Identifier: GPL-3.0-or-later
#include "metadata/audio_metadata.h"

#include "media/fields.h"
#include "media/shown_text.h"
#include "metadata/messages.h"
#include "metadata/temporary_artwork.h"
#include "platform/formats/flac/flac_blocks.h"
#include "platform/formats/flac/flac_tags.h"
#include "platform/formats/messages.h"
#include "platform/formats/mpeg/hidden_tags.h"
#include "platform/formats/mpeg/mpeg_tags.h"
#include "platform/foundation/dates.h"
#include "platform/foundation/log.h"
#include "platform/foundation/paths.h"
#include "platform/image/tiff_representation.h"
#include "platform/media/export/output_place.h"
#include "platform/media/model/messages.h"

#include <algorithm>

namespace clipheave::metadata {

namespace {

using namespace platform;

/// Room for the head of a FLAC picture block, whose whole size is 24 bits.
constexpr std::uint64_t kLargestFlacImage = (1u << 24) - 1024;

bool hasExtension(const jobs::WriteRequest& request, const char16_t* extension) {
    return pathExtension(request.item->filePath)
               .compare(QStringView(extension), Qt::CaseInsensitive) == 0;
}

/// Returns whether the FLAC writer takes the file: by its name and by its bytes, since a removal
/// leaves MPEG-4 under the old name. It also takes what nobody can read, and then delivers the file
/// unchanged.
bool isForFlacWriter(const jobs::WriteRequest& request) {
    if (!hasExtension(request, u"flac"))
        return false;
    auto reader = FileReader::open(request.item->filePath);
    if (!reader || findFlacSignature(*reader))
        return true;
    const auto asset = AVURLAsset::assetWithPath(request.item->filePath);
    return !asset || asset->tracks().empty();
}

/// The date writers take an empty date text for no date.
const QString& createdTextOf(const jobs::WriteRequest& request) {
    return request.audioPane->texts.createdDatelab;
}

/// A text that was typed and that the file has no place for is not kept in silence.
void noteUnstored(jobs::WriteJob& job, const media::AudioPane& pane, bool isFlac) {
    const auto note = [&](const QString& text, const QString& old, MessageCode reason) {
        if (text != old)
            job.notes.append(reason);
    };
    note(pane.texts.keywordslab, pane.shown.oldKeywordStr, kKeywordsNotStored);
    note(pane.texts.imageDescrilab, pane.shown.oldImageDescStr, kDescriptionNotStored);
    if (!isFlac)
        return;
    note(pane.texts.ablumAristlab, pane.shown.oldAlbumArtistStr, kTrackNotStored);
    note(pane.texts.publishlab, pane.shown.oldPublisherStr, kPublisherNotStored);
    note(pane.texts.bandlab, pane.shown.oldBandStr, kBandNotStored);
    note(pane.texts.createdDatelab, pane.shown.oldCreateDateStr, kCreatedDateNotStored);
}

bool holdsListedArtwork(const QList<AVMetadataItem>& items) {
    return std::any_of(items.begin(), items.end(), [](const AVMetadataItem& item) {
        return item.effectiveIdentifier() == u"itsk/covr";
    });
}

/// Returns whether the item feeds a field and says what the record shows there.
bool isShown(const AVMetadataItem& candidate, const media::IKImageItem& item) {
    const QString identifier = candidate.effectiveIdentifier();
    const QByteArray plain = QByteArray::fromPercentEncoding(identifier.toLatin1());
    return std::any_of(
        std::begin(media::kFields), std::end(media::kFields), [&](const media::Field& field) {
            const bool feeds = std::any_of(field.read.begin(), field.read.end(),
                                           [&](const auto& read) {
                                               return identifier == QLatin1String(read.identifier);
                                           }) ||
                               (field.infoKey &&
                                plain == "caaf/info-" + QString::fromUtf16(field.infoKey).toUtf8());
            return feeds && field.record &&
                   item.*field.record == platform::trackNumberText(candidate);
        });
}

/// Two tags of a file may say different things. The import shows the later one, or the one that its
/// reader prefers; the writer gives the place in the output to the first. Puts what the record
/// shows in front; the boxes of an MPEG-4 file keep their order, which is that of both.
QList<AVMetadataItem> shownFirst(QList<AVMetadataItem> source, const media::IKImageItem& item) {
    std::stable_partition(source.begin(), source.end(), [&](const AVMetadataItem& candidate) {
        return !candidate.source && isShown(candidate, item);
    });
    return source;
}

/// The pane to compare with. An artist that nobody touched counts as changed there; where the file
/// holds several, of which the pane shows the last, that would take the others away.
media::AudioPane paneFor(const jobs::WriteRequest& request, const QList<AVMetadataItem>& source) {
    media::AudioPane pane = *request.audioPane;
    const auto artists =
        std::count_if(source.begin(), source.end(), [](const AVMetadataItem& item) {
            return item.effectiveIdentifier() == u"itsk/%A9ART";
        });
    if (artists > 1 && pane.texts.artistlab == media::shownText(request.item->fileArist))
        pane.shown.oldArtistStr = pane.texts.artistlab;
    return pane;
}

QString codecName(const AVURLAsset& asset) {
    const QString code = asset.tracks().empty() ? QString() : asset.tracks().front().codec;
    if (code == u"mp4a")
        return QStringLiteral("AAC");
    return code == u"ac-3" ? QStringLiteral("AC-3") : code.toUpper();
}

/// Notes that a file has become MPEG-4 although its name still says something else.
void noteMpeg4(jobs::WriteOutcome& outcome) {
    const QString extension = pathExtension(outcome.source).toLower();
    const bool isNamedSo =
        extension.startsWith(u"m4") || extension == u"mp4" || extension == u"mov";
    if (isNamedSo || outcome.status != jobs::WriteStatus::Completed || outcome.outputs.isEmpty())
        return;
    if (const auto written = AVURLAsset::assetWithPath(outcome.outputs.front()))
        outcome.notes.append(Message(kMpeg4UnderOldName, {codecName(*written)}));
}

bool isMpeg4(const AVURLAsset& asset) {
    const Container container = asset.file()->facts().container;
    return container == Container::Mp4 || container == Container::QuickTime;
}

/// The cover as an M4A file stores it; null when the source's own box is carried over.
EncodedImage coverForM4a(const CoverPlan& cover, const QList<AVMetadataItem>& source,
                         platform::Notes& notes) {
    if (cover.image.isNull() || (cover.isUntouched && holdsListedArtwork(source)))
        return {};
    const auto image = artworkForItemList(cover.image);
    if (image)
        return *image;
    notes.append(Message(kCoverLeftOut, {image.error().detail.text()}));
    return {};
}

/// TIFF, or the image's own bytes where it cannot be one or a block cannot hold as much; null when
/// a block holds neither.
EncodedImage coverForFlac(const EncodedImage& image, platform::Notes& notes) {
    const auto tiff = TIFFRepresentation(image);
    if (tiff && tiff->byteCount() <= kLargestFlacImage && !tiff->bytes().isEmpty())
        return *tiff;
    if (image.byteCount() > kLargestFlacImage || image.bytes().isEmpty()) {
        const Message reason(image.bytes().isEmpty() ? kArtworkUnreadable : kFlacBlockTooLarge);
        notes.append(Message(kCoverLeftOut, {reason.text()}));
        return {};
    }
    notes.append(tiff ? Message(kCoverStoredAsGiven)
                      : Message(kCoverKeepsItsBytes, {tiff.error().detail.text()}));
    return image;
}

/// The tag of an MP3 file. Whatever the cover is, the texts are written: one that cannot be TIFF
/// keeps its own bytes, one that cannot be read is left out, and a note says so.
Result<QByteArray> tagWithCover(const QList<Id3TextFrame>& frames, const EncodedImage& cover,
                                platform::Notes& notes) {
    if (cover.isNull())
        return renderId3Tag(frames, {});
    const auto tiff = TIFFRepresentation(cover);
    const QByteArray image = tiff ? tiff->bytes() : QByteArray();
    const auto tag = renderId3Tag(frames, image);
    if (tag && !image.isEmpty()) {
        writeTemporaryArtwork(image);
        return tag;
    }
    const Message reason = !tiff             ? tiff.error().detail
                           : image.isEmpty() ? Message(kArtworkUnreadable)
                                             : tag.error().detail;
    const QByteArray own = cover.bytes();
    const auto plain = renderId3Tag(frames, own);
    const bool isKept = plain && !own.isEmpty();
    notes.append(Message(isKept ? kCoverKeepsItsBytes : kCoverLeftOut, {reason.text()}));
    return isKept ? plain : renderId3Tag(frames, {});
}

QStringList hiddenTagsOf(const QString& path) {
    auto reader = FileReader::open(path);
    return reader ? hiddenMpegTags(*reader) : QStringList();
}

} // namespace

void AudioMetadata::save(const jobs::WriteRequest& request) {
    if (hasExtension(request, u"mp3"))
        return SaveChangedMp3MetadateItem(request);
    if (hasExtension(request, u"flac"))
        return SaveChangedFlaCAuidoExifItem(request);
    SaveChangedAuidoExifDateItem(request);
}

void AudioMetadata::remove(const jobs::WriteRequest& request) {
    if (hasExtension(request, u"mp3"))
        return RemoveMp3metadataItem(request);
    RemoveAuidoExifDateItem(request);
}

std::optional<jobs::WriteJob> AudioMetadata::begin(const jobs::WriteRequest& request,
                                                   const QString& createdText) {
    const QString& source = request.item->filePath;
    if (!request.audioPane) {
        m_run.ticket(source).report(jobs::refusal(source, kNoAudioPane));
        return std::nullopt;
    }
    m_run.paths().protect({source});
    auto job = jobs::beginJob(m_run.ticket(source), source,
                              m_run.paths().claim(jobs::flatOutputPath(request)));
    if (job)
        noteUnstored(*job, *request.audioPane, isForFlacWriter(request));
    if (!job || createdText.isNull() || createdText == request.audioPane->shown.oldCreateDateStr)
        return job;
    if (const auto date = parseDateText(createdText))
        job->dates = {*date, *date};
    return job;
}

void AudioMetadata::writeMp3(const jobs::WriteRequest& request, const QList<Id3TextFrame>& frames,
                             const EncodedImage& cover, const QString& createdText,
                             const std::optional<QStringList>& lost) {
    auto job = begin(request, createdText);
    if (!job)
        return;
    const auto write = [source = job->source, output = job->output, frames, cover,
                        lost](const auto& progress) -> Result<platform::Notes> {
        platform::Notes notes;
        if (const QStringList names = lost ? *lost + hiddenTagsOf(source) : QStringList();
            !names.isEmpty())
            notes.append(Message(kTagsNotCarriedOver, {names.join(QStringLiteral(", "))}));
        if (!lost && !cover.isNull())
            notes.append(kCoverKept);
        const auto tag = tagWithCover(frames, cover, notes);
        if (!tag)
            return tl::unexpected(tag.error());
        OutputPlace(output).removeLink();
        const auto written =
            replaceMpegTags(source, output, *tag, progress,
                            lost ? AtomicFile::Attributes::All : AtomicFile::Attributes::OfSystem);
        if (!written)
            return tl::unexpected(written.error());
        return notes;
    };
    jobs::startSession(*job, AVAssetExportSession::rewriting(job->source, job->output, write));
}

void AudioMetadata::SaveChangedMp3MetadateItem(const jobs::WriteRequest& request) {
    SetMp3MetadateItem_withDateStr(request, {});
}

void AudioMetadata::SetMp3MetadateItem_withDateStr(const jobs::WriteRequest& request,
                                                   const QString& dateText) {
    if (!request.audioPane)
        return static_cast<void>(begin(request, {}));
    writeMp3(request, planMp3Save(*request.audioPane, dateText),
             planCover(*request.audioPane, *request.item).image,
             dateText.isNull() ? createdTextOf(request) : dateText,
             framesLostInMp3(request.item->fileMetaArray, !request.item->fileImage.isNull()));
}

void AudioMetadata::RemoveMp3metadataItem(const jobs::WriteRequest& request) {
    if (!request.audioPane)
        return static_cast<void>(begin(request, {}));
    writeMp3(request, planMp3Removal(*request.audioPane),
             planCover(*request.audioPane, *request.item).image, createdTextOf(request));
}

void AudioMetadata::ReloadMp3MetadateItem_withExif(const jobs::WriteRequest& request,
                                                   const AudioDictionary& exif) {
    writeMp3(request, planMp3Reload(exif), {},
             exif.value(QStringLiteral("Created Date"), QStringLiteral("")));
}

void AudioMetadata::writeM4a(
    const jobs::WriteRequest& request, const QString& createdText,
    const std::function<QList<AVMetadataItem>(jobs::WriteJob& job, const QList<AVMetadataItem>&)>&
        plan) {
    auto job = begin(request, createdText);
    if (!job)
        return;
    job->copiesOnFailure = false;
    const auto asset = AVURLAsset::assetWithPath(job->source);
    if (!asset)
        return jobs::failJob(*job, asset.error());
    if (!isMpeg4(*asset))
        job->beforeReport = &noteMpeg4;
    auto session = std::make_shared<AVAssetExportSession>(
        *asset, QString::fromUtf16(AVAssetExportPresetPassthrough));
    session->setOutputPath(job->output);
    session->setOutputFileType(QString::fromUtf16(AVFileTypeAppleM4A));
    session->setMetadata(plan(*job, shownFirst(asset->metadata(), *request.item)));
    jobs::startSession(*job, session);
}

void AudioMetadata::SaveChangedAuidoExifDateItem(const jobs::WriteRequest& request) {
    SetAuidoExifDateItem_withDateStr(request, {});
}

void AudioMetadata::SetAuidoExifDateItem_withDateStr(const jobs::WriteRequest& request,
                                                     const QString& dateText) {
    if (!request.audioPane)
        return static_cast<void>(begin(request, {}));
    const CoverPlan cover = planCover(*request.audioPane, *request.item);
    writeM4a(request, dateText.isNull() ? createdTextOf(request) : dateText,
             [&](jobs::WriteJob& job, const auto& source) {
                 return planAudioSave(paneFor(request, source),
                                      coverForM4a(cover, source, job.notes), source, dateText);
             });
}

void AudioMetadata::ReloadChangedAuidoExifDateItem_withExif(const jobs::WriteRequest& request,
                                                            const AudioDictionary& exif) {
    writeM4a(request, exif.value(QStringLiteral("Created Date"), QStringLiteral("")),
             [&](jobs::WriteJob&, const auto& source) { return planAudioReload(exif, source); });
}

void AudioMetadata::RemoveAuidoExifDateItem(const jobs::WriteRequest& request) {
    if (!request.audioPane)
        return static_cast<void>(begin(request, {}));
    writeM4a(request, createdTextOf(request),
             [](jobs::WriteJob&, const auto&) { return QList<AVMetadataItem>(); });
}

void AudioMetadata::writeFlac(const jobs::WriteRequest& request, const QMap<QString, QString>& info,
                              const CoverPlan& cover) {
    auto job = begin(request, {});
    if (!job)
        return;
    FlacTagChanges changes{info, {}};
    // An untouched cover keeps the bytes that the file holds.
    const bool hasNewCover = !cover.isUntouched && !cover.image.isNull();
    const auto write = [source = job->source, output = job->output, changes,
                        image = hasNewCover ? cover.image : EncodedImage()](
                           const auto& progress) mutable -> Result<platform::Notes> {
        platform::Notes notes;
        if (!image.isNull())
            changes.image = coverForFlac(image, notes);
        OutputPlace(output).removeLink();
        const auto written = rewriteFlacTags(source, output, changes, progress);
        return written ? Result<platform::Notes>(notes + *written)
                       : tl::unexpected(written.error());
    };
    jobs::startSession(*job, AVAssetExportSession::rewriting(job->source, job->output, write));
}

void AudioMetadata::SaveChangedFlaCAuidoExifItem(const jobs::WriteRequest& request) {
    SetFlaCAuidoExifItem_withDateStr(request, {});
}

void AudioMetadata::SetFlaCAuidoExifItem_withDateStr(const jobs::WriteRequest& request,
                                                     const QString& dateText) {
    if (!isForFlacWriter(request))
        return SetAuidoExifDateItem_withDateStr(request, dateText);
    if (!request.audioPane)
        return static_cast<void>(begin(request, {}));
    writeFlac(request, planFlacSave(*request.audioPane, dateText),
              planCover(*request.audioPane, *request.item));
}

void AudioMetadata::ReloadChangedFlaCAuidoExifItem_withExif(const jobs::WriteRequest& request,
                                                            const AudioDictionary& exif) {
    if (!isForFlacWriter(request))
        return ReloadChangedAuidoExifDateItem_withExif(request, exif);
    writeFlac(request, planFlacReload(exif), {});
}

} // namespace clipheave::metadata
