#pragma once

#include "platform/common/Export.h"
#include "scene/math/Pose.h"
#include "visual/SharedFlag.h"
#include "visual/VisualType.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>

namespace Ogre {
class MovableObject;
class Node;
class SceneNode;
} // namespace Ogre
namespace sdf {
class SdfNode;
}

namespace vrk::visual {

class Scene;
class Visual;

/// The visuals below one visual, in the order of its OGRE node. Nothing is copied: neither add nor remove children while
/// walking it. The order is OGRE's own and changes when a child goes.
class VRK_EXPORT VisualChildren {
public:
    class VRK_EXPORT Iterator {
    public:
        using value_type = Visual*;
        using difference_type = std::ptrdiff_t;
        using iterator_category = std::forward_iterator_tag;

        Iterator() = default;
        Iterator(Ogre::Node* const* at, Ogre::Node* const* last) : at(at), last(last) { skipForeign(); }
        Visual* operator*() const;
        Iterator& operator++()
        {
            ++at;
            skipForeign();
            return *this;
        }
        Iterator operator++(int)
        {
            Iterator before = *this;
            ++*this;
            return before;
        }
        bool operator==(const Iterator& o) const { return at == o.at; }

    private:
        void skipForeign(); // nodes that carry no visual

        Ogre::Node* const* at = nullptr;
        Ogre::Node* const* last = nullptr;
    };

    VisualChildren(Ogre::Node* const* first, Ogre::Node* const* last) : first(first), last(last) {}
    Iterator begin() const { return {first, last}; }
    Iterator end() const { return {last, last}; }

private:
    Ogre::Node* const* first;
    Ogre::Node* const* last;
};

/// The base of everything drawn in the scene: a thin layer over one OGRE scene node.
///
/// The tree of visuals is the tree of the nodes; each node points back to its visual, and there is no second tree. Parent,
/// children and poses are therefore what OGRE says.
///
/// Owner: the parent visual; a visual dies through `Visual::Delete` or with its parent. Thread: render thread.
class VRK_EXPORT Visual {
public:
    /// The root of the tree, on OGRE's root node.
    explicit Visual(Scene* scene);
    /// A visual that hangs nowhere yet, its node named `name`.
    explicit Visual(const std::string& name);
    /// The node is named `name` followed by the id.
    Visual(const std::string& name, Visual* parent);
    /// A visual of a given id, its node named exactly `name`, unless that name is taken.
    Visual(unsigned id, const std::string& name, Visual* parent);
    Visual(unsigned id, Visual* parent);
    explicit Visual(Visual* parent);
    /// A visual of a model object: its id, "<name>_<id>" for the node's name, and the pose of its element "pose".
    Visual(sdf::SdfNode* node, Visual* parent);
    /// Copies the fields, the node pointer among them, so that two objects name one node. To double what is drawn use
    /// `copy`.
    Visual(const Visual&) = default;
    Visual& operator=(const Visual&) = default;
    /// Ends the node. Children, registry and selection are not touched: that is the work of `Delete`.
    virtual ~Visual();

    virtual void update();
    /// A see-through double of this visual and of its children under `parent`, or under the world for null. It bears
    /// this visual's id but stands in no registry. Empty for kinds that are not copied.
    virtual std::optional<Visual*> copy(Visual* parent);
    // Sums over the children that do not hang here by an attachment
    virtual unsigned getBodiesNum();
    virtual unsigned getFacesNum();
    virtual std::uint64_t getTrianglesNum();
    virtual std::uint64_t getVerticesNum();
    /// Shows or hides this node and, if `recursive`, the children; those that are attached or anchored, and a local
    /// frame, keep their own state.
    virtual void setVisible(bool visible, bool recursive);
    virtual void setScale(double x, double y, double z);
    virtual void resetAppearance();
    virtual void setSelected();
    virtual void setHighlighted();
    virtual void clearHighlightOrSelect();
    /// Called when this visual shows nothing of its own any more. A part of something that it does not hang under takes the
    /// look of the whole, which nobody would show again on it.
    virtual void showLookOfWhole() {}

