// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/isobmff/read/isobmff_reader.h"
#include "platform/isobmff/write/isobmff_writer.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cstdlib>

using namespace clipheave::platform;

// The last byte chooses container, list and layout; the rest is the source. A target that was
// written must be written again from itself.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2 || size > (1u << 20))
        return 0;
    static const QTemporaryDir folder(QStringLiteral("/dev/shm/writer-fuzz-XXXXXX"));
    const QString source = folder.filePath(QStringLiteral("source")),
                  target = folder.filePath(QStringLiteral("target"));
    QFile file(source);
    if (!file.open(QIODevice::WriteOnly))
        return 0;
    const void* bytes = data;
    file.write(static_cast<const char*>(bytes), static_cast<qint64>(size - 1));
    file.close();
    const unsigned choice = data[size - 1];
    PassthroughRequest request;
    request.source = source;
    request.target = target;
    request.container = static_cast<OutputContainer>(choice & 3);
    request.moovFirst = (choice & 4) != 0;
    if ((choice & 8) != 0) {
        QList<AVMetadataItem> items{AVMetadataItem::make(
            QStringLiteral("itsk"), QStringLiteral("title"), QStringLiteral("itsk/%A9nam"),
            QString(static_cast<qsizetype>(choice >> 4) * 400, u'x'))};
        if (auto reader = FileReader::open(source)) {
            if (const auto facts = readIsobmff(*reader))
                items += facts->metadata;
        }
        request.metadata = items;
    } else if ((choice & 16) != 0) {
        request.metadata = QList<AVMetadataItem>();
        request.removesMetadata = (choice & 32) != 0;
    }
    QFile::remove(target);
    const bool written = writePassthrough(request).has_value();
    if (QDir(folder.path()).entryList(QDir::Files | QDir::Hidden).size() != (written ? 2 : 1))
        std::abort();
    if (!written)
        return 0;
    request.source = target;
    request.target = source;
    request.metadata.reset();
    if (!writePassthrough(request))
        std::abort();
    return 0;
}
