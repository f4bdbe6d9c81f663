#pragma once

#include "selection/RegionOracle.h"
#include "selection/SelectionFixture.h"

#include <cmath>
#include <functional>
#include <random>
#include <set>

namespace vrk::selection {

/// The view shows 400 x 300 pixels of the plane y = 0, its middle at the origin, from 1000 units away.
class FlatViewFixture : public SelectionFixture {
protected:
    FlatViewFixture() { worldPixel = 2 * 1000 * std::tan(visual::Camera::Get()->getVFOV() / 2) / 300; }

    /// The place in the plane that a pixel shows.
    rob::Posf at(double x, double y) const
    {
        return {static_cast<float>((x - 200) * worldPixel), 0, static_cast<float>((150 - y) * worldPixel)};
    }
    float units(double pixels) const { return static_cast<float>(pixels * worldPixel); }

    /// A region, and what a loop in double precision says of a pixel.
    struct Question {
        std::function<PointsOfClouds()> ask;
        std::function<Inside(const DoubleView::Pixel&)> expect;
    };
    /// Asks for regions over random clouds in random poses and views.
    /// @param next  Question(int round); asked once the cloud is shown.
    template <typename Next>
    void compareWithALoop(std::mt19937& random, unsigned firstParent, const Next& next)
    {
        int tested = 0, inside = 0;
        for (int round = 0; round < 30; ++round) {
            visual::PointCloudVisual* cloud =
                addRandomCloud(random, firstParent + static_cast<unsigned>(round),
                               [this](const std::vector<rob::Posf>& points) { return addCloud(points); });
            useOrthogonal(round % 3 == 2);
            const auto x = static_cast<float>(uniform(random, -1500, 1500));
            look({{x, -1500, static_cast<float>(uniform(random, -500, 1500))}, {0, 0, 0}});
            const Question question = next(round);
            const PointsOfClouds found = question.ask();
            std::set<std::uint64_t> numbers;
            if (const auto entry = found.find(cloud->getId()); entry != found.end())
                numbers.insert(entry->second.begin(), entry->second.end());
            const DoubleView view;
            const std::vector<rob::Posd> places = worldPoints(*cloud);
            for (std::size_t i = 0; i < places.size(); ++i) {
                const Inside expected = question.expect(view.pixelOf(places[i]));
                if (expected == Inside::Unsure)
                    continue;
                ++tested;
                inside += expected == Inside::Yes ? 1 : 0;
                ASSERT_EQ(numbers.contains(i), expected == Inside::Yes) << "round " << round << ", point " << i;
            }
            visual::Scene::Get()->deleteVisual(cloud);
        }
        useOrthogonal(false);
        EXPECT_GT(tested, 80000);
        EXPECT_GT(inside, 5000);
    }

    double worldPixel;
};

} // namespace vrk::selection
