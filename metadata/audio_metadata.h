// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "jobs/write_job.h"
#include "jobs/write_request.h"
#include "metadata/audio_plans.h"

namespace clipheave::metadata {

/// Writers of audio files on a run, beside those of VideoMetadata. Each call starts one item and
/// returns; see there for the outcome. All outputs go flat into the storage folder under the
/// source's name and extension, whatever the container becomes. A request without an audio pane
/// fails.
class AudioMetadata {
public:
    explicit AudioMetadata(jobs::Run& run) : m_run(run) {}

    /// By the extension: MP3, FLAC (saving alone), any other audio.
    void save(const jobs::WriteRequest& request);
    void remove(const jobs::WriteRequest& request);

    // MP3: one new ID3v2.3 tag in place of all old tags; the audio stays byte for byte. A file
    // whose tags cannot be taken off safely is copied unchanged and returns Failed.
    void SaveChangedMp3MetadateItem(const jobs::WriteRequest& request);
    /// Blank frames for the fields that the pane shows; the cover stays.
    void RemoveMp3metadataItem(const jobs::WriteRequest& request);
    /// As the save, with `dateText` as recording date (null: the pane's) and as file dates.
    void SetMp3MetadateItem_withDateStr(const jobs::WriteRequest& request, const QString& dateText);
    /// Texts and "Created Date" from a property list; no track number and no cover.
    void ReloadMp3MetadateItem_withExif(const jobs::WriteRequest& request,
                                        const AudioDictionary& exif);

    // Any other audio: becomes M4A. AAC, ALAC and AC-3 are copied, other lossless codecs become
    // ALAC, other lossy ones AAC. A failure leaves no output.
    void SaveChangedAuidoExifDateItem(const jobs::WriteRequest& request);
    void SetAuidoExifDateItem_withDateStr(const jobs::WriteRequest& request,
                                          const QString& dateText);
    void ReloadChangedAuidoExifDateItem_withExif(const jobs::WriteRequest& request,
                                                 const AudioDictionary& exif);
    /// Leaves no item at all; FLAC files too.
    void RemoveAuidoExifDateItem(const jobs::WriteRequest& request);

    // FLAC: changed comments and a new cover; everything else byte for byte. Deliberate: the output
    // always has the file dates of the source. Other audio under that name, such as a removal
    // leaves, goes to the writer of any other audio.
    void SaveChangedFlaCAuidoExifItem(const jobs::WriteRequest& request);
    void SetFlaCAuidoExifItem_withDateStr(const jobs::WriteRequest& request,
                                          const QString& dateText);
    void ReloadChangedFlaCAuidoExifItem_withExif(const jobs::WriteRequest& request,
                                                 const AudioDictionary& exif);

private:
    /// Makes the job with the dates that `createdText` asks for; null: those of the source. None as
    /// jobs::beginJob().
    [[nodiscard]] std::optional<jobs::WriteJob> begin(const jobs::WriteRequest& request,
                                                      const QString& createdText);
    /// `lost`: frames of the source that a note names beside those that give no item; null in a
    /// removal, where a note says that the cover was kept.
    void writeMp3(const jobs::WriteRequest& request, const QList<platform::Id3TextFrame>& frames,
                  const platform::EncodedImage& cover, const QString& createdText,
                  const std::optional<QStringList>& lost = std::nullopt);
    /// `plan` makes the items out of the source's.
    void writeM4a(const jobs::WriteRequest& request, const QString& createdText,
                  const std::function<QList<platform::AVMetadataItem>(
                      jobs::WriteJob& job, const QList<platform::AVMetadataItem>&)>& plan);
    void writeFlac(const jobs::WriteRequest& request, const QMap<QString, QString>& info,
                   const CoverPlan& cover);

    jobs::Run& m_run;
};

} // namespace clipheave::metadata
