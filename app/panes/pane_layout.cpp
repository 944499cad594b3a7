// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/pane_layout.h"

#include "app/widgets/edit_field.h"
#include "app/widgets/parts.h"

#include <QVBoxLayout>

#include <algorithm>

namespace clipheave::app {

namespace {

constexpr int kAboveBody = 12, kBelowBody = 8;
constexpr int kLeastPadding = 4; // right of the body, beside a scroll bar
constexpr int kAboveHeading = 4;

} // namespace

QVBoxLayout* makePaneColumn(QWidget* body) {
    auto* column = new QVBoxLayout(body);
    column->setContentsMargins(kPanePadding - FieldRow::kGutter, kAboveBody, kPanePadding,
                               kBelowBody);
    column->setSpacing(0);
    return column;
}

void addInset(QBoxLayout* column, QLayout* part) {
    auto* inset = new QHBoxLayout;
    inset->setContentsMargins(FieldRow::kGutter, 0, 0, 0);
    inset->addLayout(part);
    column->addLayout(inset);
}

void addInset(QBoxLayout* column, QWidget* part) {
    auto* inset = new QHBoxLayout;
    inset->setContentsMargins(FieldRow::kGutter, 0, 0, 0);
    inset->addWidget(part);
    column->addLayout(inset);
}

void addHeading(QBoxLayout* column, SectionHeading* heading) {
    column->addSpacing(kAboveHeading);
    addInset(column, heading);
}

void fitPaneColumn(QVBoxLayout* column, int paneWidth, int bodyWidth) {
    QMargins margins = column->contentsMargins();
    margins.setRight(std::max(kLeastPadding, kPanePadding - std::max(0, paneWidth - bodyWidth)));
    column->setContentsMargins(margins);
}

} // namespace clipheave::app
