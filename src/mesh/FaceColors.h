#pragma once

#include "mesh/ShapeTriangles.h"

#include <string>

/// Colours in the vertex buffer of an uploaded shape mesh. Each does nothing where there is no such mesh, or one without
/// colours. Render thread.
namespace vrk::visual {

/// The vertices of one face, counted from 1: only their bytes are locked. A face that is not visible changes nothing.
/// @throws Standard_OutOfRange "NCollection_IndexedMap::FindKey" past the last face.
void writeFaceColor(const std::string& meshName, const layout::FaceMap& faces, const FaceFilter& isVisible,
                    unsigned face, const rob::ColorTemplate<float>& color);
/// A run of the vertices. What lies past the mesh's end is left out.
void writeRunColor(const std::string& meshName, const VertexRun& run, const rob::ColorTemplate<float>& color);
/// The colours that the model has for this body.
/// @throws what `geometry::BodyColorTool::GetColorInfo` throws.
void writeModelColors(const std::string& meshName, const layout::FaceMap& faces, const FaceFilter& isVisible,
                      unsigned body);

} // namespace vrk::visual
