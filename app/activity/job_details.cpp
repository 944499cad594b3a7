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
constexpr int kShownFiles = 5;                   // the log gets the rest
constexpr int kLeastTitle = 7, kLeastResult = 3; // a seventh, a third of the width

/// Returns the note without the path of its own file, which the row shows already.
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
        // The reason may take most of the row, or all that a short name leaves: it is why the
        // user reads the row.
        const int besideName =
            row.width() - 24 - 12 - metrics.horizontalAdvance(index.data().toString());
        const QString note =
            metrics.elidedText(index.data(JobFiles::NoteRole).toString(), Qt::ElideRight,
                               std::max(row.width() * 6 / 10, besideName));
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

QString nameOfFile(const QString& path) {
    return platform::displayPath(platform::lastPathComponent(path));
}

/// "1:12 left, 3 of 6 files": the table has the files too.
QString runningSummary(const ActivityJob& job, const QDateTime& now) {
    const QString left = job.timeLeftText(now);
    return left.isEmpty() ? job.itemsText() : left + QLatin1String(", ") + job.itemsText();
}

/// What the file is called now: the result's name once there is one.
QString shownPath(const ActivityFile& file) {
    return file.outputs.isEmpty() ? file.source : file.outputs.first();
}

} // namespace

/// The chosen job's state; spins in step with the others while it runs.
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
        setSpinning(isVisible());
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        paintState(painter, rect(), m_look, !m_timer.isActive());
    }
    void showEvent(QShowEvent*) override { setSpinning(true); }
    void hideEvent(QHideEvent*) override { setSpinning(false); }

private:
    void setSpinning(bool seen) {
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
    m_running = m_ended = 0;
    endResetModel();
    refresh();
}

void JobFiles::resizeRunning(int rows) {
    if (rows > m_running) {
        beginInsertRows({}, m_running, rows - 1);
        m_running = rows;
        endInsertRows();
    } else if (rows < m_running) {
        beginRemoveRows({}, rows, m_running - 1);
        m_running = rows;
        endRemoveRows();
    }
}

void JobFiles::refresh() {
    const ActivityJob* job = m_model.job(m_job);
    const int ended = job ? static_cast<int>(job->files.size()) : 0;
    if (ended < m_ended) { // the job was dropped
        beginResetModel();
        m_running = m_ended = 0;
        endResetModel();
    }
    resizeRunning(job ? static_cast<int>(job->running.size()) : 0);
    if (m_running > 0)
        Q_EMIT dataChanged(index(0), index(m_running - 1));
    if (ended > m_ended) {
        beginInsertRows({}, m_running + m_ended, m_running + ended - 1);
        m_ended = ended;
        endInsertRows();
    }
}

const RunningFile* JobFiles::running(int row) const {
    const ActivityJob* job = m_model.job(m_job);
    const auto place = static_cast<std::size_t>(row);
    return job && row >= 0 && row < m_running && place < job->running.size() ? &job->running[place]
                                                                             : nullptr;
}

const ActivityFile* JobFiles::file(int row) const {
    const ActivityJob* job = m_model.job(m_job);
    const auto place = static_cast<std::size_t>(row - m_running);
    return job && row >= m_running && place < job->files.size() ? &job->files[place] : nullptr;
}

int JobFiles::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : m_running + m_ended;
}

/// A file that is being written cannot be selected: it has no output to reveal yet.
Qt::ItemFlags JobFiles::flags(const QModelIndex& index) const {
    const Qt::ItemFlags flags = QAbstractListModel::flags(index);
    return index.row() < m_running ? flags & ~Qt::ItemIsSelectable : flags;
}

QVariant JobFiles::data(const QModelIndex& index, int role) const {
    if (const RunningFile* writing = running(index.row()))
        return ofRunning(*writing, role);
    const ActivityFile* entry = file(index.row());
    return entry ? ofEnded(*entry, role) : QVariant();
}

QVariant JobFiles::ofRunning(const RunningFile& file, int role) {
    const QString percent = QStringLiteral("%1%").arg(percentOf(file.done));
    switch (role) {
    case Qt::DisplayRole:
        return nameOfFile(file.source);
    case Qt::AccessibleTextRole:
        return QStringList{nameOfFile(file.source), fileStateWord(FileState::Running), percent}
            .join(QLatin1String(", "));
    case Qt::ToolTipRole:
        return platform::displayPath(file.source);
    case NoteRole:
        return percent;
    case StateRole:
        return static_cast<int>(FileState::Running);
    default:
        return {};
    }
}

QVariant JobFiles::ofEnded(const ActivityFile& file, int role) {
    const QString path = shownPath(file);
    switch (role) {
    case Qt::DisplayRole:
        return nameOfFile(path);
    case Qt::AccessibleTextRole:
        return QStringList{nameOfFile(path), fileStateWord(file.state), file.note}.join(
            QLatin1String(", "));
    case Qt::ToolTipRole:
        return file.note.isEmpty() ? platform::displayPath(path)
                                   : platform::displayPath(path) + QLatin1Char('\n') + file.note;
    case NoteRole:
        if (file.note.isEmpty() && file.state != FileState::Done)
            return fileStateWord(file.state);
        return shortNote(file);
    case StateRole:
        return static_cast<int>(file.state);
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
    m_result->setText(!job                              ? tr("No task chosen")
                      : job->state == JobState::Running ? runningSummary(*job, m_model.now())
                                                        : job->result);
    fitHead();
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

/// Where both do not fit, the title gives way first: the table has it too.
void JobDetails::fitHead() {
    m_title->setMinimumWidth(std::min(m_title->sizeHint().width(), width() / kLeastTitle));
    m_result->setMinimumWidth(std::min(m_result->sizeHint().width(), width() / kLeastResult));
}

void JobDetails::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    fitHead();
}

void JobDetails::placeParts() {
    // With a log below, the list is as high as its first files; alone, it fills the side.
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
