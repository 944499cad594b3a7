// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractListModel>
#include <QStringList>
#include <QWidget>

class QListView;

namespace clipheave::app {

class ActivityModel;
class Button;
class LogView;
class StateIcon;
class ToneLabel;
struct ActivityFile;
struct RunningFile;

/// The files of one job: those that are being written, then the finished ones, in the order in
/// which they were finished.
class JobFiles : public QAbstractListModel {
    Q_OBJECT
public:
    enum Role { NoteRole = Qt::UserRole, StateRole };

    explicit JobFiles(ActivityModel& model, QObject* parent = nullptr);
    void setJob(int job);
    /// Takes over what was added since the last call.
    void refresh();
    /// Returns the finished file of the row; null for one that is being written.
    [[nodiscard]] const ActivityFile* file(int row) const;
    /// Returns the file that is being written; null for a finished one.
    [[nodiscard]] const RunningFile* running(int row) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    void resizeRunning(int rows);
    [[nodiscard]] static QVariant ofRunning(const RunningFile& file, int role);
    [[nodiscard]] static QVariant ofEnded(const ActivityFile& file, int role);

    ActivityModel& m_model;
    int m_job = 0;
    int m_running = 0, m_ended = 0; ///< rows
};

/// The right side of the panel: what became of each file of the chosen job and what was logged.
class JobDetails : public QWidget {
    Q_OBJECT
public:
    static constexpr int kHeadHeight = 40;

    explicit JobDetails(ActivityModel& model, QWidget* parent = nullptr);

    /// Shows the job; 0 for none.
    void showJob(int job);
    [[nodiscard]] int job() const { return m_job; }
    /// Takes over what changed since the last call.
    void refresh();

Q_SIGNALS:
    void revealRequested(const QStringList& paths);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QWidget* makeHead();
    void fitHead();
    void placeParts();
    [[nodiscard]] QStringList pathsToReveal() const;

    ActivityModel& m_model;
    int m_job = 0;
    JobFiles* m_files;
    StateIcon* m_icon = nullptr;
    ToneLabel *m_title = nullptr, *m_result = nullptr;
    Button *m_retry = nullptr, *m_cancel = nullptr, *m_reveal = nullptr;
    QListView* m_list = nullptr;
    LogView* m_log = nullptr;
};

} // namespace clipheave::app
