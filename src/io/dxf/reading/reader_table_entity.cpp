// Tables: cells in runs of groups that each begin with 171.
#include <algorithm>
#include <cmath>

#include "engine/entities/table_entity.hpp"
#include "io/dxf/reading/reader.hpp"

namespace kova::io::dxf {

using engine::Entity;
using math::Vector2;
using math::Vector3;

std::unique_ptr<Entity> Reader::buildTable(const EntityTags& tags) {
    auto out = std::make_unique<engine::TableEntity>();
    Vector3 insertion;
    Vector3 direction{1, 0, 0};
    Vector3 normal{0, 0, 1};
    bool inTable = false;
    bool inCells = false;
    std::int64_t rows = 0;
    std::int64_t cols = 0;
    std::string raw;
    double cellHeight = 0.0;
    std::vector<double> rowHeights;
    double tableHeight = 0.0;
    bool valueText = false;  // within CELL_VALUE: its text counts, not the shown form
    const auto finishCell = [&] {
        if (!inCells || out->cells.empty()) return;
        if (!raw.empty()) out->cells.back().content = decoder_.decode(raw);
        raw.clear();
        if (cellHeight > 0.0 && cols > 0) {
            const std::size_t row = (out->cells.size() - 1) / static_cast<std::size_t>(cols);
            if (rowHeights.size() <= row) rowHeights.resize(row + 1, 0.0);
            rowHeights[row] = cellHeight;
        }
        cellHeight = 0.0;
    };
    std::int64_t mergeRight = 1;
    for (const Tag& tag : tags.body) {
        if (tag.code == 100) {
            inTable = tag.trimmed() == "AcDbTable";
            continue;
        }
        if (!inTable) {
            if (axis(tag, 10, insertion) || axis(tag, 210, normal)) continue;
            if (tag.code == 2) pictures_.push_back(name(tag));
            if (tag.code == 50) out->rotation = angle(tag);
            continue;
        }
        if (!inCells && tag.code != 171) {
            if (axis(tag, 11, direction)) continue;
            switch (tag.code) {
                case 342:
                    pendingTableStyle_ = tag.handle();
                    break;
                case 91:
                    rows = std::clamp<std::int64_t>(tag.integer(), 0, engine::TableEntity::kMaxRows);
                    break;
                case 92:
                    cols = std::clamp<std::int64_t>(tag.integer(), 0, engine::TableEntity::kMaxCols);
                    break;
                case 141:
                    out->rowHeights.push_back(real(tag));
                    break;
                case 142:
                    out->colWidths.push_back(real(tag));
                    break;
                case 140:
                    tableHeight = real(tag);
                    break;
                case 40:
                    out->horizontalMargin = std::max(0.0, real(tag));
                    break;
                case 41:
                    out->verticalMargin = std::max(0.0, real(tag));
                    break;
                default:
                    break;
            }
            continue;
        }
        switch (tag.code) {
            case 171:
                finishCell();
                inCells = true;
                valueText = false;
                // What is beyond the table's size is no cell.
                if (static_cast<std::int64_t>(out->cells.size()) <
                    std::min<std::int64_t>(rows * cols, engine::TableEntity::kMaxCells))
                    out->cells.emplace_back();
                else
                    inCells = !out->cells.empty();
                mergeRight = 1;
                break;
            case 173:
                out->cells.back().isMerged = tag.integer() != 0;
                break;
            case 175:
                mergeRight = tag.integer();
                out->cells.back().mergeRight =
                    static_cast<std::int32_t>(std::clamp<std::int64_t>(mergeRight - 1, 0, cols));
                break;
            case 176:
                out->cells.back().mergeDown =
                    static_cast<std::int32_t>(std::clamp<std::int64_t>(tag.integer() - 1, 0, rows));
                break;
            case 170:
                out->cells.back().alignment = std::clamp(small(tag), 0, 9);
                break;
            case 140:
                if (!valueText) cellHeight = real(tag);
                break;
            case 7:
                out->cells.back().textStyle = name(tag);
                break;
            case 301:
                valueText = true;
                break;
            case 304:
                valueText = false;
                break;
            case 1:
            case 2:
            case 3:
                raw.append(tag.text());
                break;
            case 302:
                // The shown form counts only for values that are no texts.
                if (valueText && raw.empty()) raw.assign(tag.text());
                break;
            default:
                break;
        }
        if (!inCells) break;
    }
    finishCell();
    out->rows = static_cast<std::int32_t>(rows);
    out->cols = static_cast<std::int32_t>(cols);
    out->textHeight = tableHeight;
    // The cells of a row that give a height of their own.
    if (!rowHeights.empty()) {
        rowHeights.resize(static_cast<std::size_t>(rows), 0.0);
        out->rowTextHeights = std::move(rowHeights);
    }
    out->insertion = insertion.xy();
    if (direction.y != 0.0 || direction.x < 0.0) out->rotation = std::atan2(direction.y, direction.x);
    setPlane(*out, normal, 0.0, insertion.z);
    if (rows == 0 || cols == 0) return nullptr;
    return out;
}

}  // namespace kova::io::dxf
