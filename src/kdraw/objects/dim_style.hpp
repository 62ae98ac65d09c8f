#pragma once

#include "kdraw/objects/table_record.hpp"

namespace kdraw {

/// The dimension variables, as a style and the header have them. Imperial defaults: those of groups that are absent.
struct DimVariables {
    std::string post, apost;
    double scale = 1.0, asz = 0.18, exo = 0.0625, dli = 0.38, exe = 0.18, rnd = 0.0, dle = 0.0, tp = 0.0, tm = 0.0;
    double fxl = 1.0;
    double jogang = 0.78539816339744831;  ///< radians
    std::int16_t tfill = 0;
    Color tfillclr = Color::fromIndex(0);
    bool tol = false, lim = false, tih = true, toh = true, se1 = false, se2 = false;
    std::int16_t tad = 0, zin = 0, azin = 0, arcsym = 0;
    double txt = 0.18, cen = 0.09, tsz = 0.0, altf = 25.4, lfac = 1.0, tvp = 0.0, tfac = 1.0, gap = 0.09, altrnd = 0.0;
    bool alt = false;
    std::int16_t altd = 2;
    bool tofl = false, sah = false, tix = false, soxd = false;
    Color clrd = Color::fromIndex(0), clre = Color::fromIndex(0), clrt = Color::fromIndex(0);
    std::int16_t adec = 0, dec = 4, tdec = 4, altu = 2, alttd = 2, aunit = 0, frac = 0, lunit = 2, dsep = 46, tmove = 0,
                 just = 0;
    bool sd1 = false, sd2 = false;
    std::int16_t tolj = 1, tzin = 0, altz = 0, alttz = 0;
    bool upt = false;
    std::int16_t atfit = 3;
    bool fxlon = false, txtdirection = false;
    double altmzf = 100.0, mzf = 100.0;
    std::string altmzs, mzs;
    Handle txsty = 0, ldrblk = 0, blk = 0, blk1 = 0, blk2 = 0, ltype = 0, ltex1 = 0, ltex2 = 0;
    std::int16_t lwd = -2, lwe = -2;  ///< signed lineweights, not indexes

    /// The variables from DIMPOST to DIMLWE. In the header's groups each stands under its name, with a code by its
    /// type.
    void describe(Fields& f, bool header);
};

class DimStyleRecord : public TableRecord {
public:
    DimVariables variables;
    bool unknown = false;

    void describe(Fields& f) override;
};

}  // namespace kdraw
