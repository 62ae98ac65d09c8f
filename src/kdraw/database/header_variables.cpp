#include "kdraw/database/header_variables.hpp"

#include <cmath>

#include "kdraw/fields/bit_writer.hpp"
#include "kdraw/groups/dxf_fields.hpp"
#include "kdraw/groups/describing_objects.hpp"

namespace kdraw {

namespace {

// Bits of the packed flags.
constexpr std::int32_t kWeight = 0x1F, kEndCaps = 0x60, kJoinStyle = 0x180, kWeightsHidden = 0x200, kNoXEdit = 0x400,
                       kExtendedNames = 0x800, kColorStyles = 0x2000, kOleStartup = 0x4000;

constexpr double kDay = 86400000.0;

}  // namespace

void HeaderVariables::Date::describe(Fields& f) {
    if (!f.dxf()) {
        f.bl(0, day);
        f.bl(0, milliseconds);
        return;
    }
    double days = day + milliseconds / kDay;
    f.bd(40, days);
    if (f.reading()) setDays(days);
}

void HeaderVariables::Date::setDays(double days) {
    if (!(days >= 0.0 && days < 1e9)) days = 0.0;
    day = static_cast<std::int32_t>(std::floor(days));
    milliseconds = static_cast<std::int32_t>(std::lround((days - day) * kDay));
}

int HeaderVariables::currentLineweight() const { return lineweightOf(static_cast<std::uint8_t>(flags & kWeight)); }

void HeaderVariables::setCurrentLineweight(int hundredths) { flags = (flags & ~kWeight) | lineweightIndex(hundredths); }

void HeaderVariables::describeFlags(Fields& f) {
    if (!f.dxf()) {
        f.bl(0, flags);
        return;
    }
    const auto part = [&](const char* name, std::int32_t bits, int shift) {
        std::int32_t v = (flags & bits) >> shift;
        if (f.variable(name)) f.rc(280, v);
        flags = (flags & ~bits) | (v << shift & bits);
    };
    const auto flag = [&](const char* name, std::int32_t bit, bool inverted) {
        bool v = ((flags & bit) != 0) != inverted;
        if (f.variable(name)) f.b(290, v);
        flags = v != inverted ? flags | bit : flags & ~bit;
    };
    int weight = currentLineweight();
    if (f.variable("$CELWEIGHT")) f.bs(370, weight);
    setCurrentLineweight(weight);
    part("$ENDCAPS", kEndCaps, 5);
    part("$JOINSTYLE", kJoinStyle, 7);
    flag("$LWDISPLAY", kWeightsHidden, true);
    flag("$XEDIT", kNoXEdit, true);
    flag("$EXTNAMES", kExtendedNames, false);
    flag("$PSTYLEMODE", kColorStyles, false);
    flag("$OLESTARTUP", kOleStartup, false);
}

void HeaderVariables::describe(Fields& f) {
    // In groups a name is empty when there is no record, and a handle that is none is left out.
    const auto named = [&](const char* name, Table table, int code, Handle& v) {
        if (!f.variable(name)) return;
        if (f.output() != nullptr && v == 0)
            f.output()->text(code, "");
        else
            f.record(table, code, v);
    };
    const auto pointer = [&](const char* name, int code, Handle& v) {
        if (f.output() != nullptr && v == 0) return;
        if (f.variable(name)) f.handle(Ref::HardPointer, code, v);
    };
    if (f.since(Version::R2013) && f.variable("$REQUIREDVERSIONS")) f.bll(160, requiredversions);
    f.bd(0, unknown1);
    f.bd(0, unknown2);
    f.bd(0, unknown3);
    f.bd(0, unknown4);
    f.text(0, unknown5);
    f.text(0, unknown6);
    f.text(0, unknown7);
    f.text(0, unknown8);
    f.bl(0, unknown9);
    f.bl(0, unknown10);
    if (f.before(Version::R2004)) f.handle(Ref::HardPointer, 0, viewportHeader);
    if (f.variable("$DIMASO")) f.b(70, dimaso);
    if (f.variable("$DIMSHO")) f.b(70, dimsho);
    if (f.variable("$PLINEGEN")) f.b(70, plinegen);
    if (f.variable("$ORTHOMODE")) f.b(70, orthomode);
    if (f.variable("$REGENMODE")) f.b(70, regenmode);
    if (f.variable("$FILLMODE")) f.b(70, fillmode);
    if (f.variable("$QTEXTMODE")) f.b(70, qtextmode);
    if (f.variable("$PSLTSCALE")) f.b(70, psltscale);
    if (f.variable("$LIMCHECK")) f.b(70, limcheck);
    if (f.since(Version::R2004)) f.b(0, unknown11);
    if (f.variable("$USRTIMER")) f.b(70, usrtimer);
    if (f.variable("$SKPOLY")) f.b(70, skpoly);
    if (f.variable("$ANGDIR")) f.b(70, angdir);
    if (f.variable("$SPLFRAME")) f.b(70, splframe);
    if (f.variable("$MIRRTEXT")) f.b(70, mirrtext);
    if (f.variable("$WORLDVIEW")) f.b(70, worldview);
    if (f.variable("$TILEMODE")) f.b(70, tilemode);
    if (f.variable("$PLIMCHECK")) f.b(70, plimcheck);
    if (f.variable("$VISRETAIN")) f.b(70, visretain);
    if (f.variable("$DISPSILH")) f.b(70, dispsilh);
    if (f.variable("$PELLIPSE")) f.b(70, pellipse);
    if (f.variable("$PROXYGRAPHICS")) f.bs(70, proxygraphics);
    if (f.variable("$TREEDEPTH")) f.bs(70, treedepth);
    if (f.variable("$LUNITS")) f.bs(70, lunits);
    if (f.variable("$LUPREC")) f.bs(70, luprec);
    if (f.variable("$AUNITS")) f.bs(70, aunits);
    if (f.variable("$AUPREC")) f.bs(70, auprec);
    if (f.variable("$ATTMODE")) f.bs(70, attmode);
    if (f.variable("$PDMODE")) f.bs(70, pdmode);
    if (f.since(Version::R2004)) f.bl(0, unknown12);
    if (f.since(Version::R2004)) f.bl(0, unknown13);
    if (f.since(Version::R2004)) f.bl(0, unknown14);
    if (f.variable("$USERI1")) f.bs(70, useri1);
    if (f.variable("$USERI2")) f.bs(70, useri2);
    if (f.variable("$USERI3")) f.bs(70, useri3);
    if (f.variable("$USERI4")) f.bs(70, useri4);
    if (f.variable("$USERI5")) f.bs(70, useri5);
    if (f.variable("$SPLINESEGS")) f.bs(70, splinesegs);
    if (f.variable("$SURFU")) f.bs(70, surfu);
    if (f.variable("$SURFV")) f.bs(70, surfv);
    if (f.variable("$SURFTYPE")) f.bs(70, surftype);
    if (f.variable("$SURFTAB1")) f.bs(70, surftab1);
    if (f.variable("$SURFTAB2")) f.bs(70, surftab2);
    if (f.variable("$SPLINETYPE")) f.bs(70, splinetype);
    if (f.variable("$SHADEDGE")) f.bs(70, shadedge);
    if (f.variable("$SHADEDIF")) f.bs(70, shadedif);
    if (f.variable("$UNITMODE")) f.bs(70, unitmode);
    if (f.variable("$MAXACTVP")) f.bs(70, maxactvp);
    if (f.variable("$ISOLINES")) f.bs(70, isolines);
    if (f.variable("$CMLJUST")) f.bs(70, cmljust);
    if (f.variable("$TEXTQLTY")) f.bs(70, textqlty);
    if (f.variable("$LTSCALE")) f.bd(40, ltscale);
    if (f.variable("$TEXTSIZE")) f.bd(40, textsize);
    if (f.variable("$TRACEWID")) f.bd(40, tracewid);
    if (f.variable("$SKETCHINC")) f.bd(40, sketchinc);
    if (f.variable("$FILLETRAD")) f.bd(40, filletrad);
    if (f.variable("$THICKNESS")) f.bd(40, thickness);
    if (f.variable("$ANGBASE")) f.angle(50, angbase);
    if (f.variable("$PDSIZE")) f.bd(40, pdsize);
    if (f.variable("$PLINEWID")) f.bd(40, plinewid);
    if (f.variable("$USERR1")) f.bd(40, userr1);
    if (f.variable("$USERR2")) f.bd(40, userr2);
    if (f.variable("$USERR3")) f.bd(40, userr3);
    if (f.variable("$USERR4")) f.bd(40, userr4);
    if (f.variable("$USERR5")) f.bd(40, userr5);
    if (f.variable("$CHAMFERA")) f.bd(40, chamfera);
    if (f.variable("$CHAMFERB")) f.bd(40, chamferb);
    if (f.variable("$CHAMFERC")) f.bd(40, chamferc);
    if (f.variable("$CHAMFERD")) f.bd(40, chamferd);
    if (f.variable("$FACETRES")) f.bd(40, facetres);
    if (f.variable("$CMLSCALE")) f.bd(40, cmlscale);
    if (f.variable("$CELTSCALE")) f.bd(40, celtscale);
    if (f.variable("$MENU")) f.text(1, menu);
    if (f.variable("$TDCREATE")) tdcreate.describe(f);
    if (f.variable("$TDUPDATE")) tdupdate.describe(f);
    if (f.since(Version::R2004)) f.bl(0, unknown15);
    if (f.since(Version::R2004)) f.bl(0, unknown16);
    if (f.since(Version::R2004)) f.bl(0, unknown17);
    if (f.variable("$TDINDWG")) tdindwg.describe(f);
    if (f.variable("$TDUSRTIMER")) tdusrtimer.describe(f);
    if (f.variable("$CECOLOR")) f.color(62, 0, cecolor);
    if (f.variable("$HANDSEED")) dataHandle(f, 5, handseed);
    named("$CLAYER", Table::Layer, 8, clayer);
    named("$TEXTSTYLE", Table::Style, 7, textstyle);
    named("$CELTYPE", Table::Linetype, 6, celtype);
    if (f.since(Version::R2007)) pointer("$CMATERIAL", 347, cmaterial);
    named("$DIMSTYLE", Table::DimStyle, 2, dimstyle);
    f.handle(Ref::HardPointer, 0, cmlstyle);
    if (f.variable("$PSVPSCALE")) f.bd(40, psvpscale);
    if (f.variable("$PINSBASE")) f.bd3(10, pinsbase);
    if (f.variable("$PEXTMIN")) f.bd3(10, pextmin);
    if (f.variable("$PEXTMAX")) f.bd3(10, pextmax);
    if (f.variable("$PLIMMIN")) f.rd2(10, plimmin);
    if (f.variable("$PLIMMAX")) f.rd2(10, plimmax);
    if (f.variable("$PELEVATION")) f.bd(40, pelevation);
    if (f.variable("$PUCSORG")) f.bd3(10, pucsorg);
    if (f.variable("$PUCSXDIR")) f.bd3(10, pucsxdir);
    if (f.variable("$PUCSYDIR")) f.bd3(10, pucsydir);
    named("$PUCSNAME", Table::Ucs, 2, pucsname);
    named("$PUCSORTHOREF", Table::Ucs, 2, pucsorthoref);
    if (f.variable("$PUCSORTHOVIEW")) f.bs(70, pucsorthoview);
    named("$PUCSBASE", Table::Ucs, 2, pucsbase);
    if (f.variable("$PUCSORGTOP")) f.bd3(10, pucsorgtop);
    if (f.variable("$PUCSORGBOTTOM")) f.bd3(10, pucsorgbottom);
    if (f.variable("$PUCSORGLEFT")) f.bd3(10, pucsorgleft);
    if (f.variable("$PUCSORGRIGHT")) f.bd3(10, pucsorgright);
    if (f.variable("$PUCSORGFRONT")) f.bd3(10, pucsorgfront);
    if (f.variable("$PUCSORGBACK")) f.bd3(10, pucsorgback);
    if (f.variable("$INSBASE")) f.bd3(10, insbase);
    if (f.variable("$EXTMIN")) f.bd3(10, extmin);
    if (f.variable("$EXTMAX")) f.bd3(10, extmax);
    if (f.variable("$LIMMIN")) f.rd2(10, limmin);
    if (f.variable("$LIMMAX")) f.rd2(10, limmax);
    if (f.variable("$ELEVATION")) f.bd(40, elevation);
    if (f.variable("$UCSORG")) f.bd3(10, ucsorg);
    if (f.variable("$UCSXDIR")) f.bd3(10, ucsxdir);
    if (f.variable("$UCSYDIR")) f.bd3(10, ucsydir);
    named("$UCSNAME", Table::Ucs, 2, ucsname);
    named("$UCSORTHOREF", Table::Ucs, 2, ucsorthoref);
    if (f.variable("$UCSORTHOVIEW")) f.bs(70, ucsorthoview);
    named("$UCSBASE", Table::Ucs, 2, ucsbase);
    if (f.variable("$UCSORGTOP")) f.bd3(10, ucsorgtop);
    if (f.variable("$UCSORGBOTTOM")) f.bd3(10, ucsorgbottom);
    if (f.variable("$UCSORGLEFT")) f.bd3(10, ucsorgleft);
    if (f.variable("$UCSORGRIGHT")) f.bd3(10, ucsorgright);
    if (f.variable("$UCSORGFRONT")) f.bd3(10, ucsorgfront);
    if (f.variable("$UCSORGBACK")) f.bd3(10, ucsorgback);
    dim.describe(f, true);
    f.handle(Ref::HardOwner, 0, blockControl);
    f.handle(Ref::HardOwner, 0, layerControl);
    f.handle(Ref::HardOwner, 0, styleControl);
    f.handle(Ref::HardOwner, 0, linetypeControl);
    f.handle(Ref::HardOwner, 0, viewControl);
    f.handle(Ref::HardOwner, 0, ucsControl);
    f.handle(Ref::HardOwner, 0, viewportControl);
    f.handle(Ref::HardOwner, 0, appIdControl);
    f.handle(Ref::HardOwner, 0, dimStyleControl);
    if (f.before(Version::R2004)) f.handle(Ref::HardOwner, 0, viewportHeaderControl);
    f.handle(Ref::HardPointer, 0, groups);
    f.handle(Ref::HardPointer, 0, mlineStyles);
    f.handle(Ref::HardOwner, 0, rootDictionary);
    if (f.variable("$TSTACKALIGN")) f.bs(70, tstackalign);
    if (f.variable("$TSTACKSIZE")) f.bs(70, tstacksize);
    if (f.variable("$HYPERLINKBASE")) f.text(1, hyperlinkbase);
    if (f.variable("$STYLESHEET")) f.text(1, stylesheet);
    f.handle(Ref::HardPointer, 0, layouts);
    f.handle(Ref::HardPointer, 0, plotSettings);
    f.handle(Ref::HardPointer, 0, plotStyleNames);
    if (f.since(Version::R2004)) f.handle(Ref::HardPointer, 0, materials);
    if (f.since(Version::R2004)) f.handle(Ref::HardPointer, 0, colors);
    if (f.since(Version::R2007)) f.handle(Ref::HardPointer, 0, visualStyles);
    if (f.since(Version::R2013)) f.handle(Ref::HardPointer, 0, unknown18);
    describeFlags(f);
    if (f.variable("$INSUNITS")) f.bs(70, insunits);
    if (f.variable("$CEPSNTYPE")) f.bs(380, cepsntype);
    if (cepsntype == 3) pointer("$CPSNID", 390, cpsnid);
    if (f.variable("$FINGERPRINTGUID")) f.text(2, fingerprintguid);
    if (f.variable("$VERSIONGUID")) f.text(2, versionguid);
    if (f.since(Version::R2004) && f.variable("$SORTENTS")) f.rc(280, sortents);
    if (f.since(Version::R2004) && f.variable("$INDEXCTL")) f.rc(280, indexctl);
    if (f.since(Version::R2004) && f.variable("$HIDETEXT")) f.rc(280, hidetext);
    if (f.since(Version::R2004) && f.variable("$XCLIPFRAME")) f.rc(280, xclipframe);
    if (f.since(Version::R2004) && f.variable("$DIMASSOC")) f.rc(280, dimassoc);
    if (f.since(Version::R2004) && f.variable("$HALOGAP")) f.rc(280, halogap);
    if (f.since(Version::R2004) && f.variable("$OBSCOLOR")) f.bs(70, obscolor);
    if (f.since(Version::R2004) && f.variable("$INTERSECTIONCOLOR")) f.bs(70, intersectioncolor);
    if (f.since(Version::R2004) && f.variable("$OBSLTYPE")) f.rc(280, obsltype);
    if (f.since(Version::R2004) && f.variable("$INTERSECTIONDISPLAY")) f.rc(280, intersectiondisplay);
    if (f.since(Version::R2004) && f.variable("$PROJECTNAME")) f.text(1, projectname);
    f.handle(Ref::HardPointer, 0, paperSpace);
    f.handle(Ref::HardPointer, 0, modelSpace);
    f.handle(Ref::HardPointer, 0, byLayer);
    f.handle(Ref::HardPointer, 0, byBlock);
    f.handle(Ref::HardPointer, 0, continuous);
    if (f.since(Version::R2007) && f.variable("$CAMERADISPLAY")) f.b(290, cameradisplay);
    if (f.since(Version::R2007)) f.bl(0, unknown19);
    if (f.since(Version::R2007)) f.bl(0, unknown20);
    if (f.since(Version::R2007)) f.bd(0, unknown21);
    if (f.since(Version::R2007) && f.variable("$STEPSPERSEC")) f.bd(40, stepspersec);
    if (f.since(Version::R2007) && f.variable("$STEPSIZE")) f.bd(40, stepsize);
    if (f.since(Version::R2007) && f.variable("$3DDWFPREC")) f.bd(40, dwfPrecision);
    if (f.since(Version::R2007) && f.variable("$LENSLENGTH")) f.bd(40, lenslength);
    if (f.since(Version::R2007) && f.variable("$CAMERAHEIGHT")) f.bd(40, cameraheight);
    if (f.since(Version::R2007) && f.variable("$SOLIDHIST")) f.rc(280, solidhist);
    if (f.since(Version::R2007) && f.variable("$SHOWHIST")) f.rc(280, showhist);
    if (f.since(Version::R2007) && f.variable("$PSOLWIDTH")) f.bd(40, psolwidth);
    if (f.since(Version::R2007) && f.variable("$PSOLHEIGHT")) f.bd(40, psolheight);
    if (f.since(Version::R2007) && f.variable("$LOFTANG1")) f.bd(40, loftang1);
    if (f.since(Version::R2007) && f.variable("$LOFTANG2")) f.bd(40, loftang2);
    if (f.since(Version::R2007) && f.variable("$LOFTMAG1")) f.bd(40, loftmag1);
    if (f.since(Version::R2007) && f.variable("$LOFTMAG2")) f.bd(40, loftmag2);
    if (f.since(Version::R2007) && f.variable("$LOFTPARAM")) f.bs(70, loftparam);
    if (f.since(Version::R2007) && f.variable("$LOFTNORMALS")) f.rc(280, loftnormals);
    if (f.since(Version::R2007) && f.variable("$LATITUDE")) f.bd(40, latitude);
    if (f.since(Version::R2007) && f.variable("$LONGITUDE")) f.bd(40, longitude);
    if (f.since(Version::R2007) && f.variable("$NORTHDIRECTION")) f.bd(40, northdirection);
    if (f.since(Version::R2007) && f.variable("$TIMEZONE")) f.bl(70, timezone);
    if (f.since(Version::R2007) && f.variable("$LIGHTGLYPHDISPLAY")) f.rc(280, lightglyphdisplay);
    if (f.since(Version::R2007) && f.variable("$TILEMODELIGHTSYNCH")) f.rc(280, tilemodelightsynch);
    if (f.since(Version::R2007) && f.variable("$DWFFRAME")) f.rc(280, dwfframe);
    if (f.since(Version::R2007) && f.variable("$DGNFRAME")) f.rc(280, dgnframe);
    if (f.since(Version::R2007) && f.variable("$REALWORLDSCALE")) f.b(290, realworldscale);
    if (f.since(Version::R2007) && f.variable("$INTERFERECOLOR")) f.color(62, 0, interferecolor);
    if (f.since(Version::R2007)) pointer("$INTERFEREOBJVS", 345, interfereobjvs);
    if (f.since(Version::R2007)) pointer("$INTERFEREVPVS", 346, interferevpvs);
    if (f.since(Version::R2007)) pointer("$DRAGVS", 349, dragvs);
    if (f.since(Version::R2007) && f.variable("$CSHADOW")) f.rc(280, cshadow);
    if (f.since(Version::R2007) && f.variable("$SHADOWPLANELOCATION")) f.bd(40, shadowplanelocation);
    if (f.dxf() && f.variable("$MEASUREMENT")) f.bs(70, measurement);
}

void writeHeaderTail(BitWriter& handles) {
    for (int i = 0; i < 4; ++i) handles.bs(-1);
    handles.bl(0);
    handles.bl(0);
    handles.b(true);
}

void readHeaderGroups(HeaderVariables& header, DxfInput& in) {
    DxfReadFields fields(in);
    header.describe(fields);
}

void writeHeaderGroups(HeaderVariables& header, DxfOutput& out) {
    out.word(9, "$ACADVER");
    out.word(1, "AC1032");
    DxfWriteFields fields(out);
    header.describe(fields);
}

}  // namespace kdraw
