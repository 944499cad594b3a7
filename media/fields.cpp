// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/fields.h"

#include "media/shown_text.h"

namespace clipheave::media {

namespace {

const Field* fieldCalled(const QString& name) {
    for (const Field& field : kFields)
        if (name == QLatin1String(field.names.plain) || name == QLatin1String(field.names.record))
            return &field;
    return nullptr;
}

} // namespace

const Field* videoField(const QString& name) {
    const Field* field = fieldCalled(name);
    return field && field->video.text ? field : nullptr;
}

const Field* audioField(const QString& name) {
    const Field* field = fieldCalled(name);
    return field && field->audio.text ? field : nullptr;
}

void typeIntoField(VideoPane& pane, const Field& field, const QString& text) {
    pane.texts.*field.video.text = shownText(text);
    if (field.video.group)
        pane.flags.*field.video.group = true;
}

} // namespace clipheave::media
