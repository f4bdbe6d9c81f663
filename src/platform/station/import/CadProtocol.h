#pragma once

/// How the library and the program that reads CAD files talk. Not installed.
///
/// The program is called with: the word `protocol`, the process that it belongs to, the bytes of memory that it may take, what is
/// read ("bare", "meshed", "whole", "triangles" or "robot-triangles") and the file. It answers with lines on `messages`:
///
///     progress 0.5 meshing 1 of 3
///     error the STEP file is damaged      the import fails with this cause
///     memory                              it would need more than it may take
///     done 123456                         the answer is complete, and has so many bytes
namespace vrk::station::child {

constexpr const char* protocol = "vrk1";

constexpr int messages = 3; // descriptors of the program
constexpr int answer = 4;

} // namespace vrk::station::child
