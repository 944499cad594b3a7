// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/preferences_window.h"

#include "app/activity/activity_parts.h"
#include "app/theme/theme.h"
#include "app/widgets/button_look.h"
#include "app/widgets/parts.h"
#include "app/windows/stamp_preview.h"

#include <QAction>
#include <QComboBox>
#include <QGridLayout>
#include <QLineEdit>
#include <QPainter>
#include <QVBoxLayout>

namespace clipheave::app {

namespace {

constexpr QSize kPreferencesSize(680, 536);
constexpr int kPrefLabelWidth = 76;

ToneLabel* prefText(const QString& text, FontRole role, Token token, QWidget* parent) {
    auto* label = new ToneLabel(role, token, parent);
    label->setText(text);
    return label;
}

class PrefRule : public QWidget {
public:
    explicit PrefRule(QWidget* parent) : QWidget(parent) { setFixedHeight(1); }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter(this).fillRect(rect(), Theme::instance().color(Token::line1));
    }
};

QComboBox* prefPopUp(const QStringList& titles, const QString& name, QWidget* parent) {
    auto* popUp = new QComboBox(parent);
    popUp->setObjectName(name);
    popUp->addItems(titles);
    popUp->setCurrentIndex(-1);
    popUp->setFixedHeight(28);
    return popUp;
}

} // namespace

/// Shows a colour; a click asks for another.
class ColourWell : public QAbstractButton {
public:
    explicit ColourWell(QWidget* parent) : QAbstractButton(parent) { setFixedSize(64, 28); }

    [[nodiscard]] QColor color() const { return m_color; }
    void setColor(const QColor& color) {
        m_color = color;
        setToolTip(color.name());
        setAccessibleDescription(color.name());
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        const Theme& theme = Theme::instance();
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const bool ring = hasFocus();
        painter.setPen(QPen(theme.color(ring           ? Token::accent
                                        : underMouse() ? Token::line3
                                                       : Token::line2),
                            ring ? 2 : 1));
        painter.setBrush(theme.color(Token::bg3));
        const double inset = ring ? 1 : 0.5;
        painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), 5, 5);
        painter.setPen(Qt::NoPen);
        painter.setBrush(m_color);
        painter.drawRoundedRect(rect().adjusted(4, 4, -4, -4), 3, 3);
    }

private:
    QColor m_color = Qt::white;
};

PreferencesWindow::PreferencesWindow(QWidget* parent) : OwnWindow(tr("Preferences"), parent) {
    setObjectName(QStringLiteral("preferenceWindow"));
    setFixedSize(kPreferencesSize);
    auto* column = new QVBoxLayout(body());
    column->setContentsMargins(16, 20, 16, 20);
    column->setSpacing(0);
    buildStorage(*column);
    buildStamp(*column);
    buildAppearance(*column);
    column->addStretch(1);
    buildFoot();
}

void PreferencesWindow::buildStorage(QLayout& layout) {
    auto& column = static_cast<QVBoxLayout&>(layout);
    auto* heading = prefText(tr("Storage folder"), FontRole::BodyStrong, Token::text1, body());
    heading->setFixedHeight(20);
    m_storagePath = new QLineEdit(body());
    m_storagePath->setObjectName(QStringLiteral("storagePathlab"));
    m_storagePath->setAccessibleName(heading->text());
    m_storagePath->setFont(Theme::instance().font(FontRole::Field));
    m_storagePath->setFixedHeight(32);
    m_storagePath->addAction(themeIcon(QStringLiteral("folder")), QLineEdit::LeadingPosition);
    auto* choose = new Button(ButtonKind::Plain, tr("Choose…"), {}, body());
    choose->setObjectName(QStringLiteral("ChangeStoreLocation"));
    choose->setAccessibleName(tr("Choose the storage folder"));
    connect(choose, &Button::clicked, this, &PreferencesWindow::changeStoreLocation);
    auto* row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(m_storagePath, 1);
    row->addWidget(choose);
    auto* note =
        prefText(tr("Every result is written here. The folder is created when it does not exist."),
                 FontRole::Cell, Token::text3, body());
    note->setFixedHeight(20);
    column.addWidget(heading);
    column.addSpacing(8);
    column.addLayout(row);
    column.addSpacing(6);
    column.addWidget(note);
    column.addSpacing(20);
    column.addWidget(new PrefRule(body()));
    column.addSpacing(20);
}

QLayout* PreferencesWindow::makeFontRow(QWidget* form) {
    m_font = new QLineEdit(form);
    m_font->setObjectName(QStringLiteral("fontlab"));
    m_font->setReadOnly(true);
    m_font->setFocusPolicy(Qt::NoFocus);
    m_font->setFont(Theme::instance().font(FontRole::Field));
    m_font->setFixedHeight(28);
    auto* choose = new Button(ButtonKind::Small, tr("Choose…"), {}, form);
    choose->setObjectName(QStringLiteral("showFontPanelBtn"));
    choose->setAccessibleName(tr("Choose the font"));
    allowLowButton(choose);
    connect(choose, &Button::clicked, this, &PreferencesWindow::showFontPanel);
    auto* row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(m_font, 1);
    row->addWidget(choose);
    return row;
}

