// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTimer>
#include <QWidget>

namespace clipheave::app {

class ActivityModel;
class BusyIndicator;
class Button;
class Chip;
class ThinProgress;
class ToneLabel;

/// The line at the bottom of the window: what runs and how far it is, how many jobs run, failed and
/// are done, and the total of the list. A click anywhere asks for the panel below it.
class ActivityBar : public QWidget {
    Q_OBJECT
public:
    static constexpr int kHeight = 33; ///< 32 and the separator above

    explicit ActivityBar(ActivityModel& model, QWidget* parent = nullptr);

    /// Shows the total of the list ("19 items, 28.74 GB") at the right end.
    void setListSummary(const QString& summary);
    /// Shows the busy indicator even while no job's worker runs.
    void setBusyVisible(bool visible);
    /// Shows a status text in place of the running job's own until a job begins or ends, for
    /// kMessageTime at most. An empty text ends it.
    void showMessage(const QString& text);
    /// Points the arrow up or down: connect it with ActivityPanel::openChanged.
    void setOpen(bool open);
    void toggle() { Q_EMIT toggled(); }
    [[nodiscard]] QString statusText() const;

    static constexpr int kMessageTime = 8000; ///< ms

Q_SIGNALS:
    /// The user wants the panel opened or closed.
    void toggled();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void build();
    void refreshSoon();
    void refresh();
    void announceEnd(int job);

    ActivityModel& m_model;
    Button* m_arrow;
    BusyIndicator* m_indicator;
    ToneLabel* m_status;
    ThinProgress* m_progress;
    Chip *m_running, *m_failed, *m_done;
    ToneLabel* m_summary;
    QString m_message;
    bool m_busy = false;
    QTimer m_refreshTimer, m_messageTimer;
};

} // namespace clipheave::app
