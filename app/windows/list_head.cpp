// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/list_head.h"

#include "app/panes/elided_label.h"
#include "app/widgets/image_button.h"
#include "app/widgets/parts.h"

#include <QHBoxLayout>
#include <QPainter>

namespace clipheave::app {

namespace {

constexpr int kListHeadHeight = 44, kListHeadGap = 8; // px
constexpr QLatin1String kOfAll(" of ");

ImageButton* headButton(const char* name, const QString& label, const char* image,
                        QWidget* parent) {
    auto* button = new ImageButton(ButtonKind::Icon, label, QLatin1String(image), parent);
    button->setObjectName(QLatin1String(name));
    return button;
}

} // namespace

/// "3 selected of 19, 5m:33s": what is selected stands out.
class SummaryLabel : public ElidedLabel {
public:
    explicit SummaryLabel(QWidget* parent)
        : ElidedLabel(Qt::ElideRight, FontRole::Cell, Token::text2, parent) {}

protected:
    void paintEvent(QPaintEvent* event) override {
        const qsizetype lead = text().indexOf(kOfAll);
        QFont strong = font();
        strong.setWeight(QFont::Medium);
        const int width = QFontMetrics(strong).horizontalAdvance(text().left(lead));
        if (lead < 0 || width > this->width())
            return ElidedLabel::paintEvent(event);
        QPainter painter(this);
        const int flags = Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine;
        const QRect rest = rect().adjusted(width, 0, 0, 0);
        painter.setPen(Theme::instance().color(Token::text2));
        painter.drawText(rest, flags,
                         fontMetrics().elidedText(text().mid(lead), Qt::ElideRight, rest.width()));
        painter.setFont(strong);
        painter.setPen(Theme::instance().color(Token::text1));
        painter.drawText(rect(), flags, text().left(lead));
    }
};

/// A warning is never elided: it takes two small lines where one does not fit.
class NoteLabel : public ElidedLabel {
public:
    explicit NoteLabel(QWidget* parent)
        : ElidedLabel(Qt::ElideRight, FontRole::Cell, Token::warn, parent) {
        setSizePolicy(sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
    }

protected:
    void paintEvent(QPaintEvent* event) override {
        if (fontMetrics().horizontalAdvance(text()) <= width())
            return ElidedLabel::paintEvent(event);
        QPainter painter(this);
        painter.setFont(Theme::instance().font(FontRole::Caption));
        painter.setPen(Theme::instance().color(Token::warn));
        painter.drawText(rect(), Qt::AlignVCenter | Qt::AlignLeft | Qt::TextWordWrap, text());
    }
};

ListHead::ListHead(QWidget* parent)
    : QWidget(parent), m_views(new Segment(Segment::Size::Small, this)),
      m_summary(new SummaryLabel(this)), m_sortedNote(new NoteLabel(this)) {
    setObjectName(QStringLiteral("listHead"));
    setFixedHeight(kListHeadHeight);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(16, 0, 12, 0);
    row->setSpacing(kListHeadGap);
    m_views->addPart(tr("List"), QStringLiteral("list"));
    m_views->addPart(tr("Photos"), QStringLiteral("grid"));
    m_views->setCurrentIndex(0);
    m_summary->setObjectName(QStringLiteral("listSummary"));
    m_sortedNote->setObjectName(QStringLiteral("sortedNote"));
    m_sortedNote->setWholeText(tr("Sorted view: jobs follow the import order"));
    m_sortedNote->hide();
    auto* add = headButton("addMediaFileBtn", tr("Add files or folders"), "add", this);
    auto* remove = headButton("removeMediaFileBtn", tr("Remove from the list"), "remove", this);
    connect(add, &ImageButton::clicked, this, &ListHead::addRequested);
    connect(remove, &ImageButton::clicked, this, &ListHead::removeRequested);
    row->addWidget(m_views);
    row->addSpacing(kListHeadGap);
    row->addWidget(m_summary);
    row->addWidget(m_sortedNote);
    row->addStretch(1);
    row->addWidget(add);
    row->addWidget(remove);
}

void ListHead::setSummary(const QString& summary, bool sorted) {
    m_summary->setWholeText(summary);
    m_sortedNote->setVisible(sorted);
    fit();
}

void ListHead::fit() {
    const int room = width() - m_views->sizeHint().width() - 16 - 12 - 2 * 28 - 6 * kListHeadGap;
    const int wanted = m_summary->sizeHint().width() + m_sortedNote->sizeHint().width();
    m_summary->setHidden(!m_sortedNote->isHidden() && wanted > room);
}

void ListHead::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    fit();
}

void ListHead::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const Theme& theme = Theme::instance();
    painter.fillRect(rect(), theme.color(Token::bg1));
    painter.fillRect(QRect(0, height() - 1, width(), 1), theme.color(Token::line1));
}

} // namespace clipheave::app
