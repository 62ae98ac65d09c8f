#include "kdraw/objects/material.hpp"

#include "kdraw/groups/describing_objects.hpp"

namespace kdraw {

void Material::describe(Fields& f) {
    f.subclass("AcDbMaterial");
    f.text(1, name);
    f.text(2, description);
    if (f.dxf()) return;
    bool known = true;
    const auto shade = [&](Shade& s) {
        f.rc(0, s.method);
        f.bd(0, s.factor);
        if (s.method == 1) f.bl(0, s.rgb);
    };
    const auto map = [&](Map& m) {
        if (!known) return;
        f.bd(0, m.blend);
        f.rc(0, m.projection);
        f.rc(0, m.tiling);
        f.rc(0, m.transform);
        for (double& v : m.matrix) f.bd(0, v);
        f.rc(0, m.source);
        if (m.source == 1) f.text(0, m.file);
        if (m.source <= 1) return;
        known = false;
        f.fail();
    };
    shade(ambient);
    shade(diffuse);
    map(diffuseMap);
    shade(specular);
    map(specularMap);
    if (!known) return;
    f.bd(0, gloss);
    map(reflectionMap);
    if (!known) return;
    f.bd(0, opacity);
    map(opacityMap);
    map(bumpMap);
    if (!known) return;
    f.bd(0, refraction);
    map(refractionMap);
    if (!known || f.before(Version::R2007)) return;
    f.bd(0, translucence);
    f.bd(0, selfIllumination);
    f.bd(0, reflectivity);
    f.bl(0, illumination);
    f.bl(0, channels);
    f.bl(0, mode);
}

}  // namespace kdraw
