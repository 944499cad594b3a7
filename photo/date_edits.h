// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "jobs/write_job.h"
#include "photo/photo_order.h"

#include <QString>

#include <optional>

namespace clipheave::photo {

/// The texts of the window for the dates of one photo; null for the photo's own.
struct DateTexts {
    QString orignalDatelab; ///< date taken: of the file
    QString diginalDatelab; ///< date digitised: of EXIF and TIFF
};

/// The commands on a run that write dates and names into photos. Each makes one new file a photo in
/// the storage folder, under the photo's name, with the file dates of the photo where nothing else
/// is said.
class PhotoDateEdits {
public:
    explicit PhotoDateEdits(jobs::Run& run) : m_run(run) {}

    /// The name without its extension as the user comment. A kind that cannot be written is copied
    /// unchanged, and its outcome says so.
    void ClickCopyFileNameToCommentsAction(const PhotoRequest& request);
    /// Deliberate: the date digitised becomes both EXIF dates and the TIFF date, the date taken
    /// both dates of the file (those of the photo where it is no date). Kinds that cannot be
    /// written are copied unchanged with these file dates. A photo that has no date and gets none
    /// fails.
    void ClickDateChangedSaveAction(const PhotoRequest& request, const DateTexts& texts);
    /// One photo with this text as both EXIF dates and the TIFF date.
    void writeCameraDate(const media::ItemPointer& item, const jobs::RunSettings& settings,
                         const QString& date);

private:
    [[nodiscard]] std::optional<jobs::WriteJob> begin(const media::ItemPointer& item,
                                                      const jobs::RunSettings& settings);

    jobs::Run& m_run;
};

/// Returns whether the date digitised, as it was typed, has one of the two forms; nothing is
/// written otherwise.
[[nodiscard]] bool isUsable(const DateTexts& texts);

} // namespace clipheave::photo
