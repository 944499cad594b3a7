// SPDX-License-Identifier: GPL-3.0-or-later
#include "photo/date_edits.h"

#include "photo/messages.h"
#include "photo/photo_facts.h"
#include "photo/photo_rewrite.h"
#include "platform/foundation/dates.h"
#include "platform/foundation/paths.h"

namespace clipheave::photo {

using namespace platform;

namespace {

QVariantMap dictionary(const char* name, const QVariantMap& keys) {
    return {{QLatin1String(name), keys}};
}

QVariantMap cameraDate(const QString& text) {
    QVariantMap properties = dictionary("{Exif}", {{QStringLiteral("DateTimeOriginal"), text},
                                                   {QStringLiteral("DateTimeDigitized"), text}});
    properties.insert(dictionary("{TIFF}", {{QStringLiteral("DateTime"), text}}));
    return properties;
}

/// The photo's own dates in the place of texts that are not given.
DateTexts completed(DateTexts texts, const media::IKImageItem& item) {
    if (!texts.orignalDatelab.isNull() && !texts.diginalDatelab.isNull())
        return texts;
    const auto own = photoDates(item);
    if (own && texts.orignalDatelab.isNull())
        texts.orignalDatelab = own->taken;
    if (own && texts.diginalDatelab.isNull())
        texts.diginalDatelab = own->digitised.isEmpty() ? own->taken : own->digitised;
    return texts;
}

} // namespace

bool isUsable(const DateTexts& texts) {
    return parseDateText(texts.diginalDatelab).has_value();
}

std::optional<jobs::WriteJob> PhotoDateEdits::begin(const media::ItemPointer& item,
                                                    const jobs::RunSettings& settings) {
    if (!isPhotoOrSkip(m_run, item))
        return std::nullopt;
    const QString& source = item->filePath;
    m_run.paths().protect({source});
    const QString output = settings.storagelocation + u'/' + lastPathComponent(source);
    return jobs::beginJob(m_run.ticket(source), source, m_run.paths().claim(output));
}

void PhotoDateEdits::ClickCopyFileNameToCommentsAction(const PhotoRequest& request) {
    for (const auto& item : request.items) {
        const QString name = deletingPathExtension(lastPathComponent(item->filePath));
        if (const auto job = begin(item, request.settings))
            startRewrite(*job, dictionary("{Exif}", {{QStringLiteral("UserComment"), name}}));
    }
}

void PhotoDateEdits::ClickDateChangedSaveAction(const PhotoRequest& request,
                                                const DateTexts& texts) {
    for (const auto& item : request.items) {
        const DateTexts own = completed(texts, *item);
        const auto digitised = parseDateText(own.diginalDatelab);
        if (!digitised && isPhotoOrSkip(m_run, item))
            m_run.ticket(item->filePath).report(jobs::refusal(item->filePath, kPhotoHasNoDate));
        if (!digitised)
            continue;
        auto job = begin(item, request.settings);
        if (!job)
            continue;
        if (const auto taken = parseDateText(own.orignalDatelab))
            job->dates = {taken, taken};
        startRewrite(*job, cameraDate(formatDate(*digitised, DatePattern::Colon)));
    }
}

void PhotoDateEdits::writeCameraDate(const media::ItemPointer& item,
                                     const jobs::RunSettings& settings, const QString& date) {
    auto job = begin(item, settings);
    if (!job)
        return;
    job->copiesOnFailure = false;
    startRewrite(*job, cameraDate(date));
}

} // namespace clipheave::photo
