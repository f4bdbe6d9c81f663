#include "platform/geometry/ColorText.h"
#include "scene/Scene.h"

void keepOneOperationOfEachClass();

int main()
{
    keepOneOperationOfEachClass();
    const bool platformLinks = vrk::geometry::ParseColorText("#FF0000").r == 1.0f;
    const bool visualLinks = vrk::visual::Scene::Get() == nullptr;
    return platformLinks && visualLinks ? 0 : 1;
}
