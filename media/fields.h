// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "media/field_rows.h"
#include "platform/media/model/field_identifiers.h"

#include <algorithm>
#include <iterator>
#include <string_view>

// The tables about fields, made from the rows.
namespace clipheave::media {

inline constexpr const auto& kFields = field_rows::kRows;

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

/// Returns true for a field whose new value replaces whatever the file holds of it: one that files
/// hold under other identifiers too, or that is written under a key of its own in each container.
[[nodiscard]] constexpr bool isReplacedAsAWhole(const Field& field) {
    // By its text: with the sanitizers an address is not a constant.
    const bool isTranslated =
        isWrittenToVideos(field) && std::u16string_view(field.written.keySpace) != kKeySpaceITunes;
    return field.replacesOlder || isTranslated || field.alsoUnder[0] != nullptr;
}

namespace detail {
/// Calls `take` with each identifier of a field that is replaced as a whole, and its number.
template <class Take> constexpr void forFieldIdentifiers(Take take) {
    int number = 0;
    for (const Field& field : kFields) {
        ++number;
        if (!isReplacedAsAWhole(field))
            continue;
        for (const ReadIdentifier& read : field.read)
            if (read.identifier != nullptr && !read.standsIn)
                take(platform::FieldIdentifier{read.identifier, number});
        if (isWrittenToVideos(field))
            take(platform::FieldIdentifier{field.written.identifier, number});
        for (const char* identifier : field.alsoUnder)
            if (identifier != nullptr)
                take(platform::FieldIdentifier{identifier, number});
    }
}
consteval std::size_t countFieldIdentifiers() {
    std::size_t count = 0;
    forFieldIdentifiers([&count](const platform::FieldIdentifier&) { ++count; });
    return count;
}
} // namespace detail

/// What the writer of movie files needs to know of the fields.
inline constexpr auto kFieldIdentifiers = [] {
    std::array<platform::FieldIdentifier, detail::countFieldIdentifiers()> identifiers{};
    auto next = identifiers.begin();
    detail::forFieldIdentifiers([&](const platform::FieldIdentifier& one) { *next++ = one; });
    return identifiers;
}();

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
