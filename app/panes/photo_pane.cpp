// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/photo_pane.h"

#include "app/panes/elided_label.h"
#include "app/panes/empty_page.h"
#include "app/panes/foot_note.h"
#include "app/theme/theme.h"
#include "app/widgets/button_look.h"
#include "app/widgets/image_button.h"
#include "app/widgets/token_label.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QScrollArea>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace clipheave::app {

namespace {

constexpr int kPhotoHead = 44, kPhotoFoot = 52, kFootPadding = 8;
constexpr int kNamedTargets = 2;

/// The words of a list: "a", "a and b", "a, b and c".
QString joinedWords(QStringList words) {
    if (words.size() < 2)
        return words.join(QString());
    const QString last = words.takeLast();
    return PhotoPane::tr("%1 and %2").arg(words.join(QStringLiteral(", ")), last);
}

QScrollArea* photoScroll(QWidget* body, QWidget* parent) {
    auto* area = new QScrollArea(parent);
    area->setWidget(body);
    area->setWidgetResizable(true);
    area->viewport()->setAutoFillBackground(false);
    body->setAutoFillBackground(false);
    area->setFrameShape(QFrame::NoFrame);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setFocusPolicy(Qt::NoFocus); // it follows the field that has the focus
    return area;
}

} // namespace

