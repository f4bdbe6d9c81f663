#include "UrdfFiles.h"

#include <cstdint>
#include <cstring>

namespace vrk::test {

std::string armUrdf(const std::string& name)
{
    return R"(<?xml version="1.0"?>
<robot name=")" +
           name + R"(">
  <link name="base_link"><visual><geometry><box size="0.2 0.3 0.1"/></geometry></visual></link>
  <link name="upper"/>
  <link name="slider"/>
  <link name="hand"/>
  <link name="tool0"/>
  <joint name="turn" type="revolute">
    <parent link="base_link"/><child link="upper"/>
    <origin xyz="0.1 -0.2 0.4" rpy="0.3 -0.4 0.5"/><axis xyz="1 2 -2"/>
    <limit lower="-1.5" upper="2" effort="0" velocity="1"/>
  </joint>
  <joint name="slide" type="prismatic">
    <parent link="upper"/><child link="slider"/>
    <origin xyz="0 0 0.25" rpy="1.2 0 0"/><axis xyz="0 1 0"/>
    <limit lower="-0.1" upper="0.6" effort="0" velocity="1"/>
  </joint>
  <joint name="roll" type="continuous">
    <parent link="slider"/><child link="hand"/>
    <origin xyz="0.3 0 0" rpy="0 0.7 0"/><axis xyz="0 0 1"/>
  </joint>
  <joint name="fix" type="fixed">
    <parent link="hand"/><child link="tool0"/><origin xyz="0 0 0.08" rpy="0 1.5707963267948966 0"/>
  </joint>
</robot>
)";
}

std::string oneLinkUrdf(const std::string& geometry, const std::string& more)
{
    return "<robot name=\"one\"><link name=\"body\"><visual><geometry>" + geometry + "</geometry>" + more +
           "</visual></link></robot>";
}

std::string triangleDae(const std::string& unit, const std::string& upAxis)
{
    return R"(<?xml version="1.0" encoding="utf-8"?>
<COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">
  <asset><unit name="unit" meter=")" +
           unit + R"("/><up_axis>)" + upAxis + R"(</up_axis></asset>
  <library_effects><effect id="red-effect"><profile_COMMON><technique sid="common"><lambert>
    <diffuse><color>1 0 0 1</color></diffuse></lambert></technique></profile_COMMON></effect></library_effects>
  <library_materials><material id="red" name="red"><instance_effect url="#red-effect"/></material></library_materials>
  <library_geometries><geometry id="g" name="g"><mesh>
    <source id="p"><float_array id="pa" count="9">0 0 0 1 0 0 0 1 0</float_array>
      <technique_common><accessor source="#pa" count="3" stride="3">
        <param name="X" type="float"/><param name="Y" type="float"/><param name="Z" type="float"/>
      </accessor></technique_common></source>
    <vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
    <triangles material="red" count="1"><input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2</p></triangles>
  </mesh></geometry></library_geometries>
  <library_visual_scenes><visual_scene id="s"><node id="n">
    <instance_geometry url="#g"><bind_material><technique_common>
      <instance_material symbol="red" target="#red"/></technique_common></bind_material></instance_geometry>
  </node></visual_scene></library_visual_scenes>
  <scene><instance_visual_scene url="#s"/></scene>
</COLLADA>
)";
}

std::string triangleStl()
{
    std::string bytes(80, ' ');
    const std::uint32_t count = 1;
    const float numbers[12] = {0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 2, 0};
    bytes.append(reinterpret_cast<const char*>(&count), sizeof count);
    bytes.append(reinterpret_cast<const char*>(numbers), sizeof numbers);
    return bytes + std::string(2, '\0');
}

} // namespace vrk::test
