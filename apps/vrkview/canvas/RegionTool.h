#pragma once

#include "canvas/ViewState.h"

#include "view/RegionOutline.h"
#include "visual/VisualMark.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointF>

#include <map>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

namespace vrkview {

class ViewWidget;

/// What a region of the view would select: things or, where it holds none, points of clouds.
struct RegionContent {
    std::vector<unsigned> things; // as in the tree, from the top; ascending ids of moves behind them
    ViewState::CloudPoints points;

    std::size_t pointCount() const;
    bool isEmpty() const { return things.empty() && points.empty(); }
    bool operator==(const RegionContent&) const = default;
};

/// A region of the view that the user draws, and what it selects: a rectangle, or a lasso drawn freehand or corner by corner.
///
/// A rectangle that was drawn to the right takes what lies wholly inside, one to the left what it touches; a lasso takes what
/// lies wholly inside. A thing lies inside if all of its bodies, curves and points do that are shown. What would be selected
/// is highlighted while the region is drawn, as long as it is found quickly.
///
/// Thread: the application's, which is the render thread. Places are device pixels of the view.
class RegionTool : public QObject {
    Q_OBJECT

public:
    enum class Shape { Rectangle, Freehand, Polygon };
    enum class Effect { Replace, Toggle };

    /// Both outlive this.
    RegionTool(ViewWidget& view, ViewState& state, QObject* parent = nullptr);
    ~RegionTool() override;

    /// Whether the left button draws lassos.
    bool isLassoOn() const { return lassoOn; }
    void setLassoOn(bool on);
    /// Whether regions take nothing but points of clouds.
    bool isForPointsOnly() const { return pointsOnly; }
    void setForPointsOnly(bool only);

    bool isDrawing() const { return shape.has_value(); }
    /// Of what is drawn; empty where nothing is.
    std::optional<Shape> getShape() const { return shape; }
    /// Begins a shape; one that was begun is given up.
    void begin(Shape wanted, const QPointF& at, Effect wantedEffect);
    /// The mouse is here now: the other corner of a rectangle, the next bit of a freehand line, the corner of a polygon that
    /// may come next.
    void follow(const QPointF& place);
    /// Another corner of a polygon.
    void addCorner(const QPointF& place);
    void removeLastCorner();
    /// Selects what is inside, and ends.
    void finish(Effect wantedEffect);
    void finish() { finish(effect); }
    /// Gives up what is drawn, or else switches the lasso off. False where there was nothing to give up.
    bool cancel();

signals:
    /// Of what is inside so far; empty at the end.
    void textChanged(const QString& text);
    /// What is inside was selected.
    void taken(const vrkview::RegionContent& content);
    /// A shape was begun or ended, or a switch was thrown.
    void changed();
    /// The region cannot be asked about.
    void failed(const QString& text);

private:
    std::vector<QPointF> outline() const;
    bool takesWhatIsTouched() const;
    RegionContent ask();
    void countPieces();
    void show();
    void preview();
    void mark(const std::vector<unsigned>& things);
    void select(RegionContent content);
    void end();

    ViewWidget& view;
    ViewState& state;
    bool lassoOn = false;
    bool pointsOnly = false;
    std::optional<Shape> shape; // of what is drawn
    Effect effect = Effect::Replace;
    std::vector<QPointF> corners;
    std::optional<QPointF> next; // of a polygon: where the mouse is
    vrk::visual::RegionOutline drawn;
    bool isQuick = true;                           // what is inside was found soon enough to be shown in a drag
    std::unordered_map<unsigned, unsigned> pieces; // of each thing: how many bodies, curves and points can be found
    std::map<unsigned, std::unique_ptr<vrk::visual::HighlightedVisual>> marks;
};

} // namespace vrkview