PhotoPane::PhotoPane(SharedFields& shared, QWidget* parent)
    : QWidget(parent), m_view(new PhotoPaneView(shared)), m_stack(new QStackedWidget(this)) {
    setObjectName(QStringLiteral("photoEditView"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    m_head = makeHead();
    column->addWidget(m_head);
    m_stack->addWidget(makeEmpty());
    m_stack->addWidget(photoScroll(m_view, this));
    column->addWidget(m_stack, 1);
    m_foot = makeFoot();
    column->addWidget(m_foot);
    connect(m_view, &PhotoPaneView::fieldEditingBegan, this, &PhotoPane::fieldEditingBegan);
    connect(m_view, &PhotoPaneView::edited, this, &PhotoPane::refreshFoot);
    showNothing();
}

QWidget* PhotoPane::makeHead() {
    auto* head = new QWidget(this);
    head->setFixedHeight(kPhotoHead);
    auto* row = new QHBoxLayout(head);
    row->setContentsMargins(8, 0, 12, 0);
    row->setSpacing(8);
    auto* back =
        new ImageButton(ButtonKind::Flat, tr("Back"), QStringLiteral("chevron-left"), head);
    back->setObjectName(QStringLiteral("editBackBtn"));
    row->addWidget(back);
    auto* kind = new TokenIcon(16, head);
    kind->setIcon(QStringLiteral("image"), Token::kPhoto);
    m_kind = kind;
    row->addWidget(kind);
    m_name = new ElidedLabel(Qt::ElideMiddle, FontRole::BodyStrong, Token::text1, head);
    m_name->setObjectName(QStringLiteral("photoName"));
    row->addWidget(m_name);
    m_more = new TokenLabel({}, FontRole::Body, Token::text3, head);
    row->addWidget(m_more);
    row->addStretch(1);
    m_reveal = new ImageButton(ButtonKind::Icon, tr("Show in file manager"),
                               QStringLiteral("reveal"), head);
    row->addWidget(m_reveal);
    connect(m_reveal, &ImageButton::clicked, this, &PhotoPane::revealRequested);
    return head;
}

QWidget* PhotoPane::makeEmpty() {
    const EmptyPage empty =
        makeEmptyPage(QStringLiteral("image"), tr("No photo selected"), {}, this);
    m_emptyReason = empty.hint;
    return empty.page;
}

QWidget* PhotoPane::makeFoot() {
    auto* foot = new QWidget(this);
    foot->setMinimumHeight(kPhotoFoot);
    auto* row = new QHBoxLayout(foot);
    row->setContentsMargins(16, kFootPadding, 16, kFootPadding);
    row->setSpacing(8);
    auto* list =
        new ImageButton(ButtonKind::Plain, tr("Template"), QStringLiteral("template"), foot);
    list->setObjectName(QStringLiteral("editTemplateBtn"));
    list->setToolTip(tr("Writes a template of the selected photos; right click for more"));
    list->setContextMenuPolicy(Qt::CustomContextMenu);
    row->addWidget(list);
    m_note = new FootNote(foot);
    m_note->setObjectName(QStringLiteral("applyNote"));
    row->addWidget(m_note, 1);
    m_show = new Button(ButtonKind::Flat, tr("Show"), {}, foot);
    m_show->hide();
    row->addWidget(m_show);
    auto* apply = new ImageButton(ButtonKind::Primary, tr("Apply"), QStringLiteral("check"), foot);
    apply->setObjectName(QStringLiteral("editApplyBtn"));
    row->addWidget(apply);
    connect(list, &QWidget::customContextMenuRequested, this,
            [this, list] { Q_EMIT templateMenuRequested(list->menuPosition()); });
    connect(m_show, &Button::clicked, this, &PhotoPane::outputsRequested);
    return foot;
}

bool PhotoPane::showsPhoto() const {
    return m_stack->currentIndex() == 1;
}

void PhotoPane::showNothing(const QString& reason) {
    m_stack->setCurrentIndex(0);
    m_emptyReason->setText(reason.isEmpty() ? tr("Select a photo to edit its metadata") : reason);
    m_name->setWholeText({});
    for (QWidget* part : {m_kind, static_cast<QWidget*>(m_reveal), m_foot})
        part->hide();
    m_more->setText({});
    m_view->show(PhotoContent());
    update();
}

void PhotoPane::showPhoto(const PhotoContent& content) {
    m_name->setWholeText(content.item->fileName);
    for (QWidget* part : {m_kind, static_cast<QWidget*>(m_reveal), m_foot})
        part->show();
    m_view->show(content);
    m_stack->setCurrentIndex(1);
    refreshFoot();
    update();
}

void PhotoPane::setTargets(const PhotoTargets& targets) {
    m_targets = targets;
    const int more = targets.photos + targets.others - 1;
    m_more->setText(more > 0 && showsPhoto() ? tr("and %1 more").arg(more) : QString());
    m_view->setSeveral(targets.several);
    refreshFoot();
}

QString PhotoPane::targetText() const {
    if (!m_targets.names.isEmpty()) {
        QStringList some =
            m_targets.names.first(std::min<qsizetype>(m_targets.names.size(), kNamedTargets));
        if (m_targets.names.size() > some.size())
            some.append(tr("%1 more").arg(m_targets.names.size() - some.size()));
        return joinedWords(some);
    }
    return m_targets.photos == 1 ? tr("1 photo") : tr("%1 photos").arg(m_targets.photos);
}

/// What Apply would write, in whole sentences: what goes into every selected photo, also where
/// nobody typed.
QString PhotoPane::changesText() const {
    QStringList parts;
    parts.append(tr("Every field of %1 goes to copies of %2; empty ones blank theirs")
                     .arg(joinedWords(m_view->changedSections()), targetText()));
    if (const QStringList several = m_view->severalLabels(); !several.isEmpty())
        parts.append(tr("Several values become one: %1").arg(joinedWords(several)));
    if (m_view->flags().cameraInfoChange)
        parts.append(tr("Make and model become the lens, too"));
    return parts.join(u'\n');
}

void PhotoPane::refreshFoot() {
    m_show->hide();
    const Fault fault = m_faultRule && showsPhoto() ? m_faultRule(m_view->texts()) : Fault();
    m_view->setFault(fault.field, fault.reason);
    if (!fault.reason.isEmpty())
        return m_note->setNote(fault.reason, QStringLiteral("alert"), Token::warn);
    QString text = m_view->changedSections().isEmpty()
                       ? (m_targets.photos == 1 ? tr("%1, a copy in the storage folder")
                                                : tr("%1, copies in the storage folder"))
                             .arg(targetText())
                       : changesText();
    if (m_targets.others > 0)
        text += u'\n' + tr("%1 skipped, no photo").arg(m_targets.others);
    m_note->setNote(text);
}

void PhotoPane::showSaving(int done, int total) {
    m_show->hide();
    m_note->setNote(tr("Saving %1 of %2").arg(done).arg(total), QStringLiteral("spinner"),
                    Token::accentText);
}

void PhotoPane::showSaved(int saved, int failed) {
    m_show->setVisible(saved > 0);
    if (failed > 0)
        return m_note->setNote(
            saved == 1 ? tr("Saved 1 copy, %1 failed: see Activity").arg(failed)
                       : tr("Saved %1 copies, %2 failed: see Activity").arg(saved).arg(failed),
            QStringLiteral("fail"), Token::bad);
    m_note->setNote(saved == 1 ? tr("Saved 1 copy") : tr("Saved %1 copies").arg(saved),
                    QStringLiteral("check-circle"), Token::ok);
}

void PhotoPane::showNothingToWrite() {
    m_show->hide();
    m_note->setNote(tr("Nothing to write: no field was changed"), QStringLiteral("info"));
}

QString PhotoPane::footNote() const {
    return m_note->text();
}

void PhotoPane::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const Theme& theme = Theme::instance();
    painter.fillRect(rect(), theme.color(Token::bg1));
    painter.setPen(theme.color(Token::line1));
    painter.drawLine(0, kPhotoHead - 1, width(), kPhotoHead - 1);
    if (m_foot->isHidden())
        return;
    painter.fillRect(m_foot->geometry(), theme.color(Token::bg2));
    painter.drawLine(0, m_foot->y(), width(), m_foot->y());
}

void PhotoPane::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    m_view->setPaneWidth(width());
}

/// Esc in a changed field gives its text back; elsewhere the window takes it.
void PhotoPane::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && m_view->restore(QApplication::focusWidget()))
        return;
    QWidget::keyPressEvent(event);
}

} // namespace clipheave::app
