// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/activity/activity_model.h"

#include <QTextEdit>

namespace clipheave::app {

/// Log lines with their times, the newest at the end; text can be selected and copied. Follows the
/// end unless the user has scrolled away from it.
class LogView : public QTextEdit {
    Q_OBJECT
public:
    explicit LogView(QWidget* parent = nullptr);

    /// Shows `lines`, of which `total` were ever added; `source` tells whose they are. Only what is
    /// new is written as long as the source stays.
    void showLines(const std::deque<ActivityLogLine>& lines, qint64 total, int source);

private:
    void restyle();
    void write(const ActivityLogLine& line);

    int m_source = -1;
    qint64 m_written = 0;
};

} // namespace clipheave::app
