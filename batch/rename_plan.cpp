// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/rename_plan.h"

#include "batch/messages.h"
#include "batch/rename_template.h"
#include "platform/foundation/dates.h"
#include "platform/foundation/file_manager.h"
#include "platform/foundation/file_system.h"
#include "platform/foundation/paths.h"

#include <QDir>
#include <QHash>
#include <QSet>

#include <memory>
#include <optional>
#include <utility>

namespace clipheave::batch {
namespace {

constexpr qsizetype kLongestFileName = 255; // bytes, on every file system that media lie on

bool isTooLong(const QString& path) {
    const qsizetype start = path.lastIndexOf(u'/') + 1;
    constexpr qsizetype kMostBytesAUnit = 3;
    if ((path.size() - start) * kMostBytesAUnit <= kLongestFileName)
        return false;
    return platform::nativePath(path.sliced(start)).size() > kLongestFileName;
}

/// "%@/%@": the text may lead into another folder.
QString inFolder(const QString& folder, const QString& name) {
    if (folder.isEmpty() || folder.endsWith(u'/'))
        return folder + name;
    return folder + u'/' + name;
}

/// Returns one spelling for each name, for comparing; links are not resolved.
QString comparableName(const QString& path) {
    for (qsizetype i = 1; i < path.size(); ++i)
        if (path[i - 1] == u'/' && (path[i] == u'/' || path[i] == u'.'))
            return QDir::cleanPath(path);
    return path;
}

/// The names on the disk, changed by the moves that are planned already.
class NamesAfterMoves {
public:
    NamesAfterMoves(const RenameSurroundings& surroundings, std::size_t moves)
        : m_surroundings(surroundings) {
        m_changed.reserve(static_cast<qsizetype>(moves) * 2);
    }

    [[nodiscard]] bool isTaken(const QString& path) const {
        const auto changed = m_changed.constFind(comparableName(path));
        return changed != m_changed.cend() ? *changed : m_surroundings.fileExists(path);
    }
    void move(const QString& from, const QString& to) {
        m_changed.insert(comparableName(from), false);
        m_changed.insert(comparableName(to), true);
    }

private:
    const RenameSurroundings& m_surroundings;
    QHash<QString, bool> m_changed; ///< taken or left by a move
};

/// The new name of one item, before the disk is asked whether it is free.
struct NewName {
    QString target, retry; ///< no retry: null
    RenameNote note = RenameNote::None;
};

class Planner {
public:
    Planner(const RenameRequest& request, const RenameSurroundings& surroundings, std::size_t items)
        : m_request(request), m_surroundings(surroundings), m_names(surroundings, items) {}

    RenameMove plan(const media::IKImageItem& item, int number) {
        const QString base = baseName(item, number);
        RenameMove move;
        move.source = item.filePath;
        move.newFileName = base + u'.' + platform::pathExtension(item.filePath);
        const NewName name = nameFor(item, base, number);
        move.target = name.target;
        move.retryTarget = name.retry;
        move.note = name.note;
        if (!isCustom())
            move.storageFolder = m_request.storagelocation;
        settle(move, base.contains(u'/'));
        if (!move.stays)
            m_names.move(move.source, move.target);
        return move;
    }

private:
    [[nodiscard]] bool isCustom() const { return m_request.mode == RenameMode::CustomText; }

    [[nodiscard]] QString baseName(const media::IKImageItem& item, int number) const {
        const bool numbered = isCustom() ? m_request.checkStartNumber : m_request.seqNumBtn;
        const QString name = isCustom() ? m_request.customNamelab
                                        : nameFromTemplate(m_request.filenameFormatstrlab, item,
                                                           m_request.renameDateFormatBtn,
                                                           m_surroundings.creationDateText);
        return numbered ? name + paddedNumber(number) : name;
    }

    [[nodiscard]] NewName nameFor(const media::IKImageItem& item, const QString& base,
                                  int number) const {
        const QString extension = u'.' + platform::pathExtension(item.fileName);
        const QString folder = platform::deletingLastPathComponent(item.filePath);
        NewName name;
        name.target = inFolder(folder, base + extension);
        // Deliberate: the two modes differ. A name that is taken is evaded in the item's own folder
        // with custom text (and the number one higher), into the storage folder with tags.
        const int retryNumber = isCustom() ? number + 1 : number;
        const QString& retryFolder = isCustom() ? folder : m_request.storagelocation;
        const QString retryName = base + u' ' + QString::number(retryNumber) + extension;
        if (isCustom() || !retryFolder.isEmpty())
            name.retry = inFolder(retryFolder, retryName);
        if (base.isEmpty())
            name.note = RenameNote::EmptyName;
        else if (!isCustom() && item.fileTitle.isEmpty() &&
                 m_request.filenameFormatstrlab.contains(QLatin1String("Title")))
            name.note = RenameNote::NoTitle;
        return name;
    }

