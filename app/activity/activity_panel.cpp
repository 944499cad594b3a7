// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/activity/activity_panel.h"

#include "app/activity/activity_model.h"
#include "app/activity/activity_parts.h"
#include "app/activity/job_details.h"
#include "app/activity/job_table.h"
#include "app/activity/log_view.h"
#include "app/widgets/button_look.h"
#include "app/widgets/image_button.h"
#include "app/widgets/parts.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace clipheave::app {

namespace {

constexpr int kHeadHeight = 40;
constexpr int kLeastDetails = 340, kUsualDetails = 460;

QString countText(const QString& label, int count) {
    return count > 0 ? QStringLiteral("%1 %2").arg(label).arg(count) : label;
}

/// The head of the left side has a line below it.
class JobsHead : public QWidget {
public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.fillRect(QRect(0, height() - 1, width(), 1), Theme::instance().color(Token::line1));
    }
};

} // namespace

ActivityPanel::ActivityPanel(ActivityModel& model, QWidget* parent)
    : QWidget(parent), m_model(model), m_filter(new JobFilter(model, this)) {
    setObjectName(QStringLiteral("activityPanel"));
    setAccessibleName(tr("Activity"));
    m_body = new QWidget(this);
    auto* row = new QHBoxLayout(m_body);
    row->setContentsMargins(0, 1, 0, 0);
    row->setSpacing(1);
    row->addWidget(makeJobs(), 1);
    m_details = new JobDetails(model, m_body);
    row->addWidget(m_details);
    m_slide.setDuration(kSlideTime);
    connect(&m_slide, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& value) { slideTo(value.toInt()); });
    m_refreshTimer.setSingleShot(true);
    m_refreshTimer.setInterval(1000 / ActivityModel::kRefreshesPerSecond);
    connectModel();
    slideTo(0);
    refresh();
}

QWidget* ActivityPanel::makeJobs() {
    auto* jobs = new QWidget(m_body);
    auto* column = new QVBoxLayout(jobs);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    auto* head = new JobsHead(jobs);
    head->setFixedHeight(kHeadHeight);
    auto* row = new QHBoxLayout(head);
    row->setContentsMargins(16, 0, 12, 0);
    m_segment = new Segment(Segment::Size::Small, head);
    m_segment->setObjectName(QStringLiteral("activitySegment"));
    for (const QString& label : {tr("All"), tr("Running"), tr("Failed"), tr("Log")})
        m_segment->addPart(label);
    m_segment->setCurrentIndex(All);
    m_clear = new Button(ButtonKind::Flat, tr("Clear Finished"), {}, head);
    m_clear->setObjectName(QStringLiteral("clearFinishedBtn"));
    row->addWidget(m_segment);
    row->addStretch(1);
    row->addWidget(m_clear);
    m_stack = new QStackedWidget(jobs);
    m_table = new JobTable(m_model, *m_filter, m_stack);
    m_log = new LogView([this] { return &m_model.log(); }, m_stack);
    m_log->setObjectName(QStringLiteral("activityLog"));
    m_log->setAccessibleName(tr("Log"));
    m_stack->addWidget(m_table);
    m_stack->addWidget(m_log);
    column->addWidget(head);
    column->addWidget(m_stack, 1);
    connect(m_segment, &Segment::currentChanged, this, [this] { show(shown()); });
    connect(m_clear, &Button::clicked, &m_model, &ActivityModel::clearFinished);
    return jobs;
}

void ActivityPanel::connectModel() {
    connect(&m_refreshTimer, &QTimer::timeout, this, &ActivityPanel::refresh);
    connect(&m_model, &ActivityModel::jobChanged, this, &ActivityPanel::refreshSoon);
    connect(&m_model, &ActivityModel::logAdded, this, &ActivityPanel::refreshSoon);
    connect(&m_model, &ActivityModel::firstFailure, this, &ActivityPanel::openOnFailure);
    connect(m_table, &JobTable::jobChosen, m_details, &JobDetails::showJob);
    connect(m_details, &JobDetails::revealRequested, this, &ActivityPanel::revealRequested);
    for (const LogView* log : findChildren<LogView*>())
        connect(log, &LogView::copyRequested, this, &ActivityPanel::copyRequested);
    connect(&Theme::instance(), &Theme::changed, this, [this] {
        update();
        refreshSoon();
    });
}

