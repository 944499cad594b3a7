// SPDX-License-Identifier: GPL-3.0-or-later
#include "jobs/output_paths.h"

#include "platform/foundation/creation_date.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/paths.h"

namespace clipheave::jobs {

namespace {

using namespace platform;

/// The path without components that lead upwards or nowhere.
QString withoutWaysOut(const QString& path) {
    QStringList kept;
    for (const QString& component : path.split(u'/', Qt::SkipEmptyParts))
        if (component != u"." && component != u"..")
            kept.append(component);
    return kept.join(u'/');
}

/// Below the storage folder, with the file's name; the name alone without an imported folder.
QString relativePath(const WriteRequest& request) {
    if (!request.settings.bImportLocalFolder)
        return request.item->fileName;
    QString path = request.item->filePath;
    // Of the root nothing is taken out: that would leave one long name without folders.
    if (!request.settings.bImportLocalPath.isEmpty() && request.settings.bImportLocalPath != u"/")
        path.remove(request.settings.bImportLocalPath);
    return withoutWaysOut(path);
}

} // namespace

QString flatOutputPath(const WriteRequest& request) {
    return appendingPathComponent(request.settings.storagelocation, request.item->fileName);
}

QString mirroredOutputPath(const WriteRequest& request) {
    return appendingPathComponent(request.settings.storagelocation, relativePath(request));
}

QString titledOutputPath(const WriteRequest& request) {
    const QString& title = request.item->fileTitle;
    // The last component gets an extension: ".." becomes the name "...mov".
    if (title.section(u'/', 0, -2).split(u'/').contains(u".."))
        return {};
    const QString folder = deletingLastPathComponent(mirroredOutputPath(request));
    return folder + u'/' + title + u'.' + pathExtension(request.item->fileName);
}

void OutputPaths::protect(const QStringList& sources) {
    const std::lock_guard lock(m_mutex);
    for (const QString& source : sources) {
        if (m_protectedPaths.contains(source))
            continue;
        m_protectedPaths.insert(source);
        if (const auto found = NSFileManager::defaultManager().attributesOfItemAtPath(source))
            m_protected.insert({found->device, found->inode});
    }
}

bool OutputPaths::isProtected(const QString& path) const {
    const std::lock_guard lock(m_mutex);
    return leadsToSource(path);
}

bool OutputPaths::leadsToSource(const QString& path) const {
    const auto found = NSFileManager::defaultManager().attributesOfItemAtPath(path);
    return found && m_protected.contains({found->device, found->inode});
}

bool OutputPaths::mayStandAt(const QString& numbered) const {
    if (leadsToSource(numbered))
        return false;
    const auto& files = NSFileManager::defaultManager();
    return !files.fileExistsAtPath(numbered) ||
           bearsOwnCreationDate(FileReference::ofPath(numbered));
}

QString OutputPaths::claim(const QString& wanted) {
    const std::lock_guard lock(m_mutex);
    QString path = wanted;
    if (m_taken.contains(path) || leadsToSource(path)) {
        // From the last number on, since a camera's names come back in every folder.
        int& steps = m_steps[wanted];
        do
            path = numberedName(wanted, 1 + ++steps);
        while (m_taken.contains(path) || !mayStandAt(path));
    }
    m_taken.insert(path);
    return path;
}

QString OutputPaths::claimShared(const QString& wanted) const {
    const std::lock_guard lock(m_mutex);
    if (!leadsToSource(wanted))
        return wanted;
    int number = 2;
    while (!mayStandAt(numberedName(wanted, number)))
        ++number;
    return numberedName(wanted, number);
}

bool OutputPaths::claimExactly(const QString& path) {
    const std::lock_guard lock(m_mutex);
    if (m_taken.contains(path))
        return false;
    m_taken.insert(path);
    return true;
}

} // namespace clipheave::jobs
