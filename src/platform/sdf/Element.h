#pragma once

#include "platform/common/Export.h"
#include "scene/math/Pose.h"

#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace sdf {

/// A named value in a tree of named values: what the model keeps of an object besides its geometry.
///
/// Paths are names joined by slashes, as in "geometry/uri". Two children may have one name; a path finds the first.
/// Thread: as the object that holds it, under the manager's lock.
class VRK_EXPORT Element : public std::enable_shared_from_this<Element> {
public:
    using Value = std::variant<std::monostate, bool, double, std::string, vrk::rob::Posed>;

    static std::shared_ptr<Element> Create(std::string name);

    const std::string& getName() const { return name; }
    /// The element that this one lies in; null for a root.
    std::shared_ptr<Element> getParent() const { return parent.lock(); }
    const std::vector<std::shared_ptr<Element>>& getChildren() const { return children; }

    /// The element at `path` below this one, or null.
    std::shared_ptr<Element> get(std::string_view path) const;
    /// The same, made where it is missing.
    std::shared_ptr<Element> touch(std::string_view path);
    /// Appends a child, also where there is one of that name.
    std::shared_ptr<Element> append(std::string name);
    void remove(const std::shared_ptr<Element>& child);

    void set(Value value) { this->value = std::move(value); }
    const Value& getValue() const { return value; }

    /// Identity where the value is no pose.
    vrk::rob::Posed asPose() const;
    /// Empty where the value is no text.
    std::string asString() const;
    /// False where the value is no truth value.
    bool asBool() const;

private:
    explicit Element(std::string name) : name(std::move(name)) {}

    std::string name;
    Value value;
    std::vector<std::shared_ptr<Element>> children;
    std::weak_ptr<Element> parent;
};

/// The text at `path` below `element`; empty where there is none.
VRK_EXPORT std::string textAt(const Element& element, std::string_view path);
/// The truth value at `path` below `element`; false where there is none.
VRK_EXPORT bool boolAt(const Element& element, std::string_view path);

} // namespace sdf
