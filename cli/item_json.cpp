// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/item_json.h"

#include "media/fields.h"
#include "media/item_texts.h"
#include "platform/foundation/dates.h"
#include "platform/foundation/text.h"

#include <QCryptographicHash>

namespace clipheave::cli {

namespace {

using media::IKImageItem;
using platform::AVMetadataItem;

void writePosition(JsonWriter& json, const char* name, const QString& sign, double value) {
    if (!sign.isEmpty())
        json.member(name, sign == u"-" && value != 0 ? -value : value);
}

void writeTechnicalFacts(JsonWriter& json, const IKImageItem& item) {
    json.member("recorded", item.shootDateStr);
    if (item.fileduration > 0)
        json.member("durationSeconds", item.fileduration);
    json.member("durationText", item.fileduratStr);
    if (item.filePixWidth > 0 && item.filepixHeigh > 0) {
        json.key("width").integer(item.filePixWidth);
        json.key("height").integer(item.filepixHeigh);
    }
    if (item.audioBitRate > 0)
        json.member("bitRate", item.audioBitRate);
    if (item.audioSampleRate > 0)
        json.member("sampleRate", item.audioSampleRate);
    if (!item.fileChannels.isEmpty())
        json.key("channels").integer(platform::intValue(item.fileChannels));
}

void writeArtwork(JsonWriter& json, const platform::EncodedImage& image) {
    if (image.isNull())
        return;
    json.key("artwork").beginObject();
    json.key("bytes").integer(static_cast<std::int64_t>(image.byteCount()));
    json.key("width").integer(image.size().width());
    json.key("height").integer(image.size().height());
    json.endObject();
}

void writeValue(JsonWriter& json, const AVMetadataItem& item) {
    if (const auto* text = std::get_if<QString>(&item.value)) {
        json.string(*text);
    } else if (const auto* number = std::get_if<double>(&item.value)) {
        json.number(*number);
    } else {
        const QByteArray bytes = item.dataValue();
        const QByteArray hash = QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
        json.beginObject();
        json.key("bytes").integer(bytes.size());
        json.key("sha256").string(QString::fromLatin1(hash.toHex()));
        json.endObject();
    }
}

void writeMetadata(JsonWriter& json, const QList<AVMetadataItem>& metadata) {
    json.key("metadata").beginArray();
    for (const AVMetadataItem& item : metadata) {
        json.beginObject();
        json.key("keySpace").string(item.keySpace);
        json.key("key").string(item.key);
        json.key("identifier").string(item.identifier);
        json.key("value");
        writeValue(json, item);
        json.member("dataType", item.dataType);
        json.member("language", item.extendedLanguageTag);
        json.endObject();
    }
    json.endArray();
}

} // namespace

void writeItem(JsonWriter& json, const IKImageItem& item, bool withMetadata) {
    json.beginObject();
    json.key("path").string(item.filePath);
    json.key("name").string(item.fileName);
    json.member("kind", item.fileType);
    if (!item.fileSize.isEmpty())
        json.key("sizeBytes").integer(static_cast<std::int64_t>(item.sizeBytes));
    json.member("sizeText", item.fileSize);
    json.member("created", item.fileCreateDateStr);
    json.member("modified",
                platform::formatDate(item.modificationDate, platform::DatePattern::Colon));
    writeTechnicalFacts(json, item);
    for (const media::Field& field : media::kFields)
        if (isTag(field))
            json.member(field.names.plain, item.*field.record);
    writePosition(json, "latitude", item.latitudeFormat, item.filelatitude);
    if (hasLongitude(item))
        writePosition(json, "longitude", item.longtitudeFormat, item.filelongtitude);
    writePosition(json, "altitude", item.AtitudeFormat, item.fileAtitude);
    writeArtwork(json, item.fileImage);
    json.member("message", item.problem.text());
    if (withMetadata)
        writeMetadata(json, item.fileMetaArray);
    json.endObject();
}

void writeSkipped(JsonWriter& json, const media::SkippedPath& skipped) {
    json.beginObject();
    json.key("path").string(skipped.path);
    json.key("status").string(u"skipped");
    json.key("message").string(skipped.reason.text());
    json.endObject();
}

const char* statusName(jobs::WriteStatus status) {
    switch (status) {
    case jobs::WriteStatus::Completed:
        return "completed";
    case jobs::WriteStatus::Failed:
        return "failed";
    case jobs::WriteStatus::Cancelled:
        return "cancelled";
    case jobs::WriteStatus::Skipped:
        break;
    }
    return "skipped";
}

void writeOutcomes(JsonWriter& json, const std::vector<jobs::WriteOutcome>& outcomes) {
    json.beginObject().key("items").beginArray();
    for (const jobs::WriteOutcome& outcome : outcomes) {
        json.beginObject();
        json.key("source").string(outcome.source);
        json.key("outputs").beginArray();
        for (const QString& output : outcome.outputs)
            json.string(output);
        json.endArray();
        json.key("status").string(QString::fromLatin1(statusName(outcome.status)));
        json.key("message").string(outcome.text());
        json.member("seconds", outcome.seconds);
        json.endObject();
    }
    json.endArray().endObject();
}

} // namespace clipheave::cli
