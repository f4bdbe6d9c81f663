#pragma once

#include "mesh/Mesh.h"
#include "platform/layout/Body.h" // the type of a face map

#include <exception>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

class TopoDS_Shape;

namespace cadcam {
template <typename T>
class TMesh;
}
namespace vrk {
struct ColorInfo;
}

namespace vrk::visual {

class FacetVisual;
class PaintMesh;
class SolidVisual;

/// A shape has no triangle that could be drawn.
class VRK_EXPORT NoTriangleMesh : public std::exception {};

/// Everything between triangles in memory and OGRE's meshes: the registry by name, the upload, the users of meshes that
/// several solids share, the colours in the vertex buffers and the fixed meshes of the gizmos.
///
/// A mesh is known by its name everywhere, and its OGRE mesh has the same name. How a mesh ends depends on its kind:
/// a solid's with its last user (`removeOgreMesh`), a registered one by `deleteMesh`, a global one never.
///
/// Owner: the library, from start-up to the end of the process. Thread: render thread, but for `Get`, `CreateMesh`,
/// `getShapeMesh`, `simplifyMesh` and `createPaintMeshFromMesh`.
class VRK_EXPORT MeshManager {
public:
    /// The one instance; null before start-up.
    static MeshManager* Get();
    /// Makes the one instance, with all global meshes. OGRE must be up.
    static void Init();

    /// Builds the global meshes. Copies and moves do not: they take the maps, which share their pointers.
    MeshManager();
    MeshManager(const MeshManager&);
    MeshManager& operator=(const MeshManager&);
    MeshManager(MeshManager&&) noexcept;
    MeshManager& operator=(MeshManager&&) noexcept;
    ~MeshManager();

    // Registered meshes

    /// Enters and uploads the mesh, which the registry keeps from now on. If its name is taken nothing happens and the
    /// mesh stays the caller's.
    void addMesh(Mesh* mesh);
    /// Null for an unknown name.
    Mesh* getMesh(const std::string& name);
    bool hasMesh(const std::string& name);
    /// Takes the mesh of this name out of the registry, removes its OGRE mesh and deletes the mesh. One that is held by
    /// `holdMesh` is deleted when its last holder gives it back.
    void deleteMesh(Mesh* mesh);
    /// Keeps a mesh in memory until `releaseMesh` is called as often as this was, even if it is deleted meanwhile. Several
    /// visuals may draw one mesh: the first that dies deletes it, and picking still needs its triangles for the others.
    static void holdMesh(Mesh* mesh);
    static void releaseMesh(Mesh* mesh);

    // Paint

    /// The skin for paint of a body, neither registered nor uploaded, and the caller's. It is named as the mesh of the body
    /// with "_paint" behind it, and the id of the body where that name is taken.
    /// @return null for a body without triangles.
    /// @throws the failures of `getShapeMesh` and `createPaintMeshFromMesh`.
    PaintMesh* createPaintMesh(FacetVisual* body);
    /// The same of any mesh, named with "_paint" behind its name: triangles with edges of a fiftieth of its greatest extent,
    /// but from 2 to 10 model units, and each vertex blue and wholly transparent. The mesh stays as it is. Any thread.
    /// @throws std::length_error where it would be more triangles than `vrk::cam::remesh` makes; std::out_of_range for an
    ///         index past the vertices.
    PaintMesh* createPaintMeshFromMesh(Mesh* mesh);
    /// Enters the mesh, in place of one of its name, and uploads it; the registry keeps it from now on. Vertices for which
    /// it has no colour are transparent, and those without a normal get (0, 0, 1).
    void addPaintMesh(PaintMesh* mesh);
    /// Uploads the colours that changed, in the order of the changes, under one lock of them all. Nothing is locked where
    /// nothing changed.
    void updatePaintMeshColor(PaintMesh* mesh);
    /// The same, without a lock of what did not change: the table goes there in blocks, of which there are 256, and only those
    /// in which something changed. Nothing is allocated.
    void uploadPaintColors(PaintMesh* mesh);

    // Global meshes

    /// Null for an unknown name.
    Mesh* getGlobalMesh(const std::string& name);
    bool hasGlobalMesh(const std::string& name);

    // Meshes of solids

    /// Gives back one user of a solid's OGRE mesh; the last one removes it. An unknown name does nothing.
    void removeOgreMesh(const std::string& name);
    /// Makes sure that the OGRE mesh of the solid's current name exists, and counts a user.
    /// @throws NoTriangleMesh; the failures of `getShapeMesh`. The user stays counted.
    void loadShape(SolidVisual* solid);
    /// The same with given colours. They are ignored where the OGRE mesh exists already: it keeps the colours that it was
    /// made with.
    void loadShape(SolidVisual* solid, const ColorInfo& colors);
    /// The triangles of the faces that the solid shows, face after face, where the locations of the faces put them. Model
    /// units.
    ///
    /// @param shape   not read; the faces are those of the map.
    /// @param colors  null for a mesh without colours.
    /// @return null if there is no usable triangle.
    /// @throws Standard_TypeMismatch "TopoDS::Face" for an entry that is no face; Standard_ConstructionError "gp_Dir() -
    ///         input vector has zero norm" for a normal of no length; the failures of `geometry::ParseColorText`.
    static std::unique_ptr<Mesh> getShapeMesh(const TopoDS_Shape& shape, const layout::FaceMap& faces,
                                              SolidVisual* solid, const ColorInfo* colors);

