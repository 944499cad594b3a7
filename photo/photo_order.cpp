// SPDX-License-Identifier: GPL-3.0-or-later
#include "photo/photo_order.h"

#include "media/media_kind.h"
#include "photo/messages.h"

#include <utility>

namespace clipheave::photo {

jobs::RunOrder photoOrder(PhotoWorker worker, PhotoRequest request, bool isWhole) {
    jobs::RunOrder order;
    for (const auto& item : request.items)
        order.sources.append(item->filePath);
    order.isWhole = isWhole;
    order.work = [worker = std::move(worker), request = std::move(request)](jobs::Run& run,
                                                                            const auto& items) {
        PhotoRequest part{{}, request.settings};
        for (const std::size_t item : items)
            part.items.push_back(request.items[item]);
        worker(run, part);
    };
    return order;
}

bool isPhotoOrSkip(jobs::Run& run, const media::ItemPointer& item) {
    const QString& path = item->filePath;
    if (media::MediaKind::isPhoto(path))
        return true;
    run.ticket(path).report(jobs::refusal(path, kNoPhotoItem, jobs::WriteStatus::Skipped));
    return false;
}

} // namespace clipheave::photo
