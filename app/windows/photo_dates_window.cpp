// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/windows/photo_dates_window.h"

#include "app/theme/theme.h"
#include "app/widgets/button_look.h"
#include "app/widgets/edit_field.h"
#include "app/widgets/token_label.h"

#include <QGridLayout>
#include <QHBoxLayout>

namespace clipheave::app {

namespace {

constexpr int kDatesWidth = 420, kDatesLabel = 72, kDatesField = 156; // px
constexpr int kAroundDates = 16, kDatesRowGap = 8, kDatesColumnGap = 12;
constexpr int kDatesRow = 28;

QString shownDate(const QString& date) {
    return date.isEmpty() ? PhotoDatesWindow::tr("none") : date;
}

} // namespace

PhotoDatesWindow::PhotoDatesWindow(QWidget* parent)
    : OwnWindow(tr("Photo Dates"), parent), m_grid(new QGridLayout(body())) {
    setObjectName(QStringLiteral("changePhotoDateWindow"));
    const Theme& theme = Theme::instance();
    setFixedWidth(theme.scaled(kDatesWidth));
    m_grid->setContentsMargins(kAroundDates, kAroundDates / 2, kAroundDates, kAroundDates);
    m_grid->setHorizontalSpacing(kDatesColumnGap);
    m_grid->setVerticalSpacing(kDatesRowGap);
    m_grid->setColumnMinimumWidth(0, theme.scaled(kDatesLabel));
    m_grid->setColumnStretch(1, 1);
    addRow({}, new TokenLabel(tr("Before"), FontRole::Cell, Token::text2, body()),
           new TokenLabel(tr("After"), FontRole::Cell, Token::text2, body()));
    m_taken = makeValue("beforeorignalDatelab");
    m_newTaken = makeField("orignalDatelab", tr("Taken"));
    addRow(tr("Taken"), m_taken, m_newTaken);
    m_digitised = makeValue("beforediginalDatelab");
    m_newDigitised = makeField("diginalDatelab", tr("Digitised"));
    addRow(tr("Digitised"), m_digitised, m_newDigitised);
    m_created = makeValue("beforeCreatedDatelab");
    addRow(tr("File created"), m_created, makeValue("afterorignalDatelab"));
    m_modified = makeValue("beforeModifiedDatelab");
    addRow(tr("File modified"), m_modified, makeValue("afterdiginalDatelab"));
    buildFoot();
}

void PhotoDatesWindow::addRow(const QString& label, QWidget* before, QWidget* after) {
    const int row = m_grid->rowCount();
    m_grid->addWidget(new TokenLabel(label, FontRole::Cell, Token::text2, body()), row, 0);
    m_grid->addWidget(before, row, 1);
    m_grid->addWidget(after, row, 2);
    m_grid->setRowMinimumHeight(row, kDatesRow);
}

QLabel* PhotoDatesWindow::makeValue(const char* name) {
    auto* value = new TokenLabel({}, FontRole::Cell, Token::text1, body());
    value->setObjectName(QLatin1String(name));
    value->setTextFormat(Qt::PlainText);
    return value;
}

/// Off until dates can be written: what is typed would be lost.
EditField* PhotoDatesWindow::makeField(const char* name, const QString& label) {
    auto* field = new EditField(body());
    field->setObjectName(QLatin1String(name));
    field->setAccessibleName(label);
    field->setFixedWidth(Theme::instance().scaled(kDatesField));
    field->setEnabled(false);
    return field;
}

void PhotoDatesWindow::buildFoot() {
    auto* note = new TokenLabel(tr("Changing dates is not available yet"), FontRole::Cell,
                                Token::text2, this);
    note->setObjectName(QStringLiteral("datesNote"));
    QHBoxLayout* row = foot();
    row->insertWidget(0, note);
    auto* close = new Button(ButtonKind::Plain, tr("Close"), {}, this);
    close->setDefault(true);
    row->addWidget(close);
    connect(close, &Button::clicked, this, &QDialog::reject);
}

void PhotoDatesWindow::present(const QString& name, const PhotoDateTexts& dates) {
    setSubtitle(name);
    m_taken->setText(shownDate(dates.taken));
    m_digitised->setText(shownDate(dates.digitised));
    m_created->setText(shownDate(dates.created));
    m_modified->setText(shownDate(dates.modified));
    m_newTaken->setShownText(dates.taken);
    m_newDigitised->setShownText(dates.digitised);
    show();
    raise();
    activateWindow();
}

} // namespace clipheave::app