    /// Decides between the name, the retry name and staying.
    void settle(RenameMove& move, bool mayLeaveFolder) const {
        const auto stay = [&move](RenameNote note) {
            move.stays = true;
            move.note = note;
            move.retryTarget = QString();
        };
        if (!m_names.isTaken(move.source))
            return stay(RenameNote::Missing);
        if (const auto fault = faultOf(move.target, mayLeaveFolder))
            return stay(*fault);
        if (!move.retryTarget.isNull() && faultOf(move.retryTarget, mayLeaveFolder && isCustom()))
            move.retryTarget = QString();
        // Deliberate: a name that stays as it is counts as taken too, by the file itself.
        if (!m_names.isTaken(move.target))
            return;
        if (move.retryTarget.isNull() || m_names.isTaken(move.retryTarget))
            return stay(RenameNote::NameExists);
        move.note = RenameNote::NameExists;
        move.target = std::exchange(move.retryTarget, {});
    }

    /// Why no file can get this name; nothing when it can.
    [[nodiscard]] std::optional<RenameNote> faultOf(const QString& target,
                                                    bool mayLeaveFolder) const {
        if (isTooLong(target))
            return RenameNote::NameTooLong;
        if (target.contains(QChar::Null))
            return RenameNote::NotPossible;
        if (mayLeaveFolder && !m_names.isTaken(platform::deletingLastPathComponent(target)))
            return RenameNote::NoFolder;
        return std::nullopt;
    }

    const RenameRequest& m_request;
    const RenameSurroundings& m_surroundings;
    NamesAfterMoves m_names;
};

/// The names in the folders that were asked about; each folder is read once.
class FolderListings {
public:
    bool isTaken(const QString& path) {
        const qsizetype slash = path.lastIndexOf(u'/');
        // Borrowed: this is asked several times an item.
        const QString name =
            QString::fromRawData(path.constData() + slash + 1, path.size() - slash - 1);
        if (name.isEmpty() || name == u"." || name == u"..")
            return platform::nameIsTaken(platform::nativePath(path));
        const QString folder =
            QString::fromRawData(path.constData(), slash > 0 ? slash : slash + 1);
        const Listing& listing = listingOf(folder);
        // A folder that may be entered but not read.
        if (!listing.isRead)
            return platform::nameIsTaken(platform::nativePath(path));
        return listing.names.contains(name);
    }

private:
    struct Listing {
        QSet<QString> names;
        bool isRead = false;
    };

    const Listing& listingOf(const QString& folder) {
        const auto known = m_listings.constFind(folder);
        if (known != m_listings.cend())
            return *known;
        Listing listing;
        const QString own(folder.constData(), folder.size()); // `folder` is borrowed
        const auto entries = platform::NSFileManager::defaultManager().contentsOfDirectoryAtPath(
            own.isEmpty() ? QStringLiteral(".") : own);
        listing.isRead = entries.has_value();
        if (entries) {
            listing.names.reserve(static_cast<qsizetype>(entries->size()));
            for (const platform::DirectoryEntry& entry : *entries)
                listing.names.insert(entry.name);
        }
        return *m_listings.insert(own, listing);
    }

    QHash<QString, Listing> m_listings;
};

QString creationDateOnDisk(const QString& path) {
    const auto attributes = platform::NSFileManager::defaultManager().attributesOfItemAtPath(path);
    return attributes ? platform::dateDescription(attributes->NSFileCreationDate) : QString();
}

} // namespace

platform::Message renameNoteMessage(RenameNote note) {
    switch (note) {
    case RenameNote::None:
        break;
    case RenameNote::NameExists:
        return kNameExists;
    case RenameNote::NoTitle:
        return kNoTitle;
    case RenameNote::EmptyName:
        return kEmptyName;
    case RenameNote::NameTooLong:
        return kNameTooLong;
    case RenameNote::Missing:
        return kFileMissing;
    case RenameNote::NoFolder:
        return kNoSuchFolder;
    case RenameNote::NotPossible:
        return kNoFileName;
    }
    return {};
}

RenameSurroundings surroundingsOnDisk() {
    const auto listings = std::make_shared<FolderListings>();
    return {[listings](const QString& path) { return listings->isTaken(path); },
            &creationDateOnDisk};
}

std::vector<RenameMove> planRename(const RenameRequest& request,
                                   const std::vector<media::ItemPointer>& items,
                                   const RenameSurroundings& surroundings) {
    Planner planner(request, surroundings, items.size());
    std::vector<RenameMove> moves;
    moves.reserve(items.size());
    int number = 0;
    for (const media::ItemPointer& item : items)
        moves.push_back(planner.plan(*item, ++number));
    return moves;
}

} // namespace clipheave::batch
