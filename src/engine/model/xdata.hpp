#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "engine/model/name.hpp"
#include "math/vector3.hpp"

namespace kova::engine {

/// One item of extended data: a DXF group code (1000..1071) and its value.
/// The value's kind follows the code: 1000, 1002, 1003, 1005 text; 1004 text of hexadecimal digits;
/// 1010..1013 point; 1040..1042 real; 1070, 1071 integer.
struct XDataItem {
    int code = 1000;
    std::variant<std::string, double, std::int64_t, math::Vector3> value;
    friend bool operator==(const XDataItem&, const XDataItem&) = default;
};

/// The extended data of one entity: applications in the order they were attached.
struct XData {
    struct Application {
        Name name;
        std::vector<XDataItem> items;
    };
    std::vector<Application> applications;

    bool empty() const { return applications.empty(); }
    const std::vector<XDataItem>* find(Name application) const;
    /// Sets the application's items; an empty list removes the application.
    void set(Name application, std::vector<XDataItem> items);
    std::size_t sizeInBytes() const;
};

}  // namespace kova::engine
