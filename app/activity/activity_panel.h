// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <QTimer>
#include <QVariantAnimation>
#include <QWidget>

class QStackedWidget;

namespace clipheave::app {

class ActivityModel;
class Button;
class JobDetails;
class JobFilter;
class JobTable;
class LogView;
class Segment;

/// The part of the window below the activity bar: the jobs at the left, the files and log lines of
/// the chosen one at the right. Closed at first; opens by itself once on the first failure of a job
/// and never takes the focus.
class ActivityPanel : public QWidget {
    Q_OBJECT
public:
    static constexpr int kHeight = 252;
    static constexpr int kSlideTime = 140; ///< ms
    enum Show { All, Running, Failed, Log };

    explicit ActivityPanel(ActivityModel& model, QWidget* parent = nullptr);

    [[nodiscard]] bool isOpen() const { return m_open; }
    void setOpen(bool open);
    void toggle() { setOpen(!m_open); }
    /// Returns the chosen part of the segment.
    [[nodiscard]] Show shown() const;
    void show(Show what);
    using QWidget::show;
    /// Returns the job whose files are shown, 0 when none is chosen.
    [[nodiscard]] int chosenJob() const;
    void chooseJob(int job);

Q_SIGNALS:
    void openChanged(bool open);
    /// The user wants to see these in the file manager.
    void revealRequested(const QStringList& paths);
    void copyRequested(const QString& text); ///< lines of a log

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QWidget* makeJobs();
    void connectModel();
    void slideTo(int height);
    void openOnFailure(int job);
    void refreshSoon();
    void refresh();
    void refreshCounts();

    ActivityModel& m_model;
    JobFilter* m_filter = nullptr;
    QWidget* m_body = nullptr; ///< of full height while the panel slides
    Segment* m_segment = nullptr;
    Button* m_clear = nullptr;
    QStackedWidget* m_stack = nullptr; ///< table | log
    JobTable* m_table = nullptr;
    LogView* m_log = nullptr;
    JobDetails* m_details = nullptr;
    QVariantAnimation m_slide;
    QTimer m_refreshTimer;
    bool m_open = false;
};

} // namespace clipheave::app
