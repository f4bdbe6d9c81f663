#include "edit/Changes.h"

namespace vrkview {

void Changes::add(std::unique_ptr<Change> step)
{
    if (step->isNeeded())
        steps.push_back(std::move(step));
}

void Changes::applyAndAdd(std::unique_ptr<Change> step)
{
    if (!step->isNeeded())
        return;
    step->apply();
    steps.push_back(std::move(step));
}

void Changes::apply()
{
    std::size_t done = 0;
    try {
        for (; done < steps.size(); ++done)
            steps[done]->apply();
    } catch (...) {
        while (done-- > 0)
            steps[done]->revert();
        throw;
    }
}

void Changes::revert()
{
    for (auto step = steps.rbegin(); step != steps.rend(); ++step)
        (*step)->revert();
}

} // namespace vrkview
