// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "photo/stamp_drawing.h"
#include "platform/foundation/result.h"
#include "platform/image/carried_tags.h"

#include <QDateTime>
#include <QImage>
#include <QVariantMap>

#include <functional>
#include <optional>

namespace clipheave::photo {

/// Returns the text of the date that a photo is stamped with, as it is recorded: "DateTimeOriginal"
/// of its EXIF properties, else "DateTimeDigitized", else the creation date of the file, as
/// "2025-06-14 19:36:20". Texts of zeros and blanks, of cameras whose clock was never set, count as
/// absent. Deliberate: the file's date is in UTC, as the system writes dates as text.
[[nodiscard]] QString recordedDate(const QVariantMap& properties, const QDateTime& fileCreation);
/// Returns both file dates of a stamped photo: that of "DateTimeOriginal" where EXIF holds it and
/// "DateTimeDigitized", else the creation date of the file. None when the text is no date.
/// Deliberate: the text of the file's date, in UTC, is read as local time; so the file's dates show
/// the clock time that stands on the photo.
[[nodiscard]] std::optional<QDateTime> captureDate(const QVariantMap& properties,
                                                   const QDateTime& fileCreation);
/// Returns "NAME_date.EXTENSION" in the folder, of the name of the photo.
[[nodiscard]] QString stampedPath(const QString& photo, const QString& folder);
/// Returns whether the output is of the kind that gets neither metadata nor dates: named ".png", in
/// any case.
[[nodiscard]] bool isWrittenPlain(const QString& output);

/// One photo on its way to its stamped copy. The drawn image stays in memory: under the photo's
/// name in the storage folder it would replace an earlier output, or the photo itself.
class DateStamp {
public:
    using Progress = std::function<bool(double)>;

    /// `properties`: of the photo, as CGImageSource gives them; `date`: see recordedDate().
    DateStamp(QString photo, const QVariantMap& properties, const QString& date, StampStyle style);
    /// Writes the copy as `output` in one step; returns notes. Cancelled when `progress`, which
    /// gets the fraction done, returns false; else the failure of reading or writing. Then nothing
    /// is left. For worker threads.
    [[nodiscard]] platform::Result<platform::Notes> write(const QString& output,
                                                          const Progress& progress) const;

private:
    using Written = platform::Result<platform::Notes>;
    [[nodiscard]] Written compressPhotowithFilePath(const QString& output, const QImage& stamped,
                                                    platform::CarriedTags& tags) const;
    [[nodiscard]] Written CompressJpgWithImageData_withImagePath_withMetaData_withorigiPath(
        const QImage& stamped, const QString& output, platform::CarriedTags& tags,
        const QString& photo) const;
    [[nodiscard]] Written CompressPngWithImageData_withImagePath(const QImage& stamped,
                                                                 const QString& output) const;
    void describe(platform::CarriedTags& tags, QSize stamped) const;

    QString m_photo;
    QSize m_pixels; ///< as stored, before the rotation
    int m_orientation;
    QString m_text;
    StampStyle m_style;
};

} // namespace clipheave::photo
