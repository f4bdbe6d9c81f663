#pragma once

#include <QObject>
#include <QString>

namespace vrk::selection {
struct Result;
}

namespace vrkview {

class ViewState;

/// Shows what a click would take: its highlight in the view, and its name for whoever displays that.
///
/// Thread: the application's, which is the render thread.
class Hover : public QObject {
    Q_OBJECT

public:
    enum class Of { Thing, Face };

    /// @param state  outlives this.
    explicit Hover(const ViewState& state, QObject* parent = nullptr);

    /// Highlights the thing that was hit or, if it is of a solid, the face and its edge that is near by.
    void show(const vrk::selection::Result& result, Of what);
    void clear();
    /// Stops showing things that have died. Call it after the scene has run its posted tasks.
    void followScene();
    /// Empty while there is nothing under the mouse.
    const QString& getText() const { return text; }

signals:
    void textChanged(const QString& text);

private:
    /// @return what the edge adds to the text.
    QString showFace(const vrk::selection::Result& result, unsigned face);
    void setText(const QString& wanted);

    const ViewState& state;
    unsigned hit = 0;   // the visual under the mouse
    unsigned thing = 0; // what it belongs to
    QString text;
};

} // namespace vrkview
