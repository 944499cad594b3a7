// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/widgets/alert_box.h"

#include "app/theme/theme.h"
#include "app/widgets/button_look.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace clipheave::app {
namespace {

constexpr int kAlertWidth = 420;
constexpr int kImageBox = 40;
constexpr int kTextWidth = kAlertWidth - 2 * 20 - kImageBox - 16;

bool destroys(const QString& button) {
    return button.trimmed() == QLatin1String("Delete");
}

bool cancels(const QString& button) {
    return button.trimmed() == QLatin1String("Cancel");
}

/// What the alert is about, as an image.
QString alertImage(const QString& message, const QStringList& buttons) {
    if (std::any_of(buttons.begin(), buttons.end(), destroys))
        return QStringLiteral("trash");
    if (message.contains(QLatin1String("Exit")))
        return QStringLiteral("exit");
    if (message.contains(QLatin1String("date"), Qt::CaseInsensitive))
        return QStringLiteral("dates");
    if (message.contains(QLatin1String("GPS")))
        return QStringLiteral("pin-off");
    if (message == QLatin1String("Vaule Error"))
        return QStringLiteral("pin");
    return QStringLiteral("info");
}

class AlertImage : public QWidget {
public:
    AlertImage(QString name, Token token) : m_name(std::move(name)), m_token(token) {
        setFixedSize(kImageBox, kImageBox);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const Theme& theme = Theme::instance();
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme.color(Token::bg3));
        painter.drawRoundedRect(rect(), 8, 8);
        painter.drawPixmap(QRect(10, 10, 20, 20),
                           themePixmap(m_name, 20, theme.color(m_token), devicePixelRatioF()));
    }

private:
    QString m_name;
    Token m_token;
};

QLabel* alertText(const QString& text, FontRole role, Token token) {
    auto* label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setFont(Theme::instance().font(role));
    QPalette palette;
    palette.setColor(QPalette::WindowText, Theme::instance().color(token));
    label->setPalette(palette);
    label->setFixedWidth(kTextWidth);
    label->setFixedHeight(label->heightForWidth(kTextWidth));
    return label;
}

} // namespace

AlertBox::AlertBox(QWidget* parent, const QString& message, const QString& informative,
                   const QStringList& buttons)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint), m_message(message),
      m_informative(informative), m_texts(buttons) {
    setWindowModality(parent != nullptr ? Qt::WindowModal : Qt::ApplicationModal);
    setWindowTitle(message);
    setAccessibleName(message);
    setAccessibleDescription(informative);
    setAttribute(Qt::WA_TranslucentBackground);
    for (int i = 0; i < m_texts.size(); ++i)
        if (destroys(m_texts.at(m_default)) && cancels(m_texts.at(i)))
            m_default = i;
    build();
}

void AlertBox::build() {
    setFixedWidth(kAlertWidth);
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(20, 20, 20, 16);
    grid->setHorizontalSpacing(16);
    grid->setVerticalSpacing(4);
    const QString image = alertImage(m_message, m_texts);
    const bool grave = image == QLatin1String("trash");
    grid->addWidget(new AlertImage(image, grave ? Token::bad : Token::accentText), 0, 0, 2, 1,
                    Qt::AlignTop);
    grid->addWidget(alertText(m_message, FontRole::AlertTitle, Token::text1), 0, 1);
    if (!m_informative.isEmpty())
        grid->addWidget(alertText(m_informative, FontRole::Body, Token::text2), 1, 1, Qt::AlignTop);
    grid->setColumnStretch(1, 1);
    auto* row = new QHBoxLayout;
    row->setContentsMargins(0, 12, 0, 0);
    row->setSpacing(8);
    for (int i = 0; i < m_texts.size(); ++i) {
        const ButtonKind kind = destroys(m_texts.at(i))    ? ButtonKind::Danger
                                : i == m_default && !grave ? ButtonKind::Primary
                                                           : ButtonKind::Plain;
        auto* button = new Button(kind, m_texts.at(i));
        button->setObjectName(QStringLiteral("alertButton%1").arg(i));
        button->setMinimumWidth(0);
        connect(button, &QPushButton::clicked, this, [this, i] { done(i); });
        row->insertWidget(0, button); // the default at the right end
        if (i == m_default) {
            m_defaultButton = button;
            button->setDefault(true);
        }
    }
    row->insertStretch(0, 1);
    grid->addLayout(row, 2, 0, 1, 2);
}

int AlertBox::escapeIndex() const {
    for (int i = 0; i < m_texts.size(); ++i)
        if (cancels(m_texts.at(i)))
            return i;
    return m_texts.size() == 1 ? 0 : -1;
}

void AlertBox::reject() {
    done(escapeIndex());
}

int AlertBox::run(QWidget* parent, const QString& message, const QString& informative,
                  const QStringList& buttons) {
    AlertBox box(parent != nullptr ? parent->window() : nullptr, message, informative, buttons);
    return box.exec();
}

void AlertBox::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Theme::instance().color(Token::line2));
    painter.setBrush(Theme::instance().color(Token::bg2));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 10, 10);
}

void AlertBox::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (m_defaultButton != nullptr)
        m_defaultButton->setFocus(Qt::TabFocusReason);
    if (parentWidget() != nullptr)
        move(parentWidget()->window()->geometry().center() - QPoint(width() / 2, height() / 2));
}

} // namespace clipheave::app