ActivityPanel::Show ActivityPanel::shown() const {
    return static_cast<Show>(std::max(0, m_segment->currentIndex()));
}

void ActivityPanel::show(Show what) {
    static constexpr JobFilter::Pass kPasses[] = {JobFilter::Pass::All, JobFilter::Pass::Running,
                                                  JobFilter::Pass::Failed};
    m_segment->setCurrentIndex(what);
    m_stack->setCurrentIndex(what == Log ? 1 : 0);
    m_details->setVisible(what != Log); // lines are long: they get the whole width
    m_clear->setVisible(what != Log);
    if (what != Log) {
        m_filter->setPass(kPasses[what]);
        m_details->showJob(m_table->chosenJob());
    }
    refresh();
}

int ActivityPanel::chosenJob() const {
    return m_table->chosenJob();
}

void ActivityPanel::chooseJob(int job) {
    m_table->chooseJob(job);
}

void ActivityPanel::setOpen(bool open) {
    if (open == m_open)
        return;
    m_open = open;
    m_slide.stop();
    if (open) {
        if (!chosenJob() && !m_model.jobs().empty())
            chooseJob(m_model.jobs().front().id);
        refresh();
    }
    if (isVisible() || (open && parentWidget() && parentWidget()->isVisible())) {
        if (animationsEnabled(this)) {
            m_slide.setStartValue(isHidden() ? 0 : height());
            m_slide.setEndValue(open ? kHeight : 0);
            m_slide.start();
            Q_EMIT openChanged(open);
            return;
        }
    }
    slideTo(open ? kHeight : 0);
    Q_EMIT openChanged(open);
}

void ActivityPanel::slideTo(int height) {
    setFixedHeight(height);
    setVisible(height > 0);
}

void ActivityPanel::openOnFailure(int job) {
    if (m_open)
        return;
    show(All);
    chooseJob(job);
    setOpen(true);
}

void ActivityPanel::refreshSoon() {
    if (!m_refreshTimer.isActive())
        m_refreshTimer.start();
}

void ActivityPanel::refresh() {
    m_refreshTimer.stop();
    refreshCounts();
    m_table->refreshTicking();
    if (!m_open)
        return; // the rest is hidden; opening refreshes it
    if (shown() == Log)
        m_log->refresh(m_model.linesLogged(), 0);
    else
        m_details->refresh();
}

void ActivityPanel::refreshCounts() {
    const int all = static_cast<int>(m_model.jobs().size());
    const std::pair<QString, int> parts[] = {{tr("All"), all},
                                             {tr("Running"), m_model.runningCount()},
                                             {tr("Failed"), m_model.failedCount()}};
    int index = 0;
    for (const auto& [label, count] : parts) {
        ImageButton* part = m_segment->part(index++);
        const QString text = countText(label, count);
        if (part->text() == text)
            continue;
        part->setText(text);
        part->setAccessibleName(text);
        part->updateGeometry();
    }
    m_clear->setEnabled(all > m_model.runningCount());
}

void ActivityPanel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), Theme::instance().color(Token::bg1));
    painter.fillRect(QRect(0, 0, width(), 1), Theme::instance().color(Token::line1));
    if (!m_details->isHidden())
        painter.fillRect(QRect(m_details->x() - 1, 0, 1, height()),
                         Theme::instance().color(Token::line1));
}

void ActivityPanel::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    m_details->setFixedWidth(
        std::clamp(width() * kUsualDetails / 1440, kLeastDetails, kUsualDetails));
    m_body->setGeometry(0, 0, width(), kHeight);
}

} // namespace clipheave::app
