// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/commands/preferences_state.h"
#include "photo/stamp_order.h"

namespace clipheave::app {

void AppDelegate::AddDateOnPhotoAction() {
    const auto items = selectedItems();
    if (items.empty())
        return showNoSelectionAlert();
    const media::Preferences& values = m_preferences->values;
    const photo::StampStyle style{values.position, values.dateFormat, values.currentFontname,
                                  values.currentFontSize, m_preferences->currentFontColor};
    startWriting(tr("Add date on photos"), photo::stampOrder({items, style, runSettings()}));
}

} // namespace clipheave::app
