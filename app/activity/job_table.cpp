// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/activity/job_table.h"

#include "app/activity/activity_model.h"
#include "app/activity/activity_parts.h"

#include <QHeaderView>
#include <QMouseEvent>
#include <QPainter>
#include <QStyledItemDelegate>

#include <algorithm>
#include <array>
#include <utility>

namespace clipheave::app {

namespace {

constexpr int kCellPadding = 6;
constexpr int kCurrentBar = 3;
constexpr int kProgressHeight = 4;
constexpr int kPercentWidth = 44; // "100%" and the gap before it

/// Widths at the narrowest and at the usual window; the task's is what is left.
struct ColumnWidths {
    int least, usual;
};
constexpr std::array<ColumnWidths, ActivityModel::ColumnCount> kColumnWidths{
    {{48, 48}, {0, 0}, {104, 150}, {126, 190}, {128, 178}, {70, 92}}};
constexpr int kNarrowTable = 640, kUsualTable = 979;

/// Paints every cell of a row by itself: a style sheet per cell would cost too much and could
/// neither rotate an image nor draw a thin bar.
class JobDelegate : public QStyledItemDelegate {
public:
    JobDelegate(const ActivityModel& model, const JobTable& table)
        : QStyledItemDelegate(nullptr), m_model(model), m_table(table) {}

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        const ActivityJob* job = m_model.job(index.data(ActivityModel::JobRole).toInt());
        if (!job)
            return;
        painter->save();
        paintSurface(*painter, option, index);
        const QRect cell = option.rect.adjusted(kCellPadding, 0, -kCellPadding, 0);
        switch (index.column()) {
        case ActivityModel::StateColumn:
            paintState(*painter,
                       QRect(option.rect.left() + 20, option.rect.top(), 16, cell.height()),
                       lookOf(*job), !m_table.spins());
            break;
        case ActivityModel::ProgressColumn:
            paintBar(*painter, cell, *job, index, cellToken(option));
            break;
        default:
            paintText(*painter, cell, *job, index, cellToken(option));
        }
        painter->restore();
    }

private:
    static Token cellToken(const QStyleOptionViewItem& option) {
        return option.state.testFlag(QStyle::State_Selected) ? Token::text1 : Token::text2;
    }

    void paintSurface(QPainter& painter, const QStyleOptionViewItem& option,
                      const QModelIndex& index) const {
        const Theme& theme = Theme::instance();
        const bool selected = option.state.testFlag(QStyle::State_Selected);
        if (selected)
            painter.fillRect(option.rect, theme.color(Token::sel));
        else if (m_table.hoveredRow() == index.row())
            painter.fillRect(option.rect, theme.color(Token::bg3));
        if (selected && index.column() == ActivityModel::StateColumn)
            painter.fillRect(QRect(option.rect.topLeft(), QSize(kCurrentBar, option.rect.height())),
                             theme.color(Token::accent));
    }

    static void paintBar(QPainter& painter, const QRect& cell, const ActivityJob& job,
                         const QModelIndex& index, Token token) {
        const int width = std::min(120, cell.width() - kPercentWidth);
        const int top = cell.center().y() - kProgressHeight / 2 + 1; // on whole pixels
        const QRectF bar(cell.left(), top, width, kProgressHeight);
        paintProgress(painter, bar, job.fraction(), progressToken(job));
        painter.setFont(Theme::instance().font(FontRole::Cell));
        painter.setPen(Theme::instance().color(token));
        painter.drawText(cell.adjusted(width + 10, 0, kCellPadding, 0), Qt::AlignVCenter,
                         index.data().toString());
    }

