#pragma once

#include "kdraw/fields/object.hpp"

namespace kdraw {

/// A table: the list of its records. In groups only its head; who reads a table there fills the list.
class Control : public Object {
public:
    std::vector<Handle> records;  ///< may have null entries

    void describe(Fields& f) override;

protected:
    /// How many records the table says it has.
    virtual std::size_t recordCount() const { return records.size(); }
    /// The references behind the list.
    virtual void describeRest(Fields&) {}
    /// The count of further references, which stands in the data behind that of the records.
    virtual void describeSecondCount(Fields&) {}
};

class LayerControl : public Control {};
class StyleControl : public Control {};
class ViewControl : public Control {};
class UcsControl : public Control {};
class ViewportControl : public Control {};
class AppIdControl : public Control {};
class ViewportHeaderControl : public Control {};  ///< R2000 only

/// The two spaces stand beside the list of the other blocks.
class BlockControl : public Control {
public:
    Handle modelSpace = 0;
    Handle paperSpace = 0;

protected:
    std::size_t recordCount() const override;
    void describeRest(Fields& f) override;
};

/// The two linetypes that name no dashes of their own stand beside the list.
class LinetypeControl : public Control {
public:
    Handle byBlock = 0;
    Handle byLayer = 0;

protected:
    std::size_t recordCount() const override;
    void describeRest(Fields& f) override;
};

class DimStyleControl : public Control {
public:
    std::vector<Handle> further;

protected:
    void describeSecondCount(Fields& f) override;
    void describeRest(Fields& f) override;

private:
    std::size_t furtherCount_ = 0;
};

}  // namespace kdraw
