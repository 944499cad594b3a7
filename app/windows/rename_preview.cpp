// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/rename_preview.h"

#include "app/list/list_painting.h"
#include "app/theme/theme.h"
#include "app/widgets/button_look.h"
#include "platform/foundation/paths.h"

#include <QFocusEvent>
#include <QHeaderView>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QTextDocument>

#include <algorithm>

namespace clipheave::app {

namespace {

constexpr int kPreviewPadding = 6;
constexpr int kPreviewLead = 12, kPreviewEnd = 8; // of a row, outside its cells' own padding
constexpr int kChevronColumn = 28;                // at the right end of the current name
constexpr int kNoteColumn = 128;
constexpr int kHintGap = 8;
constexpr int kNoteImage = 16, kNoteGap = 6;
constexpr double kOddRow = 0.55;

QString nameOf(const QString& path) {
    return platform::displayPath(platform::lastPathComponent(path));
}

QString folderOf(const QString& path) {
    return platform::deletingLastPathComponent(path);
}

/// Only rows that end otherwise than the user may expect get an image.
bool isWarning(batch::RenameNote note) {
    return note != batch::RenameNote::None && note != batch::RenameNote::NoTitle;
}

QString previewToolTip(const batch::RenameMove& move, int column) {
    if (column == RenamePreviewModel::CurrentName)
        return platform::displayPath(move.source);
    QString text = platform::displayPath(move.stays ? move.source : move.target);
    if (move.note != batch::RenameNote::None)
        text += QLatin1Char('\n') + batch::renameNoteText(move.note);
    if (const QString hint = RenamePreviewModel::hint(move); !hint.isEmpty())
        text += QLatin1Char('\n') + hint;
    return Qt::mightBeRichText(text) ? QStringLiteral("<qt>%1</qt>").arg(text.toHtmlEscaped())
                                     : text;
}

class PreviewDelegate : public QStyledItemDelegate {
public:
    PreviewDelegate(const RenamePreviewModel& model, QObject* parent)
        : QStyledItemDelegate(parent), m_model(model) {}

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        const batch::RenameMove& move = m_model.plan()[static_cast<std::size_t>(index.row())];
        const Theme& theme = Theme::instance();
        painter->save();
        if (index.row() % 2 == 1)
            painter->fillRect(option.rect, theme.color(Token::bg2, kOddRow));
        painter->setFont(theme.font(FontRole::Cell));
        const QRect cell = option.rect.adjusted(kPreviewPadding, 0, -kPreviewPadding, 0);
        if (index.column() == RenamePreviewModel::CurrentName)
            paintCurrent(*painter, cell.adjusted(kPreviewLead, 0, kPreviewPadding, 0), move);
        else if (index.column() == RenamePreviewModel::NewName)
            paintNew(*painter, cell, move);
        else
            paintNote(*painter, cell.adjusted(2, 0, -kPreviewEnd, 0), move);
        painter->restore();
    }

private:
    static void paintLine(QPainter& painter, const QRect& rect, Token token, const QString& text) {
        painter.setPen(Theme::instance().color(token));
        painter.drawText(rect, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine, text);
    }

    static void paintImage(QPainter& painter, const QRect& rect, const char* name, Token token) {
        const QRect place(rect.left(), rect.center().y() - kNoteImage / 2 + 1, kNoteImage,
                          kNoteImage);
        painter.drawPixmap(place, themePixmap(QLatin1String(name), kNoteImage,
                                              Theme::instance().color(token),
                                              painter.device()->devicePixelRatioF()));
    }

    static void paintCurrent(QPainter& painter, const QRect& cell, const batch::RenameMove& move) {
        const QRect name = cell.adjusted(0, 0, -kChevronColumn - kPreviewPadding, 0);
        paintLine(painter, name, Token::text2,
                  elidedName(nameOf(move.source), painter.fontMetrics(), name.width()));
        paintImage(painter, cell.adjusted(cell.width() - kChevronColumn, 0, 0, 0), "chevron-right",
                   Token::text3);
    }

