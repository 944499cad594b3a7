// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppDelegate.h"
#include "app/activity/activity_model.h"
#include "app/commands/item_list.h"
#include "app/commands/pane_state.h"
#include "app/commands/surroundings.h"
#include "app/list/media_list_model.h"
#include "app/panes/detail_pane.h"
#include "app/windows/main_window.h"
#include "media/media_kind.h"
#include "platform/foundation/paths.h"

#include <algorithm>
#include <unordered_set>

namespace clipheave::app {

namespace {

/// "2 selected of 5, 0:01:02, 3.4 MB"; empty when nothing is selected.
QString selectionSummary(const std::vector<media::ItemPointer>& selected, std::size_t count) {
    if (selected.empty())
        return {};
    std::uint64_t bytes = 0;
    double seconds = 0;
    for (const auto& item : selected) {
        bytes += item->sizeBytes;
        seconds += item->fileduration;
    }
    QString summary = AppDelegate::tr("%1 selected of %2").arg(selected.size()).arg(count);
    if (seconds >= 1) // photos have no duration
        summary += QStringLiteral(", ") + AppDelegate::getMediaDuration(static_cast<int>(seconds));
    return summary + QStringLiteral(", ") + AppDelegate::sizeText(bytes);
}

} // namespace

const std::vector<media::ItemPointer>& AppDelegate::localPhotoItemArray() const {
    return m_list->items();
}

void AppDelegate::tableViewSelectionDidChange() {
    refreshSummary();
    if (m_window->editsPhotos())
        return refreshPhotoPane();
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
    m_pane->show(item);
    m_window->detailPane()->showVideo(*item, media::ShowVideoViewWithItem(*item));
}

void AppDelegate::ShowAudioViewWithItem(const media::ItemPointer& item) {
    m_pane->show(item);
    DetailPane* pane = m_window->detailPane();
    pane->showAudio(*item, media::ShowAudioViewWithItem(*item, pane->videoArtistText()));
}

void AppDelegate::tableView_didClickTableColumn(int column) {
    m_mediaController->sortByColumn(column);
    m_window->selectRow(m_mediaController->content().empty() ? -1 : 0);
    refreshSummary();
}

void AppDelegate::restoreImportOrder() {
    m_list->restoreOrder();
    refreshSummary();
}

std::vector<media::ItemPointer> AppDelegate::selectedItems() const {
    // Deliberate: row numbers count in import order, also while the list is sorted; the head of the
    // list says so then, and the foot of the pane names what is touched.
    return m_list->itemsOf(m_window->selectedRows());
}

media::ItemPointer AppDelegate::selectedPhoto() const {
    const auto items = selectedItems();
    const auto isPhotoItem = [](const auto& item) { return isPhoto(item->filePath); };
    for (const auto& current : m_list->itemsOf({m_window->currentRow()}))
        if (isPhotoItem(current) && std::ranges::find(items, current) != items.end())
            return current;
    const auto first = std::ranges::find_if(items, isPhotoItem);
    return first != items.end() ? *first : nullptr;
}

void AppDelegate::changeItems(const QStringList& paths, const media::ItemChange& change) {
    m_pane->follow(m_list->change(paths, change));
}

void AppDelegate::RemoveMediaFileAction() {
    // By address: a file that was added twice has two items.
    std::unordered_set<const media::IKImageItem*> removed;
    for (const auto& item : selectedItems())
        removed.insert(item.get());
    m_list->remove([&removed](const auto& item) { return removed.contains(&item); });
    refreshSummary();
    m_pane->shownItem.reset();
    m_window->detailPane()->showNothing();
    if (m_window->editsPhotos())
        refreshPhotoPane();
    if (m_list->items().empty())
        m_window->showEmptyState();
}

void AppDelegate::ChangeToImportComputerPhoto() {
    m_window->showComputer();
}

media::ItemPointer AppDelegate::currentItem() const {
    return m_window->editsPhotos() ? m_pane->shownPhoto : m_pane->shownItem;
}

void AppDelegate::revealCurrentItem() {
    if (const media::ItemPointer item = currentItem())
        m_surroundings->workspace->selectFiles({item->filePath});
}

void AppDelegate::openCurrentItem() {
    const media::ItemPointer item = currentItem();
    if (item && !m_surroundings->workspace->openUrl(QUrl::fromLocalFile(item->filePath)))
        m_activity->addLog(tr("No program opens this file"), item->filePath, true);
}

void AppDelegate::copyCurrentPath() {
    if (const media::ItemPointer item = currentItem())
        m_surroundings->pasteboard->setText(platform::displayPath(item->filePath));
}

void AppDelegate::chooseArtwork() {
    if (m_pane->shownItem)
        m_surroundings->fileChooser->chooseImage(
            m_window.get(), [this](const QString& path) { takeArtwork(path); });
}

void AppDelegate::pasteArtwork() {
    if (m_pane->shownItem)
        m_window->detailPane()->pasteArtwork(m_surroundings->pasteboard->contents());
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
    const auto selected = selectedItems();
    const bool sorted = m_mediaController->isSorted();
    m_window->setListSummary(selectionSummary(selected, m_list->items().size()), sorted);
    const QString bytes = sizeText(m_list->totalBytes());
    m_window->setTotals(m_list->items().size() == 1
                            ? tr("1 item, %1").arg(bytes)
                            : tr("%1 items, %2").arg(m_list->items().size()).arg(bytes));
    QStringList names;
    for (const auto& item : selected)
        names.append(item->fileName);
    m_window->detailPane()->setTouchedNames(names, sorted);
}

} // namespace clipheave::app
