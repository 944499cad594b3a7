// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/item_stream.h"

#include "cli/item_json.h"

namespace clipheave::cli {

namespace {

constexpr qsizetype kWriteSize = 64 << 10; // bytes

} // namespace

void ItemStream::begin() {
    if (!m_begun)
        m_json.beginArray();
    m_begun = true;
}

void ItemStream::add(const media::IKImageItem& item) {
    begin();
    writeItem(m_json, item, m_withMetadata);
    if (m_json.waitingBytes() >= kWriteSize)
        writeOut(m_json.takePart());
}

void ItemStream::add(const media::SkippedPath& skipped) {
    begin();
    writeSkipped(m_json, skipped);
}

bool ItemStream::finish() {
    begin();
    m_json.endArray();
    writeOut(m_json.take());
    return m_written;
}

void ItemStream::writeOut(const QByteArray& bytes) {
    m_console.clearProgress();
    m_written = m_written && printOut(bytes); // a closed pipe is reported once
}

} // namespace clipheave::cli