    static void paintNew(QPainter& painter, const QRect& cell, const batch::RenameMove& move) {
        const QFontMetrics metrics = painter.fontMetrics();
        // The name is what the line is for; the hint takes half of it at most.
        const QString hint =
            metrics.elidedText(RenamePreviewModel::hint(move), Qt::ElideRight, cell.width() / 2);
        const int hintWidth = hint.isEmpty() ? 0 : metrics.horizontalAdvance(hint) + 8;
        const QString name =
            elidedName(RenamePreviewModel::newName(move), metrics, cell.width() - hintWidth);
        paintLine(painter, cell, move.stays ? Token::text3 : Token::text1, name);
        paintLine(painter, cell.adjusted(metrics.horizontalAdvance(name) + kHintGap, 0, 0, 0),
                  Token::text3, hint);
    }

    static void paintNote(QPainter& painter, const QRect& cell, const batch::RenameMove& move) {
        QRect text = cell;
        const bool warning = isWarning(move.note);
        if (warning) {
            paintImage(painter, cell, "alert", Token::warn);
            text.setLeft(cell.left() + kNoteImage + kNoteGap);
        }
        paintLine(painter, text, warning ? Token::warn : Token::text3,
                  painter.fontMetrics().elidedText(batch::renameNoteText(move.note), Qt::ElideRight,
                                                   text.width()));
    }

    const RenamePreviewModel& m_model;
};

class PreviewHeader : public QHeaderView {
public:
    explicit PreviewHeader(QWidget* parent) : QHeaderView(Qt::Horizontal, parent) {
        viewport()->setAutoFillBackground(false);
    }

protected:
    void paintEvent(QPaintEvent* event) override {
        QPainter(viewport())
            .fillRect(0, height() - 1, viewport()->width(), 1,
                      Theme::instance().color(Token::line1));
        QHeaderView::paintEvent(event);
    }
    void paintSection(QPainter* painter, const QRect& rect, int section) const override {
        if (section == RenamePreviewModel::Note)
            return; // its cells speak for themselves; the title is for assistive technology
        const Theme& theme = Theme::instance();
        const bool first = section == RenamePreviewModel::CurrentName;
        const int line = first ? rect.right() - kChevronColumn : rect.right();
        painter->fillRect(QRect(line, rect.center().y() - 7, 1, 16), theme.color(Token::line1));
        QFont font = theme.font(FontRole::Cell);
        font.setWeight(QFont::Medium);
        painter->setFont(font);
        painter->setPen(theme.color(Token::text2));
        painter->drawText(rect.adjusted(kPreviewPadding + (first ? kPreviewLead : 0), 0, 0, 0),
                          Qt::AlignVCenter | Qt::AlignLeft,
                          model()->headerData(section, Qt::Horizontal).toString());
    }
};

} // namespace

void RenamePreviewModel::setPlan(std::vector<batch::RenameMove> plan) {
    if (plan.size() != m_plan.size()) {
        beginResetModel();
        m_plan = std::move(plan);
        endResetModel();
        return;
    }
    m_plan = std::move(plan);
    if (!m_plan.empty())
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1));
}

int RenamePreviewModel::leavingCount() const {
    return static_cast<int>(
        std::count_if(m_plan.begin(), m_plan.end(), [](const batch::RenameMove& move) {
            return !move.stays && folderOf(move.target) != folderOf(move.source);
        }));
}

QString RenamePreviewModel::newName(const batch::RenameMove& move) {
    return nameOf(move.stays ? move.source : move.target);
}

QString RenamePreviewModel::hint(const batch::RenameMove& move) {
    if (move.stays) // the note has the reason; without one no other name was wanted
        return move.note == batch::RenameNote::None ? QString() : tr("keeps its name");
    const QString folder = folderOf(move.target);
    if (folder == folderOf(move.source))
        return {};
    return folder == folderOf(move.storageFolder + QLatin1String("/x"))
               ? tr("to the storage folder")
               : tr("to %1").arg(nameOf(folder));
}

int RenamePreviewModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_plan.size());
}

int RenamePreviewModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant RenamePreviewModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const batch::RenameMove& move = m_plan[static_cast<std::size_t>(index.row())];
    if (role == Qt::ToolTipRole)
        return previewToolTip(move, index.column());
    if (role != Qt::DisplayRole && role != Qt::AccessibleTextRole)
        return {};
    switch (index.column()) {
    case CurrentName:
        return nameOf(move.source);
    case NewName:
        if (const QString beside = hint(move); role == Qt::AccessibleTextRole && !beside.isEmpty())
            return newName(move) + QStringLiteral(", ") + beside;
        return newName(move);
    default:
        return batch::renameNoteText(move.note);
    }
}

QVariant RenamePreviewModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal ||
        (role != Qt::DisplayRole && role != Qt::AccessibleTextRole))
        return {};
    static const QStringList titles{tr("Current name"), tr("New name"), tr("Note")};
    return titles.value(section);
}

RenamePreview::RenamePreview(QWidget* parent)
    : QTableView(parent), m_model(new RenamePreviewModel(this)) {
    setObjectName(QStringLiteral("renamePreview"));
    setAccessibleName(tr("Current and new names"));
    setModel(m_model);
    setItemDelegate(new PreviewDelegate(*m_model, this));
    setSelectionMode(NoSelection);
    setEditTriggers(NoEditTriggers);
    setTabKeyNavigation(false);
    setShowGrid(false);
    setWordWrap(false);
    setFrameShape(NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(ScrollPerPixel);
    // The card below shows through: its corners are round.
    setStyleSheet(QStringLiteral("QTableView, QHeaderView { background: transparent; }"));
    viewport()->setAutoFillBackground(false);
    setUpHeader();
    connect(&Theme::instance(), &Theme::changed, viewport(), qOverload<>(&QWidget::update));
}

void RenamePreview::setUpHeader() {
    setHorizontalHeader(new PreviewHeader(this));
    QHeaderView* header = horizontalHeader();
    header->setAccessibleName(tr("Columns of the names"));
    header->setSectionResizeMode(QHeaderView::Fixed);
    header->setMinimumSectionSize(0);
    header->setFixedHeight(kRowHeight);
    header->setSectionsClickable(false);
    header->setHighlightSections(false);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setMinimumSectionSize(kRowHeight);
    verticalHeader()->setDefaultSectionSize(kRowHeight);
}

void RenamePreview::resizeEvent(QResizeEvent* event) {
    QTableView::resizeEvent(event);
    const int note = Theme::instance().scaled(kNoteColumn) + kPreviewEnd;
    const int names = viewport()->width() - note - kPreviewLead - kChevronColumn;
    setColumnWidth(RenamePreviewModel::CurrentName, names / 2 + kPreviewLead + kChevronColumn);
    setColumnWidth(RenamePreviewModel::NewName, names - names / 2);
    setColumnWidth(RenamePreviewModel::Note, note);
}

void RenamePreview::paintEvent(QPaintEvent* event) {
    QTableView::paintEvent(event);
    if (m_model->rowCount() > 0)
        return;
    QPainter painter(viewport());
    painter.setFont(Theme::instance().font(FontRole::Cell));
    painter.setPen(Theme::instance().color(Token::text3));
    painter.drawText(viewport()->rect(), Qt::AlignCenter,
                     tr("Select the files to rename in the list"));
}

void RenamePreview::focusInEvent(QFocusEvent* event) {
    QTableView::focusInEvent(event);
    Q_EMIT focusShown(showsFocusRing(event->reason()));
}

void RenamePreview::focusOutEvent(QFocusEvent* event) {
    QTableView::focusOutEvent(event);
    Q_EMIT focusShown(false);
}

} // namespace clipheave::app
