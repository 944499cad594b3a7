// SPDX-License-Identifier: GPL-3.0-or-later
#include "photo/photo_edits.h"

#include "jobs/write_job.h"
#include "photo/messages.h"
#include "photo/photo_rewrite.h"
#include "photo/photo_texts.h"
#include "platform/foundation/paths.h"
#include "platform/image/write/photo_writer.h"

#include <QFileInfo>

#include <sys/stat.h>

namespace clipheave::photo {

namespace {

using platform::Message;

QVariantMap without(std::initializer_list<const char*> blocks) {
    QVariantMap properties;
    for (const char* block : blocks)
        properties.insert(QLatin1String(block), QVariant());
    return properties;
}

/// Returns the prefix that differs from this one in its case alone; empty for none.
QLatin1String twinOf(QLatin1String prefix) {
    if (prefix == u"noExif_")
        return QLatin1String("NoExif_");
    return prefix == u"NoExif_" ? QLatin1String("noExif_") : QLatin1String();
}

/// Returns a note when another output would be replaced because the disk takes both names for one.
platform::Notes noteOnSameName(const QString& output, const QString& other) {
    struct stat own {
    }, others{};
    const bool isOther = output != other &&
                         ::stat(platform::nativePath(output).constData(), &own) == 0 &&
                         ::stat(platform::nativePath(other).constData(), &others) == 0 &&
                         own.st_dev == others.st_dev && own.st_ino == others.st_ino;
    return isOther ? platform::Notes{Message(kSameNameHere, {platform::lastPathComponent(other)})}
                   : platform::Notes{};
}

} // namespace

void PhotoEdits::RemoveIPTCDataFromPhoto(const PhotoRequest& request) {
    rewriteAll(request, {"NoIPTC_", without({"{IPTC}"})});
}

void PhotoEdits::RemoveExifDataFromPhoto(const PhotoRequest& request) {
    rewriteAll(request, {"NoExif_", without({"{Exif}"})});
}

void PhotoEdits::RemoveGPSDataFromPhoto(const PhotoRequest& request) {
    rewriteAll(request, {"NoGPS_", without({"{GPS}"})});
}

void PhotoEdits::DeleteExifAndGPSData(const PhotoRequest& request) {
    rewriteAll(request, {"NoExifAndGPS_", without({"{Exif}", "{GPS}"})});
}

void PhotoEdits::DeleteAllPhotoMetadataData(const PhotoRequest& request) {
    rewriteAll(request, {"NoExifAndGPS_", platform::everyDictionaryRemoved()});
}

void PhotoEdits::ChangeGPSExifDataPhoto(const PhotoRequest& request, const PlaceTexts& place) {
    QVariantMap properties = without({"{Exif}"});
    properties.insert(QStringLiteral("{GPS}"), positionProperties(place));
    rewriteAll(request, {"noExif_", properties});
}

void PhotoEdits::ClickSaveChangeGPSAction(const PhotoRequest& request, const PlaceTexts& place) {
    rewriteAll(request, {"", {{QStringLiteral("{GPS}"), gpsProperties(place, true)}}});
}

void PhotoEdits::ClickApplyChangeAction(const PhotoRequest& request, const PaneTexts& pane) {
    const auto fault = paneFault(pane);
    if (!fault)
        return rewriteAll(request, {"", paneProperties(pane),
                                    pane.basicInfoChange ? pane.keywordslab : QString()});
    for (const auto& item : request.items)
        m_run.ticket(item->filePath).report(jobs::refusal(item->filePath, *fault));
}

void PhotoEdits::rewriteAll(const PhotoRequest& request, const Edit& edit) {
    for (const auto& item : request.items)
        if (isPhotoOrSkip(m_run, item))
            rewrite(item, request, edit);
}

void PhotoEdits::rewrite(const media::ItemPointer& item, const PhotoRequest& request,
                         const Edit& edit) {
    const QString& source = item->filePath;
    const QString name = platform::lastPathComponent(source);
    const QString folder = request.settings.storagelocation + u'/';
    m_run.paths().protect({source});
    const QString output = m_run.paths().claim(folder + QLatin1String(edit.prefix) + name);
    auto job = jobs::beginJob(m_run.ticket(source), source, output);
    if (!job)
        return;
    job->copiesOnFailure = false;
    if (const QLatin1String twin = twinOf(QLatin1String(edit.prefix)); !twin.isEmpty())
        job->notes += noteOnSameName(output, folder + twin + name);
    startRewrite(*job, [edit, source] {
        return edit.keywords.isNull() ? edit.properties
                                      : withoutOwnKeywords(edit.properties, edit.keywords, source);
    });
}

} // namespace clipheave::photo
