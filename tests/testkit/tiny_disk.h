// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/testkit/testkit.h"

#include <QDir>

#include <sys/mount.h>

namespace testkit {

/// A file system in a folder, made where it is missing, of a fixed size if it is a "tmpfs"; gone
/// with the object. A "ramfs" keeps no extended attributes.
class TinyDisk {
public:
    TinyDisk(const QString& folder, const char* size, const char* type = "tmpfs")
        : m_folder(folder.toUtf8()) {
        m_mounted =
            QDir().mkpath(folder) && ::mount(type, m_folder.constData(), type, 0, size) == 0;
    }
    ~TinyDisk() {
        if (m_mounted)
            ::umount2(m_folder.constData(), MNT_DETACH);
    }
    TinyDisk(const TinyDisk&) = delete;
    TinyDisk& operator=(const TinyDisk&) = delete;
    /// False without the right to mount.
    [[nodiscard]] bool isMounted() const { return m_mounted; }
    void makeReadOnly() const {
        EXPECT_EQ(::mount(nullptr, m_folder.constData(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr),
                  0);
    }

private:
    QByteArray m_folder;
    bool m_mounted = false;
};

} // namespace testkit

/// Skips the running test without the right to mount.
#define SKIP_WITHOUT_DISK(disk)                                                                    \
    if (!(disk).isMounted())                                                                       \
    GTEST_SKIP() << "needs the right to mount"
