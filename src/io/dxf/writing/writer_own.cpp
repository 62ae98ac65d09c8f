// Extended data: the program's own and the user's; extension dictionaries.
#include "io/dxf/writing/writer.hpp"

namespace kova::io::dxf {

using engine::Entity;
using engine::Name;
using engine::XData;
using engine::XDataItem;

OwnData Writer::gather(const Entity& e, unsigned native, const FieldKeys& own) {
    FieldKeys common;
    if (!(native & kElevation) && e.elevation != 0.0) common.push_back("elevation");
    if (!(native & kThickness) && e.thickness() != 0.0) common.push_back("thickness");
    if (!(native & kNormal) && !(e.normal() == math::Vector3{0, 0, 1})) common.push_back("normal");
    if (e.annotative()) common.insert(common.end(), {"annotative", "annotationScale", "objectScales"});
    if (!e.plotStyleName().identical(engine::commonNames().byLayer)) common.push_back("plotStyleName");
    if (!isLineweight(e.lineweight)) common.push_back("lineweight");
    if (e.transparency < 0 || e.transparency > 100) common.push_back("transparency");
    if (!isPlain(e.layer)) common.push_back("layer");
    if (!isPlain(e.linetype)) common.push_back("linetype");
    if (common.empty() && own.empty()) return {};
    std::string_view application = own.empty() && e.annotative() ? "KOVA_ANNOTATIVE" : ownApplication(e.type());
    // The user's own data of that name stays the user's.
    if (const XData* xdata = e.xdata(); xdata != nullptr && xdata->find(Name(application)) != nullptr)
        application = kOwnFallbackApplication;
    OwnData data = gatherText(ownDataOf(e, common, own), application, e.handle());
    data.scope.kind = e.type();
    data.scope.common = std::any_of(common.begin(), common.end(), hasCommonGroup);
    data.scope.attributes = std::find(own.begin(), own.end(), "attributes") != own.end();
    return data;
}

OwnData Writer::gatherText(std::string text, std::string_view app, std::uint64_t owner) {
    OwnData own;
    if (text.empty()) return own;
    protectEscapes(text);
    own.application = app;
    if (text.size() <= kOwnXdataLimit) {
        own.text = std::move(text);
        return own;
    }
    const std::uint64_t dictionary = extensionDictionary(own, owner);
    extensions_[extensionIndex_.at(dictionary)].records.emplace_back(app, std::move(text));
    own.inDictionary = true;
    return own;
}

OwnData Writer::placeholderMark() const {
    OwnData own;
    own.text = R"({"placeholder":true})";
    own.application = kOwnRecordApplication;
    return own;
}

std::uint64_t Writer::extensionDictionary(OwnData& own, std::uint64_t owner) {
    if (own.dictionary != 0) return own.dictionary;
    own.dictionary = newHandle();
    extensionIndex_.emplace(own.dictionary, extensions_.size());
    extensions_.push_back({own.dictionary, owner, {}, nullptr});
    return own.dictionary;
}

void Writer::extensionGroup(std::uint64_t dictionary) {
    out_->word(102, "{ACAD_XDICTIONARY");
    out_->handle(360, dictionary);
    out_->word(102, "}");
}

void Writer::application(std::string_view name) {
    const Name key(name);
    if (applicationKeys_.insert(key.key()).second) applications_.emplace_back(symbol(key));
}

void Writer::ownXdata(const OwnData& own, std::string_view parts) {
    if (own.text.empty() && !own.inDictionary) return;
    std::string text = own.text;
    std::string& json =
        own.inDictionary ? extensions_[extensionIndex_.at(own.dictionary)].records.back().second : text;
    if (own.scope.checked) {
        Fingerprint plain = fingerprintOf(out_->view().substr(recordStart_), decoder_);
        if (!parts.empty()) plain.parts = fingerprintOf(parts, decoder_).groups();
        addFingerprint(json, plain, own.scope);
    }
    if (own.inDictionary) return;
    application(own.application);
    out_->word(1001, own.application);
    eachPiece(text, kOwnPieceInXdata, [&](std::string_view piece) { out_->text(1000, piece); });
}

void Writer::xrecordText(std::string_view text) {
    eachPiece(text, kOwnPieceInXrecord, [&](std::string_view piece) { out_->text(1, piece); });
}

void Writer::xdataItem(const XDataItem& item) {
    GroupWriter& out = *out_;
    if (const auto* text = std::get_if<std::string>(&item.value)) {
        if (item.code == 1002) {
            out.word(1002, *text == "}" ? "}" : "{");
        } else if (item.code == 1000 || item.code == 1003 || item.code == 1004 || item.code == 1005) {
            out.text(item.code, *text);
        }
    } else if (const auto* real = std::get_if<double>(&item.value)) {
        if (item.code >= 1040 && item.code <= 1042) out.real(item.code, *real);
    } else if (const auto* integer = std::get_if<std::int64_t>(&item.value)) {
        if (item.code == 1070 || item.code == 1071) out.integer(item.code, *integer);
    } else if (item.code >= 1010 && item.code <= 1013) {
        out.point(item.code, std::get<math::Vector3>(item.value));
    }
}

void Writer::userXdata(const XData& xdata) {
    for (const XData::Application& app : xdata.applications) {
        if (app.name.empty()) continue;
        if (!lastApplication_.identical(app.name)) {
            application(app.name.view());
            lastApplication_ = app.name;
        }
        out_->text(1001, symbol(app.name));
        int open = 0;
        for (const XDataItem& item : app.items) {
            // Braces come out balanced whatever the entity holds.
            if (item.code == 1002) {
                const auto* brace = std::get_if<std::string>(&item.value);
                const bool closing = brace != nullptr && *brace == "}";
                if (closing && open == 0) continue;
                open += closing ? -1 : 1;
            }
            xdataItem(item);
        }
        for (; open > 0; --open) out_->word(1002, "}");
    }
}

}  // namespace kova::io::dxf
