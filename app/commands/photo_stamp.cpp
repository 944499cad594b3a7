// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/commands/preferences_state.h"
#include "app/commands/surroundings.h"
#include "app/commands/write_report.h"
#include "app/jobs/job_board.h"
#include "photo/stamp_order.h"

namespace clipheave::app {

void AppDelegate::AddDateOnPhotoAction() {
    const auto items = selectedItems();
    if (items.empty())
        return showNoSelectionAlert();
    const media::Preferences& values = m_preferences->values;
    const photo::StampStyle style{values.position, values.dateFormat, values.currentFontname,
                                  values.currentFontSize, m_preferences->currentFontColor};
    BoardJob job;
    job.title = tr("Add date on photos");
    job.order = photo::stampOrder({items, style, runSettings()});
    WriteReport{*m_activity, *m_surroundings->workspace, [this] { Q_EMIT saveFinished(); }}
        .attachTo(job);
    m_board->start(job);
}

} // namespace clipheave::app
