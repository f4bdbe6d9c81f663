#pragma once

#include "docks/StationTree.h"
#include "edit/Change.h"
#include "files/Station.h"

#include <QObject>

#include <cstdint>
#include <map>
#include <memory>
#include <unordered_set>
#include <utility>
#include <vector>

namespace vrkview {

class History;
struct DrawMode;

/// What the user has made of the view: what is selected, what is hidden and how bodies are drawn. Docks, menus and the
/// mouse change these here, and listen here for what another of them changed; each change goes on to the scene.
///
/// Thread: the application's, which is the render thread.
class ViewState : public QObject {
    Q_OBJECT

public:
    enum class Shown { Whole, Partly, Not };
    /// What a face is marked for.
    enum class FaceUse { Base, Side };

    /// Starts with what the model says is hidden. The scene must have been given this mode already.
    ViewState(const DrawMode& mode, std::vector<HiddenFace> hiddenFaces);
    ~ViewState() override;

    /// The steps of work on the station; what they change is taken over here.
    History& getHistory() const { return *history; }

    // Selection, in the order in which it was made. What is hidden is never selected, and what gets hidden no longer is.

    const std::vector<unsigned>& getSelected() const { return selected; }
    bool isSelected(unsigned id) const;
    /// These, but for hidden ones, and nothing else. The scene is given owners ahead of their members, so that the looks of
    /// an owner do not cover those of a member.
    void selectVisuals(std::vector<unsigned> ids);
    /// Adds the visual to the selection or takes it out.
    void toggle(unsigned id);
    /// Nothing selected, faces included.
    void clear() { selectVisuals({}); }
    bool isAnySelected() const
    {
        return !selected.empty() || !selectedFaces.empty() || !selectedEdges.empty() || !selectedPoints.empty();
    }
    /// Takes over what the scene itself did to its selection. Call it after the scene has worked off its posts.
    void followScene();

    // Faces of solids, beside the selection of whole things; a new one of those ends that of faces

    /// Body and number, from 1.
    const std::vector<std::pair<unsigned, unsigned>>& getSelectedFaces() const { return selectedFaces; }
    /// @param face  from 1.
    bool isFaceSelected(unsigned body, unsigned face) const;
    /// Selects the face in the colour of this use or, if it is selected, in whichever use, takes it out. Nothing for what
    /// is no solid.
    void toggleFace(unsigned body, unsigned face, FaceUse use);

    // Edges of solids, in the order of selection, likewise

    /// Body and number, from 1, in the body's shape.
    const std::vector<std::pair<unsigned, unsigned>>& getSelectedEdges() const { return selectedEdges; }
    /// Selects the edge or, if it is selected, takes it out. Nothing for what is no solid, and for an edge that it has not.
    void toggleEdge(unsigned body, unsigned edge);

    // Points of clouds, likewise: a selection of whole things ends that of points, and the other way round

    /// By the cloud's id: numbers of points, ascending. No cloud is without any.
    using CloudPoints = std::map<unsigned, std::vector<std::uint32_t>>;
    const CloudPoints& getSelectedPoints() const { return selectedPoints; }
    /// These and nothing else. What is no cloud, hidden clouds, and numbers of hidden points and of none are passed over.
    void selectPoints(CloudPoints points);

    // Visibility of things of the station, with what is below them. What hangs on a hidden thing by an attachment is hidden
    // with it and comes back with it, unless it is hidden itself. Each call that changes something is one step of work.

    Shown shownOf(unsigned id) const;
    bool isHidden(unsigned id) const { return shownOf(id) == Shown::Not; }
    bool isAnyHidden() const { return !hidden.empty(); }
    void setVisible(const std::vector<unsigned>& ids, bool visible);
    void hideSelected();
    /// Everything that is hidden, also inside of what is shown.
    void showAll();
    /// Hides these, and shows everything else.
    void hideOnly(const std::vector<unsigned>& ids);

    // How bodies are drawn

    const DrawMode& getDrawMode() const { return *drawMode; }
    void setDrawMode(const DrawMode& mode);
    /// Posts that bodies are drawn so once more: call it when some of them got something that is drawn.
    void drawAnew() const;

    // The station

    const StationTree& getTree() const { return tree; }
    /// Call it when things were added to the scene, or are gone from it, beside the steps of work.
    void stationHasChanged();
    /// Call it when another station took the place of the one before.
    void stationWasReplaced(std::vector<HiddenFace> itsHiddenFaces);

signals:
    void selectionChanged();
    void visibilityChanged();
    void drawModeChanged();
    void stationChanged();
    void cloudLooksChanged(); // whether scans are coloured by height

private:
    void follow(Touches touches);
    void replaceSelected(std::vector<unsigned> ids);
    void followPoints();
    void followVisibility();
    void readHidden();
    std::unordered_set<unsigned> allHidden() const;
    std::vector<unsigned> topmostOf(const std::vector<bool>& rows) const;
    void mark(int row, bool visible);
    void uncover(int row);
    void markBelow(int row, bool visible);
    void followCarriers();
    void sum();
    std::vector<unsigned> ownersFirst() const;
    void deselectHidden();
    void clearEdges();
    void clearPoints();
    std::vector<unsigned> listForModel() const;
    void pushHidden(const QString& text, std::unordered_set<unsigned> before);
    void forgetWhatIsGone();

    std::unique_ptr<History> history;
    const DrawMode* drawMode;
    std::vector<HiddenFace> hiddenFaces;
    StationTree tree;
    std::vector<unsigned> selected;
    std::vector<unsigned> toldScene;                          // the same, as the scene was given it
    std::vector<std::pair<unsigned, unsigned>> selectedFaces; // body and face
    std::vector<std::pair<unsigned, unsigned>> selectedEdges; // likewise
    CloudPoints selectedPoints;
    std::unordered_set<unsigned> hidden;            // by the user
    std::unordered_set<unsigned> hiddenWithCarrier; // by what carries them; none of these in `hidden`
    std::vector<int> hiddenBelow;                   // for each row, how many below it are hidden
};

} // namespace vrkview
