// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/rename_window.h"

#include "app/theme/theme.h"
#include "app/widgets/button_look.h"
#include "app/widgets/parts.h"
#include "app/windows/rename_preview.h"
#include "app/windows/template_field.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QGridLayout>
#include <QRadioButton>
#include <QVBoxLayout>

namespace clipheave::app {

namespace {

constexpr QSize kRenameSize(856, 600);
constexpr int kCustomFieldWidth = 400;
constexpr int kBelowRadio = 24; // px: what belongs to a radio button stands under its text

QRadioButton* renameRadio(const QString& text, const char* name, QWidget* parent) {
    auto* radio = new QRadioButton(text, parent);
    radio->setObjectName(QLatin1String(name));
    radio->setAccessibleName(text);
    radio->setMinimumHeight(20);
    return radio;
}

QCheckBox* renameCheck(const QString& text, const char* name, QWidget* parent) {
    auto* check = new QCheckBox(text, parent);
    check->setObjectName(QLatin1String(name));
    check->setAccessibleName(text);
    check->setMinimumHeight(20);
    return check;
}

QComboBox* renamePopUp(const QStringList& titles, const char* name, const QString& label,
                       QWidget* parent) {
    auto* popUp = new QComboBox(parent);
    popUp->setObjectName(QLatin1String(name));
    popUp->setAccessibleName(label);
    popUp->addItems(titles);
    popUp->setMaxVisibleItems(static_cast<int>(titles.size()));
    popUp->setMinimumContentsLength(1); // a long title gives way
    popUp->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    popUp->setFixedHeight(28);
    return popUp;
}

QVBoxLayout* cardColumn(Card& card) {
    auto* column = new QVBoxLayout(&card);
    column->setContentsMargins(16, 12, 16, 12);
    column->setSpacing(8);
    return column;
}

} // namespace

RenameWindow::RenameWindow(QWidget* parent) : OwnWindow(tr("Rename"), parent) {
    setObjectName(QStringLiteral("renameWindow"));
    const Theme& theme = Theme::instance();
    setFixedSize(theme.scaled(kRenameSize.width()), theme.scaled(kRenameSize.height()));
    auto* column = new QVBoxLayout(body());
    column->setContentsMargins(16, 16, 16, 16);
    column->setSpacing(12);
    buildCustomCard(*column);
    buildMetadataCard(*column);
    buildPreview(*column);
    buildFoot();
    connectControls();
    chooseCard();
}

void RenameWindow::buildCustomCard(QLayout& layout) {
    m_customCard = new Card(body());
    m_customBody = new QWidget(m_customCard);
    auto* radio = renameRadio(tr("Rename media(s) by replacing filenames with custom text:"),
                              "customerFileNameBtn", m_customCard);
    auto* name = new QLineEdit(m_customBody);
    name->setObjectName(QStringLiteral("customNamelab"));
    name->setAccessibleName(tr("Custom text"));
    name->setFont(Theme::instance().font(FontRole::Field));
    name->setFixedHeight(28);
    name->setFixedWidth(Theme::instance().scaled(kCustomFieldWidth));
    auto* number = renameCheck(tr("Start number at: 1"), "checkStartNumber", m_customBody);
    auto* row = new QHBoxLayout(m_customBody);
    row->setContentsMargins(kBelowRadio, 0, 0, 0);
    row->setSpacing(16);
    row->addWidget(name);
    row->addWidget(number);
    row->addStretch(1);
    auto* column = cardColumn(*m_customCard);
    column->addWidget(radio);
    column->addWidget(m_customBody);
    layout.addWidget(m_customCard);
    m_controls.customerFileNameBtn = radio;
    m_controls.customNamelab = name;
    m_controls.checkStartNumber = number;
}

void RenameWindow::buildMetadataCard(QLayout& layout) {
    m_metadataCard = new Card(body());
    m_metadataBody = new QWidget(m_metadataCard);
    auto* radio = renameRadio(tr("Rename media(s) with media metadata tag(s):"), "metaFileNameBtn",
                              m_metadataCard);
    auto* field = new TemplateField(m_metadataBody);
    field->setObjectName(QStringLiteral("filenameFormatstrlab"));
    field->setAccessibleName(tr("Template of the file names"));
    field->setText(batch::RenameRequest().filenameFormatstrlab);
    m_controls.metaFileNameBtn = radio;
    m_controls.filenameFormatstrlab = field;
    auto* parts = new QVBoxLayout(m_metadataBody);
    parts->setContentsMargins(kBelowRadio, 0, 0, 0);
    parts->setSpacing(8);
    parts->addWidget(field);
    parts->addLayout(makeTagGrid());
    auto* column = cardColumn(*m_metadataCard);
    column->addWidget(radio);
    column->addWidget(m_metadataBody);
    layout.addWidget(m_metadataCard);
}

QGridLayout* RenameWindow::makeTagGrid() {
    RenameControls& all = m_controls;
    QWidget* parent = m_metadataBody;
    all.addTagsButton =
        renamePopUp(batch::addTagsTitles(), "addTagsButton", tr("Insert a metadata tag"), parent);
    all.addTagsButton->setCurrentIndex(all.addTagsButton->count() - 1);
    all.tagpostionButton =
        renamePopUp(batch::tagPositionTitles(), "tagpostionButton", tr("Where a tag goes"), parent);
    all.renameDateFormatBtn = renamePopUp(batch::renameDateFormatTitles(), "renameDateFormatBtn",
                                          tr("Layout of the camera date"), parent);
    all.renameDateFormatBtn->setEnabled(false);
    all.keepFileNameBtn =
        renameCheck(tr("Keep existing file name text"), "keepFileNameBtn", parent);
    all.keepFileNameBtn->setChecked(true);
    all.seqNumBtn = renameCheck(tr("Start number at: 1"), "seqNumBtn", parent);
    // Deliberate: this box changes nothing. The characters that a template may not keep are left
    // out, whether it is on or off, and no "_" takes their place; the table of new names shows it.
    all.replaceInvaidStrBtn =
        renameCheck(tr("Replace invalid characters with _"), "replaceInvaidStrBtn", parent);
    all.replaceInvaidStrBtn->setToolTip(
        tr("Braces, brackets, commas and slashes are left out of the names in any case"));
    all.AddSuffixStrBtn = renameCheck(tr("Add suffix"), "AddSuffixStrBtn", parent);
    all.AddSuffixStrBtn->hide();
    auto* grid = new QGridLayout;
    grid->setSpacing(8);
    grid->addWidget(all.addTagsButton, 0, 0);
    grid->addWidget(all.tagpostionButton, 0, 1);
    grid->addWidget(all.renameDateFormatBtn, 0, 2);
    grid->addWidget(all.keepFileNameBtn, 1, 0);
    grid->addWidget(all.seqNumBtn, 1, 1);
    grid->addWidget(all.replaceInvaidStrBtn, 1, 2);
    for (int i = 0; i < 3; ++i)
        grid->setColumnStretch(i, 1);
    return grid;
}

void RenameWindow::buildPreview(QLayout& layout) {
    auto* card = new Card(body());
    m_preview = new RenamePreview(card);
    auto* inside = new QVBoxLayout(card);
    inside->setContentsMargins(2, 1, 2, 4);
    inside->addWidget(m_preview);
    connect(m_preview, &RenamePreview::focusShown, card, &Card::setChosen);
    static_cast<QVBoxLayout&>(layout).addWidget(card, 1);
}

void RenameWindow::buildFoot() {
    RenameControls& all = m_controls;
    all.keepCurrentFileNameBtn =
        renameRadio(tr("Keep current file names"), "keepCurrentFileNameBtn", this);
    all.cancelBtn = new Button(ButtonKind::Plain, tr("Cancel"), {}, this);
    all.cancelBtn->setObjectName(QStringLiteral("CloseRenameWindowAction"));
    all.saveBtn = new Button(ButtonKind::Primary, tr("Rename"), {}, this);
    all.saveBtn->setObjectName(QStringLiteral("SaveChangesRenameWindowAction"));
    all.saveBtn->setDefault(true);
    foot()->insertWidget(0, all.keepCurrentFileNameBtn);
    foot()->addWidget(all.cancelBtn);
    foot()->addWidget(all.saveBtn);
}

void RenameWindow::connectControls() {
    const RenameControls& all = m_controls;
    auto* modes = new QButtonGroup(this);
    for (QRadioButton* radio :
         {all.customerFileNameBtn, all.metaFileNameBtn, all.keepCurrentFileNameBtn}) {
        modes->addButton(radio);
        connect(radio, &QRadioButton::toggled, this, &RenameWindow::chooseCard);
    }
    connect(all.customerFileNameBtn, &QRadioButton::clicked, this, &RenameWindow::customTextChosen);
    connect(all.metaFileNameBtn, &QRadioButton::clicked, this, &RenameWindow::metadataChosen);
    connect(all.addTagsButton, &QComboBox::activated, this, &RenameWindow::tagChosen);
    connect(all.keepFileNameBtn, &QCheckBox::clicked, this, &RenameWindow::keepExistingClicked);
    connect(all.cancelBtn, &Button::clicked, this, &RenameWindow::reject);
    connect(all.saveBtn, &Button::clicked, this, &RenameWindow::save);
    connect(all.customNamelab, &QLineEdit::textChanged, this, &RenameWindow::refreshSoon);
    connect(all.filenameFormatstrlab, &QLineEdit::textChanged, this, &RenameWindow::refreshSoon);
    connect(all.checkStartNumber, &QCheckBox::toggled, this, &RenameWindow::refreshSoon);
    connect(all.seqNumBtn, &QCheckBox::toggled, this, &RenameWindow::refreshSoon);
    connect(all.renameDateFormatBtn, &QComboBox::currentIndexChanged, this,
            &RenameWindow::refreshSoon);
}

/// The chosen mode gets the accent outline; when names are kept, both bodies are disabled.
void RenameWindow::chooseCard() {
    const RenameControls& all = m_controls;
    const bool keeps = all.keepCurrentFileNameBtn->isChecked();
    m_customCard->setChosen(all.customerFileNameBtn->isChecked());
    m_metadataCard->setChosen(all.metaFileNameBtn->isChecked());
    m_customBody->setEnabled(!keeps);
    m_metadataBody->setEnabled(!keeps);
    refreshTexts();
    refreshSoon();
}

batch::RenameRequest RenameWindow::request() const {
    const RenameControls& all = m_controls;
    batch::RenameRequest request;
    request.mode = all.metaFileNameBtn->isChecked() ? batch::RenameMode::MetadataTags
                                                    : batch::RenameMode::CustomText;
    request.customNamelab = all.customNamelab->text();
    request.checkStartNumber = all.checkStartNumber->isChecked();
    request.filenameFormatstrlab = all.filenameFormatstrlab->text();
    request.seqNumBtn = all.seqNumBtn->isChecked();
    request.renameDateFormatBtn = all.renameDateFormatBtn->currentText();
    request.storagelocation = m_storagelocation;
    return request;
}

void RenameWindow::setItems(std::vector<media::ItemPointer> items, const QString& storagelocation) {
    m_items = std::move(items);
    m_storagelocation = storagelocation;
    m_surroundings = batch::surroundingsOnDisk();
    refreshTexts();
    refreshSoon();
}

void RenameWindow::present() {
    show();
    raise();
    activateWindow();
}

/// All changes within one pass of the event loop make one plan.
void RenameWindow::refreshSoon() {
    if (m_refreshDue)
        return;
    m_refreshDue = true;
    QMetaObject::invokeMethod(this, &RenameWindow::refreshPreview, Qt::QueuedConnection);
}

void RenameWindow::refreshPreview() {
    m_refreshDue = false;
    if (!isVisible())
        return;
    std::vector<batch::RenameMove> plan;
    if (m_controls.keepCurrentFileNameBtn->isChecked()) {
        for (const media::ItemPointer& item : m_items) {
            batch::RenameMove& move = plan.emplace_back();
            move.source = move.target = item->filePath;
            move.stays = true;
        }
    } else if (m_surroundings.fileExists) {
        plan = batch::planRename(request(), m_items, m_surroundings);
        ++m_planCount;
    }
    m_preview->previewModel()->setPlan(std::move(plan));
    refreshTexts();
}

void RenameWindow::refreshTexts() {
    const auto count = static_cast<qsizetype>(m_items.size());
    const bool keeps = m_controls.keepCurrentFileNameBtn->isChecked();
    m_controls.saveBtn->setEnabled(count > 0 && !keeps);
    m_controls.saveBtn->setText(count == 0   ? tr("Rename")
                                : count == 1 ? tr("Rename 1 File")
                                             : tr("Rename %1 Files").arg(count));
    const int leaving = m_preview->previewModel()->leavingCount();
    const QString files = count == 1 ? tr("1 file") : tr("%1 files").arg(count);
    setSubtitle(count == 0                   ? tr("no file is selected")
                : keeps                      ? files
                : leaving == 0 && count == 1 ? tr("1 file, renamed where it is")
                : leaving == 0               ? tr("%1, renamed where they are").arg(files)
                : leaving == count
                    ? tr("%1, moved to the storage folder").arg(files)
                    : tr("%1, %2 of them moved to the storage folder").arg(files).arg(leaving));
}

void RenameWindow::reject() {
    OwnWindow::reject();
    Q_EMIT cancel();
}

void RenameWindow::changeEvent(QEvent* event) {
    OwnWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        Q_EMIT activated();
}

} // namespace clipheave::app
