// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/foundation/log.h"

#include <QObject>

namespace clipheave::app {

class ActivityModel;
class JobBoard;

/// Takes the log lines of all layers and threads into the activity log; a line about a file that is
/// being written goes to the log of that job. Belongs to the main thread.
class LogFeed : public QObject {
    Q_OBJECT
public:
    LogFeed(ActivityModel& activity, const JobBoard& board);

private:
    void take(const platform::LogLine& line);

    ActivityModel& m_activity;
    const JobBoard& m_board;
    platform::LogSubscription m_lines;
};

} // namespace clipheave::app
