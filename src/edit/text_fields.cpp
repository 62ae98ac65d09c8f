#include "edit/text_fields.hpp"

#include <QDateTime>
#include <charconv>

#include "engine/inquiry/entity_report.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/point_input.hpp"
#include "engine/inquiry/record_properties.hpp"
#include "engine/entities/mtext.hpp"
#include "engine/entities/text.hpp"
#include "strings/utf8.hpp"

namespace kova::cmd {

using engine::Entity;

namespace {

constexpr std::string_view kOpen = "%<";
constexpr std::string_view kClose = ">%";
constexpr std::string_view kEmpty = "----";
constexpr std::string_view kNone = "####";
/// A text of extended data holds at most 255 bytes.
constexpr std::size_t kChunk = 250;
constexpr std::size_t kMaxCodes = 100'000;

const engine::Name& application() {
    static const engine::Name name("KOVA_TEXTFIELDS");
    return name;
}

std::string* contentOf(Entity& entity) {
    if (entity.type() == engine::EntityType::Text) return &static_cast<engine::TextEntity&>(entity).content;
    if (entity.type() == engine::EntityType::MText) return &static_cast<engine::MTextEntity&>(entity).content;
    return nullptr;
}

/// Takes the first word off.
std::string_view takeWord(std::string_view& text) {
    text = trimmed(text);
    const std::string_view word = text.substr(0, text.find(' '));
    text = trimmed(text.substr(word.size()));
    return word;
}

std::string fileName(const engine::Drawing& drawing) {
    const std::size_t slash = drawing.fileName.find_last_of("/\\");
    return slash == std::string::npos ? drawing.fileName : drawing.fileName.substr(slash + 1);
}

std::string dateText(std::string_view format) {
    const QString pattern =
        format.empty()
            ? QStringLiteral("yyyy-MM-dd")
            : QString::fromUtf8(format.data(), static_cast<qsizetype>(std::min<std::size_t>(format.size(), 80)));
    return QDateTime::currentDateTime().toString(pattern).toStdString();
}

std::string plotScale(const engine::Drawing& drawing) {
    const engine::Layout* layout = drawing.activeLayout();
    if (layout == nullptr) return std::string(kNone);
    const engine::PageSetup& page = layout->pageSetup;
    if (page.scaleType == 0) return "Scaled to fit";
    return lengthDefault(drawing, page.scalePaper) + ":" + lengthDefault(drawing, page.scaleDrawing);
}

std::string objectField(const engine::Drawing& drawing, std::string_view rest) {
    const std::string_view digits = takeWord(rest);
    std::uint64_t handle = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), handle, 16);
    if (error != std::errc{} || end != digits.data() + digits.size()) return std::string(kNone);
    const Entity* entity = drawing.findByHandle(handle);
    const auto value = entity != nullptr ? objectProperty(drawing, *entity, rest) : std::nullopt;
    return value.value_or(std::string(kNone));
}

void append(std::vector<engine::XDataItem>& items, std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t size = strings::wholeCharacters(text.substr(at), kChunk);
        items.push_back({1000, std::string(text.substr(at, size))});
        at += size;
    }
}

}  // namespace

std::vector<std::pair<std::string, std::string>> objectProperties(const engine::Drawing& drawing,
                                                                  const Entity& entity) {
    std::vector<std::pair<std::string, std::string>> list{
        {"Handle", handleText(entity.handle())},
        {"ObjectType", std::string(engine::displayName(entity.type()))},
    };
    if (const auto length = entityLength(entity)) list.emplace_back("Length", lengthText(drawing, *length));
    if (const auto area = entityArea(entity)) {
        list.emplace_back("Area", areaText(drawing, area->area));
        list.emplace_back("Perimeter", lengthText(drawing, area->perimeter));
    }
    PropertyReader reader;
    // Describing does not change what is read.
    auto& readable = const_cast<Entity&>(entity);
    readable.describeCommon(reader);
    readable.describe(reader);
    for (auto& [key, value] : reader.list)
        if (std::none_of(list.begin(), list.end(),
                         [&](const auto& row) { return engine::equalNoCase(row.first, key); }))
            list.emplace_back(std::move(key), std::move(value));
    return list;
}

std::optional<std::string> objectProperty(const engine::Drawing& drawing, const Entity& entity, std::string_view name) {
    for (auto& [key, value] : objectProperties(drawing, entity))
        if (engine::equalNoCase(key, trimmed(name))) return std::move(value);
    return std::nullopt;
}

