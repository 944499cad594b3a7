// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "jobs/run_order.h"
#include "media/image_item.h"

#include <QObject>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

namespace clipheave::batch {
struct RenameBatch;
} // namespace clipheave::batch

namespace clipheave::jobs {
class Run;
} // namespace clipheave::jobs

namespace clipheave::app {

class ActivityModel;
class JobBoard;
class Workspace;
struct BoardJob;
struct JobArrival;
struct RenameState;

/// Renames and their undoings as jobs of the board, and what list and panel show of them. Main
/// thread.
class RenameJobs : public QObject {
    Q_OBJECT
public:
    using ChangeItems =
        std::function<void(const QStringList& paths, const media::ItemChange& change)>;

    /// `changeItems` changes the items of the list. All references outlive the jobs.
    RenameJobs(RenameState& state, ActivityModel& activity, JobBoard& board, Workspace& workspace,
               ChangeItems changeItems);

    /// Starts the rename that `batch` describes; `order` runs it.
    void rename(const std::shared_ptr<batch::RenameBatch>& batch, jobs::RunOrder order);
    /// Gives the files of the last rename their old names back.
    void undo();

Q_SIGNALS:
    void progressed(const QString& progress); ///< "%d/%d"
    void renamed();                           ///< a rename has ended
    void ended();                             ///< a rename or an undoing

private:
    void start(BoardJob& job);
    void takeRenamed(const batch::RenameBatch& batch, std::vector<JobArrival>& arrivals);
    void takeRestored(std::vector<JobArrival>& arrivals);
    void showProgress(int job, std::size_t taken);
    void end(int job, const jobs::Run& run);

    RenameState& m_state;
    ActivityModel& m_activity;
    JobBoard& m_board;
    Workspace& m_workspace;
    ChangeItems m_changeItems;
};

} // namespace clipheave::app
