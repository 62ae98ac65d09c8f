// A DWG file as its named sections: how the six generations pack them, without knowing what is in them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "kdraw/fields/version.hpp"

namespace kdraw {

/// The names of the sections that hold a drawing.
namespace section {
inline constexpr std::string_view header = "AcDb:Header";
inline constexpr std::string_view classes = "AcDb:Classes";
inline constexpr std::string_view handles = "AcDb:Handles";
inline constexpr std::string_view objects = "AcDb:AcDbObjects";
inline constexpr std::string_view templateSettings = "AcDb:Template";
inline constexpr std::string_view solids = "AcDb:AcDsPrototype_1b";
inline constexpr std::string_view auxHeader = "AcDb:AuxHeader";
inline constexpr std::string_view freeSpace = "AcDb:ObjFreeSpace";
inline constexpr std::string_view revisions = "AcDb:RevHistory";
inline constexpr std::string_view summary = "AcDb:SummaryInfo";
inline constexpr std::string_view preview = "AcDb:Preview";
inline constexpr std::string_view application = "AcDb:AppInfo";
inline constexpr std::string_view dependencies = "AcDb:FileDepList";
inline constexpr std::string_view macros = "AcDb:VBAProject";
inline constexpr std::string_view security = "AcDb:Security";
inline constexpr std::string_view signature = "AcDb:Signature";
}  // namespace section

/// One named stream of bytes.
struct Section {
    std::string name;
    std::string bytes;
    /// What the offsets of the object map count from, as an address: offset - base is the place in `bytes`. Other than
    /// zero only for the objects of R2000, whose map holds file addresses.
    std::uint64_t base = 0;
};

/// What a writer says about the drawing in the small sections it makes by itself. Dates are a Julian day and the
/// milliseconds of that day.
struct FileFacts {
    std::uint32_t createdDay = 0;
    std::uint32_t createdMs = 0;
    std::uint32_t updatedDay = 0;
    std::uint32_t updatedMs = 0;
    std::uint32_t editingDays = 0;  ///< how long the drawing was worked on
    std::uint32_t editingMs = 0;
    std::uint32_t saves = 1;
    std::uint64_t handSeed = 0;  ///< the next free handle
    std::uint64_t objectCount = 0;
    bool metric = true;  ///< MEASUREMENT; filled by the reader too
    std::string program = "kovacad-cli";
    std::string programVersion;
};

/// A file taken apart, or to be put together.
struct Container {
    Version version = Version::Unknown;
    int codepage = 30;    ///< the format's own number; 30 is code page 1252
    int maintenance = 0;  ///< the format's maintenance release, byte 0x0B of the file
    std::vector<Section> sections;
    std::vector<std::string> notes;  ///< what was wrong with the file and did not keep it from being read
    FileFacts facts;

    /// The section of that name, or null.
    const Section* find(std::string_view name) const;
};

/// The most bytes that one section may have.
inline constexpr std::uint64_t maxSectionSize = 0x2F00'0000;

/// All sections of a file may have this many bytes for each byte of the file, and `sectionAllowance` more. Real
/// compression cannot reach the factor, because every page of up to 0x7400 bytes takes 160 bytes of the file.
inline constexpr std::uint64_t maxExpansion = 256;
inline constexpr std::uint64_t sectionAllowance = 1 << 20;

/// The most pages of one section, and the largest page.
inline constexpr std::uint32_t maxPages = 0xF0000;
inline constexpr std::uint64_t maxPageSize = 0x20'0000;

/// Takes a file apart. Returns an error text, empty on success. Wrong checksums and damaged pages become notes; a file
/// without an object map or without objects is an error.
std::string readContainer(std::string_view file, Container& container);

/// Puts a file of R2010, R2013 or R2018 together. The caller gives the sections header, classes, handles and objects,
/// and solids if there are any; the small sections are made from the facts unless they are given. Sections of other
/// names are left out. Returns an error text, empty on success.
std::string writeContainer(const Container& container, std::string& out);

}  // namespace kdraw
