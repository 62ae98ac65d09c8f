#include "kdraw/objects/dim_style.hpp"

#include "kdraw/groups/describing_objects.hpp"

namespace kdraw {

namespace {

/// Describes one variable after the other, for a style or for the header.
class Variables {
public:
    Variables(Fields& f, bool header) : f_(f), header_(header) {}

    void real(const char* name, int code, double& v) {
        if (here(name)) f_.bd(header_ ? 40 : code, v);
    }
    /// Radians; degrees in the groups of a style, not in those of the header.
    void angle(const char* name, int code, double& v) {
        if (!here(name)) return;
        if (header_)
            f_.bd(40, v);
        else
            f_.angle(code, v);
    }
    void number(const char* name, int code, std::int16_t& v) {
        if (here(name)) f_.bs(header_ ? 70 : code, v);
    }
    void flag(const char* name, int code, bool& v) {
        if (here(name)) f_.b(header_ ? 70 : code, v);
    }
    void text(const char* name, int code, std::string& v) {
        if (here(name)) f_.text(header_ ? 1 : code, v);
    }
    void color(const char* name, int code, Color& v) {
        if (here(name)) f_.color(header_ ? 70 : code, 0, v);
    }
    void style(const char* name, int code, Handle& v) { reference(name, code, 7, Table::Style, v); }
    void linetype(const char* name, int code, Handle& v) { reference(name, code, 6, Table::Linetype, v); }
    void arrow(const char* name, int code, Handle& v) {
        if (!header_ || !f_.dxf()) {
            reference(name, code, 1, Table::Block, v);
            return;
        }
        if (!f_.variable(name)) return;
        DxfInput* in = f_.input();
        if (in == nullptr) {
            if (v == 0)
                f_.output()->text(1, "");
            else
                f_.record(Table::Block, 1, v);
            return;
        }
        // The header names arrows without the underscore of their block.
        std::string block;
        f_.text(1, block);
        v = block.empty() || block == "." ? 0 : in->record(Table::Block, block);
        if (v == 0 && !block.empty()) v = in->record(Table::Block, "_" + block);
    }

private:
    /// With a style's code 0 a variable has no group at all.
    bool here(const char* name) { return !header_ || f_.variable(name); }
    void reference(const char* name, int code, int headerCode, Table table, Handle& v) {
        if (!here(name)) return;
        if (header_ && f_.output() != nullptr && v == 0)
            f_.output()->text(headerCode, "");
        else if (header_)
            f_.record(table, headerCode, v);
        else
            optionalHandle(f_, Ref::HardPointer, code, v);
    }

