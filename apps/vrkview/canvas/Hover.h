#pragma once

#include <QObject>
#include <QString>

#include <TopoDS_Edge.hxx>

#include <functional>

namespace vrkview {

class ViewState;
struct Picked;

/// Shows what a click would take: its highlight in the view, and its name for whoever displays that.
///
/// Thread: the application's, which is the render thread.
class Hover : public QObject {
    Q_OBJECT

public:
    /// @param state  outlives this.
    explicit Hover(const ViewState& state, QObject* parent = nullptr);

    /// What is to be told behind the name of what was found; empty for nothing.
    using Remark = std::function<QString(const Picked&)>;
    void setRemark(Remark wanted) { remark = std::move(wanted); }

    /// What of the found is highlighted.
    enum class Of { Thing, Piece };

    /// Highlights the whole thing, or the face or the edge that was found of it; what is no piece of a solid as a whole.
    /// @param edge  highlighted and named beside a face; null for none.
    void show(const Picked& found, Of what, const Picked* edge = nullptr);
    void clear();
    /// Stops showing things that have died. Call it after the scene has run its posted tasks.
    void followScene();
    /// Empty while there is nothing under the mouse.
    const QString& getText() const { return text; }

signals:
    void textChanged(const QString& text);

private:
    struct Edge {
        unsigned body = 0;
        unsigned number = 0;
        TopoDS_Edge shape;
    };

    void showPiece(const Picked& found, const Picked* edge);
    void outline();
    void setText(const QString& wanted);

    const ViewState& state;
    unsigned hit = 0;   // the visual under the mouse
    unsigned thing = 0; // what it belongs to
    bool isPiece = false;
    Edge lastEdge;
    QString text;
    Remark remark;
};

} // namespace vrkview
