#include "engine/model/styles.hpp"

namespace kova::engine {

void TextStyle::describe(FieldVisitor& v) {
    v.name("name", name);
    v.name("fontFile", fontFile);
    v.name("bigFontFile", bigFontFile);
    v.length("height", height);
    v.number("widthFactor", widthFactor);
    v.angle("obliqueAngle", obliqueAngle);
    v.boolean("backward", backward);
    v.boolean("upsideDown", upsideDown);
    v.boolean("vertical", vertical);
}

void LinetypeElement::describe(FieldVisitor& v) {
    v.integer("flags", flags);
    v.integer("shape", shape);
    v.name("style", style);
    v.number("scale", scale);
    v.angle("rotation", rotation);
    v.text("text", text);
    v.length("offsetX", offsetX, 0.0);
    v.length("offsetY", offsetY, 0.0);
}

double Linetype::patternLength() const {
    double length = 0.0;
    for (const double dash : pattern) length += std::abs(dash);
    return length;
}

void Linetype::describe(FieldVisitor& v) {
    v.name("name", name);
    v.text("description", description);
    v.numbers("pattern", pattern);
    v.boolean("standard", standard);
    v.objects("elements", elements, true);
    v.integer("flags", flags, 0);
}

void MLeaderStyle::describe(FieldVisitor& v) {
    v.name("name", name);
    v.integer("contentType", contentType);
    v.length("textHeight", textHeight);
    v.length("arrowSize", arrowSize);
    v.boolean("hasLanding", hasLanding);
    v.boolean("hasDogleg", hasDogleg);
    v.length("landingGap", landingGap);
    v.length("landingDistance", landingDistance);
    v.name("textStyle", textStyle);
    v.number("scaleFactor", scaleFactor);
    v.text("defaultText", defaultText);
    v.integer("leaderLineType", leaderLineType);
    v.color("leaderColor", leaderColor);
    v.name("leaderLinetype", leaderLinetype);
    v.integer("leaderLineweight", leaderLineweight);
    v.integer("maxLeaderPoints", maxLeaderPoints);
    v.angle("firstSegmentAngle", firstSegmentAngle);
    v.angle("secondSegmentAngle", secondSegmentAngle);
    v.name("arrowBlock", arrowBlock);
    v.color("textColor", textColor);
    v.boolean("textFrame", textFrame);
    v.integer("textLeftAttachment", textLeftAttachment);
    v.integer("textRightAttachment", textRightAttachment);
    v.integer("textAngleType", textAngleType);
    v.integer("textAlignment", textAlignment);
    v.boolean("textAlignAlwaysLeft", textAlignAlwaysLeft);
    v.length("alignSpace", alignSpace);
    v.integer("textAttachmentDirection", textAttachmentDirection);
    v.integer("topTextAttachment", topTextAttachment);
    v.integer("bottomTextAttachment", bottomTextAttachment);
    v.boolean("extendLeaderToText", extendLeaderToText);
    v.name("block", block);
    v.color("blockColor", blockColor);
    v.number("blockScale", blockScale);
    v.boolean("blockScaleEnabled", blockScaleEnabled);
    v.angle("blockRotation", blockRotation);
    v.boolean("blockRotationEnabled", blockRotationEnabled);
    v.integer("blockConnection", blockConnection);
    v.length("breakGapSize", breakGapSize);
    v.boolean("annotative", annotative);
    v.integer("drawMLeaderOrder", drawMLeaderOrder);
    v.integer("drawLeaderOrder", drawLeaderOrder);
}

void TableStyleRow::describe(FieldVisitor& v) {
    v.integer("alignment", alignment);
    v.color("textColor", textColor);
    v.color("fillColor", fillColor);
    v.boolean("fillEnabled", fillEnabled);
}

void TableStyle::describe(FieldVisitor& v) {
    v.name("name", name);
    v.length("textHeight", textHeight);
    v.length("headerTextHeight", headerTextHeight);
    v.length("titleTextHeight", titleTextHeight);
    v.name("textStyle", textStyle);
    v.length("cellMargin", cellMargin);
    v.length("defaultRowHeight", defaultRowHeight);
    v.length("defaultColWidth", defaultColWidth);
    v.integer("borderLineweight", borderLineweight);
    v.integer("gridLineweight", gridLineweight);
    v.boolean("hasTitle", hasTitle);
    v.boolean("hasHeader", hasHeader);
    v.boolean("flowUp", flowUp);
    v.length("verticalMargin", verticalMargin);
    struct Rows {
        TableStyle& style;
        void describe(FieldVisitor& v) {
            v.object("data", style.data);
            v.object("header", style.header);
            v.object("title", style.title);
        }
    } rows{*this};
    v.object("rows", rows);
}

}  // namespace kova::engine