    // Identity and tree
    Ogre::SceneNode* getSceneNode() const { return sceneNode; }
    unsigned getId() const { return id; }
    VisualType getType() const { return type; }
    void setType(VisualType newType) { type = newType; }
    const std::string& getName() const;
    /// Null where there is no parent node or it carries no visual.
    /// @throws std::bad_cast if the parent node is bound to something else.
    Visual* getParent() const;
    bool isTopLevel() const;
    VisualChildren getChildren() const;
    /// Hangs this visual under another one. Under itself or one of its own descendants it stays where it is.
    void attachTo(Visual* parent);
    void attachVisual(Visual* child);
    /// Takes this visual out of the tree; it stays alive. The selection is not told.
    void detach();
    void detachVisual(Visual* child);
    void attachObject(Ogre::MovableObject* object);
    void detachObject(Ogre::MovableObject* object);
    bool hasAttachedObject(const std::string& name) const;
    /// Deletes all children. Every child node must carry a visual.
    void clearChildren();
    /// Deletes the children of a copy, which no registry knows.
    void clearCopiedChildren();
    /// Deletes a visual and its descendants: they leave the registry and the selection.
    static void Delete(Visual* visual);

    void setAttachState(bool attachedNow) { attached = attachedNow; }
    bool isAttached() const { return attached; }
    bool isAnchored() const { return anchored; }
    /// Any thread, while the visual lives.
    bool isVisible() const { return visible; }
    bool isCopied() const { return copied; }
    /// Writes the subtree to standard output, for debugging.
    void dump(unsigned level) const;

    // Pose. A setter tells the selection that the subtree moved.
    void setPose(const rob::PoseTemplate<float>& pose);
    void setPosition(const rob::PosTemplate<float>& position);
    void setPosition(float x, float y, float z);
    void setRotation(const rob::RotationTemplate<float>& rotation);
    void setOrientation(const rob::OrientTemplate<double>& orientation);
    void setWorldPose(const rob::PoseTemplate<float>& pose);
    void setWorldPosition(const rob::PosTemplate<float>& position);
    rob::PoseTemplate<float> getPose() const;
    rob::PosTemplate<float> getPosition() const;
    rob::PoseTemplate<float> getWorldPose() const;
    rob::PosTemplate<float> getWorldPosition() const;
    rob::RotationTemplate<float> getWorldRotation() const;

    /// Names the materials of the three states, here and in all children, and takes the normal one.
    void setMaterial(const std::string& defaultName, const std::string& selectedName, const std::string& highlightName);

    /// Shows a material until the next change of appearance; the three names stay.
    void showMaterial(const std::string& name) { useMaterial(name); }

protected:
    /// Gives the material to every object on this node; a name that OGRE does not know changes nothing.
    virtual void useMaterial(const std::string& name);
    /// Called when this visual, or one above it, was hung into the tree of the scene or taken out of it. For what OGRE
    /// draws wherever its node hangs.
    virtual void sceneEnteredOrLeft();
    /// Turns this visual, which was just made, into a copy of `source`: its id and its local pose, and copies of its
    /// children.
    void becomeCopyOf(Visual& source);

    unsigned id;
    VisualType type = VisualType::None;
    Ogre::SceneNode* sceneNode;
    SharedFlag visible = true;
    bool copied = false;   // made by `copy`: shares meshes with its source
    bool attached = false; // hangs on another visual by an attachment
    bool anchored = false; // keeps its own visibility when the parent's changes
    std::string defaultMaterial;
    std::string selectedMaterial;
    std::string highlightMaterial;

private:
    Visual(unsigned id, Ogre::SceneNode* node, bool ofRoot);
    void bind();
    void leaveParentNode();
    void noteOrder();
    void tellSceneEnteredOrLeft();
    template <typename Number>
    Number sumOfChildren(Number (Visual::*count)());

    std::uint32_t order =
        0; // where the node stood last among the children of its parent; it may stand elsewhere by now
};

/// The visual that a node points back to; null for a node that carries none.
/// @throws std::bad_cast for a node that is bound to something else.
VRK_EXPORT Visual* visualOf(const Ogre::Node& node);

} // namespace vrk::visual
