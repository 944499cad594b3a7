// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/activity/activity_bar.h"

#include "app/activity/activity_model.h"
#include "app/activity/activity_parts.h"
#include "app/widgets/button_look.h"
#include "app/widgets/parts.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>

namespace clipheave::app {

namespace {

constexpr int kArrowSide = 24;

/// "Convert to MP4, 3 of 6 files".
QString runningText(const ActivityJob& job) {
    const QString items = job.itemsText();
    return items.isEmpty() ? job.title : job.title + QLatin1String(", ") + items;
}

void showCount(Chip& chip, Chip::Kind kind, int count, const QString& text,
               const QString& image = {}) {
    chip.set(kind, text.arg(count), image);
    chip.setVisible(count > 0);
}

} // namespace

ActivityBar::ActivityBar(ActivityModel& model, QWidget* parent) : QWidget(parent), m_model(model) {
    setObjectName(QStringLiteral("activityBar"));
    setAccessibleName(tr("Activity"));
    setFixedHeight(kHeight);
    build();
    m_refreshTimer.setSingleShot(true);
    m_refreshTimer.setInterval(1000 / ActivityModel::kRefreshesPerSecond);
    m_messageTimer.setSingleShot(true);
    connect(&m_refreshTimer, &QTimer::timeout, this, &ActivityBar::refresh);
    connect(&m_messageTimer, &QTimer::timeout, this, [this] { showMessage({}); });
    connect(&m_model, &ActivityModel::jobChanged, this, &ActivityBar::refreshSoon);
    connect(&m_model, &ActivityModel::rowsInserted, this, [this] { showMessage({}); });
    connect(&m_model, &ActivityModel::jobEnded, this, &ActivityBar::announceEnd);
    connect(&Theme::instance(), &Theme::changed, this, [this] { update(); });
    refresh();
}

void ActivityBar::build() {
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(8, 1, 12, 0);
    row->setSpacing(12);
    m_arrow = new Button(ButtonKind::Icon, {}, QStringLiteral("chevron-up"), this);
    m_arrow->setObjectName(QStringLiteral("activityArrow"));
    allowLowButton(m_arrow);
    m_arrow->setFixedSize(kArrowSide, kArrowSide);
    m_arrow->setFocusPolicy(Qt::TabFocus);
    connect(m_arrow, &Button::clicked, this, &ActivityBar::toggled);
    auto* title = new ToneLabel(FontRole::Section, Token::text1, this);
    title->setText(tr("Activity"));
    m_indicator = new BusyIndicator(this);
    m_indicator->setObjectName(QStringLiteral("jobProgressor"));
    m_indicator->setAccessibleName(tr("Busy"));
    m_status = new ToneLabel(FontRole::Cell, Token::text2, this);
    m_status->setObjectName(QStringLiteral("jobStatuslab"));
    m_progress = new ThinProgress(this);
    m_progress->setObjectName(QStringLiteral("jobProgress"));
    m_progress->setAccessibleName(tr("Progress"));
    m_running = new Chip(Chip::Kind::Running, {}, this);
    m_running->setObjectName(QStringLiteral("runningChip"));
    m_failed = new Chip(Chip::Kind::Bad, {}, this);
    m_failed->setObjectName(QStringLiteral("failedChip"));
    m_done = new Chip(Chip::Kind::Neutral, {}, this);
    m_done->setObjectName(QStringLiteral("doneChip"));
    m_summary = new ToneLabel(FontRole::Cell, Token::text3, this);
    m_summary->setObjectName(QStringLiteral("listTotal"));
    m_summary->setAlignment(Qt::AlignRight | Qt::AlignVCenter);

    row->addWidget(m_arrow);
    row->addWidget(title);
    auto* status = new QHBoxLayout;
    status->setSpacing(8);
    status->addWidget(m_indicator);
    status->addWidget(m_status);
    row->addLayout(status);
    for (QWidget* widget : {static_cast<QWidget*>(m_progress), static_cast<QWidget*>(m_running),
                            static_cast<QWidget*>(m_failed), static_cast<QWidget*>(m_done)})
        row->addWidget(widget);
    row->addStretch(1);
    row->addWidget(m_summary);
    setOpen(false);
}

void ActivityBar::setListSummary(const QString& summary) {
    m_summary->setText(summary);
}

void ActivityBar::setBusyVisible(bool visible) {
    m_busy = visible;
    refresh();
}

void ActivityBar::showMessage(const QString& text) {
    m_message = text;
    m_messageTimer.stop();
    if (!text.isEmpty())
        m_messageTimer.start(kMessageTime);
    refresh();
}

void ActivityBar::setOpen(bool open) {
    m_arrow->setImage(open ? QStringLiteral("chevron-down") : QStringLiteral("chevron-up"));
    const QString name = open ? tr("Hide Activity") : tr("Show Activity");
    m_arrow->setAccessibleName(name);
    m_arrow->setToolTip(tr("%1 (Ctrl+J)").arg(name));
}

QString ActivityBar::statusText() const {
    return m_status->text();
}

void ActivityBar::refreshSoon() {
    if (!m_refreshTimer.isActive())
        m_refreshTimer.start();
}

void ActivityBar::refresh() {
    m_refreshTimer.stop();
    const ActivityJob* job = m_model.newestRunning();
    // Deliberate: it spins while a worker runs. An export that outlives its worker has its row and
    // the progress bar.
    m_indicator->setVisible(m_busy || m_model.hasWorker());
    m_progress->setVisible(job);
    if (job)
        m_progress->setFraction(job->fraction());
    const bool quiet = !job && m_message.isEmpty();
    m_status->setToken(quiet ? Token::text3 : Token::text2);
    m_status->setText(!m_message.isEmpty() ? m_message
                      : job                ? runningText(*job)
                      : m_busy             ? QString()
                                           : tr("Nothing running"));
    showCount(*m_running, Chip::Kind::Running, m_model.runningCount(), tr("%1 running"));
    showCount(*m_failed, Chip::Kind::Bad, m_model.failedCount(), tr("%1 failed"));
    showCount(*m_done, Chip::Kind::Neutral, m_model.doneCount(), tr("%1 done"),
              QStringLiteral("check"));
}

void ActivityBar::announceEnd(int id) {
    showMessage({});
    const ActivityJob* job = m_model.job(id);
    if (!job)
        return;
    // In the bar's own name: the status text soon shows another job.
    setAccessibleName(tr("Activity. %1: %2").arg(job->title, job->result));
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void ActivityBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), Theme::instance().color(Token::bg0));
    painter.fillRect(QRect(0, 0, width(), 1), Theme::instance().color(Token::line1));
}

void ActivityBar::mousePressEvent(QMouseEvent* event) {
    event->setAccepted(event->button() == Qt::LeftButton);
}

void ActivityBar::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()))
        Q_EMIT toggled();
    else
        QWidget::mouseReleaseEvent(event);
}

} // namespace clipheave::app
