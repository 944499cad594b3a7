// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/commands/log_feed.h"

#include "app/activity/activity_model.h"
#include "app/jobs/job_board.h"

namespace clipheave::app {

LogFeed::LogFeed(ActivityModel& activity, const JobBoard& board)
    : m_activity(activity), m_board(board),
      m_lines(platform::LogLevel::Info, [this](const platform::LogLine& line) {
          QMetaObject::invokeMethod(
              this, [this, line] { take(line); }, Qt::QueuedConnection);
      }) {
}

void LogFeed::take(const platform::LogLine& line) {
    m_activity.addLog(line.text, line.path, line.level >= platform::LogLevel::Warning,
                      m_board.jobOfFile(line.path));
}

} // namespace clipheave::app
