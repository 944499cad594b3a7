// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/field_rows.h"

#include <algorithm>
#include <iterator>
#include <string_view>

// The tables about fields, made from the rows.
namespace clipheave::media {

/// Returns the field of this name of the command line; compiles for names in the table alone.
[[nodiscard]] consteval const Field& fieldNamed(std::string_view name) {
    for (const Field& field : kFields)
        if (field.names.plain == name)
            return field;
    throw "no such field";
}

// What a field has decides which of the tables below it stands in.
[[nodiscard]] constexpr bool isOnVideoForm(const Field& field) {
    return field.video.objectName != nullptr;
}
[[nodiscard]] constexpr bool isOnAudioPane(const Field& field) {
    return field.audio.text != nullptr;
}
/// Returns true for a text that a file's tags hold, as opposed to its dates and position.
[[nodiscard]] constexpr bool isTag(const Field& field) {
    return field.record != nullptr && field.readAs != ReadAs::Date;
}
[[nodiscard]] constexpr bool isWrittenToVideos(const Field& field) {
    return field.written.identifier != nullptr;
}

/// Returns the part of each field that has it, in the order of the rows.
template <bool (*has)(const Field&), class Part> [[nodiscard]] consteval auto partsOf(Part part) {
    constexpr auto kCount = std::count_if(std::begin(kFields), std::end(kFields), has);
    std::array<decltype(part(kFields[0])), kCount> parts{};
    auto next = parts.begin();
    for (const Field& field : kFields)
        if (has(field))
            *next++ = part(field);
    return parts;
}

/// The fields of the video pane's form, left column then right.
inline constexpr auto kVideoFormFields =
    partsOf<isOnVideoForm>([](const Field& field) { return field.video; });

/// The fields of the audio pane in its order, row by row.
inline constexpr auto kAudioFields = [] {
    auto fields = partsOf<isOnAudioPane>([](const Field& field) { return field.audio; });
    std::sort(fields.begin(), fields.end(),
              [](const AudioField& a, const AudioField& b) { return a.place < b.place; });
    return fields;
}();

/// Returns the field of either name; null when the video pane has no such field.
[[nodiscard]] const Field* videoField(const QString& name);
/// Returns the field of either name; null when the audio pane has no such field.
[[nodiscard]] const Field* audioField(const QString& name);
/// Types `text` into a field of the video pane: sets the text and the flag of its group.
void typeIntoField(VideoPane& pane, const Field& field, const QString& text);

} // namespace clipheave::media
