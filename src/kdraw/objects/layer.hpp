#pragma once

#include "kdraw/objects/table_record.hpp"

namespace kdraw {

class LayerRecord : public TableRecord {
public:
    bool frozen = false;
    bool off = false;
    bool frozenInNew = false;  ///< in new viewports
    bool locked = false;
    bool plottable = true;
    std::uint8_t lineweight = 31;  ///< index as stored; see lineweightOf
    Color color = Color::fromIndex(7);
    Handle plotStyle = 0;
    Handle material = 0;
    Handle linetype = 0;
    Handle visualStyle = 0;

    void describe(Fields& f) override;

private:
    void describeGroups(Fields& f);
};

}  // namespace kdraw
