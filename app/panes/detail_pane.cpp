// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/detail_pane.h"

#include "app/panes/artwork_well.h"
#include "app/panes/audio_pane_view.h"
#include "app/panes/elided_label.h"
#include "app/panes/empty_page.h"
#include "app/panes/player_view.h"
#include "app/panes/shared_fields.h"
#include "app/theme/theme.h"
#include "app/widgets/image_button.h"
#include "app/widgets/token_label.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QPainter>
#include <QScrollArea>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <climits>

namespace clipheave::app {

namespace {

constexpr int kPaneHead = 44, kPaneFoot = 52;
constexpr int kNoteLines = 2;
constexpr int kMostNotedNames = 3, kShortName = 24, kMostTipNames = 30;
enum PaneIndex { kEmptyPane, kVideoPane, kAudioPane };

/// The middle gives way, so that the extension stays.
QString shortened(const QString& name, int length) {
    return name.size() <= length
               ? name
               : name.left(length / 2) + QChar(0x2026) + name.right(length - length / 2 - 1);
}

/// "a.mp4, b.mov and 3 more"
QString someNames(const QStringList& names, qsizetype shown, int length) {
    QStringList some;
    for (const QString& name : names.first(shown))
        some.append(shortened(name, length));
    const QString last = names.size() > shown ? DetailPane::tr("%1 more").arg(names.size() - shown)
                                              : some.takeLast();
    return some.isEmpty() ? last
                          : DetailPane::tr("%1 and %2").arg(some.join(QStringLiteral(", ")), last);
}

} // namespace

DetailPane::DetailPane(QWidget* parent)
    : QWidget(parent), m_stack(new QStackedWidget(this)), m_shared(new SharedFields(this)),
      m_video(new VideoPaneView), m_audio(new AudioPaneView(*m_shared)) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(makeHead());
    m_stack->addWidget(makeEmpty());
    m_stack->addWidget(scrolled(m_video));
    m_stack->addWidget(scrolled(m_audio));
    column->addWidget(m_stack, 1);
    m_foot = makeFoot();
    column->addWidget(m_foot);
    connect(m_video, &VideoPaneView::fieldEditingBegan, this, &DetailPane::fieldEditingBegan);
    connect(m_audio, &AudioPaneView::fieldEditingBegan, this, &DetailPane::fieldEditingBegan);
    for (const ArtworkWell* well : findChildren<ArtworkWell*>()) {
        connect(well, &ArtworkWell::openRequested, this, &DetailPane::artworkRequested);
        connect(well, &ArtworkWell::pasteRequested, this, &DetailPane::pasteRequested);
    }
    connect(m_video, &VideoPaneView::durationKnown, this, &DetailPane::durationKnown);
    showNothing();
    setTouchedCount(1);
}

QScrollArea* DetailPane::scrolled(QWidget* body) {
    auto* area = new QScrollArea(this);
    area->setWidget(body);
    area->setWidgetResizable(true);
    // The pane paints the background of all its parts.
    area->viewport()->setAutoFillBackground(false);
    body->setAutoFillBackground(false);
    area->setFrameShape(QFrame::NoFrame);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setFocusPolicy(Qt::NoFocus); // it follows the field that has the focus
    return area;
}

QWidget* DetailPane::makeHead() {
    auto* head = new QWidget(this);
    head->setFixedHeight(kPaneHead);
    auto* row = new QHBoxLayout(head);
    row->setContentsMargins(16, 0, 12, 0);
    row->setSpacing(8);
    m_kind = new TokenIcon(16, head);
    m_name = new ElidedLabel(Qt::ElideMiddle, FontRole::BodyStrong, Token::text1, head);
    m_name->setObjectName(QStringLiteral("detailName"));
    m_reveal = new ImageButton(ButtonKind::Icon, tr("Show in file manager"),
                               QStringLiteral("reveal"), head);
    m_more = new ImageButton(ButtonKind::Icon, tr("More"), QStringLiteral("more"), head);
    row->addWidget(m_kind);
    row->addWidget(m_name, 1);
    row->addWidget(m_reveal);
    row->addWidget(m_more);
    connect(m_reveal, &ImageButton::clicked, this, &DetailPane::revealRequested);
    connect(m_more, &ImageButton::clicked, this,
            [this] { Q_EMIT moreRequested(m_more->menuPosition()); });
    return head;
}

QWidget* DetailPane::makeEmpty() {
    return makeEmptyPage(QStringLiteral("film"), tr("Nothing selected"),
                         tr("Select a file to play it and edit its tags"), this)
        .page;
}

QWidget* DetailPane::makeFoot() {
    auto* foot = new QWidget(this);
    foot->setFixedHeight(kPaneFoot);
    auto* row = new QHBoxLayout(foot);
    row->setContentsMargins(16, 0, 16, 0);
    row->setSpacing(8);
    auto* info = new TokenIcon(16, foot);
    info->setIcon(QStringLiteral("info"), Token::text3);
    row->addWidget(info);
    m_note = new TokenLabel({}, FontRole::Cell, Token::text2, foot);
    m_note->setObjectName(QStringLiteral("saveNote"));
    m_note->setWordWrap(true);            // two lines in a narrow pane
    m_note->setTextFormat(Qt::PlainText); // names of files
    m_note->installEventFilter(this);
    row->addWidget(m_note, 1);
    auto* save =
        new ImageButton(ButtonKind::Primary, tr("Save Changes"), QStringLiteral("check"), foot);
    save->setObjectName(QStringLiteral("SaveMediaChangesBtn"));
    row->addWidget(save);
    return foot;
}

