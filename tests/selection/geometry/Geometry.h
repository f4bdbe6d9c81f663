#pragma once

#include "scene/math/Shapes.h"
#include "selection/geometry/Box.h"
#include "selection/geometry/PrimitiveContainer.h"

#include <atomic>
#include <limits>
#include <memory>
#include <ostream>
#include <random>
#include <vector>

/// Values are printed in failures.
namespace vrk::rob {
inline void PrintTo(const Posf& p, std::ostream* out)
{
    *out << "(" << p.x << ", " << p.y << ", " << p.z << ")";
}
} // namespace vrk::rob

namespace vrk::selection {

inline constexpr float largest = std::numeric_limits<float>::max();
inline constexpr float nan = std::numeric_limits<float>::quiet_NaN();

/// Seeded random geometry in a cube of `reach` around the origin.
class Dice {
public:
    explicit Dice(unsigned seed, float reach = 10.0f) : random(seed), reach(reach) {}

    float number(float from, float to) { return std::uniform_real_distribution<float>(from, to)(random); }
    unsigned below(unsigned n) { return std::uniform_int_distribution<unsigned>(0, n - 1)(random); }
    rob::Posf point() { return {number(-reach, reach), number(-reach, reach), number(-reach, reach)}; }
    rob::Linef line()
    {
        const rob::Posf start = point();
        return {start, point()};
    }
    rob::Trianglef triangle()
    {
        const rob::Posf a = point(), b = point();
        return {a, b, point()};
    }
    Ray ray()
    {
        const rob::Posf origin = point();
        return {origin, rob::normalized(point())};
    }
    Box box(float largestHalf)
    {
        const rob::Posf c = point();
        const float x = number(0, largestHalf), y = number(0, largestHalf), z = number(0, largestHalf);
        return {c.x - x, c.y - y, c.z - z, c.x + x, c.y + y, c.z + z};
    }

private:
    std::mt19937 random;
    float reach;
};

/// Answers every question from what it was told, and says it was asked.
class FakePrimitive : public BVHPrimitive {
public:
    explicit FakePrimitive(const Box& where) { box = where; }
    ~FakePrimitive() override
    {
        if (deaths != nullptr)
            ++*deaths;
    }

    void intersectLine(Result& result, const rob::Linef&) const override { answer(result); }
    void intersectTriangle(Result& result, const rob::Trianglef&) const override { answer(result); }
    void intersectRay(Result& result, const Ray&) const override { answer(result); }
    void forEachInBox(const Box&, std::function<void(unsigned)> callback) const override { callback(number); }

    bool hits = true;
    float distance = 1;
    unsigned number = 0;
    int* deaths = nullptr;
    mutable int asked = 0;

private:
    void answer(Result& result) const
    {
        ++asked;
        result = Result();
        result.hit = hits;
        result.distance = distance;
        result.pointIndex = static_cast<int>(number);
    }
};

/// A callback that knows how often it was copied and called, by all its copies together and on any thread.
class CopiedCallback {
public:
    CopiedCallback() = default;
    CopiedCallback(const CopiedCallback& o) : counts(o.counts) { ++counts->copies; }
    CopiedCallback& operator=(const CopiedCallback&) = delete;
    void operator()(unsigned) const { ++counts->calls; }
    int copies() const { return counts->copies; }
    int calls() const { return counts->calls; }

private:
    struct Counts {
        std::atomic<int> copies{0};
        std::atomic<int> calls{0};
    };
    std::shared_ptr<Counts> counts = std::make_shared<Counts>();
};

/// Adds a primitive numbered by its place.
inline FakePrimitive& add(PrimitiveContainer& container, const Box& where)
{
    auto* primitive = new FakePrimitive(where);
    primitive->number = static_cast<unsigned>(container.primitives.size());
    container.primitives.push_back(primitive);
    return *primitive;
}

/// A box of half size 1 about a point.
inline Box around(float x, float y, float z)
{
    return {x - 1, y - 1, z - 1, x + 1, y + 1, z + 1};
}

inline std::vector<unsigned> numbersOf(const std::vector<BVHPrimitive*>& primitives)
{
    std::vector<unsigned> numbers;
    for (const BVHPrimitive* primitive : primitives)
        numbers.push_back(static_cast<const FakePrimitive*>(primitive)->number);
    return numbers;
}

inline std::vector<unsigned> numbersBelow(const BVHNode* node)
{
    std::vector<BVHPrimitive*> primitives;
    node->collectPrimitives(primitives);
    return numbersOf(primitives);
}

} // namespace vrk::selection
