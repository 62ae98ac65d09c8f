#pragma once

#include "engine/model/describe.hpp"

namespace kova::engine {

/// A visitor that only looks and does nothing with any field: a base for those that care for a few kinds of fields. It
/// goes into nested records and lists.
class IdleVisitor : public FieldVisitor {
protected:
    void onNumber(const Field&, double&) override {}
    void onInteger(const Field&, std::int64_t&) override {}
    void onBoolean(const Field&, bool&) override {}
    void onText(const Field&, std::string&) override {}
    void onName(const Field&, Name&) override {}
    void onHandle(const Field&, std::uint64_t&) override {}
    void onColor(const Field&, Color&) override {}
    void onPointObject(const Field&, math::Vector2&) override {}
    void onPointObject3(const Field&, math::Vector3&) override {}
    void onPoints(const Field&, std::vector<math::Vector2>&) override {}
    void onPoints3(const Field&, std::vector<math::Vector3>&) override {}
    void onNumbers(const Field&, std::vector<double>&) override {}
    void onIntegers(const Field&, std::vector<std::int32_t>&) override {}
    void onBooleans(const Field&, std::vector<bool>&) override {}
    void onHandles(const Field&, std::vector<std::uint64_t>&) override {}
    void onTexts(const Field&, std::vector<std::string>&) override {}
    void onNames(const Field&, std::vector<Name>&) override {}
    void onIntegerLists(const Field&, std::vector<std::vector<std::int32_t>>&) override {}
    void onTextLists(const Field&, std::vector<std::vector<std::string>>&) override {}
    void onNumberMap(const Field&, std::map<std::string, double>&) override {}
    void onTextMap(const Field&, std::map<std::string, std::string>&) override {}
    bool beginObject(const Field&, bool present) override { return present; }
    void endObject() override {}
    bool beginList(const Field&, std::size_t& count) override { return count != 0; }
    void beginItem(std::size_t) override {}
    void endItem() override {}
    void endList() override {}
};

}  // namespace kova::engine
