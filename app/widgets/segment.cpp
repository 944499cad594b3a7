// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/widgets/parts.h"

#include "app/widgets/button_look.h"
#include "app/widgets/image_button.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPainter>

#include <algorithm>

namespace clipheave::app {
namespace {

constexpr int kStorageHeight = 40;
constexpr int kStoragePadding = 12;
constexpr int kStorageImage = 16;
constexpr int kStorageGap = 10;
constexpr int kStorageWidest = 220; ///< of the folder's name

QString storageCaption() {
    return QObject::tr("Storage folder");
}

QFont storageNameFont() {
    QFont font = Theme::instance().font(FontRole::Cell);
    font.setWeight(QFont::Medium);
    return font;
}

} // namespace

Segment::Segment(Size size, QWidget* parent) : QWidget(parent), m_size(size) {
    m_layout = new QHBoxLayout(this);
    m_layout->setContentsMargins(3, 3, 3, 3); // 1 of outline, 2 of padding
    m_layout->setSpacing(0);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    connect(&Theme::instance(), &Theme::changed, this, [this] { update(); });
}

ImageButton* Segment::addPart(const QString& label, const QString& image,
                              const QString& objectName) {
    const auto kind = m_size == Size::Small ? ButtonKind::SmallSegment : ButtonKind::Segment;
    auto* part = new ImageButton(kind, label, image, this);
    part->setObjectName(objectName);
    part->setCheckable(true);
    const int index = count();
    m_parts.append(part);
    m_layout->addWidget(part);
    connect(part, &QAbstractButton::clicked, this, [this, index] { choose(index); });
    if (m_current < 0)
        setCurrentIndex(0);
    return part;
}

ImageButton* Segment::part(int index) const {
    return m_parts.value(index, nullptr);
}

int Segment::count() const {
    return static_cast<int>(m_parts.size());
}

void Segment::setCurrentIndex(int index) {
    m_current = index;
    for (int i = 0; i < count(); ++i)
        m_parts.at(i)->setChecked(i == index);
}

void Segment::choose(int index) {
    const bool changes = m_switchesItself && index != m_current;
    setCurrentIndex(changes ? index : m_current); // undoes what the click did to the part itself
    if (changes)
        Q_EMIT currentChanged(index);
}

void Segment::keyPressEvent(QKeyEvent* event) {
    const int step = event->key() == Qt::Key_Right ? 1 : event->key() == Qt::Key_Left ? -1 : 0;
    int focused = -1;
    for (int i = 0; i < count(); ++i)
        if (m_parts.at(i)->hasFocus())
            focused = i;
    if (step == 0 || focused < 0)
        return QWidget::keyPressEvent(event);
    const int next = std::clamp(focused + step, 0, count() - 1);
    m_parts.at(next)->setFocus(Qt::TabFocusReason);
}

void Segment::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Theme& theme = Theme::instance();
    painter.setPen(theme.color(Token::line1));
    painter.setBrush(theme.color(theme.isDark() ? Token::bg3 : Token::bg4));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 8, 8);
}

StorageChip::StorageChip(QWidget* parent) : QAbstractButton(parent) {
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::TabFocus);
    setContextMenuPolicy(Qt::CustomContextMenu);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setAccessibleName(storageCaption());
    connect(&Theme::instance(), &Theme::changed, this, [this] {
        updateGeometry();
        update();
    });
}

void StorageChip::setPath(const QString& path) {
    m_path = path;
    setToolTip(path);
    setAccessibleDescription(path);
    const QString name = QFileInfo(path).fileName();
    setText(name.isEmpty() ? path : name);
    updateGeometry();
    update();
}

QSize StorageChip::sizeHint() const {
    const int caption =
        QFontMetrics(Theme::instance().font(FontRole::Caption)).horizontalAdvance(storageCaption());
    const int name = QFontMetrics(storageNameFont()).horizontalAdvance(text());
    const int width = std::max(caption, std::min(name, kStorageWidest)) + 2;
    return {width + 2 * kStoragePadding + kStorageImage + kStorageGap, kStorageHeight};
}

QSize StorageChip::minimumSizeHint() const {
    // A larger font leaves no room for the text beside the tools in the smallest window.
    constexpr double kTightScale = 1.1;
    const int caption =
        QFontMetrics(Theme::instance().font(FontRole::Caption)).horizontalAdvance(storageCaption());
    const int text = Theme::instance().fontScale() > kTightScale ? kStorageImage : caption + 2;
    return {2 * kStoragePadding + text, kStorageHeight};
}

void StorageChip::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Theme& theme = Theme::instance();
    painter.setPen(hasFocus() ? QPen(theme.color(Token::accent), 2)
                              : QPen(theme.color(underMouse() ? Token::line2 : Token::line1), 1));
    painter.setBrush(theme.color(isDown() ? Token::bg4 : underMouse() ? Token::bg3 : Token::bg1));
    const double inset = hasFocus() ? 1 : 0.5;
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), 8, 8);
    // Where the tools leave too little room, the text is worth more than the image, but not a
    // text of a few letters.
    const QFontMetrics caption(theme.font(FontRole::Caption));
    const int captionWidth = caption.horizontalAdvance(storageCaption());
    int left = kStoragePadding + kStorageImage + kStorageGap;
    const bool noText = width() - 2 * kStoragePadding < captionWidth * 2 / 3;
    if (!noText && width() - left - kStoragePadding + 2 < captionWidth)
        left = kStoragePadding;
    else
        painter.drawPixmap(
            QRect(kStoragePadding, (height() - kStorageImage) / 2, kStorageImage, kStorageImage),
            themePixmap(QStringLiteral("folder"), kStorageImage, theme.color(Token::text2),
                        devicePixelRatioF()));
    if (noText)
        return;
    const QRect line(left, 5, width() - left - kStoragePadding + 2, 14);
    painter.setFont(theme.font(FontRole::Caption));
    painter.setPen(theme.color(Token::text3));
    painter.drawText(line, Qt::AlignVCenter | Qt::AlignLeft,
                     caption.elidedText(storageCaption(), Qt::ElideRight, line.width()));
    painter.setFont(storageNameFont());
    painter.setPen(theme.color(Token::text1));
    const QRect below = line.adjusted(0, 15, 0, 17);
    painter.drawText(
        below, Qt::AlignVCenter | Qt::AlignLeft,
        QFontMetrics(storageNameFont()).elidedText(text(), Qt::ElideMiddle, below.width()));
}

} // namespace clipheave::app
