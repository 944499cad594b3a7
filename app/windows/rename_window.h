// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/windows/own_window.h"
#include "batch/rename_plan.h"

#include <vector>

class QCheckBox;
class QComboBox;
class QGridLayout;
class QLineEdit;
class QRadioButton;

namespace clipheave::app {

class Button;
class Card;
class RenamePreview;
class TemplateField;

/// The controls of the rename window under their fixed names.
struct RenameControls {
    QRadioButton *customerFileNameBtn = nullptr, *metaFileNameBtn = nullptr,
                 *keepCurrentFileNameBtn = nullptr;
    QLineEdit* customNamelab = nullptr;
    QCheckBox* checkStartNumber = nullptr;
    TemplateField* filenameFormatstrlab = nullptr;
    QComboBox *addTagsButton = nullptr, *tagpostionButton = nullptr, *renameDateFormatBtn = nullptr;
    QCheckBox *keepFileNameBtn = nullptr, *replaceInvaidStrBtn = nullptr, *seqNumBtn = nullptr;
    QCheckBox* AddSuffixStrBtn = nullptr; ///< no command reads it; never shown
    Button *saveBtn = nullptr, *cancelBtn = nullptr;
};

/// New names for the selected files: one text for all of them, or a template of tag words, with a
/// preview of every file. It shows and emits signals; the controller runs the rename. Movable, not
/// modal.
class RenameWindow : public OwnWindow {
    Q_OBJECT
public:
    explicit RenameWindow(QWidget* parent);

    [[nodiscard]] const RenameControls& controls() const { return m_controls; }
    [[nodiscard]] RenamePreview* preview() const { return m_preview; }
    /// The rename that the controls describe.
    [[nodiscard]] batch::RenameRequest request() const;
    /// Sets the files of the table. Their folders are read again.
    void setItems(std::vector<media::ItemPointer> items, const QString& storagelocation);
    /// Brings the window up.
    void present();
    /// How many plans were made for the table: at most one per pass of the event loop.
    [[nodiscard]] int planCount() const { return m_planCount; }

    void reject() override;

Q_SIGNALS:
    void customTextChosen();
    void metadataChosen();
    void tagChosen();
    void keepExistingClicked();
    void cancel();
    void save();
    /// The window is active again: files may have changed meanwhile.
    void activated();

protected:
    void changeEvent(QEvent* event) override;

private:
    void buildCustomCard(QLayout& column);
    void buildMetadataCard(QLayout& column);
    QGridLayout* makeTagGrid();
    void buildPreview(QLayout& column);
    void buildFoot();
    void connectControls();
    void chooseCard();
    void refreshSoon();
    void refreshPreview();
    void refreshTexts();

    RenameControls m_controls;
    Card *m_customCard = nullptr, *m_metadataCard = nullptr;
    QWidget *m_customBody = nullptr, *m_metadataBody = nullptr;
    RenamePreview* m_preview = nullptr;
    std::vector<media::ItemPointer> m_items;
    QString m_storagelocation;
    batch::RenameSurroundings m_surroundings;
    bool m_refreshDue = false;
    int m_planCount = 0;
};

} // namespace clipheave::app
