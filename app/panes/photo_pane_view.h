// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/panes/photo_fields.h"
#include "media/fact_lines.h"
#include "media/image_item.h"

#include <QSet>
#include <QWidget>

#include <functional>
#include <vector>

class QBoxLayout;
class QLayout;
class QVBoxLayout;

namespace clipheave::app {

class EditField;
class FactLabel;
class FieldRow;
class Form;
class MapView;
class PhotoPreview;
class SectionHeading;
class SharedFields;

/// What a photo shows in its pane.
struct PhotoContent {
    media::ItemPointer item;
    photo::PaneTexts texts;
    QList<media::FactLine> facts;
};

/// The body of the photo pane: preview, facts, and the three sections of fields. It shows and takes
/// texts; what they mean is the photo layer's.
class PhotoPaneView : public QWidget {
    Q_OBJECT
public:
    /// Six of its fields are `shared`, which outlive it.
    explicit PhotoPaneView(SharedFields& shared, QWidget* parent = nullptr);

    /// Fills the pane; nothing is edited yet.
    void show(const PhotoContent& content);
    using QWidget::show;
    /// Returns the texts as they stand and the sections in which an edit has begun. Without the
    /// stamps of the position: those of the shown photo are not for the others.
    [[nodiscard]] photo::PaneTexts texts() const;
    [[nodiscard]] media::ChangeFlags flags() const { return m_flags; }
    /// Returns the titles of the sections in which an edit has begun.
    [[nodiscard]] QStringList changedSections() const;
    /// Sets the fields in which the selected photos differ; they say so until they are changed.
    void setSeveral(const QSet<QString>& fields);
    /// Returns the labels of these fields.
    [[nodiscard]] QStringList severalLabels() const;
    /// Marks the field whose text cannot be written; an empty reason takes the mark away.
    void setFault(const QString& field, const QString& reason);
    /// Gives a field that was changed its text back; false when it was not.
    bool restore(QWidget* field);
    void focusFirst();
    /// As VideoPaneView::setPaneWidth().
    void setPaneWidth(int width);

Q_SIGNALS:
    void fieldEditingBegan(const QString& objectName);
    void edited(); ///< a text or a flag is another

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void makeTop();
    void makeForm(const QString& title, bool media::ChangeFlags::*section);
    void makePosition();
    FieldRow* makeRow(const PhotoField& row, int fixedWidth);
    void connectField(EditField* field, const PhotoField& row);
    void begin(const PhotoField& row);
    void takePick(double latitude, double longitude);
    void refresh();
    void refreshSeveral();
    void showPosition();
    [[nodiscard]] EditField* field(const char* name) const;

    SharedFields& m_shared;
    QVBoxLayout* m_column;
    QBoxLayout* m_top = nullptr; ///< preview and facts
    PhotoPreview* m_preview = nullptr;
    std::vector<FactLabel*> m_facts;
    std::vector<EditField*> m_fields; ///< in the order of kPhotoFields
    std::vector<Form*> m_forms;
    struct Section {
        QString title;
        SectionHeading* heading;
        bool media::ChangeFlags::*flag;
    };
    std::vector<Section> m_sections;
    MapView* m_map = nullptr;
    media::ChangeFlags m_flags;
    QSet<QString> m_several;
    int m_paneWidth = 0;
};

} // namespace clipheave::app
