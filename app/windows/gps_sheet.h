// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/windows/sheet.h"
#include "media/image_item.h"

#include <array>
#include <functional>
#include <utility>

class QVBoxLayout;

namespace clipheave::app {

class Button;
class EditField;
class MapView;
class ThumbnailView;
class TokenIcon;
class ToneLabel;

/// The controls of the position sheet under their fixed names.
struct GpsControls {
    EditField *latitudelab = nullptr, *longtitudelab = nullptr; ///< degrees, signed
    EditField* altitudelab = nullptr;                           ///< metres, signed
    EditField* dateStamplab = nullptr;                          ///< "YYYY:MM:DD"
    EditField* timeStamplab = nullptr;                          ///< "HH:MM:SS", UTC
    MapView* previewMapView = nullptr;
    Button *previewBtn = nullptr, *cancelBtn = nullptr, *saveBtn = nullptr;

    /// Returns the five fields in tab order.
    [[nodiscard]] std::array<EditField*, 5> fields() const {
        return {latitudelab, longtitudelab, altitudelab, dateStamplab, timeStamplab};
    }
};

/// The position of the selected photos: its fields, a map to pick it on, and the time stamp. It
/// shows and emits signals; the controller fills it and writes.
class GpsSheet : public Sheet {
    Q_OBJECT
public:
    enum class Purpose {
        Edit,
        Add,
        ChangeAndRemoveExif, ///< writes no time stamp: its fields are not shown
    };
    /// Returns why the text of the field with this object name cannot be written, in words; empty
    /// when it can, and for an empty text.
    using FaultRule = std::function<QString(const QString& field, const QString& text)>;

    explicit GpsSheet(QWidget* parent);

    [[nodiscard]] const GpsControls& controls() const { return m_controls; }
    void setFaultRule(FaultRule rule) { m_faultRule = std::move(rule); }
    /// Opens the sheet for `count` photos, of which `photo` is shown, with the fields as they are.
    void present(Purpose purpose, const media::ItemPointer& photo, qsizetype count);
    /// Marks every field whose text cannot be written; returns the first of them, null for none.
    EditField* markFaults();
    /// Centres the map on the position of the fields, with the pin there; without one it shows the
    /// whole world. A text that is no position leaves it alone.
    void showPosition();

Q_SIGNALS:
    void preview();
    void save();

private:
    void buildPhoto(QVBoxLayout& column);
    void buildFields(QVBoxLayout& column);
    EditField* addField(QVBoxLayout& column, const QString& label, const char* name);
    void buildFoot();
    void connectControls();
    void takePosition(double latitude, double longitude);
    void movePin();
    void refreshFault(EditField* field);
    void refreshNote();

    GpsControls m_controls;
    FaultRule m_faultRule;
    ThumbnailView* m_thumbnail = nullptr;
    ToneLabel *m_name = nullptr, *m_date = nullptr, *m_note = nullptr;
    TokenIcon* m_noteImage = nullptr;
    QWidget* m_stamps = nullptr;
};

} // namespace clipheave::app
