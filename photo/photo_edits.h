// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "photo/pane_texts.h"
#include "photo/photo_order.h"

#include <QVariantMap>

namespace clipheave::photo {

/// Returns the pane as a photo fills it, nothing changed; empty texts for what it does not have.
/// The failure of CGImageSource otherwise: an empty pane would take what the photo has away.
[[nodiscard]] platform::Result<PaneTexts> paneOfPhoto(const QString& path);

/// Returns why the position cannot be written: no number, out of range, an empty field, no date or
/// time; nothing when it can. `needsStamps`: date and time must be there.
[[nodiscard]] std::optional<platform::Message> placeFault(const PlaceTexts& place,
                                                          bool needsStamps);
/// Returns why the pane cannot be written; nothing when it can.
[[nodiscard]] std::optional<platform::Message> paneFault(const PaneTexts& pane);

/// Returns the GPS dictionary of a position; the texts are valid. Deliberate: in single precision,
/// about a metre, as it always was.
[[nodiscard]] QVariantMap gpsProperties(const PlaceTexts& place, bool withFraction);
/// Returns the properties that the changed sections of the pane write. Every field of such a
/// section is written: an empty one blanks the photo's own.
[[nodiscard]] QVariantMap paneProperties(const PaneTexts& pane);

/// The photo commands on a run. Each makes one new file a photo in the storage folder, under the
/// photo's name with a prefix; older outputs of the name are replaced, never a file of the list.
class PhotoEdits {
public:
    explicit PhotoEdits(jobs::Run& run) : m_run(run) {}

    void RemoveIPTCDataFromPhoto(const PhotoRequest& request);
    void RemoveExifDataFromPhoto(const PhotoRequest& request);
    void RemoveGPSDataFromPhoto(const PhotoRequest& request);
    /// Deliberate: the name of this output is that of DeleteAllPhotoMetadataData() too.
    void DeleteExifAndGPSData(const PhotoRequest& request);
    /// Nothing personal stays; colours and the orientation do.
    void DeleteAllPhotoMetadataData(const PhotoRequest& request);
    /// Writes the position alone and drops the EXIF block.
    void ChangeGPSExifDataPhoto(const PhotoRequest& request, const PlaceTexts& place);
    void ClickSaveChangeGPSAction(const PhotoRequest& request, const PlaceTexts& place);
    /// A pane with a fault fails every photo.
    void ClickApplyChangeAction(const PhotoRequest& request, const PaneTexts& pane);

private:
    struct Edit {
        const char* prefix = ""; ///< of the output's name
        QVariantMap properties;
        QString keywords = {}; ///< as typed; null when they are not written
    };
    void rewriteAll(const PhotoRequest& request, const Edit& edit);
    void rewrite(const media::ItemPointer& item, const PhotoRequest& request, const Edit& edit);

    jobs::Run& m_run;
};

} // namespace clipheave::photo
