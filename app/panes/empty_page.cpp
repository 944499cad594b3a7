// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/panes/empty_page.h"

#include "app/theme/theme.h"
#include "app/widgets/token_label.h"

#include <QVBoxLayout>

namespace clipheave::app {

EmptyPage makeEmptyPage(const QString& icon, const QString& title, const QString& hint,
                        QWidget* parent) {
    EmptyPage empty{new QWidget(parent), nullptr};
    auto* column = new QVBoxLayout(empty.page);
    column->setSpacing(8);
    column->addStretch();
    auto* image = new TokenIcon(40, empty.page);
    image->setIcon(icon, Token::text3);
    column->addWidget(image, 0, Qt::AlignHCenter);
    auto* name = new TokenLabel(title, FontRole::BodyMedium, Token::text2, empty.page);
    name->setAlignment(Qt::AlignCenter);
    column->addWidget(name);
    empty.hint = new TokenLabel(hint, FontRole::Cell, Token::text3, empty.page);
    empty.hint->setAlignment(Qt::AlignCenter);
    empty.hint->setWordWrap(true);
    empty.hint->setTextFormat(Qt::PlainText);
    column->addWidget(empty.hint);
    column->addStretch();
    return empty;
}

} // namespace clipheave::app
