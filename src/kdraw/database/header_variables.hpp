#pragma once

#include <cstdint>
#include <string>

#include "kdraw/fields/fields.hpp"
#include "kdraw/objects/dim_style.hpp"

namespace kdraw {

class BitWriter;

/// The variables of a drawing's header, called as in the format; a new metric drawing's values to begin with. Angles in
/// radians.
struct HeaderVariables {
    struct Date {
        std::int32_t day = 0;           ///< Julian day, or days that have gone by
        std::int32_t milliseconds = 0;  ///< of the day

        void describe(Fields& f);
        /// Days with their fraction; what is no date becomes 0.
        void setDays(double days);
    };

    // In the order of the format. What is called unknown is kept as files have it.
    std::int64_t requiredversions = 0;
    double unknown1 = 412148564080.0, unknown2 = 1.0, unknown3 = 1.0, unknown4 = 1.0;
    std::string unknown5 = "m", unknown6, unknown7, unknown8;
    std::int32_t unknown9 = 0, unknown10 = 0;
    Handle viewportHeader = 0;
    bool dimaso = true, dimsho = true, plinegen = false, orthomode = false, regenmode = true, fillmode = true,
         qtextmode = false, psltscale = true, limcheck = false, unknown11 = false, usrtimer = true, skpoly = false,
         angdir = false, splframe = false, mirrtext = false, worldview = true, tilemode = true, plimcheck = false,
         visretain = true, dispsilh = false, pellipse = false;
    std::int16_t proxygraphics = 1, treedepth = 3020, lunits = 2, luprec = 4, aunits = 0, auprec = 0, attmode = 1,
                 pdmode = 0;
    std::int32_t unknown12 = 0, unknown13 = 0, unknown14 = 0;
    std::int16_t useri1 = 0, useri2 = 0, useri3 = 0, useri4 = 0, useri5 = 0, splinesegs = 8, surfu = 6, surfv = 6,
                 surftype = 6, surftab1 = 6, surftab2 = 6, splinetype = 6, shadedge = 3, shadedif = 70, unitmode = 0,
                 maxactvp = 64, isolines = 4, cmljust = 0, textqlty = 50;
    double ltscale = 1.0, textsize = 2.5, tracewid = 1.0, sketchinc = 1.0, filletrad = 0.0, thickness = 0.0,
           angbase = 0.0, pdsize = 0.0, plinewid = 0.0, userr1 = 0.0, userr2 = 0.0, userr3 = 0.0, userr4 = 0.0,
           userr5 = 0.0, chamfera = 0.0, chamferb = 0.0, chamferc = 0.0, chamferd = 0.0, facetres = 0.5,
           cmlscale = 20.0, celtscale = 1.0;
    std::string menu = ".";
    Date tdcreate, tdupdate;
    std::int32_t unknown15 = 0, unknown16 = 0, unknown17 = 0;
    Date tdindwg, tdusrtimer;
    Color cecolor;
    Handle handseed = 1, clayer = 0, textstyle = 0, celtype = 0, cmaterial = 0, dimstyle = 0, cmlstyle = 0;
    double psvpscale = 0.0;
    Vector3 pinsbase, pextmin{1e20, 1e20, 1e20}, pextmax{-1e20, -1e20, -1e20};
    Vector2 plimmin, plimmax{420.0, 297.0};
    double pelevation = 0.0;
    Vector3 pucsorg, pucsxdir{1.0, 0.0, 0.0}, pucsydir{0.0, 1.0, 0.0};
    Handle pucsname = 0, pucsorthoref = 0;
    std::int16_t pucsorthoview = 0;
    Handle pucsbase = 0;
    Vector3 pucsorgtop, pucsorgbottom, pucsorgleft, pucsorgright, pucsorgfront, pucsorgback, insbase,
        extmin{1e20, 1e20, 1e20}, extmax{-1e20, -1e20, -1e20};
    Vector2 limmin, limmax{420.0, 297.0};
    double elevation = 0.0;
    Vector3 ucsorg, ucsxdir{1.0, 0.0, 0.0}, ucsydir{0.0, 1.0, 0.0};
    Handle ucsname = 0, ucsorthoref = 0;
    std::int16_t ucsorthoview = 0;
    Handle ucsbase = 0;
    Vector3 ucsorgtop, ucsorgbottom, ucsorgleft, ucsorgright, ucsorgfront, ucsorgback;
    DimVariables dim;
    Handle blockControl = 0, layerControl = 0, styleControl = 0, linetypeControl = 0, viewControl = 0, ucsControl = 0,
           viewportControl = 0, appIdControl = 0, dimStyleControl = 0, viewportHeaderControl = 0, groups = 0,
           mlineStyles = 0, rootDictionary = 0;
    std::int16_t tstackalign = 1, tstacksize = 70;
    std::string hyperlinkbase, stylesheet;
    Handle layouts = 0, plotSettings = 0, plotStyleNames = 0, materials = 0, colors = 0, visualStyles = 0,
           unknown18 = 0;
    std::int32_t flags = 0x2A1D;
    std::int16_t insunits = 4, cepsntype = 0;
    Handle cpsnid = 0;
    std::string fingerprintguid, versionguid;
    std::uint8_t sortents = 127, indexctl = 0, hidetext = 1, xclipframe = 2, dimassoc = 2, halogap = 0;
    std::int16_t obscolor = 257, intersectioncolor = 257;
    std::uint8_t obsltype = 0, intersectiondisplay = 0;
    std::string projectname;
    Handle paperSpace = 0, modelSpace = 0, byLayer = 0, byBlock = 0, continuous = 0;
    bool cameradisplay = false;
    std::int32_t unknown19 = 0, unknown20 = 10;
    double unknown21 = 1.0, stepspersec = 2.0, stepsize = 50.0, dwfPrecision = 2.0, lenslength = 50.0,
           cameraheight = 0.0;
    std::uint8_t solidhist = 0, showhist = 1;
    double psolwidth = 5.0, psolheight = 80.0, loftang1 = 1.5707963267948966, loftang2 = 1.5707963267948966,
           loftmag1 = 0.0, loftmag2 = 0.0;
    std::int16_t loftparam = 7;
    std::uint8_t loftnormals = 1;
    double latitude = 37.795, longitude = -122.394, northdirection = 0.0;
    std::int32_t timezone = -8000;
    std::uint8_t lightglyphdisplay = 1, tilemodelightsynch = 1, dwfframe = 2, dgnframe = 0;
    bool realworldscale = true;
    Color interferecolor = Color::fromIndex(1);
    Handle interfereobjvs = 0, interferevpvs = 0, dragvs = 0;
    std::uint8_t cshadow = 0;
    double shadowplanelocation = 0.0;
    /// Stands in a section of its own in the binary format: 0 imperial, 1 metric.
    std::int16_t measurement = 1;

    /// All variables in the order of the binary format. In groups each comes behind its name.
    void describe(Fields& f);
    /// The dictionary that all named objects hang on.
    Handle namedObjects() const { return rootDictionary; }

    // Packed into `flags`.
    int currentLineweight() const;  ///< hundredths of a millimetre, -1 ByLayer, -2 ByBlock, -3 default
    void setCurrentLineweight(int hundredths);

private:
    void describeFlags(Fields& f);
};

/// What ends the section behind its last handle (R2007 and later). Nothing reads it.
void writeHeaderTail(BitWriter& handles);

/// The HEADER section of DXF: the groups behind its name.
void readHeaderGroups(HeaderVariables& header, DxfInput& in);
void writeHeaderGroups(HeaderVariables& header, DxfOutput& out);

}  // namespace kdraw
