#include "platform/layout/Part.h"

#include "platform/layout/Body.h"
#include "platform/sdf/SdfManager.h"

namespace vrk::layout {

Part::Part(unsigned id, std::string name) : SdfContainer(sdf::ModelType::Part, id, std::move(name))
{
    setPose({});
    setDetectable(true);
}

Part::~Part() = default;

std::shared_ptr<Body> Part::addBody(std::string name)
{
    return addBody(sdf::SdfManager::inst().generateId(), std::move(name));
}

std::shared_ptr<Body> Part::addBody(unsigned id, std::string name)
{
    auto body = std::make_shared<Body>(id, std::move(name), *this);
    addChild(*body);
    bodies.push_back(body);
    return body;
}

std::vector<std::shared_ptr<sdf::SdfObject>> Part::getPieces() const
{
    return {bodies.begin(), bodies.end()};
}

bool Part::isDetectable() const
{
    return sdf::boolAt(*getElement(), "detectable");
}

void Part::setDetectable(bool detectable)
{
    getElement()->touch("detectable")->set(detectable);
}

} // namespace vrk::layout