    Fields& f_;
    bool header_;
};

}  // namespace

void DimVariables::describe(Fields& f, bool header) {
    Variables v(f, header);
    const bool from2007 = f.since(Version::R2007), from2010 = f.since(Version::R2010);
    v.text("$DIMPOST", 3, post);
    v.text("$DIMAPOST", 4, apost);
    v.real("$DIMSCALE", 40, scale);
    v.real("$DIMASZ", 41, asz);
    v.real("$DIMEXO", 42, exo);
    v.real("$DIMDLI", 43, dli);
    v.real("$DIMEXE", 44, exe);
    v.real("$DIMRND", 45, rnd);
    v.real("$DIMDLE", 46, dle);
    v.real("$DIMTP", 47, tp);
    v.real("$DIMTM", 48, tm);
    if (from2007) {
        v.real("$DIMFXL", 49, fxl);
        v.angle("$DIMJOGANG", 50, jogang);
        v.number("$DIMTFILL", 69, tfill);
        DxfInput* in = header ? nullptr : f.input();
        if (in == nullptr) {
            v.color("$DIMTFILLCLR", 70, tfillclr);
        } else if (in->find(69) && in->seek(70)) {
            // The record's flags have the same code.
            tfillclr = Color::fromIndex(limited(static_cast<int>(in->integer()), 0, 256));
            in->skip();
        }
    }
    v.flag("$DIMTOL", 71, tol);
    v.flag("$DIMLIM", 72, lim);
    v.flag("$DIMTIH", 73, tih);
    v.flag("$DIMTOH", 74, toh);
    v.flag("$DIMSE1", 75, se1);
    v.flag("$DIMSE2", 76, se2);
    v.number("$DIMTAD", 77, tad);
    v.number("$DIMZIN", 78, zin);
    v.number("$DIMAZIN", 79, azin);
    if (from2007) v.number("$DIMARCSYM", 90, arcsym);
    v.real("$DIMTXT", 140, txt);
    v.real("$DIMCEN", 141, cen);
    v.real("$DIMTSZ", 142, tsz);
    v.real("$DIMALTF", 143, altf);
    v.real("$DIMLFAC", 144, lfac);
    v.real("$DIMTVP", 145, tvp);
    v.real("$DIMTFAC", 146, tfac);
    v.real("$DIMGAP", 147, gap);
    v.real("$DIMALTRND", 148, altrnd);
    v.flag("$DIMALT", 170, alt);
    v.number("$DIMALTD", 171, altd);
    v.flag("$DIMTOFL", 172, tofl);
    v.flag("$DIMSAH", 173, sah);
    v.flag("$DIMTIX", 174, tix);
    v.flag("$DIMSOXD", 175, soxd);
    v.color("$DIMCLRD", 176, clrd);
    v.color("$DIMCLRE", 177, clre);
    v.color("$DIMCLRT", 178, clrt);
    v.number("$DIMADEC", 179, adec);
    v.number("$DIMDEC", 271, dec);
    v.number("$DIMTDEC", 272, tdec);
    v.number("$DIMALTU", 273, altu);
    v.number("$DIMALTTD", 274, alttd);
    v.number("$DIMAUNIT", 275, aunit);
    v.number("$DIMFRAC", 276, frac);
    v.number("$DIMLUNIT", 277, lunit);
    v.number("$DIMDSEP", 278, dsep);
    v.number("$DIMTMOVE", 279, tmove);
    v.number("$DIMJUST", 280, just);
    v.flag("$DIMSD1", 281, sd1);
    v.flag("$DIMSD2", 282, sd2);
    v.number("$DIMTOLJ", 283, tolj);
    v.number("$DIMTZIN", 284, tzin);
    v.number("$DIMALTZ", 285, altz);
    v.number("$DIMALTTZ", 286, alttz);
    v.flag("$DIMUPT", 288, upt);
    v.number("$DIMATFIT", 289, atfit);
    if (from2007) v.flag("$DIMFXLON", 290, fxlon);
    if (from2010) {
        v.flag("$DIMTXTDIRECTION", 294, txtdirection);
        v.real("$DIMALTMZF", 0, altmzf);
        v.text("$DIMALTMZS", 0, altmzs);
        v.real("$DIMMZF", 0, mzf);
        v.text("$DIMMZS", 0, mzs);
    }
    v.style("$DIMTXSTY", 340, txsty);
    v.arrow("$DIMLDRBLK", 341, ldrblk);
    v.arrow("$DIMBLK", 342, blk);
    v.arrow("$DIMBLK1", 343, blk1);
    v.arrow("$DIMBLK2", 344, blk2);
    if (from2007) {
        v.linetype("$DIMLTYPE", 345, ltype);
        v.linetype("$DIMLTEX1", 346, ltex1);
        v.linetype("$DIMLTEX2", 347, ltex2);
    }
    v.number("$DIMLWD", 371, lwd);
    v.number("$DIMLWE", 372, lwe);
}

void DimStyleRecord::describe(Fields& f) {
    int flags = unknown ? 1 : 0;
    describeHead(f, "AcDbDimStyleTableRecord", flags);
    variables.describe(f, false);
    if (f.dxf())
        unknown = (flags & 1) != 0;
    else
        f.b(0, unknown);
}

}  // namespace kdraw
