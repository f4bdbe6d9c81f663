#pragma once

#include "scene/core/SceneCore.h"

#include <functional>
#include <memory>
#include <utility>

namespace vrk::visual {

/// Posts work of an object that stands in no registry. What is still in the queue when the object dies is passed over.
///
/// Owner: that object. Thread: any, while the object lives; it dies on the render thread.
class TasksOfOwner {
public:
    void post(std::function<void()> task, const char* from = std::source_location::current().function_name()) const
    {
        SceneCore::Get()->queue.post(
            [task = std::move(task), owner = std::weak_ptr<const int>(alive)] {
                if (!owner.expired())
                    task();
            },
            0, from);
    }

private:
    std::shared_ptr<const int> alive = std::make_shared<int>();
};

} // namespace vrk::visual
