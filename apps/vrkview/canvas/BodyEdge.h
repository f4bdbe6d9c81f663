#pragma once

class TopoDS_Edge;
class TopoDS_Face;
class TopoDS_Vertex;

namespace vrkview {

/// An edge of a solid that is in the scene, by its number from 1 in the solid's shape; null where there is none. Reads the
/// whole shape. Render thread.
TopoDS_Edge edgeOfBody(unsigned body, unsigned edge);
/// The same of a face.
TopoDS_Face faceOfBody(unsigned body, unsigned face);
/// The same of a vertex.
TopoDS_Vertex vertexOfBody(unsigned body, unsigned vertex);

} // namespace vrkview
