#include "platform/sdf/Element.h"

#include <algorithm>

namespace sdf {
namespace {

/// Cuts the first name off a path.
std::string_view takeName(std::string_view& path)
{
    const std::size_t slash = path.find('/');
    const std::string_view name = path.substr(0, slash);
    path = slash == std::string_view::npos ? std::string_view() : path.substr(slash + 1);
    return name;
}

} // namespace

std::shared_ptr<Element> Element::Create(std::string name)
{
    return std::shared_ptr<Element>(new Element(std::move(name)));
}

std::shared_ptr<Element> Element::get(std::string_view path) const
{
    const Element* at = this;
    std::shared_ptr<Element> found;
    do {
        const std::string_view wanted = takeName(path);
        const auto child = std::ranges::find(at->children, wanted, &Element::name);
        if (child == at->children.end())
            return nullptr;
        found = *child;
        at = found.get();
    } while (!path.empty());
    return found;
}

std::shared_ptr<Element> Element::touch(std::string_view path)
{
    std::shared_ptr<Element> at = shared_from_this();
    do {
        const std::string_view wanted = takeName(path);
        std::shared_ptr<Element> child = at->get(wanted);
        at = child ? child : at->append(std::string(wanted));
    } while (!path.empty());
    return at;
}

std::shared_ptr<Element> Element::append(std::string childName)
{
    std::shared_ptr<Element> child = Create(std::move(childName));
    child->parent = weak_from_this();
    children.push_back(child);
    return child;
}

void Element::remove(const std::shared_ptr<Element>& child)
{
    const auto found = std::ranges::find(children, child);
    if (found == children.end())
        return;
    (*found)->parent.reset();
    children.erase(found);
}

vrk::rob::Posed Element::asPose() const
{
    const auto* pose = std::get_if<vrk::rob::Posed>(&value);
    return pose == nullptr ? vrk::rob::Posed() : *pose;
}

std::string Element::asString() const
{
    const auto* text = std::get_if<std::string>(&value);
    return text == nullptr ? std::string() : *text;
}

bool Element::asBool() const
{
    const auto* truth = std::get_if<bool>(&value);
    return truth != nullptr && *truth;
}

std::string textAt(const Element& element, std::string_view path)
{
    const std::shared_ptr<Element> found = element.get(path);
    return found ? found->asString() : std::string();
}

bool boolAt(const Element& element, std::string_view path)
{
    const std::shared_ptr<Element> found = element.get(path);
    return found && found->asBool();
}

} // namespace sdf
