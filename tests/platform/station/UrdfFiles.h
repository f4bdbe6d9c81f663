#pragma once

#include <string>

namespace vrk::test {

/// A description of an arm with three joints that move, of all kinds but planar and floating, and no meshes.
/// Its frames are turned and its axes askew.
std::string armUrdf(const std::string& name = "test_arm");
/// A robot with one link that shows `geometry`.
std::string oneLinkUrdf(const std::string& geometry, const std::string& more = {});
/// A Collada file of one triangle, (0,0,0) (1,0,0) (0,1,0) times `unit` metres, of a red material.
std::string triangleDae(const std::string& unit = "1", const std::string& upAxis = "Z_UP");
/// A binary STL file of the triangle (0,0,0) (1,0,0) (0,2,0).
std::string triangleStl();

} // namespace vrk::test
