#pragma once

#include "canvas/MouseNote.h"
#include "canvas/PlaceMark.h"
#include "measure/MeasurePick.h"

#include "platform/measure/Measurement.h"

#include <QObject>
#include <QPointF>
#include <QString>

#include <optional>
#include <utility>

namespace vrkview {

class ViewState;
class ViewWidget;

/// Measures in the view: a click takes a first thing, another one the second, and the dimension of both stays. What a click
/// would take is marked, and what would be measured is told beside the mouse. A first thing that is clicked once more is
/// measured alone.
///
/// With Shift, whole bodies are taken: they have their minimum distance, which is measured beside the frames.
///
/// Thread: the application's, which is the render thread.
class MeasureTool : public QObject {
    Q_OBJECT

public:
    /// Both outlive this.
    MeasureTool(ViewWidget& view, ViewState& state, QObject* parent = nullptr);

    bool isOn() const { return on; }
    void setOn(bool wanted);
    /// What was taken first; null while there is nothing.
    const MeasurePick* getFirst() const { return first ? &*first : nullptr; }
    /// What lies under the mouse; null for nothing.
    const MeasurePick* getHovered() const { return hovered ? &*hovered : nullptr; }
    /// What stands beside the mouse.
    const QString& getText() const { return text; }
    /// What was told of a thing that has no dimension of its own, such as where a point is. Empty after the next measure.
    const QString& getToldOnly() const { return toldOnly; }

    // The mouse, while this is on. The scene must have worked off its posts.

    void hover(const QPointF& place, Qt::KeyboardModifiers modifiers);
    void click(const QPointF& place, Qt::KeyboardModifiers modifiers);
    /// The mouse is elsewhere, or turns the view.
    void leave();

    /// Measures the first thing by itself. Nothing where there is none.
    void measureFirst();
    /// Lets go of the first thing or, where there is none, switches off. False where it is off.
    bool cancel();

signals:
    /// Switched on or off, or there is another first thing.
    void changed();
    /// For the status line; empty for nothing.
    void textChanged(const QString& text);
    /// @param text  says why something cannot be measured. The station is as before.
    void failed(const QString& text);

private:
    void take(const std::optional<MeasurePick>& pick, const QPointF& place);
    void setFirst(std::optional<MeasurePick> pick);
    void showFirst();
    void push(vrk::layout::Dimension dimension);
    void add(const MeasurePick& second);
    QString preview();
    const vrk::measure::Measurement& measuredTo(const vrk::layout::DimensionEnd& second);
    void tell(const QString& told, const QPointF& place);
    void showHighlight(const MeasurePick* pick);
    void hush();

    ViewWidget& view;
    ViewState& state;
    MouseNote note;
    PlaceMark mark, firstMark;
    bool on = false;
    bool isWholeShown = false; // a body is highlighted
    std::optional<MeasurePick> first, hovered;
    std::optional<std::pair<vrk::layout::DimensionEnd, vrk::measure::Measurement>>
        measured; // from the first to this one
    QString text, toldOnly;
};

} // namespace vrkview