    static void paintText(QPainter& painter, const QRect& cell, const ActivityJob& job,
                          const QModelIndex& index, Token token) {
        const int column = index.column();
        const bool task = column == ActivityModel::TaskColumn;
        const bool bad = column == ActivityModel::ResultColumn && job.failed > 0 &&
                         job.state != JobState::Running;
        QFont font = Theme::instance().font(task ? FontRole::Field : FontRole::Cell);
        if (task)
            font.setWeight(QFont::Medium);
        const QRect place = column == ActivityModel::TimeColumn ? cell.adjusted(0, 0, -8, 0) : cell;
        const QFontMetrics metrics(font);
        painter.setFont(font);
        painter.setPen(Theme::instance().color(bad ? Token::bad : task ? Token::text1 : token));
        // While a job runs the result is a file name, whose end says more than its middle.
        const Qt::TextElideMode elide =
            column == ActivityModel::ResultColumn && job.state == JobState::Running
                ? Qt::ElideMiddle
                : Qt::ElideRight;
        painter.drawText(place,
                         static_cast<int>(Qt::AlignVCenter | Qt::TextSingleLine |
                                          (column == ActivityModel::TimeColumn ? Qt::AlignRight
                                                                               : Qt::AlignLeft)),
                         metrics.elidedText(index.data().toString(), elide, place.width()));
    }

    const ActivityModel& m_model;
    const JobTable& m_table;
};

/// Aligns its texts with those of the cells.
class JobHeader : public QHeaderView {
public:
    explicit JobHeader(QWidget* parent) : QHeaderView(Qt::Horizontal, parent) {}

protected:
    void paintSection(QPainter* painter, const QRect& rect, int section) const override {
        const Theme& theme = Theme::instance();
        painter->save();
        painter->fillRect(rect, theme.color(Token::bg1));
        painter->fillRect(QRect(rect.left(), rect.bottom(), rect.width(), 1),
                          theme.color(Token::line1));
        if (section > ActivityModel::StateColumn && section < ActivityModel::TimeColumn)
            painter->fillRect(QRect(rect.right(), rect.top() + 7, 1, rect.height() - 14),
                              theme.color(Token::line1));
        QFont font = theme.font(FontRole::Log);
        font.setFamilies(theme.font(FontRole::Cell).families());
        font.setWeight(QFont::Medium);
        painter->setFont(font);
        painter->setPen(theme.color(Token::text2));
        const bool right = section == ActivityModel::TimeColumn;
        const int end = right ? kCellPadding + 8 : kCellPadding;
        const QRect place = rect.adjusted(kCellPadding, 0, -end, 0);
        painter->drawText(
            place, static_cast<int>(Qt::AlignVCenter | (right ? Qt::AlignRight : Qt::AlignLeft)),
            model()->headerData(section, Qt::Horizontal).toString());
        painter->restore();
    }
};

QString emptyText(const ActivityModel& model) {
    return model.jobs().empty() ? JobTable::tr("Imports, saves and batches are listed here")
                                : JobTable::tr("No such task");
}

} // namespace

JobFilter::JobFilter(ActivityModel& model, QObject* parent)
    : QSortFilterProxyModel(parent), m_model(model) {
    setSourceModel(&model);
}

void JobFilter::setPass(Pass pass) {
    m_pass = pass;
    invalidateFilter();
}

bool JobFilter::filterAcceptsRow(int row, const QModelIndex&) const {
    const ActivityJob& job = m_model.jobs().at(static_cast<std::size_t>(row));
    switch (m_pass) {
    case Pass::Running:
        return job.state == JobState::Running;
    case Pass::Failed:
        return job.failed > 0;
    case Pass::All:
        break;
    }
    return true;
}

