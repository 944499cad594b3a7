// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/image_item.h"
#include "media/metadata_walk.h"

#include <QStringList>

#include <functional>
#include <vector>

namespace clipheave::media {

/// A path, given or found in a folder, that has no item, and why.
struct SkippedPath {
    QString path;
    platform::Message reason;
};

/// Called after each file with the new item, or null for a file that was skipped.
using ImportStep = std::function<void(const ItemPointer& item)>;

/// Turns paths into media items, appended in order. One import runs on one thread of the caller's;
/// reading ahead uses further threads and changes neither order nor result.
class MediaImport {
public:
    /// `step` is called on the importing thread after every file, whatever became of it.
    explicit MediaImport(ImportStep step = {});

    /// Imports files and folders in the order given: the import worker. Folders are walked depth
    /// first, entries as the file system gives them.
    void importMediaItemsThreader(const QStringList& paths);
    /// The same, photos too: for commands that take every kind.
    void importEveryKind(const QStringList& paths);
    /// Imports one folder: the folder worker alone.
    void ScanMediasItemWithinFolder(const QString& folder);
    /// Adds items of kind, name and path, reading nothing and reporting no step: the quick add of
    /// the drop area. Stops at the first file whose attributes cannot be read.
    void addWithoutReading(const QStringList& paths);
    /// Imports photos (by the drop table) and videos for the photo browser; walks folders. Photos
    /// get size, dates, pixel size, camera and position; other files an item as the browser needs
    /// it.
    void importPhotos(const QStringList& paths);

    /// Returns the items in order; empty when they are not kept.
    [[nodiscard]] const std::vector<ItemPointer>& localPhotoItemArray() const { return m_items; }
    /// Returns the paths that could not be read.
    [[nodiscard]] const std::vector<SkippedPath>& skipped() const { return m_skipped; }
    /// Returns the files of kinds that the list does not take: those that were given by name, and
    /// of those found in folders the ones that are videos all the same. Nothing is logged about
    /// them.
    [[nodiscard]] const std::vector<SkippedPath>& unknown() const { return m_unknown; }
    /// Returns true when the last path handled was a folder; then `bImportLocalPath` is its parent.
    [[nodiscard]] bool bImportLocalFolder() const { return m_bImportLocalFolder; }
    [[nodiscard]] QString bImportLocalPath() const { return m_bImportLocalPath; }

    /// Sets how many threads read ahead, besides the importing one (default: the machine's other
    /// cores).
    void setReadAheadThreads(int count) { m_readAheadThreads = count; }
    /// Sets whether localPhotoItemArray() collects the items (the default) or the step alone gets
    /// them.
    void setKeepsItems(bool keeps) { m_keepsItems = keeps; }
    /// Sets whether a file that an earlier path of the call names, or holds as a folder, is left
    /// out without a step. Links count as what they lead to; hard links are files of their own.
    /// Default: false, the list shows a file as often as it is added.
    void setTakesFilesOnce(bool once) { m_takesFilesOnce = once; }
    /// Sets a function that is called between files; the import ends early when it returns true (a
    /// signal, the end of the program).
    void setStopRequested(std::function<bool()> stop) { m_stop = std::move(stop); }

private:
    struct Pipeline;

    ImportStep m_step;
    std::function<bool()> m_stop;
    std::vector<ItemPointer> m_items;
    std::vector<SkippedPath> m_skipped, m_unknown;
    bool m_keepsItems = true;
    bool m_takesFilesOnce = false;
    bool m_bImportLocalFolder = false;
    QString m_bImportLocalPath;
    int m_readAheadThreads;
};

} // namespace clipheave::media
