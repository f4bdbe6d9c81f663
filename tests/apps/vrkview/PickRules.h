#pragma once

#include <map>
#include <string>
#include <vector>

namespace vrkview::test {

class IdPicture;

/// Why a pick may name something else than what is drawn at its pixel. Every rule is a bound that is checked, of how the
/// picture and the pick are made; none excuses a wrong answer elsewhere.
enum class Verdict {
    Same,
    Silhouette, ///< a neighbouring pixel shows what was picked, and a pick 1/8 of a pixel beside answers what is drawn
    TriangleBorder, ///< the ray meets a border of two triangles exactly and so neither; 1/64 of a pixel beside it does
    NearlyParallel, ///< box tests take a ray within 0.001 of parallel to a plane of axes as parallel, and miss thin boxes
    DepthStep,      ///< two surfaces nearer to each other than the depth buffer can tell
    LineReach,      ///< a line is picked within 5 pixels, and wins over what is up to 2.5 pixels before it
    LineLift,       ///< a line is drawn before a surface that hides it by less than the lift that lines are drawn with
    PointReach,     ///< a point is picked within 2 units, which may be more than its mark has pixels
    PointMark,      ///< a point's mark is a few pixels wide and lifted, whatever it is picked by
    Unexplained,
};

const char* nameOf(Verdict verdict);

/// The pick at the middle of a pixel beside what the picture shows there.
Verdict compareAt(const IdPicture& picture, int x, int y);

struct Comparison {
    std::map<Verdict, int> counts;
    std::vector<std::string> unexplained; // each with its pixel and both names

    int compared() const;
    int count(Verdict verdict) const;
    std::string summary() const;
};

/// At every `step`th pixel of every `step`th row.
Comparison compareAll(const IdPicture& picture, int step);

} // namespace vrkview::test
