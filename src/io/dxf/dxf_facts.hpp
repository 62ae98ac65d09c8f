#pragma once

// What the DXF writer and the DXF reader must agree on: names, codes, and the layouts of the program's own data.
//
// Own data
// --------
// Fields of an entity or record that DXF has no group for are kept as "own data": one JSON object whose members are
// the fields' names and values as in the native drawing file (see describe.hpp), holding only what the native groups of
// the record do not give back exactly. A reader builds the record from its native groups first and then runs the own
// data through the record's describe functions (applyOwnData): members that are there replace what was read. An
// entity's object may hold common members ("elevation", "annotative" ...) and members of its kind side by side.
//
// Where the text stands:
//   * entities, table records, dictionary objects: extended data `1001 APPLICATION`, then the text in pieces of at
//     most kOwnPieceInXdata bytes, each a `1000` group. APPLICATION is ownApplication(kind) for entities, and
//     kOwnRecordApplication for table records and objects (kTableStyleApplication, kLeaderStyleApplication for these
//     styles). The first piece begins with "{": extended data of the same application that begins otherwise belongs
//     to the user and is no own data. When the entity has extended data of that application already, the own data
//     goes under kOwnFallbackApplication.
//   * a text longer than kOwnXdataLimit bytes: an XRECORD in the record's extension dictionary under the application's
//     name, `280 1`, then the pieces as `1` groups of at most kOwnPieceInXrecord bytes.
//   * the drawing: an XRECORD in the root dictionary under kDrawingKey, in the same form. Its members are those of the
//     native file's top level that have no other place: see "The drawing's own record" below.
//   * a hatch whose pattern is the library's has "ownPattern":[], as its record holds the lines as drawn.
//   * attributes of a block reference (ATTRIB): none; one that its record cannot say exactly is in the own data of the
//     reference, with all others ("attributes").
// When another program changes a record, its own data must not undo that. So each text ends with "plain": a fingerprint
// of the plain groups as they were written (fingerprint.hpp). A reader takes it of what stands there now; where they
// differ only members that no plain group says anything about are taken (see standsAlone in own_data.cpp). Without the
// member, in files from before it was written, all count. Exempt are BLOCK_RECORDs, as programs give anonymous blocks
// other names, and the drawing's own record, whose members are compared with the header and other records by value.
//
// Within the text a backslash before "U+" or "M+" is followed by the JSON escape of the letter, so that a reader that
// resolves \U+XXXX in all texts leaves it whole.
//
// The drawing's own record (kDrawingKey in the root dictionary)
// --------------------------------------------------------------
// Members of the native file's top level, in its form, so that native::readLeadingSections and readTrailingSections
// take them: "properties", "layerFilters", "shapeFiles", "snapBase", "dimStyleOverrides" and "dimStyleNameOverrides"
// (there even when empty), "hatchPatterns", "objectDictionary"
// (only entries that a DXF dictionary cannot hold; the others are objects under the root
// dictionary in their order), "appIds" (the drawing's own list in its order; APPID holds the program's besides),
// "currentUcs", "currentUcsAxes", "activeLayout", "tilemode", "currentColor", "systemVariables" (all that the native
// file holds; header variables that differ win, as another program may have changed them), "layerStates", "layerStateMasks", and
// besides "nextHandle" (the counter before saving: it counts when it is above all entity handles), "currentView" (a
// NamedView record) and "lastPoint" (x, y).
//
// Rules that keep own data small
// -------------------------------
//   * a hatch loop is an island ("inner") when bits 1 and 16 of its group 92 are clear.
//   * an LWPOLYLINE of which a vertex has a width or bulge has full lists of them, 0 where no group stands.
//   * a dimension, leader or tolerance with own data takes its overrides from there, not from the DSTYLE list.
//
// Marks of records that the writer had to add
// --------------------------------------------
// A record that some other record names but the drawing does not hold (a linetype, a text style, a dimension style, a
// block) is written with defaults and the own data {"placeholder":true}: a reader does not take it into its tables.
// The pictures of dimensions ("*D1") and tables ("*T1") are anonymous blocks marked the same way on their
// BLOCK_RECORD: readers of this program drop them and rebuild the picture.
//
// Blocks: own data on the BLOCK_RECORD holds the members of Block::describeHead and describeDynamic that BLOCK and
// BLOCK_RECORD lack; its application is kDynamicBlockApplication when the block is dynamic.

#include <array>
#include <charconv>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "engine/model/color.hpp"
#include "engine/model/entity_type.hpp"