    // Colours in the vertex buffers. Each does nothing where there is no OGRE mesh, or one without colours.

    /// All vertices of the OGRE mesh of that name, so of every solid that shares it.
    static void SetColor(const std::string& meshName, const rob::ColorTemplate<float>& color);
    /// The vertices of one face, counted from 1: only their bytes are locked. A hidden face, and face 0, change nothing.
    /// @throws Standard_OutOfRange "NCollection_IndexedMap::FindKey" past the last face.
    static void SetFaceColor(SolidVisual* solid, unsigned face, const rob::ColorTemplate<float>& color);
    /// The colour of a face's first vertex, read back from the buffer; black if there is none. For solids without hidden
    /// faces only: it counts the vertices of all faces.
    static rob::ColorTemplate<float> GetFaceColor(const std::string& meshName, const TopoDS_Shape& shape,
                                                  unsigned face);
    /// Writes the model's colours to all vertices again. Highlighted and selected faces lose their colours, too.
    static void ColorReset(SolidVisual* solid);

    // STL

    /// Reads an STL file, registers it under its path and uploads it. A name that is registered is returned as it is.
    /// @throws std::runtime_error "Not stl file" for another ending than ".stl" or ".STL"; the path of a file that
    ///         cannot be opened; the failures of `parseStl`.
    Mesh* loadStl(const std::string& path);

    // PLY

    /// The same of a PLY file with faces, the normals and colours of its points included.
    /// @throws std::runtime_error "Not ply file" for another ending than ".ply"; the path of a file that cannot be opened, or
    ///         the path and what is damaged.
    Mesh* loadPly(const std::string& path);

    // Surfaces of machining

    /// The mesh with fewer triangles, within a thousandth of its greatest extent, but from 0.02 to 1 model units. Any thread.
    /// @return false, with both results as they were, where the mesh has fewer than 64 triangles or an extent of nothing, or
    ///         comes out no simpler.
    /// @throws std::out_of_range for an index past the vertices.
    static bool simplifyMesh(const Mesh& mesh, std::vector<rob::PosTemplate<float>>& vertices,
                             std::vector<unsigned>& indices);
    /// Uploads a mesh under the one name of all such, and returns it unregistered, the caller's. As long as one of that name
    /// is on the GPU it is the one that is drawn.
    Mesh* loadCamMesh(cadcam::TMesh<double>* mesh);

    /// A flat-shaded mesh that is neither registered nor uploaded: each triangle has three vertices of its own and their
    /// normal, which is not normalised.
    /// @throws std::out_of_range "invalid vector subscript" for an index past the end of `points`.
    static Mesh* CreateMesh(std::string name, const std::vector<rob::PosTemplate<float>>& points,
                            const std::vector<unsigned>& indices);
    /// A text as flat triangles in the xy plane, facing +z, named by the text: neither registered nor uploaded, and the
    /// caller's. A capital stands about 1 high, whatever `size` says; to have another size scale the node.
    static Mesh* CreateTextMesh(std::string text, double size);

private:
    /// Enters the mesh unless its name is taken, and uploads it in either case.
    void addGlobalMesh(Mesh* mesh);
    /// Enters the mesh without uploading it. Where its name is taken, the mesh that has it is returned and this one freed.
    Mesh* enterGlobalMesh(std::unique_ptr<Mesh> mesh);
    /// Makes the OGRE mesh of the mesh's name, unless there is one: the first upload of a name wins.
    void loadToGpu(Mesh* mesh);
    /// The same with the colours in a buffer of their own, which may be written often.
    void loadToGpu(PaintMesh* mesh);
    /// With a normal of (0, 0, 1) for each triangle.
    static cadcam::TMesh<double> toCadcamMesh(const Mesh& mesh);

    // The components of gizmos. Each is made and entered as a global mesh. A sphere is uploaded at once; the others are
    // uploaded by the caller, and only where they are drawn by themselves.

    Mesh* createConeComponent(const std::string& name, float radius, float height);
    Mesh* createCylinderComponent(const std::string& name, float radius, float height, int stacks, int slices);
    Mesh* createSphereComponent(const std::string& name, float radius, int stacks, int slices);
    Mesh* createTorusComponent(const std::string& name, float major, float minor, int stacks, int slices);
    Mesh* createTorusSectorComponent(const std::string& name, float sweep, float major, float minor, int stacks,
                                     int slices);
    /// The spelling is part of the interface and stays.
    void createGlobleMeshes();
    void createGlobalFrameMesh();
    void createDragHandleMesh();
    void createDragHandle();
    void createVectorHandleMesh();
    void createMfgArrow();
    void createUVIndicator();
    /// A frame of three lines of unit length, for instances: an OGRE mesh that has no `Mesh`.
    void createFrameOgreMesh(const std::string& name);

    std::unordered_map<std::string, Mesh*> globalMeshes;
    std::unordered_map<std::string, Mesh*> meshes;
    std::unordered_map<std::string, unsigned> ogreMeshUsers;
};

} // namespace vrk::visual