void DetailPane::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const Theme& theme = Theme::instance();
    painter.fillRect(rect(), theme.color(Token::bg1));
    if (!m_foot->isHidden())
        painter.fillRect(m_foot->geometry(), theme.color(Token::bg2));
    painter.setPen(theme.color(Token::line1));
    painter.drawLine(0, kPaneHead - 1, width(), kPaneHead - 1);
    if (!m_foot->isHidden())
        painter.drawLine(0, m_foot->y(), width(), m_foot->y());
}

void DetailPane::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    m_video->setPaneWidth(width());
    m_audio->setPaneWidth(width());
}

bool DetailPane::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_note && event->type() == QEvent::Resize)
        refreshNote();
    return QWidget::eventFilter(watched, event);
}

void DetailPane::setHead(const QString& name, const QString& icon, Token token) {
    m_name->setWholeText(name);
    m_kind->setIcon(icon, token);
    const bool some = !name.isEmpty();
    for (QWidget* part : {static_cast<QWidget*>(m_kind), static_cast<QWidget*>(m_reveal),
                          static_cast<QWidget*>(m_more), m_foot})
        if (part)
            part->setVisible(some);
}

void DetailPane::showNothing() {
    setHead({}, {}, Token::text2);
    m_stack->setCurrentIndex(kEmptyPane);
    m_video->clear();
    m_audio->player()->clear();
}

void DetailPane::showVideo(const media::IKImageItem& item, const media::VideoPane& pane) {
    setHead(item.fileName, QStringLiteral("film"), Token::kVideo);
    m_audio->player()->clear();
    m_video->show(item, pane);
    m_stack->setCurrentIndex(kVideoPane);
}

void DetailPane::showAudio(const media::IKImageItem& item, const media::AudioPane& pane) {
    setHead(item.fileName, QStringLiteral("music"), Token::kAudio);
    m_video->player()->clear();
    m_audio->show(item, pane);
    m_stack->setCurrentIndex(kAudioPane);
}

media::AudioPane DetailPane::audioPane() const {
    return m_audio->pane();
}

void DetailPane::setArtwork(const platform::EncodedImage& image) {
    if (m_stack->currentIndex() == kAudioPane)
        m_audio->setArtwork(image);
    else
        m_video->setArtwork(image);
}

void DetailPane::pasteArtwork(const QMimeData* copied) {
    if (auto* well = m_stack->currentWidget()->findChild<ArtworkWell*>())
        well->take(copied);
}

void DetailPane::setTouchedCount(int count) {
    m_touchedNames.clear();
    m_note->setToolTip({});
    m_note->setText(
        count > 1
            ? tr("Writes to all %1 selected files, as copies in the storage folder").arg(count)
            : tr("Saves a copy in the storage folder; the original is not changed"));
}

void DetailPane::setTouchedNames(const QStringList& names, bool sorted) {
    setTouchedCount(static_cast<int>(names.size()));
    if (!sorted || names.isEmpty())
        return;
    m_touchedNames = names;
    QStringList tip = names.first(std::min<qsizetype>(names.size(), kMostTipNames));
    if (names.size() > tip.size())
        tip.append(tr("and %1 more").arg(names.size() - tip.size()));
    m_note->setToolTip(
        QStringLiteral("<p style='white-space:pre'>%1</p>").arg(tip.join(u'\n').toHtmlEscaped()));
    refreshNote();
}

/// As many names as two lines hold; where not even one short one fits, it is cut further.
void DetailPane::refreshNote() {
    if (m_touchedNames.isEmpty())
        return;
    const QFontMetrics metrics = m_note->fontMetrics();
    const auto fits = [&](const QString& text) {
        const QRect room(0, 0, std::max(m_note->width() - 2, 1), 1000);
        const QRect needed = metrics.boundingRect(room, Qt::TextWordWrap, text);
        return needed.width() <= room.width() &&
               needed.height() <= kNoteLines * metrics.lineSpacing();
    };
    const auto most = std::min<qsizetype>(m_touchedNames.size(), kMostNotedNames);
    QString text;
    for (const int length : {INT_MAX, kShortName, kShortName / 2})
        for (qsizetype shown = most; shown > 0; --shown) {
            const QString names = someNames(m_touchedNames, shown, length);
            text = m_touchedNames.size() > 1
                       ? tr("Writes to %1, as copies in the storage folder").arg(names)
                       : tr("Writes to %1, as a copy in the storage folder").arg(names);
            if (fits(text))
                return m_note->setText(text);
        }
    m_note->setText(text);
}

QString DetailPane::footNote() const {
    return m_note->text();
}

} // namespace clipheave::app
