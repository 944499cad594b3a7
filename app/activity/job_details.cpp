// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/activity/job_details.h"

#include "app/activity/activity_model.h"
#include "app/activity/activity_parts.h"
#include "app/activity/log_view.h"
#include "app/widgets/button_look.h"
#include "platform/foundation/paths.h"

#include <QHBoxLayout>
#include <QListView>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

#include <algorithm>

namespace clipheave::app {

namespace {

constexpr int kFileRow = 22;
constexpr int kFilesPadding = 6;
constexpr int kShownFiles = 5; // the log gets the rest
constexpr int kLeastTitle = 150;

/// The reason as far as the row does not say it already: without the path of its own file.
QString shortNote(const ActivityFile& file) {
    QString note = file.note;
    return file.source.isEmpty() ? note : note.remove(file.source + QStringLiteral(": "));
}

class FileDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        const Theme& theme = Theme::instance();
        const auto state = static_cast<FileState>(index.data(JobFiles::StateRole).toInt());
        painter->save();
        if (option.state.testFlag(QStyle::State_Selected))
            painter->fillRect(option.rect, theme.color(Token::sel));
        const QRect row = option.rect.adjusted(16, 0, -16, 0);
        paintState(*painter, QRect(row.left(), row.top(), 16, row.height()), lookOf(state), true);
        painter->setFont(theme.font(FontRole::Cell));
        const QFontMetrics metrics(painter->font());
        // The reason may take most of the row: it is what the row is looked at for.
        const QString note = metrics.elidedText(index.data(JobFiles::NoteRole).toString(),
                                                Qt::ElideRight, row.width() * 6 / 10);
        const int noteWidth = metrics.horizontalAdvance(note);
        const QRect name = row.adjusted(24, 0, -noteWidth - (noteWidth > 0 ? 12 : 0), 0);
        painter->setPen(theme.color(Token::text1));
        painter->drawText(
            name, static_cast<int>(Qt::AlignVCenter | Qt::TextSingleLine),
            metrics.elidedText(index.data().toString(), Qt::ElideMiddle, name.width()));
        painter->setPen(theme.color(state == FileState::Failed ? Token::bad : Token::text3));
        painter->drawText(row, static_cast<int>(Qt::AlignVCenter | Qt::AlignRight), note);
        painter->restore();
    }

    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const override {
        return {100, kFileRow};
    }
};

QString fileStateWord(FileState state) {
    switch (state) {
    case FileState::Waiting:
        return JobFiles::tr("waiting");
    case FileState::Running:
        return JobFiles::tr("running");
    case FileState::Done:
        return JobFiles::tr("done");
    case FileState::Failed:
        return JobFiles::tr("failed");
    case FileState::Skipped:
        return JobFiles::tr("skipped");
    case FileState::Cancelled:
        break;
    }
    return JobFiles::tr("cancelled");
}

/// What the file is called now: the result's name once there is one.
QString shownPath(const ActivityFile& file) {
    return file.outputs.isEmpty() ? file.source : file.outputs.first();
}

} // namespace

/// The chosen job's state; turns with the others while it runs.
class StateIcon : public QWidget {
public:
    explicit StateIcon(QWidget* parent) : QWidget(parent) {
        setFixedSize(16, 16);
        m_timer.setInterval(BusyIndicator::kInterval);
        QObject::connect(&m_timer, &QTimer::timeout, this, [this] { update(); });
    }

    void setLook(const StateLook& look, bool running) {
        m_look = look;
        m_running = running;
        setTurning(isVisible());
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        paintState(painter, rect(), m_look, !m_timer.isActive());
    }
    void showEvent(QShowEvent*) override { setTurning(true); }
    void hideEvent(QHideEvent*) override { setTurning(false); }

private:
    void setTurning(bool seen) {
        if (seen && m_running && animationsEnabled(this))
            m_timer.start();
        else
            m_timer.stop();
    }

    StateLook m_look;
    bool m_running = false;
    QTimer m_timer;
};

JobFiles::JobFiles(ActivityModel& model, QObject* parent)
    : QAbstractListModel(parent), m_model(model) {
}

void JobFiles::setJob(int job) {
    beginResetModel();
    m_job = job;
    m_rows = 0;
    endResetModel();
    refresh();
}

void JobFiles::refresh() {
    const ActivityJob* job = m_model.job(m_job);
    const int rows = job ? static_cast<int>(job->files.size()) : 0;
    if (rows > m_rows) {
        beginInsertRows({}, m_rows, rows - 1);
        m_rows = rows;
        endInsertRows();
    } else if (rows < m_rows) { // the job was dropped
        beginResetModel();
        m_rows = rows;
        endResetModel();
    }
}

const ActivityFile* JobFiles::file(int row) const {
    const ActivityJob* job = m_model.job(m_job);
    if (!job || row < 0 || static_cast<std::size_t>(row) >= job->files.size())
        return nullptr;
    return &job->files[static_cast<std::size_t>(row)];
}

int JobFiles::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : m_rows;
}

QVariant JobFiles::data(const QModelIndex& index, int role) const {
    const ActivityFile* entry = file(index.row());
    if (!entry)
        return {};
    const QString name = platform::displayPath(platform::lastPathComponent(shownPath(*entry)));
    switch (role) {
    case Qt::DisplayRole:
        return name;
    case Qt::AccessibleTextRole:
        return QStringList{name, fileStateWord(entry->state), entry->note}.join(
            QLatin1String(", "));
    case Qt::ToolTipRole:
        return entry->note.isEmpty()
                   ? platform::displayPath(shownPath(*entry))
                   : platform::displayPath(shownPath(*entry)) + QLatin1Char('\n') + entry->note;
    case NoteRole:
        if (entry->note.isEmpty() && entry->state != FileState::Done)
            return fileStateWord(entry->state);
        return shortNote(*entry);
    case StateRole:
        return static_cast<int>(entry->state);
    default:
        return {};
    }
}