JobTable::JobTable(ActivityModel& model, JobFilter& filter, QWidget* parent)
    : QTableView(parent), m_model(model) {
    setObjectName(QStringLiteral("jobTable"));
    setAccessibleName(tr("Tasks"));
    setModel(&filter);
    auto* delegate = new JobDelegate(model, *this);
    delegate->setParent(this);
    setItemDelegate(delegate);
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
    setShowGrid(false);
    setFrameShape(NoFrame);
    setWordWrap(false);
    setTabKeyNavigation(false);
    setMouseTracking(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(ScrollPerPixel);
    setEditTriggers(NoEditTriggers);
    setUpHeader();
    connect(&m_tickTimer, &QTimer::timeout, this, &JobTable::tick);
}

void JobTable::setUpHeader() {
    setHorizontalHeader(new JobHeader(this));
    QHeaderView* header = horizontalHeader();
    header->setSectionResizeMode(QHeaderView::Fixed);
    header->setFixedHeight(kHeaderHeight);
    header->setMinimumSectionSize(0);
    header->setSectionsClickable(false);
    header->setHighlightSections(false);
    verticalHeader()->hide();
    verticalHeader()->setMinimumSectionSize(kRowHeight);
    verticalHeader()->setDefaultSectionSize(kRowHeight);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
}

void JobTable::layOutColumns() {
    const int width = viewport()->width();
    const double wide = std::clamp(
        static_cast<double>(width - kNarrowTable) / (kUsualTable - kNarrowTable), 0.0, 1.0);
    int left = width;
    for (std::size_t column = 0; column < kColumnWidths.size(); ++column) {
        if (column == ActivityModel::TaskColumn)
            continue;
        const auto [least, usual] = kColumnWidths[column];
        const int size = least + static_cast<int>((usual - least) * wide);
        setColumnWidth(static_cast<int>(column), size);
        left -= size;
    }
    setColumnWidth(ActivityModel::TaskColumn, std::max(80, left));
}

int JobTable::chosenJob() const {
    return currentIndex().data(ActivityModel::JobRole).toInt();
}

void JobTable::chooseJob(int job) {
    for (int row = 0; row < model()->rowCount(); ++row) {
        const QModelIndex index = model()->index(row, ActivityModel::TaskColumn);
        if (index.data(ActivityModel::JobRole).toInt() == job)
            return setCurrentIndex(index);
    }
    setCurrentIndex({});
}

void JobTable::refreshTicking() {
    const bool ticking = isVisible() && m_model.runningCount() > 0;
    if (ticking == m_tickTimer.isActive())
        return;
    m_spins = ticking && animationsEnabled(this);
    if (ticking)
        m_tickTimer.start(m_spins ? BusyIndicator::kInterval : 1000); // else the times alone
    else
        m_tickTimer.stop();
}

void JobTable::tick() {
    const bool second = ++m_ticks % (1000 / m_tickTimer.interval()) == 0;
    for (int row = rowAt(0); row >= 0 && row < model()->rowCount(); ++row) {
        if (rowViewportPosition(row) > viewport()->height())
            break;
        const auto state = model()->index(row, 0).data(ActivityModel::StateRole).toInt();
        if (state != static_cast<int>(JobState::Running))
            continue;
        updateRow(row, ActivityModel::StateColumn);
        if (second)
            updateRow(row, ActivityModel::TimeColumn);
    }
}

void JobTable::updateRow(int row, int column) {
    if (row < 0)
        return;
    const QRect strip(0, rowViewportPosition(row), viewport()->width(), rowHeight(row));
    viewport()->update(column < 0 ? strip
                                  : QRect(columnViewportPosition(column), strip.top(),
                                          columnWidth(column), strip.height()));
}

void JobTable::paintEvent(QPaintEvent* event) {
    QTableView::paintEvent(event);
    if (model()->rowCount() > 0)
        return;
    QPainter painter(viewport());
    painter.setFont(Theme::instance().font(FontRole::Cell));
    painter.setPen(Theme::instance().color(Token::text3));
    painter.drawText(viewport()->rect(), Qt::AlignCenter, emptyText(m_model));
}

void JobTable::resizeEvent(QResizeEvent* event) {
    QTableView::resizeEvent(event);
    layOutColumns();
}

void JobTable::showEvent(QShowEvent* event) {
    QTableView::showEvent(event);
    refreshTicking();
}

void JobTable::hideEvent(QHideEvent* event) {
    QTableView::hideEvent(event);
    m_tickTimer.stop();
}

void JobTable::setHoveredRow(int row) {
    if (row == m_hoveredRow)
        return;
    updateRow(std::exchange(m_hoveredRow, row));
    updateRow(row);
}

void JobTable::mouseMoveEvent(QMouseEvent* event) {
    QTableView::mouseMoveEvent(event);
    setHoveredRow(rowAt(event->position().toPoint().y()));
}

void JobTable::leaveEvent(QEvent* event) {
    QTableView::leaveEvent(event);
    setHoveredRow(-1);
}

void JobTable::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    QTableView::currentChanged(current, previous);
    Q_EMIT jobChosen(chosenJob());
}

} // namespace clipheave::app
