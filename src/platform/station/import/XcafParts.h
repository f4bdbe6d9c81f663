#pragma once

#include "platform/station/import/CadParts.h"

#include <TDocStd_Document.hxx>

#include <map>
#include <string>

/// Parts and assemblies of what Open CASCADE's readers make of a file with products. Not installed.
namespace vrk::station {

/// A document of the one application, which must be closed to be freed.
class XcafDocument {
public:
    /// Where a product is that the file only refers to.
    struct Reference {
        std::string file;                       // as the file calls it
        const XcafDocument* document = nullptr; // null where it cannot be read
    };

    /// @param title  for what has no name: the file's name without its ending.
    explicit XcafDocument(std::string title);
    ~XcafDocument();
    XcafDocument(const XcafDocument&) = delete;
    XcafDocument& operator=(const XcafDocument&) = delete;

    const std::string title;
    Handle(TDocStd_Document) document;
    std::map<int, Reference> references; // by the tags of the products' labels
};

struct XcafContent {
    CadParts parts;
    /// How many occurrences there are of products in files that cannot be read, by what these are called.
    std::map<std::string, std::size_t> absent;
};

/// Each occurrence of a product becomes a part, and each of an assembly an assembly, named by the occurrence where the file
/// has a name for it that tells something, else by the product, what is around it, or the file. Where several things are in
/// no assembly, one of the file's name holds them.
/// @param file  gives the geometry its names.
XcafContent partsOf(const XcafDocument& document, const std::filesystem::path& file);

} // namespace vrk::station
