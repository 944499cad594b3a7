// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

namespace clipheave::app {

class ElidedLabel;
class Segment;
class SummaryLabel;

/// The band above the list: choice of the view, summary of the selection, add and remove. Where it
/// is too narrow for the summary and the warning about the order, the summary is hidden.
class ListHead : public QWidget {
    Q_OBJECT
public:
    explicit ListHead(QWidget* parent);

    [[nodiscard]] Segment* views() const { return m_views; }
    void setSummary(const QString& summary, bool sorted);

Q_SIGNALS:
    void addRequested();
    void removeRequested();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void fit();

    Segment* m_views;
    SummaryLabel* m_summary;
    ElidedLabel* m_sortedNote;
};

} // namespace clipheave::app
