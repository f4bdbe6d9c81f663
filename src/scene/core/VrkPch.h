// Precompiled: the heavy headers that most sources of the view need.
#pragma once

#include <Ogre.h>

#include <BRep_Tool.hxx>
#include <NCollection_IndexedMap.hxx>
#include <Poly_Triangulation.hxx>
#include <TopExp.hxx>
#include <TopTools_ShapeMapHasher.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>
