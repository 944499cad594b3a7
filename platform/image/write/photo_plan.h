// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/file_reader.h"
#include "platform/image/write/photo_change.h"

#include <vector>

namespace clipheave::platform {

/// Bytes of the new file: own ones, or a range of the source, which the kernel copies.
struct FilePart {
    QByteArray bytes;
    std::uint64_t offset = 0, length = 0; ///< of the source, when there are no bytes
};

/// A new file, part by part.
struct PhotoPlan {
    std::vector<FilePart> parts;
    Notes notes;

    void add(const QByteArray& bytes) {
        if (!bytes.isEmpty())
            parts.push_back({bytes});
    }
    void addRange(std::uint64_t offset, std::uint64_t length);
    void add(PhotoPlan&& other);
    [[nodiscard]] std::uint64_t size() const;
};

/// The packet with the change. Where it cannot be read it goes if the change removes what it may
/// hold, and stays otherwise; a note says which.
[[nodiscard]] QByteArray changedXmpOrNote(const QByteArray& packet, const PhotoChange& change,
                                          Notes& notes);

/// The same with the IPTC texts of the change, for formats that hold them as XMP alone; a note
/// names those that XMP has no property for.
[[nodiscard]] QByteArray changedXmpWithIptc(const QByteArray& packet, const PhotoChange& change,
                                            Notes& notes);

/// Plans the change of a photo of any format. NotSupported for kinds that nobody writes without
/// loss, otherwise as below.
[[nodiscard]] Result<PhotoPlan> plannedPhoto(FileReader& reader, const PhotoChange& change);
/// What each format makes of a change; the file begins with its signature. InvalidData when it is
/// not built as it should be, NotSupported for what cannot be written without loss.
[[nodiscard]] Result<PhotoPlan> planJpeg(FileReader& reader, const PhotoChange& change);
[[nodiscard]] Result<PhotoPlan> planPng(FileReader& reader, const PhotoChange& change);
[[nodiscard]] Result<PhotoPlan> planWebp(FileReader& reader, const PhotoChange& change);
[[nodiscard]] Result<PhotoPlan> planTiff(FileReader& reader, const PhotoChange& change);
[[nodiscard]] Result<PhotoPlan> planHeif(FileReader& reader, const PhotoChange& change);
[[nodiscard]] Result<PhotoPlan> planPsd(FileReader& reader, const PhotoChange& change);
[[nodiscard]] Result<PhotoPlan> planJp2(FileReader& reader, const PhotoChange& change);
/// The same; NotSupported for a change that sets anything: the format has no place for EXIF.
[[nodiscard]] Result<PhotoPlan> planGif(FileReader& reader, const PhotoChange& change);

} // namespace clipheave::platform
