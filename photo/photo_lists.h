// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "photo/list_content.h"
#include "photo/photo_order.h"

#include <functional>

namespace clipheave::photo {

/// Writes `target` as `source` with the properties of an imported list: see ImportedList.
using PhotoRewriter = std::function<platform::Result<platform::Notes>(
    const QString& source, const QString& target, const QVariantMap& properties)>;

/// The workers of the property lists on a run: each takes a ticket for each item. Lists lie in the
/// storage folder and replace older files of their name; items that are no photos are skipped, and
/// so are photos that have nothing for the list.
class PhotoLists {
public:
    explicit PhotoLists(jobs::Run& run) : m_run(run) {}
    PhotoLists(const PhotoLists&) = delete;
    PhotoLists& operator=(const PhotoLists&) = delete;

    // One file under a fixed name. Deliberate: of several photos it holds the last one that has
    // something for it; the outcomes of the others name that photo.
    void ExportTiffInfoToPlist(const PhotoRequest& request) { writeOne(PhotoList::Tiff, request); }
    void ExportExifInfoToPlist(const PhotoRequest& request) { writeOne(PhotoList::Exif, request); }
    void ExportExifandTiffInfoToPlist(const PhotoRequest& request) {
        writeOne(PhotoList::ExifAndTiff, request);
    }
    void ExportExifandGPSInfoToPlist(const PhotoRequest& request) {
        writeOne(PhotoList::ExifAndGps, request);
    }
    void ExportTemplateDataToPlist(const PhotoRequest& request) {
        writeOne(PhotoList::Template, request);
    }
    void ExportAllMetadataInfoToPlist(const PhotoRequest& request) {
        writeOne(PhotoList::AllMetadata, request);
    }
    /// All metadata of each photo in a file of its own, "NAME.plist"; of two photos of one name the
    /// second gets a number.
    void WriteSelectedItemsExifDataToPlist(const PhotoRequest& request);

    /// Writes a copy of each photo with what the list at `plist` says, with the photo's name and
    /// dates. A list that cannot be used fails the run.
    void ImportPlistToPhotos(const PhotoRequest& request, const QString& plist,
                             const PhotoRewriter& rewrite);
    /// The same: every list is read by the names of its keys.
    void ImportTemplateToPhotos(const PhotoRequest& request, const QString& plist,
                                const PhotoRewriter& rewrite) {
        ImportPlistToPhotos(request, plist, rewrite);
    }

private:
    void writeOne(PhotoList list, const PhotoRequest& request);

    jobs::Run& m_run;
};

/// Returns the order of an export over the items of the request.
[[nodiscard]] jobs::RunOrder listOrder(void (PhotoLists::*write)(const PhotoRequest& request),
                                       PhotoRequest request);
/// The writer of photos as a PhotoRewriter.
[[nodiscard]] platform::Result<platform::Notes>
rewriteWithProperties(const QString& source, const QString& target, const QVariantMap& properties);
/// Returns the order of an import of the list at `plist`.
[[nodiscard]] jobs::RunOrder importOrder(const QString& plist, PhotoRewriter rewrite,
                                         PhotoRequest request);

} // namespace clipheave::photo
