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

/// The rows of the jobs: 36 px each, state, task, items, progress, result, time. The columns shrink
/// with the window; the name of the task takes what is left.
class JobTable : public QTableView {
    Q_OBJECT
public:
    static constexpr int kRowHeight = 36;
    static constexpr int kHeaderHeight = 30;

    JobTable(ActivityModel& model, JobFilter& filter, QWidget* parent = nullptr);

    /// 0 when none is chosen.
    [[nodiscard]] int chosenJob() const;
    /// Chooses nothing when the job is not among the rows.
    void chooseJob(int job);
    [[nodiscard]] int hoveredRow() const { return m_hoveredRow; }
    /// Repaints what moves; without spinning when things are to stand still.
    [[nodiscard]] bool isTurning() const { return m_turnTimer.isActive(); }
    [[nodiscard]] bool spins() const { return m_spins; }
    /// Starts or stops the spinners according to what is running and seen.
    void refreshTurning();

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
    void turn();
    void updateRow(int row, int column = -1);

    ActivityModel& m_model;
    QTimer m_turnTimer;
    int m_hoveredRow = -1;
    int m_turns = 0;
    bool m_spins = false;
};

} // namespace clipheave::app
