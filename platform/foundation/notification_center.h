// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

#include <functional>

namespace clipheave::platform {

/// Named notifications from anywhere to anyone; delivery is synchronous, on the posting thread, in
/// the order of registration. Thread-safe.
class NSNotificationCenter {
public:
    using Handler = std::function<void(QObject* object)>;

    static NSNotificationCenter& defaultCenter();

    /// `observer` only identifies the registration for removal; it is never called or dereferenced.
    void addObserver_name(const void* observer, const QString& name, Handler handler);
    void removeObserver(const void* observer);
    /// A handler that is removed while the post runs may still be called by that post.
    void postNotificationName_object(const QString& name, QObject* object);
};

} // namespace clipheave::platform
