// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/notification_center.h"

#include <memory>
#include <mutex>
#include <vector>

namespace clipheave::platform {
namespace {

struct Observation {
    const void* observer;
    QString name;
    std::shared_ptr<const NSNotificationCenter::Handler> handler;
};

std::mutex observationsMutex;

std::vector<Observation>& observations() {
    // Never destroyed: detached workers may post until the very end of the process.
    static auto* const list = new std::vector<Observation>;
    return *list;
}

} // namespace

NSNotificationCenter& NSNotificationCenter::defaultCenter() {
    static NSNotificationCenter center;
    return center;
}

void NSNotificationCenter::addObserver_name(const void* observer, const QString& name,
                                            Handler handler) {
    const std::lock_guard lock(observationsMutex);
    observations().push_back({observer, name, std::make_shared<const Handler>(std::move(handler))});
}

void NSNotificationCenter::removeObserver(const void* observer) {
    // Handlers may own what removes further observers when it goes: they end after the lock.
    std::vector<Observation> removed;
    const std::lock_guard lock(observationsMutex);
    std::vector<Observation> kept;
    for (Observation& known : observations())
        (known.observer == observer ? removed : kept).push_back(std::move(known));
    observations() = std::move(kept);
}

void NSNotificationCenter::postNotificationName_object(const QString& name, QObject* object) {
    // Called without the lock: a handler may post, add and remove.
    std::vector<std::shared_ptr<const Handler>> handlers;
    {
        const std::lock_guard lock(observationsMutex);
        for (const Observation& known : observations()) {
            if (known.name == name)
                handlers.push_back(known.handler);
        }
    }
    for (const auto& handler : handlers)
        (*handler)(object);
}

} // namespace clipheave::platform