namespace kova::io::dxf {

// The stream --------------------------------------------------------------------------------------------------

inline constexpr std::string_view kVersion = "AC1027";
inline constexpr int kMaintenanceVersion = 125;
inline constexpr std::string_view kSeedPlaceholder = "@@HANDSEED@@";

/// A custom object class, as the CLASSES section lists it.
struct ClassRow {
    std::string_view record;
    std::string_view className;
    std::string_view application;
    std::int32_t proxyFlags;
    bool isEntity;
};
std::span<const ClassRow> classTable();

/// The header variables that are written, in order, without "$". Codes stand in the system-variable table.
std::span<const std::string_view> headerVariables();

/// The lineweights that DXF knows, in hundredths of a millimetre, and the nearest of them (negative ones stay).
std::int32_t nearestLineweight(std::int32_t lineweight);
bool isLineweight(std::int32_t lineweight);

/// The true colour of a group such as 420: red, green and blue in the low three bytes, from high to low.
inline engine::Color colorOfRgb(std::uint32_t rgb) {
    return engine::Color::rgb(static_cast<std::uint8_t>(rgb >> 16), static_cast<std::uint8_t>(rgb >> 8),
                              static_cast<std::uint8_t>(rgb));
}

/// The groups 62 and 420 of a record, in whatever order they stand.
struct ColorGroups {
    std::int32_t index = -1;  ///< -1: no group 62
    std::int64_t rgb = -1;    ///< -1: no group 420

    /// The colour they mean; `otherwise` where there are none. Some programs write index 7, which contrasts with the
    /// background, with the true colour white beside it: that is index 7, except in a file of this program (`exact`),
    /// where white is white.
    engine::Color settled(const engine::Color& otherwise, bool exact) const {
        if (rgb >= 0 && !(index == 7 && !exact && (rgb & 0xFFFFFF) == 0xFFFFFF))
            return colorOfRgb(static_cast<std::uint32_t>(rgb));
        if (index < 0) return otherwise;
        return engine::Color::fromBareIndex(index).value_or(otherwise);
    }
};

// Own data ----------------------------------------------------------------------------------------------------

inline constexpr std::string_view kOwnRecordApplication = "KOVA_FIELDS";
inline constexpr std::string_view kOwnFallbackApplication = "KOVA_FIELDS";
inline constexpr std::string_view kTableStyleApplication = "KOVA_TABLESTYLE";
inline constexpr std::string_view kLeaderStyleApplication = "KOVA_LEADERSTYLE";
inline constexpr std::string_view kDynamicBlockApplication = "KOVA_DYNBLOCK";
inline constexpr std::string_view kDrawingKey = "KOVA_DRAWING";

inline constexpr std::size_t kOwnPieceInXdata = 240;
inline constexpr std::size_t kOwnPieceInXrecord = 2000;
inline constexpr std::size_t kOwnXdataLimit = 8000;

/// The application under which an entity of this kind keeps its own data.
std::string_view ownApplication(engine::EntityType type);
/// The applications that are registered in every file.
std::span<const std::string_view> registeredApplications();
/// The keys of the root dictionary that the writer makes itself.
bool isReservedRootKey(std::string_view key);
/// True when extended data under this name may be own data (its first item then tells).
bool isOwnApplication(std::string_view application);

// Angles ------------------------------------------------------------------------------------------------------

/// Radians as the text of degrees: the shortest text from which radiansFromDegrees() gives the same number again.
/// `out` has room for 48 characters; returns the length. Not for infinite numbers.
std::size_t degreesText(double radians, char* out);
/// Radians from the text of degrees (more digits than a double holds count). False when the text is no number.
bool radiansFromDegrees(std::string_view text, double& radians);
/// The same from a value that was parsed already; exact for texts of up to 17 digits.
double radiansFromDegrees(double degrees);

/// A colour with its method in the top byte, as multileaders and their styles hold it.
engine::Color colorOfRaw(std::int64_t value);

/// DIMJOGANG among the groups of a DIMSTYLE.
inline constexpr int kJogAngleCode = 50;
/// True for a value of DIMJOGANG in degrees. DIMSTYLE records have degrees, the header and overrides radians, and not all
/// programs keep to that; what the variable can be (5 to 90 degrees) tells them apart.
inline bool isJogInDegrees(double value) { return std::abs(value) > 2.0; }

// Transparency: group 440 and the layer's 1071 ------------------------------------------------------------------

inline constexpr std::int32_t kTransparencyExplicit = 0x02000000;
inline constexpr std::int32_t kTransparencyByBlock = 0x01000000;
/// Percent (0..100) to the group's value and back.
constexpr std::int32_t transparencyCode(std::int32_t percent) {
    return kTransparencyExplicit | (255 * (100 - percent) / 100);
}
constexpr std::int32_t transparencyPercent(std::int32_t code) {
    return (code & kTransparencyExplicit) != 0 ? (100 * 255 - (code & 0xFF) * 100 + 127) / 255 : 0;
}

}  // namespace kova::io::dxf
