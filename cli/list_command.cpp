// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/commands.h"
#include "cli/item_json.h"
#include "platform/foundation/paths.h"

#include <algorithm>
#include <array>

namespace clipheave::cli {

namespace {

using media::IKImageItem;
using media::MediaImport;

struct Column {
    const char16_t* header;
    QString IKImageItem::*field;
    bool rightAligned;
};
constexpr std::array<Column, 7> kColumns{{
    {u"Media Name", &IKImageItem::fileName, false},
    {u"Media Size", &IKImageItem::fileSize, true},
    {u"Media Length", &IKImageItem::fileduratStr, true},
    {u"Media Kind", &IKImageItem::fileType, false},
    {u"Media Artist", &IKImageItem::fileArist, false},
    {u"Media Album", &IKImageItem::fileAblumName, false},
    {u"Media Created Date", &IKImageItem::fileCreateDateStr, false},
}};

/// One line, whatever a tag holds; a terminal must not be steered by a file's texts.
QString cellText(const QString& text) {
    QString cell = platform::displayPath(text).left(200);
    for (QChar& c : cell)
        if (c.category() == QChar::Other_Control)
            c = u' ';
    return cell;
}

QByteArray table(const std::vector<media::ItemPointer>& items) {
    std::array<qsizetype, kColumns.size()> widths{};
    for (std::size_t i = 0; i < kColumns.size(); ++i) {
        widths[i] = QStringView(kColumns[i].header).size();
        for (const auto& item : items)
            widths[i] = std::max(widths[i], cellText((*item).*kColumns[i].field).size());
    }
    QByteArray out;
    const auto addRow = [&](const auto& cellOf) {
        QString line;
        for (std::size_t i = 0; i < kColumns.size(); ++i) {
            const QString cell = cellOf(kColumns[i]);
            line += kColumns[i].rightAligned ? cell.rightJustified(widths[i])
                                             : cell.leftJustified(widths[i]);
            line += u"  ";
        }
        while (line.endsWith(u' '))
            line.chop(1);
        out += line.toUtf8() + '\n';
    };
    addRow([](const Column& column) { return QString::fromUtf16(column.header); });
    for (const auto& item : items)
        addRow([&item](const Column& column) { return cellText((*item).*column.field); });
    return out;
}

QByteArray document(const MediaImport& import, bool withMetadata) {
    JsonWriter json;
    json.beginArray();
    for (const auto& item : import.localPhotoItemArray())
        writeItem(json, *item, withMetadata);
    for (const media::SkippedPath& skipped : import.skipped())
        writeSkipped(json, skipped);
    json.endArray();
    return json.take();
}

bool anyTrouble(const MediaImport& import) {
    const auto& items = import.localPhotoItemArray();
    return !import.skipped().empty() ||
           std::any_of(items.begin(), items.end(),
                       [](const auto& item) { return !item->problem.isEmpty(); });
}

} // namespace

int runList(const GlobalOptions& global, const ListOptions& options, Console& console) {
    int count = 0;
    MediaImport import(
        [&](const media::ItemPointer&) { console.progress(QStringLiteral("read"), ++count, 0); });
    import.setStopRequested(&isInterrupted);
    if (options.photos)
        import.importPhotos(options.paths);
    else
        import.importMediaItemsThreader(options.paths);
    console.clearProgress();
    if (isInterrupted())
        return interruption();
    if (import.localPhotoItemArray().empty() && import.skipped().empty())
        return reportNothingToDo();
    const bool written = printOut(global.json ? document(import, options.metadata)
                                              : table(import.localPhotoItemArray()));
    return written && !anyTrouble(import) ? kAllDone : kSomeFailed;
}

} // namespace clipheave::cli
