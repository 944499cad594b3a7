// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/image_item.h"

#include <QObject>
#include <QStringList>

#include <vector>

namespace clipheave::media {
class MediaImport;
} // namespace clipheave::media

namespace clipheave::app {

class ActivityModel;
class ItemList;
class JobBoard;
struct ImportState;

/// Imports into the list, each with a row in the activity panel, which can try failed files again.
/// Reads on threads of its own; everything else, signals included, is on the main thread.
class Importer : public QObject {
    Q_OBJECT
public:
    Importer(ImportState& state, ItemList& list, ActivityModel& activity, JobBoard& board);

    /// Reads files and folders; with `photos`, files only.
    void start(const QStringList& paths, bool photos);

Q_SIGNALS:
    void itemsRead(); ///< some were appended to the list
    void finished();

private:
    void read(const QStringList& paths, bool photos, int job);
    void retry(const QStringList& paths, bool photos);
    void append(int job, const std::vector<media::ItemPointer>& items);
    void finish(const media::MediaImport& import, int job);

    ImportState& m_state;
    ItemList& m_list;
    ActivityModel& m_activity;
    JobBoard& m_board;
};

} // namespace clipheave::app
