// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QBoxLayout;
class QLayout;
class QVBoxLayout;
class QWidget;

namespace clipheave::app {

class SectionHeading;

/// Width of a pane in px, its scroll bar included, below which forms have one column and the facts
/// stand below the player.
inline constexpr int kNarrowPane = 540;
/// Sideways padding of a pane's body.
inline constexpr int kPanePadding = 16;

/// The column of a pane's body. Rows of fields begin in the padding, with the mark of a changed
/// field, so that their labels stand below the headings.
[[nodiscard]] QVBoxLayout* makePaneColumn(QWidget* body);
/// Adds a part without such a mark, indented by the width of the mark.
void addInset(QBoxLayout* column, QWidget* part);
void addInset(QBoxLayout* column, QLayout* part);
void addHeading(QBoxLayout* column, SectionHeading* heading);
/// Takes the scroll bar's width off the padding, so that nothing moves when the bar appears.
void fitPaneColumn(QVBoxLayout* column, int paneWidth, int bodyWidth);

} // namespace clipheave::app
