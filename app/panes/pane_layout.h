// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class QBoxLayout;
class QLayout;
class QVBoxLayout;
class QWidget;

namespace clipheave::app {

class SectionHeading;

/// px of a pane's width with its scroll bar; below, forms have one column and facts stand below.
inline constexpr int kNarrowPane = 540;
/// Sideways padding of a pane's body.
inline constexpr int kPanePadding = 16;

/// The column of a pane's body. Rows of fields begin in the padding, with the mark of a changed
/// field, so that their labels stand below the headings.
[[nodiscard]] QVBoxLayout* makePaneColumn(QWidget* body);
/// Adds what has no such mark: set in by its room.
void addInset(QBoxLayout* column, QWidget* part);
void addInset(QBoxLayout* column, QLayout* part);
void addHeading(QBoxLayout* column, SectionHeading* heading);
/// Gives the room of the scroll bar back from the padding: nothing moves when the bar comes.
void fitPaneColumn(QVBoxLayout* column, int paneWidth, int bodyWidth);

} // namespace clipheave::app
