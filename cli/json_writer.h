// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QStringView>

#include <cstdint>

namespace clipheave::cli {

/// Writes one JSON document, whole or part by part, keys in the order given. Bytes of a path that
/// are not UTF-8 become "\udcXX" (their escaped form inside the program), so that nothing is lost
/// and the document stays valid; a library's own JSON class would replace them.
class JsonWriter {
public:
    JsonWriter& beginObject();
    JsonWriter& endObject();
    JsonWriter& beginArray();
    JsonWriter& endArray();
    JsonWriter& key(const char* name);
    JsonWriter& string(QStringView text);
    JsonWriter& number(double value); ///< null when it is not finite
    JsonWriter& integer(std::int64_t value);

    /// Writes key and value; the text form writes nothing for a null or empty text.
    JsonWriter& member(const char* name, const QString& text);
    JsonWriter& member(const char* name, double value);

    /// Returns the document, or what of it has not been taken yet, with a line feed behind it; the
    /// next one can begin.
    [[nodiscard]] QByteArray take();
    /// Returns what has been written since the last time; the document goes on.
    [[nodiscard]] QByteArray takePart();
    /// Returns how many bytes wait to be taken.
    [[nodiscard]] qsizetype waitingBytes() const { return m_out.size(); }

private:
    void separate();
    void appendString(QStringView text);

    QByteArray m_out;
    bool m_needsComma = false;
};

} // namespace clipheave::cli
