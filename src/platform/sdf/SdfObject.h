#pragma once

#include "platform/common/Export.h"
#include "platform/sdf/Element.h"
#include "platform/sdf/ModelType.h"
#include "scene/math/Pose.h"

#include <memory>
#include <string>
#include <vector>

namespace sdf {

/// Anything of the model that has an id.
///
/// Owner: `SdfManager`, through a shared pointer. Thread: read under the manager's shared lock, changed under its
/// unique lock.
class VRK_EXPORT SdfObject {
public:
    SdfObject(ModelType type, unsigned id, std::string name);
    virtual ~SdfObject();
    SdfObject(const SdfObject&) = delete;
    SdfObject& operator=(const SdfObject&) = delete;

    unsigned getId() const { return id; }
    /// 0 for an object that belongs to the station itself.
    unsigned getParentId() const { return parentId; }
    /// Places the object on another without making it a piece of that: it stands by itself. `addChild` makes pieces.
    void setParentId(unsigned parent)
    {
        parentId = parent;
        piece = false;
    }
    const std::string& getName() const { return name; }
    void setName(std::string newName) { name = std::move(newName); }
    ModelType getModelType() const { return type; }

    /// Whether the object is of this kind or of one derived from it.
    virtual bool asType(ModelType wanted) const { return wanted == type; }
    /// Whether the object stands by itself, rather than as a piece of another such as an assembly or a mechanism. An object
    /// that only has its place on another stands by itself, too.
    virtual bool isStandalone() const { return !piece; }
    /// The objects that this one owns, in order: they enter the object table and leave it with it.
    virtual std::vector<std::shared_ptr<SdfObject>> getPieces() const { return {}; }
    /// Appends the objects that this one gathers; objects that gather none append nothing.
    virtual void getMembers(std::vector<SdfObject*>& members) const;
    /// Local to the parent; identity unless the kind says otherwise.
    virtual vrk::rob::Posed getPose() const { return {}; }

private:
    friend class SdfContainer; // which says what is a piece

    ModelType type;
    unsigned id;
    unsigned parentId = 0;
    bool piece = false;
    std::string name;
};

/// An object with a tree of elements. Its pose is the element "pose".
class VRK_EXPORT SdfNode : public SdfObject {
public:
    SdfNode(ModelType type, unsigned id, std::string name);
    ~SdfNode() override;

    const std::shared_ptr<Element>& getElement() const { return element; }
    vrk::rob::Posed getPose() const override;
    void setPose(const vrk::rob::Posed& pose);

protected:
    /// For a node whose element lies in another node's tree.
    SdfNode(ModelType type, unsigned id, std::string name, std::shared_ptr<Element> element);

private:
    std::shared_ptr<Element> element;
};

/// A node that has child objects, in order.
class VRK_EXPORT SdfContainer : public SdfNode {
public:
    using SdfNode::SdfNode;
    ~SdfContainer() override;

    const std::vector<unsigned>& getObjChildren() const { return childIds; }
    /// The children that the manager knows. Call it under the manager's lock.
    std::vector<SdfObject*> getChildren() const;
    /// Enters `child` as the last one and makes this its parent, of which it is a piece.
    void addChild(SdfObject& child);
    /// Enters `child` as the last one; its parent stays as it is.
    void addForeignChild(const SdfObject& child) { childIds.push_back(child.getId()); }
    void removeChild(unsigned childId);
    void clearChildren() { childIds.clear(); }
    void getMembers(std::vector<SdfObject*>& members) const override;

private:
    std::vector<unsigned> childIds;
};

} // namespace sdf
