// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/json_writer.h"

#include "platform/foundation/text.h"

#include <cmath>
#include <utility>

namespace clipheave::cli {

namespace {

constexpr char kHex[] = "0123456789abcdef";

void appendEscaped(QByteArray& out, char16_t unit) {
    out += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4)
        out += kHex[(unit >> shift) & 0xF];
}

void appendUtf8(QByteArray& out, char32_t c) {
    const auto tail = [&out](char32_t bits) { out += static_cast<char>(0x80 | (bits & 0x3F)); };
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        tail(c);
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        tail(c >> 6);
        tail(c);
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        tail(c >> 12);
        tail(c >> 6);
        tail(c);
    }
}

} // namespace

void JsonWriter::separate() {
    if (m_needsComma)
        m_out += ',';
    m_needsComma = true;
}

JsonWriter& JsonWriter::beginObject() {
    separate();
    m_out += '{';
    m_needsComma = false;
    return *this;
}

JsonWriter& JsonWriter::endObject() {
    m_out += '}';
    m_needsComma = true;
    return *this;
}

JsonWriter& JsonWriter::beginArray() {
    separate();
    m_out += '[';
    m_needsComma = false;
    return *this;
}

JsonWriter& JsonWriter::endArray() {
    m_out += ']';
    m_needsComma = true;
    return *this;
}

JsonWriter& JsonWriter::key(const char* name) {
    separate();
    m_out += '"';
    m_out += name;
    m_out += "\":";
    m_needsComma = false;
    return *this;
}

JsonWriter& JsonWriter::string(QStringView text) {
    separate();
    appendString(text);
    return *this;
}

void JsonWriter::appendString(QStringView text) {
    m_out += '"';
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c == u'"' || c == u'\\') {
            m_out += '\\';
            m_out += static_cast<char>(c.unicode());
        } else if (c.unicode() < 0x20 || c.unicode() == 0x7F) {
            appendEscaped(m_out, c.unicode());
        } else if (c.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            appendUtf8(m_out, QChar::surrogateToUcs4(c, text[++i]));
        } else if (c.isSurrogate()) {
            appendEscaped(m_out, c.unicode());
        } else {
            appendUtf8(m_out, c.unicode());
        }
    }
    m_out += '"';
}

JsonWriter& JsonWriter::number(double value) {
    separate();
    m_out += std::isfinite(value) ? platform::plainDecimals(value).toLatin1() : QByteArray("null");
    return *this;
}

JsonWriter& JsonWriter::integer(std::int64_t value) {
    separate();
    m_out += QByteArray::number(static_cast<qlonglong>(value));
    return *this;
}

JsonWriter& JsonWriter::member(const char* name, const QString& text) {
    return text.isEmpty() ? *this : key(name).string(text);
}

JsonWriter& JsonWriter::member(const char* name, double value) {
    return key(name).number(value);
}

QByteArray JsonWriter::take() {
    m_needsComma = false;
    return takePart() + '\n';
}

QByteArray JsonWriter::takePart() {
    return std::exchange(m_out, {});
}

} // namespace clipheave::cli
