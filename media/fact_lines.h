// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/image_item.h"

#include <QList>
#include <QString>

namespace clipheave::media {

/// One line of facts: the fixed text with its blank, and the value (null: the bare label).
struct FactLine {
    QString label;
    QString value;
};
/// Returns the nine facts of the audio pane in their fixed wording.
[[nodiscard]] QList<FactLine> audioFacts(const IKImageItem& item);
/// Returns the eleven facts of the video pane in their fixed wording.
[[nodiscard]] QList<FactLine> videoFacts(const IKImageItem& item);

} // namespace clipheave::media
