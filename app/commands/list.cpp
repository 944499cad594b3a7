// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/commands/list_state.h"
#include "app/commands/pane_state.h"
#include "app/commands/surroundings.h"
#include "app/list/media_list_model.h"
#include "app/panes/detail_pane.h"
#include "app/windows/main_window.h"
#include "media/media_kind.h"
#include "platform/foundation/paths.h"

#include <QClipboard>
#include <QGuiApplication>

#include <unordered_set>

namespace clipheave::app {

const std::vector<media::ItemPointer>& AppDelegate::localPhotoItemArray() const {
    return m_list->items;
}

void AppDelegate::tableViewSelectionDidChange() {
    refreshSummary();
    const int row = m_window->currentRow();
    const auto& content = m_mediaController->content();
    if (row < 0 || static_cast<std::size_t>(row) >= content.size())
        return;
    const media::ItemPointer item = content[static_cast<std::size_t>(row)];
    if (isAudio(item->filePath))
        ShowAudioViewWithItem(item);
    else if (isVideo(item->filePath))
        ShowVideoViewWithItem(item);
}

void AppDelegate::ShowVideoViewWithItem(const media::ItemPointer& item) {
    m_pane->shownItem = item;
    m_pane->flags = {};
    m_window->detailPane()->showVideo(*item, media::ShowVideoViewWithItem(*item));
}

void AppDelegate::ShowAudioViewWithItem(const media::ItemPointer& item) {
    m_pane->shownItem = item;
    m_pane->flags = {};
    DetailPane* pane = m_window->detailPane();
    pane->showAudio(*item, media::ShowAudioViewWithItem(*item, pane->videoArtistText()));
}

void AppDelegate::tableView_didClickTableColumn(int column) {
    m_mediaController->sortByColumn(column);
    m_window->selectRow(m_mediaController->content().empty() ? -1 : 0);
    refreshSummary();
}

void AppDelegate::restoreImportOrder() {
    m_mediaController->setContent(m_list->items);
    m_list->handedOver = m_list->items.size();
    refreshSummary();
}

std::vector<media::ItemPointer> AppDelegate::selectedItems() const {
    // Deliberate: row numbers count in import order, also while the list is sorted; the head of the
    // list says so then, and the foot of the pane names what is touched.
    std::vector<media::ItemPointer> items;
    for (int row : m_window->selectedRows())
        if (row >= 0 && static_cast<std::size_t>(row) < m_list->items.size())
            items.push_back(m_list->items[static_cast<std::size_t>(row)]);
    return items;
}

std::vector<media::ItemPointer> AppDelegate::itemsAt(const QStringList& paths) {
    std::vector<media::ItemPointer> found;
    for (const QString& path : paths)
        if (const QList<int> rows = m_list->rows.rowsOf(path, m_list->items); !rows.isEmpty())
            found.push_back(m_list->items[static_cast<std::size_t>(rows.first())]);
    return found;
}

void AppDelegate::changeItems(const QStringList& paths, const media::ItemChange& change) {
    ItemChanges changes;
    for (const QString& path : paths) {
        for (const int row : m_list->rows.rowsOf(path, m_list->items)) {
            media::ItemPointer& item = m_list->items[static_cast<std::size_t>(row)];
            const media::ItemPointer copy = media::changedCopy(*item, change);
            changes.emplace_back(item, copy);
            if (m_pane->shownItem == item)
                m_pane->shownItem = copy;
            item = copy;
        }
    }
    m_mediaController->replaceItems(changes);
}

void AppDelegate::removeItems(const std::function<bool(const media::IKImageItem&)>& goes) {
    std::erase_if(m_list->items, [this, &goes](const media::ItemPointer& item) {
        if (!goes(*item))
            return false;
        m_list->totalBytes -= item->sizeBytes;
        return true;
    });
    m_list->rows.forget();
    restoreImportOrder();
}

void AppDelegate::RemoveMediaFileAction() {
    // By address: a file that was added twice has two items.
    std::unordered_set<const media::IKImageItem*> removed;
    for (const auto& item : selectedItems())
        removed.insert(item.get());
    removeItems([&removed](const auto& item) { return removed.contains(&item); });
    m_pane->shownItem.reset();
    m_window->detailPane()->showNothing();
    if (m_list->items.empty())
        m_window->showEmptyState();
}

void AppDelegate::ChangeToImportComputerPhoto() {
    m_window->showComputer();
}

void AppDelegate::revealCurrentItem() {
    if (m_pane->shownItem)
        m_surroundings->workspace->selectFiles({m_pane->shownItem->filePath});
}

void AppDelegate::openCurrentItem() {
    if (m_pane->shownItem &&
        !m_surroundings->workspace->openUrl(QUrl::fromLocalFile(m_pane->shownItem->filePath)))
        m_activity->addLog(tr("No program opens this file"), m_pane->shownItem->filePath, true);
}

void AppDelegate::copyCurrentPath() {
    if (m_pane->shownItem)
        QGuiApplication::clipboard()->setText(platform::displayPath(m_pane->shownItem->filePath));
}

void AppDelegate::chooseArtwork() {
    if (m_pane->shownItem)
        m_window->detailPane()->chooseArtwork();
}

void AppDelegate::pasteArtwork() {
    if (m_pane->shownItem)
        m_window->detailPane()->pasteArtwork();
}

void AppDelegate::revertEdits() {
    if (const media::ItemPointer item = m_pane->shownItem)
        isAudio(item->filePath) ? ShowAudioViewWithItem(item) : ShowVideoViewWithItem(item);
}

void AppDelegate::showNoSelectionAlert() {
    m_surroundings->alerts->ask(m_window.get(), tr("No Item has been selected"),
                                tr("Please select at least one item to process."), {tr(" Ok ")});
}

void AppDelegate::refreshSummary() {
    std::uint64_t selectedBytes = 0;
    double seconds = 0;
    const auto selected = selectedItems();
    for (const auto& item : selected) {
        selectedBytes += item->sizeBytes;
        seconds += item->fileduration;
    }
    const int count = static_cast<int>(m_list->items.size());
    QString summary;
    if (!selected.empty())
        summary = tr("%1 selected of %2").arg(selected.size()).arg(count);
    if (!selected.empty() && seconds >= 1) // photos have no length
        summary += QStringLiteral(", ") + getMediaDuration(static_cast<int>(seconds));
    if (!selected.empty())
        summary += QStringLiteral(", ") + sizeText(selectedBytes);
    m_window->setListSummary(summary, m_mediaController->isSorted());
    m_window->setTotals(count == 1
                            ? tr("1 item, %1").arg(sizeText(m_list->totalBytes))
                            : tr("%1 items, %2").arg(count).arg(sizeText(m_list->totalBytes)));
    QStringList names;
    for (const auto& item : selected)
        names.append(item->fileName);
    m_window->detailPane()->setTouchedNames(names, m_mediaController->isSorted());
}

} // namespace clipheave::app
