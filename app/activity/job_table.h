// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSortFilterProxyModel>
#include <QTableView>
#include <QTimer>

namespace clipheave::app {

class ActivityModel;

/// The jobs of one part of the panel's segment.
class JobFilter : public QSortFilterProxyModel {
    Q_OBJECT
public:
    enum class Pass { All, Running, Failed };

    explicit JobFilter(ActivityModel& model, QObject* parent = nullptr);
    void setPass(Pass pass);

protected:
    [[nodiscard]] bool filterAcceptsRow(int row, const QModelIndex& parent) const override;

private:
    ActivityModel& m_model;
    Pass m_pass = Pass::All;
};

/// The table of the jobs, rows of 36 px: state, task, items, progress, result, time. The columns
/// shrink with the window; the task takes the rest of the width.
class JobTable : public QTableView {
    Q_OBJECT
public:
    static constexpr int kRowHeight = 36;
    static constexpr int kHeaderHeight = 30;

    JobTable(ActivityModel& model, JobFilter& filter, QWidget* parent = nullptr);

    /// Returns the id of the chosen job, 0 when none is.
    [[nodiscard]] int chosenJob() const;
    /// Chooses nothing when the job is not among the rows.
    void chooseJob(int job);
    [[nodiscard]] int hoveredRow() const { return m_hoveredRow; }
    /// Returns true while the table repaints the spinners and times of running jobs.
    [[nodiscard]] bool isTicking() const { return m_tickTimer.isActive(); }
    /// Returns false where animations are off: the times alone are repainted, once a second.
    [[nodiscard]] bool spins() const { return m_spins; }
    /// Starts or stops the repainting according to what is running and visible.
    void refreshTicking();

Q_SIGNALS:
    void jobChosen(int job);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

private:
    void setUpHeader();
    void layOutColumns();
    void setHoveredRow(int row);
    void tick();
    void updateRow(int row, int column = -1);

    ActivityModel& m_model;
    QTimer m_tickTimer;
    int m_hoveredRow = -1;
    int m_ticks = 0;
    bool m_spins = false;
};

} // namespace clipheave::app
