// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/activity/activity_model.h"

#include <QAbstractListModel>
#include <QListView>

#include <functional>

namespace clipheave::app {

/// The lines of a log that grows at its end and loses its oldest ones.
class LogLines : public QAbstractListModel {
    Q_OBJECT
public:
    enum Role { TimeRole = Qt::UserRole, PathRole, ErrorRole };
    /// Returns null when the log is gone.
    using Source = std::function<const std::deque<ActivityLogLine>*()>;

    explicit LogLines(Source source, QObject* parent = nullptr);
    /// Takes over what changed: `total` lines were ever added to the log that `id` names.
    void refresh(qint64 total, int id);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;

private:
    [[nodiscard]] int available() const;

    Source m_source;
    int m_id = -1;
    int m_rows = 0;
    qint64 m_total = 0;
};

/// Log lines with their times in the fixed-pitch font, the newest at the end. Follows the end
/// unless the user has scrolled away from it; Ctrl+C copies the selected lines.
class LogView : public QListView {
    Q_OBJECT
public:
    explicit LogView(LogLines::Source source, QWidget* parent = nullptr);
    void refresh(qint64 total, int id);
    /// Time, text and path of the rows, one line each.
    [[nodiscard]] QString textOf(const QModelIndexList& rows) const;

Q_SIGNALS:
    void copyRequested(const QString& text); ///< text of the selected rows

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    LogLines* m_lines;
};

} // namespace clipheave::app
