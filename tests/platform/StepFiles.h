#pragma once

#include <TDF_Label.hxx>
#include <TDocStd_Document.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS_Shape.hxx>
#include <XCAFDoc_ColorTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>

#include <filesystem>
#include <string>

namespace vrk::test {

/// A STEP file in the making: products, assemblies of them, names and colours.
class StepDocument {
public:
    StepDocument();
    ~StepDocument();
    StepDocument(const StepDocument&) = delete;
    StepDocument& operator=(const StepDocument&) = delete;

    TDF_Label addProduct(const TopoDS_Shape& shape, const std::string& name);
    TDF_Label addAssembly(const std::string& name);
    TDF_Label addComponent(const TDF_Label& assembly, const TDF_Label& product, const TopLoc_Location& place,
                           const std::string& name);
    /// "#RRGGBB"; of a product, a component or an assembly.
    void setColor(const TDF_Label& label, const std::string& text);
    /// Of a face or a solid of a product.
    void setSubShapeColor(const TDF_Label& product, const TopoDS_Shape& subShape, const std::string& text);
    /// Of one occurrence of a component: the path of components from the outermost to it.
    void setOccurrenceColor(const TDF_LabelSequence& path, const std::string& text);

    void write(const std::filesystem::path& file);
    /// The assemblies into the file, and each product into one of its own beside it, to which that refers: "part_box.stp".
    void writeInPieces(const std::filesystem::path& file);
    /// As IGES: solids, or the faces alone, of which each says where it is trimmed.
    void writeIges(const std::filesystem::path& file, bool asSolids);

private:
    void write(const std::filesystem::path& file, const char* prefix);

    Handle(TDocStd_Document) document;
    Handle(XCAFDoc_ShapeTool) shapes;
    Handle(XCAFDoc_ColorTool) colors;
};

TopLoc_Location moved(double x, double y, double z);
/// Moved, after a quarter turn about z.
TopLoc_Location turnedAndMoved(double x, double y, double z);

} // namespace vrk::test
