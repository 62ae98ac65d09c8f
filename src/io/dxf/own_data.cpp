#include "io/dxf/own_data.hpp"

#include "io/json/json_parser.hpp"

namespace kova::io::dxf {

using engine::Field;

namespace {

/// Keeps the members of the top-level object, all of them or those that stand alone.
class Members final : public native::RecordSink {
public:
    using Filter = bool (*)(std::string_view key, std::optional<engine::EntityType> kind);
    explicit Members(Filter filter = nullptr, std::optional<engine::EntityType> kind = {})
        : filter_(filter), kind_(kind) {}
    bool wants(std::string_view key) override { return filter_ == nullptr || filter_(key, kind_); }
    void beginBlocks() override {}
    void beginLayouts() override {}
    void beginBlock() override {}
    void endBlock(native::JsonTree::Index) override {}
    void beginLayout() override {}
    void endLayout(native::JsonTree::Index) override {}
    void entity(native::JsonTree::Index) override {}

private:
    Filter filter_;
    std::optional<engine::EntityType> kind_;
};

template <class List>
bool contains(const List& list, std::string_view key) {
    return std::find(std::begin(list), std::end(list), key) != std::end(list);
}

/// True for members that no plain group says anything about: they hold whatever becomes of the groups.
bool standsAlone(std::string_view key, std::optional<engine::EntityType> kind) {
    constexpr std::string_view anywhere[] = {
        "annotative",          "annotationScale", "objectScales",     "plotStyleName",  "thickness",
        "normalX",             "normalY",         "normalZ",          "dynParamValues", "dynFlipValues",
        "activeVisibilityState", "inspectShape",  "inspectLabel",     "inspectRate",    "annotation",
        "sat",                 "modelerVersion",  "defaultRowHeight", "defaultColWidth", "plotTransparency",
        "standard",
    };
    if (contains(anywhere, key)) return true;
    if (!kind) return false;
    switch (*kind) {
        case engine::EntityType::Region:
            return true;  // the record is an empty shell
        case engine::EntityType::Shape:
            return key == "number" || key == "file" || key == "name";
        case engine::EntityType::Solid3D:
            return key == "kind";
        case engine::EntityType::MLeader:
            return key == "textContent";
        default:
            return false;
    }
}

/// The fingerprint that stands for all that the own data may contradict.
std::uint64_t wholePrint(const Fingerprint& plain, const OwnScope& scope) {
    std::uint64_t print = plain.body;
    if (scope.common) print += plain.head;
    if (!scope.kind) return print;
    switch (*scope.kind) {
        case engine::EntityType::BlockReference:
            return scope.attributes ? print + plain.parts : print;
        case engine::EntityType::Polyline3D:
        case engine::EntityType::Mesh:
        case engine::EntityType::Polyface:
            return print + plain.parts;
        default:
            return print;
    }
}

constexpr std::string_view kCommonGroups[] = {"layer", "linetype", "lineweight", "transparency"};


/// True when there is a member that is not one of those that all entities have.
bool hasKindMembers(OwnDataTree& data) {
    constexpr std::string_view common[] = {"elevation",     "thickness",  "normalX",         "normalY",
                                           "normalZ",       "annotative", "annotationScale", "objectScales",
                                           "plotStyleName", "lineweight", "transparency",    "linetypeScale",
                                           "linetype",      "layer",      "color",           "visible",
                                           kFingerprintKey};
    const native::JsonTree& tree = data.tree();
    for (auto i = native::JsonTree::first(data.root()), last = tree.end(data.root()); i != last; i = tree.next(i))
        if (std::find(std::begin(common), std::end(common), tree.keyOf(i)) == std::end(common)) return true;
    return false;
}

}  // namespace

/// A chosen field is written even when it has its default: the native groups may say something else.
Field OwnFieldWriter::always(const Field& f) const {
    Field field = f;
    if (depth_ == 0) field.optional = false;
    return field;
}

bool OwnFieldWriter::wanted(const Field& f) {
    if (depth_ > 0) return true;
    const bool chosen = std::find(keys_.begin(), keys_.end(), f.key) != keys_.end();
    any_ = any_ || chosen;
    return chosen;
}

void OwnFieldWriter::onNumber(const Field& f, double& v) {
    if (wanted(f)) RecordWriter::onNumber(always(f), v);
}

void OwnFieldWriter::onInteger(const Field& f, std::int64_t& v) {
    if (wanted(f)) RecordWriter::onInteger(always(f), v);
}

void OwnFieldWriter::onBoolean(const Field& f, bool& v) {
    if (wanted(f)) RecordWriter::onBoolean(always(f), v);
}

void OwnFieldWriter::onText(const Field& f, std::string& v) {
    if (wanted(f)) RecordWriter::onText(always(f), v);
}

void OwnFieldWriter::onName(const Field& f, engine::Name& v) {
    if (wanted(f)) RecordWriter::onName(always(f), v);
}

void OwnFieldWriter::onHandle(const Field& f, std::uint64_t& v) {
    if (wanted(f)) RecordWriter::onHandle(always(f), v);
}

void OwnFieldWriter::onColor(const Field& f, engine::Color& v) {
    if (wanted(f)) RecordWriter::onColor(always(f), v);
}

void OwnFieldWriter::onPoint(const Field& f, math::Vector2& v) {
    if (wanted(f)) RecordWriter::onPoint(always(f), v);
}

void OwnFieldWriter::onPoint3(const Field& f, math::Vector3& v) {
    if (wanted(f)) RecordWriter::onPoint3(always(f), v);
}

void OwnFieldWriter::onPointObject(const Field& f, math::Vector2& v) {
    if (wanted(f)) RecordWriter::onPointObject(always(f), v);
}

void OwnFieldWriter::onPointObject3(const Field& f, math::Vector3& v) {
    if (wanted(f)) RecordWriter::onPointObject3(always(f), v);
}

void OwnFieldWriter::onPoints(const Field& f, std::vector<math::Vector2>& v) {
    if (wanted(f)) RecordWriter::onPoints(always(f), v);
}

void OwnFieldWriter::onPoints3(const Field& f, std::vector<math::Vector3>& v) {
    if (wanted(f)) RecordWriter::onPoints3(always(f), v);
}

void OwnFieldWriter::onNumbers(const Field& f, std::vector<double>& v) {
    if (wanted(f)) RecordWriter::onNumbers(always(f), v);
}

void OwnFieldWriter::onIntegers(const Field& f, std::vector<std::int32_t>& v) {
    if (wanted(f)) RecordWriter::onIntegers(always(f), v);
}

void OwnFieldWriter::onBooleans(const Field& f, std::vector<bool>& v) {
    if (wanted(f)) RecordWriter::onBooleans(always(f), v);
}

void OwnFieldWriter::onHandles(const Field& f, std::vector<std::uint64_t>& v) {
    if (wanted(f)) RecordWriter::onHandles(always(f), v);
}

void OwnFieldWriter::onTexts(const Field& f, std::vector<std::string>& v) {
    if (wanted(f)) RecordWriter::onTexts(always(f), v);
}

void OwnFieldWriter::onNames(const Field& f, std::vector<engine::Name>& v) {
    if (wanted(f)) RecordWriter::onNames(always(f), v);
}

void OwnFieldWriter::onIntegerLists(const Field& f, std::vector<std::vector<std::int32_t>>& v) {
    if (wanted(f)) RecordWriter::onIntegerLists(always(f), v);
}

void OwnFieldWriter::onTextLists(const Field& f, std::vector<std::vector<std::string>>& v) {
    if (wanted(f)) RecordWriter::onTextLists(always(f), v);
}

void OwnFieldWriter::onNumberMap(const Field& f, std::map<std::string, double>& v) {
    if (wanted(f)) RecordWriter::onNumberMap(always(f), v);
}

void OwnFieldWriter::onTextMap(const Field& f, std::map<std::string, std::string>& v) {
    if (wanted(f)) RecordWriter::onTextMap(always(f), v);
}

bool OwnFieldWriter::beginObject(const Field& f, bool present) {
    if (!wanted(f) || !RecordWriter::beginObject(f, present)) return false;
    ++depth_;
    return true;
}

void OwnFieldWriter::endObject() {
    --depth_;
    RecordWriter::endObject();
}

bool OwnFieldWriter::beginList(const Field& f, std::size_t& count) {
    if (!wanted(f) || !RecordWriter::beginList(always(f), count)) return false;
    ++depth_;
    return true;
}

void OwnFieldWriter::endList() {
    --depth_;
    RecordWriter::endList();
}

std::string ownDataOf(const engine::Entity& entity, const FieldKeys& common, const FieldKeys& own) {
    if (common.empty() && own.empty()) return {};
    native::JsonWriter out(-1);
    auto& e = const_cast<engine::Entity&>(entity);  // the visitor only looks
    out.beginObject();
    OwnFieldWriter commonWriter(out, common);
    if (!common.empty()) e.describeCommon(commonWriter);
    OwnFieldWriter ownWriter(out, own);
    if (!own.empty()) e.describe(ownWriter);
    out.endObject();
    return commonWriter.any() || ownWriter.any() ? out.take() : std::string();
}

void protectEscapes(std::string& json) {
    // Two backslashes stand for one in the JSON text, so "\\\\U+" is what a text with \U+ looks like.
    for (std::size_t at = 0; (at = json.find('+', at)) != std::string::npos; ++at) {
        if (at < 2 || json[at - 2] != '\\' || (json[at - 1] != 'U' && json[at - 1] != 'M')) continue;
        const char* escape = json[at - 1] == 'U' ? "\\u0055" : "\\u004d";
        json.replace(at - 1, 1, escape);
        at += 5;
    }
}

bool hasCommonGroup(std::string_view key) { return contains(kCommonGroups, key); }

void addFingerprint(std::string& json, const Fingerprint& plain, const OwnScope& scope) {
    if (!json.ends_with('}')) return;
    char digits[20];
    const auto end = std::to_chars(digits, digits + sizeof digits, wholePrint(plain, scope), 16).ptr;
    json.pop_back();
    json += ",\"" + std::string(kFingerprintKey) + "\":\"" + std::string(digits, end) + "\"}";
}

bool OwnDataTree::parse(const OwnText& text, std::optional<engine::EntityType> kind) {
    if (!parse(text.json)) return false;
    const auto has = [&](std::string_view key) { return tree_->find(root_, key) != native::JsonTree::kNone; };
    const auto stored = tree_->find(root_, kFingerprintKey);
    if (stored == native::JsonTree::kNone || tree_->type(stored) != native::JsonType::Text) return true;
    const OwnScope scope{kind, std::any_of(std::begin(kCommonGroups), std::end(kCommonGroups), has), has("attributes")};
    const std::string_view digits = tree_->text(stored);
    std::uint64_t print = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), print, 16);
    if (print == wholePrint(text.plain, scope)) return true;
    tree_ = std::make_unique<native::JsonTree>();
    Members sink(standsAlone, kind);
    root_ = native::parseDrawingText(text.json, *tree_, sink).root;
    return root_ != native::JsonTree::kNone;
}

bool OwnDataTree::parse(std::string_view json) {
    try {
        Members sink;
        const native::ParseOutcome outcome = native::parseDrawingText(json, *tree_, sink);
        if (!outcome.syntaxError.empty() || !outcome.otherError.empty() || outcome.otherSectionError) return false;
        root_ = outcome.root;
    } catch (const std::exception&) {
        return false;
    }
    return root_ != native::JsonTree::kNone;
}

bool applyOwnData(const OwnText& text, engine::Entity& entity) {
    OwnDataTree data;
    if (!data.parse(text, entity.type())) return false;
    try {
        native::RecordReader reader(data.tree());
        reader.enter(data.root());
        entity.describeCommon(reader);
        // Some kinds take a missing member for its default: they are asked only when one of theirs is there.
        if (hasKindMembers(data)) entity.describe(reader);
    } catch (const std::exception&) {
        return false;
    }
    return true;
}

bool isPlaceholder(const OwnText& text) {
    OwnDataTree data;
    return data.parse(text) && data.tree().find(data.root(), "placeholder") != native::JsonTree::kNone;
}

}  // namespace kova::io::dxf