std::string fieldValue(const engine::Drawing& drawing, std::string_view code) {
    std::string_view rest = code;
    const std::string kind = engine::upperCase(takeWord(rest));
    std::string value;
    if (kind == "DATE") {
        value = dateText(rest);
    } else if (kind == "FILENAME") {
        value = fileName(drawing);
    } else if (kind == "AUTHOR") {
        value = drawing.properties.author;
    } else if (kind == "TITLE") {
        value = drawing.properties.title;
    } else if (kind == "SUBJECT") {
        value = drawing.properties.subject;
    } else if (kind == "KEYWORDS") {
        value = drawing.properties.keywords;
    } else if (kind == "PLOTSCALE") {
        value = plotScale(drawing);
    } else if (kind == "PAGESETUP") {
        const engine::Layout* layout = drawing.activeLayout();
        value = layout != nullptr ? layout->pageSetup.name.str() : std::string();
    } else if (kind == "SHEETNAME") {
        value = drawing.activeLayoutName.str();
    } else if (kind == "SYSVAR") {
        const auto variable = engine::getSysVar(drawing, rest);
        value = variable ? engine::sysVarText(*variable) : std::string(kNone);
    } else if (kind == "OBJECT") {
        value = objectField(drawing, rest);
    } else {
        return std::string(kNone);
    }
    return value.empty() ? std::string(kEmpty) : value;
}

std::string resolveFields(const engine::Drawing& drawing, std::string_view codes) {
    std::string text;
    std::size_t at = 0;
    for (;;) {
        const std::size_t open = codes.find(kOpen, at);
        const std::size_t close = open == std::string_view::npos ? open : codes.find(kClose, open + kOpen.size());
        if (close == std::string_view::npos) break;
        text += codes.substr(at, open - at);
        text += fieldValue(drawing, codes.substr(open + kOpen.size(), close - open - kOpen.size()));
        at = close + kClose.size();
    }
    return text += codes.substr(at);
}

std::optional<std::string> textFields(const Entity& entity) {
    const engine::XData* data = entity.xdata();
    const std::vector<engine::XDataItem>* items = data != nullptr ? data->find(application()) : nullptr;
    const std::string* content = contentOf(const_cast<Entity&>(entity));
    if (items == nullptr || content == nullptr) return std::nullopt;
    std::string codes;
    std::string shown;
    bool behind = false;
    for (const engine::XDataItem& item : *items) {
        if (item.code == 1070) behind = true;
        const auto* text = std::get_if<std::string>(&item.value);
        if (text != nullptr && codes.size() + shown.size() < kMaxCodes) (behind ? shown : codes) += *text;
    }
    if (codes.empty() || !behind || shown != *content) return std::nullopt;
    return codes;
}

bool setTextFields(const engine::Drawing& drawing, Entity& entity, std::string_view codes) {
    std::string* content = contentOf(entity);
    if (content == nullptr || codes.size() > kMaxCodes / 2) return false;
    std::string value = resolveFields(drawing, codes);
    std::vector<engine::XDataItem> items;
    append(items, codes);
    items.push_back({1070, std::int64_t{1}});
    append(items, value);
    engine::XData data = entity.xdata() != nullptr ? *entity.xdata() : engine::XData{};
    data.set(application(), std::move(items));
    entity.setXdata(std::move(data));
    *content = std::move(value);
    return true;
}

FieldUpdate updateFields(doc::Document& document, Entity& entity) {
    const std::optional<std::string> codes = textFields(entity);
    if (!codes) return FieldUpdate::None;
    const engine::Drawing& drawing = document.drawing();
    if (resolveFields(drawing, *codes) == *contentOf(entity)) return FieldUpdate::Same;
    document.modifyEntity(entity, [&](Entity& e) { setTextFields(drawing, e, *codes); });
    return FieldUpdate::Changed;
}

std::vector<Entity*> possibleFields(engine::Drawing& drawing) {
    std::vector<Entity*> entities;
    const auto collect = [&](engine::EntityList& list) {
        for (Entity& entity : list)
            if (entity.xdata() != nullptr) entities.push_back(&entity);
    };
    collect(drawing.modelSpace());
    for (const auto& layout : drawing.layouts()) collect(layout->entities);
    for (const auto& block : drawing.blocks())
        if (block->xrefPath.empty()) collect(block->entities);
    return entities;
}

namespace {

/// The texts whose fields are not what they show.
std::vector<Entity*> staleFields(engine::Drawing& drawing, FieldMoment moment) {
    std::vector<Entity*> stale;
    if ((engine::sysVarInt(drawing, "FIELDEVAL", 31) & static_cast<int>(moment)) == 0) return stale;
    for (Entity* entity : possibleFields(drawing)) {
        const std::optional<std::string> codes = textFields(*entity);
        if (!codes || codes->find("%<Date") != std::string::npos) continue;
        if (resolveFields(drawing, *codes) != *contentOf(*entity)) stale.push_back(entity);
    }
    return stale;
}

}  // namespace

void updateFieldsAt(FieldMoment moment, doc::Document& document) {
    const std::vector<Entity*> stale = staleFields(document.drawing(), moment);
    if (stale.empty()) return;
    const doc::GroupScope group(document, "UPDATEFIELD");
    for (Entity* entity : stale) updateFields(document, *entity);
}

void updateFieldsOnOpening(engine::Drawing& drawing) {
    for (Entity* entity : staleFields(drawing, FieldMoment::Open))
        if (const std::optional<std::string> codes = textFields(*entity)) setTextFields(drawing, *entity, *codes);
}

}  // namespace kova::cmd