JobDetails::JobDetails(ActivityModel& model, QWidget* parent)
    : QWidget(parent), m_model(model), m_files(new JobFiles(model, this)) {
    setObjectName(QStringLiteral("jobDetails"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(makeHead());
    m_list = new QListView(this);
    m_list->setObjectName(QStringLiteral("jobFiles"));
    m_list->setAccessibleName(tr("Files"));
    m_list->setModel(m_files);
    m_list->setItemDelegate(new FileDelegate(m_list));
    m_list->setUniformItemSizes(true);
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    column->addSpacing(kFilesPadding);
    column->addWidget(m_list, 1);
    column->addSpacing(4);
    m_log = new LogView(
        [this] {
            const ActivityJob* job = m_model.job(m_job);
            return job ? &job->log : nullptr;
        },
        this);
    m_log->setObjectName(QStringLiteral("jobLog"));
    m_log->setAccessibleName(tr("Log of the task"));
    column->addSpacing(1); // the line that paintEvent draws
    column->addWidget(m_log, 1);
    connect(&Theme::instance(), &Theme::changed, this, [this] {
        update();
        QMetaObject::invokeMethod(this, &JobDetails::refresh, Qt::QueuedConnection);
    });
    showJob(0);
}

QWidget* JobDetails::makeHead() {
    auto* head = new QWidget(this);
    head->setFixedHeight(kHeadHeight);
    auto* row = new QHBoxLayout(head);
    row->setContentsMargins(16, 0, 12, 0);
    row->setSpacing(8);
    m_icon = new StateIcon(head);
    m_title = new ToneLabel(FontRole::BodyStrong, Token::text1, head);
    m_title->setObjectName(QStringLiteral("jobTitle"));
    m_result = new ToneLabel(FontRole::Body, Token::text3, head);
    m_result->setObjectName(QStringLiteral("jobResult"));
    m_retry = new Button(ButtonKind::Small, tr("Try Again"), {}, head);
    m_retry->setObjectName(QStringLiteral("retryJobBtn"));
    m_cancel = new Button(ButtonKind::Small, tr("Cancel"), {}, head);
    m_cancel->setObjectName(QStringLiteral("cancelJobBtn"));
    m_reveal = new Button(ButtonKind::Icon, {}, QStringLiteral("reveal"), head);
    m_reveal->setObjectName(QStringLiteral("revealJobBtn"));
    m_reveal->setAccessibleName(tr("Show in File Manager"));
    m_reveal->setToolTip(tr("Show in File Manager"));
    for (QWidget* button : {m_retry, m_cancel, m_reveal})
        allowLowButton(button);
    row->addWidget(m_icon);
    row->addWidget(m_title);
    row->addWidget(m_result);
    row->addStretch(1);
    row->addWidget(m_retry);
    row->addWidget(m_cancel);
    row->addWidget(m_reveal);
    connect(m_retry, &Button::clicked, this, [this] { Q_EMIT m_model.retryRequested(m_job); });
    connect(m_cancel, &Button::clicked, this, [this] { Q_EMIT m_model.cancelRequested(m_job); });
    connect(m_reveal, &Button::clicked, this, [this] { Q_EMIT revealRequested(pathsToReveal()); });
    return head;
}

void JobDetails::showJob(int job) {
    if (job != m_job || job == 0) {
        m_job = job;
        m_files->setJob(job);
    }
    refresh();
}

void JobDetails::refresh() {
    m_files->refresh();
    const ActivityJob* job = m_model.job(m_job);
    m_icon->setVisible(job);
    m_title->setText(job ? job->title : QString());
    // In a narrow window the result gives way first: the table has it too.
    m_title->setMinimumWidth(std::min(m_title->sizeHint().width(), kLeastTitle));
    m_result->setText(!job                              ? tr("No task chosen")
                      : job->state == JobState::Running ? job->itemsText()
                                                        : job->result);
    m_retry->setVisible(job && job->canRetry);
    m_cancel->setVisible(job && job->canCancel);
    m_reveal->setEnabled(job && !job->files.empty());
    m_reveal->setVisible(job);
    if (job) {
        m_icon->setLook(lookOf(*job), job->state == JobState::Running);
        m_log->refresh(job->linesLogged, job->id);
    }
    m_log->setVisible(job && !job->log.empty());
    placeParts();
}

void JobDetails::placeParts() {
    // With a log below, the list takes what its first files need; alone, all there is.
    const bool withLog = !m_log->isHidden();
    const int rows = std::clamp(m_files->rowCount(), 0, kShownFiles);
    m_list->setMinimumHeight(withLog ? rows * kFileRow : 0);
    m_list->setMaximumHeight(withLog ? rows * kFileRow : QWIDGETSIZE_MAX);
    update();
}

QStringList JobDetails::pathsToReveal() const {
    QStringList paths;
    for (const QModelIndex& index : m_list->selectionModel()->selectedIndexes())
        if (const ActivityFile* file = m_files->file(index.row()))
            paths += file->outputs.isEmpty() ? QStringList{file->source} : file->outputs;
    const ActivityJob* job = m_model.job(m_job);
    return paths.isEmpty() && job ? job->pathsToReveal() : paths;
}

void JobDetails::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const Theme& theme = Theme::instance();
    painter.fillRect(rect(), theme.color(Token::bg1));
    painter.fillRect(QRect(0, kHeadHeight - 1, width(), 1), theme.color(Token::line1));
    if (!m_log->isHidden())
        painter.fillRect(QRect(0, m_log->y() - 1, width(), 1), theme.color(Token::line1));
}

} // namespace clipheave::app