QWidget* PreferencesWindow::makeStampForm() {
    auto* form = new QWidget(body());
    auto* grid = new QGridLayout(form);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(0);
    grid->setVerticalSpacing(12);
    m_position = prefPopUp(media::stampPositions(), QStringLiteral("postionBtn"), form);
    m_dateFormat = prefPopUp(media::stampDateFormats(), QStringLiteral("dateFormatBtn"), form);
    QLayout* fontRow = makeFontRow(form);
    m_color = new ColourWell(form);
    m_color->setObjectName(QStringLiteral("fontColorwell"));
    int line = 0;
    const auto addRow = [&](const QString& label, QWidget* control) {
        auto* text = prefText(label, FontRole::Cell, Token::text2, form);
        text->setFixedSize(kPrefLabelWidth, 28);
        control->setAccessibleName(label);
        grid->addWidget(text, line++, 0);
    };
    addRow(tr("Position"), m_position);
    addRow(tr("Format"), m_dateFormat);
    addRow(tr("Font"), m_font);
    addRow(tr("Colour"), m_color);
    grid->addWidget(m_position, 0, 1);
    grid->addWidget(m_dateFormat, 1, 1);
    grid->addLayout(fontRow, 2, 1);
    grid->addWidget(m_color, 3, 1, Qt::AlignLeft);
    grid->setRowStretch(line, 1);
    for (QComboBox* popUp : {m_position, m_dateFormat})
        connect(popUp, &QComboBox::currentIndexChanged, this, &PreferencesWindow::refreshPreview);
    connect(m_color, &QAbstractButton::clicked, this, &PreferencesWindow::showColorPanel);
    return form;
}

void PreferencesWindow::buildStamp(QLayout& layout) {
    auto& column = static_cast<QVBoxLayout&>(layout);
    auto* heading =
        prefText(tr("Date stamp on photos"), FontRole::BodyStrong, Token::text1, body());
    heading->setFixedHeight(20);
    m_preview = new StampPreview(body());
    auto* row = new QHBoxLayout;
    row->setSpacing(24);
    row->addWidget(makeStampForm(), 1);
    row->addWidget(m_preview);
    column.addWidget(heading);
    column.addSpacing(12);
    column.addLayout(row);
    column.addSpacing(20);
    column.addWidget(new PrefRule(body()));
    column.addSpacing(20);
}

void PreferencesWindow::buildAppearance(QLayout& layout) {
    auto* label = prefText(tr("Appearance"), FontRole::BodyStrong, Token::text1, body());
    m_appearance = new Segment(Segment::Size::Small, body());
    m_appearance->setObjectName(QStringLiteral("appearanceSegment"));
    m_appearance->setAccessibleName(label->text());
    // In the order of Appearance.
    for (const QString& part : {tr("Follow system"), tr("Dark"), tr("Light")})
        m_appearance->addPart(part);
    connect(m_appearance, &Segment::currentChanged, this, &PreferencesWindow::appearanceChosen);
    auto* row = new QHBoxLayout;
    row->setSpacing(16);
    row->addWidget(label);
    row->addWidget(m_appearance);
    row->addStretch(1);
    static_cast<QVBoxLayout&>(layout).addLayout(row);
}

void PreferencesWindow::buildFoot() {
    auto* cancelButton = new Button(ButtonKind::Plain, tr("Cancel"), {}, this);
    cancelButton->setObjectName(QStringLiteral("CancelPreferenceSetting"));
    auto* saveButton = new Button(ButtonKind::Primary, tr("Save"), {}, this);
    saveButton->setObjectName(QStringLiteral("ResetPreferenceSetting"));
    saveButton->setDefault(true);
    connect(cancelButton, &Button::clicked, this, &PreferencesWindow::reject);
    connect(saveButton, &Button::clicked, this, &PreferencesWindow::save);
    foot()->addWidget(cancelButton);
    foot()->addWidget(saveButton);
}

void PreferencesWindow::show(const media::Preferences& preferences, const QColor& fontColor) {
    setStoragePath(preferences.storagelocation);
    // Deliberate: "lower left corner", the stored default, is none of the titles and chooses
    // nothing, so that the pop-up never claims what is not stored; it shows the stored text.
    m_position->setPlaceholderText(preferences.position);
    m_position->setCurrentIndex(
        static_cast<int>(media::stampPositions().indexOf(preferences.position)));
    m_dateFormat->setCurrentIndex(
        static_cast<int>(media::stampDateFormats().indexOf(preferences.dateFormat)));
    m_font->setText(preferences.fontLabel);
    m_preview->setStampFont(preferences.currentFontname, preferences.currentFontSize);
    setStampColor(fontColor);
    refreshPreview();
}

void PreferencesWindow::present() {
    m_appearance->setCurrentIndex(static_cast<int>(Theme::instance().appearance()));
    QDialog::show();
    raise();
    activateWindow();
    m_storagePath->setFocus(Qt::OtherFocusReason);
}

QString PreferencesWindow::storagePath() const {
    return m_storagePath->text();
}

void PreferencesWindow::setStoragePath(const QString& folder) {
    m_storagePath->setText(folder);
    m_storagePath->setCursorPosition(0);
}

QString PreferencesWindow::position() const {
    return m_position->currentText();
}

QString PreferencesWindow::dateFormat() const {
    return m_dateFormat->currentText();
}

QString PreferencesWindow::fontLabel() const {
    return m_font->text();
}

void PreferencesWindow::setStampFont(const QString& family, int size) {
    m_font->setText(QStringLiteral("%1 %2").arg(family).arg(size));
    m_preview->setStampFont(family, size);
}

QColor PreferencesWindow::fontColor() const {
    return m_color->color();
}

void PreferencesWindow::setStampColor(const QColor& color) {
    m_color->setColor(color);
    m_preview->setStampColor(color);
}

void PreferencesWindow::refreshPreview() {
    m_preview->setStamp(position(), dateFormat());
}

void PreferencesWindow::reject() {
    OwnWindow::reject();
    Q_EMIT cancel();
}

} // namespace clipheave::app
